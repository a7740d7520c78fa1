#include "subFormSearch.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr std::uint32_t kFormatBits[subFormSearch::kFormatBoxCount] = {
    SearchCriteriaStruct::FormatWav,  SearchCriteriaStruct::FormatAiff,
    SearchCriteriaStruct::FormatMp3,  SearchCriteriaStruct::FormatOgg,
    SearchCriteriaStruct::FormatFlac, SearchCriteriaStruct::FormatError};

QSpinBox* makeSpin(QWidget* parent, int low, int high, int value)
{
    auto* spin = new QSpinBox(parent);
    spin->setRange(low, high);
    spin->setValue(value);
    return spin;
}

QGroupBox* makeCheckableGroup(const QString& title, bool checked, QWidget* parent)
{
    auto* group = new QGroupBox(title, parent);
    group->setCheckable(true);
    group->setChecked(checked);
    return group;
}

} // namespace

subFormSearch::subFormSearch(const SearchCriteriaStruct& initial, QWidget* parent)
    : QDialog(parent)
    , criteria(initial)
{
    setWindowTitle(tr("Advanced Search Settings"));
    auto* outer = new QVBoxLayout(this);

    groupDetail = makeCheckableGroup(tr("Use Advanced Search Settings"), criteria.useDetail, this);
    auto* details = new QVBoxLayout(groupDetail);
    outer->addWidget(groupDetail);

    auto* nameGroup = new QGroupBox(tr("Name (partial match)"), groupDetail);
    auto* nameLayout = new QVBoxLayout(nameGroup);
    editName = new QLineEdit(criteria.name, nameGroup);
    nameLayout->addWidget(editName);
    nameLayout->addWidget(
        new QLabel(tr("If unspecified, the Name filter will not apply."), nameGroup));
    details->addWidget(nameGroup);

    auto* descriptionGroup = new QGroupBox(tr("Description contains"), groupDetail);
    auto* descriptionLayout = new QVBoxLayout(descriptionGroup);
    editDescription = new QLineEdit(criteria.description, descriptionGroup);
    descriptionLayout->addWidget(editDescription);
    descriptionLayout->addWidget(
        new QLabel(tr("Letter case is ignored. If unspecified, this filter will not apply."),
                   descriptionGroup));
    details->addWidget(descriptionGroup);

    auto* formatGroup = new QGroupBox(tr("Format"), groupDetail);
    auto* formatLayout = new QHBoxLayout(formatGroup);
    const QString formatTexts[kFormatBoxCount] = {
        QStringLiteral("WAV"),        QStringLiteral("AIFF"), QStringLiteral("MP3"),
        QStringLiteral("OGG Vorbis"), QStringLiteral("FLAC"), tr("Error")};
    for (int i = 0; i < kFormatBoxCount; ++i) {
        formatBoxes[i] = new QCheckBox(formatTexts[i], formatGroup);
        formatBoxes[i]->setChecked((criteria.formatMask & kFormatBits[i]) != 0);
        formatLayout->addWidget(formatBoxes[i]);
    }
    details->addWidget(formatGroup);

    groupRate = makeCheckableGroup(tr("Sampling rate"), criteria.useRate, groupDetail);
    auto* rateLayout = new QHBoxLayout(groupRate);
    spinRate = makeSpin(groupRate, 1, 192000, criteria.rate);
    comboRateMode = makeModeChoice(criteria.rateMode);
    rateLayout->addWidget(spinRate);
    rateLayout->addWidget(comboRateMode);
    details->addWidget(groupRate);

    groupChannels = makeCheckableGroup(tr("Channels"), criteria.useChannels, groupDetail);
    auto* channelsLayout = new QHBoxLayout(groupChannels);
    spinChannels = makeSpin(groupChannels, 1, 64, criteria.channels);
    comboChannelsMode = makeModeChoice(criteria.channelsMode);
    channelsLayout->addWidget(spinChannels);
    channelsLayout->addWidget(comboChannelsMode);
    details->addWidget(groupChannels);

    groupTime = makeCheckableGroup(tr("Time"), criteria.useTime, groupDetail);
    auto* timeLayout = new QHBoxLayout(groupTime);
    const int totalMs = qMax(0, criteria.timeMs);
    spinMinutes = makeSpin(groupTime, 0, 360, totalMs / 60000);
    spinSeconds = makeSpin(groupTime, 0, 59, totalMs / 1000 % 60);
    spinMilliseconds = makeSpin(groupTime, 0, 999, totalMs % 1000);
    comboTimeMode = makeModeChoice(criteria.timeMode);
    timeLayout->addWidget(spinMinutes);
    timeLayout->addWidget(new QLabel(QStringLiteral(":"), groupTime));
    timeLayout->addWidget(spinSeconds);
    timeLayout->addWidget(new QLabel(QStringLiteral("."), groupTime));
    timeLayout->addWidget(spinMilliseconds);
    timeLayout->addWidget(comboTimeMode);
    details->addWidget(groupTime);

    auto* buttons = new QHBoxLayout();
    buttons->addStretch(1);
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setDefault(true);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    outer->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &subFormSearch::SlotOKPushed);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

subFormSearch::~subFormSearch() = default;

QComboBox* subFormSearch::makeModeChoice(int mode)
{
    auto* combo = new QComboBox(this);
    combo->addItem(tr("Show only when greater than or equal to"));
    combo->addItem(tr("Show only when less than or equal to"));
    combo->addItem(tr("Show only when equal to"));
    combo->setCurrentIndex(mode >= 0 && mode < 3 ? mode : 2);
    return combo;
}

void subFormSearch::SlotOKPushed()
{
    criteria.name = editName->text();
    criteria.useDetail = groupDetail->isChecked();
    criteria.description = editDescription->text();
    criteria.formatMask = 0;
    for (int i = 0; i < kFormatBoxCount; ++i) {
        if (formatBoxes[i]->isChecked())
            criteria.formatMask |= kFormatBits[i];
    }
    criteria.useRate = groupRate->isChecked();
    criteria.rate = spinRate->value();
    criteria.rateMode = comboRateMode->currentIndex();
    criteria.useChannels = groupChannels->isChecked();
    criteria.channels = spinChannels->value();
    criteria.channelsMode = comboChannelsMode->currentIndex();
    criteria.useTime = groupTime->isChecked();
    criteria.timeMs =
        (spinMinutes->value() * 60 + spinSeconds->value()) * 1000 + spinMilliseconds->value();
    criteria.timeMode = comboTimeMode->currentIndex();
    accept();
}
