#include "SettingsSaver.h"

SettingsSaver::SettingsSaver()
    : thread([this] { run(); })
{}

SettingsSaver::~SettingsSaver()
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        quit = true;
    }
    wake.notify_all();
    thread.join();
}

void SettingsSaver::Post(const StoredSettings& s)
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        pending = s;
    }
    wake.notify_all();
}

void SettingsSaver::Flush()
{
    std::unique_lock<std::mutex> lock(mutex);
    idle.wait(lock, [this] { return !pending && !writing; });
}

void SettingsSaver::run()
{
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        wake.wait(lock, [this] { return pending || quit; });
        if (!pending)
            return;
        const StoredSettings s = std::move(*pending);
        pending.reset();
        writing = true;
        lock.unlock();
        SettingsStore::Save(s);
        lock.lock();
        writing = false;
        idle.notify_all();
    }
}
