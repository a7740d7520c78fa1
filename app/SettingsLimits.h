#pragma once

// The ranges the dialogs and menus allow. Values read from the settings file
// are held to the same ranges, so a hand-edited file cannot give the program a
// state that the user could not have chosen.

inline constexpr int kTableColumnCount = 15;
inline constexpr int kAllColumnsVisible = (1 << kTableColumnCount) - 1;

inline constexpr int kDefaultRowHeight = 22;
inline constexpr int kMinRowHeight = 10;
inline constexpr int kMaxRowHeight = 200;

inline constexpr int kMinSeekTimeMs = 100;
inline constexpr int kMaxSeekTimeMs = 300000;

// Analysis threads; 0 stands for one per processor core. More than any
// processor of today has is taken as is.
inline constexpr int kMaxAnalysisThreads = 256;

inline constexpr int kMinFontPointSize = 1;
inline constexpr int kMaxFontPointSize = 200;

inline constexpr int kMinPortNumber = 1;
inline constexpr int kMaxPortNumber = 65535;

inline constexpr int kMaxRecentFolders = 10;
// Shared folders of the analysis library; a studio has a handful.
inline constexpr int kMaxLibraryRoots = 100;
// More than any menu can usefully show; a larger stored count is damage.
inline constexpr int kMaxBookmarks = 1000;
// Paths, arguments, font names and addresses; the longest path Windows accepts.
inline constexpr int kMaxSettingTextLength = 32767;

inline constexpr double kDefaultMatchTargetLufs = -23.0;
inline constexpr int kMinMatchTargetLufs = -60;
inline constexpr int kMaxMatchTargetLufs = 0;
inline constexpr double kDefaultMatchMaxBoostDb = 12.0;
inline constexpr int kMaxMatchBoostDb = 40;

inline constexpr int kDefaultDetailViewHeight = 150;
inline constexpr int kMinDetailViewHeight = 40;
inline constexpr int kMaxDetailViewHeight = 2000;

// A header state of QHeaderView::saveState: a few bytes per column.
inline constexpr int kMaxHeaderStateBytes = 65536;
