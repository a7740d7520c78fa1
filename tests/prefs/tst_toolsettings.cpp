#include "ModalAnswer.h"
#include "TestSettings.h"
#include "subFormToolSettings.h"

#include <QComboBox>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

class tst_ToolSettings final : public QObject
{
    Q_OBJECT

private slots:
    void valuesAreKeptInTheirRanges()
    {
        // Seek ms, loudness target, largest boost, then what the page keeps (one decimal).
        const double cases[][6] = {{50, -70, 50, 100, -60, 40},
                                   {100, -23.04, 12, 100, -23, 12},
                                   {300000, 0.5, -1, 300000, 0, 0},
                                   {300100, -16, 6, 300000, -16, 6}};
        for (const auto& c : cases) {
            subFormToolSettings form("/opt/editor", "-o %FILEPATH%", int(c[0]));
            form.setMatchLoudness(c[0] > 100, c[1], c[2]);
            QCOMPARE(form.seekTimeMs(), int(c[3]));
            QCOMPARE(form.matchLoudness(), c[0] > 100);
            QCOMPARE(QPair(form.matchTargetLufs(), form.matchMaxBoostDb()), QPair(c[4], c[5]));
        }
    }

    // A device that has gone stays chosen, marked, after the devices present;
    // every core stays "every core" (0), also on a computer with more of them.
    void devicesAndThreadsShown()
    {
        subFormToolSettings form("/opt/editor", "-o %FILEPATH%", 1000);
        const auto* combo = form.findChild<QComboBox*>(QStringLiteral("comboDevice"));
        form.setOutputDevices({"A", "B"}, "B");
        QCOMPARE(combo->count(), 3); // no entry for a device present
        QCOMPARE(combo->currentText() + '|' + form.outputDevice(), QStringLiteral("B|B"));
        form.setOutputDevices({"A"}, "USB");
        QCOMPARE(QStringList({combo->itemText(0), combo->itemText(1), combo->currentText(),
                              form.outputDevice(), QString::number(combo->count())}),
                 QStringList({"System default", "A", "USB (not available)", "USB", "3"}));
        form.setOutputDevices({}, {});
        QCOMPARE(combo->currentText() + form.outputDevice(), QStringLiteral("System default"));
        const int threads[][3] = {{2, 4, 2}, {9, 4, 0}, {0, 4, 0}, {3, 0, 0}}; // given, cores, kept
        for (const auto& t : threads) {
            form.setAnalysisThreads(t[0], t[1]);
            QCOMPARE(form.analysisThreads(), t[2]);
        }
    }

    // OK takes an empty path or a program that can run; anything else keeps
    // the dialog open behind an error naming the path.
    void okChecksTheToolPath_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        const QString notAProgram = "Specified file is not a program that can be run. %1";
        QTest::newRow("empty") << "empty" << QString();
        QTest::newRow("runnable file") << "program" << QString();
#ifdef Q_OS_WIN
        QTest::newRow("missing") << "missing"
                                 << "Specified .exe file cannot be found. %1";
#else
        QTest::newRow("missing") << "missing"
                                 << "Specified program cannot be found. %1";
#endif
        QTest::newRow("folder") << "folder" << notAProgram;
        QTest::newRow("file that cannot run") << "plain" << notAProgram;
        QTest::newRow("no CatID list") << "list"
                                       << "Specified CatID list cannot be found. %1";
    }

    void okChecksTheToolPath()
    {
        QFETCH(QString, kind);
        QFETCH(QString, message);
        QTemporaryDir dir;
        QString path = kind == QLatin1String("folder") ? dir.path() : QString();
        if (kind == QLatin1String("program") || kind == QLatin1String("plain")) {
            path = dir.filePath(QStringLiteral("editor"));
            QVERIFY(fixtures::WriteBytes(path, "#!/bin/sh\n"));
            if (kind == QLatin1String("program"))
                QVERIFY(QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner));
        } else if (kind == QLatin1String("missing")) {
            path = dir.filePath(QStringLiteral("gone"));
        }
        subFormToolSettings form(path, QStringLiteral("-o %FILEPATH%"), 1000);
        if (kind == QLatin1String("list")) {
            path = dir.filePath(QStringLiteral("cats.csv"));
            form.setUcsCatIdListPath(QLatin1Char(' ') + path); // named without the space
        }
        form.show();
        auto* ok = form.findChild<QPushButton*>(QStringLiteral("buttonOk"));
        if (message.isEmpty()) {
            ok->click();
            QCOMPARE(form.result(), int(QDialog::Accepted));
            QCOMPARE(form.toolPath() + QLatin1Char('|') + form.toolArgs(), path + "|-o %FILEPATH%");
            QVERIFY(!form.isVisible());
            return;
        }
        QString boxText;
        fixtures::AnswerNextModal<QMessageBox>([&](QMessageBox* box) {
            boxText = box->windowTitle() + QLatin1Char('|') + box->text();
            box->accept();
        });
        ok->click();
        QCOMPARE(boxText, QStringLiteral("Error|") + message.arg(path));
        QVERIFY(form.isVisible()); // open for a correction
    }
};

QTEST_MAIN(tst_ToolSettings)
#include "tst_toolsettings.moc"
