#include "ctl/log_file_printer.h"

#include "ctl/output.h"
#include "logs/log_line_scan.h"
#include "logs/log_runs.h"
#include "logs/log_table.h"
#include "logs/quoril_log.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

using Line = std::span<const char16_t>;

constexpr std::size_t Eight = 8;

#ifdef __SSE2__

/// Copies eight units that are printable ASCII, in JSON as in text, to bytes. False for any others.
bool copyPlain(const char16_t* units, char* out)
{
    const __m128i eight = log_scan::eight(units);
    const auto is = [eight](char16_t unit) { return _mm_cmpeq_epi16(eight, _mm_set1_epi16(short(unit))); };
    // Signed: what is above 0x7FFF counts as too small.
    const __m128i small = _mm_cmplt_epi16(eight, _mm_set1_epi16(u' '));
    const __m128i large = _mm_cmpgt_epi16(eight, _mm_set1_epi16(u'~'));
    const __m128i odd = _mm_or_si128(_mm_or_si128(small, large), _mm_or_si128(is(u'"'), is(u'\\')));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(eight, eight));
    return _mm_movemask_epi8(odd) == 0;
}

#else

bool copyPlain(const char16_t* units, char* out)
{
    bool isPlain = true;
    for (std::size_t i = 0; i < Eight; ++i) {
        out[i] = char(units[i]);
        isPlain = isPlain && units[i] >= u' ' && units[i] <= u'~' && units[i] != u'"' && units[i] != u'\\';
    }
    return isPlain;
}

#endif

bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// Puts the rows together in UTF-8. Lines of plain ASCII, nearly all of them, go straight from the log to the
/// output; what is odd takes the way of the other tables.
class LogFilePrinter
{
public:
    LogFilePrinter(Console& console, bool json) : m_console(console), m_json(json), m_out(RoomBytes) { }

    void take(Line line);
    /// How many messages there were.
    qint64 finish();

private:
    // A row is at most 512 units with its escapes, and what stands before them.
    static constexpr std::size_t RoomBytes = std::size_t{128} * 1024;
    static constexpr std::size_t RowBytes = std::size_t{8} * 1024;

    void takeHeader(Line line, qint32 level);
    bool takePlainHeader(Line line, QByteArrayView severity);
    void putText(Line line);
    void putOddText(Line line);
    void put(QByteArrayView bytes);
    void flush();

    Console& m_console;
    bool m_json;
    qint64 m_messages = 0;
    bool m_isEmpty = true;
    QByteArray m_rowBegin; ///< of the message's rows
    std::vector<char> m_out;
    std::size_t m_used = 0;
};

void LogFilePrinter::put(QByteArrayView bytes)
{
    std::copy(bytes.begin(), bytes.end(), m_out.begin() + std::ptrdiff_t(m_used));
    m_used += std::size_t(bytes.size());
}

void LogFilePrinter::flush()
{
    m_console.bytes(QByteArray::fromRawData(m_out.data(), qsizetype(m_used)));
    m_used = 0;
}

void LogFilePrinter::take(Line line)
{
    const qint32 level = logLineLevel(line);
    if (level != 0)
        takeHeader(line, level);
    if (m_rowBegin.isEmpty())
        return;
    if (m_out.size() - m_used < RowBytes)
        flush();
    if (m_json)
        put(m_isEmpty ? "[\n" : ",\n");
    m_isEmpty = false;
    put(m_rowBegin);
    const std::size_t column = level != 0 ? log_column::Text : 0;
    putText(line.subspan(std::min(column, line.size())));
    put(m_json ? "\"}" : "\n");
}

void LogFilePrinter::takeHeader(Line line, qint32 level)
{
    ++m_messages;
    const QString severity = severityName(RowSeverity(level));
    if (takePlainHeader(line, severity.toLatin1()))
        return;
    const LogLine header = log_scan::asLine(line);
    const QString date = logDateText(header.time());
    const QString code = header.codeText();
    if (m_json) {
        const QJsonObject object{{"date"_L1, date}, {"messageId"_L1, code}, {"severity"_L1, severity}};
        m_rowBegin = QJsonDocument(object).toJson(QJsonDocument::Compact).chopped(1) + ",\"text\":\"";
    } else {
        m_rowBegin = (date + u"  "_s + code.leftJustified(8) + u"  "_s).toUtf8();
    }
}

/// A header with a time in digits and a plain code. False for any other.
bool LogFilePrinter::takePlainHeader(Line line, QByteArrayView severity)
{
    // Where the fields of the time lie, and what follows them.
    struct Field
    {
        std::size_t column, width;
        char separator;
    };
    constexpr Field Fields[]
        = {{0, 4, '-'}, {4, 2, '-'}, {6, 2, ' '}, {9, 2, ':'}, {11, 2, ':'}, {13, 2, '\0'}};
    std::array<char, Eight> code;
    if (line.size() < log_column::CodeEnd || !copyPlain(line.data() + log_column::Code, code.data()))
        return false;
    std::array<char, 19> date;
    std::size_t at = 0;
    for (const Field& field : Fields) {
        for (std::size_t i = field.column; i < field.column + field.width; ++i) {
            if (!isDigit(line[i]))
                return false;
            date[at++] = char(line[i]);
        }
        if (at < date.size())
            date[at++] = field.separator;
    }
    const QByteArrayView dateText(date.data(), qsizetype(date.size()));
    const QByteArrayView codeText(code.data(), qsizetype(code.size()));
    m_rowBegin.resize(0);
    if (m_json) {
        m_rowBegin.append("{\"date\":\"").append(dateText).append("\",\"messageId\":\"").append(codeText);
        m_rowBegin.append("\",\"severity\":\"").append(severity).append("\",\"text\":\"");
    } else {
        m_rowBegin.append(dateText).append("  ").append(codeText).append("  ");
    }
    return true;
}

void LogFilePrinter::putText(Line line)
{
    std::size_t length = line.size();
    if (length > 0 && line[length - 1] == u'\n')
        --length;
    if (length > 0 && line[length - 1] == u'\r')
        --length;
    length = std::min<std::size_t>(length, wMsg::Capacity);
    char* const out = m_out.data() + m_used;
    bool isPlain = true;
    std::size_t done = 0;
    for (; isPlain && done + Eight <= length; done += Eight)
        isPlain = copyPlain(line.data() + done, out + done);
    std::array<char16_t, Eight> rest;
    rest.fill(u' ');
    std::copy(line.begin() + std::ptrdiff_t(done), line.begin() + std::ptrdiff_t(std::max(length, done)),
        rest.begin());
    if (isPlain && copyPlain(rest.data(), out + done))
        m_used += length;
    else
        putOddText(line);
}

void LogFilePrinter::putOddText(Line line)
{
    const QString text = log_scan::asLine(line).text(0);
    if (!m_json)
        put(text.toUtf8());
    else
        put(QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact).chopped(2).sliced(2));
}

qint64 LogFilePrinter::finish()
{
    if (m_json && !m_isEmpty)
        put("\n]\n");
    flush();
    return m_messages;
}

/// The same for a terminal, which gets colours and nothing that commands it.
qint64 printToTerminal(Console& console, QIODevice& log, bool json)
{
    qint64 messages = 0;
    std::optional<JsonArray> rows;
    LogBlocks blocks(log, wholeLog(log));
    std::optional<LogHeader> message;
    for (auto lines = blocks.next(); !lines.empty(); lines = blocks.next()) {
        forEachLogLine(lines, [&](Line units) {
            const LogLine line = log_scan::asLine(units);
            const qint32 level = line.level();
            if (level != 0)
                message = {level, line.time(), line.codeText()};
            if (!message)
                return;
            messages += level != 0;
            if (json && !rows)
                rows.emplace(console);
            LogTableBuilder table;
            table.AddLogRow(logDateText(message->time), message->codeText,
                line.text(level != 0 ? log_column::Text : 0), RowSeverity(message->level));
            printLogRow(console, table.take(), 0, rows ? &*rows : nullptr);
        });
    }
    return messages;
}

} // namespace

qint64 printLogFile(Console& console, QIODevice& log, bool json)
{
    if (console.facts().outputIsTerminal)
        return printToTerminal(console, log, json);
    LogFilePrinter printer(console, json);
    LogBlocks blocks(log, wholeLog(log));
    for (auto lines = blocks.next(); !lines.empty(); lines = blocks.next())
        forEachLogLine(lines, [&printer](Line line) { printer.take(line); });
    return printer.finish();
}

} // namespace quoril
