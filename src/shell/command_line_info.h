#pragma once

#include <QStringList>

namespace quoril {

/// What a command line of the console asks for. The system has no option of its own: "--help" and "--version"
/// count as the first argument only, and any other flag is passed over.
struct CommandLineInfo
{
    enum class Request
    {
        Window,
        Help,
        Version
    };

#ifdef Q_OS_WIN
    static constexpr QStringView FlagSigns = u"-/";
#else
    static constexpr QStringView FlagSigns = u"-"; ///< a slash begins a path
#endif

    Request request = Request::Window;
    QString fileName; ///< the first argument that is neither a flag nor empty; empty for a new document
};

/// Takes the arguments apart, the program first.
CommandLineInfo ParseCommandLine(
    const QStringList& arguments, QStringView flagSigns = CommandLineInfo::FlagSigns);

} // namespace quoril
