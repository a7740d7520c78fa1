#include "AnalysisLibraryThread.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <future>

AnalysisLibraryThread::AnalysisLibraryThread(std::unique_ptr<AnalysisLibrary> store,
                                             Reporter reporter, LibraryRoots libraryRoots)
    : library(std::move(store))
    , report(std::move(reporter))
    , roots(std::move(libraryRoots))
{
    thread = std::thread([this] { run(); });
}

AnalysisLibraryThread::~AnalysisLibraryThread()
{
    RequestStop();
    if (thread.joinable())
        thread.join();
}

void AnalysisLibraryThread::RequestStop()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    wake.notify_all();
}

void AnalysisLibraryThread::post(std::function<void()> job)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        jobs.push_back(std::move(job));
    }
    wake.notify_all();
}

AnalysisLibraryThread::Rows AnalysisLibraryThread::Fetch(const QStringList& paths)
{
    return FetchLater(paths).get();
}

std::future<AnalysisLibraryThread::Rows> AnalysisLibraryThread::FetchLater(const QStringList& paths)
{
    auto answer = std::make_shared<std::promise<Rows>>();
    std::future<Rows> rows = answer->get_future();
    LibraryKeys keys;
    keys.reserve(std::size_t(paths.size()));
    for (const QString& path : paths)
        keys.push_back(roots.KeyOf(path));
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping || keys.empty()) {
            answer->set_value(Rows(keys.size()));
            return rows;
        }
        lookups.push_back(
            [this, keys = std::move(keys), answer] { answer->set_value(library->Fetch(keys)); });
    }
    wake.notify_all();
    return rows;
}

void AnalysisLibraryThread::Store(const QString& path, const FileStamp& stamp, AudioFileInfo info)
{
    LibraryRow row{roots.KeyOf(path), stamp, std::move(info)};
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping)
            return;
        if (pending.empty())
            firstPendingAt = std::chrono::steady_clock::now();
        pending.push_back(std::move(row));
        if (pending.size() < kBatchRows)
            return;
    }
    wake.notify_all();
}

void AnalysisLibraryThread::ForgetMissing(const QString& folder, bool recursive,
                                          const QStringList& listed)
{
    post([this, folder, recursive, listed] {
        QSet<LibraryKey> listedKeys;
        QSet<QString> listedRoots;
        for (const QString& path : listed) {
            const LibraryKey key = roots.KeyOf(path);
            listedRoots.insert(key.root);
            listedKeys.insert(key);
        }
        LibraryKeys gone;
        for (const LibraryKey& folderKey : roots.FolderKeys(folder, recursive)) {
            // A shared folder of which nothing was listed is more likely not
            // mounted here than emptied: its rows, which other machines use, stay.
            if (!folderKey.root.isEmpty() && !listedRoots.contains(folderKey.root))
                continue;
            for (const LibraryKey& key : library->KeysIn(folderKey, recursive)) {
                // A file the listing skipped (hidden, say) keeps its row while it exists.
                if (!listedKeys.contains(key) && !QFileInfo::exists(roots.PathOf(key)))
                    gone.push_back(key);
            }
        }
        library->Remove(gone);
    });
}

void AnalysisLibraryThread::Clear(std::function<void(bool)> done)
{
    post([this, done] {
        const bool cleared = library->Clear();
        if (done)
            done(cleared);
    });
}

void AnalysisLibraryThread::Flush(bool catchUp)
{
    auto written = std::make_shared<std::promise<void>>();
    std::future<void> done = written->get_future();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping)
            return;
        jobs.push_back([this, written, catchUp] {
            // Each call moves the due time on (or to never) when it has
            // nothing more to do now, so this ends.
            while (catchUp && library->MaintenanceDue() <= AnalysisLibrary::Clock::now())
                library->Maintain();
            written->set_value();
        });
    }
    wake.notify_all();
    done.wait();
}

void AnalysisLibraryThread::reportProblems()
{
    for (QString problem = library->TakeProblem(); !problem.isEmpty();
         problem = library->TakeProblem()) {
        if (report)
            report(problem);
    }
}

void AnalysisLibraryThread::run()
{
    library->Open();
    reportProblems();

    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        const auto due = [this] {
            return !lookups.empty() || !jobs.empty() || stopping || pending.size() >= kBatchRows;
        };
        const AnalysisLibrary::Clock::time_point maintainAt = library->MaintenanceDue();
        if (!due()) {
            auto until = maintainAt;
            if (!pending.empty())
                until = std::min(until, firstPendingAt + kBatchDelay);
            if (until == AnalysisLibrary::Clock::time_point::max())
                wake.wait(lock, due);
            else
                wake.wait_until(lock, until, due);
        }
        if (!lookups.empty()) {
            std::function<void()> lookup = std::move(lookups.front());
            lookups.pop_front();
            lock.unlock();
            lookup();
            reportProblems();
            lock.lock();
            continue;
        }
        // Rows queued before a job are written before it runs, so that a
        // clear or a flush comes after every earlier write.
        if (!pending.empty() &&
            (due() || std::chrono::steady_clock::now() >= firstPendingAt + kBatchDelay)) {
            std::vector<LibraryRow> batch;
            batch.swap(pending);
            lock.unlock();
            library->Store(batch);
            reportProblems();
            lock.lock();
            continue;
        }
        if (!jobs.empty()) {
            std::function<void()> job = std::move(jobs.front());
            jobs.pop_front();
            lock.unlock();
            job();
            reportProblems();
            lock.lock();
            continue;
        }
        if (stopping)
            break;
        // The library's own work waits until nothing else is asked of it.
        if (AnalysisLibrary::Clock::now() >= maintainAt) {
            lock.unlock();
            library->Maintain();
            reportProblems();
            lock.lock();
        }
    }
    lock.unlock();
    library->Close();
    reportProblems();
}
