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
#include <QElapsedTimer>
#include <QFile>
#include <QHBoxLayout>
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

QImage IconImage(const QToolButton* button, QIcon::State state)
{
    return button->icon().pixmap(QSize(24, 24), QIcon::Normal, state).toImage();
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

    void controls()
    {
        WidgetPlayer player;
        const QSlider* slider = player.volumeSlider();
        QCOMPARE(slider->orientation(), Qt::Horizontal);
        QCOMPARE(slider->minimum(), 0);
        QCOMPARE(slider->maximum(), 100);
        QCOMPARE(slider->value(), 100);
        QCOMPARE(player.layout()->contentsMargins(), QMargins(0, 0, 0, 0));

        // Left to right: slider, play, stop, autoplay, playlist.
        const QList<QWidget*> order = {player.volumeSlider(), player.playButton(),
                                       player.stopButton(), player.autoplayButton(),
                                       player.playlistButton()};
        for (int i = 0; i < order.size(); ++i)
            QCOMPARE(player.layout()->itemAt(i)->widget(), order.at(i));

        const QList<QPair<QToolButton*, QString>> tips = {
            {player.playButton(), QStringLiteral("Playback")},
            {player.stopButton(), QStringLiteral("Stop")},
            {player.autoplayButton(), QStringLiteral("Play selected tracks")},
            {player.playlistButton(), QStringLiteral("Enable Playlist Playback")},
        };
        for (const auto& [button, tip] : tips) {
            QCOMPARE(button->toolTip(), tip);
            QCOMPARE(button->iconSize(), QSize(24, 24));
            QVERIFY2(!IconImage(button, QIcon::Off).isNull(), qPrintable(tip));
        }
        QVERIFY(!player.playButton()->isCheckable());
        QVERIFY(!player.stopButton()->isCheckable());
        QVERIFY(player.autoplayButton()->isCheckable());
        QVERIFY(player.playlistButton()->isCheckable());
        // The toggles show a second image when on.
        for (QToolButton* toggle : {player.autoplayButton(), player.playlistButton()}) {
            QCOMPARE(IconImage(toggle, QIcon::Off),
                     QImage(toggle == player.autoplayButton()
                                ? QStringLiteral(":/images/autoplay.png")
                                : QStringLiteral(":/images/playlist.png"))
                         .convertToFormat(IconImage(toggle, QIcon::Off).format()));
            QVERIFY(IconImage(toggle, QIcon::On) != IconImage(toggle, QIcon::Off));
        }
    }

    void sliderDragSendsVolume_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<float>("volume");
        QTest::newRow("37") << 37 << 0.37f;
        QTest::newRow("silent") << 0 << 0.0f;
        QTest::newRow("full") << 100 << 1.0f;
        QTest::newRow("1") << 1 << 0.01f;
    }

    void sliderDragSendsVolume()
    {
        QFETCH(int, position);
        QFETCH(float, volume);
        WidgetPlayer player;
        QSignalSpy sent(&player, &WidgetPlayer::SigChangeVolume);
        QSlider* slider = player.volumeSlider();
        slider->setValue(50);
        QCOMPARE(sent.count(), 0); // set by program: the engine is not told

        slider->setSliderDown(true);
        slider->setSliderPosition(position);
        slider->setSliderDown(false);
        QCOMPARE(sent.count(), 1);
        QCOMPARE(sent.first().at(0).toFloat(), volume);
    }

    void managerFlagsDriveTheToggles()
    {
        TeskManager manager;
        WidgetPlayer player;
        player.ConnectManager(&manager);
        QSignalSpy autoplayChanged(&manager, &TeskManager::SigAutoPlaybackFlagChanged);

        manager.SlotChangeAutoPlaybackFlagCalled(false);
        manager.SlotChangePlaylistFlagCalled(true);
        QVERIFY(!player.autoplayButton()->isChecked());
        QVERIFY(player.playlistButton()->isChecked());
        autoplayChanged.clear();

        player.autoplayButton()->click();
        QVERIFY(manager.IsAutoPlayback());
        QVERIFY(player.autoplayButton()->isChecked());
        QCOMPARE(autoplayChanged.count(), 1);

        player.playlistButton()->click();
        QVERIFY(!manager.IsPlaylist());
        QVERIFY(!player.playlistButton()->isChecked());
        // The click alone does not start the playlist timer.
        QVERIFY(!manager.GetPlaylistTimer()->isActive());
    }

    // The loudness toggle follows the manager's flag both ways; the gain of
    // each start shows beside it while matching is on.
    void matchLoudnessToggleShowsTheGain()
    {
        TeskManager manager;
        WidgetPlayer player;
        player.ConnectManager(&manager);
        QVERIFY(!player.matchLoudnessButton()->isChecked());
        QVERIFY(player.gainLabel()->isHidden());
        player.matchLoudnessButton()->click();
        QVERIFY(manager.IsMatchLoudness());
        QVERIFY(!player.gainLabel()->isHidden());
        emit manager.SigPreviewGainChanged(4.46, static_cast<int>(LoudnessMatch::Basis::Matched));
        QCOMPARE(player.gainLabel()->text(), QStringLiteral("+4.5 dB"));
        QVERIFY(!player.gainLabel()->toolTip().isEmpty());
        emit manager.SigPreviewGainChanged(-0.04, static_cast<int>(LoudnessMatch::Basis::Matched));
        QCOMPARE(player.gainLabel()->text(), QStringLiteral("0.0 dB"));
        emit manager.SigPreviewGainChanged(-12.0, static_cast<int>(LoudnessMatch::Basis::Matched));
        QCOMPARE(player.gainLabel()->text(), QString(QChar(0x2212)) + QStringLiteral("12.0 dB"));
        manager.SlotChangeMatchLoudnessCalled(false);
        QVERIFY(!player.matchLoudnessButton()->isChecked());
        QVERIFY(player.gainLabel()->isHidden());
    }

    void stopButtonStopsPlayback()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("long.wav"));
        QVERIFY(WriteWav(file, 3.0));
        TeskManager manager;
        WidgetPlayer player;
        player.ConnectManager(&manager);
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
        QStringList files;
        for (int i = 0; i < 4; ++i) {
            files << dir.filePath(QStringLiteral("take%1.wav").arg(i));
            QVERIFY(WriteWav(files.last(), 0.3));
        }
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
        // Filter out the third visible row.
        krokTableModel* model = browser->tableModel();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row, 0).data(TableRoles::FullPath).toString() == shown.at(2))
                model->setRowMatched(row, false);
        }
        browser->sortModel()->refilter();
        QCOMPARE(browser->sortModel()->rowCount(), 3);

        player->autoplayButton()->click();
        QVERIFY(!manager->IsAutoPlayback());
        player->playlistButton()->click();
        QVERIFY(manager->IsPlaylist());

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
    // message still reaches the status line once the event loop runs.
    void engineStartFailureReachesTheStatusLine()
    {
        qputenv("SDL_AUDIODRIVER", "no_such_driver");
        MainWindow window;
        qunsetenv("SDL_AUDIODRIVER");
        QTRY_VERIFY(window.GetStatusLabel()->text().startsWith(QStringLiteral("E2026112201 : ")));
        // Playback still works on the silent output it fell back to.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("one.wav"));
        QVERIFY(WriteWav(file, 1.0));
        window.GetManager()->SlotStartPlaybackCalled(file);
        QTRY_VERIFY(window.GetManager()->GetKrokManager()->GetPlaybackPosition() > 0);
        window.GetManager()->SlotStopPlaybackCalled();
    }

    // R and T are the menu bar's seek keys; they reach the manager's seek.
    void seekKeysMoveThePlayingFile()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("long.wav"));
        QVERIFY(WriteWav(file, 4.0));
        MainWindow window;
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
        const qint64 beforeForward = registry->GetPlaybackPosition();
        forward->trigger();
        QTRY_VERIFY(registry->IsPlaying());
        const qint64 afterForward = registry->GetPlaybackPosition();
        QVERIFY2(afterForward >= beforeForward + kRate,
                 qPrintable(QStringLiteral("%1 -> %2").arg(beforeForward).arg(afterForward)));

        back->trigger();
        QTRY_VERIFY(registry->IsPlaying());
        const qint64 afterBack = registry->GetPlaybackPosition();
        QVERIFY2(afterBack < afterForward && afterBack >= afterForward - kRate - kRate / 10,
                 qPrintable(QStringLiteral("%1 -> %2").arg(afterForward).arg(afterBack)));
        manager->SlotStopPlaybackCalled();
    }
};

QTEST_MAIN(TestWidgetPlayer)
#include "tst_widgetplayer.moc"
