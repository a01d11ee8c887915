#include "services/setup_arguments.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/installer_command_line.h"

#include <QCommandLineParser>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

SetupArguments answer(SetupArguments::Kind kind, const QString& message)
{
    SetupArguments arguments;
    arguments.kind = kind;
    arguments.message = message;
    return arguments;
}

SetupArguments wrong(const QString& message)
{
    return answer(SetupArguments::Kind::Wrong, message);
}

} // namespace

SetupArguments SetupArguments::read(const QStringList& arguments, const QString& programVersion)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Installs a product of the Quoril emulator as a new service or updates an installed one; a dialog "
        u"asks "
        "which. The files are given by their path on the machine (C:\\dir\\file) or on this computer.\n\n"
        "Prints the name of the installed service. Exit codes: 0 done, or cancelled, which prints no name; "
        "1 an installation failed; 2 wrong usage."_s);
    const QCommandLineOption product(u"product"_s, u"Name of the product."_s, u"name"_s);
    const QCommandLineOption configuration(u"config"_s, u"Its configuration file."_s, u"file"_s);
    const QCommandLineOption executable(
        u"executable"_s, u"Its executable, which registers the service."_s, u"path"_s);
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Shows this help."_s);
    const QCommandLineOption version({u"v"_s, u"version"_s}, u"Shows the version."_s);
    parser.addOptions({product, configuration, executable, help, version});
    if (!parser.parse(arguments))
        return wrong(parser.errorText());
    if (parser.isSet(help))
        return answer(Kind::Help, parser.helpText().trimmed());
    if (parser.isSet(version))
        return answer(Kind::Help, u"QuorilSetup "_s + programVersion);

    SetupArguments run;
    run.productName = parser.value(product);
    run.configurationFile = parser.value(configuration);
    run.imagePath = parser.value(executable);
    if (const QStringList stray = parser.positionalArguments(); !stray.isEmpty())
        return wrong(loadText(text::StrayArgument).replace(u"%s"_s, stray.front()));
    QStringList missing;
    for (const QCommandLineOption& option : {product, configuration, executable}) {
        if (parser.value(option).isEmpty())
            missing.append(u"--"_s + option.names().constFirst());
    }
    if (!missing.isEmpty())
        return wrong(loadText(text::SetupArguments).replace(u"%s"_s, missing.join(u", "_s)));
    if (const QString refusal = unsafeArgument({{}, run.configurationFile, false, run.imagePath});
        !refusal.isEmpty())
        return wrong(refusal);
    for (QString* file : {&run.configurationFile, &run.imagePath}) {
        const InstallerFile found = findInstallerFile(*file);
        if (!found.failure.isEmpty())
            return wrong(found.failure);
        *file = found.path;
    }
    run.kind = Kind::Run;
    return run;
}

} // namespace quoril
