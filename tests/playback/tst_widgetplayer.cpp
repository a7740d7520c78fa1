// The player widget alone, attached to the manager, and inside the real main
// window where it drives the table's playlist. The engine has no sound card
// here and plays on its silent output in real time.
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "LoudnessMatch.h"
#include "MainWindow.h"
#include "TableRoles.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
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

#include <cmath>

namespace {

constexpr int kRate = 48000;

// Mono 16-bit 330 Hz sine of `seconds`.
bool WriteWav(const QString& path, double seconds)
{
    return fixtures::writeSineWav(path, kRate, 1, static_cast<int>(std::lround(seconds * kRate)),
                                  3000.0 / 32767.0, 330.0);
}

QAction* ActionWithShortcut(QWidget* window, const QKeySequence& key)
{
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->shortcut() == key)
            return action;
    }
    return nullptr;
}

} // namespace

class TestWidgetPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir configDir;

private slots:
    void initTestCase()
    {
        QVERIFY(configDir.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, configDir.path());
    }

    // Only the user's drag tells the engine, in hundredths.
    void sliderDragSendsVolume()
    {
        WidgetPlayer player;
        QSignalSpy sent(&player, &WidgetPlayer::SigChangeVolume);
        QSlider* slider = player.volumeSlider();
        slider->setValue(50);
        for (const int position : {37, 0}) {
            slider->setSliderDown(true);
            slider->setSliderPosition(position);
            slider->setSliderDown(false);
        }
        QCOMPARE(sent.count(), 2);
        QCOMPARE(sent.at(0).at(0).toFloat(), 0.37f);
        QCOMPARE(sent.at(1).at(0).toFloat(), 0.0f);
    }

    // The toggles follow the manager's flags both ways; the gain of each
    // start shows beside the loudness toggle while matching is on; Stop stops
    // the sound and the playlist.
    void togglesFollowTheManager()
    {
        TeskManager manager;
        WidgetPlayer player;
        player.ConnectManager(&manager);
        manager.SlotChangeAutoPlaybackFlagCalled(false);
        manager.SlotChangePlaylistFlagCalled(true);
        QVERIFY(!player.autoplayButton()->isChecked() && player.playlistButton()->isChecked());
        QSignalSpy autoplayChanged(&manager, &TeskManager::SigAutoPlaybackFlagChanged);
        player.autoplayButton()->click();
        QVERIFY(manager.IsAutoPlayback() && player.autoplayButton()->isChecked());
        QCOMPARE(autoplayChanged.count(), 1);
        player.playlistButton()->click();
        QVERIFY(!manager.IsPlaylist() && !player.playlistButton()->isChecked());
        QVERIFY(!manager.GetPlaylistTimer()->isActive()); // the click alone starts no timer

        QVERIFY(!player.matchLoudnessButton()->isChecked() && player.gainLabel()->isHidden());
        player.matchLoudnessButton()->click();
        QVERIFY(manager.IsMatchLoudness() && !player.gainLabel()->isHidden());
        const auto matched = static_cast<int>(LoudnessMatch::Basis::Matched);
        for (const auto& [gain, text] :
             {std::pair<double, QString>{4.46, QStringLiteral("+4.5 dB")},
              {-0.04, QStringLiteral("0.0 dB")},
              {-12.0, QChar(0x2212) + QStringLiteral("12.0 dB")}}) {
            emit manager.SigPreviewGainChanged(gain, matched);
            QCOMPARE(player.gainLabel()->text(), text);
        }
        manager.SlotChangeMatchLoudnessCalled(false);
        QVERIFY(!player.matchLoudnessButton()->isChecked() && player.gainLabel()->isHidden());

        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("long.wav"));
        QVERIFY(WriteWav(file, 3.0));
        manager.SlotChangePlaylistFlagCalled(true);
        manager.SlotStartPlaybackCalled(file);
        QTRY_VERIFY(manager.GetKrokManager()->IsPlaying());
        QVERIFY(manager.GetPlaylistTimer()->isActive());
        player.stopButton()->click();
        QVERIFY(!manager.GetPlaylistTimer()->isActive());
        QVERIFY(manager.GetKrokManager()->GetPlayingPath().isEmpty());
        QTRY_VERIFY(!manager.GetKrokManager()->IsPlaying());
    }

    // Playlist on, autoplay off: each file's end plays the next visible row,
    // rows filtered out are skipped, and the last row ends the list.
    void playlistPlaysVisibleRowsInOrderAndStopsAtTheLast()
    {
        QTemporaryDir dir;
        for (int i = 0; i < 4; ++i)
            QVERIFY(WriteWav(dir.filePath(QStringLiteral("take%1.wav").arg(i)), 0.3));
        MainWindow window;
        TeskManager* manager = window.GetManager();
        auto* player = window.findChild<WidgetPlayer*>();
        auto* browser = window.findChild<WidgetTableBrowser*>();
        QVERIFY(player && browser);
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeRootPathCalled(dir.path());
        QVERIFY(end.wait(30000));

        QTRY_COMPARE(browser->sortModel()->rowCount(), 4);
        QStringList shown;
        for (int row = 0; row < 4; ++row)
            shown << browser->sortModel()->index(row, 0).data(TableRoles::FullPath).toString();
        krokTableModel* model = browser->tableModel(); // filter out the third visible row
        for (int row = 0; row < model->rowCount(); ++row)
            model->setRowMatched(row,
                                 model->index(row, 0).data(TableRoles::FullPath) != shown.at(2));
        browser->sortModel()->refilter();
        QCOMPARE(browser->sortModel()->rowCount(), 3);

        manager->SlotChangeAutoPlaybackFlagCalled(false);
        manager->SlotChangePlaylistFlagCalled(true);

        QStringList played;
        connect(manager, &TeskManager::SigSetPlaybackPosition, this,
                [&played](const QString& path, double) {
                    if (played.isEmpty() || played.last() != path)
                        played << path;
                });
        browser->tableView()->selectRow(0);
        QVERIFY(!manager->GetKrokManager()->IsPlaying()); // autoplay off
        player->playButton()->click();
        QCOMPARE(manager->GetKrokManager()->GetPlayingPath(), shown.at(0));

        QTRY_COMPARE_WITH_TIMEOUT(played.size(), 3, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!manager->GetKrokManager()->IsPlaying(), 3000);
        QTRY_VERIFY(!manager->GetPlaylistTimer()->isActive());
        QTest::qWait(600);
        QCOMPARE(played, QStringList({shown.at(0), shown.at(1), shown.at(3)}));
        QCOMPARE(browser->tableView()->currentIndex().row(), 2);
        QVERIFY(!manager->GetKrokManager()->IsPlaying());
    }

    // The output fails to open while the manager starts the engine: the
    // message still reaches the status line once the event loop runs, and the
    // silent output it fell back to plays; R and T, the menu bar's seek keys,
    // move the playing file.
    void engineStartFailureAndSeekKeys()
    {
        qputenv("SDL_AUDIODRIVER", "no_such_driver");
        MainWindow window;
        qunsetenv("SDL_AUDIODRIVER");
        QTRY_VERIFY(window.GetStatusLabel()->text().startsWith(QStringLiteral("E2026112201 : ")));
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("long.wav"));
        QVERIFY(WriteWav(file, 4.0));
        TeskManager* manager = window.GetManager();
        KrokManager* registry = manager->GetKrokManager();
        QSignalSpy end(manager, &TeskManager::SigEndGetDetailInfo);
        manager->SlotChangeRootPathCalled(dir.path());
        QVERIFY(end.wait(30000));
        QAction* back = ActionWithShortcut(&window, QKeySequence(Qt::Key_R));
        QAction* forward = ActionWithShortcut(&window, QKeySequence(Qt::Key_T));
        QVERIFY(back && forward);
        manager->SlotStartPlaybackCalled(file);
        QTRY_VERIFY(registry->IsPlaying() && registry->GetPlaybackPosition() > kRate / 5);
        const qint64 before = registry->GetPlaybackPosition();
        forward->trigger();
        QTRY_VERIFY(registry->IsPlaying());
        const qint64 ahead = registry->GetPlaybackPosition();
        QVERIFY2(ahead >= before + kRate,
                 qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(ahead)));
        back->trigger();
        QTRY_VERIFY(registry->IsPlaying());
        const qint64 behind = registry->GetPlaybackPosition();
        QVERIFY2(behind < ahead && behind >= ahead - kRate - kRate / 10,
                 qPrintable(QStringLiteral("%1 -> %2").arg(ahead).arg(behind)));
        manager->SlotStopPlaybackCalled();
    }
};

QTEST_MAIN(TestWidgetPlayer)
#include "tst_widgetplayer.moc"
