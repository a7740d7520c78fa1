#include "GacManager.h"

#include "ConnectionControlImpl.h"
#include "GacSdk.h"

#include <QDir>
#include <QLoggingCategory>
#include <QTimer>

#include <cstdio>
#include <mutex>

Q_LOGGING_CATEGORY(lcGac, "tesk.gac")

namespace {
const char* const kEngineName = "Vex Tesk";
}

// The way back for "Open with Nuendo": the request's thread posts here, and
// the manager cuts the way when it goes, under the same lock.
struct GacManager::OpenReplies
{
    std::mutex mutex;
    GacManager* manager = nullptr;
};

GacManager::GacManager(QObject* parent, QStringList sdkCandidates, int openTimeoutMs)
    : QObject(parent)
    , m_openTimeoutMs(openTimeoutMs)
    , m_replies(std::make_shared<OpenReplies>())
{
    qRegisterMetaType<std::shared_ptr<const Vexmw::VexGacMessageBase>>();
    m_replies->manager = this;
    m_gac = std::make_unique<Vexmw::ConnectionControlImpl>(this, std::move(sdkCandidates));
    m_gac->setGacEngineName(kEngineName);
    m_gac->initialize();
    m_gac->setServerIpAddress(m_address.toStdString());
    m_gac->setServerPort(m_port);
}

GacManager::~GacManager()
{
    {
        std::lock_guard<std::mutex> lock(m_replies->mutex);
        m_replies->manager = nullptr;
    }
    // The client's last lines still reach this object as a listener.
    m_gac.reset();
}

void GacManager::StartConnecting()
{
    m_gac->startConnectionThread();
}

bool GacManager::StopConnecting()
{
    if (m_gac->stopConnectionThread())
        return true;
    onGacLog("[Warning] Please disable the GAC server first.");
    return false;
}

int GacManager::GetState() const
{
    if (m_gac->isConnected())
        return Connected;
    if (m_gac->isConnectionThreadRunning())
        return WaitingConnection;
    return NotConnected;
}

void GacManager::SetServer(const QString& address, int port)
{
    m_address = address;
    m_gac->setServerIpAddress(address.toStdString());
    if (m_gac->setServerPort(port))
        m_port = port;
}

void GacManager::OpenByNuendo(const QString& filePath)
{
    if (filePath.isEmpty())
        return;
    const QString shown = QDir::toNativeSeparators(filePath);
    const QByteArray utf8 = filePath.toUtf8();
    if (GetState() != Connected) {
        emit SigOpenByNuendoFinished(
            false,
            tr("Not connected to Nuendo; start the connection from the Nuendo Connection menu "
               "first."));
        return;
    }
    if (utf8.size() >= GacSdk::kTextSize) {
        const QString line = tr("The path is too long to send to Nuendo (%1 bytes, at most %2): %3")
                                 .arg(utf8.size())
                                 .arg(GacSdk::kTextSize - 1)
                                 .arg(shown);
        onGacLog("[Warning] " + line.toStdString());
        emit SigOpenByNuendoFinished(false, line);
        return;
    }
    if (m_openBusy) {
        emit SigOpenByNuendoFinished(false,
                                     tr("Nuendo has not answered the previous request yet."));
        return;
    }
    m_openBusy = true;
    m_openAnswered = false;
    m_openPath = shown;
    const int request = ++m_openRequest;
    m_gac->openNuendoProjectAsync(
        Vexmw::OpenNuendoMessage(utf8.toStdString()),
        [replies = m_replies, request](bool ok, const std::string& error) {
            std::lock_guard<std::mutex> lock(replies->mutex);
            if (GacManager* manager = replies->manager) {
                const QString text = QString::fromStdString(error);
                QMetaObject::invokeMethod(
                    manager,
                    [manager, request, ok, text] { manager->openFinished(request, ok, text); },
                    Qt::QueuedConnection);
            }
        });
    QTimer::singleShot(m_openTimeoutMs, this, [this, request] {
        if (request != m_openRequest || m_openAnswered)
            return;
        m_openAnswered = true;
        emit SigOpenByNuendoFinished(
            false, tr("Nuendo did not answer in time; %1 was not opened.").arg(m_openPath));
    });
}

void GacManager::openFinished(int request, bool ok, const QString& error)
{
    if (request != m_openRequest)
        return;
    m_openBusy = false;
    if (m_openAnswered)
        return;
    m_openAnswered = true;
    if (ok)
        emit SigOpenByNuendoFinished(true, tr("Opened in Nuendo: %1").arg(m_openPath));
    else
        emit SigOpenByNuendoFinished(false,
                                     tr("Nuendo could not open %1: %2").arg(m_openPath, error));
}

// The listener calls below come from any thread. Standard output and the Qt
// message log are safe to write from there; signals go out on our thread.

void GacManager::onGacLog(const std::string& line)
{
    std::fputs((line + '\n').c_str(), stdout);
    std::fflush(stdout);
    const QString text = QString::fromStdString(line);
    qCInfo(lcGac).noquote() << text;
    QMetaObject::invokeMethod(
        this, [this, text] { emit SigGacLogMessage(text); }, Qt::QueuedConnection);
}

void GacManager::onGacMessage(const std::shared_ptr<const Vexmw::VexGacMessageBase>& message)
{
    QMetaObject::invokeMethod(
        this, [this, message] { emit SigGacMessageReceived(message); }, Qt::QueuedConnection);
}

void GacManager::onGacServerDisconnected()
{
    QMetaObject::invokeMethod(
        this, [this] { emit SigGacServerDisconnected(); }, Qt::QueuedConnection);
}

void GacManager::onGacTransferProgress(double fraction)
{
    QMetaObject::invokeMethod(
        this, [this, fraction] { emit SigGacTransferProgress(fraction); }, Qt::QueuedConnection);
}
