#include "AudioFileLister.h"
#include "TestSettings.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class TestAudioFileLister final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;

    QStringList list(bool recursive, bool hidden)
    {
        bool cancelled = true;
        QStringList out;
        for (const QString& f : ListAudioFiles(dir.path(), recursive, hidden, {}, &cancelled))
            out << QDir(dir.path()).relativeFilePath(f);
        out.sort();
        return cancelled ? QStringList{"cancelled"} : out;
    }

private slots:
    void initTestCase()
    {
        // The suffix decides, in any case; "fla" is not "flac"; caf is read but not listed.
        for (const char* name :
             {"a.wav", "B.WAV", "c.Aiff", "d.aif", "e.mp3", "f.OGG", "g.FLAC", "notes.txt",
              "take.mp3.bak", "noext", "wav", "x.fla", "y.caf", "z.wav.txt", ".hidden.wav",
              "sub/g.ogg", "sub/deeper/h.wav", "sub/.i.mp3", "sub/readme.md"})
            QVERIFY(fixtures::WriteBytes(dir.filePath(QLatin1String(name))));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("folder.wav"))); // a folder is not a file
    }

    void rules_data()
    {
        QTest::addColumn<bool>("recursive");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QStringList>("expected");
        const QStringList top{"B.WAV", "a.wav", "c.Aiff", "d.aif", "e.mp3", "f.OGG", "g.FLAC"};
        const QStringList sub{"sub/deeper/h.wav", "sub/g.ogg"};
        QTest::newRow("top folder") << false << false << top;
        QTest::newRow("with hidden") << false << true << top + QStringList{".hidden.wav"};
        QTest::newRow("recursive") << true << false << top + sub;
        QTest::newRow("recursive with hidden")
            << true << true << top + sub + QStringList{".hidden.wav", "sub/.i.mp3"};
    }
    void rules()
    {
        QFETCH(bool, recursive);
        QFETCH(bool, hidden);
        QFETCH(QStringList, expected);
        expected.sort();
        QCOMPARE(list(recursive, hidden), expected);
        bool cancelled = true;
        QVERIFY(ListAudioFiles(dir.filePath(QStringLiteral("nope")), true, false, {}, &cancelled)
                    .isEmpty());
        QVERIFY(!cancelled);
    }
};

QTEST_GUILESS_MAIN(TestAudioFileLister)
#include "tst_audiofilelister.moc"
