#pragma once

#include "SettingsStore.h"

#include <QtGlobal>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

// Writes settings to the per-user file on a thread of its own, so that the GUI
// thread never waits on the disk while the user works. Snapshots posted while
// a write runs are merged: only the newest is written next.
class SettingsSaver final
{
    Q_DISABLE_COPY_MOVE(SettingsSaver)

public:
    SettingsSaver();
    // Writes whatever is still pending before the thread ends.
    ~SettingsSaver();

    // Returns at once.
    void Post(const StoredSettings& s);
    // Returns once everything posted so far is in the file: for the end of
    // the session, when nothing may be left behind.
    void Flush();

private:
    void run();

    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable idle;
    std::optional<StoredSettings> pending;
    bool writing = false;
    bool quit = false;
    std::thread thread;
};
