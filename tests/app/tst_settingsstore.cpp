#include "SettingsStore.h"
#include "TestSettings.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// The members the hostile-value cases look at, by key name.
QVariant Field(const StoredSettings& s, const QString& key)
{
    const QHash<QString, QVariant> fields{
        {QStringLiteral("RootPath"), s.rootPath},
        {QStringLiteral("rowHeight"), s.rowHeight},
        {QStringLiteral("loudnessFlag"), s.loudnessFlag},
        {QStringLiteral("autoPlaybackFlag"), s.autoPlaybackFlag},
        {QStringLiteral("width"), s.width},
        {QStringLiteral("columnState"), s.columnState},
        {QStringLiteral("recentDirs"), s.recentDirs},
        {QStringLiteral("seekTimeMs"), s.seekTimeMs},
        {QStringLiteral("GACAddress"), s.gacAddress},
        {QStringLiteral("GACPortNumber"), s.gacPortNumber},
        {QStringLiteral("ColorTheme"), s.colorTheme},
        {QStringLiteral("fontTreeSize"), s.fontTreeSize},
        {QStringLiteral("matchLoudnessTarget"), s.matchLoudnessTarget},
        {QStringLiteral("detailViewHeight"), s.detailViewHeight},
    };
    return fields.value(key);
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings settings;
    QTemporaryDir folders;

    QString iniPath() const { return settings.iniPath(); }
    QString makeFolder(const QString& name)
    {
        const QString path = folders.filePath(name);
        QDir().mkpath(path);
        return path;
    }

private slots:
    void initTestCase() { QVERIFY(settings.isValid()); }
    void init() { settings.clear(); }

    void storeLivesUnderOrganisationAndApplication()
    {
        StoredSettings s;
        s.rootPath = QStringLiteral("/x");
        SettingsStore::Save(s);
        QVERIFY2(QFile::exists(iniPath()), qPrintable(iniPath()));
    }

    void freshUserGetsDefaults()
    {
        StoredSettings s;
        SettingsStore::Load(s);
        QCOMPARE(s.rootPath, QString());
        QCOMPARE(s.rowHeight, 22);
        QCOMPARE(s.loudnessFlag, false);
        QCOMPARE(s.loudnessVoltMode, false);
        QCOMPARE(s.multiPlotFlag, false);
        QCOMPARE(s.showHiddenFlag, false);
        QCOMPARE(s.autoPlaybackFlag, true);
        QCOMPARE(s.playlistFlag, false);
        QCOMPARE(s.left, -1);
        QCOMPARE(s.top, -1);
        QCOMPARE(s.width, 0);
        QCOMPARE(s.height, 0);
        QVERIFY(!s.HasValidGeometry());
        QCOMPARE(s.columnState, 0x7FFF); // all fifteen columns
        QVERIFY(s.recentDirs.isEmpty());
        QCOMPARE(s.seekTimeMs, 1000);
        QCOMPARE(s.gacAddress, QStringLiteral("localhost"));
        QCOMPARE(s.gacPortNumber, 4444);
        QCOMPARE(s.colorTheme, 0);
        QCOMPARE(s.fontTableIsFit, true);
        QVERIFY(s.bookmarks.isEmpty());
        QVERIFY(s.legacyBookmarkDirs.isEmpty());
    }

    void fontDefaultsAreTheValuesPassedIn()
    {
        StoredSettings s;
        s.fontTreeFamily = s.fontTableFamily = QStringLiteral("Meiryo UI");
        s.fontTreeSize = s.fontTableSize = 11;
        SettingsStore::Load(s);
        QCOMPARE(s.fontTreeFamily, QStringLiteral("Meiryo UI"));
        QCOMPARE(s.fontTableSize, 11);
    }

    void roundTripOfEveryKey()
    {
        const QString a = makeFolder(QStringLiteral("rt/a"));
        StoredSettings out;
        out.rootPath = a;
        out.rowHeight = 30;
        out.loudnessFlag = true;
        out.loudnessVoltMode = true;
        out.multiPlotFlag = true;
        out.showHiddenFlag = true;
        out.autoPlaybackFlag = false;
        out.playlistFlag = true;
        out.left = 10;
        out.top = 20;
        out.width = 900;
        out.height = 700;
        out.columnState = 0x5;
        out.recentDirs = QStringList{a, QStringLiteral("/b")};
        out.externalExecutePath = QStringLiteral("/usr/bin/editor");
        out.externalExecuteArgs = QStringLiteral("-open %FILEPATH%");
        out.seekTimeMs = 2500;
        out.gacAddress = QStringLiteral("10.0.0.2");
        out.gacPortNumber = 5555;
        out.colorTheme = 2;
        out.fontTreeFamily = QStringLiteral("Tree Sans");
        out.fontTreeSize = 9;
        out.fontTableIsFit = false;
        out.fontTableFamily = QStringLiteral("Table Serif");
        out.fontTableSize = 13;
        out.bookmarks = {{a, QStringLiteral("Alpha")},
                         {QStringLiteral("/gone"), QStringLiteral("G")}};
        out.matchLoudnessFlag = true;
        out.matchLoudnessTarget = -16.5;
        out.matchLoudnessMaxBoost = 6.0;
        out.outputDevice = QStringLiteral("USB Audio CODEC Analog Stereo");
        out.detailViewVisible = false;
        out.detailViewHeight = 222;
        out.detailViewChannels = true;
        SettingsStore::Save(out);

        // The keys are the documented names; QSettings numbers array elements from 1.
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("RootPath")).toString(), a);
        QCOMPARE(raw.value(QStringLiteral("rowHeight")).toInt(), 30);
        QCOMPARE(raw.value(QStringLiteral("GACPortNumber")).toInt(), 5555);
        QCOMPARE(raw.value(QStringLiteral("ColorTheme")).toInt(), 2);
        QCOMPARE(raw.value(QStringLiteral("fontTableIsFit")).toBool(), false);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), 2);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/2/bookmarkName")).toString(),
                 QStringLiteral("G"));
        QVERIFY(!raw.contains(QStringLiteral("bookmarkDirs")));

        StoredSettings in;
        SettingsStore::Load(in);
        QCOMPARE(in.rootPath, out.rootPath);
        QCOMPARE(in.rowHeight, out.rowHeight);
        QCOMPARE(in.loudnessFlag, out.loudnessFlag);
        QCOMPARE(in.loudnessVoltMode, out.loudnessVoltMode);
        QCOMPARE(in.multiPlotFlag, out.multiPlotFlag);
        QCOMPARE(in.showHiddenFlag, out.showHiddenFlag);
        QCOMPARE(in.autoPlaybackFlag, out.autoPlaybackFlag);
        QCOMPARE(in.playlistFlag, out.playlistFlag);
        QCOMPARE(in.left, out.left);
        QCOMPARE(in.top, out.top);
        QCOMPARE(in.width, out.width);
        QCOMPARE(in.height, out.height);
        QCOMPARE(in.columnState, out.columnState);
        QCOMPARE(in.recentDirs, out.recentDirs);
        QCOMPARE(in.externalExecutePath, out.externalExecutePath);
        QCOMPARE(in.externalExecuteArgs, out.externalExecuteArgs);
        QCOMPARE(in.seekTimeMs, out.seekTimeMs);
        QCOMPARE(in.gacAddress, out.gacAddress);
        QCOMPARE(in.gacPortNumber, out.gacPortNumber);
        QCOMPARE(in.colorTheme, out.colorTheme);
        QCOMPARE(in.fontTreeFamily, out.fontTreeFamily);
        QCOMPARE(in.fontTreeSize, out.fontTreeSize);
        QCOMPARE(in.fontTableIsFit, out.fontTableIsFit);
        QCOMPARE(in.fontTableFamily, out.fontTableFamily);
        QCOMPARE(in.fontTableSize, out.fontTableSize);
        QCOMPARE(in.matchLoudnessFlag, out.matchLoudnessFlag);
        QCOMPARE(in.matchLoudnessTarget, out.matchLoudnessTarget);
        QCOMPARE(in.matchLoudnessMaxBoost, out.matchLoudnessMaxBoost);
        QCOMPARE(in.outputDevice, out.outputDevice);
        QCOMPARE(in.detailViewVisible, out.detailViewVisible);
        QCOMPARE(in.detailViewHeight, out.detailViewHeight);
        QCOMPARE(in.detailViewChannels, out.detailViewChannels);
        // A bookmark whose folder vanished stays in the list.
        QVERIFY(in.bookmarks == out.bookmarks);
        QVERIFY(in.HasValidGeometry());
    }

    void geometryValidity_data()
    {
        QTest::addColumn<int>("left");
        QTest::addColumn<int>("top");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("valid");
        QTest::newRow("saved width 0") << 10 << 10 << 0 << 500 << false;
        QTest::newRow("height 0") << 10 << 10 << 800 << 0 << false;
        QTest::newRow("left -1") << -1 << 10 << 800 << 500 << false;
        QTest::newRow("top -8 (maximised frame)") << 0 << -8 << 800 << 500 << false;
        QTest::newRow("origin 1x1") << 0 << 0 << 1 << 1 << true;
        QTest::newRow("ordinary") << 8 << 84 << 1350 << 600 << true;
    }
    void geometryValidity()
    {
        QFETCH(int, left);
        QFETCH(int, top);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(bool, valid);
        {
            QSettings raw(iniPath(), QSettings::IniFormat);
            raw.setValue(QStringLiteral("left"), left);
            raw.setValue(QStringLiteral("top"), top);
            raw.setValue(QStringLiteral("width"), width);
            raw.setValue(QStringLiteral("height"), height);
        }
        StoredSettings s;
        SettingsStore::Load(s);
        QCOMPARE(s.HasValidGeometry(), valid);
    }

    void columnStateAndTheme_data()
    {
        QTest::addColumn<QVariant>("storedColumns");
        QTest::addColumn<QVariant>("storedTheme");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("theme");
        QTest::newRow("0 keeps the built-in mask") << QVariant(0) << QVariant(1) << 0x7FFF << 1;
        QTest::newRow("mask replaces") << QVariant(0x3) << QVariant(2) << 0x3 << 2;
        QTest::newRow("theme 3 falls back") << QVariant(0x7) << QVariant(3) << 0x7 << 0;
        QTest::newRow("theme -1 falls back") << QVariant(0x7) << QVariant(-1) << 0x7 << 0;
        QTest::newRow("non-numbers read as 0")
            << QVariant(QStringLiteral("abc")) << QVariant(QStringLiteral("dark")) << 0x7FFF << 0;
    }
    void columnStateAndTheme()
    {
        QFETCH(QVariant, storedColumns);
        QFETCH(QVariant, storedTheme);
        QFETCH(int, columns);
        QFETCH(int, theme);
        {
            QSettings raw(iniPath(), QSettings::IniFormat);
            raw.setValue(QStringLiteral("columnState"), storedColumns);
            raw.setValue(QStringLiteral("ColorTheme"), storedTheme);
        }
        StoredSettings s;
        SettingsStore::Load(s);
        QCOMPARE(s.columnState, columns);
        QCOMPARE(s.colorTheme, theme);
    }

    // Hand-edited values: each is either taken, clamped into the range the
    // dialogs allow, or replaced by its default, and every one not taken as
    // written is reported once.
    void hostileValues_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("expected");
        QTest::addColumn<bool>("reported");
        const QStringList twelve = [] {
            QStringList l;
            for (int i = 0; i < 12; ++i)
                l << QStringLiteral("/r%1").arg(i);
            return l;
        }();
        QTest::newRow("row height in range")
            << QByteArray("rowHeight=30") << "rowHeight" << QVariant(30) << false;
        QTest::newRow("negative row height")
            << QByteArray("rowHeight=-5") << "rowHeight" << QVariant(kMinRowHeight) << true;
        QTest::newRow("row height past 64 bits")
            << QByteArray("rowHeight=99999999999999999999") << "rowHeight" << QVariant(22) << true;
        QTest::newRow("row height a word")
            << QByteArray("rowHeight=tall") << "rowHeight" << QVariant(22) << true;
        QTest::newRow("negative seek step")
            << QByteArray("seekTimeMs=-1") << "seekTimeMs" << QVariant(kMinSeekTimeMs) << true;
        QTest::newRow("port 999999")
            << QByteArray("GACPortNumber=999999") << "GACPortNumber" << QVariant(65535) << true;
        QTest::newRow("port 0") << QByteArray("GACPortNumber=0") << "GACPortNumber" << QVariant(1)
                                << true;
        QTest::newRow("tree font 100000 pt")
            << QByteArray("fontTreeSize=100000") << "fontTreeSize" << QVariant(200) << true;
        QTest::newRow("theme 7") << QByteArray("ColorTheme=7") << "ColorTheme" << QVariant(0)
                                 << true;
        QTest::newRow("flag 'maybe'")
            << QByteArray("loudnessFlag=maybe") << "loudnessFlag" << QVariant(false) << true;
        QTest::newRow("flag 0") << QByteArray("autoPlaybackFlag=0") << "autoPlaybackFlag"
                                << QVariant(false) << false;
        QTest::newRow("root written as a list")
            << QByteArray("RootPath=/a, b") << "RootPath" << QVariant(QString()) << true;
        QTest::newRow("empty address") << QByteArray("GACAddress=") << "GACAddress"
                                       << QVariant(QStringLiteral("localhost")) << true;
        QTest::newRow("width as a rectangle")
            << QByteArray("width=@Rect(1 2 3 4)") << "width" << QVariant(0) << true;
        QTest::newRow("every column bit set")
            << QByteArray("columnState=-1") << "columnState" << QVariant(0x7FFF) << true;
        QTest::newRow("twelve recent folders")
            << ("recentDirs=" + twelve.join(QStringLiteral(", ")).toUtf8()) << "recentDirs"
            << QVariant(twelve.mid(0, 10)) << true;
        QTest::newRow("loudness target above 0")
            << QByteArray("matchLoudnessTarget=3.5") << "matchLoudnessTarget" << QVariant(0.0)
            << true;
        QTest::newRow("loudness target a word")
            << QByteArray("matchLoudnessTarget=loud") << "matchLoudnessTarget" << QVariant(-23.0)
            << true;
        QTest::newRow("loudness target in range")
            << QByteArray("matchLoudnessTarget=-14.5") << "matchLoudnessTarget" << QVariant(-14.5)
            << false;
        QTest::newRow("detail view 5000 px")
            << QByteArray("detailViewHeight=5000") << "detailViewHeight"
            << QVariant(kMaxDetailViewHeight) << true;
        QTest::newRow("overlong root")
            << ("RootPath=/" + QByteArray(kMaxSettingTextLength + 1, 'x')) << "RootPath"
            << QVariant(QString()) << true;
    }
    void hostileValues()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, key);
        QFETCH(QVariant, expected);
        QFETCH(bool, reported);
        QVERIFY(settings.writeIni("[General]\n" + line + '\n'));
        StoredSettings s;
        const QStringList problems = SettingsStore::Load(s);
        QCOMPARE(Field(s, key), expected);
        QCOMPARE(problems.size(), reported ? 1 : 0);
        if (reported)
            QVERIFY2(problems.first().startsWith(key), qPrintable(problems.first()));
    }

    // The count of the bookmark array is believed only as far as the file
    // holds elements; a count that is not one shows nothing and erases nothing.
    void bookmarkCounts_data()
    {
        QTest::addColumn<QByteArray>("count");
        QTest::addColumn<int>("elements");
        QTest::addColumn<int>("read");
        QTest::addColumn<bool>("kept");
        QTest::addColumn<bool>("reported");
        QTest::newRow("as stored") << QByteArray("size=3") << 3 << 3 << false << false;
        QTest::newRow("two billion") << QByteArray("size=2000000000") << 2 << 2 << false << true;
        QTest::newRow("20000") << QByteArray("size=20000") << 3 << 3 << false << true;
        // Elements past the count are left over from a longer list.
        QTest::newRow("smaller than the elements")
            << QByteArray("size=1") << 3 << 1 << false << false;
        QTest::newRow("negative") << QByteArray("size=-3") << 2 << 0 << true << true;
        QTest::newRow("a word") << QByteArray("size=many") << 2 << 0 << true << true;
        QTest::newRow("missing") << QByteArray() << 2 << 0 << true << true;
        QTest::newRow("past the maximum")
            << QByteArray("size=1500") << 1500 << kMaxBookmarks << true << true;
    }
    void bookmarkCounts()
    {
        QFETCH(QByteArray, count);
        QFETCH(int, elements);
        QFETCH(int, read);
        QFETCH(bool, kept);
        QFETCH(bool, reported);
        QByteArray ini = "[bookmarkRoot]\n" + count + '\n';
        for (int i = 1; i <= elements; ++i)
            ini += QByteArray::number(i) + "\\bookmarkDirPath=/sfx/" + QByteArray::number(i) +
                   '\n' + QByteArray::number(i) + "\\bookmarkName=b" + QByteArray::number(i) + '\n';
        QVERIFY(settings.writeIni(ini));

        StoredSettings s;
        const QStringList problems = SettingsStore::Load(s);
        QCOMPARE(s.bookmarks.size(), read);
        QCOMPARE(problems.size(), reported ? 1 : 0);
        if (read > 0)
            QCOMPARE(s.bookmarks.last().path, QStringLiteral("/sfx/%1").arg(read));

        // Saving without touching the bookmarks leaves a damaged array as it
        // was; a trusted one is written back with its true count.
        SettingsStore::Save(s);
        {
            QSettings raw(iniPath(), QSettings::IniFormat);
            QCOMPARE(
                raw.value(QStringLiteral("bookmarkRoot/%1/bookmarkName").arg(elements)).isValid(),
                kept || read == elements);
            if (!kept)
                QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), read);
        }
        // Once the user changes them, the list is the user's.
        s.bookmarks.append({QStringLiteral("/new"), QStringLiteral("new")});
        SettingsStore::Save(s);
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), read + 1);
    }

    void unknownKeysSurvive()
    {
        QVERIFY(settings.writeIni("[General]\nheaderOfTomorrow=@ByteArray(xyz)\n"
                                  "rowHeight=24\n[plugins]\nnoise=on\n"));
        StoredSettings s;
        QVERIFY(SettingsStore::Load(s).isEmpty());
        s.rowHeight = 26;
        SettingsStore::Save(s);
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("headerOfTomorrow")).toByteArray(), QByteArray("xyz"));
        QCOMPARE(raw.value(QStringLiteral("plugins/noise")).toString(), QStringLiteral("on"));
        QCOMPARE(raw.value(QStringLiteral("rowHeight")).toInt(), 26);
    }

    void elevenRootsKeepTenNewestFirst()
    {
        QStringList recent;
        for (int i = 1; i <= 11; ++i)
            SettingsStore::PushRecentFolder(recent, QStringLiteral("/root%1").arg(i));
        QCOMPARE(recent.size(), 10);
        QCOMPARE(recent.first(), QStringLiteral("/root11"));
        QCOMPARE(recent.last(), QStringLiteral("/root2"));
        QVERIFY(!recent.contains(QStringLiteral("/root1")));

        SettingsStore::PushRecentFolder(recent, QStringLiteral("/root5"));
        QCOMPARE(recent.size(), 10);
        QCOMPARE(recent.first(), QStringLiteral("/root5"));
        QCOMPARE(recent.count(QStringLiteral("/root5")), 1);
        QCOMPARE(recent.at(1), QStringLiteral("/root11"));
    }

    void emptyRecentListLeavesStoredValue()
    {
        StoredSettings s;
        s.recentDirs = QStringList{QStringLiteral("/kept")};
        SettingsStore::Save(s);
        s.recentDirs.clear();
        SettingsStore::Save(s);
        StoredSettings in;
        SettingsStore::Load(in);
        QCOMPARE(in.recentDirs, QStringList{QStringLiteral("/kept")});
    }

    void legacyBookmarksMerged()
    {
        const QString a = makeFolder(QStringLiteral("legacy/a"));
        const QString b = makeFolder(QStringLiteral("legacy/Beta Sounds"));
        const QString missing = folders.filePath(QStringLiteral("legacy/missing"));
        const QStringList legacy{a, b, missing};
        {
            QSettings raw(iniPath(), QSettings::IniFormat);
            raw.beginWriteArray(QStringLiteral("bookmarkRoot"));
            raw.setArrayIndex(0);
            raw.setValue(QStringLiteral("bookmarkDirPath"), a);
            raw.setValue(QStringLiteral("bookmarkName"), QStringLiteral("My A"));
            raw.endArray();
            raw.setValue(QStringLiteral("bookmarkDirs"), legacy);
            raw.setValue(QStringLiteral("enlargeFlag"), true);
        }
        StoredSettings s;
        SettingsStore::Load(s);
        // a is already a bookmark; b joins under its folder name; the missing one is not shown.
        const BookmarkList expected{{a, QStringLiteral("My A")},
                                    {b, QStringLiteral("Beta Sounds")}};
        QVERIFY(s.bookmarks == expected);
        QCOMPARE(s.legacyBookmarkDirs, legacy);

        SettingsStore::Save(s);
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("bookmarkDirs")).toStringList(), legacy);
        QVERIFY(!raw.contains(QStringLiteral("enlargeFlag")));
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), 2);
    }

    void bookmarkArrayRewrittenWhole()
    {
        StoredSettings s;
        s.bookmarks = {{QStringLiteral("/1"), QStringLiteral("one")},
                       {QStringLiteral("/2"), QStringLiteral("two")},
                       {QStringLiteral("/3"), QStringLiteral("three")}};
        SettingsStore::Save(s);
        s.bookmarks = {{QStringLiteral("/2"), QStringLiteral("two")}};
        SettingsStore::Save(s);
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), 1);
        QVERIFY(!raw.contains(QStringLiteral("bookmarkRoot/3/bookmarkDirPath")));
        StoredSettings in;
        SettingsStore::Load(in);
        QVERIFY(in.bookmarks == s.bookmarks);
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
