#include "SettingsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

constexpr QSettings::Format kFormat = QSettings::IniFormat;

QString organisation()
{
    return QStringLiteral("Orvane Works");
}

QString application()
{
    return QStringLiteral("Tesk");
}

} // namespace

void SettingsStore::Load(QSettings& store, StoredSettings& s)
{
    s.rootPath = store.value(QStringLiteral("RootPath"), s.rootPath).toString();
    s.rowHeight = store.value(QStringLiteral("rowHeight"), s.rowHeight).toInt();
    s.loudnessFlag = store.value(QStringLiteral("loudnessFlag"), s.loudnessFlag).toBool();
    s.loudnessVoltMode =
        store.value(QStringLiteral("loudnessVoltMode"), s.loudnessVoltMode).toBool();
    s.multiPlotFlag = store.value(QStringLiteral("multiPlotFlag"), s.multiPlotFlag).toBool();
    s.showHiddenFlag = store.value(QStringLiteral("showHiddenFlag"), s.showHiddenFlag).toBool();
    s.autoPlaybackFlag =
        store.value(QStringLiteral("autoPlaybackFlag"), s.autoPlaybackFlag).toBool();
    s.playlistFlag = store.value(QStringLiteral("playlistFlag"), s.playlistFlag).toBool();
    s.analysisLibraryFlag =
        store.value(QStringLiteral("analysisLibrary"), s.analysisLibraryFlag).toBool();
    s.left = store.value(QStringLiteral("left"), -1).toInt();
    s.top = store.value(QStringLiteral("top"), -1).toInt();
    s.width = store.value(QStringLiteral("width"), 0).toInt();
    s.height = store.value(QStringLiteral("height"), 0).toInt();
    // 0 would hide every column: it means "never stored", so the built-in mask stays.
    const int columnState = store.value(QStringLiteral("columnState"), 0).toInt();
    if (columnState != 0)
        s.columnState = columnState;
    s.recentDirs = store.value(QStringLiteral("recentDirs"), s.recentDirs).toStringList();
    s.externalExecutePath =
        store.value(QStringLiteral("externalExecutePath"), s.externalExecutePath).toString();
    s.externalExecuteArgs =
        store.value(QStringLiteral("externalExecuteArgs"), s.externalExecuteArgs).toString();
    s.seekTimeMs = store.value(QStringLiteral("seekTimeMs"), s.seekTimeMs).toInt();
    s.gacAddress = store.value(QStringLiteral("GACAddress"), s.gacAddress).toString();
    s.gacPortNumber = store.value(QStringLiteral("GACPortNumber"), s.gacPortNumber).toInt();
    const int theme = store.value(QStringLiteral("ColorTheme"), 0).toInt();
    s.colorTheme = (theme >= 0 && theme <= 2) ? theme : 0;
    s.fontTreeFamily = store.value(QStringLiteral("fontTreeFamily"), s.fontTreeFamily).toString();
    s.fontTreeSize = store.value(QStringLiteral("fontTreeSize"), s.fontTreeSize).toInt();
    s.fontTableIsFit = store.value(QStringLiteral("fontTableIsFit"), s.fontTableIsFit).toBool();
    s.fontTableFamily =
        store.value(QStringLiteral("fontTableFamily"), s.fontTableFamily).toString();
    s.fontTableSize = store.value(QStringLiteral("fontTableSize"), s.fontTableSize).toInt();

    s.bookmarks.clear();
    const int n = store.beginReadArray(QStringLiteral("bookmarkRoot"));
    for (int i = 0; i < n; ++i) {
        store.setArrayIndex(i);
        s.bookmarks.append({store.value(QStringLiteral("bookmarkDirPath"), QString()).toString(),
                            store.value(QStringLiteral("bookmarkName"), QString()).toString()});
    }
    store.endArray();

    s.legacyBookmarkDirs =
        store.value(QStringLiteral("bookmarkDirs"), QStringList()).toStringList();
    for (const QString& path : qAsConst(s.legacyBookmarkDirs)) {
        bool known = false;
        for (int i = 0; i < n && !known; ++i)
            known = s.bookmarks.at(i).path == path;
        // A vanished folder is not shown but stays in the legacy list, which is written back.
        if (known || !QFileInfo(path).isDir())
            continue;
        s.bookmarks.append({path, QDir(path).dirName()});
    }
}

void SettingsStore::Save(QSettings& store, const StoredSettings& s)
{
    store.remove(QStringLiteral("enlargeFlag"));
    store.setValue(QStringLiteral("RootPath"), s.rootPath);
    store.setValue(QStringLiteral("rowHeight"), s.rowHeight);
    store.setValue(QStringLiteral("loudnessFlag"), s.loudnessFlag);
    store.setValue(QStringLiteral("loudnessVoltMode"), s.loudnessVoltMode);
    store.setValue(QStringLiteral("multiPlotFlag"), s.multiPlotFlag);
    store.setValue(QStringLiteral("showHiddenFlag"), s.showHiddenFlag);
    store.setValue(QStringLiteral("autoPlaybackFlag"), s.autoPlaybackFlag);
    store.setValue(QStringLiteral("playlistFlag"), s.playlistFlag);
    store.setValue(QStringLiteral("analysisLibrary"), s.analysisLibraryFlag);
    store.setValue(QStringLiteral("left"), s.left);
    store.setValue(QStringLiteral("top"), s.top);
    store.setValue(QStringLiteral("width"), s.width);
    store.setValue(QStringLiteral("height"), s.height);
    store.setValue(QStringLiteral("columnState"), s.columnState);
    // An empty list keeps what the file had.
    if (!s.recentDirs.isEmpty())
        store.setValue(QStringLiteral("recentDirs"), s.recentDirs);
    store.setValue(QStringLiteral("externalExecutePath"), s.externalExecutePath);
    store.setValue(QStringLiteral("externalExecuteArgs"), s.externalExecuteArgs);
    store.setValue(QStringLiteral("seekTimeMs"), s.seekTimeMs);
    store.setValue(QStringLiteral("GACAddress"), s.gacAddress);
    store.setValue(QStringLiteral("GACPortNumber"), s.gacPortNumber);
    store.setValue(QStringLiteral("ColorTheme"), s.colorTheme);
    store.setValue(QStringLiteral("fontTreeFamily"), s.fontTreeFamily);
    store.setValue(QStringLiteral("fontTreeSize"), s.fontTreeSize);
    store.setValue(QStringLiteral("fontTableIsFit"), s.fontTableIsFit);
    store.setValue(QStringLiteral("fontTableFamily"), s.fontTableFamily);
    store.setValue(QStringLiteral("fontTableSize"), s.fontTableSize);

    // Rewritten whole, so that removed bookmarks do not linger as stale elements.
    store.remove(QStringLiteral("bookmarkRoot"));
    store.beginWriteArray(QStringLiteral("bookmarkRoot"));
    for (int i = 0; i < s.bookmarks.size(); ++i) {
        store.setArrayIndex(i);
        store.setValue(QStringLiteral("bookmarkDirPath"), s.bookmarks.at(i).path);
        store.setValue(QStringLiteral("bookmarkName"), s.bookmarks.at(i).name);
    }
    store.endArray();

    if (s.legacyBookmarkDirs.isEmpty())
        store.remove(QStringLiteral("bookmarkDirs"));
    else
        store.setValue(QStringLiteral("bookmarkDirs"), s.legacyBookmarkDirs);
    store.sync();
}

void SettingsStore::Load(StoredSettings& s)
{
    QSettings store(kFormat, QSettings::UserScope, organisation(), application());
    Load(store, s);
}

void SettingsStore::Save(const StoredSettings& s)
{
    QSettings store(kFormat, QSettings::UserScope, organisation(), application());
    Save(store, s);
}

void SettingsStore::PushRecentFolder(QStringList& recent, const QString& path)
{
    recent.removeAll(path);
    recent.prepend(path);
    if (recent.size() > kMaxRecentFolders)
        recent.removeLast();
}
