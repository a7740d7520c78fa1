#include "SystemTheme.h"

#include <QVariant>

#ifdef Q_OS_WIN
#include <QSettings>
#else
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#endif

int PortalColorScheme(const QVariant& reply)
{
    QVariant value = reply;
#ifndef Q_OS_WIN
    for (int depth = 0; depth < 3 && value.canConvert<QDBusVariant>() &&
                        value.userType() == qMetaTypeId<QDBusVariant>();
         ++depth)
        value = value.value<QDBusVariant>().variant();
#endif
    bool ok = false;
    const int scheme = value.toInt(&ok);
    return ok ? scheme : -1;
}

#ifdef Q_OS_WIN

bool IsSystemDarkTheme()
{
    const QSettings personalize(
        QStringLiteral(
            "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize"),
        QSettings::NativeFormat);
    const QVariant value = personalize.value(QStringLiteral("AppsUseLightTheme"));
    return value.isValid() && value.toInt() == 0;
}

#else

namespace {

// Long enough for a local portal, short enough not to delay start-up when
// a portal is registered but hangs.
constexpr int portalTimeoutMs = 250;

QVariant ReadPortalSetting(const QString& method)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                                       QStringLiteral("/org/freedesktop/portal/desktop"),
                                       QStringLiteral("org.freedesktop.portal.Settings"), method);
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(call, QDBus::Block, portalTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst();
}

} // namespace

bool IsSystemDarkTheme()
{
    if (!QDBusConnection::sessionBus().isConnected())
        return false;
    // ReadOne is the current method; portals before version 2 only have Read.
    QVariant reply = ReadPortalSetting(QStringLiteral("ReadOne"));
    if (!reply.isValid())
        reply = ReadPortalSetting(QStringLiteral("Read"));
    return PortalColorScheme(reply) == 1;
}

#endif
