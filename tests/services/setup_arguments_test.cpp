#include "services/setup_arguments.h"

#include "support/fake_machine.h"

#include <QDir>
#include <QTemporaryFile>

namespace quoril::test {

TEST(SetupArguments, AreReadOrReportedAsWrong)
{
    FakeMachine machine;
    machine.fakeFiles.put(u"C:\\a b\\juno.cfg", {});
    machine.fakeFiles.put(u"C:\\x.exe", {});
    QTemporaryFile outside;
    ASSERT_TRUE(outside.open());
    const auto read = [](const QStringList& given) {
        return SetupArguments::read(QStringList(u"QuorilSetup"_s) + given, u"1.2.3.4"_s);
    };
    const auto files = [](const QString& configuration, const QString& executable) {
        return QStringList{
            u"--product"_s, u"P 1"_s, u"--config"_s, configuration, u"--executable="_s + executable};
    };

    const SetupArguments good = read(files(u"c:/a b/JUNO.cfg"_s, u"\"C:\\x.exe\""_s));
    EXPECT_EQ(good.kind, SetupArguments::Kind::Run);
    EXPECT_EQ(good.productName, u"P 1"_s);
    EXPECT_EQ(good.configurationFile, u"C:\\a b\\JUNO.cfg"_s);
    EXPECT_EQ(good.imagePath, u"C:\\x.exe"_s);
    EXPECT_EQ(read({u"--version"_s}).message, u"QuorilSetup 1.2.3.4"_s);
    EXPECT_EQ(read({u"--help"_s}).kind, SetupArguments::Kind::Help);

    const std::pair<QStringList, const char*> wrong[] = {
        {{}, "--product, --config, --executable"},
        {{u"--wrong"_s}, "wrong"},
        {files(u"C:\\a b\\juno.cfg"_s, u"C:\\x.exe"_s) + QStringList(u"more"_s), "too many: more"},
        {files({}, u"C:\\x.exe"_s), "Give --config too"},
        {files(QDir::tempPath(), u"C:\\x.exe"_s), "is a folder"},
        {files(u"C:\\none.cfg"_s, u"C:\\x.exe"_s), "C:\\none.cfg was not found."},
        {files(outside.fileName(), u"C:\\x.exe"_s), "outside the machine"},
        {files(u"C:\\a b\\juno.cfg"_s, u"C:\\x.exe\""_s), "executable can't be run: it contains a double"},
        {files(QString(31'998, u'n') + u"\"\""_s, u"C:\\x.exe"_s), "it contains a double quote"},
    };
    for (const auto& [given, text] : wrong) {
        const SetupArguments arguments = read(given);
        EXPECT_EQ(arguments.kind, SetupArguments::Kind::Wrong) << text;
        EXPECT_THAT(arguments.message.toStdString(), testing::HasSubstr(text));
    }
}

} // namespace quoril::test
