// The manager's preview slots over the real registry and engine. There is no
// sound card here: the engine falls back to its silent output, which still
// plays in real time, so positions advance and files end as they would.
#include "KrokManager.h"
#include "LoudnessMatch.h"
#include "LumoManager.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

constexpr int kRate = 48000;

qint64 Samples(double ms)
{
    return static_cast<qint64>(ms * kRate / 1000.0);
}

} // namespace

class TestPlaybackSlots : public QObject
{
    Q_OBJECT

    fixtures::TestSettings settings;
    QTemporaryDir data;
    TeskManager* manager = nullptr;
    KrokManager* registry = nullptr;
    QString longA, medium, shortOne; // 3.0, 1.5 and 0.25 s

    // The position once the file plays at `ms` or later, or -1 after five seconds.
    qint64 positionAt(double ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 5000) {
            const qint64 p = registry->GetPlaybackPosition();
            if (registry->IsPlaying() && p >= Samples(ms))
                return p;
            QTest::qWait(1);
        }
        return -1;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(settings.isValid());
        QVERIFY(data.isValid());
        const std::pair<QString*, double> files[] = {
            {&longA, 3.0}, {&medium, 1.5}, {&shortOne, 0.25}};
        int n = 0;
        for (const auto& [path, seconds] : files) {
            *path = data.filePath(QStringLiteral("%1.wav").arg(n++));
            QVERIFY(fixtures::writeSineWav(*path, kRate, 1, int(std::lround(seconds * kRate)), 0.06,
                                           440.0));
        }
        manager = new TeskManager;
        registry = manager->GetKrokManager();
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeRootPathCalled(data.path());
        QVERIFY(end.wait(30000));
    }

    void cleanupTestCase() { delete manager; }

    void init()
    {
        manager->SlotStopPlaybackCalled();
        QTRY_VERIFY(!registry->IsPlaying() && !registry->IsPreparing());
        manager->SlotChangeAutoPlaybackFlagCalled(true);
        manager->SlotChangePlaylistFlagCalled(false);
        manager->SetSeekTimeMs(1000);
        QTRY_VERIFY(manager->GetLastPlayingPath().isEmpty());
    }

    // The table's position bar is cleared at the end of a file, and the
    // reports stop.
    void positionReportClearsAtTheEnd()
    {
        QSignalSpy set(manager, &TeskManager::SigSetPlaybackPosition);
        QSignalSpy reset(manager, &TeskManager::SigResetPlaybackPosition);
        manager->SlotStartPlaybackCalled(shortOne);
        QTRY_COMPARE_WITH_TIMEOUT(fixtures::SpiedTexts(reset), QStringList{shortOne}, 3000);
        QVERIFY(!set.isEmpty());
        const int sets = set.count();
        QTest::qWait(200);
        QCOMPARE(set.count(), sets);
    }

    // Nothing playing, nothing to do; forward past the end is dropped and
    // leaves the playlist timer running; backward near the start restarts.
    void seekAtTheEdges()
    {
        manager->SeekPlayback(true);
        QVERIFY(registry->GetPlayingPath().isEmpty());
        manager->SlotChangePlaylistFlagCalled(true);
        manager->SlotStartPlaybackCalled(medium);
        const qint64 before = positionAt(800);
        QVERIFY(before > 0);
        manager->SeekPlayback(false);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        const qint64 after = positionAt(0);
        QVERIFY(after >= before && after < before + Samples(300));
        manager->SlotStartPlaybackCalled(medium);
        QVERIFY(positionAt(400) > 0);
        manager->SeekPlayback(true);
        QCOMPARE(registry->GetPlayingPath(), medium);
        QVERIFY(positionAt(0) < Samples(300));
    }

    // A chosen device that does not open is remembered, the default plays
    // instead and the status line says so; back on the default, all is quiet.
    void unknownOutputDeviceFallsBackToTheDefault()
    {
        QSignalSpy status(manager, &TeskManager::SigSetStatusMessage);
        const QString name = QStringLiteral("No such device 7");
        manager->SetOutputDevice(name);
        QCOMPARE(manager->GetOutputDevice(), name);
        QTRY_COMPARE(status.count(), 1);
        QVERIFY(manager->GetPreviewPlayer()->OutputDevice().isEmpty());
        QVERIFY(status.first().at(0).toString().contains(name));
        manager->SetOutputDevice(QString());
        QTRY_VERIFY(!AudioEngine::IsOutputChanging());
        QTest::qWait(120); // two status ticks
        QCOMPARE(status.count(), 1);
    }

    // "Match loudness" measures the files and gives each start the gain that
    // brings it to the target; turned off, every file plays at unity again.
    void matchLoudnessGainFollowsEachStart()
    {
        QSignalSpy gain(manager, &TeskManager::SigPreviewGainChanged);
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeMatchLoudnessCalled(true);
        QVERIFY(manager->IsLoudnessEnabled()); // matching needs the loudness
        QVERIFY(end.wait(30000));
        // A 0.06 sine: -24.4 dBFS peak, about -28 LUFS, -25 LUFS on two speakers.
        const AudioFileInfo info = registry->GetFileInfo(longA);
        QVERIFY(info.loudness > -30.0f && info.loudness < -26.0f);
        const auto started = [&](double target) {
            manager->SetMatchLoudnessLimits(target, 12.0);
            manager->SlotStartPlaybackCalled(longA);
            return gain.last();
        };
        const double played = info.loudness + 10.0 * std::log10(2.0);
        auto args = started(-23.0);
        QCOMPARE(args.at(1).toInt(), static_cast<int>(LoudnessMatch::Basis::Matched));
        QVERIFY(std::fabs(manager->GetPreviewPlayer()->PreviewGain() -
                          std::pow(10.0, (-23.0 - played) / 20.0)) < 1e-4);
        // 0 LUFS would need +25 dB: the boost stops at its 12 dB (the peak allows 23.4).
        args = started(0.0);
        QCOMPARE(args.at(1).toInt(), static_cast<int>(LoudnessMatch::Basis::BoostLimited));
        QVERIFY(std::fabs(args.at(0).toDouble() - 12.0) < 1e-6);
        manager->SlotChangeMatchLoudnessCalled(false);
        args = started(-23.0);
        QCOMPARE(args.at(1).toInt(), static_cast<int>(LoudnessMatch::Basis::Off));
        QCOMPARE(manager->GetPreviewPlayer()->PreviewGain(), 1.0f);
        manager->SlotChangeLoudnessCalled(false);
    }
};

QTEST_GUILESS_MAIN(TestPlaybackSlots)
#include "tst_playbackslots.moc"
