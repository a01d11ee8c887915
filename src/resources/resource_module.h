#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace quoril {

/// One entry of a menu: a command with its caption, a separator (command 0) or a popup with entries of its
/// own.
struct MenuEntry
{
    quint32 command = 0;
    QString caption;
    std::vector<MenuEntry> entries;
};

/// What a dialog shows of text: its title and the captions of its controls by control id. Labels and group
/// boxes without an id of the platform's own have the ids from 60000 on.
struct DialogTemplate
{
    QString title;
    QHash<quint32, QString> captions;

    QString caption(quint32 control) const { return captions.value(control); }
};

/// The source of every text that a person sees: strings, menus and dialog templates by their numbers. The
/// built-in module is English; a language module takes its place as a whole.
///
/// A module is a JSON text `resources.json` with the objects "strings" (id to text), "menus" (id to a list of
/// popups) and "dialogs" (id to an object with "title" and "captions"), kept in a Qt resource tree.
class ResourceModule
{
public:
    /// The program's own module.
    static ResourceModule builtIn();

    /// The module in a Qt binary resource file; not loaded() if there is no such file or it is no module.
    static ResourceModule load(const QString& hostPath);

    /// The module of a JSON text; not loaded() where that lacks a part or the main menu.
    static ResourceModule fromJson(const QByteArray& json);

    bool loaded() const { return m_loaded; }

    /// The text of a string id, empty if there is none.
    QString string(quint32 id) const { return m_strings.value(id); }
    /// The popups of a menu, empty if there is none.
    std::vector<MenuEntry> menu(quint32 id) const { return m_menus.value(id); }
    DialogTemplate dialog(quint32 id) const { return m_dialogs.value(id); }

    /// Every id of the module with its kind ("string 208", "dialog 101 control 1059", "menu 128 command
    /// 32785"), so that two modules can be compared.
    QStringList ids() const;

private:
    bool parse(const QByteArray& json);

    bool m_loaded = false;
    QHash<quint32, QString> m_strings;
    QHash<quint32, std::vector<MenuEntry>> m_menus;
    QHash<quint32, DialogTemplate> m_dialogs;
};

/// The module in force: the built-in one until a language module is activated.
const ResourceModule& activeResources();

/// Makes the module the source of all texts from now on; an unloaded one brings the built-in module back.
void ActivateResourceModule(ResourceModule module);

/// The text of a string id through the active module.
QString loadText(quint32 id);

} // namespace quoril
