#include "shell/version_record.h"

namespace quoril {

namespace {

constexpr qint32 MaximumNumber = 0x7FFFFFFF;

bool isDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// Reads the number at the position and moves the position behind it; false where there is none.
bool takeNumber(QStringView text, qsizetype& position, qint32& number)
{
    const qsizetype start = position;
    qint64 value = 0;
    for (; position < text.size() && isDigit(text[position]); ++position)
        value = qMin<qint64>(value * 10 + (text[position].unicode() - u'0'), MaximumNumber);
    if (position == start)
        return false;
    number = qint32(value);
    return true;
}

} // namespace

VersionRecord VersionRecord::parse(QStringView fileVersion)
{
    VersionRecord version;
    qsizetype position = 0;
    while (position < fileVersion.size() && !isDigit(fileVersion[position]))
        ++position;
    for (qint32* number : {&version.major, &version.minor, &version.sub_minor, &version.build}) {
        if (!takeNumber(fileVersion, position, *number) || position == fileVersion.size()
            || fileVersion[position] != u'.')
            break;
        ++position;
    }
    version.version_text = fileVersion.left(TextLimit).toString();
    return version;
}

} // namespace quoril
