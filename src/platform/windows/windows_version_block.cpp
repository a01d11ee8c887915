#include "platform/windows/windows_version_block.h"

#include "platform/windows/win32.h"

#include <QByteArray>

#include <cstring>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The first pair of the block's translation table.
struct Translation
{
    quint16 language = 0;
    quint16 codePage = 0;
};

} // namespace

Result<QString> windowsFileVersion(const QString& path)
{
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(wide(path), &handle);
    if (size == 0)
        return lastError();
    QByteArray block(static_cast<qsizetype>(size), '\0');
    if (!::GetFileVersionInfoW(wide(path), 0, size, block.data()))
        return lastError();
    void* found = nullptr;
    UINT length = 0;
    Translation translation;
    if (!::VerQueryValueW(block.constData(), L"\\VarFileInfo\\Translation", &found, &length)
        || length < sizeof translation)
        return Error{error::ResourceTypeNotFound, path};
    std::memcpy(&translation, found, sizeof translation);
    const QString key = u"\\StringFileInfo\\%1%2\\FileVersion"_s.arg(translation.language, 4, 16, QChar(u'0'))
                            .arg(translation.codePage, 4, 16, QChar(u'0'));
    if (!::VerQueryValueW(block.constData(), wide(key), &found, &length))
        return Error{error::ResourceNameNotFound, path};
    // The length counts the zero unit, where there is one.
    const QString text
        = QString::fromWCharArray(static_cast<const wchar_t*>(found), static_cast<int>(length));
    const qsizetype end = text.indexOf(QChar(u'\0'));
    return end < 0 ? text : text.left(end);
}

} // namespace quoril
