#include "platform/host/posix/workstation_lock.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <chrono>
#include <optional>
#include <thread>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr int AnswerWithin = 2000; // milliseconds
constexpr int Looks = 10;

const QString LoginService = u"org.freedesktop.login1"_s;
const QString LoginSession = u"org.freedesktop.login1.Session"_s;

/// What a call gave: nothing for a failure, an invalid value for an answer without arguments.
std::optional<QVariant> call(const QDBusConnection& bus, const QString& service, const QString& path,
    const QString& interface, const QString& method, const QVariantList& arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage answer = bus.call(message, QDBus::Block, AnswerWithin);
    if (answer.type() != QDBusMessage::ReplyMessage)
        return std::nullopt;
    return answer.arguments().value(0);
}

/// Whoever locks the screen was asked a moment ago: it takes a while until it is locked.
template <typename Look> bool comesTrue(const Look& look, const LockPatience& patience)
{
    for (int i = 0; i < Looks && !patience.stop.stop_requested(); ++i) {
        if (look())
            return true;
        std::this_thread::sleep_for(patience.betweenLooks);
    }
    return false;
}

bool lockLoginSession(const QDBusConnection& bus, const LockPatience& patience)
{
    QString path = u"/org/freedesktop/login1/session/auto"_s;
    if (const QString id = qEnvironmentVariable("XDG_SESSION_ID"); !id.isEmpty()) {
        const auto session = call(bus, LoginService, u"/org/freedesktop/login1"_s,
            u"org.freedesktop.login1.Manager"_s, u"GetSession"_s, {id});
        if (!session)
            return false;
        path = session->value<QDBusObjectPath>().path();
    }
    // The login manager only passes the wish on; what locks the screen answers with the hint.
    const auto isLocked = [&] {
        const auto hint = call(bus, LoginService, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
            {LoginSession, u"LockedHint"_s});
        return hint && hint->value<QDBusVariant>().variant().toBool();
    };
    return call(bus, LoginService, path, LoginSession, u"Lock"_s) && comesTrue(isLocked, patience);
}

bool lockByScreenSaver(const QDBusConnection& bus, const LockPatience& patience)
{
    static const std::pair<QString, QString> places[]
        = {{u"org.freedesktop.ScreenSaver"_s, u"/org/freedesktop/ScreenSaver"_s},
            {u"org.freedesktop.ScreenSaver"_s, u"/ScreenSaver"_s},
            {u"org.gnome.ScreenSaver"_s, u"/org/gnome/ScreenSaver"_s}};
    for (const auto& [name, path] : places) {
        const auto isActive = [&, &name = name, &path = path] {
            const auto active = call(bus, name, path, name, u"GetActive"_s);
            return active && active->toBool();
        };
        if (call(bus, name, path, name, u"Lock"_s) && comesTrue(isActive, patience))
            return true;
    }
    return false;
}

} // namespace

Status lockWorkstationOverBus(const LockPatience& patience)
{
    const QDBusConnection system = QDBusConnection::systemBus();
    if (system.isConnected() && lockLoginSession(system, patience))
        return {};
    const QDBusConnection session = QDBusConnection::sessionBus();
    if (session.isConnected() && lockByScreenSaver(session, patience))
        return {};
    return Error{error::CallNotImplemented, {}};
}

} // namespace quoril
