#pragma once

#include <QDialog>

class FontSettings;
class QCheckBox;
class QFontComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;

// "Font Setting": the fonts of the folder tree and of the file table. Every
// change is written to the font settings and announced at once, so the views
// follow while the dialog is open; closing it keeps what is shown.
class SubFormFont final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubFormFont)

public:
    explicit SubFormFont(FontSettings* fonts, QWidget* parent = nullptr);
    ~SubFormFont() override;

    static QString previewText() { return QStringLiteral("あアAa亜"); }

signals:
    void SigChangeFont();

private slots:
    void SlotTreeFontEdited();
    void SlotTableFontEdited();
    void SlotFitToggled(bool fit);
    void SlotDefaultTreeFont();
    void SlotDefaultTableFont();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // Shows the stored fonts without announcing anything; the table size may
    // have been changed by the row height since the dialog was last open.
    void loadFromSettings();
    void updatePreviews();
    QFont fontOf(int target) const;

    FontSettings* fonts;
    QFontComboBox* treeFontFamilies = nullptr;
    QSpinBox* treeFontSize = nullptr;
    QLineEdit* treeTextPreview = nullptr;
    QPushButton* defaultTreeFont = nullptr;
    QFontComboBox* tableFontFamilies = nullptr;
    QSpinBox* tableFontSize = nullptr;
    QCheckBox* fitTableCell = nullptr;
    QLineEdit* tableTextPreview = nullptr;
    QPushButton* defaultTableFont = nullptr;
};
