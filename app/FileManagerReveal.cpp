#include "FileManagerReveal.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QUrl>

#ifndef Q_OS_WIN
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#endif

namespace {

void openContainingFolder(const QString& path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace

void RevealInFileManager(const QString& path, QObject* context)
{
#ifdef Q_OS_WIN
    Q_UNUSED(context)
    QProcess::startDetached(QStringLiteral("explorer"),
                            {QStringLiteral("/select,"), QDir::toNativeSeparators(path)});
#else
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openContainingFolder(path);
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    // URIs as the FileManager1 interface wants them: percent-encoded,
    // so that blanks, "#", "%" and non-ASCII names reach the file manager intact.
    message << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    // Asynchronous: a file manager that is slow to start must not hold the window.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, 5000), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [path](QDBusPendingCallWatcher* call) {
                         if (call->isError())
                             openContainingFolder(path);
                         call->deleteLater();
                     });
#endif
}
