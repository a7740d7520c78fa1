#pragma once

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

namespace Vexmw {

class ConnectionControlImpl;

// Runs connection attempts away from the GUI thread until one succeeds, the
// wrapper cannot connect at all, or it is asked to stop.
class ConnectingThread final : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ConnectingThread)

public:
    explicit ConnectingThread(ConnectionControlImpl& control, int retryIntervalMs = 1000);
    ~ConnectingThread() override;

    // Both return at once; stop() interrupts the pause between attempts, and
    // wait() then covers at most the attempt under way.
    void begin();
    void stop();
    bool stopRequested() const;

protected:
    void run() override;

private:
    ConnectionControlImpl& m_control;
    const int m_retryIntervalMs;
    mutable QMutex m_mutex;
    QWaitCondition m_wake;
    bool m_stop = false;
};

} // namespace Vexmw
