#include "subFormToolSettings.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
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

    void okChecksTheToolPath_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << "empty"
                               << "";
        QTest::newRow("runnable file") << "program"
                                       << "";
#ifdef Q_OS_WIN
        QTest::newRow("missing") << "missing"
                                 << "Specified .exe file cannot be found. %1";
#else
        QTest::newRow("missing") << "missing"
                                 << "Specified program cannot be found. %1";
#endif
        QTest::newRow("folder") << "folder"
                                << "Specified file is not a program that can be run. %1";
        QTest::newRow("file that cannot run")
            << "plain"
            << "Specified file is not a program that can be run. %1";
    }

    void okChecksTheToolPath()
    {
        QFETCH(QString, kind);
        QFETCH(QString, message);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QString path;
        if (kind == QLatin1String("program") || kind == QLatin1String("plain")) {
            path = dir.filePath(QStringLiteral("editor"));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("#!/bin/sh\n");
            file.close();
            if (kind == QLatin1String("program"))
                QVERIFY(file.setPermissions(file.permissions() | QFile::ExeOwner));
        } else if (kind == QLatin1String("missing")) {
            path = dir.filePath(QStringLiteral("gone"));
        } else if (kind == QLatin1String("folder")) {
            path = dir.path();
        }

        subFormToolSettings form(path, QString(), 1000);
        form.show();
        if (message.isEmpty()) {
            QCOMPARE(pressOk(form), QString());
            QCOMPARE(form.result(), int(QDialog::Accepted));
            return;
        }
        QCOMPARE(pressOk(form), QStringLiteral("Error|") + message.arg(path));
        QVERIFY2(form.isVisible(), "the dialog stays open for a correction");
    }
};

QTEST_MAIN(tst_ToolSettings)
#include "tst_toolsettings.moc"
