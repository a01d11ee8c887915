// The registry editor's text form, writing.

#include "formats/reg_text.h"

#include <QtEndian>

#include <algorithm>

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

/// Why a name can't stand in a text or would not be the same name after an import; null for one that can.
const char* obstacleIn(QStringView name)
{
    const auto breaks = [](QChar unit) { return unit == u'\n' || unit == u'\r' || unit == u'\0'; };
    if (std::any_of(name.begin(), name.end(), breaks))
        return "a line end or a zero in a name";
    return name.isValidUtf16() ? nullptr : "half a surrogate pair in a name";
}

/// On one line, whatever the names hold.
QString shown(QStringView path)
{
    QString text;
    for (const QChar unit : path) {
        if (unit.unicode() < 0x20 || unit.isSurrogate())
            text += u"\\u%1"_s.arg(unit.unicode(), 4, 16, QLatin1Char('0'));
        else
            text += unit;
    }
    return text;
}

/// Writes a key with all below it, and remembers what a text can't carry.
class Writer
{
public:
    void writeKey(const regf::Key& key, const QString& path);
    void refuse(QStringView path, const char* why);

    qsizetype obstacles() const { return m_obstacles; }
    QString loss() const { return m_loss; }
    QString takeText() { return std::move(m_text); }

private:
    void checkName(const regf::Key& parent, const regf::Key& key, const QString& path);
    void writeValues(const regf::Key& key, const QString& path);

    QString m_text = u"\uFEFFWindows Registry Editor Version 5.00\r\n\r\n"_s;
    QString m_loss;
    qsizetype m_obstacles = 0;
};

void Writer::refuse(QStringView path, const char* why)
{
    constexpr qsizetype MostListed = 5;
    if (++m_obstacles <= MostListed)
        m_loss += (m_loss.isEmpty() ? u""_s : u"; "_s) + shown(path) + u": "_s + QLatin1StringView(why);
    else if (m_obstacles == MostListed + 1)
        m_loss += u"; and more"_s;
}

void Writer::checkName(const regf::Key& parent, const regf::Key& key, const QString& path)
{
    const QString& name = key.name();
    if (const char* why = obstacleIn(name))
        refuse(path, why);
    else if (name.isEmpty() || name.contains(u'\\') || name.size() > regf::Key::MaximumKeyName)
        refuse(path, "not a name for a key");
    else if (parent.child(name) != &key)
        refuse(path, "two keys of one name");
}

void Writer::writeValues(const regf::Key& key, const QString& path)
{
    for (const regf::Value& value : key.values()) {
        if (const char* why = obstacleIn(value.name))
            refuse(path + u'\\' + value.name, why);
        else if (key.value(value.name) != &value)
            refuse(path + u'\\' + value.name, "two values of one name");
        else if (value.name.size() > regf::Key::MaximumValueName)
            refuse(path, "not a name for a value");
        m_text += valueLine(value) + "\r\n"_L1;
    }
}

void Writer::writeKey(const regf::Key& key, const QString& path)
{
    m_text += u'[' + path + "]\r\n"_L1;
    if (!key.isWhole())
        refuse(path, "a part of it can't be read");
    writeValues(key, path);
    m_text += "\r\n"_L1;
    for (std::size_t i = 0; i < key.childCount(); ++i) {
        const regf::Key& child = *key.childAt(i);
        const QString childPath = path + u'\\' + child.name();
        checkName(key, child, childPath);
        writeKey(child, childPath);
    }
}

} // namespace

Result<QByteArray> write(const regf::Key& key, const QString& path)
{
    Writer writer;
    if (const char* why = obstacleIn(path))
        writer.refuse(path, why);
    writer.writeKey(key, path);
    if (writer.obstacles() > 0)
        return Error{error::BadDatabase, u"a text can't carry all of it: "_s + writer.loss()};
    const QString text = writer.takeText();
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

} // namespace quoril::regtext
