#include "SubWidgetTableView.h"

#include "GacManager.h"
#include "TableRoles.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDrag>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>

#include <memory>
#include <utility>

namespace {

// Windows users know the file manager by its name; elsewhere it has many.
QString showInFileManagerText()
{
#ifdef Q_OS_WIN
    return SubWidgetTableView::tr("Show in Explorer");
#else
    return SubWidgetTableView::tr("Show in File Manager");
#endif
}

} // namespace

SubWidgetTableView::SubWidgetTableView(GacManager* gac, QWidget* parent)
    : SubWidgetTableView(ConnectionStateQuery([gac] { return gac ? gac->GetState() : 0; }), parent)
{}

SubWidgetTableView::SubWidgetTableView(ConnectionStateQuery nuendoState, QWidget* parent)
    : QTableView(parent)
    , connectionState(std::move(nuendoState))
    , actShowInExplorer(new QAction(showInFileManagerText(), this))
    , actOpenExternal(new QAction(tr("Open with an external tool"), this))
    , actCopy(new QAction(tr("Copy to Clipboard"), this))
    , actUpdate(new QAction(tr("Update information"), this))
    , actOpenNuendo(new QAction(tr("Open with Nuendo"), this))
{
    // The keys are handled in keyPressEvent; the shortcuts only label the menu.
    actShowInExplorer->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    actOpenExternal->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    actCopy->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_C));
    actUpdate->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    for (QAction* action : {actShowInExplorer, actOpenExternal, actCopy, actUpdate}) {
        action->setShortcutContext(Qt::WidgetShortcut);
    }
    connect(actShowInExplorer, &QAction::triggered, this, &SubWidgetTableView::SlotShowInExplorer);
    connect(actOpenExternal, &QAction::triggered, this,
            &SubWidgetTableView::SigOpenByUsingExternal);
    connect(actCopy, &QAction::triggered, this, &SubWidgetTableView::SlotCopyToClip);
    connect(actUpdate, &QAction::triggered, this, &SubWidgetTableView::SlotUpdate);
    connect(actOpenNuendo, &QAction::triggered, this, &SubWidgetTableView::SigOpenByNuendo);
    setFocusPolicy(Qt::StrongFocus);
}

SubWidgetTableView::~SubWidgetTableView() = default;

void SubWidgetTableView::setUpdateInformationEnabled(bool enabled)
{
    actUpdate->setEnabled(enabled);
}

bool SubWidgetTableView::isUpdateInformationEnabled() const
{
    return actUpdate->isEnabled();
}

QMenu* SubWidgetTableView::createContextMenu(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    menu->addAction(actShowInExplorer);
    menu->addAction(actOpenExternal);
    menu->addAction(actCopy);
    menu->addAction(actUpdate);
    // Nuendo opens WAV files only, and only over a live connection.
    const bool connected = connectionState && connectionState() == 2;
    if (connected && currentIndex().data(TableRoles::Format).toString() == QLatin1String("wav")) {
        menu->addAction(actOpenNuendo);
    }
    return menu;
}

bool SubWidgetTableView::selectedFileUrls(QList<QUrl>* urls) const
{
    urls->clear();
    if (!selectionModel()) {
        return true;
    }
    const QModelIndexList rows = selectionModel()->selectedRows(1);
    for (const QModelIndex& index : rows) {
        const QUrl url = QUrl::fromLocalFile(index.data(Qt::DisplayRole).toString());
        if (url.isEmpty()) {
            return false;
        }
        urls->append(url);
    }
    return true;
}

void SubWidgetTableView::SlotShowInExplorer()
{
    emit SigShowInExplorer();
}

void SubWidgetTableView::SlotCopyToClip()
{
    QList<QUrl> urls;
    if (!selectedFileUrls(&urls)) {
        QMessageBox::warning(this, tr("Error"),
                             tr("Failed to copy to the Clipboard: invalid data."), QMessageBox::Ok);
        return;
    }
    if (urls.isEmpty()) {
        return;
    }
    QApplication::clipboard()->setMimeData(clipboardData(urls));
}

QMimeData* SubWidgetTableView::clipboardData(const QList<QUrl>& urls)
{
    auto* mime = new QMimeData;
    mime->setUrls(urls);
#ifndef Q_OS_WIN
    // GNOME's file manager and its kin paste files only from their own list:
    // the verb, then one encoded URI a line.
    QByteArray copied("copy");
    QStringList paths;
    for (const QUrl& url : urls) {
        copied += '\n' + url.toEncoded();
        paths << url.toLocalFile();
    }
    mime->setData(QStringLiteral("x-special/gnome-copied-files"), copied);
    // A text field or a terminal takes the paths as they are.
    mime->setText(paths.join(QLatin1Char('\n')));
#endif
    return mime;
}

void SubWidgetTableView::SlotUpdate()
{
    QStringList files;
    if (selectionModel()) {
        const QModelIndexList rows = selectionModel()->selectedRows(1);
        for (const QModelIndex& index : rows) {
            files.append(index.data(Qt::DisplayRole).toString());
        }
    }
    emit SigUpdateFilesCalled(files);
}

void SubWidgetTableView::keyPressEvent(QKeyEvent* event)
{
    QTableView::keyPressEvent(event);
    const int key = event->key();
    // Arrow keys carry the keypad flag on some platforms; it is not a modifier the user chose.
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    if (key == Qt::Key_Period || key == Qt::Key_Escape) {
        emit SigPressEscKey();
        event->accept();
    }
    if (key == Qt::Key_Space) {
        emit SigPressSpaceKey();
        event->accept();
    }
    if (key == Qt::Key_Right) {
        emit SigPressRightKey();
        event->accept();
    }
    if (key == Qt::Key_Up && mods == Qt::AltModifier) {
        emit SigPressAltUpKey();
        event->accept();
    }
    if (key == Qt::Key_Down && mods == Qt::AltModifier) {
        emit SigPressAltDownKey();
        event->accept();
    }
    if (key == Qt::Key_C && mods == Qt::ControlModifier) {
        SlotCopyToClip();
        event->accept();
    }
    if (key == Qt::Key_E && mods == Qt::ControlModifier) {
        emit SigShowInExplorer();
        event->accept();
    }
    if (key == Qt::Key_R && mods == Qt::ControlModifier && actUpdate->isEnabled()) {
        SlotUpdate();
        event->accept();
    }
    if (key == Qt::Key_E && mods == (Qt::ControlModifier | Qt::ShiftModifier)) {
        emit SigOpenByUsingExternal();
        event->accept();
    }
}

void SubWidgetTableView::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    const bool byTab =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byTab && selectionModel() && !selectionModel()->hasSelection() && model() &&
        model()->rowCount() > 0) {
        selectRow(0);
    }
}

void SubWidgetTableView::mousePressEvent(QMouseEvent* event)
{
    pressPosition = event->pos();
    QTableView::mousePressEvent(event);
}

void SubWidgetTableView::contextMenuEvent(QContextMenuEvent* event)
{
    std::unique_ptr<QMenu> menu(createContextMenu(this));
    menu->exec(event->globalPos());
}

void SubWidgetTableView::startDrag(Qt::DropActions supportedActions)
{
    Q_UNUSED(supportedActions)
    QList<QUrl> urls;
    if (!selectedFileUrls(&urls) || urls.isEmpty()) {
        return;
    }
    auto* mime = new QMimeData;
    mime->setUrls(urls);
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::CopyAction);
}
