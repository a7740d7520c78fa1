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
    // Whatever is preset or typed, the port stays one that exists.
    void portsOutsideTheRangeCannotBeEntered_data()
    {
        QTest::addColumn<int>("preset");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("expected");
        QTest::newRow("preset 0") << 0 << QString() << 1;
        QTest::newRow("preset 65536") << 65536 << QString() << 65535;
        QTest::newRow("0") << 4444 << "0" << 4444;
        QTest::newRow("65536") << 4444 << "65536" << 6553;
        QTest::newRow("-1") << 4444 << "-1" << 1; // the minus sign is refused
        QTest::newRow("65535") << 4444 << "65535" << 65535;
        QTest::newRow("1") << 4444 << "1" << 1;
    }

    void portsOutsideTheRangeCannotBeEntered()
    {
        QFETCH(int, preset);
        QFETCH(QString, typed);
        QFETCH(int, expected);
        subFormGAC form("localhost", preset);
        if (!typed.isEmpty()) {
            form.show();
            QVERIFY(QTest::qWaitForWindowExposed(&form));
            auto* spin = form.findChild<QSpinBox*>();
            spin->setFocus();
            spin->selectAll();
            QTest::keyClicks(spin, typed);
            QTest::keyClick(spin, Qt::Key_Tab);
        }
        QCOMPARE(form.port(), expected);
    }

    void acceptOffersTheEnteredValues()
    {
        subFormGAC form("studio-7.local", 4444);
        QCOMPARE(form.address(), QString("studio-7.local"));
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
