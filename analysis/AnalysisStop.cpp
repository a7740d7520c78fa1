#include "AnalysisStop.h"

namespace {

thread_local const std::atomic<bool>* t_stop = nullptr;

} // namespace

AnalysisStopScope::AnalysisStopScope(const std::atomic<bool>* flag)
    : m_outer(t_stop)
{
    t_stop = flag;
}

AnalysisStopScope::~AnalysisStopScope()
{
    t_stop = m_outer;
}

bool AnalysisStopRequested()
{
    return t_stop && t_stop->load(std::memory_order_relaxed);
}
