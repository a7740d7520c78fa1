#pragma once

#include "AnalysisLibrary.h"
#include "PostgresAnalysisLibrary.h"
#include "SqliteAnalysisLibrary.h"

#include <QCoreApplication>
#include <QStringList>

#include <chrono>
#include <memory>

// A studio's shared library on a server, with this computer's embedded
// library standing in whenever the server cannot be used: lookups then go to
// the embedded library, and new rows go both there and to an outbox (an
// embedded library of its own) from which they are sent to the server once
// it is back, so that a server that goes away mid-scan loses no analysis.
// The server is tried again every retry delay, while nothing else is asked;
// each outage is told once, and so is the return.
class FallbackAnalysisLibrary final : public AnalysisLibrary
{
    Q_DECLARE_TR_FUNCTIONS(FallbackAnalysisLibrary)
    Q_DISABLE_COPY_MOVE(FallbackAnalysisLibrary)

public:
    struct Options
    {
        std::chrono::milliseconds retryDelay{30000};
        // Rows sent from the outbox in one transaction.
        int sendRows = 256;
    };

    FallbackAnalysisLibrary(std::unique_ptr<PostgresAnalysisLibrary> server,
                            std::unique_ptr<SqliteAnalysisLibrary> local,
                            std::unique_ptr<SqliteAnalysisLibrary> outbox, Options options);
    ~FallbackAnalysisLibrary() override;

    // The shared library on `server`, with Tesk's own embedded library and
    // an outbox beside it (OutboxPath) standing in.
    static std::unique_ptr<AnalysisLibrary> ForServer(const LibraryServer& server);
    static QString OutboxPath();

    // Never fails: the embedded library is there when the server is not.
    bool Open() override;
    void Close() override;
    bool IsUsable() const override;
    LibraryRows Fetch(const LibraryKeys& keys) override;
    bool Store(const std::vector<LibraryRow>& rows) override;
    LibraryKeys KeysIn(const LibraryKey& folder, bool recursive) override;
    bool Remove(const LibraryKeys& keys) override;
    // Clears the server's library (and the outbox); false while it is away.
    bool Clear() override;
    QString TakeProblem() override;
    Clock::time_point MaintenanceDue() const override;
    // Tries the server again when it is time, else sends rows from the outbox.
    void Maintain() override;

    // Whether rows go to the server now.
    bool IsOnServer() const { return onServer; }

private:
    void connectServer();
    // After a call that left the server unusable: whether a new connection
    // could be made at once (the call is then made again).
    bool reconnected();
    void serverLost();
    void tellReadOnly();
    SqliteAnalysisLibrary& localLibrary();
    SqliteAnalysisLibrary& outboxLibrary();
    bool keepForLater(const std::vector<LibraryRow>& rows);
    void fillMisses(SqliteAnalysisLibrary& library, const LibraryKeys& keys, LibraryRows& rows);
    void sendKeptRows();
    void collectProblems(AnalysisLibrary& library);

    std::unique_ptr<PostgresAnalysisLibrary> server;
    std::unique_ptr<SqliteAnalysisLibrary> local;
    std::unique_ptr<SqliteAnalysisLibrary> outbox;
    Options options;
    bool onServer = false;
    bool outageTold = false;
    bool readOnlyTold = false;
    // The outbox may hold rows for the server.
    bool outboxHolds = false;
    Clock::time_point retryAt = Clock::time_point::max();
    Clock::time_point sendAt = Clock::time_point::max();
    QStringList problems;
};
