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
    QString longA, longB, medium, shortOne; // 3.0, 3.0, 1.5 and 0.25 s

    // The position once the file plays at `ms` or later (any position with
    // ms < 0), or -1 after five seconds.
    qint64 positionAt(double ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 5000) {
            const qint64 p = registry->GetPlaybackPosition();
            if (registry->IsPlaying() && p >= Samples(qMax(ms, 0.0)))
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
            {&longA, 3.0}, {&longB, 3.0}, {&medium, 1.5}, {&shortOne, 0.25}};
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

    void positionReportFollowsThePlayingFile()
    {
        QSignalSpy set(manager, &TeskManager::SigSetPlaybackPosition);
        QSignalSpy reset(manager, &TeskManager::SigResetPlaybackPosition);
        manager->SlotStartPlaybackCalled(longA);
        QTRY_VERIFY_WITH_TIMEOUT(set.count() >= 5, 3000);
        double previous = 0.0;
        for (const QList<QVariant>& args : set) {
            QCOMPARE(args.at(0).toString(), longA);
            QVERIFY(args.at(1).toDouble() >= previous && args.at(1).toDouble() < 1.0);
            previous = args.at(1).toDouble();
        }
        QVERIFY(previous > set.first().at(1).toDouble());
        QCOMPARE(reset.count(), 0);
        // Another file: the first one's position is cleared.
        manager->SlotStartPlaybackCalled(shortOne);
        QTRY_COMPARE(reset.count(), 1);
        QCOMPARE(reset.first().at(0).toString(), longA);
        QTRY_COMPARE(set.last().at(0).toString(), shortOne);
        // The end of the file clears it too, and the reports stop.
        QTRY_COMPARE_WITH_TIMEOUT(reset.count(), 2, 3000);
        QCOMPARE(reset.last().at(0).toString(), shortOne);
        const int sets = set.count();
        QTest::qWait(200);
        QCOMPARE(set.count(), sets);
    }

    // Seeking from a position by the step: near the start backward restarts
    // from 0; forward past the end is dropped; nothing playing, nothing to do.
    void seek_data()
    {
        QTest::addColumn<int>("file");
        QTest::addColumn<bool>("backward");
        QTest::addColumn<double>("fromMs");
        QTest::addColumn<double>("toMs");
        QTest::newRow("backward") << 0 << true << 1400.0 << -1000.0;
        QTest::newRow("forward") << 0 << false << 200.0 << 1000.0;
        QTest::newRow("backward near the start") << 2 << true << 400.0 << -1e5;
        QTest::newRow("forward past the end") << 2 << false << 800.0 << 0.0;
        QTest::newRow("nothing playing") << -1 << true << 0.0 << 0.0;
    }
    void seek()
    {
        QFETCH(int, file);
        QFETCH(bool, backward);
        QFETCH(double, fromMs);
        QFETCH(double, toMs);
        if (file < 0) {
            manager->SeekPlayback(backward);
            QVERIFY(!registry->IsPlaying());
            QVERIFY(registry->GetPlayingPath().isEmpty());
            return;
        }
        const QString path = file == 0 ? longA : medium;
        // A dropped seek leaves the running playlist timer alone.
        manager->SlotChangePlaylistFlagCalled(true);
        manager->SlotStartPlaybackCalled(path);
        const qint64 before = positionAt(fromMs);
        QVERIFY(before > 0);
        manager->SeekPlayback(backward);
        QCOMPARE(registry->GetPlayingPath(), path);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        const qint64 after = positionAt(-1);
        const qint64 target = before + Samples(toMs);
        QVERIFY2(after >= qMax<qint64>(target, 0) && after < qMax<qint64>(target, 0) + Samples(300),
                 qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
    }

    void playlistSelectsTheNextItemAtTheEnd()
    {
        QSignalSpy next(manager, &TeskManager::SigSelectNextItem);
        // Off, the end of a file selects nothing; turned on while it plays,
        // it waits for the next start.
        manager->SlotStartPlaybackCalled(shortOne);
        manager->SlotChangePlaylistFlagCalled(true);
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QTRY_VERIFY(!registry->IsPlaying());
        QTest::qWait(300);
        QCOMPARE(next.count(), 0);

        manager->SlotStartPlaybackCalled(shortOne);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(next.count(), 1, 3000);
        // Nobody answered with a new file: the timer stays stopped.
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QTest::qWait(300);
        QCOMPARE(next.count(), 1);

        // An empty path or Stop ends the playlist; the file plays on after the first.
        manager->SlotStartPlaybackCalled(longA);
        manager->SlotStartPlaybackCalled(QString());
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QCOMPARE(registry->GetPlayingPath(), longA);
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
        manager->SlotStartPlaybackCalled(longA);
        QVERIFY(positionAt(100) > 0);
        manager->SlotStopPlaybackCalled();
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
        QVERIFY(std::fabs(args.at(0).toDouble() - (-23.0 - played)) < 1e-3);
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
