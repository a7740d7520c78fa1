#include "GacManager.h"

#include "ConnectionControlImpl.h"

#include <QLoggingCategory>

#include <cstdio>

Q_LOGGING_CATEGORY(lcGac, "tesk.gac")

namespace {
const char* const kEngineName = "Vex Tesk";
}

GacManager::GacManager(QObject* parent, QStringList sdkCandidates)
    : QObject(parent)
    , m_sdkCandidates(std::move(sdkCandidates))
{
    qRegisterMetaType<std::shared_ptr<const Vexmw::VexGacMessageBase>>();
    createClient();
}

GacManager::~GacManager()
{
    // The client's last lines still reach this object as a listener.
    m_gac.reset();
}

void GacManager::createClient()
{
    m_gac = std::make_unique<Vexmw::ConnectionControlImpl>(this, m_sdkCandidates);
    m_gac->setGacEngineName(kEngineName);
    m_gac->initialize();
    m_gac->setServerIpAddress(m_address.toStdString());
    m_gac->setServerPort(m_port);
}

void GacManager::StartConnecting()
{
    m_gac->startConnectionThread();
}

bool GacManager::StopConnecting()
{
    if (m_gac->isConnectionThreadRunning())
        m_gac->stopConnectionThread();
    if (m_gac->isConnected()) {
        onGacLog("[Warning] Please disable the GAC server first.");
        return false;
    }
    // A fresh client drops whatever the SDK kept of the abandoned attempt.
    m_gac.reset();
    createClient();
    return true;
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
    m_port = port;
    m_gac->setServerIpAddress(address.toStdString());
    m_gac->setServerPort(port);
}

bool GacManager::OpenByNuendo(const QString& filePath)
{
    const Vexmw::OpenNuendoMessage message(filePath.toStdString());
    return m_gac->openNuendoProject(message);
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
