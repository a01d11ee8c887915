#include "resources/resource_module.h"

#include "resources/resource_file.h"
#include "resources/text_ids.h"
#include "shell/language_module.h"
#include "support/fake_machine.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>

#include <functional>

namespace quoril::test {

using testing::IsEmpty;

namespace {

const QString GermanFile = u"" QUORIL_BIN_DIR "/QuorilManagerLangDEU.dll"_s;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The formats and line ends of a text in their order: what the code that fills it relies on.
QStringList placeholders(const QString& text)
{
    static const QRegularExpression placeholder(u"%[-.0-9]*[sdX]|\n|\\(\\*[^)]*\\)\\|[^|]*\\|"_s);
    QStringList found;
    for (auto it = placeholder.globalMatch(text); it.hasNext();)
        found.append(it.next().captured());
    return found;
}

void eachPopup(
    const std::vector<MenuEntry>& entries, const std::function<void(const std::vector<MenuEntry>&)>& visit)
{
    visit(entries);
    for (const MenuEntry& entry : entries) {
        if (!entry.entries.empty())
            eachPopup(entry.entries, visit);
    }
}

std::vector<quint32> commandsOf(const std::vector<MenuEntry>& entries)
{
    std::vector<quint32> commands;
    for (const MenuEntry& entry : entries)
        commands.push_back(entry.command);
    return commands;
}

TEST(ResourceModule, BuiltInCarriesStringsMenusAndDialogs)
{
    const ResourceModule module = ResourceModule::builtIn();
    ASSERT_TRUE(module.loaded());
    EXPECT_EQ(module.string(text::RemovalStillRunning),
        u"Failed to remove a service. The service is still running."_s);
    EXPECT_EQ(module.string(command::Configuration), u"Display the configuration of the selected service "_s);
    EXPECT_TRUE(module.string(1).isEmpty());

    // The captions by control number; those of labels and boxes, which have none of their own, come last.
    const std::pair<quint32, QString> dialogs[] = {
        {101, u"About Quoril Services Manager|OK"_s},
        {130,
            u"Service management dialog|OK|Cancel|Start|Stop|Apply|Service name:|Description:|"
            "Path to executable:|Startup type:|Start/Stop Quoril service|Service status console|"
            "Service status:"_s},
        {133, u"Security dialog|OK|Cancel|Security settings"_s},
        {135, u"Wake-Up Dialog|OK|Cancel|Tape wake up password|User name:|Password:"_s},
        {137, u"Information"_s},
        {138, u"Schedule dialog|OK|Cancel|Set Start|Set Stop|Remove|Choose date / time|Date:|Time:"_s},
        {1001,
            u"Service Install Dialog|Install|Cancel|Browse...|New Service Name:|Installed QUORIL products:|"
            "Configuration file name:"_s},
        {1002, u"Remove Service Dialog|Remove|Cancel|QUORIL service name:"_s},
        {1003,
            u"Update / Install service dialog|Return to Launcher|Cancel|Update exisiting service|"
            "Install new service|    Installed service for selected product detected.|"
            "Choose the action to continue:"_s},
        {1004,
            u"Service Update Dialog|Update|Cancel|Installed services list|Installed QUORIL product:|"
            "Configuration file name:"_s},
    };
    for (const auto& [id, expected] : dialogs) {
        const DialogTemplate texts = module.dialog(id);
        QList<quint32> controls = texts.captions.keys();
        std::ranges::sort(controls);
        QString captions = texts.title;
        for (const quint32 control : std::as_const(controls))
            captions += u'|' + texts.caption(control);
        EXPECT_EQ(captions, expected);
    }
}

TEST(ResourceModule, WithoutAMainMenuIsNone)
{
    QByteArray json = contentOf(u":/quoril/resources.json"_s);
    EXPECT_TRUE(ResourceModule::fromJson(json).loaded());
    EXPECT_FALSE(ResourceModule::fromJson(json.replace("\"128\"", "\"1\"")).loaded());
}

TEST(LanguageModule, IsThatOfTheUserElseOfTheSystemAndTheHelpFileHasARuleOfItsOwn)
{
    const struct
    {
        QString user, system;
        bool hasModule, hasHelp;
        bool isActive;
        QString help; // the language of the help file
    } cases[] = {
        {u"deu"_s, {}, true, false, true, {}},
        {u"Deu"_s, u"ENU"_s, false, true, false, u"DEU"_s},
        {{}, u"DEU"_s, true, true, true, u"DEU"_s},
        {u"ENU"_s, u"DEU"_s, true, true, false, {}}, // the user's first
        {{}, {}, true, true, false, {}},
    };
    for (const auto& [user, system, hasModule, hasHelp, isActive, help] : cases) {
        FakeMachine machine;
        machine.fakeSession.userLanguage = user;
        machine.fakeSession.systemLanguage = system;
        const QTemporaryDir folder;
        if (hasModule)
            QFile::copy(GermanFile, folder.filePath(u"QuorilManagerLangDEU.dll"_s));
        if (hasHelp)
            QFile::copy(GermanFile, folder.filePath(u"QuorilManagerDEU.hlp"_s));
        const LanguageChoice choice = LoadLanguageModule(folder.path() + u'/');
        EXPECT_EQ(choice.moduleActive, isActive) << user << '/' << system;
        EXPECT_EQ(loadText(text::Ready), isActive ? u"Fertig"_s : u"Ready"_s);
        EXPECT_EQ(choice.helpFile, help.isEmpty() ? QString() : folder.filePath(u"QuorilManagerDEU.hlp"_s));
        ActivateResourceModule(ResourceModule());
    }
}

TEST(ResourceModule, GermanCarriesExactlyTheSameIds)
{
    const ResourceModule english = ResourceModule::builtIn();
    const ResourceModule german = ResourceModule::load(GermanFile);
    ASSERT_TRUE(german.loaded());
    const QStringList ids = english.ids();
    EXPECT_EQ(ids.size(), QSet<QString>(ids.begin(), ids.end()).size());
    EXPECT_EQ(german.ids(), ids);
    EXPECT_NE(german.string(text::SelectService), english.string(text::SelectService));
    // Each number that the code has a name for is there, too.
    const QString header = QString::fromUtf8(contentOf(u"" QUORIL_TEST_DIR "/../src/resources/text_ids.h"_s));
    static const QRegularExpression constant(u"(\\w+) = (\\d+);"_s);
    for (auto it = constant.globalMatch(header.section(u"namespace quoril::text"_s, 1, 1)); it.hasNext();) {
        const QRegularExpressionMatch named = it.next();
        EXPECT_TRUE(ids.contains(u"string "_s + named.captured(2))) << named.captured(1);
    }
    for (const QString& country : {u"DEA"_s, u"DES"_s, u"DEL"_s, u"DEC"_s})
        EXPECT_EQ(ResourceModule::load(QString(GermanFile).replace(u"DEU"_s, country)).ids(), ids) << country;

    for (quint32 menu : {menu::Main, menu::Tree, menu::List}) {
        const std::vector<MenuEntry> popups = english.menu(menu);
        const std::vector<MenuEntry> translated = german.menu(menu);
        ASSERT_EQ(translated.size(), popups.size());
        for (size_t i = 0; i < popups.size(); ++i)
            EXPECT_EQ(commandsOf(translated[i].entries), commandsOf(popups[i].entries));
    }
}

TEST(ResourceModule, GermanAgreesInPlaceholdersAndEmptyTexts)
{
    const ResourceModule english = ResourceModule::builtIn();
    const ResourceModule german = ResourceModule::load(GermanFile);
    int compared = 0;
    for (const QString& id : english.ids()) {
        if (!id.startsWith(u"string "_s))
            continue;
        const quint32 number = id.mid(7).toUInt();
        EXPECT_EQ(placeholders(german.string(number)), placeholders(english.string(number))) << number;
        EXPECT_EQ(german.string(number).isEmpty(), english.string(number).isEmpty()) << number;
        ++compared;
    }
    EXPECT_GT(compared, 100);
}

TEST(ResourceModule, GermanMnemonicsAreUniqueInEachPopup)
{
    int popups = 0;
    eachPopup(
        ResourceModule::load(GermanFile).menu(menu::Main), [&popups](const std::vector<MenuEntry>& entries) {
            ++popups;
            QString used;
            for (const MenuEntry& entry : entries) {
                const qsizetype mark = entry.caption.indexOf(u'&');
                EXPECT_EQ(mark >= 0, !entry.caption.isEmpty()) << entry.caption;
                const QChar mnemonic = mark < 0 ? QChar() : entry.caption.at(mark + 1).toLower();
                EXPECT_FALSE(!mnemonic.isNull() && used.contains(mnemonic)) << entry.caption;
                used.append(mnemonic);
            }
        });
    EXPECT_EQ(popups, 4);
}

TEST(Help, HasASectionForEachCommandAndNoBrokenLink)
{
    static const QRegularExpression anchor(u"(?:id|name)=\"([^\"]+)\""_s);
    static const QRegularExpression link(u"href=\"#([^\"]+)\""_s);
    const auto targets = [](const QRegularExpression& pattern, const QString& html) {
        QSet<QString> found;
        for (auto it = pattern.globalMatch(html); it.hasNext();)
            found.insert(it.next().captured(1));
        return found;
    };
    for (const QString& name : {u"QuorilManager"_s, u"QuorilManagerENU"_s, u"QuorilManagerDEU"_s}) {
        const QString html = QString::fromUtf8(contentOf(u"" QUORIL_BIN_DIR "/%1.hlp"_s.arg(name)));
        QSet<QString> wanted = targets(link, html);
        for (const QString& id : ResourceModule::builtIn().ids()) {
            if (const qsizetype at = id.indexOf(u"command "_s); at >= 0)
                wanted.insert(u"command-"_s + id.mid(at + 8));
        }
        EXPECT_GT(wanted.size(), 28);
        EXPECT_THAT((wanted - targets(anchor, html)).values(), IsEmpty()) << name;
    }
}

TEST(ResourceModule, BrokenFilesLoadNothingAndLeaveNoTrace)
{
    const QByteArray sound = contentOf(GermanFile);
    ASSERT_TRUE(isSoundResourceFile(sound));
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"broken.dll"_s);
    const auto loads = [&path](const QByteArray& bytes) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        return ResourceModule::load(path).loaded();
    };

    EXPECT_TRUE(loads(sound));
    EXPECT_FALSE(loads({}));
    EXPECT_FALSE(loads("MZ\x90 no resource file at all, but a program"));
    for (qsizetype length = 0; length < sound.size(); length += 97)
        EXPECT_FALSE(loads(sound.first(length))) << length;

    // Every byte of the header and of the tree after the data, turned over one at a time: some faults are
    // harmless (a time stamp), none may be fatal.
    const auto tree = qFromBigEndian<quint32>(sound.constData() + 8);
    for (qsizetype at = 0; at < sound.size(); at = at == 23 ? qsizetype(tree) : at + 1) {
        for (char pattern : {'\xFF', '\x80', '\x01'}) {
            QByteArray broken = sound;
            broken[at] = static_cast<char>(broken.at(at) ^ pattern);
            loads(broken);
        }
    }
    EXPECT_FALSE(QFile::exists(u":/module-1/resources.json"_s));
}

TEST(ResourceFile, ATreeThatLeadsIntoItselfOrHasNoRootIsAFault)
{
    QByteArray bytes = contentOf(GermanFile);
    const qsizetype tree = qFromBigEndian<quint32>(bytes.constData() + 8);
    qToBigEndian<quint32>(0, bytes.data() + tree + 10);
    EXPECT_FALSE(isSoundResourceFile(bytes));
    // A root that is a file.
    qToBigEndian<quint16>(0, bytes.data() + tree + 4);
    EXPECT_FALSE(isSoundResourceFile(bytes));
}

} // namespace

} // namespace quoril::test
