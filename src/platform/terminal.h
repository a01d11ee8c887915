#pragma once

#include <QStringView>

namespace quoril {

enum class StandardStream
{
    Input,
    Output,
    Error
};

/// Whether the stream of this process is a terminal and neither a file nor a pipe.
bool isTerminal(StandardStream stream);

/// Puts lines of text out in the host's encoding. What is in them can't command a terminal.
void say(QStringView text, StandardStream stream = StandardStream::Error);

/// Makes the standard streams carry UTF-8 byte by byte, and a terminal understand colours, where the system
/// doesn't do so by itself. The console's code page is put back when the process ends.
void prepareStandardStreams();

} // namespace quoril
