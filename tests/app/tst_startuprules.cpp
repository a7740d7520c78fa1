#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"
#include "FitWindowGeometry.h"

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

    void fitGeometry_data()
    {
        QTest::addColumn<QRect>("stored");
        QTest::addColumn<QRect>("window");
        const QRect left(0, 0, 1920, 1040);
        const QRect right(1920, 0, 1280, 1024);
        QTest::newRow("fits as it is") << QRect(100, 50, 800, 600) << QRect(100, 50, 800, 600);
        QTest::newRow("100000 x 100000") << QRect(0, 0, 100000, 100000) << left;
        // Overlapping no screen: the first, at the edges nearest to where it was.
        QTest::newRow("far off to the lower right")
            << QRect(100000, 100000, 800, 600) << QRect(1120, 440, 800, 600);
        QTest::newRow("off both screens, upper left")
            << QRect(-5000, -5000, 800, 600) << QRect(0, 0, 800, 600);
        QTest::newRow("mostly on the second screen")
            << QRect(1800, 100, 1000, 500) << QRect(1920, 100, 1000, 500);
        QTest::newRow("taller than the second screen")
            << QRect(2000, 0, 800, 2000) << QRect(2000, 0, 800, 1024);
    }
    void fitGeometry()
    {
        QFETCH(QRect, stored);
        QFETCH(QRect, window);
        const QList<QRect> screens{QRect(0, 0, 1920, 1040), QRect(1920, 0, 1280, 1024)};
        QCOMPARE(FitWindowGeometry(stored.left(), stored.top(), stored.width(), stored.height(),
                                   screens),
                 window);
        // Values no rectangle can hold still land on a screen.
        const QRect extreme = FitWindowGeometry(INT_MAX, INT_MIN, INT_MAX, INT_MAX, screens);
        QVERIFY(screens.first().contains(extreme) || screens.last().contains(extreme));
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
