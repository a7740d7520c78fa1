#pragma once

#include "Bookmark.h"
#include "SettingsLimits.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class QSettings;

// Everything that persists between sessions, with the defaults of a fresh user.
struct StoredSettings
{
    QString rootPath;
    int rowHeight = kDefaultRowHeight;
    bool loudnessFlag = false;
    bool loudnessVoltMode = false;
    bool multiPlotFlag = false;
    bool showHiddenFlag = false;
    bool autoPlaybackFlag = true;
    bool playlistFlag = false;
    // Analysis results kept between sessions in the persistent library.
    bool analysisLibraryFlag = true;
    // The studio's shared library on a PostgreSQL server instead of this
    // computer's (no password here: libpq reads it from its own places).
    bool libraryServerFlag = false;
    QString libraryHost;
    int libraryPort = 5432;
    QString libraryDatabase;
    QString libraryUser;
    // Library roots, "NAME=FOLDER" each.
    QStringList libraryRoots;
    int left = -1;
    int top = -1;
    int width = 0;
    int height = 0;
    int columnState = kAllColumnsVisible;
    QStringList recentDirs;
    QString externalExecutePath;
    QString externalExecuteArgs;
    int seekTimeMs = 1000;
    // Files analysed at once; 0: one per processor core.
    int analysisThreads = 0;
    QString gacAddress = QStringLiteral("localhost");
    int gacPortNumber = 4444;
    int colorTheme = 0;
    QString fontTreeFamily;
    int fontTreeSize = -1;
    bool fontTableIsFit = true;
    QString fontTableFamily;
    int fontTableSize = -1;
    BookmarkList bookmarks;
    // Bookmarks of the older layout (paths only), written back unchanged.
    QStringList legacyBookmarkDirs;

    // The UCS CatID list (CSV/TSV) that names the categories of UCS file names.
    QString ucsCatIdListPath;
    // Preview: level matching, the output device ("" for the system default)
    // and the detail view under the table.
    bool matchLoudnessFlag = false;
    double matchLoudnessTarget = kDefaultMatchTargetLufs;
    double matchLoudnessMaxBoost = kDefaultMatchMaxBoostDb;
    QString outputDevice;
    bool detailViewVisible = true;
    int detailViewHeight = kDefaultDetailViewHeight;
    bool detailViewChannels = false;
    // "Display files in subfolders as well".
    bool recursiveFlag = false;
    // The file table's header as QHeaderView::saveState gives it: column
    // order, widths, hidden columns, sort column and order. Empty until the
    // table has been shown once.
    QByteArray tableHeaderState;

    // Set when the stored bookmark array could not be trusted (a count that is
    // not a count, or more bookmarks than kMaxBookmarks): the array is then
    // left in the file as it is until the user changes the bookmarks.
    bool bookmarkArrayKept = false;
    BookmarkList bookmarksAsLoaded;

    bool HasValidGeometry() const { return width >= 1 && height >= 1 && left >= 0 && top >= 0; }

    // Compares what would be written to the file.
    friend bool operator==(const StoredSettings& a, const StoredSettings& b);
    friend bool operator!=(const StoredSettings& a, const StoredSettings& b) { return !(a == b); }
};

// The per-user INI file. Every key is described once, in a table in the .cpp
// (name, member, accepted range); loading checks each value against it.
class SettingsStore final
{
public:
    // Reads every key over the values already in `s` (which act as the
    // defaults). A value of the wrong type keeps the default, a number out of
    // range is clamped into it (the theme falls back to System), texts and
    // lists are held to their limits, and bookmarks are read only as far as
    // the file really holds them. Returns one line per value that was not
    // taken as stored, for the caller to report. Keys this program does not
    // know are never touched, so they survive every save.
    static QStringList Load(QSettings& store, StoredSettings& s);
    static void Save(QSettings& store, const StoredSettings& s);

    // Opens the INI file of organisation "Orvane Works", application "Tesk".
    // QSettings writes it through a temporary file and a rename, so the file
    // on disk is always either the previous or the new one.
    static QStringList Load(StoredSettings& s);
    static void Save(const StoredSettings& s);

    // Removes lock files that a killed writer left empty, which would make
    // every save of this session wait half a minute. Done by Load.
    static void RemoveAbandonedLocks(const QString& iniPath);

    // Moves `path` to the front of the recent folders, dropping duplicates and
    // keeping at most ten entries.
    static void PushRecentFolder(QStringList& recent, const QString& path);
};
