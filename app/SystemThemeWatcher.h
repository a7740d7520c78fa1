#pragma once

#include <QDBusVariant>
#include <QObject>

class QEvent;

// Tells while the program runs that the desktop switched between light and
// dark: the desktop portal's SettingChanged signal for "color-scheme" on
// Linux, the theme change Windows announces there.
class SystemThemeWatcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SystemThemeWatcher)

public:
    explicit SystemThemeWatcher(QObject* parent = nullptr);
    ~SystemThemeWatcher() override;

signals:
    void SigSystemDarkChanged(bool dark);

private slots:
    // org.freedesktop.portal.Settings.SettingChanged(namespace, key, value).
    void portalSettingChanged(const QString& nameSpace, const QString& key,
                              const QDBusVariant& value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
