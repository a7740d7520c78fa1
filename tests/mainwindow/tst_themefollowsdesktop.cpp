// "System" follows the desktop when it switches between light and dark while
// Tesk runs: the portal announces the change on the session bus the test runs
// with (dbus-run-session), and the window takes the new palette at once.
#include "MainWindow.h"
#include "TestSettings.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTest>

namespace {

const QColor kDarkWindow(32, 32, 34);

void announceScheme(uint scheme)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    signal << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
           << QVariant::fromValue(QDBusVariant(QVariant(scheme)));
    QDBusConnection::sessionBus().send(signal);
}

// Announces `scheme` until the window shows it or ten seconds pass: the bus
// tells the window who owns the portal's name a moment after it is taken, and
// an announcement before that is not for it.
bool announceUntil(const QWidget& window, uint scheme, bool dark)
{
    for (int i = 0; i < 100; ++i) {
        announceScheme(scheme);
        QTest::qWait(100);
        if ((window.palette().color(QPalette::Window) == kDarkWindow) == dark)
            return true;
    }
    return false;
}

} // namespace

class tst_ThemeFollowsDesktop final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;

private slots:
    void initTestCase() { QVERIFY(QDBusConnection::sessionBus().isConnected()); }

    void systemThemeFollowsTheDesktopLive()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        QCOMPARE(manager->GetColorTheme(), TeskManager::System);
        // No portal answered at start: light.
        QVERIFY(window.palette().color(QPalette::Window) != kDarkWindow);
        // The portal comes up, then the desktop turns dark and light again.
        QVERIFY(QDBusConnection::sessionBus().registerService(
            QStringLiteral("org.freedesktop.portal.Desktop")));
        QVERIFY(announceUntil(window, 1, true));
        QVERIFY(announceUntil(window, 2, false));

        // A theme the user chose stays whatever the desktop does.
        window.SlotChangeColor(TeskManager::Light);
        announceScheme(1);
        QTest::qWait(300);
        QVERIFY(window.palette().color(QPalette::Window) != kDarkWindow);
        QDBusConnection::sessionBus().unregisterService(
            QStringLiteral("org.freedesktop.portal.Desktop"));
    }
};

QTEST_MAIN(tst_ThemeFollowsDesktop)
#include "tst_themefollowsdesktop.moc"
