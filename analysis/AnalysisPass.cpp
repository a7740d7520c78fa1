#include "AnalysisPass.h"

#include "AnalysisStop.h"
#include "BackgroundPriority.h"
#include "KrokManager.h"

#include <QThread>

#include <algorithm>

namespace {

// How often a waiting thread looks at the stop flag, which nobody signals.
constexpr std::chrono::milliseconds kPoll{5};
// A view shows a few dozen rows; more than this are not wanted "first".
constexpr int kMaxWantedRows = 512;

bool isReady(std::future<LibraryRows>& rows)
{
    return !rows.valid() || rows.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace

struct AnalysisPass::PendingRecall
{
    QStringList paths;
    std::vector<int> indexes;
    std::unique_ptr<KrokManager::Recall> recall;
};

int AnalysisPass::DefaultWorkerCount()
{
    return std::max(1, QThread::idealThreadCount());
}

AnalysisPass::AnalysisPass(KrokManager& registry, const QStringList& paths, int workers,
                           bool refresh, const std::atomic<bool>& stop,
                           const std::atomic<std::int64_t>& wanted)
    : m_registry(registry)
    , m_paths(paths)
    , m_stop(stop)
    , m_wanted(wanted)
    , m_count(paths.size())
    , m_states(std::size_t(paths.size()), refresh ? Ready : Unchecked)
    , m_checkedTo(refresh ? paths.size() : 0)
{
    const int threads = std::clamp(workers, 1, std::max(1, m_count));
    m_workers.reserve(std::size_t(threads));
    for (int i = 0; i < threads; ++i)
        m_workers.emplace_back([this] { work(); });
}

AnalysisPass::~AnalysisPass()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
    }
    m_workReady.notify_all();
    for (std::thread& worker : m_workers)
        worker.join();
}

int AnalysisPass::takeLocked()
{
    const std::int64_t wanted = m_wanted.load(std::memory_order_relaxed);
    const int first = int(wanted >> 32);
    if (first >= 0) {
        const int last =
            std::min({int(std::uint32_t(wanted)), m_count - 1, first + kMaxWantedRows - 1});
        for (int i = first; i <= last; ++i) {
            if (m_states[std::size_t(i)] == Ready) {
                m_states[std::size_t(i)] = Taken;
                return i;
            }
        }
    }
    while (m_cursor < m_count &&
           (m_states[std::size_t(m_cursor)] == Taken || m_states[std::size_t(m_cursor)] == Done))
        ++m_cursor;
    if (m_cursor < m_count && m_states[std::size_t(m_cursor)] == Ready) {
        m_states[std::size_t(m_cursor)] = Taken;
        return m_cursor++;
    }
    return -1;
}

void AnalysisPass::work()
{
    // A long file stops between two blocks of audio when the pass is stopped.
    const AnalysisStopScope scope(&m_stop);
    LowerCurrentThreadPriority();
    for (;;) {
        int index = -1;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            for (;;) {
                if (m_closing || m_stop.load())
                    return;
                index = takeLocked();
                if (index >= 0)
                    break;
                // Everything is taken or done: nothing can come any more.
                if (m_cursor >= m_count)
                    return;
                m_workReady.wait_for(lock, kPoll);
            }
        }
        KrokManager::Record record = m_registry.AnalyzeFile(m_paths.at(index));
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!record) {
                // Stopped half way: the file stays to be analysed.
                m_states[std::size_t(index)] = Ready;
                return;
            }
            m_states[std::size_t(index)] = Done;
            ++m_doneCount;
            m_finished.push_back({index, std::move(record)});
            if (m_doneCount < m_count)
                continue;
        }
        m_progress.notify_all();
    }
}

void AnalysisPass::beginRecall(int from, int to)
{
    auto pending = std::make_unique<PendingRecall>();
    for (int i = from; i < to; ++i) {
        pending->paths << m_paths.at(i);
        pending->indexes.push_back(i);
    }
    pending->recall = m_registry.BeginRecall(pending->paths);
    m_recall = std::move(pending);
}

bool AnalysisPass::endRecall()
{
    if (!m_recall || !isReady(m_recall->recall->rows))
        return false;
    m_registry.EndRecall(*m_recall->recall);
    const std::unique_ptr<PendingRecall> done = std::move(m_recall);
    settle(done->paths, done->indexes);
    return true;
}

void AnalysisPass::settle(const QStringList& chunk, const std::vector<int>& indexes)
{
    // Current records are finished here, without opening their files.
    std::vector<KrokManager::Record> current = m_registry.CurrentRecords(chunk);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (std::size_t k = 0; k < indexes.size(); ++k) {
            const auto i = std::size_t(indexes[k]);
            if (m_states[i] != Unchecked)
                continue;
            if (current[k]) {
                m_states[i] = Done;
                ++m_doneCount;
                m_finished.push_back({indexes[k], std::move(current[k])});
            } else {
                m_states[i] = Ready;
            }
        }
    }
    m_workReady.notify_all();
}

void AnalysisPass::recallWanted()
{
    const std::int64_t wanted = m_wanted.load(std::memory_order_relaxed);
    const int first = int(wanted >> 32);
    if (first < 0 || first >= m_count)
        return;
    const int last =
        std::min({int(std::uint32_t(wanted)), m_count - 1, first + kMaxWantedRows - 1});
    // Rows beyond the chunk on its way are looked up now, ahead of their turn.
    const int from = std::max(first, m_checkedTo);
    if (from > last)
        return;
    PendingRecall wantedNow;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (int i = from; i <= last; ++i) {
            if (m_states[std::size_t(i)] == Unchecked) {
                wantedNow.paths << m_paths.at(i);
                wantedNow.indexes.push_back(i);
            }
        }
    }
    if (wantedNow.indexes.empty())
        return;
    std::unique_ptr<KrokManager::Recall> recall = m_registry.BeginRecall(wantedNow.paths);
    while (!isReady(recall->rows)) {
        if (m_stop.load())
            return;
        recall->rows.wait_for(kPoll);
    }
    m_registry.EndRecall(*recall);
    settle(wantedNow.paths, wantedNow.indexes);
}

std::vector<AnalysisPass::Finished> AnalysisPass::Collect(std::chrono::milliseconds wait)
{
    const auto deadline = std::chrono::steady_clock::now() + wait;
    if (!m_stop.load()) {
        recallWanted();
        // The library reads the next chunk while this one is taken in.
        while (m_recall && !m_stop.load() && !endRecall() &&
               std::chrono::steady_clock::now() < deadline)
            m_recall->recall->rows.wait_for(kPoll);
        if (!m_recall && m_checkedTo < m_count && !m_stop.load()) {
            const int to = std::min(m_count, m_checkedTo + kRecallChunk);
            beginRecall(m_checkedTo, to);
            m_checkedTo = to;
        }
    }
    std::vector<Finished> finished;
    std::unique_lock<std::mutex> lock(m_mutex);
    // Finished files wait for the deadline, so that this thread wakes only for
    // them in bulk. With a lookup on its way, return at once to take it in
    // when it lands.
    while (!m_recall && !m_stop.load() && m_doneCount < m_count &&
           std::chrono::steady_clock::now() < deadline)
        m_progress.wait_for(lock, kPoll);
    finished.swap(m_finished);
    return finished;
}

bool AnalysisPass::IsComplete()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_doneCount == m_count && m_finished.empty();
}
