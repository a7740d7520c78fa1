#pragma once

#include "Bookmark.h"

#include <QDialog>

class QPushButton;
class QTableWidget;
class QTableWidgetItem;

// "Bookmark Manager": edits the whole bookmark list in a table of names and
// folders. Nothing changes in the manager until the caller reads the rows
// back after OK.
class subFormBookmark final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormBookmark)

public:
    subFormBookmark(QWidget* parent, const BookmarkList& bookmarks, const QString& rootPath);
    ~subFormBookmark() override;

    BookmarkList bookmarks() const;

private slots:
    void SlotSelectChanged();
    void SlotItemDoubleClicked(QTableWidgetItem* item);
    void SlotPushedAdd();
    void SlotPushedEdit();
    void SlotPushedDelete();
    void SlotPushedTop();
    void SlotPushedUp();
    void SlotPushedDown();
    void SlotPushedBottom();

private:
    QString askFolder(const QString& startPath);
    void appendRow(const QString& name, const QString& path);
    int firstSelectedRow() const;
    void moveRow(int from, int to);

    QTableWidget* table = nullptr;
    QString rootPath;
    QList<QPushButton*> selectionButtons;
};
