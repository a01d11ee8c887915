#include "shell/version_record.h"

#include <algorithm>

namespace quoril {

namespace {

bool isDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// Reads the number at the position and moves the position past it; false where there is none.
bool takeNumber(QStringView text, qsizetype& position, qint32& number)
{
    constexpr qint64 limit = 0x80000000;
    qsizetype at = position;
    while (at < text.size() && text[at].isSpace())
        ++at;
    const bool isNegative = at < text.size() && text[at] == u'-';
    if (isNegative || (at < text.size() && text[at] == u'+'))
        ++at;
    const qsizetype start = at;
    qint64 value = 0;
    for (; at < text.size() && isDigit(text[at]); ++at)
        value = qMin(value * 10 + (text[at].unicode() - u'0'), limit);
    if (at == start)
        return false;
    position = at;
    number = qint32(isNegative ? -value : qMin(value, limit - 1));
    return true;
}

} // namespace

std::array<qint32, 4> VersionRecord::scanNumbers(QStringView text)
{
    std::array<qint32, 4> numbers{};
    qsizetype position = 0;
    for (qint32& number : numbers) {
        if (!takeNumber(text, position, number) || position == text.size() || text[position] != u'.')
            break;
        ++position;
    }
    return numbers;
}

void VersionRecord::setNumbers(const std::array<qint32, 4>& numbers)
{
    major = numbers[0];
    minor = numbers[1];
    sub_minor = numbers[2];
    build = numbers[3];
}

VersionRecord VersionRecord::parse(QStringView fileVersion)
{
    VersionRecord version;
    fileVersion.truncate(qMin(fileVersion.size(), ReadLimit));
    const auto* const digit = std::find_if(fileVersion.begin(), fileVersion.end(), isDigit);
    version.setNumbers(scanNumbers(fileVersion.mid(digit - fileVersion.begin())));
    version.version_text = fileVersion.left(TextLimit).toString();
    return version;
}

} // namespace quoril
