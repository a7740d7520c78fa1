#pragma once

#include <atomic>

// Lets a pass of analysis workers stop a long analysis between two blocks of
// audio: a worker thread names the flag it obeys for as long as a scope lives,
// and the streaming loops of the analysis look at it once a block. A stopped
// analysis leaves an incomplete record, which KrokManager does not store.
class AnalysisStopScope final
{
public:
    explicit AnalysisStopScope(const std::atomic<bool>* flag);
    ~AnalysisStopScope();
    AnalysisStopScope(const AnalysisStopScope&) = delete;
    AnalysisStopScope& operator=(const AnalysisStopScope&) = delete;

private:
    const std::atomic<bool>* m_outer;
};

// Whether the flag this thread obeys is set; false on a thread without one.
bool AnalysisStopRequested();
