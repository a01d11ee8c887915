#pragma once

#include <QString>
#include <QStringView>

#include <array>

namespace quoril {

/// One file's version, all zero and empty until it is read.
struct VersionRecord
{
    /// The longest text that is kept, in UTF-16 units.
    static constexpr qsizetype TextLimit = 255;
    /// What is looked at of a file version, in whole units: 2047 bytes.
    static constexpr qsizetype ReadLimit = 2047 / 2;

    QString version_text;
    qint32 major = 0;
    qint32 minor = 0;
    qint32 sub_minor = 0;
    qint32 build = 0;

    /// Takes a file version such as "V 1.14.2.3 beta": up to four numbers separated by dots, from the first
    /// digit on. A number that is missing is 0.
    static VersionRecord parse(QStringView fileVersion);

    /// Scans up to four numbers with a dot between them from the text's start, each with blanks before it and
    /// a sign as formatted input takes them. It stops where the text goes on otherwise; what isn't read is 0.
    static std::array<qint32, 4> scanNumbers(QStringView text);

    void setNumbers(const std::array<qint32, 4>& numbers);
};

} // namespace quoril
