// The gain "Match loudness" gives a file, against figures worked out by hand.

#include "AudioFileInfo.h"
#include "LoudnessMatch.h"

#include <QtTest>

class TestLoudnessMatch : public QObject
{
    Q_OBJECT
private slots:
    void gainMeetsTheTargetWithinItsLimits_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("analysed");
        QTest::addColumn<float>("loudness");
        QTest::addColumn<int>("channels");
        QTest::addColumn<float>("peak");
        QTest::addColumn<double>("target");
        QTest::addColumn<double>("boost");
        QTest::addColumn<double>("gainDb");
        QTest::addColumn<int>("basis");
        using B = LoudnessMatch::Basis;
        const auto b = [](B x) { return static_cast<int>(x); };
        QTest::newRow("off") << false << true << -30.0f << 2 << 0.1f << -23.0 << 12.0 << 0.0
                             << b(B::Off);
        QTest::newRow("loudness not measured")
            << true << true << -96.0f << 2 << 0.1f << -23.0 << 12.0 << 0.0 << b(B::Unknown);
        QTest::newRow("header not read")
            << true << false << -30.0f << 2 << 0.1f << -23.0 << 12.0 << 0.0 << b(B::Unknown);
        QTest::newRow("quiet stereo raised")
            << true << true << -30.0f << 2 << 0.1f << -23.0 << 12.0 << 7.0 << b(B::Matched);
        QTest::newRow("loud stereo lowered, even at full scale")
            << true << true << -14.0f << 2 << 1.0f << -23.0 << 12.0 << -9.0 << b(B::Matched);
        QTest::newRow("boost stops at its limit")
            << true << true << -40.0f << 2 << 0.01f << -23.0 << 12.0 << 12.0 << b(B::BoostLimited);
        // Peak 0.5 is -6.0206 dBFS: at most +5.0206 dB before -1 dBFS.
        QTest::newRow("boost stops below -1 dBFS")
            << true << true << -30.0f << 2 << 0.5f << -23.0 << 12.0 << 5.0206 << b(B::PeakLimited);
        QTest::newRow("peak already above -1 dBFS: no boost")
            << true << true << -30.0f << 2 << 0.95f << -23.0 << 12.0 << 0.0 << b(B::PeakLimited);
        QTest::newRow("peak unknown: no boost")
            << true << true << -30.0f << 2 << -1.0f << -23.0 << 12.0 << 0.0 << b(B::PeakUnknown);
        QTest::newRow("peak unknown, lowering is fine")
            << true << true << -20.0f << 2 << -1.0f << -23.0 << 12.0 << -3.0 << b(B::Matched);
        // Mono plays on both speakers: -26 LUFS sounds at -22.9897.
        QTest::newRow("mono counts twice")
            << true << true << -26.0f << 1 << 0.1f << -23.0 << 12.0 << -0.0103 << b(B::Matched);
        // 5.1 folds at 1 / (1 + 2 x 0.7071) = -7.6555 dB: -30 plays at -37.6555.
        QTest::newRow("5.1 allows for the fold")
            << true << true << -30.0f << 6 << 0.05f << -23.0 << 20.0 << 14.6555 << b(B::Matched);
        QTest::newRow("another target")
            << true << true << -20.0f << 2 << 0.1f << -16.0 << 12.0 << 4.0 << b(B::Matched);
    }

    void gainMeetsTheTargetWithinItsLimits()
    {
        QFETCH(bool, enabled);
        QFETCH(bool, analysed);
        QFETCH(float, loudness);
        QFETCH(int, channels);
        QFETCH(float, peak);
        QFETCH(double, target);
        QFETCH(double, boost);
        QFETCH(double, gainDb);
        QFETCH(int, basis);
        AudioFileInfo info;
        info.isHeaderRead = analysed ? 1 : 0;
        info.loudness = loudness;
        info.channels = channels;
        info.samplePeak = peak;
        const LoudnessMatch m = ComputeLoudnessMatch(info, {enabled, target, boost});
        QVERIFY2(std::fabs(m.gainDb - gainDb) < 1e-3,
                 qPrintable(QString::number(m.gainDb, 'f', 5)));
        QCOMPARE(static_cast<int>(m.basis), basis);
        // Whatever the rule, the loudest sample stays at or under -1 dBFS once raised.
        if (m.gainDb > 0.0 && peak > 0.0f)
            QVERIFY(peak * DecibelsToGain(m.gainDb) <= DecibelsToGain(-1.0) + 1e-9);
    }
};

QTEST_GUILESS_MAIN(TestLoudnessMatch)
#include "tst_loudnessmatch.moc"
