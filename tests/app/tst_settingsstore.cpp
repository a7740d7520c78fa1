// The settings file: every key written and read back under its own name,
// hand-edited values taken, clamped or refused, bookmark arrays that cannot be
// trusted left alone, keys of other versions kept; written about a second
// after a change settles and never as a half-written file; and the rules that
// place the window and choose the root at start.
#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"
#include "FitWindowGeometry.h"
#include "RootPathInput.h"
#include "SettingsStore.h"
#include "TeskManager.h"
#include "TestSettings.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <tuple>

namespace {

QVariant Field(const StoredSettings& s, const QString& key)
{
    const QHash<QString, QVariant> fields{
        {"RootPath", s.rootPath},
        {"rowHeight", s.rowHeight},
        {"loudnessFlag", s.loudnessFlag},
        {"columnState", s.columnState},
        {"recentDirs", s.recentDirs},
        {"GACAddress", s.gacAddress},
        {"GACPortNumber", s.gacPortNumber},
        {"ColorTheme", s.colorTheme},
        {"matchLoudnessTarget", s.matchLoudnessTarget},
        {"detailViewHeight", s.detailViewHeight},
        {"geometry", s.HasValidGeometry()},
        {"bookmark",
         s.bookmarks.isEmpty() ? QString() : s.bookmarks[0].name + '=' + s.bookmarks[0].path},
    };
    return fields.value(key);
}

// Reads the file through a fresh copy: QSettings keeps files it has read and
// may not notice a rewrite of the same size within the same millisecond.
QVariant StoredValue(const QString& ini, const QString& key)
{
    QTemporaryDir copyDir;
    const QString copy = copyDir.filePath(QStringLiteral("copy.ini"));
    if (!QFile::copy(ini, copy))
        return {};
    return QSettings(copy, QSettings::IniFormat).value(key);
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
    void init() { settings.clear(); }

    void roundTripOfEveryKey()
    {
        const QString a = makeFolder(QStringLiteral("rt/a"));
        StoredSettings out;
        out.rootPath = a;
        out.rowHeight = 30;
        out.loudnessFlag = out.loudnessVoltMode = out.multiPlotFlag = out.showHiddenFlag = true;
        out.playlistFlag = out.recursiveFlag = out.matchLoudnessFlag = out.detailViewChannels =
            true;
        out.autoPlaybackFlag = out.fontTableIsFit = out.detailViewVisible = false;
        std::tie(out.left, out.top, out.width, out.height) = std::make_tuple(10, 20, 900, 700);
        out.columnState = 0x5;
        out.recentDirs = QStringList{a, QStringLiteral("/b")};
        out.externalExecutePath = QStringLiteral("/usr/bin/editor");
        out.externalExecuteArgs = QStringLiteral("-open %FILEPATH%");
        out.seekTimeMs = 2500;
        out.gacAddress = QStringLiteral("10.0.0.2");
        out.gacPortNumber = 5555;
        out.colorTheme = 2;
        out.fontTreeFamily = QStringLiteral("Tree Sans");
        out.fontTableFamily = QStringLiteral("Table Serif");
        out.fontTreeSize = 9;
        out.fontTableSize = 13;
        out.bookmarks = {{a, "Alpha"}, {"/gone", "G"}};
        out.matchLoudnessTarget = -16.5;
        out.matchLoudnessMaxBoost = 6.0;
        out.outputDevice = QStringLiteral("USB Audio CODEC Analog Stereo");
        out.detailViewHeight = 222;
        out.tableHeaderState = QByteArray("\x00\xff header", 9);
        SettingsStore::Save(out);

        // The keys are the documented names; QSettings numbers array elements from 1.
        QSettings raw(iniPath(), QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("RootPath")).toString(), a);
        QCOMPARE(raw.value(QStringLiteral("GACPortNumber")).toInt(), 5555);
        QCOMPARE(raw.value(QStringLiteral("fontTableIsFit")).toBool(), false);
        QCOMPARE(raw.value(QStringLiteral("bookmarkRoot/2/bookmarkName")).toString(), "G");
        QVERIFY(!raw.contains(QStringLiteral("bookmarkDirs")));

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
            {"negative row height", "rowHeight=-5", "rowHeight", kMinRowHeight, true},
            {"row height past 64 bits", "rowHeight=99999999999999999999", "rowHeight", 22, true},
            {"port 999999", "GACPortNumber=999999", "GACPortNumber", 65535, true},
            {"theme 7", "ColorTheme=7", "ColorTheme", 0, true},
            {"flag 'maybe'", "loudnessFlag=maybe", "loudnessFlag", false, true},
            {"root written as a list", "RootPath=/a, b", "RootPath", QString(), true},
            {"empty address", "GACAddress=", "GACAddress", QStringLiteral("localhost"), true},
            {"every column bit set", "columnState=-1", "columnState", 0x7FFF, true},
            {"column state a rectangle", "columnState=@Rect(1 2 3 4)", "columnState", 0x7FFF, true},
            {"bookmark without a name", "[bookmarkRoot]\nsize=1\n1\\bookmarkDirPath=/sfx/door",
             "bookmark", QStringLiteral("door=/sfx/door"), true},
            {"bookmark without a folder", "[bookmarkRoot]\nsize=1\n1\\bookmarkName=door",
             "bookmark", QString(), true},
            {"no column keeps them all", "columnState=0", "columnState", 0x7FFF, false},
            {"twelve recent folders", "recentDirs=" + twelve.join(", ").toUtf8(), "recentDirs",
             QVariant(twelve.mid(0, 10)), true},
            {"loudness target above 0", "matchLoudnessTarget=3.5", "matchLoudnessTarget", 0.0,
             true},
            {"detail view 5000 px", "detailViewHeight=5000", "detailViewHeight",
             kMaxDetailViewHeight, true},
            {"overlong root", "RootPath=/" + QByteArray(kMaxSettingTextLength + 1, 'x'), "RootPath",
             QString(), true},
            // A window is placed where it was only if the whole of it was known.
            {"geometry ordinary", "left=8\ntop=84\nwidth=1350\nheight=600", "geometry", true,
             false},
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
            QVERIFY(problems.first().startsWith(key));
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
        // Elements past the count are left over from a longer list.
        QTest::newRow("smaller than the elements")
            << QByteArray("size=1") << 3 << 1 << false << false;
        QTest::newRow("negative") << QByteArray("size=-3") << 2 << 0 << true << true;
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
        for (int i : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 5})
            SettingsStore::PushRecentFolder(recent, QString::number(i));
        QCOMPARE(recent.join(' '), QString("5 11 10 9 8 7 6 4 3 2"));

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

    void windowGeometry()
    {
        // Default: 1350 x 600 centred, wider where the table's columns want it
        // and the screen has room, the whole width of a narrower screen.
        const struct
        {
            QRect screen;
            int wanted;
            QRect window;
        } defaults[] = {
            {QRect(0, 0, 1366, 768), 0, QRect(8, 84, 1350, 600)},
            {QRect(0, 0, 1280, 1024), 0, QRect(0, 212, 1280, 600)},
            {QRect(0, 0, 1920, 1080), 1600, QRect(160, 240, 1600, 600)},
            {QRect(0, 0, 1366, 768), 1600, QRect(0, 84, 1366, 600)},
            {QRect(1920, 0, 1920, 1080), 1600, QRect(2080, 240, 1600, 600)},
        };
        for (const auto& c : defaults)
            QCOMPARE(DefaultWindowGeometry(c.screen, c.wanted), c.window);

        // Stored: fitted onto the screens (the session test shows one of
        // 100000 x 100000); values no rectangle can hold still land on one.
        const QList<QRect> screens{QRect(0, 0, 1920, 1040), QRect(1920, 0, 1280, 1024)};
        const QRect extreme = FitWindowGeometry(INT_MAX, INT_MIN, INT_MAX, INT_MAX, screens);
        QVERIFY(screens.first().contains(extreme) || screens.last().contains(extreme));
    }

    // Roots typed (relative to the sandbox, which is the working folder and
    // the home folder) or given on the command line.
    void rootInput()
    {
        QTemporaryDir dir;
        const QString base = QDir(dir.path()).canonicalPath();
        QVERIFY(fixtures::WriteBytes(base + QStringLiteral("/lib/sub/Take 2.WAV")));
        QVERIFY(fixtures::WriteBytes(base + QStringLiteral("/lib/notes.txt")));
        const QByteArray home = qgetenv("HOME");
        const QString previous = QDir::currentPath();
        qputenv("HOME", QFile::encodeName(base));
        QDir::setCurrent(base);
        const struct
        {
            const char *typed, *folder, *file;
            RootRequest::Refusal refusal;
        } cases[] = {
            {"./lib//sub/..///", "/lib", "", RootRequest::Accepted},
            {"~", "", "", RootRequest::Accepted},
            {"~/lib/sub/Take 2.WAV", "/lib/sub", "/lib/sub/Take 2.WAV", RootRequest::Accepted},
            {"", nullptr, "", RootRequest::Empty},
            // The home of another user is a name like any other.
            {"~nobody", "/~nobody", "", RootRequest::Missing},
        };
        for (const auto& c : cases) {
            const RootRequest request = ResolveTypedRoot(QLatin1String(c.typed));
            QCOMPARE(request.refusal, c.refusal);
            QCOMPARE(request.folder, c.folder ? base + QLatin1String(c.folder) : QString());
            QCOMPARE(request.file, *c.file ? base + QLatin1String(c.file) : QString());
        }
        QCOMPARE(ResolveTypedRoot(QStringLiteral("lib/notes.txt")).refusal, RootRequest::NotAudio);
        // On the command line: a folder, or an audio file to be selected in its folder.
        for (const QString& taken : QStringList{base + "/lib", base + "/lib/sub/Take 2.WAV"})
            QCOMPARE(CommandLineRoot({"tesk", taken}), taken);
        for (const QString& refused : QStringList{base + "/lib/notes.txt", base + "/x.wav", "-x"})
            QCOMPARE(CommandLineRoot({"tesk", refused}), QString());
        // The root of the file system keeps its slash.
        QCOMPARE(NormalizedRootPath(QStringLiteral("//")), QStringLiteral("/"));
        QDir::setCurrent(previous);
        qputenv("HOME", home);
    }

    // Written once a change settles, at once when asked.
    void changesReachTheDisk()
    {
        const auto stored = [this](const char* key) {
            return StoredValue(settings.iniPath(), QLatin1String(key));
        };
        TeskManager manager;
        manager.ApplyStoredSettings();
        manager.SetRowHeight(40);
        manager.SlotChangeRootPathCalled(QStringLiteral("/nowhere/at/all"));
        QVERIFY(!stored("rowHeight").isValid());
        QTRY_COMPARE_WITH_TIMEOUT(stored("rowHeight"), QVariant(QStringLiteral("40")), 10000);
        QCOMPARE(stored("RootPath").toString(), QStringLiteral("/nowhere/at/all"));
        manager.SetWindowGeometry(5, 6, 700, 500);
        manager.SaveSettingsNow();
        QCOMPARE(stored("width").toInt(), 700);
    }

    // A writer killed at random moments, many times: the file is always one
    // whole generation, the last one written or the one before.
    void killedWhileSavingLeavesAWholeFile()
    {
        QTemporaryDir dir;
        const QString ini = dir.filePath(QStringLiteral("Tesk.ini"));
        const QString writer = QCoreApplication::applicationDirPath() + "/settings_writer";
        int first = 1;
        for (int round = 0; round < 60; ++round) {
            QProcess p;
            p.start(writer, {ini, QString::number(first)});
            QVERIFY(p.waitForStarted());
            QVERIFY2(p.waitForReadyRead(10000), "a writer waits for a lock file left behind");
            QTest::qSleep(QRandomGenerator::global()->bounded(1, 30));
            p.kill();
            QVERIFY(p.waitForFinished());
            QCOMPARE(p.exitStatus(), QProcess::CrashExit);

            QTemporaryDir copyDir;
            const QString copy = copyDir.filePath(QStringLiteral("copy.ini"));
            QVERIFY(QFile::copy(ini, copy));
            QSettings stored(copy, QSettings::IniFormat);
            QCOMPARE(stored.status(), QSettings::NoError);
            StoredSettings s;
            const QStringList problems = SettingsStore::Load(stored, s);
            QCOMPARE(problems, QStringList());
            const int g = s.rootPath.section(QLatin1Char('/'), 2, 2).toInt();
            QVERIFY(g >= first);
            QCOMPARE(s.rootPath, QStringLiteral("/gen/%1/").arg(g) + QString(g % 997, 'p'));
            QCOMPARE(s.rowHeight, kMinRowHeight + g % 100);
            QCOMPARE(s.seekTimeMs, kMinSeekTimeMs + g);
            QCOMPARE(s.bookmarks.size(), g % 50 + 1);
            QCOMPARE(s.bookmarks.last().path, QStringLiteral("/gen/%1/%2").arg(g).arg(g % 50));
            first = g + 1;
            // A writer killed while creating a lock leaves it empty; the next
            // start clears such leftovers before its first save.
            const QFileInfo lock(ini + ".lock"), rmlock(ini + ".lock.rmlock");
            if ((lock.exists() && lock.size() == 0) || (rmlock.exists() && rmlock.size() == 0))
                QTest::qSleep(1100);
            SettingsStore::RemoveAbandonedLocks(ini);
        }
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
