#pragma once

#include <QString>

// What a path handed in as the new root asks for. Every way of choosing a
// root (typed, dropped, picked, bookmarked, the command line) goes through
// here, so that one folder always has one spelling: absolute, cleaned, no
// trailing slash. That spelling is what the recent folders and the bookmarks
// store and compare.
struct RootRequest
{
    enum Refusal
    {
        Accepted,
        Empty,
        // Nothing exists at the path.
        Missing,
        // A file, but not one of the audio files Tesk lists.
        NotAudio,
    };

    // The folder to list; for an accepted audio file, the file's folder.
    QString folder;
    // The audio file to select once its folder is listed; empty for a folder.
    QString file;
    Refusal refusal = Accepted;

    bool isAccepted() const { return refusal == Accepted; }
};

// `path` made absolute (against the working folder) and cleaned, with no
// trailing slash except for the file-system root itself; empty stays empty.
QString NormalizedRootPath(const QString& path);

// Resolves `path` as the manager takes it: an existing folder, or an existing
// supported audio file (its folder, with the file to select). A path that does
// not exist is kept as the folder (normalised) and marked Missing, so that a
// stored root on a disk that is away is not forgotten.
RootRequest ResolveRootPath(const QString& path);

// The same for text the user typed: surrounding blanks are dropped and a
// leading "~" stands for the home folder.
RootRequest ResolveTypedRoot(const QString& text);
