#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace quoril {

struct FreeMemory
{
    void operator()(uchar* memory) const { std::free(memory); }
};
using LargeBuffer = std::unique_ptr<uchar[], FreeMemory>;

/// The size from which on a buffer lies in pages of this size where the system has them. In small pages the
/// first touch of a long text takes longer than all that is done with it.
constexpr std::size_t LargePage = std::size_t{2} * 1024 * 1024;

/// `bytes` of uninitialised memory. Throws std::bad_alloc.
LargeBuffer makeLargeBuffer(std::size_t bytes);

} // namespace quoril
