#include "platform/input_watch.h"
#include "platform/windows/win32.h"

namespace quoril {

namespace {

using MessageHook = OwnedHandle<HHOOK, ::UnhookWindowsHookEx>;

/// The one watch of the thread, whose hook has no room for a word of its own.
thread_local const std::function<void()>* t_handler = nullptr;

LRESULT CALLBACK lookAtMessage(int code, WPARAM removal, LPARAM data)
{
    if (code == HC_ACTION && removal == PM_REMOVE && t_handler) {
        const UINT message = reinterpret_cast<const MSG*>(data)->message;
        if (message == WM_KEYDOWN || message == WM_KEYUP || message == WM_MOUSEMOVE)
            (*t_handler)();
    }
    return ::CallNextHookEx(nullptr, code, removal, data);
}

class WindowsInputWatch : public InputWatch
{
public:
    explicit WindowsInputWatch(std::function<void()> handler)
        : m_handler(std::move(handler))
        , m_hook(::SetWindowsHookExW(WH_GETMESSAGE, lookAtMessage, nullptr, ::GetCurrentThreadId()))
    {
        t_handler = &m_handler;
    }
    ~WindowsInputWatch() override { t_handler = nullptr; }
    WindowsInputWatch(const WindowsInputWatch&) = delete;
    WindowsInputWatch& operator=(const WindowsInputWatch&) = delete;

private:
    std::function<void()> m_handler;
    MessageHook m_hook;
};

} // namespace

std::unique_ptr<InputWatch> watchThreadInput(std::function<void()> handler)
{
    return std::make_unique<WindowsInputWatch>(std::move(handler));
}

} // namespace quoril
