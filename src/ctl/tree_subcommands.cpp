// machine: trees in folders.

#include "ctl/output.h"
#include "ctl/subcommand.h"
#include "platform/machine.h"
#include "platform/tree/message_table.h"
#include "platform/tree/registry_text.h"
#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_machine.h"

#include <QFile>
#include <QStringDecoder>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct CreateOptions
{
    QString folder;
};

void declareCreate(const CommandParser& parser, CreateOptions& options)
{
    parser.addText("folder", options.folder, "Folder to make; it must not exist")
        .required()
        .valueName("FOLDER");
}

/// Reports a failure on a path of the host, with what is known of it.
int pathFailure(Ctl& ctl, const QString& path, const Error& error)
{
    const QString detail
        = error.detail.isEmpty() || error.detail == path ? QString() : u": "_s + error.detail;
    ctl.console.report(path + detail + u": "_s + numberedWindowsMessage(error.number));
    return exit_code::Failed;
}

int create(Ctl& ctl, const CreateOptions& options)
{
    const Status made = createSampleMachine(options.folder);
    if (!made) {
        pathFailure(ctl, options.folder, made.failure());
        if (made.errorNumber() == error::FileExists)
            ctl.console.report(u"Give a folder that does not exist yet."_s);
        return exit_code::Failed;
    }
    if (ctl.json)
        printJson(ctl.console, {{"folder"_L1, options.folder}});
    return exit_code::Done;
}

struct RegistryOptions
{
    QString file;
    QString key;
};

void declareImport(const CommandParser& parser, RegistryOptions& options)
{
    parser.addText("file", options.file, "File of the registry editor (.reg)").required().valueName("FILE");
}

void declareExport(const CommandParser& parser, RegistryOptions& options)
{
    parser.addText("key", options.key, "Key below HKEY_LOCAL_MACHINE; its subkeys are included")
        .required()
        .valueName("KEY");
    parser.addText("-o,--output", options.file, "File to write instead of standard output").valueName("FILE");
}

/// The registry of the tree in force; 50 where the machine in force is the live one, whose registry editor
/// does the same.
Result<TreeRegistry*> treeRegistry()
{
    TreeMachine* const tree = machine().tree();
    return tree ? Result<TreeRegistry*>(&tree->registry())
                : Error{error::NotSupported,
                    u"only the registry of a tree is reached this way; name one with --machine"_s};
}

/// What a device or a pipe gives may have no end. The text of a whole hive is shorter by far.
Result<QByteArray> readText(QFile& file)
{
    constexpr qint64 longest = qint64(256) << 20;
    constexpr qint64 pieceBytes = qint64(1) << 20;
    QByteArray text;
    while (text.size() <= longest) {
        const QByteArray piece = file.read(pieceBytes);
        if (piece.isEmpty())
            return text;
        text += piece;
    }
    return Error{error::FileTooLarge, u"a .reg file may have at most 256 MB"_s};
}

int importText(Ctl& ctl, const RegistryOptions& options)
{
    QFile file(options.file);
    if (!file.open(QIODevice::ReadOnly)) {
        ctl.console.report(options.file + u": "_s + file.errorString());
        return exit_code::Failed;
    }
    const Result<TreeRegistry*> registry = treeRegistry();
    const Result<QByteArray> text = registry ? readText(file) : registry.failure();
    const Status imported = text ? importRegistryText(**registry, *text) : Status(text.failure());
    if (!imported)
        return pathFailure(ctl, options.file, imported.failure());
    if (ctl.json)
        printJson(ctl.console, {{"file"_L1, options.file}});
    return exit_code::Done;
}

int exportText(Ctl& ctl, const RegistryOptions& options)
{
    const Result<TreeRegistry*> registry = treeRegistry();
    const Result<QByteArray> text
        = registry ? exportRegistryText(**registry, options.key) : Result<QByteArray>(registry.failure());
    if (!text)
        return pathFailure(ctl, options.key, text.failure());
    // A file gets the 16-bit units of the registry editor, everything else UTF-8.
    QString shown;
    if (options.file.isEmpty())
        shown = QString(QStringDecoder(QStringDecoder::Utf16LE)(*text)).remove(u'\r').trimmed();
    else if (replaceFile(ctl, options.file, *text) != exit_code::Done)
        return exit_code::Failed;
    if (ctl.json)
        printJson(ctl.console, {{"key"_L1, options.key}, {"file"_L1, options.file}, {"text"_L1, shown}});
    else if (options.file.isEmpty())
        ctl.console.lines(shown);
    return exit_code::Done;
}

} // namespace

void addMachineSubcommands(Ctl& ctl, const CommandParser& parser)
{
    const CommandParser machine = parser.addGroup("machine", "Make a machine and change its registry");
    addSubcommand(ctl, machine, "create", "Make the sample machine in a new folder", Needs::Nothing,
        declareCreate, create);
    addSubcommand(ctl, machine, "import", "Import a .reg file", Needs::Machine, declareImport, importText);
    addSubcommand(ctl, machine, "export", "Print a key in the form of a .reg file", Needs::Machine,
        declareExport, exportText);
    addMachineCheck(ctl, machine);
}

} // namespace quoril
