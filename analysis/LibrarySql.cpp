#include "LibrarySql.h"

#include "LibraryRowCodec.h"

#include <QHash>
#include <QList>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace {

const QString kTable = QStringLiteral("file_analysis");

// The steps with {int64}, {real}, {blob} and {key} for the types that differ:
// PostgreSQL's INTEGER has 32 bits, and its keys compare byte by byte (the
// "C" collation) as SQLite's do, so that a folder's keys are one range.
const QList<QStringList>& Steps()
{
    static const QList<QStringList> steps{
        {QStringLiteral("CREATE TABLE file_analysis ("
                        " path {key} NOT NULL PRIMARY KEY,"
                        " size {int64} NOT NULL,"
                        " mtime_ns {int64} NOT NULL,"
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
                        " loudness {real} NOT NULL,"
                        " format TEXT NOT NULL,"
                        " plot {blob} NOT NULL,"
                        " multi_plot {blob},"
                        " error_text TEXT NOT NULL,"
                        " sample_peak {real} NOT NULL)")},
        {QStringLiteral("ALTER TABLE file_analysis ADD COLUMN metadata {blob}")},
        // Library roots: a row is keyed by its root's name (empty outside every
        // root) and its path. SQLite cannot change a primary key in place, so
        // the table is made anew in both dialects.
        {QStringLiteral("CREATE TABLE file_analysis_keyed ("
                        " root {key} NOT NULL,"
                        " path {key} NOT NULL,"
                        " size {int64} NOT NULL,"
                        " mtime_ns {int64} NOT NULL,"
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
                        " loudness {real} NOT NULL,"
                        " format TEXT NOT NULL,"
                        " plot {blob} NOT NULL,"
                        " multi_plot {blob},"
                        " error_text TEXT NOT NULL,"
                        " sample_peak {real} NOT NULL,"
                        " metadata {blob},"
                        " PRIMARY KEY (root, path))"),
         QStringLiteral("INSERT INTO file_analysis_keyed SELECT '', path, size, mtime_ns,"
                        " analysis_version, measured, is_valid, header_read, modify_time,"
                        " sampling_rate, channels, samples, loop_count, marker_count, bits_min,"
                        " bits_max, loop_start, loop_end, loudness, format, plot, multi_plot,"
                        " error_text, sample_peak, metadata FROM file_analysis"),
         QStringLiteral("DROP TABLE file_analysis"),
         QStringLiteral("ALTER TABLE file_analysis_keyed RENAME TO file_analysis")},
    };
    return steps;
}

QString InDialect(QString sql, SqlDialect dialect)
{
    const bool pg = dialect == SqlDialect::Postgres;
    sql.replace(QStringLiteral("{int64}"),
                pg ? QStringLiteral("BIGINT") : QStringLiteral("INTEGER"));
    sql.replace(QStringLiteral("{real}"),
                pg ? QStringLiteral("DOUBLE PRECISION") : QStringLiteral("REAL"));
    sql.replace(QStringLiteral("{blob}"), pg ? QStringLiteral("BYTEA") : QStringLiteral("BLOB"));
    sql.replace(QStringLiteral("{key}"),
                pg ? QStringLiteral("TEXT COLLATE \"C\"") : QStringLiteral("TEXT"));
    return sql;
}

QString Marks(int count)
{
    QString marks = QStringLiteral("?");
    for (int i = 1; i < count; ++i)
        marks += QStringLiteral(",?");
    return marks;
}

// Keys per statement when fetching: one query for many files.
constexpr std::size_t kFetchChunk = 256;

bool Failed(const QSqlQuery& q, QSqlError& failure)
{
    failure = q.lastError();
    return false;
}

QString SelectColumns()
{
    return QStringLiteral("SELECT ") + LibraryRowCodec::Columns().join(QLatin1Char(',')) +
           QStringLiteral(" FROM ") + kTable;
}

} // namespace

QStringList LibrarySql::MigrationStep(int version, SqlDialect dialect)
{
    QStringList statements;
    if (version < 0 || version >= Steps().size())
        return statements;
    for (const QString& sql : Steps().at(version))
        statements << InDialect(sql, dialect);
    return statements;
}

bool LibrarySql::Fetch(const QSqlDatabase& db, int analysisVersion, const LibraryKeys& keys,
                       LibraryRows& out, QSqlError& failure)
{
    out.assign(keys.size(), std::nullopt);
    // The positions of each root's keys; a folder's files mostly share one.
    QHash<QString, std::vector<std::size_t>> byRoot;
    QHash<LibraryKey, std::size_t> index;
    index.reserve(int(keys.size()));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        byRoot[keys[i].root].push_back(i);
        index.insert(keys[i], i);
    }
    QSqlQuery q(db);
    q.setForwardOnly(true);
    int preparedFor = -1;
    for (auto group = byRoot.cbegin(); group != byRoot.cend(); ++group) {
        const std::vector<std::size_t>& at = group.value();
        for (std::size_t from = 0; from < at.size(); from += kFetchChunk) {
            const int n = int(std::min(kFetchChunk, at.size() - from));
            if (n != preparedFor &&
                !q.prepare(
                    SelectColumns() +
                    QStringLiteral(" WHERE analysis_version = ? AND root = ? AND path IN (") +
                    Marks(n) + QLatin1Char(')')))
                return Failed(q, failure);
            preparedFor = n;
            q.addBindValue(analysisVersion);
            q.addBindValue(LibraryRowCodec::KeyValue(group.key()));
            for (int i = 0; i < n; ++i)
                q.addBindValue(LibraryRowCodec::KeyValue(keys[at[from + std::size_t(i)]].path));
            if (!q.exec())
                return Failed(q, failure);
            while (q.next()) {
                const auto it = index.constFind(LibraryRowCodec::ReadKey(q));
                if (it != index.constEnd())
                    LibraryRowCodec::Read(q, out[it.value()].emplace());
            }
            if (q.lastError().isValid())
                return Failed(q, failure);
        }
    }
    return true;
}

bool LibrarySql::FetchAny(const QSqlDatabase& db, int analysisVersion, int limit,
                          std::vector<LibraryRow>& out, QSqlError& failure)
{
    out.clear();
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.prepare(SelectColumns() +
                   QStringLiteral(" WHERE analysis_version = ? ORDER BY root, path LIMIT ?")))
        return Failed(q, failure);
    q.addBindValue(analysisVersion);
    q.addBindValue(limit);
    if (!q.exec())
        return Failed(q, failure);
    while (q.next())
        LibraryRowCodec::Read(q, out.emplace_back());
    return !q.lastError().isValid() || Failed(q, failure);
}

bool LibrarySql::Upsert(const QSqlDatabase& db, int analysisVersion,
                        const std::vector<LibraryRow>& rows, QSqlError& failure)
{
    std::vector<const LibraryRow*> order;
    order.reserve(rows.size());
    for (const LibraryRow& row : rows)
        order.push_back(&row);
    std::stable_sort(order.begin(), order.end(),
                     [](const LibraryRow* a, const LibraryRow* b) { return a->key < b->key; });

    const QStringList& columns = LibraryRowCodec::Columns();
    QStringList updates;
    for (int i = LibraryRowCodec::kKeyColumns; i < columns.size(); ++i)
        updates << columns.at(i) + QStringLiteral("=excluded.") + columns.at(i);
    QSqlQuery q(db);
    if (!q.prepare(QStringLiteral("INSERT INTO ") + kTable + QLatin1Char('(') +
                   columns.join(QLatin1Char(',')) + QStringLiteral(") VALUES (") +
                   Marks(columns.size()) +
                   QStringLiteral(") ON CONFLICT (root, path) DO UPDATE SET ") +
                   updates.join(QLatin1Char(','))))
        return Failed(q, failure);
    for (std::size_t i = 0; i < order.size(); ++i) {
        // Of equal keys, sorted stably, the last is the one to keep.
        if (i + 1 < order.size() && order[i + 1]->key == order[i]->key)
            continue;
        LibraryRowCodec::Bind(q, *order[i], analysisVersion);
        if (!q.exec())
            return Failed(q, failure);
    }
    return true;
}

bool LibrarySql::KeysIn(const QSqlDatabase& db, const LibraryKey& folder, bool recursive,
                        LibraryKeys& out, QSqlError& failure)
{
    out.clear();
    // An empty path stands for the whole root: every path is inside it.
    QString prefix = folder.path;
    if (!prefix.isEmpty() && !prefix.endsWith(QLatin1Char('/')))
        prefix += QLatin1Char('/');
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (prefix.isEmpty()) {
        if (!q.prepare(QStringLiteral("SELECT root, path FROM ") + kTable +
                       QStringLiteral(" WHERE root = ? ORDER BY path")))
            return Failed(q, failure);
        q.addBindValue(LibraryRowCodec::KeyValue(folder.root));
    } else {
        // Every key that starts with the prefix sorts between it and the
        // prefix with its last character ('/') raised by one.
        QString end = prefix;
        end[end.size() - 1] = QChar(prefix.back().unicode() + 1);
        if (!q.prepare(QStringLiteral("SELECT root, path FROM ") + kTable +
                       QStringLiteral(" WHERE root = ? AND path >= ? AND path < ? ORDER BY path")))
            return Failed(q, failure);
        q.addBindValue(LibraryRowCodec::KeyValue(folder.root));
        q.addBindValue(prefix);
        q.addBindValue(end);
    }
    if (!q.exec())
        return Failed(q, failure);
    while (q.next()) {
        LibraryKey key{q.value(0).toString(), q.value(1).toString()};
        if (recursive || key.path.indexOf(QLatin1Char('/'), prefix.size()) < 0)
            out.push_back(std::move(key));
    }
    return !q.lastError().isValid() || Failed(q, failure);
}

bool LibrarySql::Delete(const QSqlDatabase& db, const LibraryKeys& keys, QSqlError& failure)
{
    QSqlQuery q(db);
    if (!q.prepare(QStringLiteral("DELETE FROM ") + kTable +
                   QStringLiteral(" WHERE root = ? AND path = ?")))
        return Failed(q, failure);
    for (const LibraryKey& key : keys) {
        q.addBindValue(LibraryRowCodec::KeyValue(key.root));
        q.addBindValue(LibraryRowCodec::KeyValue(key.path));
        if (!q.exec())
            return Failed(q, failure);
    }
    return true;
}

bool LibrarySql::Clear(const QSqlDatabase& db, QSqlError& failure)
{
    QSqlQuery q(db);
    return q.exec(QStringLiteral("DELETE FROM ") + kTable) || Failed(q, failure);
}

QString LibrarySql::SchemaTableExists()
{
    // Read from pg_class itself, not through the catalog cache (as to_regclass
    // is), so that a table another session made while we waited is seen.
    return QStringLiteral("SELECT EXISTS (SELECT 1 FROM pg_catalog.pg_class c"
                          " WHERE c.relname = 'library_schema'"
                          " AND pg_catalog.pg_table_is_visible(c.oid))");
}

QString LibrarySql::SchemaVersion()
{
    return QStringLiteral("SELECT version FROM library_schema");
}

QString LibrarySql::CreateSchemaTable()
{
    return QStringLiteral("CREATE TABLE library_schema (version INTEGER NOT NULL)");
}

QString LibrarySql::InsertSchemaVersion()
{
    return QStringLiteral("INSERT INTO library_schema (version) VALUES (0)");
}

QString LibrarySql::SetSchemaVersion()
{
    return QStringLiteral("UPDATE library_schema SET version = ?");
}

QString LibrarySql::LockSchema()
{
    // Any fixed number; "Tesk" in ASCII.
    return QStringLiteral("SELECT pg_advisory_xact_lock(1413827435)");
}

QString LibrarySql::MayWrite()
{
    return QStringLiteral("SELECT has_table_privilege('file_analysis', 'INSERT')"
                          " AND has_table_privilege('file_analysis', 'UPDATE')");
}
