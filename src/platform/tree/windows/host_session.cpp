#include "platform/tree/tree_machine.h"

#include <algorithm>
#include <array>
#include <vector>

#include <windows.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The text in the system's units. Valid as long as the text.
const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

class HostWindow : public ForeignWindow
{
public:
    explicit HostWindow(HWND window) : m_window(window) { }

    bool isIconic() const override { return ::IsIconic(m_window) != 0; }
    void restore() override { ::ShowWindow(m_window, SW_RESTORE); }
    void bringForward() override
    {
        ::UpdateWindow(m_window);
        ::SetForegroundWindow(m_window);
        ::SetFocus(m_window);
    }

private:
    HWND m_window;
};

/// An invisible window that hears one registered message: broadcasts go to the windows of all programs.
class Listener : public MessageSubscription
{
public:
    Listener(std::vector<Listener*>& all, UINT message, std::function<void()> handler)
        : m_all(all)
        , m_message(message)
        , m_handler(std::move(handler))
        , m_window(::CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
              ::GetModuleHandleW(nullptr), nullptr))
    {
        ::SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        ::SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Listener::procedure));
        m_all.push_back(this);
    }
    ~Listener() override
    {
        std::erase(m_all, this);
        ::DestroyWindow(m_window);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool isOpen() const { return m_window != nullptr; }
    void hear(UINT message) const
    {
        if (message == m_message)
            m_handler();
    }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        const auto* self = reinterpret_cast<const Listener*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
        // This program's own handlers have run when it sent the message.
        if (message == self->m_message && wParam != ::GetCurrentProcessId())
            self->m_handler();
        return ::DefWindowProcW(window, message, wParam, lParam);
    }

    std::vector<Listener*>& m_all;
    UINT m_message;
    std::function<void()> m_handler;
    HWND m_window;
};

class HostSession : public Session
{
public:
    QString abbreviatedLanguageName(Locale locale) const override
    {
        std::array<wchar_t, 16> name = {};
        const LCID id = locale == Locale::UserDefault ? LOCALE_USER_DEFAULT : LOCALE_SYSTEM_DEFAULT;
        ::GetLocaleInfoW(id, LOCALE_SABBREVLANGNAME, name.data(), static_cast<int>(name.size()));
        return QString::fromWCharArray(name.data());
    }

    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override
    {
        HWND window = ::FindWindowW(nullptr, wide(title.toString()));
        return window ? std::make_unique<HostWindow>(window) : nullptr;
    }

    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override
    {
        const UINT number = ::RegisterWindowMessageW(wide(message.toString()));
        if (number == 0)
            return nullptr;
        auto listener = std::make_unique<Listener>(m_listeners, number, std::move(handler));
        return listener->isOpen() ? std::move(listener) : nullptr;
    }

    void broadcast(QStringView message) override
    {
        const UINT number = ::RegisterWindowMessageW(wide(message.toString()));
        // A handler may take others away.
        const std::vector<Listener*> listeners = m_listeners;
        for (const Listener* each : listeners)
            if (std::find(m_listeners.begin(), m_listeners.end(), each) != m_listeners.end())
                each->hear(number);
        ::PostMessageW(HWND_BROADCAST, number, ::GetCurrentProcessId(), 0);
    }

    LockKeys lockKeys() const override
    {
        const auto isOn = [](int key) { return (::GetKeyState(key) & 1) != 0; };
        return {isOn(VK_CAPITAL), isOn(VK_NUMLOCK), isOn(VK_SCROLL)};
    }

    Status lockWorkstation() override
    {
        return ::LockWorkStation() ? Status() : Status(Error{::GetLastError(), {}});
    }

private:
    std::vector<Listener*> m_listeners;
};

} // namespace

std::unique_ptr<Session> openHostSession()
{
    return std::make_unique<HostSession>();
}

} // namespace quoril
