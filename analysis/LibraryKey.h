#pragma once

#include <QHash>
#include <QString>

#include <vector>

// Where a file's row is kept in the analysis library. Under a library root
// (a shared folder known by one name on every machine) a file is keyed by the
// root's name and its path relative to the root, with '/' separators, so that
// machines mounting the share in different places share its rows; a file
// outside every root is keyed by its absolute path and an empty root.
struct LibraryKey
{
    QString root;
    QString path;

    // A file outside every root.
    static LibraryKey Absolute(const QString& absolutePath) { return {QString(), absolutePath}; }

    bool operator==(const LibraryKey& o) const { return root == o.root && path == o.path; }
    bool operator!=(const LibraryKey& o) const { return !(*this == o); }
    bool operator<(const LibraryKey& o) const
    {
        return root != o.root ? root < o.root : path < o.path;
    }
};

inline uint qHash(const LibraryKey& key, uint seed = 0)
{
    return qHash(key.root, seed) ^ qHash(key.path, seed + 1);
}

using LibraryKeys = std::vector<LibraryKey>;
