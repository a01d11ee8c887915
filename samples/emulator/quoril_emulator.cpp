// A stand-in for the Quoril emulator: a service that meets what the console relies on, for trying the console
// and for its tests.

#include "emulator.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace {

constexpr const char* Help = R"(quoril-emulator: a stand-in for the Quoril emulator

  quoril-emulator --install NAME CONFIG   registers the service NAME with the settings of the file CONFIG
                                          (a path of the machine) and ends with -1,
                                          or with a Windows error number
  quoril-emulator [options]               runs as the service that the service manager started

CONFIG has lines "key = value": type, home, display-name, start (automatic, manual, disabled), depends (names
with commas between), options (those below), and "component.parameter = value", as in session.log, ram.size.

  --start-delay MS   takes this long to start and is start pending meanwhile
  --hang-start       stays start pending
  --no-report        never reports to the service manager
  --die CODE         ends with CODE while starting
  --ignore-stop      keeps running when it is asked to stop
  --stop-delay MS    takes this long to stop and is stop pending meanwhile
)";

} // namespace

namespace quoril::emulator {

std::optional<Behaviour> Behaviour::from(const QStringList& arguments)
{
    Behaviour behaviour;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& option = arguments[i];
        bool isGood = true;
        if (option == u"--hang-start")
            behaviour.hangsInStart = true;
        else if (option == u"--ignore-stop")
            behaviour.ignoresStop = true;
        else if (option == u"--no-report")
            behaviour.reportsNothing = true;
        else if (option == u"--start-delay")
            behaviour.startDelayMilliseconds = arguments.value(++i).toUInt(&isGood);
        else if (option == u"--stop-delay")
            behaviour.stopDelayMilliseconds = arguments.value(++i).toUInt(&isGood);
        else if (option == u"--die")
            behaviour.exitCode = arguments.value(++i).toInt(&isGood);
        else
            isGood = false;
        if (!isGood)
            return std::nullopt;
    }
    return behaviour;
}

} // namespace quoril::emulator

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.contains(QStringLiteral("--help"))) {
        std::fputs(Help, stdout);
        return 0;
    }
    return quoril::emulator::runOnPlatform(arguments);
}
