#pragma once

#include <QString>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// A line of the emulator's log, in its columns; the code 249 marks a start.
inline QString logLine(
    const QString& text, const QString& code = u"00000249"_s, const QString& tag = u":INFO :"_s)
{
    return u"20010203:040506"_s + tag.leftJustified(9) + code.leftJustified(28) + text + u"\r\n"_s;
}

/// A log with one start and that many lines: "line 0", "line 1" and so on.
inline QString logOf(int lines)
{
    QString log = logLine(u"line 0"_s);
    for (int i = 1; i < lines; ++i)
        log += u"line %1\r\n"_s.arg(i);
    return log;
}

} // namespace quoril::test
