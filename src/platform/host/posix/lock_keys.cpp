#include "platform/host/posix/lock_keys.h"

#include <QLibrary>
#include <QString>

namespace quoril {

namespace {

using OpenDisplay = void* (*)(const char*);
using CloseDisplay = int (*)(void*);
using GetIndicatorState = int (*)(void*, unsigned, unsigned*);

/// The X client library, loaded when it is asked for, and one connection that is kept: the keys are looked at
/// with every key that is released.
class Indicators
{
public:
    Indicators() : m_library(QStringLiteral("X11"), 6)
    {
        const auto open = reinterpret_cast<OpenDisplay>(m_library.resolve("XOpenDisplay"));
        m_state = reinterpret_cast<GetIndicatorState>(m_library.resolve("XkbGetIndicatorState"));
        if (open && m_state)
            m_display = open(nullptr);
    }
    ~Indicators()
    {
        const auto close = reinterpret_cast<CloseDisplay>(m_library.resolve("XCloseDisplay"));
        if (m_display && close)
            close(m_display);
    }
    Indicators(const Indicators&) = delete;
    Indicators& operator=(const Indicators&) = delete;

    unsigned state() const
    {
        constexpr unsigned CoreKeyboard = 0x100;
        unsigned lamps = 0;
        return m_display && m_state(m_display, CoreKeyboard, &lamps) == 0 ? lamps : 0;
    }

private:
    QLibrary m_library;
    GetIndicatorState m_state = nullptr;
    void* m_display = nullptr;
};

} // namespace

LockKeys hostLockKeys()
{
    static const Indicators indicators;
    const unsigned lamps = indicators.state();
    return {(lamps & 1U) != 0, (lamps & 2U) != 0, (lamps & 4U) != 0};
}

} // namespace quoril
