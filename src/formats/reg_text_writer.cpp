// The registry editor's text form, writing.

#include "formats/reg_text.h"

#include <QtEndian>

namespace quoril::regtext {

using namespace Qt::StringLiterals;

namespace {

/// The editor breaks a line of bytes before this column.
constexpr qsizetype LineWidth = 77;

QString quoted(QStringView text)
{
    QString result(u'"');
    for (const QChar unit : text) {
        if (unit == u'"' || unit == u'\\')
            result += u'\\';
        result += unit;
    }
    return result + u'"';
}

/// The text of a string value that can stand between quotation marks: whole units, one zero at the end
/// and none before it. Line ends are kept to bytes, as another editor of the file might change them.
std::optional<QString> plainString(const QByteArray& data)
{
    if (data.size() < 2 || data.size() % 2 != 0)
        return std::nullopt;
    QString text(data.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<char16_t>(data.constData(), text.size(), text.data());
    if (text.back() != u'\0')
        return std::nullopt;
    text.chop(1);
    const bool plain = !text.contains(u'\0') && !text.contains(u'\n') && !text.contains(u'\r');
    return plain && text.isValidUtf16() ? std::optional(text) : std::nullopt;
}

/// A byte list; `start` is what stands before it on its first line.
QString byteList(const QString& start, const QByteArray& data)
{
    QString result = start;
    result.reserve(start.size() + data.size() * 3 + data.size() / 8);
    qsizetype column = start.size();
    for (qsizetype i = 0; i < data.size(); ++i) {
        const bool last = i + 1 == data.size();
        const auto byte = uchar(data[i]);
        result += QLatin1Char("0123456789abcdef"[byte >> 4]);
        result += QLatin1Char("0123456789abcdef"[byte & 15]);
        if (last)
            break;
        result += u',';
        column += 3;
        if (column >= LineWidth) {
            result += "\\\r\n  "_L1;
            column = 2;
        }
    }
    return result;
}

QString valueLine(const regf::Value& value)
{
    const QString start = (value.name.isEmpty() ? u"@"_s : quoted(value.name)) + u'=';
    if (value.type == regf::type::String) {
        if (const auto text = plainString(value.data))
            return start + quoted(*text);
    }
    if (value.type == regf::type::Dword && value.data.size() == 4) {
        const auto number = qFromLittleEndian<quint32>(value.data.constData());
        return start + u"dword:%1"_s.arg(number, 8, 16, QLatin1Char('0'));
    }
    if (value.type == regf::type::Binary)
        return byteList(start + "hex:"_L1, value.data);
    return byteList(start + u"hex(%1):"_s.arg(value.type, 0, 16), value.data);
}

void writeKey(const regf::Key& key, const QString& path, QString& text)
{
    text += u'[' + path + "]\r\n"_L1;
    for (const regf::Value& value : key.values())
        text += valueLine(value) + "\r\n"_L1;
    text += "\r\n"_L1;
    for (std::size_t i = 0; i < key.childCount(); ++i)
        writeKey(*key.childAt(i), path + u'\\' + key.childAt(i)->name(), text);
}

} // namespace

QByteArray write(const regf::Key& key, const QString& path)
{
    QString text = u"\uFEFFWindows Registry Editor Version 5.00\r\n\r\n"_s;
    writeKey(key, path, text);
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

} // namespace quoril::regtext
