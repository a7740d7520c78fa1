#pragma once

#include <QCollator>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>

// The collator the table sorts file names with: the system's language (English
// for the C locale, which knows no numeric order), numbers by value.
QCollator FileNameCollator();

// The order of a file list by full path (or by file name), as one rank per
// path: equal paths (names that collate alike) share a rank. Sorting the table
// on the GUI thread then compares two integers per step instead of two strings.
// The ranks are worked out on a pool thread while the list is analysed, from
// the plain path strings only.
class PathRanking final
{
public:
    enum class Order
    {
        // Natural order of the whole path: numbers by value, case ignored,
        // one folder's entries together.
        Path,
        // The file names by FileNameCollator().
        Name,
    };

    explicit PathRanking(Order order = Order::Path);
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
    // How many leading characters rank() may skip: the folder (up to and with
    // its last '/') that every path starts with. A cut inside a name could
    // split a number ("take1|9" against "take1|000") and change the order.
    static int sharedFolderLength(const QStringList& paths);
    // Rank of every file name (past the last '/') by FileNameCollator().
    static QVector<int> rankNames(const QStringList& paths,
                                  const std::atomic<bool>* cancel = nullptr);

private:
    const QVector<int>& takeRanks();
    QVector<int> work(const QStringList& paths, int skip, const std::atomic<bool>* cancel) const;

    Order order;
    struct Job;
    std::shared_ptr<Job> job;
    QVector<int> taken;
    bool hasTaken = false;
};
