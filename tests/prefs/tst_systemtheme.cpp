// Answers the desktop portal's colour-scheme question from inside the test,
// on the session bus the test runs with (dbus-run-session).
#include "SystemTheme.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTest>

class FakePortal final : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    uint scheme = 0;
    bool hasReadOne = true;
    bool hasValue = true;
    int calls = 0;

public slots:
    QDBusVariant ReadOne(const QString& nameSpace, const QString& key)
    {
        ++calls;
        if (!hasReadOne) {
            sendErrorReply(QDBusError::UnknownMethod, QStringLiteral("no ReadOne"));
            return {};
        }
        return answer(nameSpace, key);
    }
    // The older method wraps the value in a second variant.
    QDBusVariant Read(const QString& nameSpace, const QString& key)
    {
        ++calls;
        const QDBusVariant inner = answer(nameSpace, key);
        return QDBusVariant(QVariant::fromValue(inner));
    }

private:
    QDBusVariant answer(const QString& nameSpace, const QString& key)
    {
        if (!hasValue || nameSpace != QLatin1String("org.freedesktop.appearance") ||
            key != QLatin1String("color-scheme")) {
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                           QStringLiteral("no such setting"));
            return {};
        }
        return QDBusVariant(QVariant(scheme));
    }
};

class tst_SystemTheme final : public QObject
{
    Q_OBJECT

private:
    FakePortal portal;

private slots:
    void initTestCase()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected())
            QSKIP("no session bus; run under dbus-run-session");
        // Before the portal exists the answer is light, and quickly.
        QVERIFY(!IsSystemDarkTheme());
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }

    void followsThePortal_data()
    {
        QTest::addColumn<uint>("scheme");
        QTest::addColumn<bool>("hasReadOne");
        QTest::addColumn<bool>("hasValue");
        QTest::addColumn<bool>("dark");
        QTest::newRow("prefer dark") << 1u << true << true << true;
        QTest::newRow("prefer light") << 2u << true << true << false;
        QTest::newRow("no preference") << 0u << true << true << false;
        QTest::newRow("old portal, prefer dark") << 1u << false << true << true;
        QTest::newRow("old portal, prefer light") << 2u << false << true << false;
        QTest::newRow("setting missing") << 1u << true << false << false;
    }

    void followsThePortal()
    {
        QFETCH(uint, scheme);
        QFETCH(bool, hasReadOne);
        QFETCH(bool, hasValue);
        QFETCH(bool, dark);
        portal.scheme = scheme;
        portal.hasReadOne = hasReadOne;
        portal.hasValue = hasValue;
        portal.calls = 0;
        QCOMPARE(IsSystemDarkTheme(), dark);
        QVERIFY(portal.calls >= 1);
    }
};

QTEST_GUILESS_MAIN(tst_SystemTheme)
#include "tst_systemtheme.moc"
