#pragma once

#include "LibraryKey.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QVector>

// The library roots of this machine: each maps a shared folder, as this
// machine sees it, to the name every machine gives it ("SFX" = /mnt/sfx
// here, S:\ on another). Turns a file's absolute path into its library key
// and back. Written in the settings as "NAME=FOLDER" entries.
class LibraryRoots final
{
    Q_DECLARE_TR_FUNCTIONS(LibraryRoots)

public:
    struct Root
    {
        QString name;
        QString folder; // absolute, '/' separators, no trailing '/' but for "/" or "S:/"
    };

    LibraryRoots() = default;

    // Reads "NAME=FOLDER" entries. An entry with an empty name, a name given
    // twice or a folder that is not absolute is left out, with a line for the
    // user in `errors`.
    static LibraryRoots Parse(const QStringList& entries, QStringList* errors = nullptr);
    QStringList Entries() const;
    const QVector<Root>& Roots() const { return roots; }
    bool IsEmpty() const { return roots.isEmpty(); }

    // The key of the file at `absolutePath`: under the innermost root holding
    // it, else the path itself.
    LibraryKey KeyOf(const QString& absolutePath) const;
    // The file a key stands for on this machine; empty when its root is not
    // one of this machine's.
    QString PathOf(const LibraryKey& key) const;
    // The keys whose rows hold the files of `folder`: its own, and when
    // `recursive` every root lying inside it.
    LibraryKeys FolderKeys(const QString& folder, bool recursive) const;

private:
    // Innermost first, so that the first root that holds a path is the one.
    QVector<Root> roots;
};
