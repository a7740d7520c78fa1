#pragma once

#include <QDialog>

class QLineEdit;
class QSpinBox;
class QToolButton;

// "Tool Settings": the external program that opens a file, its argument line
// with "%FILEPATH%", the seek step of the 'R' and 'T' keys, and the UCS CatID
// list. The caller stores the values when the dialog is accepted.
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

private slots:
    void SlotPushedOpenFile();
    void SlotPushedOpenCatIdList();
    void SlotPushedOk();

private:
    QLineEdit* editToolPath = nullptr;
    QToolButton* buttonOpenFile = nullptr;
    QLineEdit* editToolArgs = nullptr;
    QSpinBox* spinSeekTime = nullptr;
    QLineEdit* editCatIdList = nullptr;
    QToolButton* buttonOpenCatIdList = nullptr;
};
