#include "platform/large_buffer.h"

#include <algorithm>
#include <new>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

namespace quoril {

LargeBuffer makeLargeBuffer(std::size_t bytes)
{
#ifdef Q_OS_LINUX
    // What is filled to nearly a whole number of pages wastes nothing; the rest of a page would be taken,
    // too.
    const std::size_t rounded = (bytes + LargePage - 1) / LargePage * LargePage;
    if (bytes > 0 && rounded - bytes < LargePage / 16) {
        void* const memory = std::aligned_alloc(LargePage, rounded);
        if (!memory)
            throw std::bad_alloc();
        // A system without large pages refuses and gives small ones.
        ::madvise(memory, rounded, MADV_HUGEPAGE);
        return LargeBuffer(static_cast<uchar*>(memory));
    }
#endif
    void* const memory = std::malloc(std::max<std::size_t>(bytes, 1));
    if (!memory)
        throw std::bad_alloc();
    return LargeBuffer(static_cast<uchar*>(memory));
}

} // namespace quoril
