#pragma once

#include <QDialog>

class QLineEdit;
class QSpinBox;
class QToolButton;

// "Tool Settings": the external program that opens a file, its argument line
// with "%FILEPATH%", and the seek step of the 'R' and 'T' keys. The caller
// stores the values when the dialog is accepted.
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

    // What OK says when nothing exists at the tool path ("%1" is the path).
    static QString missingToolText();

private slots:
    void SlotPushedOpenFile();
    void SlotPushedOk();

private:
    QLineEdit* editToolPath = nullptr;
    QToolButton* buttonOpenFile = nullptr;
    QLineEdit* editToolArgs = nullptr;
    QSpinBox* spinSeekTime = nullptr;
};
