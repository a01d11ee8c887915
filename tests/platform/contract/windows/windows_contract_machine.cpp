#include "platform/contract/contract_machine.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_machine.h"

#include <QDir>
#include <QTemporaryDir>

#include <array>

namespace quoril::test {

namespace {

class WindowsContractMachine : public ContractMachine
{
public:
    Machine& machine() override { return *m_machine; }
    QString folder() const override { return QDir::toNativeSeparators(m_folder.path()); }
    QString emulator() const override
    {
        std::array<wchar_t, MAX_PATH> self = {};
        ::GetModuleFileNameW(nullptr, self.data(), MAX_PATH);
        const QString path = textOf(self.data());
        return path.left(path.lastIndexOf(u'\\') + 1) + u"quoril-emulator.exe"_s;
    }
    std::pair<QString, QString> systemProgram() const override
    {
        return {u"cmd.exe"_s, u"cmd.exe /c exit 3"_s};
    }
    QString endlessProgram() const override { return emulator() + u" --no-report"_s; }
    bool isWine() const override
    {
        return systemFunction<const char*()>(L"ntdll.dll", "wine_get_version") != nullptr;
    }

private:
    std::unique_ptr<Machine> m_machine = openLiveMachine();
    QTemporaryDir m_folder;
};

} // namespace

std::unique_ptr<ContractMachine> makeContractMachine()
{
    return std::make_unique<WindowsContractMachine>();
}

} // namespace quoril::test
