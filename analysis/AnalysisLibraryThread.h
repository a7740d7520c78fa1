#pragma once

#include "AnalysisLibrary.h"
#include "LibraryRoots.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

// Runs an analysis library on a thread of its own, where its connection
// lives, so that any number of analysis threads can share it: lookups are
// answered in batches, and stored rows are written in batched transactions.
// Callers name files by their paths; the library roots turn those into the
// library's keys here, and back.
// Nothing here waits for the disk on the caller's thread except Fetch, Flush
// and the destructor (the last batch): analysis threads and command-line tools
// call those, and the GUI thread only at shutdown.
class AnalysisLibraryThread final
{
public:
    using Reporter = std::function<void(const QString& problem)>;

    // Starts the thread, which opens the library at once. `report` is called
    // on that thread with each problem the library has for the user.
    AnalysisLibraryThread(std::unique_ptr<AnalysisLibrary> library, Reporter report,
                          LibraryRoots roots = {});
    // Writes what is queued, closes the library and joins the thread.
    ~AnalysisLibraryThread();
    AnalysisLibraryThread(const AnalysisLibraryThread&) = delete;
    AnalysisLibraryThread& operator=(const AnalysisLibraryThread&) = delete;

    using Rows = LibraryRows;
    // The rows of the files at `paths`, in order (blocks until answered;
    // misses once stopped).
    Rows Fetch(const QStringList& paths);
    // The same, answered while the caller does other work.
    std::future<Rows> FetchLater(const QStringList& paths);
    // Queued; written with the next batch.
    void Store(const QString& path, const FileStamp& stamp, AudioFileInfo info);
    // Queued: removes the rows of files under `folder` that no longer exist.
    // Files in `listed` were just listed, so they are not looked at.
    void ForgetMissing(const QString& folder, bool recursive, const QStringList& listed);
    // Queued: removes every row, then calls `done` on the library thread.
    void Clear(std::function<void(bool cleared)> done);
    // Returns once every row queued before the call is written. With
    // `catchUp`, the library's own work that is due is done first as well (rows
    // kept while the server was away are sent), which an idle thread would do
    // later: for a process that ends after its scan.
    void Flush(bool catchUp = false);
    // The thread writes what is queued and ends; the destructor joins it.
    void RequestStop();

    // A batch is written when it holds this many rows, or this long after its
    // first row: a crash loses at most that much.
    static constexpr std::size_t kBatchRows = 256;
    static constexpr std::chrono::milliseconds kBatchDelay{250};

private:
    void run();
    void post(std::function<void()> job);
    void reportProblems();

    std::unique_ptr<AnalysisLibrary> library;
    Reporter report;
    const LibraryRoots roots;
    std::mutex mutex;
    std::condition_variable wake;
    // Lookups go first: they hold an analysis thread up, and they need not see
    // this session's queued rows (the registry has those in memory).
    std::deque<std::function<void()>> lookups;
    std::deque<std::function<void()>> jobs;
    std::vector<LibraryRow> pending;
    std::chrono::steady_clock::time_point firstPendingAt;
    bool stopping = false;
    std::thread thread;
};
