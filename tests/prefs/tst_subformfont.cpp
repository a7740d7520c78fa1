#include "FontSettings.h"
#include "SubFormFont.h"

#include <QCheckBox>
#include <QFontComboBox>
#include <QFontDatabase>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

class tst_SubFormFont final : public QObject
{
    Q_OBJECT

private:
    FontSettings fonts;
    QString familyA, familyB;

    template<typename T>
    static T* child(QWidget& w, const char* name)
    {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        if (!c)
            qFatal("missing %s", name);
        return c;
    }

private slots:
    void initTestCase()
    {
        const QStringList families = QFontDatabase().families();
        QVERIFY2(families.size() >= 2, "needs two installed font families");
        familyA = families.first();
        familyB = families.last();
    }

    void init()
    {
        fonts = FontSettings();
        fonts.SetDefaultFont(familyA, 11);
        fonts.SetFont(FontSettings::Tree, familyB, 14);
        fonts.SetFont(FontSettings::Table, familyB, 9);
        fonts.SetFitToCell(false);
    }

    // The form opens on the current fonts and announces every change at once,
    // each to its own target.
    void everyChangeIsAnnouncedAtOnce()
    {
        SubFormFont form(&fonts);
        QSignalSpy changed(&form, &SubFormFont::SigChangeFont);
        QCOMPARE(child<QFontComboBox>(form, "treeFontFamilies")->currentFont().family(), familyB);
        QCOMPARE(child<QSpinBox>(form, "tableFontSize")->value(), 9);
        QCOMPARE(child<QLineEdit>(form, "treeTextPreview")->font().pointSize(), 14);

        child<QSpinBox>(form, "treeFontSize")->setValue(20);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(fonts.GetPointSize(FontSettings::Tree), 20);
        QCOMPARE(child<QLineEdit>(form, "treeTextPreview")->font().pointSize(), 20);

        child<QFontComboBox>(form, "tableFontFamilies")->setCurrentFont(QFont(familyA));
        QCOMPARE(changed.count(), 2);
        QCOMPARE(fonts.GetFamily(FontSettings::Table), familyA);
        QCOMPARE(fonts.GetFamily(FontSettings::Tree), familyB);

        child<QSpinBox>(form, "tableFontSize")->setValue(12);
        QCOMPARE(changed.count(), 3);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 12);
        QCOMPARE(fonts.GetPointSize(FontSettings::Tree), 20);
        QCOMPARE(child<QLineEdit>(form, "tableTextPreview")->font().pointSize(), 12);
    }

    void fitToCellTakesTheSizeFromTheRows()
    {
        SubFormFont form(&fonts);
        QSignalSpy changed(&form, &SubFormFont::SigChangeFont);
        auto* fit = child<QCheckBox>(form, "fitTableCell");
        auto* size = child<QSpinBox>(form, "tableFontSize");
        QVERIFY(size->isEnabled());
        fit->setChecked(true);
        QCOMPARE(changed.count(), 1);
        QVERIFY(fonts.IsFitToCell());
        QVERIFY(!size->isEnabled());

        // The rows changed the size meanwhile; reopening shows it.
        form.hide();
        fonts.SetPointSize(FontSettings::Table, 12);
        form.show();
        QCOMPARE(size->value(), 12);
        QCOMPARE(changed.count(), 1);

        fit->setChecked(false);
        QCOMPARE(changed.count(), 2);
        QVERIFY(!fonts.IsFitToCell());
        QVERIFY(size->isEnabled());
    }

    void defaultButtons()
    {
        SubFormFont form(&fonts);
        QSignalSpy changed(&form, &SubFormFont::SigChangeFont);
        child<QPushButton>(form, "defaultTreeFont")->click();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(fonts.GetFamily(FontSettings::Tree), familyA);
        QCOMPARE(fonts.GetPointSize(FontSettings::Tree), 11);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 9);
        QCOMPARE(child<QSpinBox>(form, "treeFontSize")->value(), 11);

        child<QPushButton>(form, "defaultTableFont")->click();
        QCOMPARE(changed.count(), 2);
        QCOMPARE(fonts.GetFamily(FontSettings::Table), familyA);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 11);
        QCOMPARE(child<QFontComboBox>(form, "tableFontFamilies")->currentFont().family(), familyA);
    }
};

QTEST_MAIN(tst_SubFormFont)
#include "tst_subformfont.moc"
