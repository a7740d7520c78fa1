// The manager's preview slots over the real registry and engine. There is no
// sound card here: the engine falls back to its silent output, which still
// plays in real time, so positions advance and files end as they would.
#include "KrokManager.h"
#include "LoudnessMatch.h"
#include "LumoManager.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

constexpr int kRate = 48000;

// A 16-bit mono PCM WAV of a quiet 440 Hz sine.
bool WriteWav(const QString& path, double seconds)
{
    return fixtures::writeSineWav(path, kRate, 1, int(std::lround(seconds * kRate)), 0.06, 440.0);
}

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
    QString longA;    // 3.0 s
    QString longB;    // 3.0 s
    QString medium;   // 1.5 s
    QString shortOne; // 0.25 s

    // Waits until the file plays at `ms` or later and returns the position then.
    qint64 waitForPosition(double ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 5000) {
            const qint64 p = registry->GetPlaybackPosition();
            if (registry->IsPlaying() && p >= Samples(ms))
                return p;
            QTest::qWait(5);
        }
        return -1;
    }

    // The first position read once the restarted file reports playing.
    qint64 firstPlayingPosition()
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 5000) {
            if (registry->IsPlaying())
                return registry->GetPlaybackPosition();
            QTest::qWait(1);
        }
        return -1;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(settings.isValid());
        QVERIFY(data.isValid());
        longA = data.filePath(QStringLiteral("a_long.wav"));
        longB = data.filePath(QStringLiteral("b_long.wav"));
        medium = data.filePath(QStringLiteral("c_medium.wav"));
        shortOne = data.filePath(QStringLiteral("d_short.wav"));
        QVERIFY(WriteWav(longA, 3.0));
        QVERIFY(WriteWav(longB, 3.0));
        QVERIFY(WriteWav(medium, 1.5));
        QVERIFY(WriteWav(shortOne, 0.25));

        manager = new TeskManager;
        registry = manager->GetKrokManager();
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeRootPathCalled(data.path());
        QVERIFY(end.wait(30000));
        QCOMPARE(qint64(registry->GetFileInfo(medium).samples), Samples(1500));
    }

    void cleanupTestCase() { delete manager; }

    void init()
    {
        manager->SlotStopPlaybackCalled();
        QTRY_VERIFY(!registry->IsPlaying() && !registry->IsPreparing());
        manager->SlotChangeAutoPlaybackFlagCalled(true);
        manager->SlotChangePlaylistFlagCalled(false);
        manager->SetSeekTimeMs(1000);
        // Let the position report notice the stop.
        QTRY_VERIFY(manager->GetLastPlayingPath().isEmpty());
    }

    void positionReportAdvancesAndClearsOnStop()
    {
        QSignalSpy set(manager, &TeskManager::SigSetPlaybackPosition);
        QSignalSpy reset(manager, &TeskManager::SigResetPlaybackPosition);
        manager->SlotStartPlaybackCalled(longA);
        QTRY_VERIFY_WITH_TIMEOUT(set.count() >= 5, 3000);
        double previous = 0.0;
        for (const QList<QVariant>& args : set) {
            QCOMPARE(args.at(0).toString(), longA);
            const double ratio = args.at(1).toDouble();
            QVERIFY(ratio >= previous);
            QVERIFY(ratio < 1.0);
            previous = ratio;
        }
        QVERIFY(previous > set.first().at(1).toDouble());
        QCOMPARE(reset.count(), 0);

        manager->SlotStopPlaybackCalled();
        QTRY_COMPARE(reset.count(), 1);
        QCOMPARE(reset.first().at(0).toString(), longA);
        const int sets = set.count();
        QTest::qWait(200);
        QCOMPARE(set.count(), sets);
        QCOMPARE(reset.count(), 1);
    }

    void positionReportMovesToTheNextFile()
    {
        QSignalSpy set(manager, &TeskManager::SigSetPlaybackPosition);
        QSignalSpy reset(manager, &TeskManager::SigResetPlaybackPosition);
        manager->SlotStartPlaybackCalled(longA);
        QTRY_VERIFY(set.count() >= 1);
        manager->SlotStartPlaybackCalled(longB);
        QTRY_COMPARE(reset.count(), 1);
        QCOMPARE(reset.first().at(0).toString(), longA);
        QTRY_COMPARE(set.last().at(0).toString(), longB);
    }

    void positionReportClearsAtTheEndOfAFile()
    {
        QSignalSpy reset(manager, &TeskManager::SigResetPlaybackPosition);
        manager->SlotStartPlaybackCalled(shortOne);
        QTRY_COMPARE(manager->GetLastPlayingPath(), shortOne);
        QTRY_COMPARE_WITH_TIMEOUT(reset.count(), 1, 3000);
        QCOMPARE(reset.first().at(0).toString(), shortOne);
    }

    void seekBackwardNearTheStartRestarts()
    {
        manager->SlotStartPlaybackCalled(medium);
        const qint64 before = waitForPosition(400);
        QVERIFY(before > 0);
        manager->SeekPlayback(true);
        QCOMPARE(registry->GetPlayingPath(), medium);
        const qint64 after = firstPlayingPosition();
        QVERIFY(after >= 0);
        // Restarted from 0: well under where it was, not merely paused.
        QVERIFY2(after < Samples(300), qPrintable(QString::number(after)));
    }

    void seekByTheStep_data()
    {
        QTest::addColumn<bool>("backward");
        QTest::addColumn<double>("fromMs");
        QTest::newRow("backward") << true << 1400.0;
        QTest::newRow("forward") << false << 200.0;
    }
    void seekByTheStep()
    {
        QFETCH(bool, backward);
        QFETCH(double, fromMs);
        manager->SlotStartPlaybackCalled(longA);
        const qint64 before = waitForPosition(fromMs);
        QVERIFY(before > 0);
        manager->SeekPlayback(backward);
        const qint64 after = firstPlayingPosition();
        const qint64 target = before + (backward ? -1 : 1) * Samples(1000);
        QVERIFY2(after >= target && after < target + Samples(400),
                 qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
    }

    void seekForwardPastTheEndIsDropped()
    {
        manager->SlotChangePlaylistFlagCalled(true);
        manager->SlotStartPlaybackCalled(medium);
        const qint64 before = waitForPosition(800);
        QVERIFY(before > 0);
        QVERIFY(before < Samples(1400));
        // The running playlist timer is left alone by a dropped seek.
        QTRY_VERIFY(manager->GetPlaylistTimer()->isActive());
        manager->SeekPlayback(false);
        QVERIFY(registry->IsPlaying());
        QCOMPARE(registry->GetPlayingPath(), medium);
        const qint64 after = registry->GetPlaybackPosition();
        QVERIFY2(after >= before && after < before + Samples(300),
                 qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
    }

    void seekWithNothingPlayingDoesNothing()
    {
        manager->SeekPlayback(true);
        manager->SeekPlayback(false);
        QVERIFY(!registry->IsPlaying());
        QVERIFY(registry->GetPlayingPath().isEmpty());
    }

    void startWithSeek_data()
    {
        QTest::addColumn<bool>("autoplay");
        QTest::addColumn<bool>("playFirst");
        QTest::addColumn<bool>("requestSame");
        QTest::addColumn<bool>("expectStarted");

        QTest::newRow("autoplay off, other file: ignored") << false << true << false << false;
        QTest::newRow("autoplay off, same file: seeks") << false << true << true << true;
        QTest::newRow("autoplay off, nothing playing: ignored") << false << false << true << false;
        QTest::newRow("autoplay on, other file: starts it") << true << true << false << true;
        QTest::newRow("autoplay on, nothing playing: starts") << true << false << false << true;
    }

    void startWithSeek()
    {
        QFETCH(bool, autoplay);
        QFETCH(bool, playFirst);
        QFETCH(bool, requestSame);
        QFETCH(bool, expectStarted);

        manager->SlotChangeAutoPlaybackFlagCalled(autoplay);
        if (playFirst) {
            manager->SlotStartPlaybackCalled(longA);
            QVERIFY(firstPlayingPosition() >= 0);
        }
        const QString requested = requestSame ? longA : longB;
        manager->SlotStartPlaybackWithSeekCalled(requested, 1500);
        if (expectStarted) {
            QCOMPARE(registry->GetPlayingPath(), requested);
            QVERIFY(firstPlayingPosition() >= Samples(1500));
        } else if (playFirst) {
            QCOMPARE(registry->GetPlayingPath(), longA);
            QVERIFY(registry->GetPlaybackPosition() < Samples(1000));
        } else {
            QVERIFY(registry->GetPlayingPath().isEmpty());
            QVERIFY(!registry->IsPlaying());
        }
    }

    void playlistSelectsTheNextItemAtTheEnd()
    {
        manager->SlotChangeAutoPlaybackFlagCalled(false);
        manager->SlotChangePlaylistFlagCalled(true);
        QSignalSpy next(manager, &TeskManager::SigSelectNextItem);
        manager->SlotStartPlaybackCalled(shortOne);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(next.count(), 1, 3000);
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        // Nobody answered with a new file: the timer stays stopped.
        QTest::qWait(500);
        QCOMPARE(next.count(), 1);
    }

    void playlistKeepsWaitingWhileTheFilePlays()
    {
        manager->SlotChangePlaylistFlagCalled(true);
        QSignalSpy next(manager, &TeskManager::SigSelectNextItem);
        manager->SlotStartPlaybackCalled(longA);
        QTest::qWait(700);
        QCOMPARE(next.count(), 0);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        manager->SlotStopPlaybackCalled();
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QTest::qWait(300);
        QCOMPARE(next.count(), 0);
    }

    void playlistOffNeverSelectsNext()
    {
        QSignalSpy next(manager, &TeskManager::SigSelectNextItem);
        manager->SlotStartPlaybackCalled(shortOne);
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        // Turning the playlist on while a file plays waits for the next start.
        manager->SlotChangePlaylistFlagCalled(true);
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QTRY_VERIFY(!registry->IsPlaying());
        QTest::qWait(300);
        QCOMPARE(next.count(), 0);
        manager->SlotStartPlaybackCalled(shortOne);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
    }

    void startWithAnEmptyPathOnlyStopsThePlaylist()
    {
        manager->SlotChangePlaylistFlagCalled(true);
        manager->SlotStartPlaybackCalled(longA);
        QVERIFY(manager->GetPlaylistTimer()->isActive());
        manager->SlotStartPlaybackCalled(QString());
        QVERIFY(!manager->GetPlaylistTimer()->isActive());
        QCOMPARE(registry->GetPlayingPath(), longA);
    }

    void errorReceived_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("dialog");
        QTest::newRow("XAudio2 start failure")
            << QStringLiteral("E2009042301 : Can not initialize XAudio2.") << true;
        QTest::newRow("code inside the text") << QStringLiteral("engine: E2009042301") << true;
        QTest::newRow("lower-case code") << QStringLiteral("e2009042301 : x") << false;
        QTest::newRow("other engine error")
            << QStringLiteral("E2026112201 : Can not start the audio output.") << false;
    }

    void errorReceived()
    {
        QFETCH(QString, message);
        QFETCH(bool, dialog);
        QSignalSpy status(manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy box(manager, &TeskManager::SigShowDialog);
        manager->SlotErrorReceived(message);
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.first().at(0).toString(), message);
        QCOMPARE(box.count(), dialog ? 1 : 0);
        if (dialog) {
            QCOMPARE(box.first().at(0).toString(), QStringLiteral("Warning"));
            QCOMPARE(box.first().at(1).toString(),
                     QStringLiteral("Cannot preview because XAudio2 initialization failed. Please "
                                    "ensure that DirectX End-User Runtimes (June 2010) is "
                                    "installed."));
        }
    }

    void engineErrorsReachTheStatusLine()
    {
        // A WAVE file that is not one: the engine reports it through the registry.
        const QString broken = data.filePath(QStringLiteral("broken.wav"));
        QVERIFY(fixtures::WriteBytes(broken, "RIFF not really"));
        QSignalSpy status(manager, &TeskManager::SigSetStatusMessage);
        manager->SlotStartPlaybackCalled(broken);
        QTRY_VERIFY(!status.isEmpty());
        QVERIFY(status.first().at(0).toString().startsWith(QLatin1Char('E')));
        QVERIFY(!registry->IsPlaying());
    }

    // A chosen device that does not open is remembered, the default plays
    // instead and the status line says so; back on the default, all is quiet.
    void unknownOutputDeviceFallsBackToTheDefault()
    {
        QSignalSpy status(manager, &TeskManager::SigSetStatusMessage);
        const QString name = QStringLiteral("No such device 7");
        manager->SetOutputDevice(name);
        QCOMPARE(manager->GetOutputDevice(), name);
        // The move runs on the engine's thread; the status tick reports it.
        QTRY_COMPARE(status.count(), 1);
        QVERIFY(manager->GetPreviewPlayer()->OutputDevice().isEmpty());
        QVERIFY2(status.first().at(0).toString().contains(name),
                 qPrintable(status.first().at(0).toString()));
        manager->SlotStartPlaybackCalled(longA);
        QVERIFY(waitForPosition(100) > 0);
        manager->SlotStopPlaybackCalled();
        manager->SetOutputDevice(QString());
        QTRY_VERIFY(!AudioEngine::IsOutputChanging());
        QTest::qWait(120); // two status ticks
        QCOMPARE(status.count(), 1);
        QVERIFY(manager->GetOutputDevice().isEmpty());
    }

    // "Match loudness" measures the files and gives each start the gain that
    // brings it to the target; turned off, every file plays at unity again.
    void matchLoudnessGainFollowsEachStart()
    {
        QSignalSpy gain(manager, &TeskManager::SigPreviewGainChanged);
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        QVERIFY(!manager->IsLoudnessEnabled());
        manager->SlotChangeMatchLoudnessCalled(true);
        QVERIFY(manager->IsLoudnessEnabled()); // matching needs the loudness
        QVERIFY(end.wait(30000));
        const AudioFileInfo info = registry->GetFileInfo(longA);
        // A 0.06 sine: -24.4 dBFS peak, about -28 LUFS, -25 LUFS on two speakers.
        QVERIFY2(std::fabs(info.samplePeak - 0.06f) < 0.001f,
                 qPrintable(QString::number(info.samplePeak)));
        QVERIFY2(info.loudness > -30.0f && info.loudness < -26.0f,
                 qPrintable(QString::number(info.loudness)));

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
        args = started(-40.0);
        QVERIFY(std::fabs(args.at(0).toDouble() - (-40.0 - played)) < 1e-3);
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
