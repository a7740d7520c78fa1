#include "SystemThemeWatcher.h"

#include "SystemTheme.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QEvent>

SystemThemeWatcher::SystemThemeWatcher(QObject* parent)
    : QObject(parent)
{
#ifdef Q_OS_WIN
    QCoreApplication::instance()->installEventFilter(this);
#else
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        bus.connect(QStringLiteral("org.freedesktop.portal.Desktop"),
                    QStringLiteral("/org/freedesktop/portal/desktop"),
                    QStringLiteral("org.freedesktop.portal.Settings"),
                    QStringLiteral("SettingChanged"), this,
                    SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    }
#endif
}

SystemThemeWatcher::~SystemThemeWatcher() = default;

void SystemThemeWatcher::portalSettingChanged(const QString& nameSpace, const QString& key,
                                              const QDBusVariant& value)
{
    if (nameSpace != QLatin1String("org.freedesktop.appearance") ||
        key != QLatin1String("color-scheme"))
        return;
    emit SigSystemDarkChanged(PortalColorScheme(QVariant::fromValue(value)) == 1);
}

bool SystemThemeWatcher::eventFilter(QObject* watched, QEvent* event)
{
#ifdef Q_OS_WIN
    // Windows announces the change to the program's windows.
    if (event->type() == QEvent::ThemeChange && watched->isWindowType())
        emit SigSystemDarkChanged(IsSystemDarkTheme());
#endif
    return QObject::eventFilter(watched, event);
}
