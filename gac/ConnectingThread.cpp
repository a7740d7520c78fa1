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
        QMutexLocker lock(&m_mutex);
        m_stop = false;
    }
    start();
}

void ConnectingThread::stop()
{
    QMutexLocker lock(&m_mutex);
    m_stop = true;
    m_wake.wakeAll();
}

bool ConnectingThread::stopRequested() const
{
    QMutexLocker lock(&m_mutex);
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
        QMutexLocker lock(&m_mutex);
        if (!m_stop)
            m_wake.wait(&m_mutex, static_cast<unsigned long>(m_retryIntervalMs));
    }
}

} // namespace Vexmw
