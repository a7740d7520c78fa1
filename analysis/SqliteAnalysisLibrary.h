#pragma once

#include "AnalysisLibrary.h"
#include "LibrarySql.h"

#include <QCoreApplication>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>

#include <functional>

class QSqlQuery;

// The analysis library in one SQLite file (WAL, so that several Tesk windows
// and tesk-scan share it). The schema is versioned with PRAGMA user_version
// and migrated step by step. A damaged file is moved aside and a new one
// started; a locked, read-only or unreadable one leaves the store unused (or
// read only) with one message for the user.
class SqliteAnalysisLibrary final : public AnalysisLibrary
{
    Q_DECLARE_TR_FUNCTIONS(SqliteAnalysisLibrary)
    Q_DISABLE_COPY_MOVE(SqliteAnalysisLibrary)

public:
    struct Options
    {
        int analysisVersion = kAnalysisVersion;
        // Long enough for another window's batch to commit, short enough not
        // to hold the analysis up when something keeps the file locked.
        int busyTimeoutMs = 2000;
    };

    explicit SqliteAnalysisLibrary(const QString& filePath, Options options);
    explicit SqliteAnalysisLibrary(const QString& filePath);
    ~SqliteAnalysisLibrary() override;

    bool Open() override;
    void Close() override;
    bool IsUsable() const override { return usable; }
    bool IsReadOnly() const { return readOnly; }
    const QString& FilePath() const { return filePath; }
    LibraryRows Fetch(const LibraryKeys& keys) override;
    bool Store(const std::vector<LibraryRow>& rows) override;
    LibraryKeys KeysIn(const LibraryKey& folder, bool recursive) override;
    bool Remove(const LibraryKeys& keys) override;
    bool Clear() override;
    QString TakeProblem() override;

    // Where Tesk and tesk-scan keep their library: the cache folder of Tesk.
    static QString DefaultPath();

    // Up to `limit` rows, in key order (rows kept for a server while it was away).
    std::vector<LibraryRow> FetchAny(int limit);

    static constexpr int kSchemaVersion = LibrarySql::kSchemaVersion;

private:
    enum class Trouble
    {
        Damaged,
        Locked,
        ReadOnly,
        NewerSchema,
        CannotOpen,
        CannotWrite,
    };

    bool openFile(bool allowSetAside);
    bool prepareSchema();
    bool migrate();
    // Decides what `failure` means for the store; true when it was recovered
    // (a damaged file set aside and a new one opened) and the operation may
    // be tried again.
    bool recover(bool allowSetAside);
    bool setAside();
    void giveUp(Trouble trouble, const QString& detail = {});
    void report(Trouble trouble, const QString& detail);
    // Run a statement; on failure keep its error in `failure`.
    bool run(QSqlQuery& query, const QString& sql);
    bool run(QSqlQuery& query);
    bool write(const std::function<bool(QSqlQuery&)>& body);
    bool fetchOnce(const LibraryKeys& keys, LibraryRows& out);
    void dropConnection();

    QString filePath;
    Options options;
    QString connectionName;
    QSqlDatabase db;
    QSqlError failure;
    bool usable = false;
    bool readOnly = false;
    QStringList problems;
    QSet<int> reported;
};
