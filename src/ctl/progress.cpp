#include "ctl/progress.h"

#include "ctl/console.h"

#include <chrono>
#include <system_error>

namespace quoril {

using namespace Qt::StringLiterals;

Progress::Progress(Console& console, QString text) : m_console(console), m_text(std::move(text))
{
    try {
        m_thread = std::thread(&Progress::run, this);
    } catch (const std::system_error&) {
        // Without a thread the work goes on unreported.
    }
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(m_guard);
        m_ended = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void Progress::run()
{
    const bool counts = m_console.facts().errorIsTerminal;
    std::unique_lock lock(m_guard);
    for (int seconds = 1; !m_wake.wait_for(lock, std::chrono::seconds(1), [this] { return m_ended; });
         ++seconds) {
        if (counts)
            m_console.progress(m_text + u" %1 s"_s.arg(seconds));
        else if (seconds == 1)
            m_console.progress(m_text);
    }
    if (counts)
        m_console.progress({});
}

} // namespace quoril
