// The user's state across the ends of a session: the program killed by a
// signal, a settings file from another set of screens, the root folder taken
// away while it is shown.
#include "MainWindow.h"
#include "TestSettings.h"
#include "TreeViewItemModel.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"
#include "WidgetTreeBrowser.h"
#include "krokTableModel.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

namespace {

quint64 CaughtSignals(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("SigCgt:"))
            return line.mid(7).trimmed().toULongLong(nullptr, 16);
    }
    return 0;
}

} // namespace

class tst_SessionEnd final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;
    QTemporaryDir data;

private slots:
    void init() { configDir.clear(); }

    // The root given on the command line is a change of this session; the
    // signal must not lose it, however soon it comes.
    void signalSavesAndQuits_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
        QTest::newRow("SIGHUP") << int(SIGHUP);
    }
    void signalSavesAndQuits()
    {
        QFETCH(int, signalNumber);
        QTemporaryDir config;
        const QString root = data.filePath(QStringLiteral("sig%1").arg(signalNumber));
        QVERIFY(QDir().mkpath(root));

        QProcess tesk;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        tesk.setProcessEnvironment(env);
        tesk.start(QStringLiteral(TESK_EXECUTABLE), {root});
        QVERIFY(tesk.waitForStarted());
        // Ready once it handles the signal itself.
        const quint64 bit = quint64(1) << (signalNumber - 1);
        QTRY_VERIFY_WITH_TIMEOUT((CaughtSignals(tesk.processId()) & bit) != 0, 20000);

        ::kill(pid_t(tesk.processId()), signalNumber);
        QVERIFY(tesk.waitForFinished(10000));
        QCOMPARE(tesk.exitStatus(), QProcess::NormalExit);
        QCOMPARE(tesk.exitCode(), 0);
        QSettings stored(config.filePath(QStringLiteral("Orvane Works/Tesk.ini")),
                         QSettings::IniFormat);
        QCOMPARE(stored.value(QStringLiteral("RootPath")).toString(), root);
        QCOMPARE(stored.value(QStringLiteral("recentDirs")).toString(), root);
    }

    void storedWindowFitsTheScreen()
    {
        QVERIFY(configDir.writeIni("[General]\nleft=100000\ntop=100000\nwidth=100000\n"
                                   "height=100000\n"));
        MainWindow window;
        window.show();
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const QRect frame = window.frameGeometry();
        QVERIFY(screen.contains(frame));
    }

    // Deleting the shown folder keeps it as the root: the table empties and
    // the status line says why; the folder tree's move to a neighbour does
    // not become a new root, and nothing of it is saved.
    void vanishedRootStaysTheRoot()
    {
        const QString lib = data.filePath(QStringLiteral("lib"));
        const QString shown = lib + QStringLiteral("/b_shown");
        QVERIFY(QDir().mkpath(lib + QStringLiteral("/a_before")));
        QVERIFY(QDir().mkpath(lib + QStringLiteral("/c_after")));
        QVERIFY(QDir().mkpath(shown));
        for (int i = 0; i < 3; ++i)
            QVERIFY(fixtures::writeSineWav(shown + QStringLiteral("/t%1.wav").arg(i), 48000, 1,
                                           4800, 0.0));

        MainWindow window;
        window.show();
        TeskManager* manager = window.GetManager();
        manager->SlotChangeRootPathCalled(shown);
        krokTableModel* model = window.GetTableBrowser()->tableModel();
        const TreeViewItemModel* tree = window.GetTreeBrowser()->treeModel();
        QTRY_COMPARE_WITH_TIMEOUT(tree->rowCount(tree->index(lib)), 3, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(), 3, 20000);
        // The status line replaces the last progress message once analysis is done.
        QTRY_VERIFY_WITH_TIMEOUT(window.GetStatusLabel()->text().startsWith(
                                     QStringLiteral("Number of audio files displayed: 3 ")),
                                 20000);
        const QStringList recent = manager->GetRecentFolders();

        QVERIFY(QDir(shown).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(window.GetStatusLabel()->text(),
                                  "Folder not found: " + QDir::toNativeSeparators(shown), 10000);
        QCOMPARE(model->rowCount(), 0);
        // The folder tree takes the deletion in by itself, a little later.
        QTRY_COMPARE_WITH_TIMEOUT(tree->rowCount(tree->index(lib)), 2, 10000);
        QCOMPARE(manager->GetRootPath(), shown);
        QCOMPARE(manager->GetRecentFolders(), recent);
    }
};

QTEST_MAIN(tst_SessionEnd)
#include "tst_sessionend.moc"
