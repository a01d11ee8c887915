#include "resources/resource_module.h"

#include "resources/resource_file.h"
#include "resources/text_ids.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QResource>

#include <algorithm>
#include <atomic>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 LargestModule = qint64{64} * 1024 * 1024;

MenuEntry readEntry(const QJsonObject& object);

std::vector<MenuEntry> readEntries(const QJsonArray& array)
{
    std::vector<MenuEntry> entries;
    entries.reserve(static_cast<size_t>(array.size()));
    for (const auto& value : array)
        entries.push_back(readEntry(value.toObject()));
    return entries;
}

MenuEntry readEntry(const QJsonObject& object)
{
    return {static_cast<quint32>(std::clamp<qint64>(object["command"_L1].toInteger(), 0, UINT32_MAX)),
        object["caption"_L1].toString(), readEntries(object["entries"_L1].toArray())};
}

QHash<quint32, QString> readTexts(const QJsonObject& object)
{
    QHash<quint32, QString> texts;
    texts.reserve(object.size());
    for (auto it = object.begin(); it != object.end(); ++it) {
        bool isNumber = false;
        const quint32 id = it.key().toUInt(&isNumber);
        if (isNumber && it.value().isString())
            texts.insert(id, it.value().toString());
    }
    return texts;
}

void listEntries(QStringList& ids, quint32 menu, const std::vector<MenuEntry>& entries)
{
    for (const MenuEntry& entry : entries) {
        if (entry.command != 0)
            ids.append(u"menu %1 command %2"_s.arg(menu).arg(entry.command));
        listEntries(ids, menu, entry.entries);
    }
}

ResourceModule& activeModule()
{
    static ResourceModule module = ResourceModule::builtIn();
    return module;
}

} // namespace

ResourceModule ResourceModule::builtIn()
{
    QFile file(u":/quoril/resources.json"_s);
    return file.open(QIODevice::ReadOnly) ? fromJson(file.readAll()) : ResourceModule();
}

ResourceModule ResourceModule::load(const QString& hostPath)
{
    ResourceModule module;
    QFile file(hostPath);
    if (!file.open(QIODevice::ReadOnly) || file.size() > LargestModule)
        return module;
    const QByteArray data = file.readAll();
    if (!isSoundResourceFile(data))
        return module;

    static std::atomic<int> loads = 0;
    // A place of its own, so that the module hides nothing of the program's.
    const QString root = u"/module-%1"_s.arg(++loads);
    const auto* bytes = reinterpret_cast<const uchar*>(data.constData());
    if (!QResource::registerResource(bytes, root))
        return module;
    QFile text(u":%1/resources.json"_s.arg(root));
    if (text.open(QIODevice::ReadOnly))
        module = fromJson(text.readAll());
    text.close();
    // All texts are copied by now; the tree points into data, which ends here.
    QResource::unregisterResource(bytes, root);
    return module;
}

ResourceModule ResourceModule::fromJson(const QByteArray& json)
{
    ResourceModule module;
    module.m_loaded = module.parse(json);
    return module;
}

bool ResourceModule::parse(const QByteArray& json)
{
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    for (QLatin1StringView part : {"strings"_L1, "menus"_L1, "dialogs"_L1}) {
        if (!root[part].isObject())
            return false;
    }

    m_strings = readTexts(root["strings"_L1].toObject());
    const QJsonObject menus = root["menus"_L1].toObject();
    for (auto it = menus.begin(); it != menus.end(); ++it)
        m_menus.insert(it.key().toUInt(), readEntries(it.value().toArray()));
    const QJsonObject dialogs = root["dialogs"_L1].toObject();
    for (auto it = dialogs.begin(); it != dialogs.end(); ++it) {
        const QJsonObject dialog = it.value().toObject();
        m_dialogs.insert(
            it.key().toUInt(), {dialog["title"_L1].toString(), readTexts(dialog["captions"_L1].toObject())});
    }
    // Without the main menu there is no window.
    return !menu(quoril::menu::Main).empty();
}

QStringList ResourceModule::ids() const
{
    QStringList ids;
    for (auto it = m_strings.begin(); it != m_strings.end(); ++it)
        ids.append(u"string %1"_s.arg(it.key()));
    for (auto it = m_menus.begin(); it != m_menus.end(); ++it) {
        ids.append(u"menu %1"_s.arg(it.key()));
        listEntries(ids, it.key(), it.value());
    }
    for (auto it = m_dialogs.begin(); it != m_dialogs.end(); ++it) {
        ids.append(u"dialog %1"_s.arg(it.key()));
        for (auto caption = it->captions.begin(); caption != it->captions.end(); ++caption)
            ids.append(u"dialog %1 control %2"_s.arg(it.key()).arg(caption.key()));
    }
    ids.sort();
    return ids;
}

const ResourceModule& activeResources()
{
    return activeModule();
}

void ActivateResourceModule(ResourceModule module)
{
    activeModule() = module.loaded() ? std::move(module) : ResourceModule::builtIn();
}

QString loadText(quint32 id)
{
    return activeResources().string(id);
}

} // namespace quoril
