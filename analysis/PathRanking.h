#pragma once

#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>

// The order of a file list by full path, as one rank per path (equal paths
// share a rank). The end of a long analysis sorts the table by path on the
// GUI thread; with the ranks at hand that sort compares two integers per step
// instead of two strings. The ranks are worked out on a pool thread while the
// list is analysed, from the plain path strings only.
class PathRanking final
{
public:
    PathRanking();
    ~PathRanking();
    PathRanking(const PathRanking&) = delete;
    PathRanking& operator=(const PathRanking&) = delete;

    // Starts ranking `paths` on a pool thread. All of them begin with the same
    // `skip` characters, which the comparisons pass over.
    void start(const QStringList& paths, int skip);
    void clear();
    // True once the pool thread has delivered (or the ranks were taken).
    bool isReady() const;
    // The ranks, taken from the pool thread when it has finished; otherwise
    // worked out here at once, never waiting for the pool thread.
    const QVector<int>& ranks() { return hasTaken ? taken : takeRanks(); }

    // Rank of every path past `skip` characters in natural order: numbers by
    // value, case ignored, one folder's entries together. Gives up (returning
    // an empty vector) once `cancel` is set.
    static QVector<int> rank(const QStringList& paths, int skip,
                             const std::atomic<bool>* cancel = nullptr);

private:
    const QVector<int>& takeRanks();

    struct Job;
    std::shared_ptr<Job> job;
    QVector<int> taken;
    bool hasTaken = false;
};
