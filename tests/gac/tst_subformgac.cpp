#include "subFormGAC.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

class TestSubFormGac final : public QObject
{
    Q_OBJECT

private slots:
    // A stored port that does not exist opens as the nearest one that does.
    void presetPortIsClamped()
    {
        QCOMPARE(subFormGAC("h", 0).port(), 1);
        QCOMPARE(subFormGAC("h", 65536).port(), 65535);
        QCOMPARE(subFormGAC("h", 4444).port(), 4444);
    }

    void acceptOffersTheEnteredValues()
    {
        subFormGAC form("studio-7.local", 4444);
        QCOMPARE(form.address(), QString("studio-7.local"));
        form.findChild<QLineEdit*>()->setText("192.168.0.20");
        auto* spin = form.findChild<QSpinBox*>();
        spin->setValue(70000); // out of range: kept at the highest port
        QCOMPARE(form.port(), 65535);
        spin->setValue(5000);
        auto* box = form.findChild<QDialogButtonBox*>();
        QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(form.address(), QString("192.168.0.20"));
        QCOMPARE(form.port(), 5000);
    }
};

QTEST_MAIN(TestSubFormGac)
#include "tst_subformgac.moc"
