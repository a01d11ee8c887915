#pragma once

#include "ctl/ctl.h"
#include "platform/machine.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// What came of a command line.
struct CtlRun
{
    int code = 0;
    QByteArray output;
    QByteArray errors;

    QJsonDocument json() const { return QJsonDocument::fromJson(output); }
};

inline QByteArray contentOf(std::FILE* file)
{
    QByteArray bytes(std::ftell(file), '\0');
    std::rewind(file);
    EXPECT_EQ(std::fread(bytes.data(), 1, std::size_t(bytes.size()), file), std::size_t(bytes.size()));
    return bytes;
}

/// Carries out a command line on the machine, or where there is none; `typed` is what a person answers.
inline CtlRun runCtlOn(
    Machine* machine, const QStringList& arguments, Console::Facts facts = {}, const QByteArray& typed = {})
{
    const auto closed = [](std::FILE* file) { std::fclose(file); };
    const std::shared_ptr<std::FILE> input(std::tmpfile(), closed), output(std::tmpfile(), closed),
        errors(std::tmpfile(), closed);
    std::fwrite(typed.constData(), 1, std::size_t(typed.size()), input.get());
    std::rewind(input.get());
    const MachineOpener open = [machine](const QString& folder) -> Result<std::shared_ptr<Machine>> {
        if (!machine)
            return Error{error::PathNotFound, u"no machine in "_s + folder};
        return std::shared_ptr<Machine>(machine, [](Machine*) {});
    };
    Console console(input.get(), output.get(), errors.get(), facts);
    CtlRun run;
    run.code = runCtl(QStringList(u"quorilctl"_s) + arguments, console, open);
    run.output = contentOf(output.get());
    run.errors = contentOf(errors.get());
    return run;
}

} // namespace quoril::test
