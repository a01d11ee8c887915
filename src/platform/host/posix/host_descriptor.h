#pragma once

#include <unistd.h>
#include <utility>

namespace quoril {

/// A descriptor of an open file that closes itself.
class HostDescriptor
{
public:
    explicit HostDescriptor(int number) : m_number(number) { }
    HostDescriptor(HostDescriptor&& other) noexcept : m_number(other.release()) { }
    ~HostDescriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    HostDescriptor& operator=(HostDescriptor&&) = delete;

    int get() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

} // namespace quoril
