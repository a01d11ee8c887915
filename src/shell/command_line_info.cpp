#include "shell/command_line_info.h"

#include <algorithm>

namespace quoril {

CommandLineInfo ParseCommandLine(const QStringList& arguments, QStringView flagSigns)
{
    CommandLineInfo info;
    const QString first = arguments.value(1);
    if (first == u"-h" || first == u"--help")
        info.request = CommandLineInfo::Request::Help;
    else if (first == u"-v" || first == u"--version")
        info.request = CommandLineInfo::Request::Version;
    const auto file
        = std::find_if(arguments.cbegin() + std::min<qsizetype>(1, arguments.size()), arguments.cend(),
            [&](const QString& argument) { return !argument.isEmpty() && !flagSigns.contains(argument[0]); });
    if (file != arguments.cend())
        info.fileName = *file;
    return info;
}

} // namespace quoril
