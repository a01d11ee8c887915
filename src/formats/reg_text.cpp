// The registry editor's text form, reading.

#include "formats/reg_text.h"

#include "formats/name_case.h"

#include <QStringDecoder>
#include <QtEndian>

namespace quoril::regtext {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView Header = u"Windows Registry Editor Version 5.00";

bool isBlank(QChar unit)
{
    return unit == u' ' || unit == u'\t';
}

Result<QString> decode(const QByteArray& bytes)
{
    if (bytes.startsWith("\xff\xfe")) {
        if (bytes.size() % 2 != 0)
            return Error{error::BadDatabase, u"the text ends within a character"_s};
        QString text(bytes.size() / 2 - 1, Qt::Uninitialized);
        qFromLittleEndian<char16_t>(bytes.constData() + 2, text.size(), text.data());
        return text;
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (utf8.hasError())
        return Error{error::BadDatabase, u"the text is neither UTF-16 nor UTF-8"_s};
    return text;
}

QByteArray stringData(const QString& text)
{
    QByteArray data((text.size() + 1) * 2, '\0');
    qToLittleEndian<char16_t>(text.utf16(), text.size(), data.data());
    return data;
}

/// Goes through the text once. Every step is false at a fault, which fault() then names.
class Parser
{
public:
    explicit Parser(QStringView text) : m_text(text) { }

    bool run();
    std::vector<Operation> takeOperations() { return std::move(m_operations); }
    Error fault() const { return {error::BadDatabase, u"line %1: %2"_s.arg(m_line).arg(m_fault)}; }

private:
    bool atEnd() const { return m_place >= m_text.size(); }
    QChar peek() const { return atEnd() ? QChar(u'\n') : m_text[m_place]; }
    bool atLineEnd() const { return atEnd() || peek() == u'\n' || peek() == u'\r'; }
    void skipBlanks();
    bool skipLine();
    bool accept(QStringView word);
    bool fail(const char* what);

    bool keyLine();
    bool valueLine();
    bool valueData();
    bool quotedText(QString& text);
    bool number(quint32& value, int mostDigits);
    bool dword();
    bool byteList();
    bool continueLine();

    QStringView m_text;
    qsizetype m_place = 0;
    int m_line = 1;
    QString m_fault;
    QString m_path; ///< of the section; empty before the first
    bool m_deletes = false; ///< the section is one of deletion
    Operation m_value; ///< the one being read
    std::vector<Operation> m_operations;
};

bool Parser::fail(const char* what)
{
    m_fault = QString::fromLatin1(what);
    return false;
}

void Parser::skipBlanks()
{
    while (!atEnd() && isBlank(peek()))
        ++m_place;
}

/// Past the end of the line; a carriage return alone ends a line too.
bool Parser::skipLine()
{
    skipBlanks();
    if (peek() == u';' && !atEnd()) {
        while (!atLineEnd())
            ++m_place;
    }
    if (!atLineEnd())
        return fail("something follows the end of the statement");
    if (!accept(u"\r\n"))
        ++m_place;
    ++m_line;
    return true;
}

bool Parser::accept(QStringView word)
{
    if (!foldedEquals(m_text.mid(m_place, word.size()), word))
        return false;
    m_place += word.size();
    return true;
}

bool Parser::run()
{
    if (!accept(Header))
        return fail("the text does not begin with \"Windows Registry Editor Version 5.00\"");
    if (!skipLine())
        return false;
    while (!atEnd()) {
        skipBlanks();
        bool good = true;
        if (peek() == u'[')
            good = keyLine();
        else if (!atLineEnd() && peek() != u';')
            good = valueLine();
        if (!good || !skipLine())
            return false;
    }
    return true;
}

bool Parser::keyLine()
{
    // A key's name may hold brackets, so the last one of the line ends the path.
    qsizetype end = m_place;
    while (end < m_text.size() && m_text[end] != u'\n' && m_text[end] != u'\r')
        ++end;
    const QStringView line = m_text.sliced(m_place, end - m_place);
    const qsizetype closing = line.lastIndexOf(u']');
    if (closing < 0)
        return fail("the path of a key has no closing bracket");
    QStringView path = line.sliced(1, closing - 1);
    m_deletes = path.startsWith(u'-');
    if (m_deletes)
        path = path.sliced(1);
    if (path.isEmpty() || path.startsWith(u'\\'))
        return fail("a key without a path");
    m_path = path.toString();
    m_place += closing + 1;
    const auto kind = m_deletes ? Operation::Kind::DeleteKey : Operation::Kind::CreateKey;
    m_operations.push_back({kind, m_path, {}, 0, {}, m_line});
    return true;
}

bool Parser::valueLine()
{
    if (m_path.isEmpty() || m_deletes)
        return fail("a value outside of a key");
    m_value = {Operation::Kind::SetValue, m_path, {}, 0, {}, m_line};
    if (!accept(u"@") && !quotedText(m_value.name))
        return false;
    skipBlanks();
    if (!accept(u"="))
        return fail("no equals sign after the name of a value");
    skipBlanks();
    if (!valueData())
        return false;
    m_operations.push_back(std::move(m_value));
    return true;
}

bool Parser::valueData()
{
    if (accept(u"-")) {
        m_value.kind = Operation::Kind::DeleteValue;
        return true;
    }
    if (peek() == u'"') {
        QString text;
        m_value.type = regf::type::String;
        if (!quotedText(text))
            return false;
        m_value.data = stringData(text);
        return true;
    }
    if (accept(u"dword:"))
        return dword();
    if (accept(u"hex:")) {
        m_value.type = regf::type::Binary;
        return byteList();
    }
    if (!accept(u"hex("))
        return fail("unknown form of a value");
    if (!number(m_value.type, 8) || !accept(u"):"))
        return fail("the type of a value is not a hexadecimal number in brackets");
    return byteList();
}

bool Parser::quotedText(QString& text)
{
    if (!accept(u"\""))
        return fail("a name or text without quotation marks");
    for (; !atEnd(); ++m_place) {
        QChar unit = m_text[m_place];
        if (unit == u'"') {
            ++m_place;
            return true;
        }
        if (unit == u'\\') {
            if (++m_place >= m_text.size())
                break;
            unit = m_text[m_place];
            if (unit != u'"' && unit != u'\\')
                return fail("a backslash before something other than a quotation mark or a backslash");
        }
        if (unit == u'\n')
            ++m_line;
        text += unit;
    }
    return fail("no closing quotation mark");
}

bool Parser::number(quint32& value, int mostDigits)
{
    qsizetype digits = 0;
    while (m_place + digits < m_text.size()
        && QStringView(u"0123456789abcdefABCDEF").contains(m_text[m_place + digits]))
        ++digits;
    if (digits == 0 || digits > mostDigits)
        return false;
    value = m_text.sliced(m_place, digits).toUInt(nullptr, 16);
    m_place += digits;
    return true;
}

bool Parser::dword()
{
    quint32 value = 0;
    if (!number(value, 8))
        return fail("dword: needs one to eight hexadecimal digits");
    m_value.type = regf::type::Dword;
    m_value.data.resize(4);
    qToLittleEndian(value, m_value.data.data());
    return true;
}

/// Past a backslash at the end of a line and the blanks of the next one.
bool Parser::continueLine()
{
    skipBlanks();
    while (accept(u"\\")) {
        skipBlanks();
        if (!atLineEnd() || atEnd())
            return fail("a backslash that does not end its line");
        if (!skipLine())
            return false;
        skipBlanks();
    }
    return true;
}

bool Parser::byteList()
{
    if (!continueLine())
        return false;
    if (atLineEnd() || peek() == u';')
        return true;
    do {
        quint32 byte = 0;
        if (!continueLine())
            return false;
        if (!number(byte, 2))
            return fail("a byte is not one or two hexadecimal digits");
        m_value.data += char(byte);
        if (!continueLine())
            return false;
    } while (accept(u","));
    return true;
}

Status carryOut(const Operation& operation, Sink& sink)
{
    switch (operation.kind) {
    case Operation::Kind::CreateKey:
        return sink.createKey(operation.path);
    case Operation::Kind::DeleteKey:
        return sink.deleteKey(operation.path);
    case Operation::Kind::SetValue:
        return sink.setValue(operation.path, operation.name, operation.type, operation.data);
    case Operation::Kind::DeleteValue:
        return sink.deleteValue(operation.path, operation.name);
    }
    return Error{error::InvalidParameter, {}};
}

} // namespace

Result<std::vector<Operation>> parse(const QByteArray& bytes)
{
    const Result<QString> text = decode(bytes);
    if (!text)
        return text.failure();
    Parser parser(*text);
    if (!parser.run())
        return parser.fault();
    return parser.takeOperations();
}

Status apply(const std::vector<Operation>& operations, Sink& sink)
{
    for (const Operation& operation : operations) {
        const Status done = carryOut(operation, sink);
        if (!done)
            return Error{
                done.failure().number, u"line %1: %2"_s.arg(operation.line).arg(done.failure().detail)};
    }
    return {};
}

} // namespace quoril::regtext
