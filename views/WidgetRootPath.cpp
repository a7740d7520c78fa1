#include "WidgetRootPath.h"

#include "AudioSuffix.h"
#include "RootPathInput.h"
#include "TeskManager.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QToolButton>
#include <QUrl>

namespace {

QToolButton* makeButton(QWidget* parent, const QIcon& icon, const QString& tip)
{
    auto* button = new QToolButton(parent);
    button->setIcon(icon);
    button->setIconSize(QSize(24, 24));
    button->setToolTip(tip);
    return button;
}

QString firstLocalPath(const QMimeData* mime)
{
    if (!mime || !mime->hasUrls())
        return {};
    const QList<QUrl> urls = mime->urls();
    return urls.isEmpty() ? QString() : urls.first().toLocalFile();
}

} // namespace

WidgetRootPath::WidgetRootPath(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    buttonRefresh = makeButton(this, QIcon(QStringLiteral(":/images/update.png")), tr("Refresh"));
    lineEdit = new QLineEdit(this);
    // An outline while the folder is not bookmarked, filled once it is.
    QIcon star;
    star.addFile(QStringLiteral(":/images/star.png"), QSize(), QIcon::Normal, QIcon::Off);
    star.addFile(QStringLiteral(":/images/star2.png"), QSize(), QIcon::Normal, QIcon::On);
    buttonStar = makeButton(this, star, tr("Add to Bookmarks"));
    buttonStar->setCheckable(true);
    buttonStar->setEnabled(false);
    buttonFolder =
        makeButton(this, QIcon(QStringLiteral(":/images/open.png")), tr("Select a folder"));

    layout->addWidget(buttonRefresh);
    layout->addWidget(lineEdit);
    layout->addWidget(buttonStar);
    layout->addWidget(buttonFolder);
    setAcceptDrops(true);

    connect(buttonStar, &QToolButton::toggled, this,
            &WidgetRootPath::SigBookmarkFlagChangeRequired);
    connect(buttonFolder, &QToolButton::clicked, this,
            &WidgetRootPath::SlotShowRootPathSelectDialog);
}

WidgetRootPath::~WidgetRootPath() = default;

void WidgetRootPath::SetManager(TeskManager* manager)
{
    connect(buttonRefresh, &QToolButton::clicked, manager, &TeskManager::SlotUpdateCalled);
    connect(this, &WidgetRootPath::SigChangeRootPathCalled, manager,
            &TeskManager::SlotChangeRootPathCalled);
    connect(manager, &TeskManager::SigRootPathChanged, this, &WidgetRootPath::SlotRootPathChanged);
    connect(this, &WidgetRootPath::SigRootPathRequired, manager, &TeskManager::SlotRootPathRequired,
            Qt::DirectConnection);
    connect(manager, &TeskManager::SigEndGetDetailInfo, this, &WidgetRootPath::SlotUpdateEnabled);
    connect(manager, &TeskManager::SigCurrentDirBookmarkChanged, this,
            &WidgetRootPath::SlotBookmarkStateSpecified);
}

QString WidgetRootPath::DropTarget(const QString& localPath)
{
    if (localPath.isEmpty())
        return {};
    const QFileInfo info(localPath);
    if (info.isDir())
        return info.absoluteFilePath();
    if (info.isFile() && IsSupportedAudioSuffix(info.suffix()))
        return info.absolutePath();
    return {};
}

void WidgetRootPath::SlotShowRootPathSelectDialog()
{
    QString root;
    emit SigRootPathRequired(&root);
    const QString picked = QFileDialog::getExistingDirectory(
        this, tr("Please select a folder"), root,
        QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!picked.isEmpty())
        emit SigChangeRootPathCalled(picked);
}

void WidgetRootPath::SlotRootPathChanged(QString path)
{
    lineEdit->setText(path);
    buttonRefresh->setEnabled(false);
    buttonStar->setEnabled(!path.isEmpty());
}

void WidgetRootPath::SlotBookmarkStateSpecified(bool bookmarked)
{
    const QSignalBlocker blocker(buttonStar);
    buttonStar->setChecked(bookmarked);
    buttonStar->setToolTip(bookmarked ? tr("Remove from Bookmarks") : tr("Add to Bookmarks"));
}

void WidgetRootPath::SlotUpdateEnabled()
{
    buttonRefresh->setEnabled(true);
}

void WidgetRootPath::submitTypedPath()
{
    const QString typed = lineEdit->text();
    const RootRequest request = ResolveTypedRoot(typed);
    if (request.isAccepted()) {
        // The manager may keep the listing it has under way for this folder
        // and announce nothing: the line shows the folder's one spelling anyway.
        lineEdit->setText(request.folder);
        emit SigChangeRootPathCalled(request.file.isEmpty() ? request.folder : request.file);
        return;
    }
    QString root;
    emit SigRootPathRequired(&root);
    lineEdit->setText(root);
    switch (request.refusal) {
    case RootRequest::Missing:
        emit SigStatusMessage(tr("The folder \"%1\" does not exist.").arg(request.folder));
        break;
    case RootRequest::NotAudio:
        emit SigStatusMessage(
            tr("\"%1\" is neither a folder nor a WAV, AIFF, MP3, Ogg Vorbis or FLAC file.")
                .arg(typed.trimmed()));
        break;
    default:
        break;
    }
}

void WidgetRootPath::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        submitTypedPath();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void WidgetRootPath::dragEnterEvent(QDragEnterEvent* event)
{
    if (DropTarget(firstLocalPath(event->mimeData())).isEmpty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::LinkAction);
    event->accept();
}

void WidgetRootPath::dragMoveEvent(QDragMoveEvent* event)
{
    if (DropTarget(firstLocalPath(event->mimeData())).isEmpty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::LinkAction);
    event->accept();
}

void WidgetRootPath::dropEvent(QDropEvent* event)
{
    // The drag already refused unsupported files. A file goes as it is: the
    // manager lists its folder and selects it.
    const QFileInfo info(firstLocalPath(event->mimeData()));
    if (info.isDir() || info.isFile())
        emit SigChangeRootPathCalled(info.absoluteFilePath());
    // Nothing is moved or copied: the drop only names a folder.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
}
