// What holds for every dialog, in both languages.

#include "access/security_dialog.h"
#include "printing/preview_dialog.h"
#include "printing/print_dialog.h"
#include "printing/print_setup_dialog.h"
#include "resources/resource_module.h"
#include "schedule/schedule_dialog.h"
#include "schedule/schedule_table.h"
#include "services/remove_service_dialog.h"
#include "services/service_app.h"
#include "services/service_install_dialog.h"
#include "services/service_management_dialog.h"
#include "services/service_update_dialog.h"
#include "services/update_or_install_service_dialog.h"
#include "shell/about_dialog.h"
#include "shell/version_record.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QPrinter>

namespace quoril::test {
namespace {

QPoint placeOf(const QWidget& widget, const QDialog& dialog)
{
    return widget.mapTo(&dialog, QPoint());
}

void expectNothingClipped(const QDialog& dialog)
{
    for (const QWidget* widget : dialog.findChildren<QWidget*>()) {
        const bool captioned
            = qobject_cast<const QLabel*>(widget) || qobject_cast<const QAbstractButton*>(widget);
        if (!captioned || !widget->isVisible())
            continue;
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << widget->objectName();
        EXPECT_TRUE(dialog.rect().contains(QRect(placeOf(*widget, dialog), widget->size())));
    }
}

/// Tab goes round through every control that can be entered, downwards, and to the right within a row.
void expectTabFollowsTheEye(QDialog& dialog)
{
    QWidget* const first = dialog.focusWidget();
    ASSERT_NE(first, nullptr) << "nothing has the focus at first";
    std::vector<QPoint> way;
    int turns = 0;
    QWidget* widget = first;
    do {
        // A part of another control is not entered by itself.
        if (!widget->objectName().startsWith(u"qt_") && (widget->focusPolicy() & Qt::TabFocus)
            && widget->isVisibleTo(&dialog) && widget->isEnabled())
            way.push_back(placeOf(*widget, dialog) + widget->rect().center());
        widget = widget->nextInFocusChain();
    } while (widget != first);
    constexpr int SameRow = 12;
    for (std::size_t i = 0; i < way.size(); ++i) {
        const QPoint here = way[i];
        const QPoint next = way[(i + 1) % way.size()];
        const bool onwards = next.y() > here.y() + SameRow
            || (std::abs(next.y() - here.y()) <= SameRow && next.x() > here.x());
        turns += !onwards;
    }
    EXPECT_LE(turns, 1) << "Tab jumps back and forth";
}

void expectMnemonicsOnce(const QDialog& dialog)
{
    QStringList seen;
    for (const auto* button : dialog.findChildren<QAbstractButton*>()) {
        if (!button->isVisible() || button->shortcut().isEmpty())
            continue;
        EXPECT_FALSE(seen.contains(button->shortcut().toString())) << button->text();
        seen.append(button->shortcut().toString());
    }
}

/// A screen reader gets a name for each control that can be entered.
void expectNames(const QDialog& dialog)
{
    for (QWidget* const widget : dialog.findChildren<QWidget*>()) {
        const bool isPart
            = widget->objectName().startsWith(u"qt_") || !(widget->focusPolicy() & Qt::TabFocus);
        if (isPart || !widget->isVisibleTo(&dialog))
            continue;
        QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(widget);
        EXPECT_TRUE(spoken && !spoken->text(QAccessible::Name).isEmpty()) << widget->objectName();
    }
}

/// Leaving the dialog ends it with the result.
void lookAt(QDialog& dialog, const char* name, int leaving)
{
    SCOPED_TRACE(name);
    int result = -1;
    QTimer::singleShot(0, &dialog, [&dialog] {
        QApplication::processEvents();
        expectNothingClipped(dialog);
        expectTabFollowsTheEye(dialog);
        expectMnemonicsOnce(dialog);
        expectNames(dialog);
        Person::type(dialog, Qt::Key_Escape);
        EXPECT_FALSE(dialog.isVisible()) << "Escape doesn't close it";
        dialog.reject();
    });
    result = dialog.exec();
    EXPECT_EQ(result, leaving);
}

TEST(EveryDialog, CanBeReadAndIsDrivenByTheKeyboard)
{
    FakeMachine machine;
    const QString product = u"Quoril 32"_s;
    const QString configuration = u"C:\\Program Files\\Quoril\\ceres.cfg"_s;
    ScheduleTable table;
    machine.addInstance(u"CERES"_s);
    machine.fakeClock.timerScale = 1;
    ServiceInfo service;
    service.Name = u"CERES"_s;
    for (const bool german : {false, true}) {
        SCOPED_TRACE(german ? "German" : "English");
        if (german) {
            ResourceModule module = ResourceModule::load(
                QCoreApplication::applicationDirPath() + u"/QuorilManagerLangDEU.dll"_s);
            ASSERT_TRUE(module.loaded());
            ActivateResourceModule(std::move(module));
        }
        QPrinter printer;
        UpdateOrInstallServiceDlg choice(nullptr);
        ServiceInstallDialog install(product, configuration, nullptr);
        ServiceUpdateDialog update(product, configuration, nullptr);
        ServiceApp installer;
        update.Installer = &installer;
        RemoveServiceDialog remove(u"CERES"_s, nullptr);
        SecurityDialog security;
        ServiceManagementDialog manage(nullptr);
        manage.SetService(service);
        CAboutDlg about(VersionRecord{});
        PrintSetupDialog setup(printer);
        PrintRequest request;
        PrintDialog print(printer, request, nullptr);
        PreviewDialog preview(
            printer.pageLayout(), 3, [](int, PageCanvas&) {}, {}, nullptr);
        ScheduleDialog schedule(
            table, [] { return nullptr; }, machine.fakeClock.now());
        lookAt(choice, "choice", QDialog::Accepted); // its one way back is its OK
        const std::pair<const char*, QDialog*> dialogs[] = {{"install", &install}, {"update", &update},
            {"remove", &remove}, {"security", &security}, {"manage", &manage}, {"about", &about},
            {"print setup", &setup}, {"print", &print}, {"preview", &preview}, {"schedule", &schedule}};
        for (const auto& [name, dialog] : dialogs)
            lookAt(*dialog, name, QDialog::Rejected);
    }
    ActivateResourceModule(ResourceModule());
}

} // namespace
} // namespace quoril::test
