#include "PathRanking.h"

#include "FreeMemory.h"

#include <QCollator>
#include <QLocale>
#include <QThreadPool>

#include <algorithm>
#include <numeric>

namespace {

// Ranks from an order of indexes: neighbours that compare equal share a rank.
template<typename Compare>
QVector<int> ranksOf(int n, Compare compare, const std::atomic<bool>* cancel)
{
    QVector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    // Once cancelled every pair compares equal, so the sort runs out at once.
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        if (cancel && cancel->load(std::memory_order_relaxed))
            return false;
        return compare(a, b) < 0;
    });
    if (cancel && cancel->load(std::memory_order_relaxed))
        return {};
    QVector<int> ranks(n);
    int current = 0;
    for (int k = 0; k < n; ++k) {
        if (k > 0 && compare(order.at(k - 1), order.at(k)) != 0)
            current = k;
        ranks[order.at(k)] = current;
    }
    return ranks;
}

} // namespace

QCollator FileNameCollator()
{
    QCollator collator(QLocale::system());
    // The C locale collates by code point and ignores numeric mode; take2
    // must still sort before take10 there, so it collates as English.
    if (QLocale::system().language() == QLocale::C)
        collator.setLocale(QLocale(QLocale::English));
    collator.setNumericMode(true);
    return collator;
}

struct PathRanking::Job
{
    QStringList paths;
    int skip = 0;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> done{false};
    QVector<int> result;
};

PathRanking::PathRanking(Order rankOrder)
    : order(rankOrder)
{}

PathRanking::~PathRanking()
{
    clear();
}

QVector<int> PathRanking::rank(const QStringList& paths, int skip, const std::atomic<bool>* cancel)
{
    // The order a person expects: take2 before take10, Doors beside doors, and
    // a folder's files together. A tab sorts below every printable character,
    // so standing in for the separator it ends a path part before any longer
    // name that shares its start ("take/x" before "take 2/x" and "take2").
    QCollator collator(QLocale::system());
    if (QLocale::system().language() == QLocale::C)
        collator.setLocale(QLocale(QLocale::English));
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);

    const int n = paths.size();
    QVector<QStringRef> tails;
    QVector<QCollatorSortKey> keys;
    tails.reserve(n);
    keys.reserve(n);
    for (const QString& path : paths) {
        const QStringRef tail = path.midRef(std::min(skip, path.size()));
        tails.append(tail);
        QString parts = tail.toString();
        parts.replace(QLatin1Char('/'), QLatin1Char('\t'));
        keys.append(collator.sortKey(parts));
        if (cancel && cancel->load(std::memory_order_relaxed))
            return {};
    }
    // Paths that collate alike (differing only in case) keep a fixed order.
    return ranksOf(
        n,
        [&](int a, int b) {
            const int byKey = keys.at(a).compare(keys.at(b));
            return byKey != 0 ? byKey : tails.at(a).compare(tails.at(b));
        },
        cancel);
}

int PathRanking::sharedFolderLength(const QStringList& paths)
{
    if (paths.isEmpty())
        return 0;
    const QString& first = paths.first();
    int shared = first.size();
    for (const QString& path : paths) {
        shared = std::min(shared, path.size());
        while (shared > 0 && QStringRef(&path, 0, shared) != QStringRef(&first, 0, shared))
            --shared;
    }
    return shared > 0 ? first.lastIndexOf(QLatin1Char('/'), shared - 1) + 1 : 0;
}

QVector<int> PathRanking::rankNames(const QStringList& paths, const std::atomic<bool>* cancel)
{
    const QCollator collator = FileNameCollator();
    QVector<QCollatorSortKey> keys;
    keys.reserve(paths.size());
    for (const QString& path : paths) {
        keys.append(collator.sortKey(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1)));
        if (cancel && cancel->load(std::memory_order_relaxed))
            return {};
    }
    return ranksOf(
        paths.size(), [&](int a, int b) { return keys.at(a).compare(keys.at(b)); }, cancel);
}

QVector<int> PathRanking::work(const QStringList& paths, int skip,
                               const std::atomic<bool>* cancel) const
{
    return order == Order::Name ? rankNames(paths, cancel) : rank(paths, skip, cancel);
}

void PathRanking::start(const QStringList& paths, int skip)
{
    clear();
    auto next = std::make_shared<Job>();
    next->paths = paths;
    next->skip = skip;
    job = next;
    const Order rankOrder = order;
    QThreadPool::globalInstance()->start([next, rankOrder] {
        next->result = rankOrder == Order::Name ? rankNames(next->paths, &next->cancelled)
                                                : rank(next->paths, next->skip, &next->cancelled);
        next->done.store(true, std::memory_order_release);
        // The sort keys of a long list were tens of megabytes.
        ReleaseFreeMemory();
    });
}

void PathRanking::clear()
{
    if (job)
        job->cancelled.store(true, std::memory_order_relaxed);
    job.reset();
    taken.clear();
    hasTaken = false;
}

bool PathRanking::isReady() const
{
    return hasTaken || (job && job->done.load(std::memory_order_acquire));
}

const QVector<int>& PathRanking::takeRanks()
{
    if (job) {
        if (job->done.load(std::memory_order_acquire)) {
            // The pool thread is through with the result once done is set.
            taken = std::move(job->result);
        } else {
            job->cancelled.store(true, std::memory_order_relaxed);
            taken = work(job->paths, job->skip, nullptr);
        }
        job.reset();
    }
    hasTaken = true;
    return taken;
}
