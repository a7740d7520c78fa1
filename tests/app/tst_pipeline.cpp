// Drives the real manager, workers and analysis registry over generated folders.
#include "KrokManager.h"
#include "SqliteAnalysisLibrary.h"
#include "SubThreadGetDetail.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString kDone = QStringLiteral("Completed acquiring analyzed data");

QList<QPair<int, int>> Ranges(const QSignalSpy& spy)
{
    QList<QPair<int, int>> ranges;
    for (const QList<QVariant>& args : spy)
        ranges.append({args.at(0).toInt(), args.at(1).toInt()});
    return ranges;
}

// True when the ranges run 0..n-1 in order, each row exactly once.
bool CoversExactlyOnce(const QList<QPair<int, int>>& ranges, int n)
{
    int next = 0;
    for (const auto& r : ranges) {
        if (r.first != next || r.second < r.first)
            return false;
        next = r.second + 1;
    }
    return next == n;
}

QSet<QString> AsSet(const QStringList& list)
{
    return QSet<QString>(list.begin(), list.end());
}

} // namespace

class TestPipeline : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings settings;
    QTemporaryDir data;

    QString makeFolder(const QString& name, int files, int frames = 4800, int channels = 1)
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
        for (const QFileInfo& fi :
             QDir(folder).entryInfoList({QStringLiteral("*.wav")}, QDir::Files))
            paths << fi.absoluteFilePath();
        return paths;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(settings.isValid());
        QVERIFY(data.isValid());
    }

    void fullRunEndsCompleted()
    {
        const QString root = makeFolder(QStringLiteral("full"), 6);
        QVERIFY(fixtures::WriteBytes(root + QStringLiteral("/readme.txt")));

        TeskManager manager;
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy lists(&manager, &TeskManager::SigFilePathListAcquired);
        QSignalSpy ranges(&manager, &TeskManager::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        QSignalSpy searches(&manager, &TeskManager::SigSearchExecute);
        QSignalSpy roots(&manager, &TeskManager::SigRootPathChanged);

        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 30000);
        QCOMPARE(fixtures::SpiedTexts(status).last(), kDone);
        QCOMPARE(roots.count(), 1);
        QCOMPARE(roots.first().at(0).toString(), root);

        QCOMPARE(lists.count(), 1);
        const QStringList listed = lists.first().at(0).value<QList<QString>>();
        QCOMPARE(AsSet(listed), AsSet(listOf(root)));
        QCOMPARE(manager.GetTotalFileCount(), 6);
        QVERIFY(CoversExactlyOnce(Ranges(ranges), 6));
        for (const QString& path : listed)
            QVERIFY(manager.GetKrokManager()->IsAnalyzed(path));
        QCOMPARE(searches.count(), 1);

        const QStringList texts = fixtures::SpiedTexts(status);
        const QStringList expectedOrder{
            QStringLiteral("Retrieving file list"),
            QStringLiteral("Completed file list acquisition. System is registering files to "
                           "Analysis Library..."),
            QStringLiteral(
                "Completed adding files to Analysis Library  Waiting for analyzed data..."),
            kDone};
        int at = -1;
        for (const QString& text : expectedOrder) {
            const int found = texts.indexOf(text, at + 1);
            QVERIFY2(found > at, qPrintable(text));
            at = found;
        }
        const auto lastRange = Ranges(ranges).last();
        QVERIFY(texts.contains(
            QStringLiteral("Completed data analysis from %1 to 6 of 6").arg(lastRange.first + 1)));
        QCOMPARE(manager.GetRecentFolders(), QStringList{root});
    }

    void emptyFolder()
    {
        const QString root = makeFolder(QStringLiteral("empty"), 0);
        TeskManager manager;
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy lists(&manager, &TeskManager::SigFilePathListAcquired);
        QSignalSpy ranges(&manager, &TeskManager::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 10000);
        QCOMPARE(lists.count(), 1);
        QVERIFY(lists.first().at(0).value<QList<QString>>().isEmpty());
        QCOMPARE(ranges.count(), 0);
        QCOMPARE(fixtures::SpiedTexts(status).last(), kDone);
    }

    void missingRootStartsNothing()
    {
        TeskManager manager;
        // Lets the sound output's start-up report (a machine without a card has one) go by.
        QCoreApplication::processEvents();
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy roots(&manager, &TeskManager::SigRootPathChanged);
        QSignalSpy marks(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        const QString nowhere = data.filePath(QStringLiteral("nowhere"));
        manager.SlotChangeRootPathCalled(nowhere);
        QCOMPARE(roots.count(), 1);
        QCOMPARE(marks.count(), 1);
        QTest::qWait(50);
        // Only the reason, and the root is kept as chosen.
        QCOMPARE(fixtures::SpiedTexts(status),
                 QStringList{"Folder not found: " + QDir::toNativeSeparators(nowhere)});
        QCOMPARE(manager.GetRootPath(), nowhere);
    }

    void rootChangedTwiceDuringListing()
    {
        const QString a = makeFolder(QStringLiteral("twiceA"), 3);
        const QString b = makeFolder(QStringLiteral("twiceB"), 4);
        const QString c = makeFolder(QStringLiteral("twiceC"), 5);
        TeskManager manager;
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy lists(&manager, &TeskManager::SigFilePathListAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);

        // No event is processed between the calls, so the first walk cannot
        // have been delivered: it is still running when the second request comes.
        manager.SlotChangeRootPathCalled(a);
        manager.SlotChangeRootPathCalled(b);
        manager.SlotChangeRootPathCalled(c);
        QVERIFY(manager.IsListCancelPending());
        QCOMPARE(manager.GetRootPath(), c);

        QTRY_VERIFY_WITH_TIMEOUT(!lists.isEmpty() &&
                                     AsSet(lists.last().at(0).value<QList<QString>>()) ==
                                         AsSet(listOf(c)),
                                 30000);
        QTRY_VERIFY_WITH_TIMEOUT(fixtures::SpiedTexts(status).last() == kDone, 30000);
        const QStringList texts = fixtures::SpiedTexts(status);
        QCOMPARE(texts.count(QStringLiteral("Cancel file list acquisition")), 1);
        // b was never listed: its request came while the cancel was pending.
        for (const QList<QVariant>& args : lists)
            QVERIFY(AsSet(args.at(0).value<QList<QString>>()) != AsSet(listOf(b)));
        QVERIFY(!manager.IsListCancelPending());
        QVERIFY(!manager.IsDetailCancelPending());
        QCOMPARE(manager.GetRecentFolders(), (QStringList{c, b, a}));
        QVERIFY(!ends.isEmpty());
    }

    void cancelDuringAnalysisRestarts()
    {
        // About a second of analysis with loudness on, several times the first
        // 250 ms range, so that the analysis is still running when the root changes.
        const int slowFiles = 24;
        const QString slow = makeFolder(QStringLiteral("slowRoot"), slowFiles, 48000 * 60, 2);
        const QString next = makeFolder(QStringLiteral("nextRoot"), 2);
        TeskManager manager;
        manager.SlotChangeLoudnessCalled(true);
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy lists(&manager, &TeskManager::SigFilePathListAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        QSignalSpy ranges(&manager, &TeskManager::SigAnalyzedInfoAcquired);

        manager.SlotChangeRootPathCalled(slow);
        // The first range proves the detail worker runs and the list worker's
        // thread, which ends right after handing over its list, has finished.
        QTRY_COMPARE_WITH_TIMEOUT(ranges.count(), 1, 30000);
        QCOMPARE(lists.count(), 1);
        manager.SlotChangeRootPathCalled(next);
        QVERIFY(manager.IsDetailCancelPending());
        QTRY_COMPARE_WITH_TIMEOUT(lists.count(), 2, 60000);
        QCOMPARE(AsSet(lists.last().at(0).value<QList<QString>>()), AsSet(listOf(next)));
        QTRY_COMPARE_WITH_TIMEOUT(fixtures::SpiedTexts(status).last(), kDone, 30000);
        QCOMPARE(ends.count(), 1);

        const QStringList texts = fixtures::SpiedTexts(status);
        const int cancel = texts.indexOf(QStringLiteral("Cancel to acquire analyzed data"));
        QVERIFY(cancel >= 0);
        QVERIFY(texts.indexOf(QStringLiteral("Retrieving file list"), cancel) > cancel);
        // The cancelled pass left the slow folder partly analysed.
        int analysed = 0;
        for (const QString& path : listOf(slow))
            analysed += manager.GetKrokManager()->IsAnalyzed(path) ? 1 : 0;
        QVERIFY(analysed < slowFiles);
    }

    void selectedFilesUpdateOnlyThose()
    {
        const QString root = makeFolder(QStringLiteral("update"), 4);
        const QStringList files = listOf(root);
        TeskManager manager;
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy ranges(&manager, &TeskManager::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 30000);
        // The list worker's thread may still be on its way out on a busy machine.
        QTRY_VERIFY_WITH_TIMEOUT(!manager.IsListingRoot(), 30000);
        KrokManager* registry = manager.GetKrokManager();
        QCOMPARE(registry->GetFileInfo(files.at(1)).samplingRate, 48000);

        // Both files change on disk; only the first is asked for.
        QVERIFY(fixtures::writeSineWav(files.at(1), 44100, 2, 4410));
        QVERIFY(fixtures::writeSineWav(files.at(2), 22050, 2, 2205));
        ranges.clear();
        status.clear();
        manager.SlotSelectedFileUpdateCalled({files.at(1)});
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 2, 30000);
        QCOMPARE(fixtures::SpiedTexts(status).first(), QStringLiteral("Updating information"));
        QCOMPARE(fixtures::SpiedTexts(status).last(), kDone);
        QCOMPARE(Ranges(ranges), (QList<QPair<int, int>>{{0, 0}}));
        QCOMPARE(registry->GetFileInfo(files.at(1)).samplingRate, 44100);
        QCOMPARE(registry->GetFileInfo(files.at(1)).channels, 2);
        QCOMPARE(registry->GetFileInfo(files.at(2)).samplingRate, 48000);
        QVERIFY(manager.GetPendingUpdateFiles().isEmpty());

        manager.SlotSelectedFileUpdateCalled({});
        QTest::qWait(20);
        QCOMPARE(ends.count(), 2);
    }

    void rangesCoverManyRowsOnce()
    {
        const QString root = makeFolder(QStringLiteral("many"), 400, 480);
        TeskManager manager;
        QSignalSpy ranges(&manager, &TeskManager::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
        QVERIFY(CoversExactlyOnce(Ranges(ranges), 400));

        // A second visit finds everything analysed and reports at once.
        ranges.clear();
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 2, 60000);
        QCOMPARE(Ranges(ranges), (QList<QPair<int, int>>{{0, 399}}));
    }

    void slowFileMakesRangeOfOne()
    {
        // Loudness over ten minutes of audio takes well over the 250 ms budget.
        const QString folder = data.filePath(QStringLiteral("slowOne"));
        const QString slowFile = folder + QStringLiteral("/long.wav");
        QVERIFY(fixtures::writeSineWav(slowFile, 48000, 2, 48000 * 600));
        QStringList list{slowFile};
        for (int i = 0; i < 3; ++i) {
            list << QStringLiteral("%1/short%2.wav").arg(folder).arg(i);
            QVERIFY(fixtures::writeSineWav(list.last(), 48000, 1, 480));
        }

        KrokManager registry;
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        SubThreadGetDetail worker(&registry);
        QSignalSpy ranges(&worker, &SubThreadGetDetail::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&worker, &SubThreadGetDetail::SigEndGetDetailInfo);
        QElapsedTimer clock;
        clock.start();
        worker.start(list);
        QVERIFY(worker.wait(120000));
        QVERIFY2(clock.elapsed() > SubThreadGetDetail::kRangeBudgetMs,
                 "the long file must really take longer than one range");
        QCOMPARE(Ranges(ranges), (QList<QPair<int, int>>{{0, 0}, {1, 3}}));
        QCOMPARE(ends.count(), 1);
        QVERIFY(registry.GetFileInfo(slowFile).loudness > -96.0f);
        registry.Finalize();
    }

    void workerEdgeCases()
    {
        KrokManager registry;
        registry.Initialize();
        SubThreadGetDetail worker(&registry);
        QSignalSpy ranges(&worker, &SubThreadGetDetail::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&worker, &SubThreadGetDetail::SigEndGetDetailInfo);

        worker.start({});
        QVERIFY(worker.wait(10000));
        QCOMPARE(ranges.count(), 0);
        QCOMPARE(ends.count(), 1);

        // A cancel asked before the run is cleared by start.
        const QString root = makeFolder(QStringLiteral("edge"), 2);
        worker.cancel();
        worker.start(listOf(root));
        QVERIFY(worker.wait(10000));
        QCOMPARE(ends.count(), 2);

        // An invalidate request makes analysed files count as new again; a
        // file changed on disk is analysed again on the next pass anyway.
        QVERIFY(fixtures::writeSineWav(listOf(root).first(), 32000, 1, 320));
        worker.requestInvalidate();
        worker.start(listOf(root));
        QVERIFY(worker.wait(10000));
        QCOMPARE(registry.GetFileInfo(listOf(root).first()).samplingRate, 32000);
        QVERIFY(fixtures::writeSineWav(listOf(root).first(), 16000, 1, 160));
        worker.start(listOf(root));
        QVERIFY(worker.wait(10000));
        QCOMPARE(registry.GetFileInfo(listOf(root).first()).samplingRate, 16000);
        registry.Finalize();
    }

    void reopenTakesTheLibrary()
    {
        // A second session over the same folder finds every record in the
        // persistent library and reports them at once; "Refresh" analyses
        // afresh and replaces the rows; clearing empties the library.
        const QString root = makeFolder(QStringLiteral("reopen"), 300, 480);
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
        QVERIFY(QFile::exists(library));
        // A stored row changed behind Tesk's back shows that a record came from the library.
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            std::optional<LibraryRow> row = store.Fetch({files.at(7)}).front();
            QVERIFY(row);
            row->info.samplingRate = 12345;
            QVERIFY(store.Store({*row}));
        }

        // A file deleted between the sessions loses its row when the folder is listed.
        QVERIFY(QFile::remove(files.at(0)));

        TeskManager second;
        QSignalSpy ranges(&second, &TeskManager::SigAnalyzedInfoAcquired);
        QSignalSpy ends(&second, &TeskManager::SigEndGetDetailInfo);
        QSignalSpy status(&second, &TeskManager::SigSetStatusMessage);
        second.ApplyStoredSettings();
        QCOMPARE(second.GetRootPath(), root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
        QCOMPARE(Ranges(ranges), (QList<QPair<int, int>>{{0, 298}}));
        KrokManager* registry = second.GetKrokManager();
        QCOMPARE(registry->GetFileInfo(files.at(7)).samplingRate, 12345);

        second.SlotUpdateCalled();
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 2, 60000);
        QCOMPARE(registry->GetFileInfo(files.at(7)).samplingRate, 48000);
        registry->FlushLibrary();
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            QCOMPARE(store.Fetch({files.at(7)}).front()->info.samplingRate, 48000);
            QVERIFY(!store.Fetch({files.at(0)}).front());
            QCOMPARE(store.KeysIn(root, false).size(), 299);
        }

        status.clear();
        second.SlotClearAnalysisLibraryCalled();
        QTRY_VERIFY_WITH_TIMEOUT(
            fixtures::SpiedTexts(status).contains(QStringLiteral("Cleared the analysis library.")),
            10000);
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            QCOMPARE(store.KeysIn(root, true), QStringList());
        }

        // Off: nothing is read or written any more.
        second.SlotChangeAnalysisLibraryCalled(false);
        QVERIFY(!registry->HasLibrary());
        second.SlotUpdateCalled();
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 3, 60000);
        status.clear();
        second.SlotClearAnalysisLibraryCalled();
        QCOMPARE(fixtures::SpiedTexts(status),
                 QStringList{QStringLiteral("The analysis library is turned off.")});
        registry->Finalize();
        {
            SqliteAnalysisLibrary store(library);
            QVERIFY(store.Open());
            QCOMPARE(store.KeysIn(root, true), QStringList());
        }
    }

    void damagedLibraryIsToldAfterThePass()
    {
        // The problem arrives while the folder is being read; the status
        // lines of the pass would hide it, so it comes last, once.
        const QString root = makeFolder(QStringLiteral("damaged"), 5, 480);
        settings.clear();
        QVERIFY(fixtures::WriteBytes(SqliteAnalysisLibrary::DefaultPath(), QByteArray(4096, 'x')));
        TeskManager manager;
        QSignalSpy status(&manager, &TeskManager::SigSetStatusMessage);
        QSignalSpy ends(&manager, &TeskManager::SigEndGetDetailInfo);
        manager.ApplyStoredSettings();
        manager.SlotChangeRootPathCalled(root);
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
        QTRY_VERIFY_WITH_TIMEOUT(fixtures::SpiedTexts(status).last().startsWith(
                                     QStringLiteral("The analysis library was damaged")),
                                 10000);
        QCOMPARE(fixtures::SpiedTexts(status).filter(QStringLiteral("damaged")).size(), 1);
        QVERIFY(manager.GetKrokManager()->IsAnalyzed(listOf(root).first()));
    }
};

QTEST_GUILESS_MAIN(TestPipeline)
#include "tst_pipeline.moc"
