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
    void presetAndLimits()
    {
        subFormGAC form("studio-7.local", 4444);
        QCOMPARE(form.windowTitle(), QString("Nuendo Connection Settings"));
        QCOMPARE(form.minimumSize(), QSize(300, 141));
        QCOMPARE(form.address(), QString("studio-7.local"));
        QCOMPARE(form.port(), 4444);
        auto* spin = form.findChild<QSpinBox*>();
        QVERIFY(spin);
        QCOMPARE(spin->minimum(), 1);
        QCOMPARE(spin->maximum(), 65535);
    }

    void outOfRangePortsCannotBeEntered_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("expected");
        QTest::newRow("0") << "0" << 4444;
        QTest::newRow("65536") << "65536" << 6553;
        QTest::newRow("-1") << "-1" << 1; // the minus sign is refused
        QTest::newRow("65535") << "65535" << 65535;
        QTest::newRow("1") << "1" << 1;
    }

    void outOfRangePortsCannotBeEntered()
    {
        QFETCH(QString, typed);
        QFETCH(int, expected);
        subFormGAC form("localhost", 4444);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        auto* spin = form.findChild<QSpinBox*>();
        spin->setFocus();
        spin->selectAll();
        QTest::keyClicks(spin, typed);
        QTest::keyClick(spin, Qt::Key_Tab);
        QVERIFY(form.port() >= 1 && form.port() <= 65535);
        QCOMPARE(form.port(), expected);
    }

    void presetOutOfRangeIsClamped()
    {
        QCOMPARE(subFormGAC("h", 0).port(), 1);
        QCOMPARE(subFormGAC("h", 65536).port(), 65535);
    }

    void acceptOffersTheEnteredValues()
    {
        subFormGAC form("localhost", 4444);
        form.findChild<QLineEdit*>()->setText("192.168.0.20");
        form.findChild<QSpinBox*>()->setValue(5000);
        auto* box = form.findChild<QDialogButtonBox*>();
        QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(form.address(), QString("192.168.0.20"));
        QCOMPARE(form.port(), 5000);
    }
};

QTEST_MAIN(TestSubFormGac)
#include "tst_subformgac.moc"
