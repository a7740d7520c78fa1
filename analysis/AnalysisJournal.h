#pragma once

#include <QString>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>

// A small journal in the cache folder that makes a crash cost one crash:
// before a file is analysed its path goes in, and out again once the analysis
// is done. An entry left behind by a process that is gone names the file that
// took it down; that file is then reported as failed, and skipped, until its
// size or modification time changes. The window and tesk-scan share the file;
// each process locks it (flock) for every write, and entries of processes
// still running are left alone. Thread-safe.
//
// Several files may be in flight at once (one per analysis thread). When a
// process dies with more than one, it cannot be told which took it down: each
// becomes a suspect rather than a failure, and is analysed again alone (Turn),
// so that a second crash names it and a suspect that passes is cleared.
class AnalysisJournal final
{
public:
    AnalysisJournal() = default;
    ~AnalysisJournal();
    AnalysisJournal(const AnalysisJournal&) = delete;
    AnalysisJournal& operator=(const AnalysisJournal&) = delete;

    // The journal both programs use, in the user's cache folder.
    static QString DefaultPath();

    // Opens or creates the journal and takes over what crashed processes left.
    // False (and every other call a no-op) when it cannot be written.
    bool open(const QString& path);
    bool isOpen() const { return m_fd >= 0; }

    // Whether the file took an analysis down before and has not changed since.
    // A failed file that has changed is forgotten.
    bool isFailed(const std::string& path, std::int64_t size, std::int64_t modifiedNs);

    // Whether the file was in flight beside others when a process died, and
    // has not changed since. A suspect that has changed is forgotten.
    bool isSuspect(const std::string& path, std::int64_t size, std::int64_t modifiedNs);
    // A suspect analysed to its end is no longer one.
    void clear(const std::string& path);

    // Records that the analysis of `path` starts; the token ends it.
    std::uint64_t begin(const std::string& path, std::int64_t size, std::int64_t modifiedNs);
    void end(std::uint64_t token);

    // The right to analyse a file while the object lives: shared with the
    // other analyses of this process, or alone (waiting until those in flight
    // are done, and holding new ones back meanwhile).
    class Turn final
    {
    public:
        Turn(AnalysisJournal& journal, bool alone);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        AnalysisJournal& m_journal;
        bool m_alone;
    };

private:
    struct Stamp
    {
        std::int64_t size = 0;
        std::int64_t modifiedNs = 0;
    };
    void appendLocked(const std::string& line);
    // Reads the whole journal and writes it back compacted. Entries of dead
    // processes (and of this one that it no longer has running) become failures.
    void rebuildLocked(bool atOpen);

    std::mutex m_mutex;
    int m_fd = -1;
    // The turns: analyses in flight, one waiting or running alone.
    std::mutex m_turnMutex;
    std::condition_variable m_turnChanged;
    int m_sharedTurns = 0;
    int m_aloneWaiting = 0;
    bool m_aloneRunning = false;
    std::uint64_t m_nextToken = 1;
    std::set<std::uint64_t> m_running;
    std::unordered_map<std::string, Stamp> m_failed;
    std::unordered_map<std::string, Stamp> m_suspects;
    int m_linesSinceRebuild = 0;
};
