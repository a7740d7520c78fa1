#pragma once

#include "SearchCriteriaStruct.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QSpinBox;

// "Advanced Search Settings": edits a copy of the search criteria; OK
// assembles the record from the controls.
class subFormSearch final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormSearch)
public:
    explicit subFormSearch(const SearchCriteriaStruct& criteria, QWidget* parent = nullptr);
    ~subFormSearch() override;

    SearchCriteriaStruct GetCriteria() const { return criteria; }

    // Controls, for tests and for the keyboard order.
    QGroupBox* detailGroup() const { return groupDetail; }
    QLineEdit* nameEdit() const { return editName; }
    QLineEdit* descriptionEdit() const { return editDescription; }
    QCheckBox* formatBox(int index) const { return formatBoxes[index]; }
    QGroupBox* rateGroup() const { return groupRate; }
    QSpinBox* rateSpin() const { return spinRate; }
    QComboBox* rateModeChoice() const { return comboRateMode; }
    QGroupBox* channelsGroup() const { return groupChannels; }
    QSpinBox* channelsSpin() const { return spinChannels; }
    QComboBox* channelsModeChoice() const { return comboChannelsMode; }
    QGroupBox* timeGroup() const { return groupTime; }
    QSpinBox* minutesSpin() const { return spinMinutes; }
    QSpinBox* secondsSpin() const { return spinSeconds; }
    QSpinBox* millisecondsSpin() const { return spinMilliseconds; }
    QComboBox* timeModeChoice() const { return comboTimeMode; }

    static constexpr int kFormatBoxCount = 6;

public slots:
    void SlotOKPushed();

private:
    QComboBox* makeModeChoice(int mode);

    SearchCriteriaStruct criteria;
    QGroupBox* groupDetail;
    QLineEdit* editName;
    QLineEdit* editDescription;
    QCheckBox* formatBoxes[kFormatBoxCount];
    QGroupBox* groupRate;
    QSpinBox* spinRate;
    QComboBox* comboRateMode;
    QGroupBox* groupChannels;
    QSpinBox* spinChannels;
    QComboBox* comboChannelsMode;
    QGroupBox* groupTime;
    QSpinBox* spinMinutes;
    QSpinBox* spinSeconds;
    QSpinBox* spinMilliseconds;
    QComboBox* comboTimeMode;
};
