#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM, SIGINT and SIGHUP (shutdown, logout, Ctrl+C, a closed
// terminal) into a Qt signal on the thread that made this object, so the
// program saves and quits as it does when its window is closed. A second
// signal of a kind already being handled ends the program at once. The handlers
// are process-wide: one object at a time.
class TerminationSignals final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TerminationSignals)

public:
    explicit TerminationSignals(QObject* parent = nullptr);
    // Puts back the handlers that were there before.
    ~TerminationSignals() override;

signals:
    void SigTerminationRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier* notifier = nullptr;
};
