#pragma once

#include "AudioFileInfo.h"
#include "FileStamp.h"
#include "LibraryKey.h"

#include <chrono>
#include <optional>
#include <vector>

// Raised whenever the analysis changes what it computes: rows written by
// another analysis version count as missing and are analysed again.
inline constexpr int kAnalysisVersion = 4;

// What the library keeps for one file: the record is valid while the file's
// stamp is unchanged.
struct LibraryRow
{
    LibraryKey key;
    FileStamp stamp;
    AudioFileInfo info;
};

// Rows in the order of the keys asked for; nothing where a key has no row.
using LibraryRows = std::vector<std::optional<LibraryRow>>;

// A persistent store of analysis records, keyed by file. An object is used
// from one thread only (the library thread); it reports its problems as
// texts for the user and carries on without the store when it must, so every
// call can always be made.
class AnalysisLibrary
{
public:
    using Clock = std::chrono::steady_clock;

    virtual ~AnalysisLibrary() = default;

    // Opens or creates the store; false when it cannot be used (see TakeProblem).
    virtual bool Open() = 0;
    virtual void Close() = 0;
    // Whether rows are read and written; false after a problem made it give up.
    virtual bool IsUsable() const = 0;

    // The rows of `keys`, in the same order; nothing for a key without a row of
    // this analysis version.
    virtual LibraryRows Fetch(const LibraryKeys& keys) = 0;
    // Inserts or replaces the rows, all or none.
    virtual bool Store(const std::vector<LibraryRow>& rows) = 0;
    // The keys stored under `folder` (a key whose path is a folder's; an empty
    // path stands for the whole root): those directly inside it, or at any
    // depth when `recursive`.
    virtual LibraryKeys KeysIn(const LibraryKey& folder, bool recursive) = 0;
    virtual bool Remove(const LibraryKeys& keys) = 0;
    // Removes every row.
    virtual bool Clear() = 0;

    // A problem the user should hear of, each kind once; empty when there is none.
    virtual QString TakeProblem() = 0;

    // Work of its own the store wants to do while nothing else is asked of it
    // (trying a server again, sending rows kept meanwhile), and when.
    virtual Clock::time_point MaintenanceDue() const { return Clock::time_point::max(); }
    virtual void Maintain() {}
};
