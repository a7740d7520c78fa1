#pragma once

#include <QTreeView>

class QAction;

// The folder tree's view: the same keys as the file table, and "Show in
// Explorer" as its whole context menu.
class SubWidgetTreeView final : public QTreeView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubWidgetTreeView)
public:
    explicit SubWidgetTreeView(QWidget* parent = nullptr);
    ~SubWidgetTreeView() override;

    QAction* showInExplorerAction() const { return actionShowInExplorer; }

signals:
    void SigPressSpaceKey();
    void SigPressEscKey();
    void SigPressRightKey();
    void SigPressAltUpKey();
    void SigPressAltDownKey();
    void SigShowInExplorer(QModelIndex index);

public slots:
    void SlotShowInExplorer();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QAction* actionShowInExplorer;
};
