#pragma once

#include <cstdlib>
#include <memory>
#include <span>

namespace quoril {

/// Bytes that begin as zeros and take memory only where they are written: a large file with holes, or a table
/// of which little is used.
class ZeroedBytes
{
public:
    ZeroedBytes() = default;
    /// Empty where there isn't so much memory.
    explicit ZeroedBytes(std::size_t size)
        : m_bytes(static_cast<char*>(std::calloc(size, 1)), &std::free)
        , m_size(m_bytes ? size : 0)
    {
    }

    char* data() const { return m_bytes.get(); }
    std::size_t size() const { return m_size; }
    std::span<char> span() const { return {m_bytes.get(), m_size}; }

private:
    std::shared_ptr<char> m_bytes;
    std::size_t m_size = 0;
};

} // namespace quoril
