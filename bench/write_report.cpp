// Writes the problem report of an instance, as one process, to be timed beside `cat` of its log:
//     write_report make FOLDER KEYS     makes a machine whose instance has so many keys
//     make_emulator_log.py FOLDER/emulator.log MEGABYTES
//     write_report FOLDER               writes FOLDER/QuorilMailReport.txt
#include "formats/regf_hive.h"
#include "platform/tree/tree_machine.h"
#include "report/problem_report.h"
#include "services/user_prompts.h"
#include "shell/quoril_manager_doc.h"
#include "shell/service_catalogue.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>
#include <string_view>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

namespace {

using namespace quoril;
using namespace Qt::StringLiterals;

class PrintingPrompts : public UserPrompts
{
public:
    void inform(const QString& text, quint32) override { message(text); }
    void message(const QString& text) override { std::printf("%s\n", qPrintable(text)); }
    bool ask(const QString&) override { return false; }
    bool confirmRemoval(const QString&) override { return false; }
};

QByteArray units(QStringView text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2) + QByteArray(2, '\0');
}

void set(regf::Key& key, QStringView path, QStringView name, QStringView text)
{
    regf::Key* const place = path.isEmpty() ? &key : *key.addPath(path, 0);
    if (!place->setValue(name, value_type::String, units(text), 0))
        std::abort();
}

/// A machine with one instance, whose keys lie below Parameters: a thousand in each.
bool writeMachine(const QString& folder, int keys)
{
    regf::Hive hive = regf::Hive::create(u"SYSTEM"_s);
    regf::Key& select = **hive.root().addPath(u"Select", 0);
    if (!select.setValue(u"Current", value_type::DWord, QByteArray("\1\0\0\0", 4), 0))
        return false;
    regf::Key& instance = **hive.root().addPath(u"ControlSet001\\Services\\EMULATOR", 0);
    set(instance, {}, u"Group", u"TargetPlatformEmulator");
    set(instance, u"Parameters", u"TargetPlatformEmulator", u"quoril_64");
    set(instance, u"Parameters\\session\\log\\0", u"Value", u"C:\\emulator.log");
    regf::Key& parameters = *instance.child(u"Parameters");
    for (int i = 0; i < keys; ++i)
        set(parameters, u"part%1\\key%2"_s.arg(i / 1000).arg(i), u"Value", u"C:\\Emulators\\disk.vdisk");
    const QString config = folder + u"/Windows/System32/config"_s;
    QFile file(config + u"/SYSTEM"_s);
    return QDir().mkpath(config) && file.open(QIODevice::WriteOnly) && file.write(*hive.serialize(0)) > 0;
}

void printMemory(const char* when)
{
#ifdef Q_OS_UNIX
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%s: peak memory %ld MB\n", when, usage.ru_maxrss / 1024);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "make" && argc == 4)
        return writeMachine(QFile::decodeName(argv[2]), QByteArray(argv[3]).toInt()) ? 0 : 1;
    if (argc != 2) {
        std::fprintf(stderr, "usage: write_report make FOLDER KEYS | write_report FOLDER\n");
        return 2;
    }
    const QString folder = QDir(QFile::decodeName(argv[1])).absolutePath();
    TreeMachine machine(folder);
    const ScopedMachine inForce(machine);
    CQuorilManagerDoc document;
    if (!ScanServices(document) || document.m_services.size() != 1)
        return 1;
    printMemory("catalogue read");
    PrintingPrompts prompts;
    QElapsedTimer timer;
    timer.start();
    mailProblemReport(
        document.m_services[0], prompts, [&folder](const QString& name) { return folder + u'/' + name; });
    std::printf("%lld ms\n", static_cast<long long>(timer.elapsed()));
    printMemory("report written");
    return 0;
}
