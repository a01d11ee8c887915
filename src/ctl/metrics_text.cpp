#include "ctl/metrics_text.h"

#include <algorithm>

namespace quoril {

namespace {

QByteArray labelText(const QByteArray& name, QStringView value)
{
    return name + "=\"" + MetricsText::escaped(value) + '"';
}

} // namespace

MetricsText::MetricsText(const std::vector<std::pair<QString, QString>>& common)
{
    for (const auto& [name, value] : common)
        m_common += labelText(name.toUtf8(), value) + ',';
}

void MetricsText::family(const char* name, const char* help)
{
    m_family = name;
    m_text += "# HELP " + m_family + ' ' + help + "\n# TYPE " + m_family + " gauge\n";
}

void MetricsText::sample(std::initializer_list<Label> labels, double value)
{
    QByteArray between = m_common;
    for (const auto& [name, text] : labels)
        between += labelText(name, text) + ',';
    between.chop(1);
    m_text += m_family;
    if (!between.isEmpty())
        m_text += '{' + between + '}';
    m_text += ' ' + QByteArray::number(value, 'g', 16) + '\n';
}

QByteArray MetricsText::take()
{
    return std::exchange(m_text, {}) + "# EOF\n";
}

bool MetricsText::isLabelName(QStringView name)
{
    const auto isLetter = [](QChar unit) {
        return unit == u'_' || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    };
    const auto isAllowed = [&](QChar unit) { return isLetter(unit) || (unit >= u'0' && unit <= u'9'); };
    return !name.isEmpty() && isLetter(name.front()) && !name.startsWith(u"__")
        && std::all_of(name.begin(), name.end(), isAllowed);
}

QByteArray MetricsText::escaped(QStringView value)
{
    QByteArray text = value.toString().replace(u'\0', QChar::ReplacementCharacter).toUtf8();
    return text.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

} // namespace quoril
