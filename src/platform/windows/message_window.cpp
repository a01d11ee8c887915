#include "platform/windows/message_window.h"

namespace quoril {

namespace {

constexpr const wchar_t* ClassName = L"QuorilMessageWindow";

} // namespace

MessageWindow::MessageWindow(UINT message, std::function<void()> handler)
    : m_message(message)
    , m_handler(std::move(handler))
{
}

MessageWindow::~MessageWindow()
{
    if (!m_window)
        return;
    ::SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
    ::DestroyWindow(m_window);
}

std::unique_ptr<MessageWindow> MessageWindow::make(UINT message, std::function<void()> handler)
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = ::GetModuleHandleW(nullptr);
    windowClass.lpszClassName = ClassName;
    if (!::RegisterClassW(&windowClass) && ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
        return nullptr;
    std::unique_ptr<MessageWindow> window(new MessageWindow(message, std::move(handler)));
    window->m_window = ::CreateWindowExW(WS_EX_TOOLWINDOW, ClassName, nullptr, WS_POPUP, 0, 0, 0, 0, nullptr,
        nullptr, windowClass.hInstance, nullptr);
    if (!window->m_window)
        return nullptr;
    ::SetWindowLongPtrW(window->m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window.get()));
    // A console with an administrator's rights hears of it from programs without them, too.
    ::ChangeWindowMessageFilterEx(window->m_window, message, MSGFLT_ALLOW, nullptr);
    return window;
}

LRESULT CALLBACK MessageWindow::procedure(HWND window, UINT message, WPARAM word, LPARAM number)
{
    const auto* self = reinterpret_cast<const MessageWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || message != self->m_message)
        return ::DefWindowProcW(window, message, word, number);
    // A sender in another program doesn't wait until the message box that the handler shows is closed.
    ::ReplyMessage(0);
    // The handler may take the subscription away.
    const std::function<void()> handler = self->m_handler;
    handler();
    return 0;
}

} // namespace quoril
