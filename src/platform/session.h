#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

namespace quoril {

enum class Locale
{
    UserDefault,
    SystemDefault
};

/// Which of the keyboard's lock keys are on.
struct LockKeys
{
    bool caps = false;
    bool num = false;
    bool scroll = false;
};

/// A top-level window of any program. It is looked at and brought forward, never owned.
class ForeignWindow
{
public:
    virtual ~ForeignWindow() = default;
    virtual bool isIconic() const = 0;
    virtual void restore() = 0;
    /// Repaints the window, puts it in the foreground and gives it the focus.
    virtual void bringForward() = 0;
};

/// Keeps a handler of a registered message in place; destroying it takes the handler away.
class MessageSubscription
{
public:
    virtual ~MessageSubscription() = default;
};

/// What a broadcast does about windows that hang.
enum class HungWindows
{
    AreAwaited, // for as long as they hang
    ArePassedOver // where nobody watches who could end them
};

/// The session of the person who runs the program.
class Session
{
public:
    virtual ~Session() = default;

    /// The three-letter abbreviated language name of the locale ("DEU", "ENU"), empty on failure. The case of
    /// the letters is the system's.
    virtual QString abbreviatedLanguageName(Locale locale) const = 0;

    /// The window of exactly that title, or null.
    virtual std::unique_ptr<ForeignWindow> findWindow(QStringView title) = 0;

    /// Calls the handler, from the event loop of the calling thread, for each broadcast of the message
    /// registered under the name, by whatever process of this user. Null on failure.
    virtual std::unique_ptr<MessageSubscription> subscribe(QStringView message, std::function<void()> handler)
        = 0;

    /// Sends the registered message to every program of this user that subscribed on the same machine, this
    /// one included (whose handlers run before the call returns).
    virtual void broadcast(QStringView message, HungWindows hung) = 0;

    /// The keyboard's lock keys; all off where they can't be read.
    virtual LockKeys lockKeys() const = 0;

    /// Has the workstation locked at once, and waits for nobody: whether it came to pass isn't known here. 8
    /// or 120 where nothing could be asked.
    virtual Status lockWorkstation() = 0;
};

} // namespace quoril
