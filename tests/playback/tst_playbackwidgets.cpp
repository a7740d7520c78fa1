// The player and the detail view, alone and in the real main window, where
// they drive the table's playlist and play its regions. The engine has no
// sound card here and plays on its silent output in real time.
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "LoudnessMatch.h"
#include "MainWindow.h"
#include "TableRoles.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WaveHeaderReader.h"
#include "WidgetDetailView.h"
#include "WidgetPlayer.h"
#include "WidgetTableBrowser.h"

#include <QAction>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

constexpr int kRate = 48000;

QAction* ActionWithShortcut(QWidget* window, Qt::Key key)
{
    for (QAction* action : window->findChildren<QAction*>())
        if (action->shortcut() == QKeySequence(key))
            return action;
    return nullptr;
}

// The window with `folder` listed and analysed.
bool ShowFolder(MainWindow& window, const QString& folder)
{
    QSignalSpy end(window.GetManager(), &TeskManager::SigEndGetDetailInfo);
    window.GetManager()->SlotChangeRootPathCalled(folder);
    return end.wait(30000);
}

} // namespace

class TestPlaybackWidgets : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;

private slots:
    void initTestCase()
    {
        // Region files go to the temporary location: this test's own folder.
        QVERIFY(QDir().mkpath(dir_.filePath(QStringLiteral("tmp"))));
        qputenv("TMPDIR", QFile::encodeName(dir_.filePath(QStringLiteral("tmp"))));
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, dir_.filePath("config"));
    }

    // Only the user's drag tells the engine, in hundredths.
    void sliderDragSendsVolume()
    {
        WidgetPlayer player;
        QSignalSpy sent(&player, &WidgetPlayer::SigChangeVolume);
        player.volumeSlider()->setValue(50);
        for (const int position : {37, 0}) {
            player.volumeSlider()->setSliderDown(true);
            player.volumeSlider()->setSliderPosition(position);
            player.volumeSlider()->setSliderDown(false);
        }
        QCOMPARE(sent.count(), 2);
        QCOMPARE(sent.at(0).at(0).toFloat(), 0.37f);
        QCOMPARE(sent.at(1).at(0).toFloat(), 0.0f);
    }

    // The gain of each start shows while matching is on.
    void gainShowsWhileMatching()
    {
        TeskManager manager;
        WidgetPlayer player;
        player.ConnectManager(&manager);

        QVERIFY(player.gainLabel()->isHidden());
        player.matchLoudnessButton()->click();
        QVERIFY(manager.IsMatchLoudness() && !player.gainLabel()->isHidden());
        for (const auto& [gain, text] : {std::pair<double, QString>{4.46, "+4.5 dB"},
                                         {-0.04, "0.0 dB"},
                                         {-12.0, QChar(0x2212) + QStringLiteral("12.0 dB")}}) {
            emit manager.SigPreviewGainChanged(gain, int(LoudnessMatch::Basis::Matched));
            QCOMPARE(player.gainLabel()->text(), text);
        }
        manager.SlotChangeMatchLoudnessCalled(false);
        QVERIFY(!player.matchLoudnessButton()->isChecked() && player.gainLabel()->isHidden());
    }

    // Playlist on, autoplay off: each file's end plays the next visible row,
    // rows filtered out are skipped, and the last row ends the list.
    void playlistPlaysVisibleRowsInOrderAndStopsAtTheLast()
    {
        QTemporaryDir folder;
        for (int i = 0; i < 4; ++i)
            QVERIFY(fixtures::writeSineWav(folder.filePath(QStringLiteral("take%1.wav").arg(i)),
                                           kRate, 1, kRate / 4));
        MainWindow window;
        TeskManager* manager = window.GetManager();
        KrokManager* registry = manager->GetKrokManager();
        WidgetTableBrowser* browser = window.GetTableBrowser();
        QVERIFY(ShowFolder(window, folder.path()));
        QTRY_COMPARE(browser->sortModel()->rowCount(), 4);
        QStringList shown;
        for (int row = 0; row < 4; ++row)
            shown << browser->sortModel()->index(row, 0).data(TableRoles::FullPath).toString();
        krokTableModel* model = browser->tableModel(); // filter out the third visible row
        for (int row = 0; row < model->rowCount(); ++row)
            model->setRowMatched(row, model->index(row, 0).data(TableRoles::FullPath) != shown[2]);
        browser->sortModel()->refilter();
        manager->SlotChangeAutoPlaybackFlagCalled(false);
        manager->SlotChangePlaylistFlagCalled(true);

        // Each advance starts the next file at once; what plays is noted then,
        // not from the position reports, which a busy machine can space out.
        QStringList played;
        connect(manager, &TeskManager::SigSelectNextItem, this, [&] {
            if (registry->GetPlayingPath() != played.last())
                played << registry->GetPlayingPath();
        });
        browser->tableView()->selectRow(0);
        QVERIFY(!registry->IsPlaying()); // autoplay off
        window.findChild<WidgetPlayer*>()->playButton()->click();
        played << registry->GetPlayingPath();
        QTRY_VERIFY_WITH_TIMEOUT(!manager->GetPlaylistTimer()->isActive() && !registry->IsPlaying(),
                                 15000);
        QCOMPARE(played, QStringList({shown[0], shown[1], shown[3]}));
        QCOMPARE(browser->tableView()->currentIndex().row(), 2);
    }

    // The output fails to open while the window starts the engine: the message
    // still reaches the status line.
    void engineStartFailureReachesTheStatusLine()
    {
        qputenv("SDL_AUDIODRIVER", "no_such_driver");
        MainWindow window;
        qunsetenv("SDL_AUDIODRIVER");
        QTRY_VERIFY(window.GetStatusLabel()->text().startsWith(QStringLiteral("E2026112201 : ")));
    }

    // In the window the detail view shows the current row's file. A drag
    // across its waveform selects a region, whose WAV is written at once, and
    // Space plays the region once; a click plays from where it lands and drops
    // the region.
    void dragSelectsARegionThatSpacePlays()
    {
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("hit.wav"));
        QVERIFY(fixtures::writeSineWav(file, kRate, 1, kRate * 4, 0.5, 330.0));
        MainWindow window;
        window.resize(1024, 700);
        window.show();
        TeskManager* manager = window.GetManager();
        QVERIFY(ShowFolder(window, folder.path()));
        manager->SlotChangeAutoPlaybackFlagCalled(false);
        WidgetTableBrowser* browser = window.GetTableBrowser();
        QTRY_COMPARE(browser->sortModel()->rowCount(), 1);
        browser->tableView()->setCurrentIndex(browser->sortModel()->index(0, 0));
        WidgetDetailView* view = window.GetDetailView();
        QCOMPARE(view->File(), file);
        QTRY_VERIFY(view->Overview() != nullptr);

        const int w = view->width(), y = view->height() / 2;
        QTest::mousePress(view, Qt::LeftButton, {}, QPoint(w / 4, y));
        for (const int x : {w / 3, w / 2}) { // QTest's own move carries no buttons
            QMouseEvent move(QEvent::MouseMove, QPoint(x, y), view->mapToGlobal(QPoint(x, y)),
                             Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view, &move);
        }
        QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(w / 2, y));
        QCOMPARE(view->RegionStart(), view->FrameAt(w / 4));
        QCOMPARE(view->RegionEnd(), view->FrameAt(w / 2));
        QVERIFY(view->RegionEnd() - view->RegionStart() > kRate / 2);
        QTRY_VERIFY(!view->RegionFile().isEmpty());
        WaveHeaderHandle* h = OpenWaveHeader(QFile::encodeName(view->RegionFile()).constData());
        QVERIFY(view->RegionFile().startsWith(dir_.path()) && h);
        QCOMPARE(GetWaveSamples(h), view->RegionEnd() - view->RegionStart());
        CloseWaveHeader(h);

        ActionWithShortcut(&window, Qt::Key_Space)->trigger();
        KrokManager* registry = manager->GetKrokManager();
        QCOMPARE(registry->GetPlayingPath(), file);
        QTRY_VERIFY(registry->IsPlaying());
        const std::int64_t at = registry->GetPlaybackPosition();
        QVERIFY2(at >= view->RegionStart() && at < view->RegionEnd(),
                 qPrintable(QString::number(at)));
        QTRY_VERIFY_WITH_TIMEOUT(!registry->IsPlaying(), 4000); // the region once, then the end
        QTRY_VERIFY(view->ShownPosition() < 0);

        QSignalSpy from(view, &WidgetDetailView::SigPlayFrom);
        QTest::mouseClick(view, Qt::LeftButton, {}, QPoint(w * 3 / 4, y));
        QCOMPARE(from.count(), 1);
        QCOMPARE(from.first().at(1).toInt(), int(view->FrameAt(w * 3 / 4) * 1000 / kRate));
        QVERIFY(!view->HasRegion());
        manager->SlotStopPlaybackCalled();
    }
};

QTEST_MAIN(TestPlaybackWidgets)
#include "tst_playbackwidgets.moc"
