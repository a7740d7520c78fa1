// The gain "Match loudness" gives a file, against figures worked out by hand.

#include "AudioFileInfo.h"
#include "LoudnessMatch.h"

#include <QtTest>

namespace {

using B = LoudnessMatch::Basis;

struct Case
{
    const char* name;
    bool enabled, analysed;
    float loudness;
    int channels;
    float peak; // -1: unknown
    double target, boost, gainDb;
    B basis;
};

const Case kCases[] = {
    {"off", false, true, -30, 2, 0.1f, -23, 12, 0, B::Off},
    {"loudness not measured", true, true, -96, 2, 0.1f, -23, 12, 0, B::Unknown},
    {"header not read", true, false, -30, 2, 0.1f, -23, 12, 0, B::Unknown},
    {"quiet stereo raised", true, true, -30, 2, 0.1f, -23, 12, 7, B::Matched},
    {"loud stereo lowered, even at full scale", true, true, -14, 2, 1.0f, -23, 12, -9, B::Matched},
    {"boost stops at its limit", true, true, -40, 2, 0.01f, -23, 12, 12, B::BoostLimited},
    // Peak 0.5 is -6.0206 dBFS: at most +5.0206 dB before -1 dBFS.
    {"boost stops below -1 dBFS", true, true, -30, 2, 0.5f, -23, 12, 5.0206, B::PeakLimited},
    {"peak already above -1 dBFS: no boost", true, true, -30, 2, 0.95f, -23, 12, 0, B::PeakLimited},
    {"peak unknown: no boost", true, true, -30, 2, -1.0f, -23, 12, 0, B::PeakUnknown},
    {"peak unknown, lowering is fine", true, true, -20, 2, -1.0f, -23, 12, -3, B::Matched},
    // Mono plays on both speakers: the mono correction adds 3.0103 dB, so
    // -26 LUFS sounds at -22.9897.
    {"mono counts twice", true, true, -26, 1, 0.1f, -23, 12, -0.0103, B::Matched},
    // 5.1 folds at 1 / (1 + 2 x 0.7071) = -7.6555 dB: -30 plays at -37.6555.
    {"5.1 allows for the fold", true, true, -30, 6, 0.05f, -23, 20, 14.6555, B::Matched},
    {"another target", true, true, -20, 2, 0.1f, -16, 12, 4, B::Matched},
};

} // namespace

class TestLoudnessMatch : public QObject
{
    Q_OBJECT
private slots:
    void gainMeetsTheTargetWithinItsLimits_data()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < std::size(kCases); ++i)
            QTest::newRow(kCases[i].name) << int(i);
    }
    void gainMeetsTheTargetWithinItsLimits()
    {
        QFETCH(int, index);
        const Case& c = kCases[index];
        AudioFileInfo info;
        info.isHeaderRead = c.analysed ? 1 : 0;
        info.loudness = c.loudness;
        info.channels = c.channels;
        info.samplePeak = c.peak;
        const LoudnessMatch m = ComputeLoudnessMatch(info, {c.enabled, c.target, c.boost});
        QVERIFY2(std::fabs(m.gainDb - c.gainDb) < 1e-3,
                 qPrintable(QString::number(m.gainDb, 'f', 5)));
        QCOMPARE(m.basis, c.basis);
        // Whatever the rule, the loudest sample stays at or under -1 dBFS once raised.
        if (m.gainDb > 0.0 && c.peak > 0.0f)
            QVERIFY(c.peak * DecibelsToGain(m.gainDb) <= DecibelsToGain(-1.0) + 1e-9);
    }
};

QTEST_GUILESS_MAIN(TestLoudnessMatch)
#include "tst_loudnessmatch.moc"
