// Takes pictures of the console's window off screen, prints the catalogue and writes a problem report: what
// `run` does without a display, and the way that the pictures in docs/ are made.

#include "logs/quoril_manager_view.h"
#include "platform/clock.h"
#include "platform/machine_choice.h"
#include "platform/tree/tree_machine.h"
#include "printing/page_painter.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/inform_dialog.h"
#include "services/service_app.h"
#include "services/service_install_dialog.h"
#include "services/service_update_dialog.h"
#include "services/update_or_install_service_dialog.h"
#include "shell/help_view.h"
#include "shell/left_view.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_app.h"
#include "shell/quoril_manager_doc.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPrinter>
#include <QTextStream>
#include <QTimer>

#include <algorithm>

namespace {

using namespace quoril;
using namespace Qt::StringLiterals;

bool picture(QWidget& window, const QDir& folder, const QString& name)
{
    QApplication::processEvents();
    const QString path = folder.filePath(name);
    const bool saved = window.grab().save(path);
    QTextStream(saved ? stdout : stderr) << (saved ? "picture: " : "can't write: ") << path << '\n';
    return saved;
}

/// Prints what the panel shows into a file.
bool printPanel(const CMainFrame& frame, const QDir& folder)
{
    const QString path = folder.filePath(u"page.pdf"_s);
    PrinterDialogs& printing = frame.GetRightView()->printing();
    printing.printer().setOutputFormat(QPrinter::PdfFormat);
    printing.printer().setOutputFileName(path);
    PagePainter painter(printing.printer());
    const bool printed
        = printRows(frame.GetRightView()->table(), {}, loadText(text::PrintDocumentName), painter)
        == PrintOutcome::Printed;
    QTextStream(printed ? stdout : stderr) << (printed ? "printed: " : "can't print: ") << path << '\n';
    return printed;
}

/// Runs the command and takes a picture of the dialog that it opens.
bool dialogPicture(CMainFrame& frame, quint32 command, const QDir& folder, const QString& name)
{
    constexpr int SettlingMilliseconds = 300;
    bool saved = false;
    QTimer::singleShot(SettlingMilliseconds, &frame, [&] {
        if (QWidget* const dialog = QApplication::activeModalWidget()) {
            saved = picture(*dialog, folder, name);
            dialog->close();
        }
    });
    frame.commands().action(command)->trigger();
    return saved;
}

/// Runs the dialog and takes a picture of it.
bool dialogPicture(QDialog& dialog, const QDir& folder, const QString& name)
{
    bool saved = false;
    QTimer shown;
    shown.setSingleShot(true);
    shown.callOnTimeout(&dialog, [&] {
        saved = picture(dialog, folder, name);
        dialog.reject();
    });
    shown.start();
    dialog.exec();
    return saved;
}

/// The dialogs of QuorilSetup for a product that the sample machine has services of.
bool setupPictures(const QDir& folder)
{
    const QString product = u"Quoril 32"_s;
    const QString configuration = u"C:\\Program Files\\Quoril\\ceres.cfg"_s;
    ServiceApp installer;
    UpdateOrInstallServiceDlg choice(nullptr);
    ServiceInstallDialog install(product, configuration, nullptr);
    ServiceUpdateDialog update(product, configuration, nullptr);
    update.Installer = &installer;
    bool saved = dialogPicture(choice, folder, u"setup.png"_s);
    saved = dialogPicture(install, folder, u"setup-install.png"_s) && saved;
    return dialogPicture(update, folder, u"setup-update.png"_s) && saved;
}

/// Writes the report of the selected service as a person does, with a picture of the question.
bool mailReport(CMainFrame& frame, const QDir& folder)
{
    constexpr int SettlingMilliseconds = 100;
    const QString path = QDir::toNativeSeparators(folder.absoluteFilePath(u"QuorilMailReport.txt"_s));
    bool saved = true;
    QTimer person;
    person.callOnTimeout([&] {
        QWidget* const window = QApplication::activeModalWidget();
        if (auto* const question = qobject_cast<QFileDialog*>(window)) {
            question->setDirectory(folder);
            saved = picture(*question, folder, u"mail.png"_s) && saved;
            static_cast<QDialog*>(question)->accept();
        } else if (auto* const answer = qobject_cast<QMessageBox*>(window)) {
            QTextStream(stdout) << answer->text() << '\n';
            answer->close();
        }
    });
    person.start(SettlingMilliseconds);
    QFile::remove(path);
    frame.commands().action(command::Mail)->trigger();
    return saved && QFile::exists(path);
}

/// The box that stands while a step takes its time.
bool boxPicture(CMainFrame& frame, const QDir& folder)
{
    InformDialog waiting(loadText(text::WaitStopped), 1000, &frame);
    return dialogPicture(waiting, folder, u"information.png"_s);
}

/// The help in its own window.
bool helpPicture(CMainFrame& frame, const QDir& folder)
{
    frame.commands().action(command::HelpTopics)->trigger();
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto help = std::find_if(windows.begin(), windows.end(),
        [](const QWidget* window) { return window->isVisible() && qobject_cast<const CHelpView*>(window); });
    if (help == windows.end())
        return false;
    const bool saved = picture(**help, folder, u"help.png"_s);
    (*help)->close();
    return saved;
}

/// The palette of a desktop with that theme; the system's own for any other name.
void applyTheme(const QString& name)
{
    struct Theme
    {
        QStringView name;
        QRgb window;
        QRgb base;
        QRgb text;
        QRgb highlight;
        QRgb highlightedText;
    };
    static const Theme themes[] = {
        {u"dark", 0x31363b, 0x232629, 0xeff0f1, 0x3daee9, 0xfcfcfc},
        {u"high-contrast", 0x000000, 0x000000, 0xffffff, 0xffff00, 0x000000},
    };
    for (const Theme& theme : themes) {
        if (theme.name != name)
            continue;
        QPalette palette{QColor(theme.window), QColor(theme.window)};
        palette.setColor(QPalette::Base, QColor(theme.base));
        palette.setColor(QPalette::AlternateBase, QColor(theme.window));
        palette.setColor(QPalette::Highlight, QColor(theme.highlight));
        palette.setColor(QPalette::HighlightedText, QColor(theme.highlightedText));
        for (const auto role :
            {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
            palette.setColor(role, QColor(theme.text));
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
        QApplication::setPalette(palette);
    }
}

/// An order of the kind that a person makes, for the picture of the list.
void addOrder(CMainFrame& frame, qint64 secondsAhead, qint32 action)
{
    frame.SchedTable.add(SchedStruct(
        frame.GetLeftView()->GetSelectedService(), machine().clock().now() + secondsAhead, action));
}

void printCatalogue(const CQuorilManagerDoc& document)
{
    QTextStream out(stdout);
    for (const ServiceInfo& service : document.m_services)
        out << service.Name << '\t' << service.EmulationType << '\t' << service.HomeDir << '\t'
            << service.LogFile << '\n';
    out << document.m_services.size() << " instances\n";
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorilManager"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 2 && arguments.size() != 3) {
        QTextStream(stderr) << "usage: quoril-pictures FOLDER [dark|high-contrast]\n";
        return 2;
    }
    applyTheme(arguments.value(2));
    const QDir folder(arguments[1]);
    const auto machine = openMachine(chooseMachine({}));
    const ScopedMachine inForce(*machine);

    CQuorilManagerApp console;
    if (!folder.mkpath(QStringLiteral(".")) || !console.InitInstance({arguments[0]}))
        return 1;
    printCatalogue(*console.document());
    CMainFrame& frame = *console.mainFrame();
    bool saved = picture(frame, folder, u"start.png"_s);
    if (QTreeWidgetItem* const first = frame.GetLeftView()->topLevelItem(0)->child(0)) {
        constexpr qint64 HourSeconds = 3600;
        frame.GetLeftView()->setCurrentItem(first);
        saved = picture(frame, folder, u"logs.png"_s) && saved;
        frame.GetLeftView()->setCurrentItem(frame.GetLeftView()->topLevelItem(0)->child(2));
        saved = picture(frame, folder, u"errors.png"_s) && saved;
        frame.GetLeftView()->setCurrentItem(first);
        frame.OnViewConfiguration();
        saved = picture(frame, folder, u"configuration.png"_s) && saved;
        addOrder(frame, HourSeconds, schedule_action::Start);
        addOrder(frame, 9 * HourSeconds, schedule_action::Stop);
        saved = dialogPicture(frame, command::Manage, folder, u"manage.png"_s) && saved;
        saved = dialogPicture(frame, command::Remove, folder, u"remove.png"_s) && saved;
        saved = boxPicture(frame, folder) && saved;
        saved = helpPicture(frame, folder) && saved;
        saved = dialogPicture(frame, command::Schedule, folder, u"schedule.png"_s) && saved;
        saved = dialogPicture(frame, command::Security, folder, u"security.png"_s) && saved;
        saved = dialogPicture(frame, command::PrintSetup, folder, u"print-setup.png"_s) && saved;
        saved = dialogPicture(frame, command::PrintPreview, folder, u"preview.png"_s) && saved;
        saved = printPanel(frame, folder) && saved;
        saved = dialogPicture(frame, command::Print, folder, u"print.png"_s) && saved;
        saved = dialogPicture(frame, command::About, folder, u"about.png"_s) && saved;
        saved = setupPictures(folder) && saved;
        saved = mailReport(frame, folder) && saved;
        frame.resize(800, 600);
        frame.OnViewEventLog();
        saved = picture(frame, folder, u"small.png"_s) && saved;
    }
    frame.close();
    return saved ? 0 : 1;
}
