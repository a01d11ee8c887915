#include "report/registry_section.h"

#include "report/report_text.h"
#include "services/service_walk.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

TEST(RegistrySection, PrintsValuesByTheirType)
{
    const QByteArray text = units(QStringView(u"a%b\0c\0\0", 7));
    const struct
    {
        quint32 type;
        QByteArray data;
        QString printed;
    } cases[] = {
        {0, "x", u"REG_NONE (value not set)"_s},
        {1, text, u"REG_SZ a%b"_s},
        {1, units(u"ab") + 'x', u"REG_SZ ab"_s},
        {1, {}, u"REG_SZ "_s},
        {2, units(u"%SystemRoot%"), u"REG_EXPAND_SZ %SystemRoot%"_s},
        {3, QByteArray("\x01\x02\x00\xAB\xFF", 5), u"REG_BINARY AB000201..."_s},
        {3, "\x0C", u"REG_BINARY C..."_s},
        {3, {}, u"REG_BINARY 0..."_s},
        {4, "\xFF\xFF\xFF\xFF", u"REG_DWORD -1"_s},
        {4, "\x10\x01", u"REG_DWORD 272"_s},
        {5, QByteArray("\0\0\0\x80\x01", 5), u"REG_DWORD_BIG_ENDIAN -2147483648"_s},
        {6, text, u"REG_LINK a%b"_s},
        {7, text, u"REG_MULTI_SZ a%b c"_s},
        {7, units(QStringView(u"\0a\0\0b", 5)), u"REG_MULTI_SZ  a"_s},
        {7, {}, u"REG_MULTI_SZ "_s},
        {8, text, u"REG_RESOURCE_LIST a%b"_s},
        {9, QByteArray("\x1F\0", 2), u"<UNKNOWN> 1F"_s},
        {11, QByteArray("\1\0\0\0\2\0\0\0", 8), u"<UNKNOWN> 1"_s},
        {0xFFFF0012, {}, u"<UNKNOWN> 0"_s},
    };
    for (const auto& [type, data, printed] : cases) {
        const PrintedValue value = printedValue({type, data});
        EXPECT_EQ(value.ValType + u' ' + value.ValFormatted, printed);
    }
}

class RegistryWalkTest : public testing::Test
{
protected:
    FakeMachine m_machine;

    QString written(const QString& service)
    {
        CollectedText out;
        writeInstanceKeys(**openServices(), service, out);
        EXPECT_EQ(m_machine.calls.open(), 0);
        return out.text;
    }
};

const QString Services = u"SYSTEM\\CurrentControlSet\\Services\\"_s;

TEST_F(RegistryWalkTest, WritesTheTreeDepthFirst)
{
    m_machine.addInstance(u"Alpha"_s);
    auto parameters = m_machine.fakeRegistry.key(Services + u"Alpha\\Parameters"_s);
    ASSERT_TRUE(parameters->setDWord(u"", 5));
    ASSERT_TRUE(parameters->setValue(u"Fits", {value_type::Binary, QByteArray(511, '\1')}));
    ASSERT_TRUE(parameters->setValue(u"Large", {value_type::Binary, QByteArray(512, '\1')}));
    ASSERT_TRUE(parameters->setDWord(u"After", 1));
    parameters.reset();
    m_machine.fakeRegistry.node(Services + u"Alpha\\Parameters\\zz\\1"_s);
    m_machine.fakeRegistry.node(Services + u"Alpha\\Parameters\\aa"_s);
    // A name that the buffer doesn't hold ends the keys.
    for (const QString& name : {QString(512, u'n'), u"unseen"_s})
        m_machine.fakeRegistry.node(Services + u"Alpha\\Parameters\\"_s + name);
    m_machine.fakeRegistry.refuse(Services + u"Alpha\\Locked"_s, key_access::QueryValue);
    m_machine.fakeRegistry.load(uR"([SYSTEM\CurrentControlSet\Services\Other]
        Group=TARGETPLATFORMEMULATOR
        [SYSTEM\CurrentControlSet\Services\Other\Parameters]
        TargetPlatformEmulator=sample
        [SYSTEM\CurrentControlSet\Services\Bare]
        Group=TargetPlatformEmulator)");

    EXPECT_EQ(written(u"Alpha"_s),
        u"\r\nRegistry key: Alpha\r\n"
        "\tName: Group\r\n\tType: REG_SZ\r\n\tData: TargetPlatformEmulator\r\n\r\n"
        "\tName: DependOnService\r\n\tType: REG_MULTI_SZ\r\n\tData: \r\n\r\n"
        "\r\nRegistry key: Alpha->Parameters\r\n"
        "\tName: TargetPlatformEmulator\r\n\tType: REG_SZ\r\n\tData: sample\r\n\r\n"
        "\tName: \r\n\tType: REG_DWORD\r\n\tData: 5\r\n\r\n"
        "\tName: Fits\r\n\tType: REG_BINARY\r\n\tData: 1010101...\r\n\r\n"
        "\r\nRegistry key: Alpha->Parameters->zz\r\n"
        "\r\nRegistry key: Alpha->Parameters->zz->1\r\n"
        "\r\nRegistry key: Alpha->Parameters->aa\r\n"_s);
    EXPECT_EQ(written(u"alpha"_s) + written(u"Other"_s) + written(u"Bare"_s), QString());
}

TEST_F(RegistryWalkTest, FollowsATreeNoDeeperThanARegistrysOwn)
{
    m_machine.addInstance(u"Deep"_s);
    m_machine.fakeRegistry.node(Services + u"Deep"_s + u"\\k"_s.repeated(2000));
    EXPECT_EQ(written(u"Deep"_s).count(u"Registry key: "), 513);
}

} // namespace
} // namespace quoril::test
