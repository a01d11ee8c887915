#include "platform/tree/tree_processes.h"

#include "platform/command_line.h"
#include "platform/host/desktop_programs.h"
#include "platform/host/exit_code.h"
#include "platform/host/host_command.h"
#include "platform/tree/tree_paths.h"

#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>

#include <array>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The path itself, or a bare name below each of the system's folders. The current folder is none of them:
/// whoever may write there would choose what is run.
QStringList placesOf(const QString& program)
{
    if (hasFolder(program))
        return isFullPath(program) ? QStringList(program) : QStringList();
    static constexpr std::array<QStringView, 3> folders
        = {u"C:\\Windows\\System32\\", u"C:\\Windows\\System\\", u"C:\\Windows\\"};
    QStringList places;
    for (const QStringView folder : folders)
        places.append(folder.toString() + program);
    return places;
}

/// The path that one without a folder, or with a drive alone, means where that folder is the current one.
QString inFolder(const QString& path, QStringView folder)
{
    const bool hasDrive = path.size() > 1 && path[1] == u':';
    const QStringView below = QStringView(path).mid(hasDrive ? 2 : 0);
    const bool isRelative = below.isEmpty() || (below[0] != u'\\' && below[0] != u'/');
    return folder.isEmpty() || !isRelative ? path : folder.toString() + u'\\' + below.toString();
}

QList<QByteArray> environmentFor(const QString& root)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QUORIL_MACHINE"_s, root);
    environment.remove(ExitCodeVariable.toString()); // speaks of this program's own starter
    QList<QByteArray> texts;
    for (const QString& text : environment.toStringList())
        texts.append(QFile::encodeName(text));
    return texts;
}

} // namespace

Result<TreeProcesses::Program> TreeProcesses::findProgram(
    QStringView commandLine, QStringView currentDirectory) const
{
    std::optional<Error> first;
    for (const ProgramCandidate& candidate : programCandidates(commandLine)) {
        for (const QString& place : placesOf(withProgramExtension(candidate.program))) {
            const Result<HostPlace> host = m_paths.existing(inFolder(place, currentDirectory));
            if (host && QFileInfo(host->path()).isFile())
                return Program{host->path(), splitArguments(candidate.rest)};
            if (!first && hasFolder(candidate.program))
                first = host ? Error{error::AccessDenied, place} : host.failure();
        }
    }
    return first.value_or(Error{error::FileNotFound, {}});
}

Result<QString> TreeProcesses::findApplication(QStringView name) const
{
    const bool isSearched = !hasFolder(name);
    Error failure{error::FileNotFound, name.toString()};
    for (const QString& place : placesOf(name.toString())) {
        const Result<HostPlace> host = m_paths.existing(place);
        const bool isFile = host && QFileInfo(host->path()).isFile();
        // A search passes over what is no program here.
        if (isFile && (!isSearched || canRunHostProgram(host->path()).errorNumber() != error::BadExeFormat))
            return host->path();
        if (!isSearched)
            failure = host ? Error{error::AccessDenied, place} : host.failure();
    }
    const QString onDesktop = desktopProgram(name);
    return onDesktop.isEmpty() ? Result<QString>(failure) : onDesktop;
}

Status TreeProcesses::canRun(QStringView program) const
{
    const Result<Program> found = findProgram(u'"' + program.toString() + u'"');
    return found ? canRunHostProgram(found->hostPath) : Status(found.failure());
}

Result<std::unique_ptr<Process>> TreeProcesses::create(QStringView applicationName, QStringView commandLine)
{
    Program program;
    if (applicationName.isEmpty()) {
        Result<Program> found = findProgram(commandLine);
        if (!found)
            return found.failure();
        program = *std::move(found);
    } else {
        const Result<QString> host = findApplication(applicationName);
        if (!host)
            return host.failure();
        program = {*host, splitCommandLine(commandLine).mid(1)};
    }
    const Result<HostPlace> folder = m_paths.existing(m_paths.currentDirectory());
    HostCommand command;
    command.program = program.hostPath;
    command.folder = folder ? folder->path() : m_paths.root();
    command.environment = environmentFor(m_paths.root());
    command.arguments.append(QFile::encodeName(program.hostPath));
    for (const QString& argument : std::as_const(program.arguments))
        command.arguments.append(QFile::encodeName(argument));
    command.asksForExitCode = true;
    return startHostProgram(command);
}

} // namespace quoril
