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

template<typename T>
T* child(QObject& parent, const char* name)
{
    return parent.findChild<T*>(QLatin1String(name));
}

class tst_SubFormFont final : public QObject
{
    Q_OBJECT

private slots:
    // The form opens on the current fonts and applies every change at once,
    // each to its own target; fitting takes the table's size from the rows.
    void changesApplyAtOnce()
    {
        const QStringList families = QFontDatabase().families();
        const QString a = families.first(), b = families.last();
        FontSettings fonts;
        fonts.SetDefaultFont(a, 11);
        fonts.SetFont(FontSettings::Tree, b, 14);
        fonts.SetFitToCell(false);
        SubFormFont form(&fonts);
        QSignalSpy changed(&form, &SubFormFont::SigChangeFont);
        auto* treeSize = child<QSpinBox>(form, "treeFontSize");
        auto* tableSize = child<QSpinBox>(form, "tableFontSize");
        QCOMPARE(child<QFontComboBox>(form, "treeFontFamilies")->currentFont().family(), b);
        QCOMPARE(tableSize->value(), 11); // a target never set shows the default
        treeSize->setValue(20);
        child<QFontComboBox>(form, "tableFontFamilies")->setCurrentFont(QFont(b));
        tableSize->setValue(12);
        QCOMPARE(changed.count(), 3);
        QCOMPARE(fonts.GetPointSize(FontSettings::Tree), 20);
        QCOMPARE(fonts.GetFamily(FontSettings::Tree), b);
        QCOMPARE(fonts.GetFamily(FontSettings::Table), b);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 12);
        QCOMPARE(child<QLineEdit>(form, "tableTextPreview")->font().pointSize(), 12);
        auto* fit = child<QCheckBox>(form, "fitTableCell");
        fit->setChecked(true);
        QVERIFY(fonts.IsFitToCell());
        QVERIFY(!tableSize->isEnabled());
        // The rows changed the size meanwhile; reopening shows it.
        form.hide();
        fonts.SetPointSize(FontSettings::Table, 15);
        form.show();
        QCOMPARE(tableSize->value(), 15);
        fit->setChecked(false);
        QVERIFY(tableSize->isEnabled());
        QCOMPARE(changed.count(), 5);
        child<QPushButton>(form, "defaultTreeFont")->click();
        QCOMPARE(fonts.GetFamily(FontSettings::Tree), a);
        QCOMPARE(treeSize->value(), 11);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 15);
        child<QPushButton>(form, "defaultTableFont")->click();
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 11);
        QCOMPARE(changed.count(), 7);
    }
};

QTEST_MAIN(tst_SubFormFont)
#include "tst_subformfont.moc"
