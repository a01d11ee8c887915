#include "platform/command_line.h"

#include "platform/machine_path.h"

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

bool isBlank(QChar unit)
{
    return unit == u' ' || unit == u'\t';
}

/// Takes the program's name off the front of the line.
QString takeProgram(QStringView& line)
{
    QString name;
    bool inQuotes = false;
    qsizetype at = 0;
    for (; at < line.size() && (inQuotes || !isBlank(line[at])); ++at) {
        if (line[at] == u'"')
            inQuotes = !inQuotes;
        else
            name.append(line[at]);
    }
    line = line.mid(at);
    return name;
}

/// Takes the next argument off the front of the line, which begins with it.
QString takeArgument(QStringView& line)
{
    QString argument;
    bool inQuotes = false;
    qsizetype at = 0;
    while (at < line.size() && (inQuotes || !isBlank(line[at]))) {
        qsizetype backslashes = 0;
        while (at < line.size() && line[at] == u'\\') {
            ++backslashes;
            ++at;
        }
        if (at == line.size() || line[at] != u'"') {
            argument.append(QString(backslashes, u'\\'));
            if (at < line.size() && (inQuotes || !isBlank(line[at])))
                argument.append(line[at++]);
            continue;
        }
        argument.append(QString(backslashes / 2, u'\\'));
        if (backslashes % 2 != 0) {
            argument.append(u'"');
        } else if (inQuotes && at + 1 < line.size() && line[at + 1] == u'"') {
            argument.append(u'"'); // a doubled quote within quotes stands for one
            ++at;
        } else {
            inQuotes = !inQuotes;
        }
        ++at;
    }
    line = line.mid(at);
    return argument;
}

void skipBlanks(QStringView& line)
{
    while (!line.isEmpty() && isBlank(line.front()))
        line = line.mid(1);
}

} // namespace

QStringList splitCommandLine(QStringView commandLine)
{
    skipBlanks(commandLine);
    if (commandLine.isEmpty())
        return {};
    const QString program = takeProgram(commandLine);
    return QStringList(program) + splitArguments(commandLine);
}

QStringList splitArguments(QStringView rest)
{
    QStringList arguments;
    for (skipBlanks(rest); !rest.isEmpty(); skipBlanks(rest))
        arguments.append(takeArgument(rest));
    return arguments;
}

bool hasFolder(QStringView program)
{
    return program.contains(u':') || std::any_of(program.begin(), program.end(), isPathSeparator);
}

bool isFullPath(QStringView program)
{
    if (program.size() < 3)
        return false;
    const bool hasDrive = program[1] == u':' && isPathSeparator(program[2]);
    return hasDrive || (isPathSeparator(program[0]) && isPathSeparator(program[1]));
}

QString withProgramExtension(const QString& program)
{
    return !fileNameOf(program).contains(u'.') ? program + u".exe"_s : program;
}

QList<ProgramCandidate> programCandidates(QStringView commandLine)
{
    skipBlanks(commandLine);
    if (commandLine.isEmpty())
        return {};
    if (commandLine.front() == u'"') {
        const qsizetype quote = commandLine.indexOf(u'"', 1);
        const qsizetype end = quote < 0 ? commandLine.size() : quote;
        return {{commandLine.sliced(1, end - 1).toString(), commandLine.mid(end + 1)}};
    }
    QList<ProgramCandidate> candidates;
    for (qsizetype at = 1; at <= commandLine.size(); ++at) {
        const bool ends = at == commandLine.size() || isBlank(commandLine[at]);
        if (ends && !isBlank(commandLine[at - 1]))
            candidates.append({commandLine.first(at).toString(), commandLine.mid(at)});
    }
    return candidates;
}

} // namespace quoril
