#pragma once

#include "platform/windows/win32.h"

#include <functional>
#include <memory>

namespace quoril {

/// A hidden top-level window that waits for one registered message. It has to be top-level: a window for
/// messages alone gets no broadcasts. It lives in the thread that made it, whose event loop serves it.
class MessageWindow
{
public:
    /// Null on failure.
    static std::unique_ptr<MessageWindow> make(UINT message, std::function<void()> handler);

    ~MessageWindow();
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

private:
    MessageWindow(UINT message, std::function<void()> handler);
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM word, LPARAM number);

    UINT m_message;
    std::function<void()> m_handler;
    HWND m_window = nullptr;
};

} // namespace quoril
