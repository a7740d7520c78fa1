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
// Nothing here waits for the SDK: connecting, stopping and opening files run on
// the client's threads, and their outcome comes back as signals.
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
    // openTimeoutMs: how long "Open with Nuendo" waits for the server.
    explicit GacManager(QObject* parent = nullptr, QStringList sdkCandidates = {},
                        int openTimeoutMs = 10000);
    ~GacManager() override;

    void StartConnecting();
    // False, with a warning in the log, while a connection exists: only the
    // server side can close it. Returns at once whatever the SDK does; an
    // attempt under way is abandoned. GetState() follows when the connection
    // thread takes the stop, which a starved machine may delay past the return.
    bool StopConnecting();
    int GetState() const;
    // A port outside 1 to 65535 is refused (a warning in the log) and the
    // previous one kept.
    void SetServer(const QString& address, int port);

public slots:
    // Returns at once; SigOpenByNuendoFinished tells how it went.
    void OpenByNuendo(const QString& filePath);

signals:
    // All emitted on this object's thread, in the order the client reported.
    void SigGacLogMessage(const QString& line);
    void SigGacMessageReceived(const std::shared_ptr<const Vexmw::VexGacMessageBase>& message);
    void SigGacServerDisconnected();
    void SigGacTransferProgress(double fraction);
    // One per request, with a text for the status bar.
    void SigOpenByNuendoFinished(bool ok, const QString& message);

private:
    struct OpenReplies;

    void openFinished(int request, bool ok, const QString& error);

    void onGacLog(const std::string& line) override;
    void onGacMessage(const std::shared_ptr<const Vexmw::VexGacMessageBase>& message) override;
    void onGacServerDisconnected() override;
    void onGacTransferProgress(double fraction) override;

    const int m_openTimeoutMs;
    QString m_address = QStringLiteral("localhost");
    int m_port = 4444;
    std::unique_ptr<Vexmw::ConnectionControlImpl> m_gac;
    // Requests on their way back from a thread that may outlive this object.
    std::shared_ptr<OpenReplies> m_replies;
    int m_openRequest = 0;
    // Set while a request is with the SDK, even past its timeout: the SDK
    // gets one at a time.
    bool m_openBusy = false;
    bool m_openAnswered = true;
    QString m_openPath;
};
