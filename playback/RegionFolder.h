#pragma once

#include <QString>

#include <memory>

class QLockFile;

// Where the region files of one run of the program go: a folder of its own
// under "tesk-regions" in the temporary location, with a lock file held while
// the run lasts. At the start, the folders of runs that ended without
// cleaning up (a crash, a kill) are emptied; at the end, this run's own.
// Only region files (and the partial files of an interrupted write) are
// deleted: anything else someone put there stays, and so does its folder.
class RegionFolder final
{
public:
    // `base` defaults to "tesk-regions" in the temporary location (the home
    // folder when that does not exist).
    explicit RegionFolder(const QString& base = QString());
    ~RegionFolder();
    RegionFolder(const RegionFolder&) = delete;
    RegionFolder& operator=(const RegionFolder&) = delete;

    // This run's folder (made when the first file is written into it).
    QString Path() const { return path; }

    // Whether a file name is one the region export writes.
    static bool IsRegionFileName(const QString& name);

private:
    // Deletes the region files in `dir` and the folder when that left it empty.
    static void Empty(const QString& dir);
    void RemoveStaleRuns(const QString& base);

    QString path;
    std::unique_ptr<QLockFile> lock;
};
