#pragma once

#include "ctl_run.h"
#include "formats/evt_appender.h"
#include "support/event_log_samples.h"
#include "support/fake_machine.h"
#include "support/utf16.h"

#include <QBuffer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace quoril::test {

/// A line of the emulator's log, in its columns, as it lies in the file.
inline QByteArray logLine(QStringView tag, QStringView code, QStringView text)
{
    return units(u"20260101 120000"_s + tag.toString().leftJustified(9) + code.toString().leftJustified(28)
        + text.toString() + u"\r\n"_s);
}

inline QByteArray eventLog(const std::vector<EventEntry>& entries)
{
    QByteArray bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadWrite);
    auto appender = EvtAppender::open(device);
    for (const EventEntry& entry : entries)
        EXPECT_TRUE(appender->append(entry).ok());
    EXPECT_TRUE(appender->finish().ok());
    return bytes;
}

class CtlTest : public testing::Test
{
protected:
    CtlTest()
    {
        m_machine.addInstance(u"CERES"_s, {u"Licence"_s});
        m_machine.addInstance(u"Iris"_s);
        m_machine.fakeServices.service(u"Licence"_s);
        m_machine.fakeSystemInfo.texts.insert(error::ServiceDoesNotExist, u"No such service."_s);
        m_machine.fakeRegistry.load(
            u"[SYSTEM\\CurrentControlSet\\Services\\CERES\\Parameters\\session\\log\\0]\n"
            u"Value=C:\\ceres.log\n");
        m_machine.fakeFiles.put(u"C:\\ceres.log", Log);
    }

    CtlRun run(const QStringList& arguments, Console::Facts facts = {}, const QByteArray& typed = {})
    {
        return runCtlOn(&m_machine, arguments, facts, typed);
    }
    /// The words of a line; FILE begins a path in the test's folder.
    QStringList words(const QString& line) const
    {
        QStringList words = line.split(u' ', Qt::SkipEmptyParts);
        return words.replaceInStrings(u"FILE"_s, m_folder.filePath(u"a"_s)).replaceInStrings(u"''"_s, u""_s);
    }
    /// What the pattern finds in the help.
    QStringList helpNames(const QStringList& of, const QString& pattern)
    {
        QStringList found;
        auto match = QRegularExpression(pattern, QRegularExpression::MultilineOption)
                         .globalMatch(QString::fromUtf8(run(of + QStringList(u"--help"_s)).output));
        while (match.hasNext())
            found.append(match.next().captured(1));
        return found;
    }
    QStringList subcommands() { return helpNames({}, u"^  ([a-z][a-z-]+) "_s); }
    QString file(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    }

    static inline const QByteArray Log = logLine(u":INFO :", u"00000249", u"Start")
        + logLine(u":ERROR:", u"00000321", u"disk\x1b[2J failed");
    FakeMachine m_machine;
    QTemporaryDir m_folder;
};

} // namespace quoril::test
