#include "AudioSuffix.h"

#include <QtTest>

class TestAudioSuffix : public QObject
{
    Q_OBJECT
private slots:
    void suffixes_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("supported");
        QTest::newRow("wav") << QStringLiteral("a.wav") << true;
        QTest::newRow("upper WAV") << QStringLiteral("/x/a.WAV") << true;
        QTest::newRow("aif") << QStringLiteral("b.aif") << true;
        QTest::newRow("AiFf") << QStringLiteral("b.AiFf") << true;
        QTest::newRow("mp3") << QStringLiteral("c.mp3") << true;
        QTest::newRow("ogg") << QStringLiteral("d.Ogg") << true;
        QTest::newRow("flac") << QStringLiteral("e.FLAC") << true;
        QTest::newRow("fla is not flac") << QStringLiteral("e.fla") << false;
        QTest::newRow("no suffix") << QStringLiteral("wav") << false;
        QTest::newRow("last dot counts") << QStringLiteral("f.wav.txt") << false;
        QTest::newRow("caf is read but not listed") << QStringLiteral("g.caf") << false;
    }
    void suffixes()
    {
        QFETCH(QString, path);
        QFETCH(bool, supported);
        QCOMPARE(IsSupportedAudioFile(path), supported);
    }
};

QTEST_GUILESS_MAIN(TestAudioSuffix)
#include "tst_audiosuffix.moc"
