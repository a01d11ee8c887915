#include "platform/host/posix/workstation_lock.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr int answerWithin = 2000; // milliseconds

bool call(const QDBusConnection& bus, const QString& service, const QString& path, const QString& interface)
{
    const QDBusMessage lock = QDBusMessage::createMethodCall(service, path, interface, u"Lock"_s);
    return bus.call(lock, QDBus::Block, answerWithin).type() == QDBusMessage::ReplyMessage;
}

bool lockLoginSession()
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return false;
    const QString session = qEnvironmentVariable("XDG_SESSION_ID");
    const QString service = u"org.freedesktop.login1"_s;
    if (session.isEmpty())
        return call(
            bus, service, u"/org/freedesktop/login1/session/auto"_s, u"org.freedesktop.login1.Session"_s);
    QDBusMessage lock = QDBusMessage::createMethodCall(
        service, u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"LockSession"_s);
    lock << session;
    return bus.call(lock, QDBus::Block, answerWithin).type() == QDBusMessage::ReplyMessage;
}

bool lockByScreenSaver()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    const QString name = u"org.freedesktop.ScreenSaver"_s;
    return call(bus, name, u"/org/freedesktop/ScreenSaver"_s, name)
        || call(bus, name, u"/ScreenSaver"_s, name);
}

} // namespace

Status lockWorkstationOverBus()
{
    if (lockLoginSession() || lockByScreenSaver())
        return {};
    return Error{error::CallNotImplemented, {}};
}

} // namespace quoril
