#pragma once

#include "AnalysisLibrary.h"
#include "LibraryServer.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>

#include <functional>

class QSqlQuery;

// The analysis library in a PostgreSQL database that many workstations share,
// through Qt's PostgreSQL driver. Same schema and versioning as the embedded
// library (the version lives in the table library_schema); the tables are
// made on first use when the user may create them. Writers upsert, so that
// any number of them can write the same rows at once. Every wait is bounded:
// connecting by libpq's connect_timeout, each statement by the server's
// statement_timeout, a dead peer by TCP keepalives. When the server cannot be
// used, the object says why (Failure) and stays unusable until it is opened
// again; it never retries on its own (FallbackAnalysisLibrary does).
class PostgresAnalysisLibrary final : public AnalysisLibrary
{
    Q_DECLARE_TR_FUNCTIONS(PostgresAnalysisLibrary)
    Q_DISABLE_COPY_MOVE(PostgresAnalysisLibrary)

public:
    struct Options
    {
        int analysisVersion = kAnalysisVersion;
        // A few seconds: a server that takes longer is as good as away.
        int connectTimeoutS = 3;
        int statementTimeoutMs = 5000;
    };

    explicit PostgresAnalysisLibrary(LibraryServer server, Options options);
    explicit PostgresAnalysisLibrary(LibraryServer server);
    ~PostgresAnalysisLibrary() override;

    bool Open() override;
    void Close() override;
    bool IsUsable() const override { return usable; }
    // False when the user may read the rows but not write them.
    bool IsWritable() const { return usable && writable; }
    LibraryRows Fetch(const LibraryKeys& keys) override;
    bool Store(const std::vector<LibraryRow>& rows) override;
    LibraryKeys KeysIn(const LibraryKey& folder, bool recursive) override;
    bool Remove(const LibraryKeys& keys) override;
    bool Clear() override;
    // Nothing: the reasons come through Failure, for the caller to word.
    QString TakeProblem() override { return {}; }

    // Why the last open or call failed, as a clause for a message; empty after a success.
    QString Failure() const { return failure; }
    const LibraryServer& Server() const { return server; }

private:
    bool connect();
    bool prepareSchema();
    bool migrate();
    // Runs `body` in a transaction, once more after a deadlock or a
    // serialization failure; on a failure, checks the connection.
    bool write(const std::function<bool()>& body);
    // After a failed statement: gives up the connection when it is gone, else
    // keeps the statement's error as the failure.
    void checkConnection();
    // False, giving the connection up, when it is not open any more.
    bool connected();
    bool exec(QSqlQuery& query, const QString& sql);
    void dropConnection();

    LibraryServer server;
    Options options;
    QString connectionName;
    QSqlDatabase db;
    QSqlError error;
    QString failure;
    bool usable = false;
    bool writable = false;
};
