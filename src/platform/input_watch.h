#pragma once

#include <functional>
#include <memory>

namespace quoril {

/// Keeps a watch in place; destroying it ends the watch.
class InputWatch
{
public:
    virtual ~InputWatch() = default;
};

/// Calls the handler for each key down, key up and mouse move that the calling thread takes from the window
/// system, in whatever window: the system's own dialogs too, whose input the toolkit doesn't see. The handler
/// is called within the taking and must not wait. One watch for a thread at a time; null where the toolkit
/// sees all input by itself.
std::unique_ptr<InputWatch> watchThreadInput(std::function<void()> handler);

} // namespace quoril
