// machine check.

#include "platform/tree/machine_check.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "platform/tree/tree_machine.h"

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct CheckOptions
{
};

void declareCheck(const CommandParser&, CheckOptions&) { }

QJsonObject jsonOfCheck(const CheckedFile& file)
{
    return {{"path"_L1, file.path}, {"kind"_L1, file.kind}, {"state"_L1, file.state}, {"keys"_L1, file.keys},
        {"values"_L1, file.values}, {"pages"_L1, file.pages}, {"records"_L1, file.records},
        {"damagedRecords"_L1, file.damagedRecords}, {"damagedChunks"_L1, file.damagedChunks},
        {"whole"_L1, file.isWhole}, {"problem"_L1, file.problem}};
}

QString wordsOfCheck(const CheckedFile& file)
{
    QStringList words;
    if (file.kind == u"hive"_s)
        words += u"%1 keys, %2 values"_s.arg(file.keys).arg(file.values);
    if (file.pages > 0)
        words
            += QString::number(file.pages) + (file.kind == u"hive"_s ? u" pages of its logs"_s : u" pages"_s);
    if (file.kind == u"event-log"_s)
        words += u"%1 records"_s.arg(file.records);
    if (!file.problem.isEmpty())
        words += file.problem;
    return words.join(u"; "_s);
}

int checkFiles(Ctl& ctl, const CheckOptions&)
{
    TreeMachine* const tree = machine().tree();
    if (!tree)
        return failure(ctl, u"Only a tree can be checked; name one with --machine."_s, error::NotSupported);
    std::vector<CheckedFile> files;
    {
        const Progress progress(ctl.console, u"Reading the hives and event logs..."_s);
        files = checkMachine(tree->paths());
    }
    if (ctl.json) {
        JsonArray array(ctl.console);
        for (const CheckedFile& file : files)
            array.add(jsonOfCheck(file));
    } else {
        TextTable table({u"FILE"_s, u"STATE"_s, u"WHAT"_s});
        for (const CheckedFile& file : files)
            table.add({file.path, file.state, wordsOfCheck(file)});
        table.print(ctl.console);
    }
    const bool areWhole
        = std::all_of(files.begin(), files.end(), [](const CheckedFile& file) { return file.isWhole; });
    return areWhole ? exit_code::Done : exit_code::Failed;
}

} // namespace

void addMachineCheck(Ctl& ctl, const CommandParser& machine)
{
    addSubcommand(ctl, machine, "check", "Read all hives and event logs and say what is wrong with them",
        Needs::Machine, declareCheck, checkFiles);
}

} // namespace quoril
