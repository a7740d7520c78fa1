#include "PathRanking.h"

#include <QCollator>
#include <QLocale>
#include <QThreadPool>

#include <algorithm>
#include <numeric>

struct PathRanking::Job
{
    QStringList paths;
    int skip = 0;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> done{false};
    QVector<int> result;
};

PathRanking::PathRanking() = default;

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
    const auto compare = [&](int a, int b) {
        const int byKey = keys.at(a).compare(keys.at(b));
        return byKey != 0 ? byKey : tails.at(a).compare(tails.at(b));
    };
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

void PathRanking::start(const QStringList& paths, int skip)
{
    clear();
    auto next = std::make_shared<Job>();
    next->paths = paths;
    next->skip = skip;
    job = next;
    QThreadPool::globalInstance()->start([next] {
        next->result = rank(next->paths, next->skip, &next->cancelled);
        next->done.store(true, std::memory_order_release);
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
            taken = rank(job->paths, job->skip);
        }
        job.reset();
    }
    hasTaken = true;
    return taken;
}
