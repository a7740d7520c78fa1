#pragma once

#include "AnalysisLibrary.h"

#include <QString>
#include <QStringList>

class QSqlDatabase;
class QSqlError;

enum class SqlDialect
{
    Sqlite,
    Postgres,
};

// Every SQL text of the analysis library, for both of its backends: the
// schema steps, written once with the few type names that differ put in per
// dialect, and the statements on rows, which both dialects read alike and
// which are run here. Values are always bound; only table and column names,
// which are ours, are put together here.
class LibrarySql final
{
public:
    // Version n of the schema is what steps 0 to n-1 make; the embedded
    // library keeps it in PRAGMA user_version, a server in library_schema.
    static constexpr int kSchemaVersion = 3;

    // The statements that bring a library from `version` to `version` + 1.
    // A released step is never edited; a change is a new step (ALTER TABLE
    // ... ADD COLUMN for a new record field, with the codec's columns extended).
    static QStringList MigrationStep(int version, SqlDialect dialect);

    // The statements on rows, run on `db` within whatever transaction the
    // caller holds; false with the error in `failure` when one fails.
    // Fills `out` (sized as `keys`) with the rows of `keys` of `analysisVersion`,
    // one query per root and up to 256 paths.
    static bool Fetch(const QSqlDatabase& db, int analysisVersion, const LibraryKeys& keys,
                      LibraryRows& out, QSqlError& failure);
    // Up to `limit` rows of `analysisVersion`, in key order.
    static bool FetchAny(const QSqlDatabase& db, int analysisVersion, int limit,
                         std::vector<LibraryRow>& out, QSqlError& failure);
    // Inserts or replaces each row, in key order (so that two writers never
    // wait for each other's rows crosswise); of a key given twice, the last row.
    static bool Upsert(const QSqlDatabase& db, int analysisVersion,
                       const std::vector<LibraryRow>& rows, QSqlError& failure);
    static bool KeysIn(const QSqlDatabase& db, const LibraryKey& folder, bool recursive,
                       LibraryKeys& out, QSqlError& failure);
    static bool Delete(const QSqlDatabase& db, const LibraryKeys& keys, QSqlError& failure);
    static bool Clear(const QSqlDatabase& db, QSqlError& failure);

    // A server keeps its schema version in a table of one row; every Tesk
    // that creates or migrates the tables holds this advisory lock meanwhile.
    static QString SchemaTableExists();
    static QString SchemaVersion();
    static QString CreateSchemaTable();
    static QString InsertSchemaVersion();
    static QString SetSchemaVersion(); // binds the version
    static QString LockSchema();
    // Whether this user may write rows (one boolean column).
    static QString MayWrite();
};
