#include "AudioFileLister.h"
#include "TestSettings.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

QStringList Relative(const QString& root, QList<QString> files)
{
    QStringList out;
    for (const QString& f : files)
        out << (QFileInfo(f).isAbsolute() ? QDir(root).relativeFilePath(f)
                                          : QStringLiteral("relative: ") + f);
    out.sort();
    return out;
}

} // namespace

class TestAudioFileLister final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        for (const char* name : {"a.wav", "B.WAV", "c.Aiff", "d.aif", "e.mp3", "f.OGG", "notes.txt",
                                 "take.mp3.bak", "noext", ".hidden.wav", "sub/g.ogg",
                                 "sub/deeper/h.wav", "sub/.i.mp3", "sub/readme.md"})
            QVERIFY(fixtures::WriteBytes(dir.filePath(QLatin1String(name))));
        // A folder with an audio suffix is not a file.
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("folder.wav")));
    }

    void rules_data()
    {
        QTest::addColumn<bool>("recursive");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QStringList>("expected");
        const QStringList top{"B.WAV", "a.wav", "c.Aiff", "d.aif", "e.mp3", "f.OGG"};
        QTest::newRow("top folder") << false << false << top;
        QTest::newRow("with hidden") << false << true << (QStringList(top) << ".hidden.wav");
        QTest::newRow("recursive") << true << false
                                   << (QStringList(top) << "sub/deeper/h.wav"
                                                        << "sub/g.ogg");
        QTest::newRow("recursive with hidden") << true << true
                                               << (QStringList(top) << ".hidden.wav"
                                                                    << "sub/.i.mp3"
                                                                    << "sub/deeper/h.wav"
                                                                    << "sub/g.ogg");
    }

    void rules()
    {
        QFETCH(bool, recursive);
        QFETCH(bool, hidden);
        QFETCH(QStringList, expected);
        expected.sort();
        bool cancelled = true;
        const QList<QString> files = ListAudioFiles(dir.path(), recursive, hidden, {}, &cancelled);
        QVERIFY(!cancelled);
        QCOMPARE(Relative(dir.path(), files), expected);
    }

    void cancelStopsTheWalk()
    {
        bool cancelled = false;
        QVERIFY(ListAudioFiles(
                    dir.path(), true, true, [] { return true; }, &cancelled)
                    .isEmpty());
        QVERIFY(cancelled);

        // Cancelled after three steps: the walk stops there.
        int asked = 0;
        const QList<QString> part = ListAudioFiles(
            dir.path(), true, true, [&asked] { return ++asked > 3; }, &cancelled);
        QVERIFY(cancelled);
        QCOMPARE(asked, 4);
        QVERIFY(part.size() <= 3);
    }

    void missingRoot()
    {
        bool cancelled = true;
        QVERIFY(ListAudioFiles(dir.filePath(QStringLiteral("nope")), true, false, {}, &cancelled)
                    .isEmpty());
        QVERIFY(!cancelled);
    }

private:
    QTemporaryDir dir;
};

QTEST_GUILESS_MAIN(TestAudioFileLister)
#include "tst_audiofilelister.moc"
