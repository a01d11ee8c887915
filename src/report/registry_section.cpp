#include "report/registry_section.h"

#include "report/report_stream.h"
#include "services/service_walk.h"

#include <QStringList>

#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestValueBytes = 511;
constexpr qsizetype NameRoomUnits = 511; // of a buffer of 512 units
constexpr qsizetype LongestParameterBytes = 1023;
constexpr qsizetype DeepestKey = 512;

/// The names of the keys from the service's own down to the one being written; empty between reports.
QStringList g_registry_path;

/// The unit at the index of the data, 0 after its end.
char16_t unitAt(const QByteArray& data, qsizetype index)
{
    return 2 * index + 1 < data.size() ? char16_t(uchar(data[2 * index]) | uchar(data[2 * index + 1]) << 8)
                                       : u'\0';
}

QString wideText(const QByteArray& data)
{
    QString text;
    for (qsizetype i = 0; unitAt(data, i) != 0; ++i)
        text += QChar(unitAt(data, i));
    return text;
}

QString joinedTexts(const QByteArray& data)
{
    QString text;
    for (qsizetype i = 0; unitAt(data, i) != 0 || unitAt(data, i + 1) != 0; ++i)
        text += unitAt(data, i) != 0 ? QChar(unitAt(data, i)) : u' ';
    return text;
}

/// The number of the first up to four bytes, the least significant first.
quint32 number(const QByteArray& data)
{
    quint32 value = 0;
    for (qsizetype i = 0; i < std::min<qsizetype>(data.size(), 4); ++i)
        value |= quint32(uchar(data[i])) << (8 * i);
    return value;
}

QString signedNumber(const QByteArray& data)
{
    return QString::number(qint32(number(data)));
}

QString hexNumber(const QByteArray& data)
{
    return QString::number(number(data), 16).toUpper();
}

QString hexNumberAndDots(const QByteArray& data)
{
    return hexNumber(data) + u"..."_s;
}

QString notSet(const QByteArray&)
{
    return u"(value not set)"_s;
}

struct TypeFormat
{
    QStringView name;
    QString (*format)(const QByteArray& data);
};

/// By the number of the type.
constexpr TypeFormat TypeFormats[] = {
    {u"REG_NONE", notSet},
    {u"REG_SZ", wideText},
    {u"REG_EXPAND_SZ", wideText},
    {u"REG_BINARY", hexNumberAndDots},
    {u"REG_DWORD", signedNumber},
    {u"REG_DWORD_BIG_ENDIAN", signedNumber},
    {u"REG_LINK", wideText},
    {u"REG_MULTI_SZ", joinedTexts},
    {u"REG_RESOURCE_LIST", wideText},
};
constexpr TypeFormat UnknownType = {u"<UNKNOWN>", hexNumber};

/// The keys that are open on the way down. The tree's depth is its maker's choice, so none of it is put on
/// the call stack.
class RegistryWalk
{
public:
    explicit RegistryWalk(ReportStream& out) : m_out(out) { }

    void run(const RegistryKey& parent, QStringView name)
    {
        enter(parent, name);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            const auto subkey = level.key->subkeyName(level.nextSubkey++, NameRoomUnits);
            if (subkey)
                enter(*level.key, *subkey);
            else
                leave();
        }
    }

private:
    struct Level
    {
        RegistryKeyHandle key;
        quint32 nextSubkey = 0;
    };

    void enter(const RegistryKey& parent, QStringView name)
    {
        if (g_registry_path.size() == DeepestKey)
            return;
        auto key = parent.open(name, registryAccess());
        if (!key)
            return;
        g_registry_path.append(name.toString());
        m_out.write(u"\r\nRegistry key: "_s + g_registry_path.join(u"->") + u"\r\n"_s);
        m_levels.push_back({*std::move(key)});
        writeValues(*m_levels.back().key);
    }

    void leave()
    {
        m_levels.pop_back();
        g_registry_path.removeLast();
    }

    void writeValues(const RegistryKey& key)
    {
        for (quint32 index = 0;; ++index) {
            const auto name = key.valueName(index);
            if (!name)
                return;
            const auto value = key.value(*name, LongestValueBytes);
            if (!value)
                return;
            const auto [ValType, ValFormatted] = printedValue(*value);
            m_out.write(u"\tName: "_s + *name + u"\r\n\tType: "_s + ValType + u"\r\n\tData: "_s + ValFormatted
                + u"\r\n\r\n"_s);
        }
    }

    ReportStream& m_out;
    std::vector<Level> m_levels;
};

} // namespace

PrintedValue printedValue(const RegistryValue& value)
{
    const TypeFormat& type = value.type < std::size(TypeFormats) ? TypeFormats[value.type] : UnknownType;
    return {type.name.toString(), type.format(value.data)};
}

void WriteRegistryKey(const RegistryKey& parent, QStringView name, ReportStream& out)
{
    RegistryWalk(out).run(parent, name);
}

void writeInstanceKeys(const RegistryKey& services, const QString& serviceName, ReportStream& out)
{
    walkInstances(services, {.nameUnits = NameRoomUnits}, [&](const InstanceVisit& visit) {
        if (openParameters(visit.key, LongestParameterBytes) && visit.name == serviceName) {
            g_registry_path.clear();
            WriteRegistryKey(visit.services, visit.name, out);
        }
        return Walk::Continue;
    });
}

} // namespace quoril
