#pragma once

#include "SortEntry.h"

#include <QDialog>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMimeData;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QToolButton;

// The "Sort Settings" window: reads a CSV list of files with comments, shows
// what it resolved, and asks for it to be applied to the table. Created once
// by the main window and kept, so its fields and results survive closing.
class subFormSortSettings final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormSortSettings)

public:
    explicit subFormSortSettings(QWidget* parent = nullptr);
    ~subFormSortSettings() override;

    static constexpr int kDesignedWidth = 500;

    void setRelativeRoot(const QString& rootPath);
    QString relativeRoot() const;
    // The entries of the last successful analysis, paths resolved.
    SortEntryList entries() const { return sortEntries; }
    // "Use CSV file for sorting" is checked; when it is not, applying drops
    // any sort specification from the table.
    bool isSortEnabled() const;
    bool isApplicable() const;
    bool isApplyPending() const { return applyPending; }
    // Paints the result rows whose entries matched no listed file.
    void markUnmatched(const SortEntryList& unmatched);
    // Applying found none of the files: at least one entry, every one unmatched.
    static bool nothingMatched(int entryCount, int unmatchedCount)
    {
        return entryCount > 0 && entryCount == unmatchedCount;
    }
    // The "No files to reorder." explanation, each sentence translated on its own.
    static QString noFilesToReorderMessage();

signals:
    void SigSortSettingApplied();
    void SigChangeRootPathCalled(QString rootPath);

public slots:
    void SlotFileListAcquired();
    void SlotPushedButtonCsvPath();
    void SlotPushedButtonRelativeRoot();
    void SlotPushedButtonAnalyze();

private slots:
    void SlotPushedButtonApply();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class DropTarget
    {
        None,
        CsvPath,
        RelativeRoot,
    };
    DropTarget dropTargetAt(const QPoint& pos, const QMimeData* mime) const;

    QGroupBox* groupUseCsv = nullptr;
    QLineEdit* editCsvPath = nullptr;
    QToolButton* buttonCsvPath = nullptr;
    QLineEdit* editRelativeRoot = nullptr;
    QToolButton* buttonRelativeRoot = nullptr;
    QSpinBox* spinPathColumn = nullptr;
    QSpinBox* spinCommentColumn = nullptr;
    QCheckBox* checkIgnoreFirstLine = nullptr;
    QPushButton* buttonAnalyze = nullptr;
    QTableWidget* tableResult = nullptr;
    QCheckBox* checkMoveToRoot = nullptr;
    QLabel* labelMoveToRoot = nullptr;
    QPushButton* buttonApply = nullptr;

    SortEntryList sortEntries;
    QString relativeRootPath;
    bool analysed = false;
    bool applyPending = false;
};
