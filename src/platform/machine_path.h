#pragma once

#include <QStringView>

#include <algorithm>

namespace quoril {

// The parts of a path of the machine. Either separator counts; the parts lie in the path's own text.

constexpr bool isPathSeparator(QChar unit)
{
    return unit == u'\\' || unit == u'/';
}

/// "C:", whatever stands for the letter; empty without a drive.
inline QStringView driveOf(QStringView path)
{
    return path.size() > 1 && path[1] == u':' ? path.first(2) : QStringView();
}

/// Drive and directory, with the last separator: what stands before the file's name.
inline QStringView folderOf(QStringView path)
{
    const auto end = std::find_if(path.rbegin(), path.rend(), isPathSeparator).base();
    return end == path.begin() ? driveOf(path) : path.first(end - path.begin());
}

/// What stands between the drive and the file's name: it begins and ends with a separator where there is one.
inline QStringView directoryOf(QStringView path)
{
    return folderOf(path).mid(driveOf(path).size());
}

inline QStringView fileNameOf(QStringView path)
{
    return path.sliced(folderOf(path).size());
}

} // namespace quoril
