#pragma once

#include <QWidget>

class QLineEdit;
class QToolButton;
class TeskManager;

// The bar above the folder tree: refresh, the editable root path, the
// bookmark star and the folder picker. Accepts dropped folders and audio files.
class WidgetRootPath final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetRootPath)
public:
    explicit WidgetRootPath(QWidget* parent = nullptr);
    ~WidgetRootPath() override;

    void SetManager(TeskManager* manager);

    // The folder a drop of `localPath` would make the root; empty when refused.
    static QString DropTarget(const QString& localPath);
    // Takes the path line's text as the new root (Return or Enter): a folder,
    // or an audio file to select in its folder, spelled in any of the usual
    // ways ("~", ".", a trailing slash). Anything else puts the current root
    // back and says why in the status line.
    void submitTypedPath();

    QLineEdit* pathLine() const { return lineEdit; }
    QToolButton* refreshButton() const { return buttonRefresh; }
    QToolButton* starButton() const { return buttonStar; }
    QToolButton* folderButton() const { return buttonFolder; }

signals:
    void SigChangeRootPathCalled(QString root);
    void SigBookmarkFlagChangeRequired(bool flag);
    void SigRootPathRequired(QString* rootPath);
    void SigStatusMessage(QString message);

public slots:
    void SlotShowRootPathSelectDialog();
    void SlotRootPathChanged(QString path);
    void SlotBookmarkStateSpecified(bool bookmarked);
    void SlotUpdateEnabled();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QToolButton* buttonRefresh;
    QLineEdit* lineEdit;
    QToolButton* buttonStar;
    QToolButton* buttonFolder;
};
