#include "platform/terminal_text.h"

namespace quoril {

namespace {

bool isHarmful(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString escaped(QChar unit)
{
    switch (unit.unicode()) {
    case u'\t':
        return QStringLiteral("\\t");
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    default:
        return QStringLiteral("\\u") + QString::number(unit.unicode(), 16).rightJustified(4, u'0');
    }
}

/// With escapes for what is harmful and not `kept`.
QString escapedBut(QStringView kept, QStringView text)
{
    QString shown;
    shown.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        const bool pair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        const QStringView units = text.mid(at, pair ? 2 : 1);
        const char32_t character = pair ? QChar::surrogateToUcs4(units[0], units[1]) : units[0].unicode();
        if (isHarmful(character) && !kept.contains(units.front())) {
            for (const QChar unit : units)
                shown += escaped(unit);
        } else {
            shown += units;
        }
        at += units.size();
    }
    return shown;
}

} // namespace

QString terminalText(QStringView text)
{
    return escapedBut({}, text);
}

QString shownText(QStringView text)
{
    return escapedBut(u"\t\r\n", text);
}

} // namespace quoril
