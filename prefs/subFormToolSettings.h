#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;
class QToolButton;

// "Tool Settings": the external program that opens a file, its argument line
// with "%FILEPATH%", the seek step of the 'R' and 'T' keys, the preview:
// loudness match (target and largest boost) and output device, the UCS
// CatID list, and how many files are analysed at once. The caller stores the
// values when the dialog is accepted.
class subFormToolSettings final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormToolSettings)

public:
    subFormToolSettings(const QString& toolPath, const QString& toolArgs, int seekTimeMs,
                        QWidget* parent = nullptr);
    ~subFormToolSettings() override;

    QString toolPath() const;
    QString toolArgs() const;
    int seekTimeMs() const;
    void setUcsCatIdListPath(const QString& path);
    QString ucsCatIdListPath() const;

    void setMatchLoudness(bool on, double targetLufs, double maxBoostDb);
    bool matchLoudness() const;
    double matchTargetLufs() const;
    double matchMaxBoostDb() const;
    // The system default comes first; a chosen device that is not there now
    // stays in the list, marked, so that it is not dropped by accident.
    void setOutputDevices(const QStringList& devices, const QString& current);
    // "" for the system default.
    QString outputDevice() const;
    // Files analysed at once, 1 up to `cores`; 0 (and `cores`) for one per core.
    void setAnalysisThreads(int threads, int cores);
    // 0 when one per core is chosen.
    int analysisThreads() const;

    // What OK says when nothing exists at the tool path ("%1" is the path).
    static QString missingToolText();

private slots:
    void SlotPushedOpenFile();
    void SlotPushedOpenCatIdList();
    void SlotPushedOk();

private:
    QLineEdit* editToolPath = nullptr;
    QToolButton* buttonOpenFile = nullptr;
    QLineEdit* editToolArgs = nullptr;
    QSpinBox* spinSeekTime = nullptr;
    QSpinBox* spinAnalysisThreads = nullptr;
    QCheckBox* checkMatch = nullptr;
    QDoubleSpinBox* spinTarget = nullptr;
    QDoubleSpinBox* spinBoost = nullptr;
    QComboBox* comboDevice = nullptr;
    QLineEdit* editCatIdList = nullptr;
    QToolButton* buttonOpenCatIdList = nullptr;
};
