#include "SqliteAnalysisLibrary.h"

#include "LibrarySql.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QVariant>

#include <atomic>

namespace {

constexpr qint64 kMapBytes = qint64(1) << 30;

// SQLite's primary result codes, as Qt's driver reports them.
enum SqliteCode
{
    SqliteBusy = 5,
    SqliteLocked = 6,
    SqliteReadOnly = 8,
    SqliteCorrupt = 11,
    SqliteNotADatabase = 26,
};

int PrimaryCode(const QSqlError& error)
{
    bool ok = false;
    const int code = error.nativeErrorCode().toInt(&ok);
    return ok ? (code & 0xff) : -1;
}

std::atomic<int> g_connectionCount{0};

} // namespace

SqliteAnalysisLibrary::SqliteAnalysisLibrary(const QString& path, Options opts)
    : filePath(path)
    , options(opts)
    , connectionName(QStringLiteral("tesk-analysis-library-%1").arg(++g_connectionCount))
{}

SqliteAnalysisLibrary::SqliteAnalysisLibrary(const QString& path)
    : SqliteAnalysisLibrary(path, Options())
{}

SqliteAnalysisLibrary::~SqliteAnalysisLibrary()
{
    Close();
}

QString SqliteAnalysisLibrary::DefaultPath()
{
    // Tesk and tesk-scan share one library whatever the running program is
    // called, so the cache folder is taken under Tesk's own names.
    const QString organisation = QCoreApplication::organizationName();
    const QString application = QCoreApplication::applicationName();
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane Works"));
    QCoreApplication::setApplicationName(QStringLiteral("Tesk"));
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    QCoreApplication::setOrganizationName(organisation);
    QCoreApplication::setApplicationName(application);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/analysis-library.sqlite");
}

bool SqliteAnalysisLibrary::Open()
{
    Close();
    if (filePath.isEmpty()) {
        giveUp(Trouble::CannotOpen, tr("no cache folder"));
        return false;
    }
    const QFileInfo file(filePath);
    if (!QDir().mkpath(file.absolutePath())) {
        giveUp(Trouble::CannotOpen, tr("cannot create its folder"));
        return false;
    }
    if (file.exists() && !file.isFile()) {
        giveUp(Trouble::CannotOpen, tr("not a file"));
        return false;
    }
    // WAL needs its side files beside the library: without a writable folder
    // or file the library can only be read.
    readOnly =
        (file.exists() && !file.isWritable()) || !QFileInfo(file.absolutePath()).isWritable();
    openFile(true);
    if (usable && readOnly)
        report(Trouble::ReadOnly, {});
    return usable;
}

bool SqliteAnalysisLibrary::openFile(bool allowSetAside)
{
    dropConnection();
    db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    if (!db.isValid()) {
        giveUp(Trouble::CannotOpen, tr("Qt's SQLite driver is missing"));
        return false;
    }
    db.setDatabaseName(filePath);
    QString connectOptions = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(options.busyTimeoutMs);
    if (readOnly)
        connectOptions += QStringLiteral(";QSQLITE_OPEN_READONLY");
    db.setConnectOptions(connectOptions);
    if (!db.open()) {
        failure = db.lastError();
        return recover(allowSetAside);
    }
    usable = true;
    if (!prepareSchema())
        return recover(allowSetAside);
    // Giving up (on a newer schema, say) has closed the connection.
    usable = db.isValid() && db.isOpen();
    return usable;
}

bool SqliteAnalysisLibrary::prepareSchema()
{
    QSqlQuery q(db);
    if (!run(q, QStringLiteral("PRAGMA user_version")) || !q.next())
        return false;
    const int version = q.value(0).toInt();
    q.finish();
    // Reads through a memory map: a folder's rows are read without a copy
    // through the kernel for every page.
    run(q, QStringLiteral("PRAGMA mmap_size = %1").arg(kMapBytes));
    if (version > kSchemaVersion) {
        giveUp(Trouble::NewerSchema);
        return true; // nothing to recover: the store stays unused
    }
    if (readOnly) {
        if (version < kSchemaVersion)
            giveUp(Trouble::ReadOnly);
        return true;
    }
    // Readers never wait for a writer, and a crash loses at most the
    // transactions not yet committed.
    if (!run(q, QStringLiteral("PRAGMA journal_mode=WAL")) ||
        !run(q, QStringLiteral("PRAGMA synchronous=NORMAL")))
        return false;
    q.finish();
    return version == kSchemaVersion || migrate();
}

bool SqliteAnalysisLibrary::migrate()
{
    QSqlQuery q(db);
    // Another process may be migrating the same file: the immediate
    // transaction makes one wait for the other, and the version is read again.
    if (!run(q, QStringLiteral("BEGIN IMMEDIATE")))
        return false;
    bool ok = run(q, QStringLiteral("PRAGMA user_version")) && q.next();
    int version = ok ? q.value(0).toInt() : 0;
    q.finish();
    for (; ok && version < kSchemaVersion; ++version) {
        for (const QString& sql : LibrarySql::MigrationStep(version, SqlDialect::Sqlite))
            ok = ok && run(q, sql);
    }
    // PRAGMA takes no bound value; the number is our own constant.
    ok = ok && run(q, QStringLiteral("PRAGMA user_version = %1").arg(version)) &&
         run(q, QStringLiteral("COMMIT"));
    if (!ok)
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK"));
    return ok;
}

bool SqliteAnalysisLibrary::run(QSqlQuery& q, const QString& sql)
{
    if (q.exec(sql))
        return true;
    failure = q.lastError();
    return false;
}

bool SqliteAnalysisLibrary::run(QSqlQuery& q)
{
    if (q.exec())
        return true;
    failure = q.lastError();
    return false;
}

void SqliteAnalysisLibrary::Close()
{
    dropConnection();
    usable = false;
}

void SqliteAnalysisLibrary::dropConnection()
{
    if (db.isValid())
        db.close();
    db = QSqlDatabase();
    if (QSqlDatabase::contains(connectionName))
        QSqlDatabase::removeDatabase(connectionName);
}

bool SqliteAnalysisLibrary::recover(bool allowSetAside)
{
    switch (PrimaryCode(failure)) {
    case SqliteCorrupt:
    case SqliteNotADatabase:
        if (allowSetAside && setAside())
            return openFile(false);
        giveUp(Trouble::CannotOpen, failure.text());
        return false;
    case SqliteBusy:
    case SqliteLocked:
        giveUp(Trouble::Locked);
        return false;
    case SqliteReadOnly:
        // Reading may still work; writes stop here.
        readOnly = true;
        report(Trouble::ReadOnly, {});
        return false;
    default:
        giveUp(usable ? Trouble::CannotWrite : Trouble::CannotOpen, failure.text());
        return false;
    }
}

bool SqliteAnalysisLibrary::setAside()
{
    dropConnection();
    usable = false;
    const QString aside =
        filePath + QStringLiteral(".damaged-") +
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz"));
    if (!QFile::rename(filePath, aside) && !QFile::remove(filePath))
        return false;
    // The side files belong to the damaged file, not to the new one.
    QFile::rename(filePath + QStringLiteral("-wal"), aside + QStringLiteral("-wal"));
    QFile::remove(filePath + QStringLiteral("-shm"));
    QFile::remove(filePath + QStringLiteral("-journal"));
    report(Trouble::Damaged, aside);
    return true;
}

void SqliteAnalysisLibrary::giveUp(Trouble trouble, const QString& detail)
{
    dropConnection();
    usable = false;
    report(trouble, detail);
}

void SqliteAnalysisLibrary::report(Trouble trouble, const QString& detail)
{
    const int kind = static_cast<int>(trouble);
    if (reported.contains(kind))
        return;
    reported.insert(kind);
    const QString file = QDir::toNativeSeparators(filePath);
    switch (trouble) {
    case Trouble::Damaged:
        problems << tr("The analysis library was damaged; it was moved to %1 and a new one was "
                       "started.")
                        .arg(QDir::toNativeSeparators(detail));
        break;
    case Trouble::Locked:
        problems << tr("The analysis library %1 is locked by another program; analysis results "
                       "are kept for this session only.")
                        .arg(file);
        break;
    case Trouble::ReadOnly:
        problems << tr("The analysis library %1 is read-only; new analysis results are kept for "
                       "this session only.")
                        .arg(file);
        break;
    case Trouble::NewerSchema:
        problems << tr("The analysis library %1 was written by a newer version of Tesk; analysis "
                       "results are kept for this session only.")
                        .arg(file);
        break;
    case Trouble::CannotOpen:
        problems << tr("Cannot open the analysis library %1 (%2); analysis results are kept for "
                       "this session only.")
                        .arg(file, detail);
        break;
    case Trouble::CannotWrite:
        problems << tr("Cannot write to the analysis library %1 (%2); analysis results are kept "
                       "for this session only.")
                        .arg(file, detail);
        break;
    }
}

QString SqliteAnalysisLibrary::TakeProblem()
{
    return problems.isEmpty() ? QString() : problems.takeFirst();
}

LibraryRows SqliteAnalysisLibrary::Fetch(const LibraryKeys& keys)
{
    LibraryRows out(keys.size());
    if (!usable || keys.empty())
        return out;
    if (fetchOnce(keys, out))
        return out;
    out.assign(keys.size(), std::nullopt);
    if (recover(true) && usable && !fetchOnce(keys, out))
        out.assign(keys.size(), std::nullopt);
    return out;
}

bool SqliteAnalysisLibrary::fetchOnce(const LibraryKeys& keys, LibraryRows& out)
{
    // One read transaction: one consistent view and one lock for all chunks.
    QSqlQuery transaction(db);
    if (!run(transaction, QStringLiteral("BEGIN")))
        return false;
    const bool ok = LibrarySql::Fetch(db, options.analysisVersion, keys, out, failure);
    transaction.exec(QStringLiteral("COMMIT"));
    return ok;
}

std::vector<LibraryRow> SqliteAnalysisLibrary::FetchAny(int limit)
{
    std::vector<LibraryRow> rows;
    if (usable && !LibrarySql::FetchAny(db, options.analysisVersion, limit, rows, failure)) {
        rows.clear();
        recover(true);
    }
    return rows;
}

bool SqliteAnalysisLibrary::write(const std::function<bool(QSqlQuery&)>& body)
{
    if (!usable || readOnly)
        return false;
    for (int attempt = 0; attempt < 2; ++attempt) {
        bool ok = false;
        {
            QSqlQuery q(db);
            // Takes the write lock at once, so that the busy timeout applies
            // here and not to a lock upgrade halfway through.
            ok = run(q, QStringLiteral("BEGIN IMMEDIATE")) && body(q) &&
                 run(q, QStringLiteral("COMMIT"));
            if (!ok)
                QSqlQuery(db).exec(QStringLiteral("ROLLBACK"));
        }
        if (ok)
            return true;
        if (!recover(attempt == 0) || !usable || readOnly)
            return false;
    }
    return false;
}

bool SqliteAnalysisLibrary::Store(const std::vector<LibraryRow>& rows)
{
    if (rows.empty())
        return true;
    return write(
        [&](QSqlQuery&) { return LibrarySql::Upsert(db, options.analysisVersion, rows, failure); });
}

bool SqliteAnalysisLibrary::Remove(const LibraryKeys& keys)
{
    if (keys.empty())
        return true;
    return write([&](QSqlQuery&) { return LibrarySql::Delete(db, keys, failure); });
}

bool SqliteAnalysisLibrary::Clear()
{
    const bool cleared = write([&](QSqlQuery&) { return LibrarySql::Clear(db, failure); });
    if (cleared) {
        // Gives the space back; another process reading at this moment makes
        // it fail, which leaves the space for later rows.
        QSqlQuery(db).exec(QStringLiteral("VACUUM"));
    }
    return cleared;
}

LibraryKeys SqliteAnalysisLibrary::KeysIn(const LibraryKey& folder, bool recursive)
{
    LibraryKeys keys;
    if (usable && !LibrarySql::KeysIn(db, folder, recursive, keys, failure)) {
        keys.clear();
        recover(true);
    }
    return keys;
}
