// The report of an instance of the sample machine, unit by unit, at a fixed time on a fixed host.

#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_machine.h"
#include "report/problem_report.h"
#include "report/report_text.h"
#include "shell/quoril_manager_doc.h"
#include "shell/service_catalogue.h"
#include "support/event_log_samples.h"
#include "support/fake_machine.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

namespace quoril::test {
namespace {

/// The sample machine with a host and a time of its own.
class SampleMachine : public FakeMachine
{
public:
    SampleMachine() : m_isMade(createSampleMachine(root())), m_tree(root())
    {
        EXPECT_TRUE(m_isMade);
        const auto local = m_tree.registry().localMachine();
        const auto processor
            = openPath(**local, u"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", key_access::AllAccess);
        EXPECT_TRUE((*processor)->setText(u"ProcessorNameString", u"Sample processor"));
        EXPECT_TRUE((*processor)->setText(u"VendorIdentifier", u"SampleVendor"));
        EXPECT_TRUE((*processor)->setText(u"Identifier", u"x64 Family 1"));
        EXPECT_TRUE((*processor)->setDWord(u"~MHz", 2951));
        fakeSystemInfo.systemVersion
            = {.major = 6, .minor = 1, .build = 7601, .servicePack = u"Service Pack 1"_s};
        fakeSystemInfo.processorInfo.count = 2;
        fakeSystemInfo.memory = 8ULL << 30;
    }

    Registry& registry() override { return m_tree.registry(); }
    Files& files() override { return m_tree.files(); }
    EventLogs& eventLogs() override { return m_tree.eventLogs(); }

    /// Reports an event of that age at the time of the report.
    void addEvent(const QString& log, quint32 secondsAgo, const QString& source, const QString& text)
    {
        EXPECT_TRUE(
            m_tree.eventLogs().report(log, eventOf(quint32(fakeClock.now()) - secondsAgo, source, {text})));
    }
    QString root() const { return m_folder.filePath(u"machine"_s); }

private:
    QTemporaryDir m_folder;
    Status m_isMade;
    TreeMachine m_tree;
};

TEST(SampleReport, IsTheGoldenOne)
{
    SampleMachine machine;
    const QString tagged = u"20231114:221200:ERROR:  00000402                    "_s;
    machine.addEvent(u"Application"_s, 181, u"QUORIL"_s, u"before the span"_s);
    machine.addEvent(
        u"Application"_s, 180, u"QUORIL IRIS"_s, tagged + u"Überwachung: no disk\r\n  second line"_s);
    machine.addEvent(u"Application"_s, 162, u"QUORIL IRIS"_s, u"last of the span"_s);
    machine.addEvent(u"Application"_s, 170, u"Other"_s, u"of another program"_s);
    machine.addEvent(u"System"_s, 170, u"Disk"_s, u"of any program"_s);
    machine.addEvent(u"System"_s, 161, u"Disk"_s, u"after the span"_s);
    CQuorilManagerDoc document;
    ASSERT_TRUE(ScanServices(document));
    const ServiceInfo* const service = document.findService(u"IRIS");
    ASSERT_TRUE(service);

    RecordingPrompts prompts(machine);
    const QString path = machine.root() + u"/report.txt"_s;
    mailProblemReport(*service, prompts, [&path](const QString&) { return path; });
    EXPECT_EQ(machine.calls.takeLog(),
        QStringList(u"message QUORIL Mail report successfully stored as a file \""_s + path + u"\"."_s));

    // Kept in 8 bits to be read by people.
    QFile golden(QStringLiteral(QUORIL_TEST_DIR "/report/sample_report.txt"));
    ASSERT_TRUE(golden.open(QIODevice::ReadOnly));
    const QString expected = QString::fromUtf8(golden.readAll());
    const QString written = textOfFile(path);
    const auto place = std::ranges::mismatch(written, expected).in1 - written.begin();
    EXPECT_TRUE(written == expected && QFileInfo(path).size() == 2 * written.size())
        << "unit " << place << ": " << expected.mid(place, 60) << "\nbecame " << written.mid(place, 60);
}

} // namespace
} // namespace quoril::test
