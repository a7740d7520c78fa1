#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestStartupRules : public QObject
{
    Q_OBJECT

private slots:
    void defaultGeometry_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QRect>("window");
        // (1366 - 1350) / 2 = 8, (768 - 600) / 2 = 84
        QTest::newRow("1366x768") << QRect(0, 0, 1366, 768) << QRect(8, 84, 1350, 600);
        // narrower than 1351: full width; (1024 - 600) / 2 = 212
        QTest::newRow("1280x1024") << QRect(0, 0, 1280, 1024) << QRect(0, 212, 1280, 600);
        QTest::newRow("exactly 1351x601") << QRect(0, 0, 1351, 601) << QRect(0, 0, 1350, 600);
        QTest::newRow("1350x600 fills") << QRect(0, 0, 1350, 600) << QRect(0, 0, 1350, 600);
        QTest::newRow("tiny") << QRect(0, 0, 640, 480) << QRect(0, 0, 640, 480);
        QTest::newRow("4k") << QRect(0, 0, 3840, 2160) << QRect(1245, 780, 1350, 600);
    }
    void defaultGeometry()
    {
        QFETCH(QRect, screen);
        QFETCH(QRect, window);
        QCOMPARE(DefaultWindowGeometry(screen), window);
    }

    void commandLineRoot()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString folder = dir.filePath(QStringLiteral("x"));
        QVERIFY(QDir().mkpath(folder));
        auto touch = [](const QString& path) {
            QFile f(path);
            return f.open(QIODevice::WriteOnly);
        };
        QVERIFY(touch(folder + QStringLiteral("/a.WAV")));
        QVERIFY(touch(folder + QStringLiteral("/notes.txt")));
        const QString program = QStringLiteral("tesk");

        QCOMPARE(CommandLineRoot({program}), QString());
        QCOMPARE(CommandLineRoot({program, folder}), folder);
        // The suffix test ignores case; the root is the file's folder.
        QCOMPARE(CommandLineRoot({program, folder + QStringLiteral("/a.WAV")}), folder);
        QCOMPARE(CommandLineRoot({program, folder + QStringLiteral("/notes.txt")}), QString());
        QCOMPARE(CommandLineRoot({program, folder + QStringLiteral("/missing.wav")}), QString());
        QCOMPARE(CommandLineRoot({program, QStringLiteral("--junk=1")}), QString());

        // A relative folder becomes absolute.
        const QString previous = QDir::currentPath();
        QDir::setCurrent(dir.path());
        const QString relative = CommandLineRoot({program, QStringLiteral("x")});
        QDir::setCurrent(previous);
        QCOMPARE(relative, QDir(folder).absolutePath());
    }
};

QTEST_GUILESS_MAIN(TestStartupRules)
#include "tst_startuprules.moc"
