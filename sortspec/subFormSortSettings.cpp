#include "subFormSortSettings.h"

#include "SortCsvReader.h"
#include "SortPathResolver.h"
#include "UnmatchedRowMarks.h"

#include <QApplication>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

subFormSortSettings::subFormSortSettings(QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Sort Settings"));
    // The designed size; the rows below are laid out to fit its width.
    resize(kDesignedWidth, 500);
    setAcceptDrops(true);

    groupUseCsv = new QGroupBox(tr("Use CSV file for sorting"), this);
    groupUseCsv->setCheckable(true);
    groupUseCsv->setChecked(false);

    editCsvPath = new QLineEdit(groupUseCsv);
    buttonCsvPath = new QToolButton(groupUseCsv);
    buttonCsvPath->setIcon(QIcon(QStringLiteral(":/images/open.png")));
    buttonCsvPath->setToolTip(tr("To import CSV file..."));

    editRelativeRoot = new QLineEdit(groupUseCsv);
    editRelativeRoot->setToolTip(
        tr("Show the root of the relative path that the file was written to"));
    buttonRelativeRoot = new QToolButton(groupUseCsv);
    buttonRelativeRoot->setIcon(QIcon(QStringLiteral(":/images/open.png")));
    buttonRelativeRoot->setToolTip(tr("To select relative path root..."));

    groupUseCsv->setObjectName(QStringLiteral("groupUseCsv"));
    editCsvPath->setObjectName(QStringLiteral("editCsvPath"));
    buttonCsvPath->setObjectName(QStringLiteral("buttonCsvPath"));
    editRelativeRoot->setObjectName(QStringLiteral("editRelativeRoot"));
    buttonRelativeRoot->setObjectName(QStringLiteral("buttonRelativeRoot"));

    // The dialog itself takes drops of files and folders; the line edits
    // would otherwise paste the URL as text.
    editCsvPath->setAcceptDrops(false);
    editRelativeRoot->setAcceptDrops(false);

    spinPathColumn = new QSpinBox(groupUseCsv);
    spinPathColumn->setRange(1, 100);
    spinPathColumn->setValue(1);
    spinCommentColumn = new QSpinBox(groupUseCsv);
    spinCommentColumn->setRange(1, 100);
    spinCommentColumn->setValue(1);
    checkIgnoreFirstLine = new QCheckBox(tr("Ignore first line"), groupUseCsv);
    checkIgnoreFirstLine->setChecked(true);
    buttonAnalyze = new QPushButton(tr("Start Analyzing"), groupUseCsv);

    tableResult = new QTableWidget(0, 2, groupUseCsv);
    tableResult->setHorizontalHeaderLabels({tr("File Path"), tr("Comments")});
    tableResult->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tableResult->horizontalHeader()->setStretchLastSection(true);
    // Paths are the longer column; comments take what is left.
    tableResult->setColumnWidth(0, 240);
    tableResult->setAcceptDrops(false);
    tableResult->viewport()->setAcceptDrops(false);

    // The long text wraps in a label beside the box, so that it never makes
    // the dialog wider than designed; a click on it toggles the box as usual.
    checkMoveToRoot = new QCheckBox(this);
    checkMoveToRoot->setChecked(true);
    labelMoveToRoot = new QLabel(
        tr("Move to the root folder of the relative path when sorting is applied"), this);
    labelMoveToRoot->setWordWrap(true);
    labelMoveToRoot->setBuddy(checkMoveToRoot);
    labelMoveToRoot->installEventFilter(this);
    checkMoveToRoot->setAccessibleName(labelMoveToRoot->text());
    buttonApply = new QPushButton(tr("Apply"), this);

    spinPathColumn->setObjectName(QStringLiteral("spinPathColumn"));
    spinCommentColumn->setObjectName(QStringLiteral("spinCommentColumn"));
    checkIgnoreFirstLine->setObjectName(QStringLiteral("checkIgnoreFirstLine"));
    buttonAnalyze->setObjectName(QStringLiteral("buttonAnalyze"));
    tableResult->setObjectName(QStringLiteral("tableResult"));
    checkMoveToRoot->setObjectName(QStringLiteral("checkMoveToRoot"));
    buttonApply->setObjectName(QStringLiteral("buttonApply"));

    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("CSV file"), groupUseCsv), 0, 0);
    grid->addWidget(editCsvPath, 0, 1);
    grid->addWidget(buttonCsvPath, 0, 2);
    grid->addWidget(new QLabel(tr("Relative path root"), groupUseCsv), 1, 0);
    grid->addWidget(editRelativeRoot, 1, 1);
    grid->addWidget(buttonRelativeRoot, 1, 2);

    auto* columns = new QHBoxLayout;
    columns->addWidget(new QLabel(tr("File Path column"), groupUseCsv));
    columns->addWidget(spinPathColumn);
    columns->addSpacing(12);
    columns->addWidget(new QLabel(tr("Comments column"), groupUseCsv));
    columns->addWidget(spinCommentColumn);
    columns->addStretch(1);

    // Rows kept short enough for the dialog's 500 pixels in any UI font.
    auto* analyzeRow = new QHBoxLayout;
    analyzeRow->addWidget(checkIgnoreFirstLine);
    analyzeRow->addStretch(1);
    analyzeRow->addWidget(buttonAnalyze);

    auto* groupLayout = new QVBoxLayout(groupUseCsv);
    groupLayout->addLayout(grid);
    groupLayout->addLayout(columns);
    groupLayout->addLayout(analyzeRow);
    groupLayout->addWidget(tableResult, 1);

    auto* applyRow = new QHBoxLayout;
    applyRow->addStretch(1);
    applyRow->addWidget(buttonApply);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(groupUseCsv, 1);
    auto* moveRow = new QHBoxLayout;
    moveRow->addWidget(checkMoveToRoot, 0, Qt::AlignTop);
    moveRow->addWidget(labelMoveToRoot, 1);
    layout->addLayout(moveRow);
    layout->addLayout(applyRow);

    connect(buttonCsvPath, &QToolButton::clicked, this,
            &subFormSortSettings::SlotPushedButtonCsvPath);
    connect(buttonRelativeRoot, &QToolButton::clicked, this,
            &subFormSortSettings::SlotPushedButtonRelativeRoot);
    connect(buttonAnalyze, &QPushButton::clicked, this,
            &subFormSortSettings::SlotPushedButtonAnalyze);
    connect(buttonApply, &QPushButton::clicked, this, &subFormSortSettings::SlotPushedButtonApply);
}

subFormSortSettings::~subFormSortSettings() = default;

bool subFormSortSettings::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == labelMoveToRoot && event->type() == QEvent::MouseButtonRelease &&
        checkMoveToRoot->isEnabled()) {
        checkMoveToRoot->toggle();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void subFormSortSettings::setRelativeRoot(const QString& rootPath)
{
    relativeRootPath = rootPath;
    editRelativeRoot->setText(rootPath);
}

QString subFormSortSettings::relativeRoot() const
{
    return editRelativeRoot->text();
}

bool subFormSortSettings::isSortEnabled() const
{
    return groupUseCsv->isChecked();
}

bool subFormSortSettings::isApplicable() const
{
    return groupUseCsv->isChecked() && analysed;
}

void subFormSortSettings::markUnmatched(const SortEntryList& unmatched)
{
    const QVector<bool> marks = UnmatchedRowMarks(sortEntries, unmatched);
    const int rows = qMin(tableResult->rowCount(), int(marks.size()));
    for (int row = 0; row < rows; ++row) {
        QTableWidgetItem* cell = tableResult->item(row, 0);
        if (!cell)
            continue;
        cell->setBackground(marks.at(row) ? QColor(Qt::red) : QColor(Qt::white));
        cell->setForeground(marks.at(row) ? QColor(Qt::white) : QColor(Qt::black));
    }
}

QString subFormSortSettings::noFilesToReorderMessage()
{
    return tr("No files to reorder.") + QLatin1Char('\n') +
           tr("If the audio file is written to a relative path, ensure that the \"Relative path "
              "root\" folder in the \"Sort Settings\" dialog is correctly specified.") +
           QLatin1Char('\n') +
           tr("If the audio file is in a subfolder, please click the checkbox \"Display all files "
              "from subfolders as well\" in the View menu.") +
           QStringLiteral("\n\n") +
           tr("If the settings are changed, make sure to select \"Start Analyzing\" again.");
}

void subFormSortSettings::SlotFileListAcquired()
{
    if (!applyPending)
        return;
    applyPending = false;
    emit SigSortSettingApplied();
}

void subFormSortSettings::SlotPushedButtonCsvPath()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Import CSV file"), QString(),
                                                      QStringLiteral("*.csv"));
    if (!path.isEmpty())
        editCsvPath->setText(path);
}

void subFormSortSettings::SlotPushedButtonRelativeRoot()
{
    const QString path = QFileDialog::getExistingDirectory(this, tr("Select relative path root"),
                                                           editRelativeRoot->text());
    if (!path.isEmpty())
        editRelativeRoot->setText(path);
}

void subFormSortSettings::SlotPushedButtonAnalyze()
{
    analysed = false;
    tableResult->setRowCount(0);
    sortEntries.clear();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QApplication::processEvents();

    const QString csvPath = editCsvPath->text();
    if (!QFileInfo(csvPath).isFile()) {
        QApplication::restoreOverrideCursor();
        QMessageBox::critical(this, tr("Error"), tr("The CSV file could not be found."));
        return;
    }

    sortEntries = ReadSortCsv(csvPath, spinPathColumn->value(), spinCommentColumn->value(),
                              checkIgnoreFirstLine->isChecked());
    if (sortEntries.isEmpty()) {
        QApplication::restoreOverrideCursor();
        QMessageBox::critical(this, tr("Error"), tr("CSV file analysis failed."));
        return;
    }

    tableResult->setRowCount(int(sortEntries.size()));
    tableResult->setVisible(false);
    const QFileInfo rootInfo(editRelativeRoot->text());
    const QString root = (!editRelativeRoot->text().isEmpty() && rootInfo.isDir())
                             ? rootInfo.absoluteFilePath()
                             : QFileInfo(csvPath).absolutePath();
    for (int i = 0; i < sortEntries.size(); ++i) {
        SortEntry& entry = sortEntries[i];
        tableResult->setItem(i, 0, new QTableWidgetItem(entry.first));
        tableResult->setItem(i, 1, new QTableWidgetItem(entry.second));
        entry.first = ResolveSortPath(entry.first, root);
    }
    tableResult->setVisible(true);
    QApplication::restoreOverrideCursor();
    analysed = true;
}

void subFormSortSettings::SlotPushedButtonApply()
{
    if (checkMoveToRoot->isChecked()) {
        // The order can only be imposed once the new root's files are listed.
        applyPending = true;
        emit SigChangeRootPathCalled(editRelativeRoot->text());
    } else {
        emit SigSortSettingApplied();
    }
}

subFormSortSettings::DropTarget subFormSortSettings::dropTargetAt(const QPoint& pos,
                                                                  const QMimeData* mime) const
{
    if (!groupUseCsv->isChecked() || !mime || !mime->hasUrls() || mime->urls().isEmpty())
        return DropTarget::None;
    const QFileInfo dropped(mime->urls().constFirst().toLocalFile());
    const QWidget* over = childAt(pos);
    const auto isOver = [over](const QWidget* w) {
        return over && (over == w || w->isAncestorOf(over));
    };
    if (isOver(editRelativeRoot) && dropped.isDir())
        return DropTarget::RelativeRoot;
    if ((isOver(editCsvPath) || isOver(tableResult)) && dropped.isFile() &&
        dropped.suffix().toLower() == QLatin1String("csv"))
        return DropTarget::CsvPath;
    return DropTarget::None;
}

void subFormSortSettings::dragEnterEvent(QDragEnterEvent* event)
{
    // Accepted broadly so that move events follow; each position is judged there.
    if (groupUseCsv->isChecked() && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void subFormSortSettings::dragMoveEvent(QDragMoveEvent* event)
{
    if (dropTargetAt(event->pos(), event->mimeData()) != DropTarget::None)
        event->acceptProposedAction();
    else
        event->ignore();
}

void subFormSortSettings::dropEvent(QDropEvent* event)
{
    const DropTarget target = dropTargetAt(event->pos(), event->mimeData());
    if (target == DropTarget::None) {
        event->ignore();
        return;
    }
    const QString path =
        QFileInfo(event->mimeData()->urls().constFirst().toLocalFile()).absoluteFilePath();
    if (target == DropTarget::RelativeRoot)
        editRelativeRoot->setText(path);
    else
        editCsvPath->setText(path);
    event->acceptProposedAction();
}
