#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstdio>

namespace quoril {

enum class StandardStream
{
    Input,
    Output,
    Error
};

/// Whether the stream of this process is a terminal, where a person sees and types, and neither a file nor a
/// pipe nor another device.
bool isTerminal(StandardStream stream);

/// Whether the process has such a stream at all. One with windows has none that wasn't given one.
bool hasStream(StandardStream stream);

/// Puts lines of text out. What is in them can't command a terminal. A program that has no such stream says
/// it on the terminal that it was started from, else in a box, where somebody can see one.
void say(QStringView text, StandardStream stream = StandardStream::Error);

/// The same on standard error, for each text once in the life of the process.
void sayOnce(const QString& text);

/// Writes UTF-8 to the stream, not held back: a terminal gets what it shows as that text. False if not all of
/// it could be written.
bool writeText(std::FILE* file, const QByteArray& utf8);

/// Makes the standard streams carry what is written to them byte by byte, and a terminal understand colours,
/// where the system doesn't do so by itself. False if a terminal doesn't understand them. What is changed of
/// a terminal is put back when the process ends, also by Ctrl+C.
bool prepareStandardStreams();

} // namespace quoril
