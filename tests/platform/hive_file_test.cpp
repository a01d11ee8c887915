#include "platform/tree/hive_file.h"

#include "formats/event_record.h"
#include "platform/event_logs.h"
#include "support/temporary_tree.h"

#include <QtEndian>

#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quoril::test {

namespace {

const QString hivePath = u"Windows/System32/config/SYSTEM"_s;

quint32 number(Registry& registry, QStringView name)
{
    const auto system = keyAt(registry, u"SYSTEM");
    const auto value = system ? (*system)->value(name, 4) : Result<RegistryValue>(system.failure());
    return value ? qFromLittleEndian<quint32>(value->data.constData()) : 0;
}

/// Sets two values to the same number in one write.
Status setBoth(TreeRegistry& registry, quint32 to)
{
    const auto transaction = registry.beginTransaction(u"SYSTEM");
    if (!transaction)
        return transaction.failure();
    const auto system = keyAt(registry, u"SYSTEM");
    for (const QStringView name : {u"One", u"Two"}) {
        if (Status status = (*system)->setDWord(name, to); !status)
            return status;
    }
    return (*transaction)->commit();
}

/// Runs the work in a child process, which ends with its result.
template <typename Work> pid_t inChild(Work work)
{
    const pid_t pid = ::fork();
    if (pid == 0)
        ::_exit(work());
    return pid;
}

TEST(HiveFileTest, LosesNoChangeOfTwoPrograms)
{
    const TemporaryTree tree;
    constexpr int count = 25;
    std::vector<pid_t> children;
    for (const char16_t who : {u'a', u'b', u'c'}) {
        children.push_back(inChild([&] {
            TreeMachine machine(tree.root());
            for (int i = 0; i < count; ++i) {
                const auto system = keyAt(machine.registry(), u"SYSTEM");
                EventEntry event;
                event.insertStrings.append(QString(who + QString::number(i)));
                if (!system || !(*system)->setDWord(QString(who + QString::number(i)), 1)
                    || !machine.eventLogs().report(u"System", event))
                    return 1;
            }
            return 0;
        }));
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    TreeMachine machine(tree.root());
    EXPECT_TRUE((*keyAt(machine.registry(), u"SYSTEM"))->valueName(3 * count - 1));
    const auto log = machine.eventLogs().open(u"System", {});
    std::set<QString> events;
    for (EventEntry event; (*log)->next(event);)
        events.insert(event.insertStrings.toList().value(0));
    EXPECT_EQ(events.size(), 3U * count);
}

/// Without the user's right to write into the folder, whoever the user is.
class WithoutRights
{
public:
    explicit WithoutRights(const TemporaryTree& tree)
        : m_folder(tree.host(u"Windows/System32/config"_s).toLocal8Bit())
    {
        ::chmod(tree.root().toLocal8Bit().constData(), 0755);
        ::chmod(m_folder.constData(), 0555);
        if (::getuid() == 0)
            m_changed = ::seteuid(65534) == 0;
    }
    ~WithoutRights()
    {
        if (m_changed && ::seteuid(0) != 0)
            ::abort();
        ::chmod(m_folder.constData(), 0755);
    }

private:
    QByteArray m_folder;
    bool m_changed = false;
};

TEST(HiveFileTest, ReadsATreeThatCannotBeWritten)
{
    const TemporaryTree tree;
    const TreePaths paths(tree.root());
    TreeRegistry registry(paths);
    ASSERT_TRUE(setBoth(registry, 5));
    const QByteArray before = tree.read(hivePath);
    {
        const WithoutRights guard(tree);
        TreeRegistry reader(paths);
        const auto system = keyAt(reader, u"SYSTEM");
        ASSERT_TRUE(system);
        EXPECT_EQ((*system)->setDWord(u"One", 6).errorNumber(), error::AccessDenied);
        EXPECT_EQ((*system)->create(u"New", key_access::Read).errorNumber(), error::AccessDenied);
        EXPECT_EQ(number(reader, u"One"), 5u);
    }
    EXPECT_EQ(tree.read(hivePath), before);
}

TEST(HiveFileTest, RefusesToChangeADamagedHive)
{
    const TemporaryTree tree;
    const TreePaths paths(tree.root());
    {
        TreeRegistry registry(paths);
        const auto transaction = registry.beginTransaction(u"SYSTEM");
        for (int i = 0; i < 200; ++i)
            ASSERT_TRUE((*keyAt(registry, u"SYSTEM"))->create(u"Key%1"_s.arg(i), key_access::Read));
        ASSERT_TRUE((*transaction)->commit());
    }
    const QByteArray whole = tree.read(hivePath);
    for (const qsizetype size : {qsizetype(0), qsizetype(100), qsizetype(4096), whole.size() / 2}) {
        tree.write(hivePath, whole.left(size));
        TreeRegistry registry(paths);
        const auto system = keyAt(registry, u"SYSTEM");
        EXPECT_TRUE(system || system.errorNumber() == error::RegistryCorrupt) << size;
        if (system) {
            EXPECT_EQ((*system)->setDWord(u"One", 1).errorNumber(), error::RegistryCorrupt) << size;
        }
        EXPECT_EQ(registry.beginTransaction(u"SYSTEM").errorNumber(), error::RegistryCorrupt) << size;
        EXPECT_EQ(tree.read(hivePath), whole.left(size));
        EXPECT_TRUE(keyAt(registry, u"SOFTWARE"));
        // The hive is there again once its file is.
        tree.write(hivePath, whole);
        EXPECT_TRUE(keyAt(registry, u"SYSTEM\\Key199"));
    }
    QFile::remove(tree.systemHive());
    TreeRegistry registry(paths);
    EXPECT_EQ(keyAt(registry, u"SYSTEM").errorNumber(), error::FileNotFound);
    EXPECT_EQ(registry.beginTransaction(u"SYSTEM").errorNumber(), error::FileNotFound);
    EXPECT_EQ(*(*registry.localMachine())->subkeyName(1, 99), u"SOFTWARE");
    EXPECT_EQ((*registry.localMachine())->subkeyName(2, 99).errorNumber(), error::NoMoreItems);
}

} // namespace

} // namespace quoril::test
