#include "subFormBookmark.h"

#include "BookmarkNameDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

subFormBookmark::subFormBookmark(QWidget* parent, const BookmarkList& bookmarks,
                                 const QString& rootPath)
    : QDialog(parent)
    , rootPath(rootPath)
{
    setWindowTitle(tr("Bookmark Manager"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    resize(640, 360);

    table = new QTableWidget(0, 2, this);
    table->setObjectName(QStringLiteral("tableBookmarks"));
    table->setHorizontalHeaderLabels({tr("Name"), tr("Folder Path")});
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setColumnWidth(0, 160);
    for (const Bookmark& b : bookmarks)
        appendRow(b.name, b.path);

    const auto makeButton = [this](const QString& text, const char* name) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        return button;
    };
    QPushButton* add = makeButton(tr("Add"), "buttonAdd");
    QPushButton* edit = makeButton(tr("Edit"), "buttonEdit");
    QPushButton* remove = makeButton(tr("Delete"), "buttonDelete");
    QPushButton* top = makeButton(tr("Move to top"), "buttonTop");
    QPushButton* up = makeButton(tr("Move Up"), "buttonUp");
    QPushButton* down = makeButton(tr("Move Down"), "buttonDown");
    QPushButton* bottom = makeButton(tr("Move to bottom"), "buttonBottom");
    selectionButtons = {edit, remove, top, up, down, bottom};
    for (QPushButton* button : qAsConst(selectionButtons))
        button->setEnabled(false);

    auto* side = new QVBoxLayout;
    side->addWidget(add);
    side->addWidget(edit);
    side->addWidget(remove);
    side->addSpacing(12);
    side->addWidget(top);
    side->addWidget(up);
    side->addWidget(down);
    side->addWidget(bottom);
    side->addStretch(1);

    auto* body = new QHBoxLayout;
    body->addWidget(table, 1);
    body->addLayout(side);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("buttonOk"));
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)
        ->setObjectName(QStringLiteral("buttonCancel"));

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(buttons);

    connect(table, &QTableWidget::itemSelectionChanged, this, &subFormBookmark::SlotSelectChanged);
    connect(table, &QTableWidget::itemDoubleClicked, this, &subFormBookmark::SlotItemDoubleClicked);
    connect(add, &QPushButton::clicked, this, &subFormBookmark::SlotPushedAdd);
    connect(edit, &QPushButton::clicked, this, &subFormBookmark::SlotPushedEdit);
    connect(remove, &QPushButton::clicked, this, &subFormBookmark::SlotPushedDelete);
    connect(top, &QPushButton::clicked, this, &subFormBookmark::SlotPushedTop);
    connect(up, &QPushButton::clicked, this, &subFormBookmark::SlotPushedUp);
    connect(down, &QPushButton::clicked, this, &subFormBookmark::SlotPushedDown);
    connect(bottom, &QPushButton::clicked, this, &subFormBookmark::SlotPushedBottom);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

subFormBookmark::~subFormBookmark() = default;

BookmarkList subFormBookmark::bookmarks() const
{
    BookmarkList list;
    for (int row = 0; row < table->rowCount(); ++row) {
        const QTableWidgetItem* name = table->item(row, 0);
        const QTableWidgetItem* path = table->item(row, 1);
        list.append({path ? path->text() : QString(), name ? name->text() : QString()});
    }
    return list;
}

void subFormBookmark::appendRow(const QString& name, const QString& path)
{
    const int row = table->rowCount();
    table->insertRow(row);
    table->setItem(row, 0, new QTableWidgetItem(name));
    table->setItem(row, 1, new QTableWidgetItem(path));
}

QString subFormBookmark::askFolder(const QString& startPath)
{
    return QFileDialog::getExistingDirectory(this, tr("Please select a folder"), startPath,
                                             QFileDialog::ShowDirsOnly |
                                                 QFileDialog::DontResolveSymlinks);
}

int subFormBookmark::firstSelectedRow() const
{
    // The topmost selected row, whatever order the cells were selected in.
    int first = -1;
    for (const QTableWidgetItem* item : table->selectedItems()) {
        if (first < 0 || item->row() < first)
            first = item->row();
    }
    return first;
}

void subFormBookmark::SlotSelectChanged()
{
    const bool any = !table->selectedItems().isEmpty();
    for (QPushButton* button : qAsConst(selectionButtons))
        button->setEnabled(any);
}

void subFormBookmark::SlotItemDoubleClicked(QTableWidgetItem* item)
{
    if (!item)
        return;
    if (item->column() == 0) {
        QString name;
        if (AskBookmarkName(this, item->text(), &name) && !name.isEmpty())
            item->setText(name);
    } else {
        const QString folder = askFolder(item->text());
        if (!folder.isEmpty())
            item->setText(folder);
    }
}

void subFormBookmark::SlotPushedAdd()
{
    const QString folder = askFolder(rootPath);
    if (!folder.isEmpty())
        appendRow(QDir(folder).dirName(), folder);
}

void subFormBookmark::SlotPushedEdit()
{
    QTableWidgetItem* item = table->currentItem();
    if (!item || !item->isSelected()) {
        const QList<QTableWidgetItem*> selected = table->selectedItems();
        item = selected.isEmpty() ? nullptr : selected.constFirst();
    }
    SlotItemDoubleClicked(item);
}

void subFormBookmark::SlotPushedDelete()
{
    QList<int> rows;
    for (const QTableWidgetItem* item : table->selectedItems())
        rows.append(item->row());
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (const int row : qAsConst(rows))
        table->removeRow(row);
    table->clearSelection();
}

void subFormBookmark::moveRow(int from, int to)
{
    if (from < 0 || table->rowCount() < 2 || from == to)
        return;
    QTableWidgetItem* name = table->takeItem(from, 0);
    QTableWidgetItem* path = table->takeItem(from, 1);
    table->removeRow(from);
    table->insertRow(to);
    table->setItem(to, 0, name);
    table->setItem(to, 1, path);
    table->clearSelection();
    name->setSelected(true);
    path->setSelected(true);
    table->setCurrentItem(name, QItemSelectionModel::NoUpdate);
}

void subFormBookmark::SlotPushedTop()
{
    moveRow(firstSelectedRow(), 0);
}

void subFormBookmark::SlotPushedUp()
{
    const int row = firstSelectedRow();
    if (row >= 1)
        moveRow(row, row - 1);
}

void subFormBookmark::SlotPushedDown()
{
    const int row = firstSelectedRow();
    if (row >= 0 && row < table->rowCount() - 1)
        moveRow(row, row + 1);
}

void subFormBookmark::SlotPushedBottom()
{
    moveRow(firstSelectedRow(), table->rowCount() - 1);
}
