#include "SqliteAnalysisLibrary.h"

#include "LibraryRowCodec.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QVariant>

#include <atomic>

namespace {

// Every SQL text of the library is in this file. Values are always bound;
// only table and column names, which are ours, are put together here.

// Schema steps: entry n brings a library from user_version n to n + 1. A
// released step is never edited; a change is a new step (ALTER TABLE ... ADD
// COLUMN for a new record field, with the codec's column list extended).
const QList<QStringList>& Migrations()
{
    static const QList<QStringList> steps{
        {QStringLiteral("CREATE TABLE file_analysis ("
                        " path TEXT NOT NULL PRIMARY KEY,"
                        " size INTEGER NOT NULL,"
                        " mtime_ns INTEGER NOT NULL,"
                        " analysis_version INTEGER NOT NULL,"
                        " measured INTEGER NOT NULL,"
                        " is_valid INTEGER NOT NULL,"
                        " header_read INTEGER NOT NULL,"
                        " modify_time TEXT NOT NULL,"
                        " sampling_rate INTEGER NOT NULL,"
                        " channels INTEGER NOT NULL,"
                        " samples INTEGER NOT NULL,"
                        " loop_count INTEGER NOT NULL,"
                        " marker_count INTEGER NOT NULL,"
                        " bits_min INTEGER NOT NULL,"
                        " bits_max INTEGER NOT NULL,"
                        " loop_start INTEGER NOT NULL,"
                        " loop_end INTEGER NOT NULL,"
                        " loudness REAL NOT NULL,"
                        " format TEXT NOT NULL,"
                        " plot BLOB NOT NULL,"
                        " multi_plot BLOB,"
                        " error_text TEXT NOT NULL,"
                        " sample_peak REAL NOT NULL)")},
        {QStringLiteral("ALTER TABLE file_analysis ADD COLUMN metadata BLOB")},
    };
    return steps;
}

const QString kTable = QStringLiteral("file_analysis");

// Keys per statement when fetching: one query for many files.
constexpr int kFetchChunk = 256;
constexpr qint64 kMapBytes = qint64(1) << 30;

QString SelectColumns()
{
    return LibraryRowCodec::Columns().join(QLatin1Char(','));
}

QString FetchSql(int keyCount)
{
    QString marks = QStringLiteral("?");
    for (int i = 1; i < keyCount; ++i)
        marks += QStringLiteral(",?");
    return QStringLiteral("SELECT ") + SelectColumns() + QStringLiteral(" FROM ") + kTable +
           QStringLiteral(" WHERE analysis_version = ? AND path IN (") + marks +
           QStringLiteral(")");
}

QString UpsertSql()
{
    const QStringList& columns = LibraryRowCodec::Columns();
    QStringList marks;
    QStringList updates;
    for (int i = 0; i < columns.size(); ++i) {
        marks << QStringLiteral("?");
        if (i != LibraryRowCodec::KeyColumn())
            updates << columns.at(i) + QStringLiteral("=excluded.") + columns.at(i);
    }
    return QStringLiteral("INSERT INTO ") + kTable + QLatin1Char('(') +
           columns.join(QLatin1Char(',')) + QStringLiteral(") VALUES (") +
           marks.join(QLatin1Char(',')) + QStringLiteral(") ON CONFLICT(path) DO UPDATE SET ") +
           updates.join(QLatin1Char(','));
}

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
    const QList<QStringList>& steps = Migrations();
    for (; ok && version < kSchemaVersion; ++version) {
        for (const QString& sql : steps.at(version))
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

LibraryRows SqliteAnalysisLibrary::Fetch(const QStringList& keys)
{
    LibraryRows out(std::size_t(keys.size()));
    if (!usable || keys.isEmpty())
        return out;
    if (fetchOnce(keys, out))
        return out;
    out.assign(std::size_t(keys.size()), std::nullopt);
    if (recover(true) && usable && !fetchOnce(keys, out))
        out.assign(std::size_t(keys.size()), std::nullopt);
    return out;
}

bool SqliteAnalysisLibrary::fetchOnce(const QStringList& keys, LibraryRows& out)
{
    QHash<QString, int> index;
    index.reserve(keys.size());
    for (int i = 0; i < keys.size(); ++i)
        index.insert(keys.at(i), i);

    // One read transaction: one consistent view and one lock for all chunks.
    QSqlQuery transaction(db);
    if (!run(transaction, QStringLiteral("BEGIN")))
        return false;
    bool ok = true;
    {
        QSqlQuery q(db);
        q.setForwardOnly(true);
        int preparedFor = -1;
        for (int from = 0; ok && from < keys.size(); from += kFetchChunk) {
            const int n = std::min(kFetchChunk, keys.size() - from);
            if (n != preparedFor && !q.prepare(FetchSql(n))) {
                failure = q.lastError();
                ok = false;
                break;
            }
            preparedFor = n;
            q.addBindValue(options.analysisVersion);
            for (int i = 0; i < n; ++i)
                q.addBindValue(keys.at(from + i));
            ok = run(q);
            while (ok && q.next()) {
                const auto it = index.constFind(LibraryRowCodec::ReadKey(q));
                if (it != index.constEnd())
                    LibraryRowCodec::Read(q, out[std::size_t(it.value())].emplace());
            }
            if (ok && q.lastError().isValid()) {
                failure = q.lastError();
                ok = false;
            }
        }
    }
    transaction.exec(QStringLiteral("COMMIT"));
    return ok;
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
    return write([&](QSqlQuery& q) {
        if (!q.prepare(UpsertSql())) {
            failure = q.lastError();
            return false;
        }
        for (const LibraryRow& row : rows) {
            LibraryRowCodec::Bind(q, row, options.analysisVersion);
            if (!run(q))
                return false;
        }
        return true;
    });
}

bool SqliteAnalysisLibrary::Remove(const QStringList& keys)
{
    if (keys.isEmpty())
        return true;
    return write([&](QSqlQuery& q) {
        if (!q.prepare(QStringLiteral("DELETE FROM ") + kTable +
                       QStringLiteral(" WHERE path = ?"))) {
            failure = q.lastError();
            return false;
        }
        for (const QString& key : keys) {
            q.addBindValue(key);
            if (!run(q))
                return false;
        }
        return true;
    });
}

bool SqliteAnalysisLibrary::Clear()
{
    const bool cleared =
        write([&](QSqlQuery& q) { return run(q, QStringLiteral("DELETE FROM ") + kTable); });
    if (cleared) {
        // Gives the space back; another process reading at this moment makes
        // it fail, which leaves the space for later rows.
        QSqlQuery(db).exec(QStringLiteral("VACUUM"));
    }
    return cleared;
}

QStringList SqliteAnalysisLibrary::KeysIn(const QString& folderKey, bool recursive)
{
    QStringList keys;
    if (!usable)
        return keys;
    const QString prefix =
        folderKey.endsWith(QLatin1Char('/')) ? folderKey : folderKey + QLatin1Char('/');
    // Every key that starts with the prefix sorts between it and the prefix
    // with its last character ('/') raised by one.
    QString end = prefix;
    end[end.size() - 1] = QChar(prefix.back().unicode() + 1);
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.prepare(QStringLiteral("SELECT path FROM ") + kTable +
                   QStringLiteral(" WHERE path >= ? AND path < ? ORDER BY path"))) {
        failure = q.lastError();
        recover(true);
        return keys;
    }
    q.addBindValue(prefix);
    q.addBindValue(end);
    if (!run(q)) {
        recover(true);
        return keys;
    }
    while (q.next()) {
        const QString key = q.value(0).toString();
        if (recursive || key.indexOf(QLatin1Char('/'), prefix.size()) < 0)
            keys << key;
    }
    return keys;
}
