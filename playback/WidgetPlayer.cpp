#include "WidgetPlayer.h"

#include "LoudnessMatch.h"
#include "TeskManager.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QSlider>
#include <QToolButton>

#include <cmath>

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
    buttonMatch = makeButton(this,
                             toggleIcon(QStringLiteral(":/images/loudness.png"),
                                        QStringLiteral(":/images/loudness2.png")),
                             tr("Match loudness"));
    buttonMatch->setCheckable(true);
    labelGain = new QLabel(this);
    labelGain->setObjectName(QStringLiteral("labelGain"));
    // Wide enough for "-12.5 dB" so that the row does not shift from file to file.
    labelGain->setMinimumWidth(
        labelGain->fontMetrics().horizontalAdvance(QStringLiteral("-88.8 dB")));
    labelGain->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    labelGain->setVisible(false);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(slider);
    layout->addWidget(buttonPlay);
    layout->addWidget(buttonStop);
    layout->addWidget(buttonAutoplay);
    layout->addWidget(buttonPlaylist);
    layout->addWidget(buttonMatch);
    layout->addWidget(labelGain);

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
    connect(buttonMatch, &QToolButton::clicked, manager,
            &TeskManager::SlotChangeMatchLoudnessCalled);
    connect(manager, &TeskManager::SigMatchLoudnessChanged, this,
            &WidgetPlayer::SlotMatchLoudnessChanged);
    connect(manager, &TeskManager::SigPreviewGainChanged, this,
            &WidgetPlayer::SlotPreviewGainChanged);
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

void WidgetPlayer::SlotMatchLoudnessChanged(bool flag)
{
    buttonMatch->setChecked(flag);
    labelGain->setVisible(flag);
    if (flag && labelGain->text().isEmpty())
        labelGain->setText(GainText(0.0));
}

void WidgetPlayer::SlotPreviewGainChanged(double gainDb, int basis)
{
    labelGain->setText(GainText(gainDb));
    labelGain->setToolTip(GainToolTip(basis));
}

QString WidgetPlayer::GainText(double gainDb)
{
    // Rounded first, so that -0.04 shows as "0.0 dB" and not "-0.0 dB".
    const double shown = std::round(gainDb * 10.0) / 10.0;
    const QString number = QString::number(std::fabs(shown), 'f', 1);
    const QString sign = shown > 0.0   ? QStringLiteral("+")
                         : shown < 0.0 ? QString(QChar(0x2212))
                                       : QString();
    return tr("%1 dB").arg(sign + number);
}

QString WidgetPlayer::GainToolTip(int basis)
{
    switch (static_cast<LoudnessMatch::Basis>(basis)) {
    case LoudnessMatch::Basis::Off:
        return QString();
    case LoudnessMatch::Basis::Unknown:
        return tr("Loudness not measured yet: played at unity gain");
    case LoudnessMatch::Basis::Matched:
        return tr("Gain that brings the file to the loudness target");
    case LoudnessMatch::Basis::BoostLimited:
        return tr("Gain held at the boost limit");
    case LoudnessMatch::Basis::PeakLimited:
        return tr("Gain held so that no sample goes over -1 dBFS");
    case LoudnessMatch::Basis::PeakUnknown:
        return tr("Sample peak not known: no boost");
    }
    return QString();
}
