#include "WidgetPlayer.h"

#include "TeskManager.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QSlider>
#include <QToolButton>

namespace {

constexpr int kIconSize = 24;
constexpr int kVolumeMax = 100;

QToolButton* makeButton(QWidget* parent, const QIcon& icon, const QString& toolTip)
{
    auto* button = new QToolButton(parent);
    button->setIcon(icon);
    button->setIconSize(QSize(kIconSize, kIconSize));
    button->setToolTip(toolTip);
    return button;
}

// Checked buttons show their second image instead of a pressed frame, which the
// window's style sheet hides anyway.
QIcon toggleIcon(const QString& off, const QString& on)
{
    QIcon icon;
    icon.addFile(off, QSize(), QIcon::Normal, QIcon::Off);
    icon.addFile(on, QSize(), QIcon::Normal, QIcon::On);
    return icon;
}

} // namespace

WidgetPlayer::WidgetPlayer(QWidget* parent)
    : QWidget(parent)
    , slider(new QSlider(Qt::Horizontal, this))
{
    slider->setRange(0, kVolumeMax);
    slider->setValue(kVolumeMax);
    buttonPlay = makeButton(this, QIcon(QStringLiteral(":/images/play_start.png")), tr("Playback"));
    buttonStop = makeButton(this, QIcon(QStringLiteral(":/images/play_stop.png")), tr("Stop"));
    buttonAutoplay = makeButton(this,
                                toggleIcon(QStringLiteral(":/images/autoplay.png"),
                                           QStringLiteral(":/images/autoplay2.png")),
                                tr("Play selected tracks"));
    buttonAutoplay->setCheckable(true);
    buttonPlaylist = makeButton(this,
                                toggleIcon(QStringLiteral(":/images/playlist.png"),
                                           QStringLiteral(":/images/playlist2.png")),
                                tr("Enable Playlist Playback"));
    buttonPlaylist->setCheckable(true);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(slider);
    layout->addWidget(buttonPlay);
    layout->addWidget(buttonStop);
    layout->addWidget(buttonAutoplay);
    layout->addWidget(buttonPlaylist);

    // Only a drag by the user changes the engine's volume, never a value set here.
    connect(slider, &QSlider::sliderMoved, this, &WidgetPlayer::SlotSliderMoved);
    connect(buttonPlay, &QToolButton::clicked, this, &WidgetPlayer::SigStartCalled);
}

void WidgetPlayer::ConnectManager(TeskManager* manager)
{
    connect(this, &WidgetPlayer::SigChangeVolume, manager, &TeskManager::SlotVolumeChangeCalled);
    connect(buttonStop, &QToolButton::clicked, manager, &TeskManager::SlotStopPlaybackCalled);
    connect(buttonAutoplay, &QToolButton::clicked, manager,
            &TeskManager::SlotChangeAutoPlaybackFlagCalled);
    connect(buttonPlaylist, &QToolButton::clicked, manager,
            &TeskManager::SlotChangePlaylistFlagCalled);
    connect(manager, &TeskManager::SigAutoPlaybackFlagChanged, this,
            &WidgetPlayer::SlotAutoplayFlagChanged);
    connect(manager, &TeskManager::SigPlaylistFlagChanged, this,
            &WidgetPlayer::SlotPlaylistFlagChanged);
}

void WidgetPlayer::SlotSliderMoved(int value)
{
    emit SigChangeVolume(static_cast<float>(value / 100.0));
}

void WidgetPlayer::SlotAutoplayFlagChanged(bool flag)
{
    buttonAutoplay->setChecked(flag);
}

void WidgetPlayer::SlotPlaylistFlagChanged(bool flag)
{
    buttonPlaylist->setChecked(flag);
}
