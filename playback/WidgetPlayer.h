#pragma once

#include <QWidget>

class QSlider;
class QToolButton;
class TeskManager;

// The row of preview controls: volume, play, stop, autoplay and playlist. Holds
// no playback state; requests go to the manager, and the two toggles follow the
// manager's flags.
class WidgetPlayer final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetPlayer)

public:
    explicit WidgetPlayer(QWidget* parent = nullptr);

    // The manager announces its stored flags after this, so the toggles show them.
    void ConnectManager(TeskManager* manager);

    QSlider* volumeSlider() const { return slider; }
    QToolButton* playButton() const { return buttonPlay; }
    QToolButton* stopButton() const { return buttonStop; }
    QToolButton* autoplayButton() const { return buttonAutoplay; }
    QToolButton* playlistButton() const { return buttonPlaylist; }

signals:
    void SigChangeVolume(float volume);
    void SigStartCalled();

public slots:
    void SlotSliderMoved(int value);
    void SlotAutoplayFlagChanged(bool flag);
    void SlotPlaylistFlagChanged(bool flag);

private:
    QSlider* slider;
    QToolButton* buttonPlay;
    QToolButton* buttonStop;
    QToolButton* buttonAutoplay;
    QToolButton* buttonPlaylist;
};
