#include "platform/contract/contract_machine.h"
#include "support/service_tree.h"

namespace quoril::test {

namespace {

class TreeContractMachine : public ContractMachine
{
public:
    TreeContractMachine()
    {
        m_tree.makeFolder(u"Contract"_s);
        m_tree.makeFolder(u"Emulator"_s);
        EXPECT_TRUE(
            QFile::copy(QStringLiteral(QUORIL_EMULATOR), m_tree.host(u"Emulator/quoril-emulator.exe"_s)));
        import(m_tree.machine.registry(),
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Control\\ComputerName\\ComputerName]\r\n"
            "\"ComputerName\"=\"CONTRACT\"\r\n");
        m_tree.program(u"Windows/System32/endless.exe"_s, "exec sleep 30\n");
        m_tree.program(u"Windows/System32/three.exe"_s, "exit 3\n");
    }
    // The service that a test leaves running is the one of that name.
    ~TreeContractMachine() override { m_tree.names = QStringList{u"QuorilContract"_s}; }

    Machine& machine() override { return m_tree.machine; }
    QString folder() const override { return u"C:\\Contract"_s; }
    QString emulator() const override { return u"C:\\Emulator\\quoril-emulator.exe"_s; }
    std::pair<QString, QString> systemProgram() const override { return {u"three.exe"_s, u"three.exe"_s}; }
    QString endlessProgram() const override { return u"endless"_s; }

private:
    ServiceTree m_tree;
};

} // namespace

std::unique_ptr<ContractMachine> makeContractMachine()
{
    return std::make_unique<TreeContractMachine>();
}

} // namespace quoril::test
