// The light and dark palettes, and the desktop portal's colour-scheme question
// answered from inside the test on the session bus it runs with (dbus-run-session).
#include "SystemTheme.h"
#include "TeskStyle.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStyleFactory>
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
        // "System" is the manager's theme until the user picks another.
        TeskManager manager;
        QCOMPARE(manager.GetColorTheme(), TeskManager::System);
        TeskStyle style(&manager);
        QPalette palette;
        style.polish(palette);
        QCOMPARE(palette.color(QPalette::Window) == QColor(32, 32, 34), dark);
    }

    // What the dark palette is for, rather than its every colour: text that
    // reads on its background in every group, and disabled controls that sit
    // darker than the window instead of greyed out lighter.
    void darkPaletteReads()
    {
        const QPalette p = TeskStyle::darkPalette();
        using P = QPalette;
        const auto reads = [&p](P::ColorGroup g, P::ColorRole text, P::ColorRole back) {
            return p.color(g, text).lightness() - p.color(g, back).lightness() > 80;
        };
        for (const P::ColorGroup g : {P::Active, P::Inactive, P::Disabled}) {
            QVERIFY(reads(g, P::WindowText, P::Window));
            QVERIFY(reads(g, P::Text, P::Base));
            QVERIFY(reads(g, P::ButtonText, P::Button));
            QVERIFY(p.color(g, P::Base).lightness() > p.color(g, P::Window).lightness());
        }
        for (const P::ColorGroup g : {P::Active, P::Inactive}) {
            QVERIFY(reads(g, P::ToolTipText, P::ToolTipBase));
            QVERIFY(reads(g, P::HighlightedText, P::Highlight));
        }
        QVERIFY(p.color(P::Disabled, P::Window).lightness() <
                p.color(P::Active, P::Window).lightness());
    }

    void lightIsTheStandardFusionPalette()
    {
        QScopedPointer<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
        const QPalette standard = fusion->standardPalette();
        TeskStyle style(nullptr);
        QPalette polished = TeskStyle::darkPalette();
        style.polish(polished);
        for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Text})
            for (const auto group : {QPalette::Active, QPalette::Disabled})
                QCOMPARE(polished.color(group, role), standard.color(group, role));
        QCOMPARE(style.baseStyle()->objectName().toLower(), QStringLiteral("fusion"));
    }
};

QTEST_MAIN(tst_SystemTheme)
#include "tst_systemtheme.moc"
