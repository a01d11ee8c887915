#pragma once

#include "logs/quoril_log.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <iterator>
#include <vector>

namespace quoril::test {

/// The emulator's log read in the plainest way, line by line, for comparison.
struct PlainLog
{
    struct Message
    {
        qint32 level;
        QString code, text; ///< the text lines, each with a line feed
        qsizetype lines, place; ///< the header line's place in bytes
        friend bool operator==(const Message&, const Message&) = default;
    };
    std::vector<Message> messages;
    std::vector<qsizetype> starts; ///< indexes of the start marks

    explicit PlainLog(const QByteArray& bytes)
    {
        const QStringView units(reinterpret_cast<const char16_t*>(bytes.constData()), bytes.size() / 2);
        for (qsizetype begin = 0; begin < units.size();) {
            const QStringView line = units.sliced(begin).left(1023);
            const qsizetype length = line.left(line.indexOf(u'\n') + 1).size();
            take(length > 0 ? line.left(length) : line, begin * 2);
            begin += length > 0 ? length : line.size();
        }
    }
    /// The messages of a log as those here.
    static std::vector<Message> messagesOf(const QuorilLog& log)
    {
        std::vector<Message> messages;
        for (qsizetype i = 0; i < log.GetCount(); ++i) {
            const QuorilLogMessage message = log.GetMessage(i);
            messages.push_back({message.m_level, message.m_code_text, {}, message.GetLineCount(), 0});
            for (qsizetype line = 0; line < message.GetLineCount(); ++line)
                messages.back().text += message.GetLine(line) + u'\n';
        }
        return messages;
    }
    /// The messages from an index on, without their places.
    std::vector<Message> from(qsizetype index) const
    {
        std::vector<Message> some(messages.begin() + index, messages.end());
        std::ranges::for_each(some, [](Message& message) { message.place = 0; });
        return some;
    }

private:
    void take(QStringView line, qsizetype place)
    {
        line = line.left(std::find(line.begin(), line.end(), QChar()) - line.begin());
        constexpr QStringView Tags[] = {u":INFO :", u":WARN :", u":ERROR:"};
        const auto tag
            = std::ranges::find_if(Tags, [line](QStringView each) { return line.indexOf(each) == 15; });
        const qint32 level = tag == std::end(Tags) ? 0 : qint32(tag - Tags) + 1;
        QString code;
        for (const QChar unit : line.mid(24, 8))
            code += unit == u'\r' || unit == u'\n' ? u' ' : unit < QChar(0x80) ? unit : u'?';
        if (level > 0)
            messages.push_back({level, code, {}, 0, place});
        if (messages.empty())
            return;
        const auto isEnd = [](QChar unit) { return unit == u'\r' || unit == u'\n'; };
        const QStringView text = line.mid(level > 0 ? 52 : 0).left(512);
        messages.back()
            .text.append(text.left(std::ranges::find_if(text, isEnd) - text.begin()))
            .append(u'\n');
        ++messages.back().lines;
        while (level > 0 && code.startsWith(u'0'))
            code.remove(0, 1);
        const auto isDigit = [](QChar unit) { return QStringView(u"0123456789abcdefABCDEF").contains(unit); };
        const auto digits = std::ranges::find_if_not(code, isDigit) - code.begin();
        if (level > 0 && code.left(digits) == u"249")
            starts.push_back(qsizetype(messages.size()) - 1);
    }
};

} // namespace quoril::test
