#pragma once

#include "AudioFileInfo.h"

#include <QStringList>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class KrokManager;

// One pass of the analysis over a list of files, on several worker threads at
// once. The thread that drives the pass (Collect) checks the files against
// the registry and the persistent library a chunk at a time, ahead of the
// workers; a file whose record is current is finished there without being
// opened, the rest go to the workers. Workers take the wanted rows first (the
// ones the table shows), then the others in list order. Every file's record
// is the one a single thread would make: each is analysed by one worker alone,
// and nothing in the analysis is shared between threads.
class AnalysisPass final
{
public:
    // Rows wanted first: first and last index packed by WantedRows(); a
    // negative first index wants none.
    static std::int64_t WantedRows(int first, int last)
    {
        return (std::int64_t(first) << 32) | std::uint32_t(last);
    }
    static constexpr std::int64_t kNoWantedRows = -(std::int64_t(1) << 32);

    // `stop` and `wanted` belong to the caller and may be set from any
    // thread at any time: `stop` ends the pass (each worker within one block
    // of audio), `wanted` names the rows to take next. With `refresh`, every
    // file is analysed afresh: neither the registry's records nor the library
    // are asked.
    AnalysisPass(KrokManager& registry, const QStringList& paths, int workers, bool refresh,
                 const std::atomic<bool>& stop, const std::atomic<std::int64_t>& wanted);
    // Stops the workers (they obey `stop` or finish the files at hand) and joins them.
    ~AnalysisPass();
    AnalysisPass(const AnalysisPass&) = delete;
    AnalysisPass& operator=(const AnalysisPass&) = delete;

    struct Finished
    {
        int index;
        std::shared_ptr<const AudioFileInfo> record;
    };
    // Does the next piece of library work (if any is due), waits until `wait`
    // has passed, the pass is complete or stopped, or library work is due
    // again, and returns the files finished since the last call, in the order
    // they finished. Called by one thread only.
    std::vector<Finished> Collect(std::chrono::milliseconds wait);
    // Every file finished (and collected).
    bool IsComplete();
    bool IsStopped() const { return m_stop.load(); }

    // Files checked against the registry and the library in one lookup.
    static constexpr int kRecallChunk = 512;
    // What the workers default to: one per processor core.
    static int DefaultWorkerCount();

private:
    enum State : std::uint8_t
    {
        Unchecked, // not yet looked up
        Ready,     // to be analysed
        Taken,     // a worker has it
        Done,
    };
    struct PendingRecall;

    void work();
    // Under m_mutex: the next file for a worker, or -1.
    int takeLocked();
    // Looks rows up in the registry and the library (blocks on the library,
    // unless `m_stop` is set meanwhile) and marks them Ready or Done.
    void beginRecall(int from, int to);
    bool endRecall();
    void recallWanted();
    void settle(const QStringList& chunk, const std::vector<int>& indexes);

    KrokManager& m_registry;
    const QStringList m_paths;
    const std::atomic<bool>& m_stop;
    const std::atomic<std::int64_t>& m_wanted;
    const int m_count;

    std::mutex m_mutex;
    std::condition_variable m_workReady;
    std::condition_variable m_progress;
    std::vector<State> m_states;
    int m_cursor = 0;    // every index before it is Taken or Done
    int m_checkedTo = 0; // every index before it has been looked up
    int m_doneCount = 0;
    bool m_closing = false;
    std::vector<Finished> m_finished;

    // Driver thread only.
    std::unique_ptr<PendingRecall> m_recall;
    int m_collected = 0;

    std::vector<std::thread> m_workers;
};
