#include "logs/quoril_log_line.h"

#include "logs/hex_code.h"
#include "logs/quoril_log.h"

#include <algorithm>
#include <cstring>

namespace quoril {

namespace {

constexpr quint32 TagLength = log_column::TagEnd - log_column::Tag;
constexpr const char* Tags[] = {":INFO :", ":WARN :", ":ERROR:"};

bool isBlank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

} // namespace

void LogLine::cutAtZero()
{
    quint32 end = 0;
    while (end < m_size && (*this)[end] != 0)
        ++end;
    m_size = end;
}

bool LogLine::hasTag(quint32 column, const char* tag) const
{
    if (!m_wide)
        return std::memcmp(m_bytes + column, tag, TagLength) == 0;
    for (quint32 i = 0; i < TagLength; ++i) {
        if ((*this)[column + i] != uchar(tag[i]))
            return false;
    }
    return true;
}

qint32 LogLine::level() const
{
    if (m_size < log_column::TagEnd || (*this)[log_column::Tag] != u':')
        return 0;
    for (qint32 index = 0; index < qint32(std::size(Tags)); ++index) {
        if (!hasTag(log_column::Tag, Tags[index]))
            continue;
        // A line that has the tag further left as well is no header.
        for (quint32 column = 0; column < log_column::Tag; ++column) {
            if ((*this)[column] == u':' && hasTag(column, Tags[index]))
                return 0;
        }
        return index + 1;
    }
    return 0;
}

qint32 LogLine::decimal(quint32 column, quint32 width) const
{
    const quint32 end = column + width;
    while (column < end && isBlank((*this)[column]))
        ++column;
    bool negative = false;
    if (column < end && ((*this)[column] == u'-' || (*this)[column] == u'+'))
        negative = (*this)[column++] == u'-';
    qint32 number = 0;
    for (; column < end && (*this)[column] >= u'0' && (*this)[column] <= u'9'; ++column)
        number = number * 10 + ((*this)[column] - u'0');
    return negative ? -number : number;
}

std::array<qint32, 6> LogLine::time() const
{
    return {decimal(0, 4), decimal(4, 2), decimal(6, 2), decimal(9, 2), decimal(11, 2), decimal(13, 2)};
}

QString LogLine::codeText() const
{
    QString text;
    for (quint32 column = log_column::Code; column < std::min(m_size, log_column::CodeEnd); ++column) {
        const char16_t unit = (*this)[column];
        if (unit == u'\r' || unit == u'\n')
            text += u' ';
        else
            text += unit < 0x80 ? QChar(unit) : QChar(u'?');
    }
    return text;
}

quint32 LogLine::code() const
{
    quint32 number = 0;
    for (quint32 column = log_column::Code; column < std::min(m_size, log_column::CodeEnd); ++column) {
        const int digit = hexDigit((*this)[column]);
        if (digit < 0)
            break;
        number = number << 4 | quint32(digit);
    }
    return number;
}

QString LogLine::text(quint32 fromColumn) const
{
    const quint32 limit = std::min(m_size, fromColumn + quint32(wMsg::Capacity));
    quint32 end = fromColumn;
    while (end < limit && (*this)[end] != u'\r' && (*this)[end] != u'\n')
        ++end;
    if (end <= fromColumn)
        return {};
    const qsizetype length = end - fromColumn;
    if (!m_wide)
        return QString::fromLatin1(reinterpret_cast<const char*>(m_bytes + fromColumn), length);
    QString text(length, Qt::Uninitialized);
    std::memcpy(text.data(), m_bytes + 2 * fromColumn, std::size_t(length) * 2);
    return text;
}

} // namespace quoril
