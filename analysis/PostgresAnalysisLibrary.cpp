#include "PostgresAnalysisLibrary.h"

#include "LibrarySql.h"

#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <atomic>

namespace {

// SQLSTATE codes the library answers to.
const QString kInsufficientPrivilege = QStringLiteral("42501");
const QString kDeadlock = QStringLiteral("40P01");
const QString kSerializationFailure = QStringLiteral("40001");

std::atomic<int> g_connectionCount{0};

// The server's or libpq's message as one clause: its first line, without the
// severity word and the SQLSTATE that Qt appends.
QString Clause(const QSqlError& error)
{
    QString text = error.databaseText().trimmed();
    if (text.isEmpty())
        text = error.driverText().trimmed();
    text = text.section(QLatin1Char('\n'), 0, 0).simplified();
    for (const char* severity : {"ERROR:", "FATAL:"}) {
        if (text.startsWith(QLatin1String(severity)))
            text = text.mid(int(qstrlen(severity))).trimmed();
    }
    return text;
}

} // namespace

PostgresAnalysisLibrary::PostgresAnalysisLibrary(LibraryServer libraryServer, Options opts)
    : server(std::move(libraryServer))
    , options(opts)
    , connectionName(QStringLiteral("tesk-library-server-%1").arg(++g_connectionCount))
{}

PostgresAnalysisLibrary::PostgresAnalysisLibrary(LibraryServer libraryServer)
    : PostgresAnalysisLibrary(std::move(libraryServer), Options())
{}

PostgresAnalysisLibrary::~PostgresAnalysisLibrary()
{
    Close();
}

bool PostgresAnalysisLibrary::Open()
{
    Close();
    if (!connect())
        return false;
    if (!prepareSchema()) {
        dropConnection();
        return false;
    }
    usable = true;
    failure.clear();
    return true;
}

void PostgresAnalysisLibrary::Close()
{
    dropConnection();
}

void PostgresAnalysisLibrary::dropConnection()
{
    usable = false;
    if (db.isValid())
        db.close();
    db = QSqlDatabase();
    if (QSqlDatabase::contains(connectionName))
        QSqlDatabase::removeDatabase(connectionName);
}

bool PostgresAnalysisLibrary::connect()
{
    db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
    if (!db.isValid()) {
        failure = tr("Qt's PostgreSQL driver is missing (Debian package libqt5sql5-psql)");
        dropConnection();
        return false;
    }
    if (!server.host.isEmpty())
        db.setHostName(server.host);
    db.setPort(server.port);
    db.setDatabaseName(server.database);
    db.setUserName(server.user);
    // No password here: libpq takes it from PGPASSWORD or the password file.
    // The keepalives notice a peer that vanished without closing the connection.
    db.setConnectOptions(
        QStringLiteral("connect_timeout=%1;options='-c statement_timeout=%2 -c lock_timeout=%2';"
                       "keepalives=1;keepalives_idle=5;keepalives_interval=2;keepalives_count=2;"
                       "tcp_user_timeout=%3;application_name=Tesk")
            .arg(options.connectTimeoutS)
            .arg(options.statementTimeoutMs)
            .arg(options.statementTimeoutMs));
    if (!db.open()) {
        failure = Clause(db.lastError());
        dropConnection();
        return false;
    }
    return true;
}

bool PostgresAnalysisLibrary::exec(QSqlQuery& q, const QString& sql)
{
    if (q.exec(sql))
        return true;
    error = q.lastError();
    return false;
}

bool PostgresAnalysisLibrary::prepareSchema()
{
    int version = 0;
    {
        QSqlQuery q(db);
        if (!exec(q, LibrarySql::SchemaTableExists()) || !q.next()) {
            failure = Clause(error);
            return false;
        }
        if (q.value(0).toBool()) {
            if (!exec(q, LibrarySql::SchemaVersion())) {
                failure = Clause(error);
                return false;
            }
            version = q.next() ? q.value(0).toInt() : 0;
        }
    }
    if (version > LibrarySql::kSchemaVersion) {
        failure = tr("its tables were made by a newer version of Tesk");
        return false;
    }
    if (version < LibrarySql::kSchemaVersion && !migrate())
        return false;
    QSqlQuery q(db);
    writable = exec(q, LibrarySql::MayWrite()) && q.next() && q.value(0).toBool();
    return true;
}

bool PostgresAnalysisLibrary::migrate()
{
    if (!db.transaction()) {
        failure = Clause(db.lastError());
        return false;
    }
    bool ok = false;
    {
        QSqlQuery q(db);
        // Workstations starting together on an empty database: one makes the
        // tables, the others wait and then find them made.
        ok = exec(q, LibrarySql::LockSchema()) && exec(q, LibrarySql::SchemaTableExists()) &&
             q.next();
        int version = 0;
        if (ok && q.value(0).toBool()) {
            ok = exec(q, LibrarySql::SchemaVersion());
            if (ok && q.next())
                version = q.value(0).toInt();
            else
                ok = ok && exec(q, LibrarySql::InsertSchemaVersion());
        } else if (ok) {
            ok = exec(q, LibrarySql::CreateSchemaTable()) &&
                 exec(q, LibrarySql::InsertSchemaVersion());
        }
        if (ok && version > LibrarySql::kSchemaVersion) {
            // Another, newer Tesk got here first.
            db.rollback();
            failure = tr("its tables were made by a newer version of Tesk");
            return false;
        }
        for (; ok && version < LibrarySql::kSchemaVersion; ++version) {
            for (const QString& sql : LibrarySql::MigrationStep(version, SqlDialect::Postgres))
                ok = ok && exec(q, sql);
        }
        if (ok) {
            ok = q.prepare(LibrarySql::SetSchemaVersion());
            q.addBindValue(version);
            ok = ok && q.exec();
            if (!ok)
                error = q.lastError();
        }
    }
    if (ok && db.commit())
        return true;
    if (ok)
        error = db.lastError();
    db.rollback();
    if (error.nativeErrorCode() == kInsufficientPrivilege)
        failure = tr("it has no analysis tables yet, and user %1 may not create them (an "
                     "administrator can run Tesk once as a user who may, or grant this one "
                     "CREATE on the schema)")
                      .arg(server.user.isEmpty() ? QStringLiteral("(default)") : server.user);
    else
        failure = Clause(error);
    return false;
}

void PostgresAnalysisLibrary::checkConnection()
{
    // Qt's driver closes the connection itself when libpq reports it broken.
    if (db.isOpen()) {
        QSqlQuery probe(db);
        if (probe.exec(QStringLiteral("SELECT 1"))) {
            failure = Clause(error);
            return;
        }
    }
    failure = tr("the connection to the server was lost");
    dropConnection();
}

bool PostgresAnalysisLibrary::connected()
{
    if (!usable)
        return false;
    if (db.isOpen())
        return true;
    checkConnection();
    return false;
}

bool PostgresAnalysisLibrary::write(const std::function<bool()>& body)
{
    if (!connected())
        return false;
    if (!writable) {
        failure = tr("user %1 may not write to its tables").arg(server.user);
        return false;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!db.transaction()) {
            error = db.lastError();
            checkConnection();
            return false;
        }
        if (body()) {
            if (db.commit()) {
                failure.clear();
                return true;
            }
            error = db.lastError();
        }
        db.rollback();
        const QString state = error.nativeErrorCode();
        if (attempt == 0 && (state == kDeadlock || state == kSerializationFailure))
            continue;
        if (state == kInsufficientPrivilege)
            writable = false;
        checkConnection();
        return false;
    }
    return false;
}

LibraryRows PostgresAnalysisLibrary::Fetch(const LibraryKeys& keys)
{
    LibraryRows out(keys.size());
    if (keys.empty() || !connected())
        return out;
    if (!LibrarySql::Fetch(db, options.analysisVersion, keys, out, error)) {
        out.assign(keys.size(), std::nullopt);
        checkConnection();
    }
    return out;
}

bool PostgresAnalysisLibrary::Store(const std::vector<LibraryRow>& rows)
{
    if (rows.empty())
        return usable;
    return write([&] { return LibrarySql::Upsert(db, options.analysisVersion, rows, error); });
}

LibraryKeys PostgresAnalysisLibrary::KeysIn(const LibraryKey& folder, bool recursive)
{
    LibraryKeys keys;
    if (connected() && !LibrarySql::KeysIn(db, folder, recursive, keys, error)) {
        keys.clear();
        checkConnection();
    }
    return keys;
}

bool PostgresAnalysisLibrary::Remove(const LibraryKeys& keys)
{
    if (keys.empty())
        return usable;
    return write([&] { return LibrarySql::Delete(db, keys, error); });
}

bool PostgresAnalysisLibrary::Clear()
{
    return write([&] { return LibrarySql::Clear(db, error); });
}
