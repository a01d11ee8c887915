#pragma once

#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace quoril {

class Console;

/// Says what is under way while it takes longer than a second: once, or with the seconds on a terminal.
class Progress
{
public:
    Progress(Console& console, QString text);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void run();

    Console& m_console;
    QString m_text;
    std::mutex m_guard;
    std::condition_variable m_wake;
    bool m_ended = false;
    std::thread m_thread;
};

} // namespace quoril
