#include "ModalAnswer.h"
#include "TestSettings.h"
#include "subFormToolSettings.h"

#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

class tst_ToolSettings final : public QObject
{
    Q_OBJECT

private slots:
    void seekTimeIsKeptInItsRange()
    {
        const int cases[][2] = {{50, 100}, {100, 100}, {300000, 300000}, {300100, 300000}};
        for (const auto& c : cases)
            QCOMPARE(subFormToolSettings("/opt/editor", "-o %FILEPATH%", c[0]).seekTimeMs(), c[1]);
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
        subFormToolSettings form(path, QString(), 1000);
        form.show();
        auto* ok = form.findChild<QPushButton*>(QStringLiteral("buttonOk"));
        if (message.isEmpty()) {
            ok->click();
            QCOMPARE(form.result(), int(QDialog::Accepted));
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
