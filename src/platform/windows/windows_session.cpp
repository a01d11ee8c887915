#include "platform/windows/windows_session.h"

#include "platform/windows/message_window.h"
#include "platform/windows/win32.h"

#include <array>

namespace quoril {

namespace {

constexpr int LanguageNameUnits = 32;
// A window that hasn't answered by then is taken for one that hangs.
constexpr UINT MostMillisecondsOfAWindow = 1000;

using ModuleHandle = OwnedHandle<HMODULE, ::FreeLibrary>;

class WindowsForeignWindow : public ForeignWindow
{
public:
    explicit WindowsForeignWindow(HWND window) : m_window(window) { }

    bool isIconic() const override { return ::IsIconic(m_window) != FALSE; }
    void restore() override { ::ShowWindow(m_window, SW_RESTORE); }
    void bringForward() override
    {
        ::UpdateWindow(m_window);
        ::SetForegroundWindow(m_window);
        ::SetFocus(m_window);
    }

private:
    HWND m_window; // of another program
};

class WindowsSubscription : public MessageSubscription
{
public:
    explicit WindowsSubscription(std::unique_ptr<MessageWindow> window) : m_window(std::move(window)) { }

private:
    std::unique_ptr<MessageWindow> m_window;
};

UINT registeredMessage(QStringView message)
{
    return ::RegisterWindowMessageW(wide(message.toString()));
}

bool isOn(int virtualKey)
{
    return (::GetKeyState(virtualKey) & 1) != 0;
}

} // namespace

QString WindowsSession::abbreviatedLanguageName(Locale locale) const
{
    const LCID id = locale == Locale::UserDefault ? LOCALE_USER_DEFAULT : LOCALE_SYSTEM_DEFAULT;
    std::array<wchar_t, LanguageNameUnits> units = {};
    const int size = ::GetLocaleInfoW(id, LOCALE_SABBREVLANGNAME, units.data(), LanguageNameUnits);
    return size == 0 ? QString() : textOf(units.data());
}

std::unique_ptr<ForeignWindow> WindowsSession::findWindow(QStringView title)
{
    const HWND window = ::FindWindowW(nullptr, wide(title.toString()));
    return window ? std::make_unique<WindowsForeignWindow>(window) : nullptr;
}

std::unique_ptr<MessageSubscription> WindowsSession::subscribe(
    QStringView message, std::function<void()> handler)
{
    const UINT number = registeredMessage(message);
    auto window = number == 0 ? nullptr : MessageWindow::make(number, std::move(handler));
    return window ? std::make_unique<WindowsSubscription>(std::move(window)) : nullptr;
}

void WindowsSession::broadcast(QStringView message, HungWindows hung)
{
    const UINT number = registeredMessage(message);
    if (number != 0 && hung == HungWindows::AreAwaited)
        ::SendMessageW(HWND_BROADCAST, number, 0, 0);
    else if (number != 0)
        ::SendMessageTimeoutW(
            HWND_BROADCAST, number, 0, 0, SMTO_ABORTIFHUNG, MostMillisecondsOfAWindow, nullptr);
}

LockKeys WindowsSession::lockKeys() const
{
    return {isOn(VK_CAPITAL), isOn(VK_NUMLOCK), isOn(VK_SCROLL)};
}

Status WindowsSession::lockWorkstation()
{
    const ModuleHandle user(::LoadLibraryW(L"user32.dll"));
    const auto lock = user ? systemFunction<BOOL WINAPI()>(L"user32.dll", "LockWorkStation") : nullptr;
    return lock ? statusOfCall(lock()) : Status(Error{error::CallNotImplemented, {}});
}

} // namespace quoril
