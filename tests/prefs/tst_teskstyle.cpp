#include "SystemTheme.h"
#include "TeskStyle.h"

#include <QApplication>
#include <QDBusVariant>
#include <QStyleFactory>
#include <QTest>

class tst_TeskStyle final : public QObject
{
    Q_OBJECT

private slots:
    void darkPaletteColours_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("role");
        QTest::addColumn<QColor>("expected");

        const QColor c(32, 32, 34);
        const QColor base = c.lighter(150); // (48, 48, 51)
        QCOMPARE(base, QColor(48, 48, 51));
        for (const QPalette::ColorGroup g : {QPalette::Active, QPalette::Inactive}) {
            const char* name = g == QPalette::Active ? "active" : "inactive";
            const auto row = [&](const char* role) -> QTestData& {
                return QTest::addRow("%s %s", name, role) << int(g);
            };
            row("WindowText") << int(QPalette::WindowText) << QColor(240, 249, 250);
            row("Button") << int(QPalette::Button) << c;
            row("Light") << int(QPalette::Light) << c;
            row("Dark") << int(QPalette::Dark) << c;
            row("Mid") << int(QPalette::Mid) << c;
            row("Text") << int(QPalette::Text) << QColor(240, 240, 240);
            row("BrightText") << int(QPalette::BrightText) << QColor(255, 255, 255);
            row("Base") << int(QPalette::Base) << base;
            row("Window") << int(QPalette::Window) << c;
            row("Highlight") << int(QPalette::Highlight) << QColor(87, 158, 205, 128);
            row("HighlightedText") << int(QPalette::HighlightedText) << QColor(255, 255, 255);
            row("ToolTipBase") << int(QPalette::ToolTipBase) << QColor(16, 16, 16);
            row("ToolTipText") << int(QPalette::ToolTipText) << QColor(230, 230, 230);
            row("AlternateBase") << int(QPalette::AlternateBase) << QColor(64, 64, 68);
            // Derived by Qt from the group: buttons carry the text colour.
            row("ButtonText") << int(QPalette::ButtonText) << QColor(240, 240, 240);
        }
        const QColor d(8, 8, 10);
        const int dis = int(QPalette::Disabled);
        QTest::newRow("disabled WindowText")
            << dis << int(QPalette::WindowText) << QColor(120, 120, 120);
        QTest::newRow("disabled Button") << dis << int(QPalette::Button) << d;
        QTest::newRow("disabled Light") << dis << int(QPalette::Light) << QColor(140, 140, 140);
        QTest::newRow("disabled Dark") << dis << int(QPalette::Dark) << d;
        QTest::newRow("disabled Mid") << dis << int(QPalette::Mid) << d;
        QTest::newRow("disabled Text") << dis << int(QPalette::Text) << QColor(130, 130, 130);
        QTest::newRow("disabled BrightText")
            << dis << int(QPalette::BrightText) << QColor(140, 140, 140);
        QTest::newRow("disabled Base") << dis << int(QPalette::Base) << QColor(12, 12, 15);
        QTest::newRow("disabled Window") << dis << int(QPalette::Window) << d;
        QTest::newRow("disabled HighlightedText")
            << dis << int(QPalette::HighlightedText) << QColor(160, 160, 164);
        QTest::newRow("disabled AlternateBase")
            << dis << int(QPalette::AlternateBase) << QColor(64, 64, 68);
    }

    void darkPaletteColours()
    {
        QFETCH(int, group);
        QFETCH(int, role);
        QFETCH(QColor, expected);
        const QPalette p = TeskStyle::darkPalette();
        QCOMPARE(p.color(QPalette::ColorGroup(group), QPalette::ColorRole(role)), expected);
    }

    void themeResolution()
    {
        QVERIFY(TeskStyle::isDark(TeskManager::Dark));
        QVERIFY(!TeskStyle::isDark(TeskManager::Light));
    }

    void lightIsTheStandardFusionPalette()
    {
        QScopedPointer<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
        const QPalette standard = fusion->standardPalette();

        TeskStyle style(nullptr);
        QPalette polished = TeskStyle::darkPalette();
        style.polish(polished);
        QCOMPARE(polished.color(QPalette::Active, QPalette::Window),
                 standard.color(QPalette::Active, QPalette::Window));
        QCOMPARE(polished.color(QPalette::Active, QPalette::Base),
                 standard.color(QPalette::Active, QPalette::Base));
        QCOMPARE(polished.color(QPalette::Disabled, QPalette::Text),
                 standard.color(QPalette::Disabled, QPalette::Text));
        QCOMPARE(style.baseStyle()->objectName().toLower(), QStringLiteral("fusion"));
    }

    void portalReplyIsUnwrapped_data()
    {
        QTest::addColumn<QVariant>("reply");
        QTest::addColumn<int>("scheme");
        const QVariant dark = QVariant::fromValue(QDBusVariant(QVariant(uint(1))));
        QTest::newRow("ReadOne: one variant") << dark << 1;
        QTest::newRow("Read: variant in a variant") << QVariant::fromValue(QDBusVariant(dark)) << 1;
        QTest::newRow("prefer light") << QVariant::fromValue(QDBusVariant(QVariant(uint(2)))) << 2;
        QTest::newRow("no preference") << QVariant(uint(0)) << 0;
        QTest::newRow("no reply") << QVariant() << -1;
        QTest::newRow("not a number")
            << QVariant::fromValue(QDBusVariant(QVariant(QStringLiteral("dark")))) << -1;
    }

    void portalReplyIsUnwrapped()
    {
        QFETCH(QVariant, reply);
        QFETCH(int, scheme);
        QCOMPARE(PortalColorScheme(reply), scheme);
    }
};

QTEST_MAIN(tst_TeskStyle)
#include "tst_teskstyle.moc"
