#include "AnalysisLibraryThread.h"

#include <QFileInfo>
#include <QSet>

#include <future>

AnalysisLibraryThread::AnalysisLibraryThread(std::unique_ptr<AnalysisLibrary> store,
                                             Reporter reporter)
    : library(std::move(store))
    , report(std::move(reporter))
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

AnalysisLibraryThread::Rows AnalysisLibraryThread::Fetch(const QStringList& keys)
{
    return FetchLater(keys).get();
}

std::future<AnalysisLibraryThread::Rows> AnalysisLibraryThread::FetchLater(const QStringList& keys)
{
    auto answer = std::make_shared<std::promise<Rows>>();
    std::future<Rows> rows = answer->get_future();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping || keys.isEmpty()) {
            answer->set_value(Rows(std::size_t(keys.size())));
            return rows;
        }
        lookups.push_back([this, keys, answer] { answer->set_value(library->Fetch(keys)); });
    }
    wake.notify_all();
    return rows;
}

void AnalysisLibraryThread::Store(LibraryRow row)
{
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

void AnalysisLibraryThread::ForgetMissing(const QString& folderKey, bool recursive,
                                          const QStringList& listedKeys)
{
    post([this, folderKey, recursive, listedKeys] {
        const QStringList stored = library->KeysIn(folderKey, recursive);
        if (stored.isEmpty())
            return;
        const QSet<QString> listed(listedKeys.begin(), listedKeys.end());
        QStringList gone;
        for (const QString& key : stored) {
            // A file the listing skipped (hidden, say) keeps its row while it exists.
            if (!listed.contains(key) && !QFileInfo::exists(key))
                gone << key;
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

void AnalysisLibraryThread::Flush()
{
    auto written = std::make_shared<std::promise<void>>();
    std::future<void> done = written->get_future();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping)
            return;
        jobs.push_back([written] { written->set_value(); });
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
        if (!due()) {
            if (pending.empty())
                wake.wait(lock, due);
            else
                wake.wait_until(lock, firstPendingAt + kBatchDelay, due);
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
    }
    lock.unlock();
    library->Close();
    reportProblems();
}
