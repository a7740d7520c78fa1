// Drives the real manager, workers, analysis library and preview engine over
// generated folders.
#include "KrokManager.h"
#include "LoudnessMatch.h"
#include "LumoManager.h"
#include "SqliteAnalysisLibrary.h"
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

const QString kDone = QStringLiteral("Completed acquiring analyzed data");
using fixtures::SpiedTexts;
using Ranges = QList<QPair<int, int>>;

Ranges RangesOf(const QSignalSpy& spy)
{
    Ranges ranges;
    for (const QList<QVariant>& args : spy)
        ranges.append({args.at(0).toInt(), args.at(1).toInt()});
    return ranges;
}

QStringList Listed(const QList<QVariant>& args)
{
    QStringList list = args.at(0).value<QList<QString>>();
    list.sort();
    return list;
}

struct Spies
{
    explicit Spies(TeskManager* m)
        : status(m, &TeskManager::SigSetStatusMessage)
        , lists(m, &TeskManager::SigFilePathListAcquired)
        , ranges(m, &TeskManager::SigAnalyzedInfoAcquired)
        , ends(m, &TeskManager::SigEndGetDetailInfo)
    {}
    QSignalSpy status, lists, ranges, ends;
};

} // namespace

class TestPipeline : public QObject
{
    Q_OBJECT

    fixtures::TestSettings settings;
    QTemporaryDir data;

    QString makeFolder(const QString& name, int files, int frames = 480, int channels = 1)
    {
        const QString folder = data.filePath(name);
        QDir().mkpath(folder);
        for (int i = 0; i < files; ++i)
            fixtures::writeSineWav(QStringLiteral("%1/take%2.wav").arg(folder).arg(i), 48000,
                                   channels, frames);
        return folder;
    }

    static QStringList listOf(const QString& folder)
    {
        QStringList paths;
        for (const QString& name : QDir(folder).entryList({QStringLiteral("*.wav")}, QDir::Files))
            paths << folder + '/' + name;
        return paths;
    }

private slots:
    void fullRunEndsCompleted()
    {
        const QString root = makeFolder(QStringLiteral("full"), 6);
        QVERIFY(fixtures::WriteBytes(root + QStringLiteral("/readme.txt")));
        TeskManager manager;
        Spies spy(&manager);
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 1, 30000);
        QCOMPARE(spy.lists.count(), 1);
        QCOMPARE(Listed(spy.lists.first()), listOf(root));
        // The ranges run 0..5 in order, each row exactly once.
        int next = 0;
        for (const auto& r : RangesOf(spy.ranges))
            next = r.first == next && r.second >= r.first ? r.second + 1 : -1;
        QCOMPARE(next, 6);
        for (const QString& path : listOf(root))
            QVERIFY(manager.GetKrokManager()->IsAnalyzed(path));

        const QStringList texts = SpiedTexts(spy.status);
        QCOMPARE(texts.first(), QStringLiteral("Retrieving file list"));
        QCOMPARE(texts.mid(texts.size() - 2),
                 (QStringList{QStringLiteral("Completed data analysis from %1 to 6 of 6")
                                  .arg(RangesOf(spy.ranges).last().first + 1),
                              kDone}));
        QCOMPARE(manager.GetRecentFolders(), QStringList{root});

        // Two files change on disk; "Update" of the first reads only that one.
        const QStringList files = listOf(root);
        QTRY_VERIFY_WITH_TIMEOUT(!manager.IsListingRoot(), 30000);
        QVERIFY(fixtures::writeSineWav(files.at(1), 44100, 2, 4410));
        QVERIFY(fixtures::writeSineWav(files.at(2), 22050, 2, 2205));
        spy.ranges.clear();
        spy.status.clear();
        manager.SlotSelectedFileUpdateCalled({files.at(1)});
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 2, 30000);
        QCOMPARE(SpiedTexts(spy.status).first(), QStringLiteral("Updating information"));
        QCOMPARE(RangesOf(spy.ranges), (Ranges{{0, 0}}));
        QCOMPARE(manager.GetKrokManager()->GetFileInfo(files.at(1)).samplingRate, 44100);
        QCOMPARE(manager.GetKrokManager()->GetFileInfo(files.at(2)).samplingRate, 48000);
        QVERIFY(manager.GetPendingUpdateFiles().isEmpty());
    }

    void rootChangedTwiceDuringListing()
    {
        const QString a = makeFolder(QStringLiteral("twiceA"), 3);
        const QString b = makeFolder(QStringLiteral("twiceB"), 4);
        const QString c = makeFolder(QStringLiteral("twiceC"), 5);
        TeskManager manager;
        Spies spy(&manager);
        // No event is processed between the calls, so the first walk is still
        // running when the second request comes.
        manager.SlotChangeRootPathCalled(a);
        manager.SlotChangeRootPathCalled(b);
        manager.SlotChangeRootPathCalled(c);
        QVERIFY(manager.IsListCancelPending());
        QTRY_VERIFY_WITH_TIMEOUT(!spy.lists.isEmpty() && Listed(spy.lists.last()) == listOf(c),
                                 30000);
        QTRY_VERIFY_WITH_TIMEOUT(SpiedTexts(spy.status).last() == kDone, 30000);
        QCOMPARE(SpiedTexts(spy.status).count(QStringLiteral("Cancel file list acquisition")), 1);
        // b was never listed: its request came while the cancel was pending.
        for (const QList<QVariant>& args : spy.lists)
            QVERIFY(Listed(args) != listOf(b));
        QVERIFY(!manager.IsListCancelPending());
        QVERIFY(!manager.IsDetailCancelPending());
        QCOMPARE(manager.GetRecentFolders(), (QStringList{c, b, a}));
    }

    void cancelDuringAnalysisRestarts()
    {
        // About a second of analysis with loudness on, so that it still runs
        // when the root changes.
        const int slowFiles = 24;
        const QString slow = makeFolder(QStringLiteral("slowRoot"), slowFiles, 48000 * 60, 2);
        const QString next = makeFolder(QStringLiteral("nextRoot"), 2);
        TeskManager manager;
        manager.SlotChangeLoudnessCalled(true);
        Spies spy(&manager);
        manager.SlotChangeRootPathCalled(slow);
        QTRY_VERIFY_WITH_TIMEOUT(!spy.ranges.isEmpty(), 30000);
        manager.SlotChangeRootPathCalled(next);
        QVERIFY(manager.IsDetailCancelPending());
        QTRY_COMPARE_WITH_TIMEOUT(spy.lists.count(), 2, 60000);
        QCOMPARE(Listed(spy.lists.last()), listOf(next));
        QTRY_COMPARE_WITH_TIMEOUT(SpiedTexts(spy.status).last(), kDone, 30000);
        QCOMPARE(spy.ends.count(), 1);
        const QStringList texts = SpiedTexts(spy.status);
        const int cancel = texts.indexOf(QStringLiteral("Cancel to acquire analyzed data"));
        QVERIFY(cancel >= 0);
        QVERIFY(texts.indexOf(QStringLiteral("Retrieving file list"), cancel) > cancel);
        int analysed = 0;
        for (const QString& path : listOf(slow))
            analysed += manager.GetKrokManager()->IsAnalyzed(path) ? 1 : 0;
        QVERIFY(analysed < slowFiles);
    }

    void reopenTakesTheLibrary()
    {
        // A second session finds every record in the library and reports them
        // at once; "Refresh" analyses afresh; clearing empties the library.
        const QString root = makeFolder(QStringLiteral("reopen"), 300);
        const QStringList files = listOf(root);
        const QString library = SqliteAnalysisLibrary::DefaultPath();
        QVERIFY(library.startsWith(settings.path()));
        settings.clear();
        {
            TeskManager first;
            QSignalSpy ends(&first, &TeskManager::SigEndGetDetailInfo);
            first.ApplyStoredSettings();
            first.SlotChangeRootPathCalled(root);
            QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
            first.SaveSettings(0, 0, 800, 600);
        }
        // A stored row changed behind Tesk's back shows that a record came from the library.
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            std::optional<LibraryRow> row =
                store.Fetch({LibraryKey::Absolute(files.at(7))}).front();
            QVERIFY(row);
            row->info.samplingRate = 12345;
            QVERIFY(store.Store({*row}));
        }
        // A file deleted between the sessions loses its row when the folder is listed.
        QVERIFY(QFile::remove(files.at(0)));

        TeskManager second;
        Spies spy(&second);
        second.ApplyStoredSettings();
        QCOMPARE(second.GetRootPath(), root);
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 1, 60000);
        QCOMPARE(RangesOf(spy.ranges), (Ranges{{0, 298}}));
        KrokManager* registry = second.GetKrokManager();
        QCOMPARE(registry->GetFileInfo(files.at(7)).samplingRate, 12345);

        second.SlotUpdateCalled();
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 2, 60000);
        QCOMPARE(registry->GetFileInfo(files.at(7)).samplingRate, 48000);
        registry->FlushLibrary();
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            QCOMPARE(int(store.KeysIn(LibraryKey::Absolute(root), false).size()), 299);
        }
        spy.status.clear();
        second.SlotClearAnalysisLibraryCalled();
        QTRY_VERIFY_WITH_TIMEOUT(
            SpiedTexts(spy.status).contains(QStringLiteral("Cleared the analysis library.")),
            10000);
        registry->Finalize();
        SqliteAnalysisLibrary store(library);
        QVERIFY(store.Open());
        QVERIFY(store.KeysIn(LibraryKey::Absolute(root), true).empty());
    }

    void damagedLibraryIsToldAfterThePass()
    {
        // The problem arrives while the folder is read; the status lines of
        // the pass would hide it, so it comes last, once.
        const QString root = makeFolder(QStringLiteral("damaged"), 5);
        settings.clear();
        QVERIFY(fixtures::WriteBytes(SqliteAnalysisLibrary::DefaultPath(), QByteArray(4096, 'x')));
        TeskManager manager;
        Spies spy(&manager);
        manager.ApplyStoredSettings();
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 1, 60000);
        QTRY_VERIFY_WITH_TIMEOUT(
            SpiedTexts(spy.status)
                .last()
                .startsWith(QStringLiteral("The analysis library was damaged")),
            10000);
        QCOMPARE(SpiedTexts(spy.status).filter(QStringLiteral("damaged")).size(), 1);
        QVERIFY(manager.GetKrokManager()->IsAnalyzed(listOf(root).first()));
    }

    // Preview over the real engine, whose silent output (there is no sound
    // card here) plays in real time: seeking at the edges of a file, "Match
    // loudness" giving each start its gain.
    void previewThroughTheManager()
    {
        const QString folder = data.filePath(QStringLiteral("preview"));
        const QString tone = folder + QStringLiteral("/tone.wav"); // 1.5 s
        QVERIFY(fixtures::writeSineWav(tone, 48000, 1, 72000, 0.06, 440.0));
        TeskManager manager;
        Spies spy(&manager);
        manager.SlotChangeMatchLoudnessCalled(true);
        QVERIFY(manager.IsLoudnessEnabled()); // matching needs the loudness
        manager.SlotChangeRootPathCalled(folder);
        QTRY_COMPARE_WITH_TIMEOUT(spy.ends.count(), 1, 30000);
        KrokManager* registry = manager.GetKrokManager();
        const auto at = [registry](int ms) { // the position once at `ms` or later
            QElapsedTimer t;
            t.start();
            while (t.elapsed() < 5000) {
                if (registry->IsPlaying() && registry->GetPlaybackPosition() >= ms * 48)
                    return qint64(registry->GetPlaybackPosition());
                QTest::qWait(1);
            }
            return qint64(-1);
        };
        // Nothing playing, nothing to seek; forward past the end is dropped and
        // leaves the playlist timer running; backward near the start restarts.
        manager.SetSeekTimeMs(1000);
        manager.SeekPlayback(true);
        QVERIFY(registry->GetPlayingPath().isEmpty());
        manager.SlotChangePlaylistFlagCalled(true);
        manager.SlotStartPlaybackCalled(tone);
        const qint64 before = at(800);
        QVERIFY(before > 0);
        manager.SeekPlayback(false);
        QVERIFY(manager.GetPlaylistTimer()->isActive());
        const qint64 after = at(0);
        QVERIFY(after >= before && after < before + 48 * 300);
        manager.SlotStartPlaybackCalled(tone);
        QVERIFY(at(400) > 0);
        manager.SeekPlayback(true);
        QVERIFY(at(0) < 48 * 300);

        // A 0.06 sine: about -28 LUFS, -25 LUFS on two speakers. 0 LUFS would
        // need +25 dB: the boost stops at its 12 dB.
        QSignalSpy gain(&manager, &TeskManager::SigPreviewGainChanged);
        const float loudness = registry->GetFileInfo(tone).loudness;
        QVERIFY(loudness > -30.0f && loudness < -26.0f);
        const double matched = -23.0 - (loudness + 10.0 * std::log10(2.0));
        for (const double target : {0.0, -23.0}) {
            manager.SetMatchLoudnessLimits(target, 12.0);
            manager.SlotStartPlaybackCalled(tone);
        }
        QCOMPARE(gain.at(0).at(1).toInt(), int(LoudnessMatch::Basis::BoostLimited));
        QVERIFY(std::fabs(gain.at(0).at(0).toDouble() - 12.0) < 1e-6);
        QCOMPARE(gain.at(1).at(1).toInt(), int(LoudnessMatch::Basis::Matched));
        QVERIFY(std::fabs(manager.GetPreviewPlayer()->PreviewGain() -
                          std::pow(10.0, matched / 20.0)) < 1e-4);
        manager.SlotChangeMatchLoudnessCalled(false);
        manager.SlotStartPlaybackCalled(tone);
        QCOMPARE(gain.last().at(1).toInt(), int(LoudnessMatch::Basis::Off));
        QCOMPARE(manager.GetPreviewPlayer()->PreviewGain(), 1.0f);

        manager.SlotStopPlaybackCalled();
    }
};

QTEST_GUILESS_MAIN(TestPipeline)
#include "tst_pipeline.moc"
