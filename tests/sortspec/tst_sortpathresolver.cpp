#include "SortPathResolver.h"
#include "TestSettings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_SortPathResolver final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString root;

    void touch(const QString& relative) { QVERIFY(fixtures::WriteBytes(dir.filePath(relative))); }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        root = QDir(dir.path()).canonicalPath();
        for (const char* name : {"a.wav", "b.wav", "sub/c.wav", "d.aif", "d.mp3", "e.aiff", "f.mp3",
                                 "g.ogg", "h.wav", "h.aif", "My Sounds/i.wav"})
            touch(QString::fromLatin1(name));
        QDir(root).mkdir(QStringLiteral("folder.wav"));
    }

    void resolves_data()
    {
        QTest::addColumn<QString>("csvText");
        QTest::addColumn<QString>("expected"); // "@/" stands for the root folder

        QTest::newRow("relative existing") << "a.wav"
                                           << "@/a.wav";
        QTest::newRow("no suffix tries .wav") << "b"
                                              << "@/b.wav";
        QTest::newRow("quoted sub folder") << "\"sub/c.wav\""
                                           << "@/sub/c.wav";
        QTest::newRow("quoted without suffix") << "\"sub/c\""
                                               << "@/sub/c.wav";
        QTest::newRow(".aif before .mp3") << "d"
                                          << "@/d.aif";
        QTest::newRow(".aiff") << "e"
                               << "@/e.aiff";
        QTest::newRow(".mp3") << "f"
                              << "@/f.mp3";
        QTest::newRow(".wav before .aif") << "h"
                                          << "@/h.wav";
        QTest::newRow("dot segments cleaned") << "sub/../a.wav"
                                              << "@/a.wav";
        QTest::newRow("space in folder") << "My Sounds/i"
                                         << "@/My Sounds/i.wav";
        QTest::newRow("absolute existing") << "@/sub/c.wav"
                                           << "@/sub/c.wav";
        // Not found: the unquoted text comes back as written, not made absolute.
        QTest::newRow("ogg is not tried") << "g"
                                          << "g";
        QTest::newRow("missing with suffix") << "zz.wav"
                                             << "zz.wav";
        QTest::newRow("wrong suffix is not replaced") << "a.aif"
                                                      << "a.aif";
        QTest::newRow("missing quoted") << "\"zz\""
                                        << "zz";
        QTest::newRow("only one pair stripped") << "\"\"a.wav\"\""
                                                << "\"a.wav\"";
        QTest::newRow("lone quote kept") << "\""
                                         << "\"";
        QTest::newRow("opening quote only") << "\"a.wav"
                                            << "\"a.wav";
        QTest::newRow("two quotes give empty") << "\"\""
                                               << "";
        QTest::newRow("a folder is not a file") << "folder.wav"
                                                << "folder.wav";
        QTest::newRow("empty") << ""
                               << "";
    }

    void resolves()
    {
        QFETCH(QString, csvText);
        QFETCH(QString, expected);
        csvText.replace(QStringLiteral("@/"), root + QLatin1Char('/'));
        expected.replace(QStringLiteral("@/"), root + QLatin1Char('/'));
        QCOMPARE(ResolveSortPath(csvText, root), expected);
    }

    void rootWithTrailingSlash()
    {
        QCOMPARE(ResolveSortPath(QStringLiteral("b"), root + QLatin1Char('/')),
                 root + QStringLiteral("/b.wav"));
    }
};

QTEST_GUILESS_MAIN(tst_SortPathResolver)
#include "tst_sortpathresolver.moc"
