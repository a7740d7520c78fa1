#pragma once

#include "Bookmark.h"

#include <QString>
#include <QStringList>

class QSettings;

inline constexpr int kTableColumnCount = 15;
inline constexpr int kAllColumnsVisible = (1 << kTableColumnCount) - 1;
inline constexpr int kMaxRecentFolders = 10;
inline constexpr int kDefaultRowHeight = 22;

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
    BookmarkList bookmarks;
    // Bookmarks of the older layout (paths only), written back unchanged.
    QStringList legacyBookmarkDirs;

    bool HasValidGeometry() const { return width >= 1 && height >= 1 && left >= 0 && top >= 0; }
};

// The per-user INI file. Only the central manager opens it: once to load at
// start-up and once to save at shutdown.
class SettingsStore final
{
public:
    // Reads every key over the values already in `s` (which act as the
    // defaults), except that a stored "columnState" of 0 and a theme out of
    // range do not replace the built-in values, and legacy bookmarks whose
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
