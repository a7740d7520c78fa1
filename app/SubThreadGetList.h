#pragma once

#include <QList>
#include <QMutex>
#include <QString>
#include <QThread>

// Walks the root folder and collects the supported audio files. One object,
// reused for every run; the manager owns it.
class SubThreadGetList final : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubThreadGetList)

public:
    explicit SubThreadGetList(QObject* parent = nullptr);
    ~SubThreadGetList() override;

    // Clears the cancel flag, stores the run's arguments and starts the thread.
    // Must not be called while the thread runs.
    void start(const QString& root, bool recursive, bool showHidden);
    void cancel();

signals:
    void SigFileListCreated(QList<QString> fileList);

protected:
    void run() override;

private:
    bool isCancelRequested();

    QMutex mutex;
    QString rootPath;
    bool recursive = false;
    bool showHidden = false;
    bool cancelRequested = false;
};
