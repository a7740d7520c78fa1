// The settings file: every key written and read back under its own name,
// hand-edited values taken, clamped or refused, bookmark arrays that cannot be
// trusted left alone, and keys of other versions kept.
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
        {"RootPath", s.rootPath},
        {"rowHeight", s.rowHeight},
        {"loudnessFlag", s.loudnessFlag},
        {"autoPlaybackFlag", s.autoPlaybackFlag},
        {"width", s.width},
        {"columnState", s.columnState},
        {"recentDirs", s.recentDirs},
        {"seekTimeMs", s.seekTimeMs},
        {"GACAddress", s.gacAddress},
        {"GACPortNumber", s.gacPortNumber},
        {"ColorTheme", s.colorTheme},
        {"fontTreeSize", s.fontTreeSize},
        {"matchLoudnessTarget", s.matchLoudnessTarget},
        {"detailViewHeight", s.detailViewHeight},
        {"geometry", s.HasValidGeometry()},
    };
    return fields.value(key);
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

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

    void roundTripOfEveryKey()
    {
        const QString a = makeFolder(QStringLiteral("rt/a"));
        StoredSettings out;
        out.rootPath = a;
        out.rowHeight = 30;
        out.loudnessFlag = out.loudnessVoltMode = out.multiPlotFlag = out.showHiddenFlag = true;
        out.autoPlaybackFlag = false;
        out.playlistFlag = out.recursiveFlag = true;
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
        out.bookmarks = {{a, "Alpha"}, {"/gone", "G"}};
        out.matchLoudnessFlag = true;
        out.matchLoudnessTarget = -16.5;
        out.matchLoudnessMaxBoost = 6.0;
        out.outputDevice = QStringLiteral("USB Audio CODEC Analog Stereo");
        out.detailViewVisible = false;
        out.detailViewHeight = 222;
        out.detailViewChannels = true;
        out.tableHeaderState = QByteArray("\x00\xff header", 9);
        SettingsStore::Save(out);

        // The keys are the documented names; QSettings numbers array elements from 1.
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("RootPath")).toString(), a);
        QCOMPARE(raw.value(QStringLiteral("GACPortNumber")).toInt(), 5555);
        QCOMPARE(raw.value(QStringLiteral("ColorTheme")).toInt(), 2);
        QCOMPARE(raw.value(QStringLiteral("fontTableIsFit")).toBool(), false);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/2/bookmarkName")).toString(), "G");
        QVERIFY(!raw.contains(QStringLiteral("bookmarkDirs")));

        // Every member, a bookmark whose folder vanished too.
        StoredSettings in;
        QVERIFY(SettingsStore::Load(in).isEmpty());
        QVERIFY(in == out);
        QVERIFY(in.HasValidGeometry());
    }

    // Hand-edited values: each is either taken, clamped into the range the
    // dialogs allow, or replaced by its default, and every one not taken as
    // written is reported once.
    void hostileValues_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("expected");
        QTest::addColumn<bool>("reported");
        QStringList twelve;
        for (int i = 0; i < 12; ++i)
            twelve << QStringLiteral("/r%1").arg(i);
        const struct
        {
            const char* name;
            QByteArray lines;
            const char* key;
            QVariant expected;
            bool reported;
        } cases[] = {
            {"row height in range", "rowHeight=30", "rowHeight", 30, false},
            {"negative row height", "rowHeight=-5", "rowHeight", kMinRowHeight, true},
            {"row height past 64 bits", "rowHeight=99999999999999999999", "rowHeight", 22, true},
            {"row height a word", "rowHeight=tall", "rowHeight", 22, true},
            {"negative seek step", "seekTimeMs=-1", "seekTimeMs", kMinSeekTimeMs, true},
            {"port 999999", "GACPortNumber=999999", "GACPortNumber", 65535, true},
            {"port 0", "GACPortNumber=0", "GACPortNumber", 1, true},
            {"tree font 100000 pt", "fontTreeSize=100000", "fontTreeSize", 200, true},
            {"theme 7", "ColorTheme=7", "ColorTheme", 0, true},
            {"theme 2", "ColorTheme=2", "ColorTheme", 2, false},
            {"flag 'maybe'", "loudnessFlag=maybe", "loudnessFlag", false, true},
            {"flag 0", "autoPlaybackFlag=0", "autoPlaybackFlag", false, false},
            {"root written as a list", "RootPath=/a, b", "RootPath", QString(), true},
            {"empty address", "GACAddress=", "GACAddress", QStringLiteral("localhost"), true},
            {"width as a rectangle", "width=@Rect(1 2 3 4)", "width", 0, true},
            {"every column bit set", "columnState=-1", "columnState", 0x7FFF, true},
            {"no column keeps them all", "columnState=0", "columnState", 0x7FFF, false},
            {"some columns", "columnState=3", "columnState", 3, false},
            {"twelve recent folders", "recentDirs=" + twelve.join(", ").toUtf8(), "recentDirs",
             QVariant(twelve.mid(0, 10)), true},
            {"loudness target above 0", "matchLoudnessTarget=3.5", "matchLoudnessTarget", 0.0,
             true},
            {"loudness target a word", "matchLoudnessTarget=loud", "matchLoudnessTarget", -23.0,
             true},
            {"loudness target in range", "matchLoudnessTarget=-14.5", "matchLoudnessTarget", -14.5,
             false},
            {"detail view 5000 px", "detailViewHeight=5000", "detailViewHeight",
             kMaxDetailViewHeight, true},
            {"overlong root", "RootPath=/" + QByteArray(kMaxSettingTextLength + 1, 'x'), "RootPath",
             QString(), true},
            // A window is placed where it was only if the whole of it was known.
            {"geometry ordinary", "left=8\ntop=84\nwidth=1350\nheight=600", "geometry", true,
             false},
            {"geometry at the origin", "left=0\ntop=0\nwidth=1\nheight=1", "geometry", true, false},
            {"height 0", "left=10\ntop=10\nwidth=800\nheight=0", "geometry", false, false},
            {"maximised frame", "left=0\ntop=-8\nwidth=800\nheight=500", "geometry", false, false},
        };
        for (const auto& c : cases)
            QTest::newRow(c.name) << c.lines << c.key << c.expected << c.reported;
    }
    void hostileValues()
    {
        QFETCH(QByteArray, lines);
        QFETCH(QString, key);
        QFETCH(QVariant, expected);
        QFETCH(bool, reported);
        QVERIFY(settings.writeIni("[General]\n" + lines + '\n'));
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
        for (int i = 1; i <= elements; ++i) {
            const QByteArray n = QByteArray::number(i);
            ini += n + "\\bookmarkDirPath=/sfx/" + n + '\n' + n + "\\bookmarkName=b" + n + '\n';
        }
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

    void recentFolders()
    {
        QStringList recent;
        for (int i = 1; i <= 11; ++i)
            SettingsStore::PushRecentFolder(recent, QStringLiteral("/root%1").arg(i));
        QCOMPARE(recent.size(), 10);
        QCOMPARE(recent.first(), QStringLiteral("/root11"));
        QCOMPARE(recent.last(), QStringLiteral("/root2"));
        // Again: moved to the front, not doubled.
        SettingsStore::PushRecentFolder(recent, QStringLiteral("/root5"));
        QCOMPARE(recent.size(), 10);
        QCOMPARE(recent.mid(0, 2), (QStringList{"/root5", "/root11"}));
        QCOMPARE(recent.count(QStringLiteral("/root5")), 1);

        // An empty list does not erase the stored one.
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
        const QStringList legacy{a, b, folders.filePath(QStringLiteral("legacy/missing"))};
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
        QVERIFY(s.bookmarks == (BookmarkList{{a, "My A"}, {b, "Beta Sounds"}}));
        QCOMPARE(s.legacyBookmarkDirs, legacy);

        SettingsStore::Save(s);
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("bookmarkDirs")).toStringList(), legacy);
        QVERIFY(!raw.contains(QStringLiteral("enlargeFlag")));
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/size")).toInt(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
