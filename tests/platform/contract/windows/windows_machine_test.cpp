// What is Windows' alone: devices and pipes among the files, and windows that hang.

#include "platform/contract/contract_machine.h"
#include "platform/windows/win32.h"

#include <thread>

namespace quoril::test {

namespace {

using WindowsMachineTest = ContractTest;

TEST_F(WindowsMachineTest, OpensFilesOfADiskAlone)
{
    const QString pipeName = u"\\\\.\\pipe\\quoril-contract"_s;
    const KernelHandle pipe(::CreateNamedPipeW(
        wide(pipeName), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 4, 16, 16, 0, nullptr));
    ASSERT_NE(pipe.get(), INVALID_HANDLE_VALUE);
    for (const QString& name : {pipeName, u"NUL"_s, u"C:\\NUL"_s})
        EXPECT_EQ(machine.files().openForReading(name).errorNumber(), error::AccessDenied) << name;
    EXPECT_EQ(machine.files().openForWriting(u"NUL").errorNumber(), error::AccessDenied);
}

TEST_F(WindowsMachineTest, BroadcastsPastAWindowThatHangs)
{
    const KernelHandle made(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelHandle end(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread hanging([&] {
        const HWND window = ::CreateWindowExW(
            0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, ::GetModuleHandleW(nullptr), nullptr);
        ::SetEvent(made.get());
        ::WaitForSingleObject(end.get(), 60000); // and answers nothing
        ::DestroyWindow(window);
    });
    ::WaitForSingleObject(made.get(), 60000);
    const quint64 before = machine.clock().tickCount();
    machine.session().broadcast(u"QuorilContractHung", HungWindows::ArePassedOver);
    EXPECT_LT(machine.clock().tickCount(), before + 30000);
    ::SetEvent(end.get());
    hanging.join();
}

} // namespace

} // namespace quoril::test
