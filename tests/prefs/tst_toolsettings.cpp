#include "subFormToolSettings.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

class tst_ToolSettings final : public QObject
{
    Q_OBJECT

private:
    template<typename T>
    static T* child(QWidget& w, const char* name)
    {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        if (!c)
            qFatal("missing %s", name);
        return c;
    }

    // Presses OK on a shown dialog; a "cannot be found" box is closed and its
    // text returned.
    static QString pressOk(subFormToolSettings& form)
    {
        QString boxText;
        QTimer::singleShot(50, [&boxText] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                boxText = box->windowTitle() + QLatin1Char('|') + box->text();
                box->accept();
            }
        });
        child<QPushButton>(form, "buttonOk")->click();
        QTest::qWait(100);
        return boxText;
    }

private slots:
    void loadsTheStoredValues()
    {
        subFormToolSettings form(QStringLiteral("/opt/editor"), QStringLiteral("-o %FILEPATH%"),
                                 2500);
        QCOMPARE(form.windowTitle(), QStringLiteral("Tool Settings"));
        QVERIFY(!(form.windowFlags() & Qt::WindowContextHelpButtonHint));
        QCOMPARE(form.toolPath(), QStringLiteral("/opt/editor"));
        QCOMPARE(form.toolArgs(), QStringLiteral("-o %FILEPATH%"));
        QCOMPARE(form.seekTimeMs(), 2500);
    }

    void seekRange_data()
    {
        QTest::addColumn<int>("typed");
        QTest::addColumn<int>("kept");
        QTest::newRow("below 100") << 50 << 100;
        QTest::newRow("lowest") << 100 << 100;
        QTest::newRow("highest") << 300000 << 300000;
        QTest::newRow("above 300000") << 300100 << 300000;
    }

    void seekRange()
    {
        QFETCH(int, typed);
        QFETCH(int, kept);
        subFormToolSettings form(QString(), QString(), typed);
        QCOMPARE(form.seekTimeMs(), kept);
        auto* spin = child<QSpinBox>(form, "spinSeekTime");
        QCOMPARE(spin->singleStep(), 100);
        QVERIFY(spin->isAccelerated());
    }

    void okChecksTheToolPath()
    {
        QTemporaryFile tool;
        QVERIFY(tool.open());

        subFormToolSettings empty(QString(), QString(), 1000);
        empty.show();
        QCOMPARE(pressOk(empty), QString());
        QCOMPARE(empty.result(), int(QDialog::Accepted));

        const QString missing = tool.fileName() + QStringLiteral(".gone");
        subFormToolSettings wrong(missing, QString(), 1000);
        wrong.show();
        QCOMPARE(pressOk(wrong),
                 QStringLiteral("Error|Specified .exe file cannot be found. ") + missing);
        QVERIFY2(wrong.isVisible(), "the dialog stays open for a correction");

        child<QLineEdit>(wrong, "editToolPath")->setText(tool.fileName());
        QCOMPARE(pressOk(wrong), QString());
        QCOMPARE(wrong.result(), int(QDialog::Accepted));
        QVERIFY(!wrong.isVisible());
    }
};

QTEST_MAIN(tst_ToolSettings)
#include "tst_toolsettings.moc"
