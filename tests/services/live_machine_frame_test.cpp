// The whole road on a real tree with real processes: the window, the operations, the service manager, the
// emulator.

#include "logs/quoril_manager_view.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/system_clock.h"
#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_machine.h"
#include "resources/text_ids.h"
#include "services/installer_command_line.h"
#include "services/update_or_install_service_dialog.h"
#include "shell/left_view.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_app.h"
#include "support/person.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTemporaryDir>

#include <algorithm>
#include <array>

namespace quoril::test {
namespace {

using namespace Qt::StringLiterals;

constexpr int Ok = 1, Yes = 6, StartTypeBox = 1020, StatusText = 1017, Start = 1021, Stop = 1022;

/// The machine's time, but its waits pass ten times as fast unless a service is about to start: on a busy
/// computer that takes what it takes.
class FastClock : public SystemClock
{
public:
    explicit FastClock(std::function<bool()> starting) : m_starting(std::move(starting)) { }

    void sleep(quint32 milliseconds) override
    {
        for (int tenth = 0; tenth == 0 || (tenth < 10 && m_starting()); ++tenth)
            SystemClock::sleep(milliseconds / 10);
    }
    int timerInterval(quint32 milliseconds) const override { return int(milliseconds / 10); }

private:
    std::function<bool()> m_starting;
};

constexpr std::array Started{u"IRIS", u"CERES", u"Vesta-Speicher"};

class FastTreeMachine : public TreeMachine
{
public:
    using TreeMachine::TreeMachine;
    Clock& clock() override { return m_fastClock; }

    quint32 stateOf(QStringView name)
    {
        const auto manager = services().openManager(service_access::ManagerGenericAll);
        const auto service = (*manager)->openService(name, service_access::QueryStatus);
        return service ? (*service)->queryStatus()->currentState : 0;
    }

private:
    FastClock m_fastClock{[this] {
        return std::any_of(Started.begin(), Started.end(),
            [this](QStringView name) { return stateOf(name) == service_state::StartPending; });
    }};
};

class LiveMachineTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(createSampleMachine(m_folder.filePath(u"machine"_s)));
        m_machine = std::make_unique<FastTreeMachine>(m_folder.filePath(u"machine"_s));
        m_inForce.emplace(*m_machine);
        openConsole();
    }
    void TearDown() override
    {
        // What a failed test left running ends with it.
        for (const QStringView name : Started) {
            const auto manager = m_machine->services().openManager(service_access::ManagerGenericAll);
            if (const auto service = (*manager)->openService(name, service_access::Stop))
                static_cast<void>((*service)->control(ServiceControlStop));
            EXPECT_TRUE(Person::waitFor([&] { return m_machine->stateOf(name) <= service_state::Stopped; }));
        }
        m_console.reset();
    }
    void openConsole()
    {
        m_console = std::make_unique<CQuorilManagerApp>();
        ASSERT_TRUE(m_console->InitInstance({u"console"_s}));
    }
    QTreeWidgetItem* item(const QString& name)
    {
        return m_console->mainFrame()
            ->GetLeftView()
            ->findItems(name, Qt::MatchExactly | Qt::MatchRecursive)
            .value(0);
    }
    void select(const QString& name) { m_console->mainFrame()->GetLeftView()->setCurrentItem(item(name)); }
    void run(quint32 command) { m_console->mainFrame()->commands().action(command)->trigger(); }

    QTemporaryDir m_folder;
    std::unique_ptr<FastTreeMachine> m_machine;
    std::optional<ScopedMachine> m_inForce;
    std::unique_ptr<CQuorilManagerApp> m_console;
    Person m_person;
};

TEST_F(LiveMachineTest, AServiceIsStartedStoppedChangedAndRemoved)
{
    QStringList& seen = m_person.seen;
    const auto noteStatus = [&seen](QWidget& window) {
        seen.append(window.findChild<QLabel*>(QString::number(StatusText))->text());
    };
    select(u"IRIS"_s);
    m_person.on(u"Service management dialog"_s, [&](QWidget& window) {
        noteStatus(window);
        Person::press(window, Start);
        noteStatus(window);
        EXPECT_EQ(m_machine->stateOf(u"CERES"), service_state::Running);
        Person::press(window, Stop);
        noteStatus(window);
        QKeyEvent next(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QApplication::sendEvent(window.findChild<QComboBox*>(QString::number(StartTypeBox)), &next);
        Person::press(window, Ok);
    });
    run(command::Manage);
    const PanelTable& logs = m_console->mainFrame()->GetRightView()->table();
    QStringList codes;
    for (qsizetype row = 0; row < logs.rowCount(); ++row)
        codes.append(logs.text(row, 1));
    EXPECT_EQ(codes.value(0), u"02000039"_s); // the System log's entries of this start
    EXPECT_TRUE(codes.contains(u"02000037"_s)); // the emulator's own events
    EXPECT_TRUE(codes.contains(u"00000249"_s)); // the emulator's log from its start mark on

    // Another console finds what this one changed.
    openConsole();
    select(u"IRIS"_s);
    m_person.on(u"Service management dialog"_s, [&](QWidget& window) {
        seen.append(window.findChild<QComboBox*>(QString::number(StartTypeBox))->currentText());
        Person::press(window, Ok);
    });
    run(command::Manage);
    m_person.on(u"Remove Service Dialog"_s, Person::presses(Ok));
    m_person.on(u"Do you really want"_s, Person::presses(Yes));
    run(command::Remove);
    EXPECT_EQ(item(u"IRIS"_s), nullptr);
    EXPECT_EQ(m_machine->stateOf(u"IRIS"), 0U);

    select(u"CERES"_s);
    m_person.on(u"Remove Service Dialog"_s, Person::presses(Ok));
    m_person.on(u"Do you really want"_s, Person::presses(Yes));
    m_person.on(u"still running"_s, Person::presses(Ok));
    run(command::Remove);
    EXPECT_NE(item(u"CERES"_s), nullptr);
    EXPECT_EQ(m_person.left(), 0U);
    EXPECT_EQ(seen.join(u'\n').toStdString(),
        "Service management dialog: \n"
        "Stopped\n"
        "Information: SERVICE-MANAGER: Wait until pre-requisite service started\n"
        "Information: SERVICE-MANAGER: Please wait while service started...\n"
        "Started\n"
        "Information: Please wait while service stopped...\n"
        "Stopped\n"
        "Information: SERVICE-MANAGER: Please wait for service reconfiguration...\n"
        "Service management dialog: \n"
        "DISABLED\n"
        "Remove Service Dialog: \n"
        "Quoril Services Manager: Do you really want to remove the selected service?\n"
        "Information: Please wait while the selected service removed...\n"
        "Remove Service Dialog: \n"
        "Quoril Services Manager: Do you really want to remove the selected service?\n"
        "Quoril Services Manager: Failed to remove a service. The service is still running.");
}

TEST_F(LiveMachineTest, AProductIsInstalledStartedUpdatedAndRemoved)
{
    const QString name = u"THALIA"_s;
    const QString service = u"SYSTEM\\CurrentControlSet\\Services\\"_s + name;
    const auto configure = [&](const QByteArray& text) {
        QFile file(m_machine->paths().root() + u"/Program Files/Quoril/thalia.cfg"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("type = quoril_8\nhome = C:\\Emulators\\Thalia\nsession.log = thalia.log\n" + text);
    };
    const auto setUp = [&](int road, const QString& told) {
        CheckedInstaller installer;
        UpdateOrInstallServiceDlg dialog(nullptr);
        dialog.ProductName = u"Quoril 8"_s;
        dialog.CfgFile = u"C:\\Program Files\\Quoril\\thalia.cfg"_s;
        dialog.ImagePath = u"C:\\Program Files\\Quoril\\quoril-emulator.exe"_s;
        dialog.Installer = &installer;
        m_person.on(u"Update / Install"_s, Person::presses(road));
        m_person.on(u"Dialog: "_s, [&](QWidget& window) {
            if (auto* edit = window.findChild<QLineEdit*>(QString::number(install_dialog::Name)))
                edit->setText(name);
            Person::press(window, Ok);
        });
        m_person.on({}, [&](QWidget& window) {
            EXPECT_TRUE(m_person.seen.last().contains(told)) << m_person.seen.last().toStdString();
            Person::press(window, Ok);
        });
        if (told.contains(u"successfully"))
            m_person.on(u"New QUORIL service installed"_s, Person::presses(Ok));
        dialog.exec();
        EXPECT_EQ(m_person.left(), 0U) << m_person.seen.join(u'\n').toStdString();
        EXPECT_EQ(dialog.ResultName, name);
    };
    const auto read = [&](const QString& below, QStringView value) {
        const auto key = openPath(**m_machine->registry().localMachine(), service + below, key_access::Read);
        return key ? *(*key)->multiString(value, 512) : QStringList();
    };
    configure("depends = Workspace, CERES, Tcpip\nram.size = 64\n");
    setUp(update_or_install_dialog::Install, u"QUORIL service installed successfully."_s);
    EXPECT_EQ(read({}, u"DependOnService"), QStringList({u"ceres"_s, u"tcpip"_s}));
    EXPECT_EQ(item(name), nullptr); // until the list is updated
    run(command::UpdateList);
    ASSERT_NE(item(name), nullptr);
    setUp(update_or_install_dialog::Install,
        u"QUORIL service installation failed. Reason: The specified service already exists. (0x431)"_s);

    select(name);
    m_person.on(u"Service management dialog"_s, [&](QWidget& window) {
        Person::press(window, Start);
        EXPECT_EQ(m_machine->stateOf(name), service_state::Running);
        EXPECT_EQ(m_machine->stateOf(u"CERES"), service_state::Running);
        Person::press(window, Stop);
        Person::press(window, Ok);
    });
    run(command::Manage);
    configure("ram.size = 128\n");
    setUp(update_or_install_dialog::Update, u"QUORIL service updated successfully."_s);
    EXPECT_EQ(read(u"\\Parameters\\ram\\size\\0"_s, u"Value"), QStringList(u"128"_s));
    configure("no setting\n");
    m_person.seen.clear();
    setUp(update_or_install_dialog::Update, u"QUORIL service installation failed. Reason: "_s);
    EXPECT_TRUE(m_person.seen.last().endsWith(u"(0x57)")) << m_person.seen.last().toStdString();
    EXPECT_EQ(m_machine->stateOf(name), 0U); // gone, as it is told

    configure({});
    setUp(update_or_install_dialog::Install, u"installed successfully"_s);
    run(command::UpdateList);
    select(name);
    m_person.on(u"Remove Service Dialog"_s, Person::presses(Ok));
    m_person.on(u"Do you really want"_s, Person::presses(Yes));
    run(command::Remove);
    EXPECT_EQ(item(name), nullptr);
    EXPECT_EQ(m_machine->stateOf(name), 0U);
}

TEST_F(LiveMachineTest, AnOrderStartsAServiceWhileTheScheduleDialogStandsOpen)
{
    const QString name = u"Vesta-Speicher"_s;
    select(name);
    CMainFrame& frame = *m_console->mainFrame();
    frame.StartScheduleWorker();
    frame.SchedTable.add(SchedStruct(
        frame.GetLeftView()->GetSelectedService(), m_machine->clock().now() + 2, schedule_action::Start));
    m_person.on(u"Schedule dialog"_s, [&](QWidget& window) {
        EXPECT_EQ(m_machine->stateOf(name), service_state::Stopped);
        EXPECT_TRUE(Person::waitFor([&] { return m_machine->stateOf(name) == service_state::Running; }));
        EXPECT_TRUE(window.isVisible());
        Person::press(window, Ok);
    });
    run(command::Schedule);
    EXPECT_EQ(m_person.left(), 0U);
    EXPECT_TRUE(Person::waitFor([&] { return frame.SchedTable.orders().empty(); }));
}

} // namespace
} // namespace quoril::test
