#pragma once

#include "VexGacListener.h"
#include "VexGacMessages.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace Vexmw {
class ConnectionControlImpl;
}

Q_DECLARE_METATYPE(std::shared_ptr<const Vexmw::VexGacMessageBase>)

// The application's side of the Nuendo connection: owns the Game Audio Connect
// client, offers the three-state connection toggle and "Open with Nuendo", and
// brings whatever the client reports from its threads to this object's thread.
class GacManager final : public QObject, public Vexmw::VexGacListener
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GacManager)

public:
    enum ConnectionState
    {
        NotConnected = 0,
        WaitingConnection = 1,
        Connected = 2
    };
    Q_ENUM(ConnectionState)

    // sdkCandidates: where to look for the SDK (folders or library files);
    // empty means beside the executable, then the system's library path.
    explicit GacManager(QObject* parent = nullptr, QStringList sdkCandidates = {});
    ~GacManager() override;

    void StartConnecting();
    // False, with a warning in the log, while a connection exists: only the
    // server side can close it.
    bool StopConnecting();
    int GetState() const;
    void SetServer(const QString& address, int port);

public slots:
    bool OpenByNuendo(const QString& filePath);

signals:
    // All emitted on this object's thread, in the order the client reported.
    void SigGacLogMessage(const QString& line);
    void SigGacMessageReceived(const std::shared_ptr<const Vexmw::VexGacMessageBase>& message);
    void SigGacServerDisconnected();
    void SigGacTransferProgress(double fraction);

private:
    void createClient();

    void onGacLog(const std::string& line) override;
    void onGacMessage(const std::shared_ptr<const Vexmw::VexGacMessageBase>& message) override;
    void onGacServerDisconnected() override;
    void onGacTransferProgress(double fraction) override;

    const QStringList m_sdkCandidates;
    QString m_address = QStringLiteral("localhost");
    int m_port = 4444;
    std::unique_ptr<Vexmw::ConnectionControlImpl> m_gac;
};
