#include "SettingsStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <algorithm>
#include <climits>
#include <cmath>
#include <optional>
#include <variant>

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

// One key of the file. For a number, low and high bound its value; for a text
// or bytes, the length; for a list, the number of entries.
struct Key
{
    const char* name;
    std::variant<QString StoredSettings::*, int StoredSettings::*, double StoredSettings::*,
                 bool StoredSettings::*, QStringList StoredSettings::*,
                 QByteArray StoredSettings::*>
        member;
    int low = 0;
    int high = 0;
    // A number out of range is clamped into it; otherwise it keeps the default.
    bool clamp = true;
};

// Every key but the column mask and the bookmarks, which have rules of their
// own. A new setting is one line here and one member in StoredSettings.
const Key kKeys[] = {
    {"RootPath", &StoredSettings::rootPath, 0, kMaxSettingTextLength},
    {"rowHeight", &StoredSettings::rowHeight, kMinRowHeight, kMaxRowHeight},
    {"loudnessFlag", &StoredSettings::loudnessFlag},
    {"loudnessVoltMode", &StoredSettings::loudnessVoltMode},
    {"multiPlotFlag", &StoredSettings::multiPlotFlag},
    {"showHiddenFlag", &StoredSettings::showHiddenFlag},
    {"autoPlaybackFlag", &StoredSettings::autoPlaybackFlag},
    {"playlistFlag", &StoredSettings::playlistFlag},
    {"analysisLibrary", &StoredSettings::analysisLibraryFlag},
    {"analysisLibraryServer", &StoredSettings::libraryServerFlag},
    {"analysisLibraryHost", &StoredSettings::libraryHost, 0, kMaxSettingTextLength},
    {"analysisLibraryPort", &StoredSettings::libraryPort, kMinPortNumber, kMaxPortNumber},
    {"analysisLibraryDatabase", &StoredSettings::libraryDatabase, 0, kMaxSettingTextLength},
    {"analysisLibraryUser", &StoredSettings::libraryUser, 0, kMaxSettingTextLength},
    {"analysisLibraryRoots", &StoredSettings::libraryRoots, 0, kMaxLibraryRoots},
    // The window fits the rectangle to the screens it finds.
    {"left", &StoredSettings::left, INT_MIN, INT_MAX},
    {"top", &StoredSettings::top, INT_MIN, INT_MAX},
    {"width", &StoredSettings::width, 0, INT_MAX},
    {"height", &StoredSettings::height, 0, INT_MAX},
    {"recentDirs", &StoredSettings::recentDirs, 0, kMaxRecentFolders},
    {"externalExecutePath", &StoredSettings::externalExecutePath, 0, kMaxSettingTextLength},
    {"externalExecuteArgs", &StoredSettings::externalExecuteArgs, 0, kMaxSettingTextLength},
    {"seekTimeMs", &StoredSettings::seekTimeMs, kMinSeekTimeMs, kMaxSeekTimeMs},
    {"analysisThreads", &StoredSettings::analysisThreads, 0, kMaxAnalysisThreads},
    {"GACAddress", &StoredSettings::gacAddress, 1, kMaxSettingTextLength},
    {"GACPortNumber", &StoredSettings::gacPortNumber, kMinPortNumber, kMaxPortNumber},
    {"ColorTheme", &StoredSettings::colorTheme, 0, 2, false},
    {"fontTreeFamily", &StoredSettings::fontTreeFamily, 0, kMaxSettingTextLength},
    {"fontTreeSize", &StoredSettings::fontTreeSize, kMinFontPointSize, kMaxFontPointSize},
    {"fontTableIsFit", &StoredSettings::fontTableIsFit},
    {"fontTableFamily", &StoredSettings::fontTableFamily, 0, kMaxSettingTextLength},
    {"fontTableSize", &StoredSettings::fontTableSize, kMinFontPointSize, kMaxFontPointSize},
    {"ucsCatIdList", &StoredSettings::ucsCatIdListPath, 0, kMaxSettingTextLength},
    {"matchLoudnessFlag", &StoredSettings::matchLoudnessFlag},
    {"matchLoudnessTarget", &StoredSettings::matchLoudnessTarget, kMinMatchTargetLufs,
     kMaxMatchTargetLufs},
    {"matchLoudnessMaxBoost", &StoredSettings::matchLoudnessMaxBoost, 0, kMaxMatchBoostDb},
    {"outputDevice", &StoredSettings::outputDevice, 0, kMaxSettingTextLength},
    {"detailViewVisible", &StoredSettings::detailViewVisible},
    {"detailViewHeight", &StoredSettings::detailViewHeight, kMinDetailViewHeight,
     kMaxDetailViewHeight},
    {"detailViewChannels", &StoredSettings::detailViewChannels},
    {"recursiveFlag", &StoredSettings::recursiveFlag},
    {"tableHeaderState", &StoredSettings::tableHeaderState, 0, kMaxHeaderStateBytes},
};

// The stored value as the report shows it: short, on one line.
QString Describe(const QVariant& v)
{
    QString text;
    if (v.userType() == QMetaType::QStringList)
        text = v.toStringList().join(QStringLiteral(", "));
    else if (v.canConvert<QString>())
        text = v.toString();
    else
        return QStringLiteral("a %1").arg(QString::fromLatin1(v.typeName()));
    if (text.size() > 40)
        text = text.left(40) + QStringLiteral("...");
    return QLatin1Char('"') + text + QLatin1Char('"');
}

bool IsText(const QVariant& v)
{
    return v.userType() == QMetaType::QString || v.userType() == QMetaType::QByteArray;
}

std::optional<qint64> ToWholeNumber(const QVariant& v)
{
    switch (v.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return v.toLongLong();
    case QMetaType::QString:
    case QMetaType::QByteArray: {
        bool ok = false;
        const qint64 n = v.toString().trimmed().toLongLong(&ok);
        if (ok)
            return n;
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

// A number as the file holds it: INI values come back as texts.
QString ToNumberText(const QVariant& v)
{
    switch (v.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return v.toString();
    default:
        return IsText(v) ? v.toString().trimmed() : QString();
    }
}

std::optional<bool> ToBool(const QVariant& v)
{
    if (v.userType() == QMetaType::Bool)
        return v.toBool();
    if (!IsText(v))
        return std::nullopt;
    const QString t = v.toString().trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("1"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("0"))
        return false;
    return std::nullopt;
}

std::optional<QString> ToText(const QVariant& v)
{
    if (!IsText(v))
        return std::nullopt;
    return v.toString();
}

// An empty list is stored as @Invalid(), a one-entry list as a plain text.
std::optional<QStringList> ToTextList(const QVariant& v)
{
    if (!v.isValid())
        return QStringList();
    if (v.userType() == QMetaType::QStringList)
        return v.toStringList();
    if (IsText(v)) {
        const QString t = v.toString();
        return t.isEmpty() ? QStringList() : QStringList{t};
    }
    return std::nullopt;
}

class Reader final
{
public:
    Reader(const Key& key, const QVariant& stored, QStringList& problems)
        : key(key)
        , stored(stored)
        , problems(problems)
    {}

    void operator()(int& value) const
    {
        const std::optional<qint64> n = ToWholeNumber(stored);
        if (!n) {
            report(QStringLiteral("is not a whole number"), QString::number(value));
            return;
        }
        if (*n >= key.low && *n <= key.high) {
            value = static_cast<int>(*n);
            return;
        }
        if (key.clamp)
            value = static_cast<int>(qBound<qint64>(key.low, *n, key.high));
        report(QStringLiteral("is outside %1 to %2").arg(key.low).arg(key.high),
               QString::number(value));
    }

    void operator()(double& value) const
    {
        bool ok = false;
        const double d = ToNumberText(stored).toDouble(&ok);
        if (!ok || !std::isfinite(d)) {
            report(QStringLiteral("is not a number"), QString::number(value));
            return;
        }
        if (d >= key.low && d <= key.high) {
            value = d;
            return;
        }
        if (key.clamp)
            value = qBound<double>(key.low, d, key.high);
        report(QStringLiteral("is outside %1 to %2").arg(key.low).arg(key.high),
               QString::number(value));
    }

    void operator()(bool& value) const
    {
        if (const std::optional<bool> b = ToBool(stored))
            value = *b;
        else
            report(QStringLiteral("is not true or false"),
                   value ? QStringLiteral("true") : QStringLiteral("false"));
    }

    void operator()(QString& value) const
    {
        const std::optional<QString> t = ToText(stored);
        if (!t)
            report(QStringLiteral("is not a text"), quoted(value));
        else if (t->size() > key.high)
            report(QStringLiteral("is longer than %1 characters").arg(key.high), quoted(value));
        else if (t->size() < key.low)
            report(QStringLiteral("is empty"), quoted(value));
        else
            value = *t;
    }

    // Bytes (a saved view state) are stored as @ByteArray(...).
    void operator()(QByteArray& value) const
    {
        if (stored.userType() != QMetaType::QByteArray)
            report(QStringLiteral("is not a byte array"), QStringLiteral("the default"));
        else if (stored.toByteArray().size() > key.high)
            report(QStringLiteral("is longer than %1 bytes").arg(key.high),
                   QStringLiteral("the default"));
        else
            value = stored.toByteArray();
    }

    void operator()(QStringList& value) const
    {
        std::optional<QStringList> list = ToTextList(stored);
        if (!list) {
            report(QStringLiteral("is not a list of texts"), QStringLiteral("an empty list"));
            return;
        }
        QStringList kept;
        for (const QString& entry : qAsConst(*list)) {
            if (!entry.isEmpty() && entry.size() <= kMaxSettingTextLength)
                kept << entry;
        }
        if (kept.size() > key.high) {
            kept = kept.mid(0, key.high);
            report(QStringLiteral("has more than %1 entries").arg(key.high),
                   QStringLiteral("the first %1").arg(key.high));
        } else if (kept.size() != list->size()) {
            report(QStringLiteral("has empty or overlong entries"),
                   QStringLiteral("the other entries"));
        }
        value = kept;
    }

private:
    static QString quoted(const QString& text)
    {
        return QLatin1Char('"') + text + QLatin1Char('"');
    }

    void report(const QString& what, const QString& used) const
    {
        problems << QStringLiteral("%1 = %2 %3; using %4")
                        .arg(QLatin1String(key.name), Describe(stored), what, used);
    }

    const Key& key;
    const QVariant& stored;
    QStringList& problems;
};

void LoadBookmarks(QSettings& store, StoredSettings& s, QStringList& problems)
{
    s.bookmarks.clear();
    s.bookmarkArrayKept = false;
    store.beginGroup(QStringLiteral("bookmarkRoot"));
    const bool hasCount = store.contains(QStringLiteral("size"));
    const QVariant countValue = store.value(QStringLiteral("size"));
    // The file's own elements, whatever the count says: a damaged count must
    // not make us read (and later write) elements that are not there.
    QList<int> indexes;
    const QStringList groups = store.childGroups();
    for (const QString& group : groups) {
        bool ok = false;
        const int i = group.toInt(&ok);
        if (ok && i >= 1)
            indexes << i;
    }
    std::sort(indexes.begin(), indexes.end());

    const std::optional<qint64> count = hasCount ? ToWholeNumber(countValue) : std::nullopt;
    if (!count || *count < 0) {
        if (hasCount || !indexes.isEmpty()) {
            problems << QStringLiteral("bookmarkRoot/size = %1 is not a count; no bookmarks are "
                                       "shown and the %2 stored ones are kept in the file")
                            .arg(Describe(countValue))
                            .arg(indexes.size());
            s.bookmarkArrayKept = true;
        }
        store.endGroup();
        return;
    }
    // Elements past the count are left over from a longer list.
    while (!indexes.isEmpty() && indexes.constLast() > *count)
        indexes.removeLast();
    if (indexes.size() < *count)
        problems << QStringLiteral("bookmarkRoot/size = %1 but the file holds %2 bookmarks; "
                                   "%2 are read")
                        .arg(*count)
                        .arg(indexes.size());
    if (indexes.size() > kMaxBookmarks) {
        problems << QStringLiteral("bookmarkRoot holds %1 bookmarks; the first %2 are shown and "
                                   "all are kept in the file")
                        .arg(indexes.size())
                        .arg(kMaxBookmarks);
        indexes = indexes.mid(0, kMaxBookmarks);
        s.bookmarkArrayKept = true;
    }
    for (const int i : qAsConst(indexes)) {
        const QString prefix = QString::number(i) + QLatin1Char('/');
        const std::optional<QString> path =
            ToText(store.value(prefix + QStringLiteral("bookmarkDirPath")));
        if (!path || path->isEmpty() || path->size() > kMaxSettingTextLength) {
            problems << QStringLiteral("bookmarkRoot/%1 has no usable folder path; it is left out")
                            .arg(i);
            continue;
        }
        std::optional<QString> name = ToText(store.value(prefix + QStringLiteral("bookmarkName")));
        if (!name || name->size() > kMaxSettingTextLength) {
            name = QDir(*path).dirName();
            problems << QStringLiteral("bookmarkRoot/%1 has no usable name; \"%2\" is used")
                            .arg(i)
                            .arg(*name);
        }
        s.bookmarks.append({*path, *name});
    }
    store.endGroup();
}

void LoadLegacyBookmarks(QSettings& store, StoredSettings& s, QStringList& problems)
{
    s.legacyBookmarkDirs.clear();
    const QString key = QStringLiteral("bookmarkDirs");
    if (!store.contains(key))
        return;
    const QVariant stored = store.value(key);
    const std::optional<QStringList> legacy = ToTextList(stored);
    if (!legacy) {
        problems << QStringLiteral("bookmarkDirs = %1 is not a list of folders; it is dropped")
                        .arg(Describe(stored));
        return;
    }
    s.legacyBookmarkDirs = *legacy;
    const int readCount = s.bookmarks.size();
    for (const QString& path : qAsConst(s.legacyBookmarkDirs)) {
        if (s.bookmarks.size() >= kMaxBookmarks)
            break;
        bool known = false;
        for (int i = 0; i < readCount && !known; ++i)
            known = s.bookmarks.at(i).path == path;
        // A vanished folder is not shown but stays in the legacy list, which is written back.
        if (known || path.isEmpty() || !QFileInfo(path).isDir())
            continue;
        s.bookmarks.append({path, QDir(path).dirName()});
    }
}

void LoadColumnState(QSettings& store, StoredSettings& s, QStringList& problems)
{
    const QString key = QStringLiteral("columnState");
    if (!store.contains(key))
        return;
    const QVariant stored = store.value(key);
    const std::optional<qint64> n = ToWholeNumber(stored);
    if (!n) {
        problems << QStringLiteral("columnState = %1 is not a whole number; all columns are shown")
                        .arg(Describe(stored));
        return;
    }
    // 0 would hide every column: it means "never stored", so the built-in mask stays.
    const int mask = static_cast<int>(*n & kAllColumnsVisible);
    if (mask != *n)
        problems << QStringLiteral("columnState = %1 names columns that do not exist; they are "
                                   "ignored")
                        .arg(*n);
    if (mask != 0)
        s.columnState = mask;
}

} // namespace

bool operator==(const StoredSettings& a, const StoredSettings& b)
{
    for (const Key& key : kKeys) {
        const bool same =
            std::visit([&](auto member) { return a.*member == b.*member; }, key.member);
        if (!same)
            return false;
    }
    return a.columnState == b.columnState && a.bookmarks == b.bookmarks &&
           a.legacyBookmarkDirs == b.legacyBookmarkDirs;
}

QStringList SettingsStore::Load(QSettings& store, StoredSettings& s)
{
    QStringList problems;
    if (store.status() == QSettings::FormatError)
        problems << QStringLiteral("%1 has lines that cannot be read; they are left out")
                        .arg(store.fileName());
    else if (store.status() == QSettings::AccessError)
        problems << QStringLiteral("%1 cannot be read").arg(store.fileName());

    for (const Key& key : kKeys) {
        const QString name = QLatin1String(key.name);
        if (!store.contains(name))
            continue;
        const QVariant stored = store.value(name);
        std::visit([&](auto member) { Reader(key, stored, problems)(s.*member); }, key.member);
    }
    LoadColumnState(store, s, problems);
    LoadBookmarks(store, s, problems);
    LoadLegacyBookmarks(store, s, problems);
    s.bookmarksAsLoaded = s.bookmarks;
    return problems;
}

void SettingsStore::Save(QSettings& store, const StoredSettings& s)
{
    store.remove(QStringLiteral("enlargeFlag"));
    for (const Key& key : kKeys) {
        const QString name = QLatin1String(key.name);
        std::visit(
            [&](auto member) {
                const auto& value = s.*member;
                using Value = std::decay_t<decltype(value)>;
                // An empty recent list keeps what the file had.
                if constexpr (std::is_same_v<Value, QStringList>) {
                    if (value.isEmpty())
                        return;
                }
                store.setValue(name, value);
            },
            key.member);
    }
    store.setValue(QStringLiteral("columnState"), s.columnState);

    // Rewritten whole, so that removed bookmarks do not linger as stale
    // elements; left alone while it holds what could not be read.
    if (!s.bookmarkArrayKept || s.bookmarks != s.bookmarksAsLoaded) {
        store.remove(QStringLiteral("bookmarkRoot"));
        store.beginWriteArray(QStringLiteral("bookmarkRoot"));
        for (int i = 0; i < s.bookmarks.size(); ++i) {
            store.setArrayIndex(i);
            store.setValue(QStringLiteral("bookmarkDirPath"), s.bookmarks.at(i).path);
            store.setValue(QStringLiteral("bookmarkName"), s.bookmarks.at(i).name);
        }
        store.endArray();
    }

    if (s.legacyBookmarkDirs.isEmpty())
        store.remove(QStringLiteral("bookmarkDirs"));
    else
        store.setValue(QStringLiteral("bookmarkDirs"), s.legacyBookmarkDirs);
    store.sync();
}

void SettingsStore::RemoveAbandonedLocks(const QString& iniPath)
{
    // QSettings guards each write with "<file>.lock", and the removal of a
    // stale one with "<file>.lock.rmlock". A process killed right after
    // creating either leaves it empty, without the owner that would let the
    // next writer see it is stale, and then every write waits 30 s for it to
    // age. A live writer holds them for microseconds and fills them at once.
    const QStringList locks{iniPath + QStringLiteral(".lock.rmlock"),
                            iniPath + QStringLiteral(".lock")};
    for (const QString& lock : locks) {
        const QFileInfo info(lock);
        if (info.exists() && info.size() == 0 &&
            info.lastModified().msecsTo(QDateTime::currentDateTime()) > 1000)
            QFile::remove(lock);
    }
}

QStringList SettingsStore::Load(StoredSettings& s)
{
    QSettings store(kFormat, QSettings::UserScope, organisation(), application());
    RemoveAbandonedLocks(store.fileName());
    return Load(store, s);
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
