#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace quoril {

/// The arguments of a command line by the rules of the Windows run-time library, the program's name first:
/// blanks and tabs separate, double quotes hold together, 2n backslashes before a quote are n of them and
/// 2n + 1 are n and a quote of the text. In the program's name backslashes mean nothing of the kind.
QStringList splitCommandLine(QStringView commandLine);

/// One reading of a command line: the program that it means and what follows it.
struct ProgramCandidate
{
    QString program;
    QStringView rest; // of the command line
};

/// Whether a program's name says where it lies: with a folder or a drive.
bool hasFolder(QStringView program);

/// Whether it says so whatever the current folder and drive are.
bool isFullPath(QStringView program);

/// The name with ".exe" where it has no extension.
QString withProgramExtension(const QString& program);

/// What a command line may mean as its program, in the order in which Windows tries it: the quoted text, or
/// without quotes each beginning that ends before a blank, the shortest first.
QList<ProgramCandidate> programCandidates(QStringView commandLine);

/// The arguments in the text after the program, by the rules of splitCommandLine().
QStringList splitArguments(QStringView rest);

} // namespace quoril
