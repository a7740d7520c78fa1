#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"
#include "FitWindowGeometry.h"
#include "RootPathInput.h"

#include "TestSettings.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

class TestStartupRules : public QObject
{
    Q_OBJECT

private slots:
    void defaultGeometry_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<int>("wanted");
        QTest::addColumn<QRect>("window");
        // (1366 - 1350) / 2 = 8, (768 - 600) / 2 = 84
        QTest::newRow("1366x768") << QRect(0, 0, 1366, 768) << 0 << QRect(8, 84, 1350, 600);
        // narrower than 1351: full width; (1024 - 600) / 2 = 212
        QTest::newRow("1280x1024") << QRect(0, 0, 1280, 1024) << 0 << QRect(0, 212, 1280, 600);
        QTest::newRow("1350x600 fills") << QRect(0, 0, 1350, 600) << 0 << QRect(0, 0, 1350, 600);
        // Wider where the table's columns want it and the screen has room.
        QTest::newRow("wanted 1600 on 1920")
            << QRect(0, 0, 1920, 1080) << 1600 << QRect(160, 240, 1600, 600);
        QTest::newRow("wanted more than the screen")
            << QRect(0, 0, 1366, 768) << 1600 << QRect(0, 84, 1366, 600);
        QTest::newRow("wanted less keeps 1350")
            << QRect(0, 0, 1920, 1080) << 900 << QRect(285, 240, 1350, 600);
        QTest::newRow("second screen")
            << QRect(1920, 0, 1920, 1080) << 1600 << QRect(2080, 240, 1600, 600);
    }
    void defaultGeometry()
    {
        QFETCH(QRect, screen);
        QFETCH(int, wanted);
        QFETCH(QRect, window);
        QCOMPARE(DefaultWindowGeometry(screen, wanted), window);
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
        QVERIFY(fixtures::WriteBytes(folder + "/a.WAV"));
        QVERIFY(fixtures::WriteBytes(folder + "/notes.txt"));
        const QString program = QStringLiteral("tesk");
        // The suffix test ignores case; the file is handed on, to be selected in its folder.
        const std::pair<QString, QString> cases[] = {{folder, folder},
                                                     {folder + "/a.WAV", folder + "/a.WAV"},
                                                     {folder + "/notes.txt", ""},
                                                     {folder + "/missing.wav", ""},
                                                     {"--junk=1", ""}};
        for (const auto& [argument, root] : cases)
            QCOMPARE(CommandLineRoot({program, argument}), root);
        QCOMPARE(CommandLineRoot({program}), QString());

        // A relative folder becomes absolute.
        const QString previous = QDir::currentPath();
        QDir::setCurrent(dir.path());
        const QString relative = CommandLineRoot({program, QStringLiteral("x")});
        QDir::setCurrent(previous);
        QCOMPARE(relative, QDir(folder).absolutePath());
    }

    void rootInput_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("refusal");
        // Relative to the sandbox, which is the working folder and the home
        // folder; "-" is no folder at all.
        const int ok = RootRequest::Accepted, missing = RootRequest::Missing;
        const struct
        {
            const char *typed, *folder, *file;
            int refusal;
        } cases[] = {
            {".", "", "", ok},
            {"lib/", "lib", "", ok},
            {"./lib//sub/..///", "lib", "", ok},
            {"  lib  ", "lib", "", ok},
            {"~", "", "", ok},
            {"~/lib/sub/", "lib/sub", "", ok},
            {"lib/sub/Take 2.WAV", "lib/sub", "lib/sub/Take 2.WAV", ok},
            {"lib/notes.txt", "", "", RootRequest::NotAudio},
            {"lib/gone/", "lib/gone", "", missing},
            {"lib/gone.wav", "lib/gone.wav", "", missing},
            {"", "-", "", RootRequest::Empty},
            {"   ", "-", "", RootRequest::Empty},
            // The home of another user is a name like any other.
            {"~nobody", "~nobody", "", missing},
        };
        for (const auto& c : cases)
            QTest::addRow("'%s'", c.typed) << c.typed << c.folder << c.file << c.refusal;
    }
    void rootInput()
    {
        QFETCH(QString, typed);
        QFETCH(QString, folder);
        QFETCH(QString, file);
        QFETCH(int, refusal);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString base = QDir(dir.path()).canonicalPath();
        QVERIFY(QDir().mkpath(base + QStringLiteral("/lib/sub")));
        QVERIFY(fixtures::WriteBytes(base + QStringLiteral("/lib/sub/Take 2.WAV")));
        QVERIFY(fixtures::WriteBytes(base + QStringLiteral("/lib/notes.txt")));
        const QByteArray home = qgetenv("HOME");
        const QString previous = QDir::currentPath();
        qputenv("HOME", QFile::encodeName(base));
        QDir::setCurrent(base);
        const RootRequest request = ResolveTypedRoot(typed);
        QDir::setCurrent(previous);
        qputenv("HOME", home);

        const auto under = [&](const QString& relative) {
            if (relative == QLatin1String("-"))
                return QString();
            return relative.isEmpty() ? base : base + QLatin1Char('/') + relative;
        };
        QCOMPARE(int(request.refusal), refusal);
        if (refusal != RootRequest::NotAudio)
            QCOMPARE(request.folder, under(folder));
        QCOMPARE(request.file, file.isEmpty() ? QString() : under(file));
    }

    void rootOfTheFileSystemKeepsItsSlash()
    {
        QCOMPARE(NormalizedRootPath(QStringLiteral("/")), QStringLiteral("/"));
        QCOMPARE(NormalizedRootPath(QStringLiteral("//usr//")), QStringLiteral("/usr"));
        QCOMPARE(NormalizedRootPath(QString()), QString());
    }
};

QTEST_GUILESS_MAIN(TestStartupRules)
#include "tst_startuprules.moc"
