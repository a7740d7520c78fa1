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
