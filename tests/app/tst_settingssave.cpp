// When settings reach the disk: about a second after a change settles, at
// once when asked, and never as a half-written file.
#include "SettingsStore.h"
#include "TeskManager.h"
#include "TestSettings.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace {

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

class TestSettingsSave final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings settings;

private slots:
    void initTestCase() { QVERIFY(settings.isValid()); }
    void init() { settings.clear(); }

    void changesAreWrittenOnceSettled()
    {
        TeskManager manager;
        manager.ApplyStoredSettings();
        manager.SetRowHeight(40);
        manager.SetSeekTimeMs(2500);
        // Nothing is written while the change is fresh.
        QVERIFY(!StoredValue(settings.iniPath(), QStringLiteral("rowHeight")).isValid());
        QTRY_COMPARE_WITH_TIMEOUT(StoredValue(settings.iniPath(), QStringLiteral("rowHeight")),
                                  QVariant(QStringLiteral("40")), 10000);
        QCOMPARE(StoredValue(settings.iniPath(), QStringLiteral("seekTimeMs")).toInt(), 2500);

        manager.SlotChangeRootPathCalled(QStringLiteral("/nowhere/at/all"));
        QTRY_COMPARE_WITH_TIMEOUT(StoredValue(settings.iniPath(), QStringLiteral("RootPath")),
                                  QVariant(QStringLiteral("/nowhere/at/all")), 10000);
    }

    void saveNowWritesBeforeReturning()
    {
        TeskManager manager;
        manager.ApplyStoredSettings();
        manager.SlotChangeShowHiddensCalled(true);
        manager.SetWindowGeometry(5, 6, 700, 500);
        manager.SaveSettingsNow();
        QCOMPARE(StoredValue(settings.iniPath(), QStringLiteral("showHiddenFlag")).toBool(), true);
        QCOMPARE(StoredValue(settings.iniPath(), QStringLiteral("width")).toInt(), 700);
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
            QVERIFY2(problems.isEmpty(), qPrintable(problems.join('\n')));
            const int g = s.rootPath.section(QLatin1Char('/'), 2, 2).toInt();
            QVERIFY2(g >= first, qPrintable(s.rootPath));
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

QTEST_GUILESS_MAIN(TestSettingsSave)
#include "tst_settingssave.moc"
