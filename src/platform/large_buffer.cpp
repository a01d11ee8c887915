#include "platform/large_buffer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

namespace quoril {

namespace {

#ifdef Q_OS_LINUX

// Clearing a large page takes some 100 microseconds. Where memory is in pieces
// the system moves others together first, which takes it milliseconds: more
// than all the small pages in its place.
constexpr auto QuickPage = std::chrono::milliseconds(1);
// So many buffers do without, before large pages are tried again.
constexpr int BuffersWithout = 64;

std::atomic<int> buffersToGo = 0;

bool largePagesAreQuick()
{
    int left = buffersToGo.load(std::memory_order_relaxed);
    while (left > 0 && !buffersToGo.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) { }
    return left <= 0;
}

/// Has memory come in large pages, as long as they come quickly.
void takeLargePages(uchar* memory, std::size_t bytes)
{
    if (!largePagesAreQuick()) {
#ifdef MADV_POPULATE_WRITE
        // All of it will be written. A system that doesn't know this gives the
        // pages one by one.
        ::madvise(memory, bytes, MADV_POPULATE_WRITE);
#endif
        return;
    }
    // A system without large pages refuses and gives small ones.
    ::madvise(memory, bytes, MADV_HUGEPAGE);
    const auto begin = std::chrono::steady_clock::now();
    for (std::size_t page = 0; page < bytes; page += LargePage)
        static_cast<volatile uchar*>(memory)[page] = 0;
    const auto pages = static_cast<int>(bytes / LargePage);
    if (std::chrono::steady_clock::now() - begin > QuickPage * pages)
        buffersToGo.store(BuffersWithout, std::memory_order_relaxed);
}

#endif

} // namespace

LargeBuffer makeLargeBuffer(std::size_t bytes)
{
#ifdef Q_OS_LINUX
    // What is filled to nearly a whole number of pages wastes nothing; the rest of a page would be taken,
    // too.
    const std::size_t rounded = (bytes + LargePage - 1) / LargePage * LargePage;
    if (bytes > 0 && rounded - bytes < LargePage / 16) {
        auto* const memory = static_cast<uchar*>(std::aligned_alloc(LargePage, rounded));
        if (!memory)
            throw std::bad_alloc();
        takeLargePages(memory, rounded);
        return LargeBuffer(memory);
    }
#endif
    void* const memory = std::malloc(std::max<std::size_t>(bytes, 1));
    if (!memory)
        throw std::bad_alloc();
    return LargeBuffer(static_cast<uchar*>(memory));
}

} // namespace quoril
