// Sorts 100,000 analysed rows of the file table by every column and filters
// them by name, offscreen, and prints the times beside those of a plain
// QSortFilterProxyModel (default string sort on the display role, fixed-string
// filter) over the same model. Also prints the cost of one cell request.
//
//   bench_sortfilter [FILE_COUNT=100000] [FOLDER]
//
// The folder of small WAV files is generated once and reused on later runs.

#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "SearchCriteriaStruct.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"
#include "krokTableModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSortFilterProxyModel>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>

namespace {

// Rate, channels and length vary with the index so every column has spread.
QByteArray smallWav(int k)
{
    static const int rates[] = {8000, 11025, 22050, 44100, 48000, 96000};
    const int rate = rates[k % 6];
    const int channels = 1 + (k / 6) % 2;
    const int frames = 40 + (k * 37) % 400;
    std::vector<std::int32_t> values(static_cast<std::size_t>(frames * channels));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::int32_t>((i * 13 + k) % 90) - 45;
    return fixtures::toQByteArray(fixtures::wavInts(channels, rate, 8, values));
}

QStringList ensureFolder(const QString& folder, int count)
{
    QDir().mkpath(folder);
    QStringList paths;
    paths.reserve(count);
    for (int k = 0; k < count; ++k) {
        // Names with numbers in them, as libraries have: natural order matters.
        const QString path = folder + QStringLiteral("/%1_take%2.wav")
                                          .arg(QLatin1String(k % 3 == 0 ? "door" : "foot"))
                                          .arg(k);
        if (!QFile::exists(path)) {
            QFile f(path);
            if (!f.open(QIODevice::WriteOnly) || f.write(smallWav(k)) < 0)
                return {};
        }
        paths << path;
    }
    return paths;
}

// The calling thread's CPU time. Every step measured here runs on this (the
// GUI) thread; on a machine shared with other work its wall time would count
// the waits for a core, which are not ours.
class ThreadClock final
{
public:
    void start() { begin = now(); }
    void restart() { begin = now(); }
    qint64 nsecsElapsed() const { return now() - begin; }

private:
    static qint64 now()
    {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
    }
    qint64 begin = 0;
};

double msSince(const ThreadClock& t)
{
    return static_cast<double>(t.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const QString folder =
        argc > 2 ? QString::fromLocal8Bit(argv[2])
                 : QDir::tempPath() + QStringLiteral("/tesk-sortfilter-%1").arg(count);

    std::printf("times are CPU time of the GUI thread (tesk and peer alike)\n");
    ThreadClock timer;
    timer.start();
    const QStringList paths = ensureFolder(folder, count);
    if (paths.size() != count) {
        std::fprintf(stderr, "cannot write the files under %s\n", qPrintable(folder));
        return 1;
    }
    std::printf("files: %d in %s (ready in %.0f ms)\n", count, qPrintable(folder), msSince(timer));

    TeskManager manager;
    KrokManager* registry = manager.GetKrokManager();
    timer.restart();
    registry->RegisterFiles(paths);
    for (const QString& p : paths)
        registry->AnalyzeFile(p);
    std::printf("analysed in %.0f ms\n\n", msSince(timer));

    WidgetTableBrowser browser(&manager, {});
    browser.resize(1400, 900);
    browser.show();
    krokTableModel* model = browser.tableModel();
    KrokTableSortModel* proxy = browser.sortModel();

    // The end of a list as the manager drives it: the list arrives in the
    // folder's own order (not sorted), ranges are reported, then sorting and
    // the search are switched on. Each step is one uninterrupted stretch of
    // the GUI thread.
    {
        QStringList listed = paths;
        // Directory order is neither name nor path order (ext4 lists by hash).
        std::mt19937 random(20240611);
        std::shuffle(listed.begin(), listed.end(), random);
        SearchCriteriaStruct criteria;
        timer.restart();
        browser.SlotRootPathChanged();
        browser.SlotFilePathListAcquired(listed);
        const double listMs = msSince(timer);
        double worstRange = 0.0;
        for (int from = 0; from < count; from += 6000) {
            QCoreApplication::processEvents();
            timer.restart();
            browser.SlotAnalyzedInfoAcquired(from, qMin(count, from + 6000) - 1);
            worstRange = qMax(worstRange, msSince(timer));
        }
        QCoreApplication::processEvents();
        timer.restart();
        browser.SlotGetDetailEnded();
        const double endMs = msSince(timer);
        timer.restart();
        browser.SlotSearchExecute(criteria);
        const double searchMs = msSince(timer);
        criteria.useDetail = true;
        criteria.useTime = true;
        criteria.useRate = true;
        criteria.rate = 22050;
        timer.restart();
        browser.SlotSearchExecute(criteria);
        const double advancedMs = msSince(timer);
        const int advancedShown = proxy->rowCount();
        browser.SlotSearchExecute(SearchCriteriaStruct());
        std::printf("end of a list of %d files (GUI thread, ms)\n", count);
        std::printf("  list arrives:                      %8.1f\n", listMs);
        std::printf("  slowest analysed range of 6000:    %8.1f\n", worstRange);
        std::printf("  sorting switched on:               %8.1f\n", endMs);
        std::printf("  search and status line:            %8.1f\n", searchMs);
        std::printf("  advanced search (rate, time):      %8.1f  (%d shown)\n\n", advancedMs,
                    advancedShown);
    }

    model->setFilePathList(paths);
    for (int row = 0; row < count; ++row)
        model->setDetailAcquired(row, true);
    browser.SlotGetDetailEnded();

    QSortFilterProxyModel peer;
    peer.setSourceModel(model);

    const QStringList headers = krokTableModel::columnHeaderLabels();
    std::printf("%-20s %14s %14s %14s\n", "sort by column", "tesk asc ms", "tesk desc ms",
                "peer asc ms");
    double worst = 0.0;
    for (int c = 0; c < headers.size(); ++c) {
        timer.restart();
        proxy->sort(c, Qt::AscendingOrder);
        const double asc = msSince(timer);
        timer.restart();
        proxy->sort(c, Qt::DescendingOrder);
        const double desc = msSince(timer);
        timer.restart();
        peer.sort(c, Qt::AscendingOrder);
        const double peerAsc = msSince(timer);
        worst = qMax(worst, qMax(asc, desc));
        std::printf("%-20s %14.1f %14.1f %14.1f\n", qPrintable(headers.at(c)), asc, desc, peerAsc);
    }
    std::printf("slowest tesk sort: %.1f ms (limit 1500 ms) %s\n\n", worst,
                worst <= 1500.0 ? "OK" : "OVER");

    // Name filtering with the table sorted by name, as after a fresh listing.
    proxy->sort(ColumnFile, Qt::AscendingOrder);
    peer.sort(ColumnFile, Qt::AscendingOrder);
    std::printf("%-20s %14s %14s %14s\n", "filter by name", "tesk ms", "shown", "peer ms");
    peer.setFilterCaseSensitivity(Qt::CaseSensitive);
    peer.setFilterKeyColumn(ColumnFile);
    const QStringList needles{QStringLiteral("take1"), QStringLiteral("door"),
                              QStringLiteral("Take"), QString()};
    double worstFilter = 0.0;
    for (const QString& needle : needles) {
        SearchCriteriaStruct criteria;
        criteria.name = needle;
        timer.restart();
        browser.SlotSearchExecute(criteria);
        const double ms = msSince(timer);
        worstFilter = qMax(worstFilter, ms);
        const int shown = proxy->rowCount();
        timer.restart();
        peer.setFilterFixedString(needle);
        const double peerMs = msSince(timer);
        const QString label =
            needle.isEmpty() ? QStringLiteral("(cleared)") : QStringLiteral("\"%1\"").arg(needle);
        std::printf("%-20s %14.1f %14d %14.1f\n", qPrintable(label), ms, shown, peerMs);
    }
    std::printf("slowest tesk filter: %.1f ms (limit 1500 ms) %s\n\n", worstFilter,
                worstFilter <= 1500.0 ? "OK" : "OVER");

    // Typing into the search box with the table sorted by a number, as after
    // sorting by Duration: each pause in the typing filters once (the search
    // box waits 150 ms for the next key). The peer filters the same text.
    proxy->sort(ColumnDuration, Qt::DescendingOrder);
    peer.sort(ColumnDuration, Qt::DescendingOrder);
    std::printf("%-20s %14s %14s %14s\n", "typed, by Duration", "tesk ms", "shown", "peer ms");
    double worstTyped = 0.0;
    for (const QString& typed : {QStringLiteral("d"), QStringLiteral("do"), QStringLiteral("DOOR"),
                                 QStringLiteral("door_take12"), QString()}) {
        SearchCriteriaStruct criteria;
        criteria.name = typed;
        timer.restart();
        browser.SlotSearchExecute(criteria);
        const double ms = msSince(timer);
        worstTyped = qMax(worstTyped, ms);
        const int shown = proxy->rowCount();
        timer.restart();
        peer.setFilterCaseSensitivity(Qt::CaseInsensitive);
        peer.setFilterFixedString(typed);
        const double peerMs = msSince(timer);
        const QString label =
            typed.isEmpty() ? QStringLiteral("(cleared)") : QStringLiteral("\"%1\"").arg(typed);
        std::printf("%-20s %14.1f %14d %14.1f\n", qPrintable(label), ms, shown, peerMs);
    }
    std::printf("slowest typed filter: %.1f ms\n\n", worstTyped);

    // One cell request on the GUI thread: a registry lookup plus formatting.
    const int cells = qMin(count, 100000);
    timer.restart();
    qint64 chars = 0;
    for (int row = 0; row < cells; ++row)
        chars += model->index(row, ColumnDuration).data().toString().size();
    const double perCell = static_cast<double>(timer.nsecsElapsed()) / cells / 1000.0;
    std::printf("one Duration cell request: %.2f us (%lld chars)\n", perCell,
                static_cast<long long>(chars));
    return worst <= 1500.0 && worstFilter <= 1500.0 ? 0 : 2;
}
