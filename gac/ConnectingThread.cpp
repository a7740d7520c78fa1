#include "ConnectingThread.h"

#include "ConnectionControlImpl.h"

namespace Vexmw {

ConnectingThread::ConnectingThread(ConnectionControlImpl& control, int retryIntervalMs)
    : m_control(control)
    , m_retryIntervalMs(retryIntervalMs)
{}

ConnectingThread::~ConnectingThread()
{
    stop();
    wait();
}

void ConnectingThread::begin()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = false;
    }
    start();
}

void ConnectingThread::stop()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stop = true;
    m_wake.notify_all();
}

bool ConnectingThread::stopRequested() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_stop;
}

void ConnectingThread::run()
{
    for (;;) {
        if (stopRequested())
            return;
        const auto outcome = m_control.tryConnect();
        if (outcome == ConnectionControlImpl::AttemptOutcome::Impossible)
            return;
        // A disconnect that arrived during the attempt leaves us unconnected:
        // keep trying instead of ending.
        if (outcome == ConnectionControlImpl::AttemptOutcome::Connected && m_control.isConnected())
            return;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait_for(lock, std::chrono::milliseconds(m_retryIntervalMs),
                        [this] { return m_stop; });
    }
}

} // namespace Vexmw
