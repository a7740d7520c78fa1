#include "SubWidgetTreeView.h"

#include <QAction>
#include <QKeyEvent>

namespace {

// Windows users know the file manager by its name; elsewhere it has many.
QString showInFileManagerText()
{
#ifdef Q_OS_WIN
    return SubWidgetTreeView::tr("Show in Explorer");
#else
    return SubWidgetTreeView::tr("Show in File Manager");
#endif
}

} // namespace

SubWidgetTreeView::SubWidgetTreeView(QWidget* parent)
    : QTreeView(parent)
    , actionShowInExplorer(new QAction(showInFileManagerText(), this))
{
    setFocusPolicy(Qt::StrongFocus);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    addAction(actionShowInExplorer);
    connect(actionShowInExplorer, &QAction::triggered, this,
            &SubWidgetTreeView::SlotShowInExplorer);
}

SubWidgetTreeView::~SubWidgetTreeView() = default;

void SubWidgetTreeView::SlotShowInExplorer()
{
    const QModelIndexList selected = selectedIndexes();
    if (!selected.isEmpty())
        emit SigShowInExplorer(selected.first());
}

void SubWidgetTreeView::keyPressEvent(QKeyEvent* event)
{
    QTreeView::keyPressEvent(event);
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    switch (event->key()) {
    case Qt::Key_Period:
    case Qt::Key_Escape:
        event->accept();
        emit SigPressEscKey();
        break;
    case Qt::Key_Space:
        event->accept();
        emit SigPressSpaceKey();
        break;
    case Qt::Key_Right:
        event->accept();
        emit SigPressRightKey();
        break;
    case Qt::Key_Up:
        if (mods == Qt::AltModifier) {
            event->accept();
            emit SigPressAltUpKey();
        }
        break;
    case Qt::Key_Down:
        if (mods == Qt::AltModifier) {
            event->accept();
            emit SigPressAltDownKey();
        }
        break;
    default:
        break;
    }
}
