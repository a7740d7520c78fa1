#pragma once

#include <QList>
#include <QString>
#include <QThread>

#include <atomic>

// Walks the root folder and collects the supported audio files, in the
// natural order of their paths (PathRanking), which is the order the table
// shows while the files are analysed. One object, reused for every run; the
// manager owns it.
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
    QString rootPath;
    bool recursive = false;
    bool showHidden = false;
    std::atomic<bool> cancelRequested{false};
};
