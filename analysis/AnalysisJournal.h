#pragma once

#include <QString>

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

    // Records that the analysis of `path` starts; the token ends it.
    std::uint64_t begin(const std::string& path, std::int64_t size, std::int64_t modifiedNs);
    void end(std::uint64_t token);

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
    std::uint64_t m_nextToken = 1;
    std::set<std::uint64_t> m_running;
    std::unordered_map<std::string, Stamp> m_failed;
    int m_linesSinceRebuild = 0;
};
