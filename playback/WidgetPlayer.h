#pragma once

#include <QWidget>

class QLabel;
class QSlider;
class QToolButton;
class TeskManager;

// The row of preview controls: volume, play, stop, autoplay, playlist and the
// loudness match with the gain it gave the file just started. Holds no
// playback state; requests go to the manager, and the toggles follow the
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
    QToolButton* matchLoudnessButton() const { return buttonMatch; }
    QLabel* gainLabel() const { return labelGain; }

    // "+4.5 dB" and a line saying why, for the gain the loudness match gave.
    static QString GainText(double gainDb);
    static QString GainToolTip(int basis);

signals:
    void SigChangeVolume(float volume);
    void SigStartCalled();

public slots:
    void SlotSliderMoved(int value);
    void SlotAutoplayFlagChanged(bool flag);
    void SlotPlaylistFlagChanged(bool flag);
    void SlotMatchLoudnessChanged(bool flag);
    void SlotPreviewGainChanged(double gainDb, int basis);

private:
    QSlider* slider;
    QToolButton* buttonPlay;
    QToolButton* buttonStop;
    QToolButton* buttonAutoplay;
    QToolButton* buttonPlaylist;
    QToolButton* buttonMatch;
    QLabel* labelGain;
};
