#pragma once

#include "Bookmark.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class QSettings;

inline constexpr int kTableColumnCount = 15;
inline constexpr int kAllColumnsVisible = (1 << kTableColumnCount) - 1;
inline constexpr int kMaxRecentFolders = 10;
inline constexpr int kDefaultRowHeight = 22;
inline constexpr double kDefaultMatchTargetLufs = -23.0;
inline constexpr double kDefaultMatchMaxBoostDb = 12.0;
inline constexpr int kDefaultDetailViewHeight = 150;
inline constexpr int kMinDetailViewHeight = 40;
inline constexpr int kMaxDetailViewHeight = 2000;

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
    int left = -1;
    int top = -1;
    int width = 0;
    int height = 0;
    int columnState = kAllColumnsVisible;
    QStringList recentDirs;
    QString externalExecutePath;
    QString externalExecuteArgs;
    int seekTimeMs = 1000;
    QString gacAddress = QStringLiteral("localhost");
    int gacPortNumber = 4444;
    int colorTheme = 0;
    QString fontTreeFamily;
    int fontTreeSize = -1;
    bool fontTableIsFit = true;
    QString fontTableFamily;
    int fontTableSize = -1;
    // The UCS CatID list (CSV/TSV) that names the categories of UCS file names.
    QString ucsCatIdListPath;
    BookmarkList bookmarks;
    // Bookmarks of the older layout (paths only), written back unchanged.
    QStringList legacyBookmarkDirs;
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

    bool HasValidGeometry() const { return width >= 1 && height >= 1 && left >= 0 && top >= 0; }
};

// The per-user INI file. Only the central manager opens it: once to load at
// start-up and once to save at shutdown.
class SettingsStore final
{
public:
    // Reads every key over the values already in `s` (which act as the
    // defaults), except that a stored "columnState" of 0, a theme out of range
    // and a loudness target, boost or detail-view height out of range (or not
    // a number) do not replace the built-in values, and legacy bookmarks whose
    // folders exist are merged into the bookmark list.
    static void Load(QSettings& store, StoredSettings& s);
    static void Save(QSettings& store, const StoredSettings& s);

    // Opens the INI file of organisation "Orvane Works", application "Tesk".
    static void Load(StoredSettings& s);
    static void Save(const StoredSettings& s);

    // Moves `path` to the front of the recent folders, dropping duplicates and
    // keeping at most ten entries.
    static void PushRecentFolder(QStringList& recent, const QString& path);
};
