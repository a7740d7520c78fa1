#include "FallbackAnalysisLibrary.h"

#include <QFileInfo>

FallbackAnalysisLibrary::FallbackAnalysisLibrary(std::unique_ptr<PostgresAnalysisLibrary> srv,
                                                 std::unique_ptr<SqliteAnalysisLibrary> embedded,
                                                 std::unique_ptr<SqliteAnalysisLibrary> kept,
                                                 Options opts)
    : server(std::move(srv))
    , local(std::move(embedded))
    , outbox(std::move(kept))
    , options(opts)
{}

FallbackAnalysisLibrary::~FallbackAnalysisLibrary()
{
    Close();
}

std::unique_ptr<AnalysisLibrary> FallbackAnalysisLibrary::ForServer(const LibraryServer& server)
{
    return std::make_unique<FallbackAnalysisLibrary>(
        std::make_unique<PostgresAnalysisLibrary>(server),
        std::make_unique<SqliteAnalysisLibrary>(SqliteAnalysisLibrary::DefaultPath()),
        std::make_unique<SqliteAnalysisLibrary>(OutboxPath()), Options());
}

QString FallbackAnalysisLibrary::OutboxPath()
{
    const QString library = SqliteAnalysisLibrary::DefaultPath();
    return library.isEmpty() ? QString()
                             : QFileInfo(library).absolutePath() +
                                   QStringLiteral("/analysis-library-outbox.sqlite");
}

bool FallbackAnalysisLibrary::Open()
{
    // Rows kept by an earlier session that could not reach the server.
    if (QFileInfo::exists(outbox->FilePath()))
        outboxHolds = !outboxLibrary().FetchAny(1).empty();
    connectServer();
    if (!onServer)
        localLibrary();
    return IsUsable();
}

void FallbackAnalysisLibrary::Close()
{
    server->Close();
    local->Close();
    outbox->Close();
    onServer = false;
}

bool FallbackAnalysisLibrary::IsUsable() const
{
    return onServer || local->IsUsable();
}

void FallbackAnalysisLibrary::connectServer()
{
    if (!server->Open()) {
        serverLost();
        return;
    }
    onServer = true;
    retryAt = Clock::time_point::max();
    sendAt = Clock::now();
    const QString name = server->Server().Describe();
    if (outageTold) {
        problems << tr("The shared analysis library %1 can be reached again; results kept on this "
                       "computer meanwhile are being sent to it.")
                        .arg(name);
        outageTold = false;
    }
    if (!server->IsWritable())
        tellReadOnly();
}

void FallbackAnalysisLibrary::tellReadOnly()
{
    if (readOnlyTold)
        return;
    readOnlyTold = true;
    problems << tr("The shared analysis library %1 does not let user %2 write to it; new "
                   "analysis results are kept on this computer only.")
                    .arg(server->Server().Describe(), server->Server().user);
}

bool FallbackAnalysisLibrary::reconnected()
{
    // A server restarted for maintenance drops every connection; a new one
    // usually works at once, and then nobody needs to hear of it.
    if (server->IsUsable())
        return false;
    return server->Open();
}

void FallbackAnalysisLibrary::serverLost()
{
    onServer = false;
    retryAt = Clock::now() + options.retryDelay;
    const QString reason = server->Failure();
    server->Close();
    if (outageTold)
        return;
    outageTold = true;
    problems << tr("Cannot use the shared analysis library %1: %2. Analysis results are kept on "
                   "this computer until it can be used again.")
                    .arg(server->Server().Describe(), reason);
}

SqliteAnalysisLibrary& FallbackAnalysisLibrary::localLibrary()
{
    if (!local->IsUsable()) {
        local->Open();
        collectProblems(*local);
    }
    return *local;
}

SqliteAnalysisLibrary& FallbackAnalysisLibrary::outboxLibrary()
{
    if (!outbox->IsUsable()) {
        outbox->Open();
        collectProblems(*outbox);
    }
    return *outbox;
}

void FallbackAnalysisLibrary::collectProblems(AnalysisLibrary& library)
{
    for (QString problem = library.TakeProblem(); !problem.isEmpty();
         problem = library.TakeProblem())
        problems << problem;
}

LibraryRows FallbackAnalysisLibrary::Fetch(const LibraryKeys& keys)
{
    if (onServer) {
        LibraryRows rows = server->Fetch(keys);
        if (reconnected())
            rows = server->Fetch(keys);
        if (server->IsUsable()) {
            // Rows still waiting in the outbox are as good as the server's, and
            // a user who may not write keeps new rows on this computer.
            if (outboxHolds)
                fillMisses(outboxLibrary(), keys, rows);
            if (!server->IsWritable())
                fillMisses(localLibrary(), keys, rows);
            return rows;
        }
        serverLost();
    }
    LibraryRows rows = localLibrary().Fetch(keys);
    collectProblems(*local);
    return rows;
}

void FallbackAnalysisLibrary::fillMisses(SqliteAnalysisLibrary& library, const LibraryKeys& keys,
                                         LibraryRows& rows)
{
    LibraryKeys missing;
    std::vector<std::size_t> at;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!rows[i]) {
            missing.push_back(keys[i]);
            at.push_back(i);
        }
    }
    if (missing.empty())
        return;
    LibraryRows found = library.Fetch(missing);
    collectProblems(library);
    for (std::size_t j = 0; j < found.size(); ++j)
        rows[at[j]] = std::move(found[j]);
}

bool FallbackAnalysisLibrary::Store(const std::vector<LibraryRow>& rows)
{
    if (onServer) {
        if (!server->IsWritable()) {
            const bool stored = localLibrary().Store(rows);
            collectProblems(*local);
            return stored;
        }
        if (server->Store(rows) || (reconnected() && server->Store(rows)))
            return true;
        if (server->IsUsable() && !server->IsWritable()) {
            // Refused, not lost: the rows would never be taken later either.
            tellReadOnly();
            const bool stored = localLibrary().Store(rows);
            collectProblems(*local);
            return stored;
        }
        if (!server->IsUsable())
            serverLost();
        else
            sendAt = Clock::now() + options.retryDelay;
    }
    return keepForLater(rows);
}

bool FallbackAnalysisLibrary::keepForLater(const std::vector<LibraryRow>& rows)
{
    const bool stored = localLibrary().Store(rows);
    collectProblems(*local);
    const bool kept = outboxLibrary().Store(rows);
    collectProblems(*outbox);
    outboxHolds = outboxHolds || kept;
    return stored && kept;
}

LibraryKeys FallbackAnalysisLibrary::KeysIn(const LibraryKey& folder, bool recursive)
{
    if (onServer) {
        LibraryKeys keys = server->KeysIn(folder, recursive);
        if (reconnected())
            keys = server->KeysIn(folder, recursive);
        if (server->IsUsable())
            return keys;
        serverLost();
    }
    LibraryKeys keys = localLibrary().KeysIn(folder, recursive);
    collectProblems(*local);
    return keys;
}

bool FallbackAnalysisLibrary::Remove(const LibraryKeys& keys)
{
    if (outboxHolds)
        outboxLibrary().Remove(keys);
    if (onServer) {
        if (server->Remove(keys) || (reconnected() && server->Remove(keys)) || server->IsUsable())
            return true;
        serverLost();
    }
    const bool removed = localLibrary().Remove(keys);
    collectProblems(*local);
    return removed;
}

bool FallbackAnalysisLibrary::Clear()
{
    if (!onServer)
        return false;
    if (!server->Clear()) {
        if (!server->IsUsable())
            serverLost();
        return false;
    }
    if (outboxHolds && outboxLibrary().Clear())
        outboxHolds = false;
    return true;
}

QString FallbackAnalysisLibrary::TakeProblem()
{
    return problems.isEmpty() ? QString() : problems.takeFirst();
}

AnalysisLibrary::Clock::time_point FallbackAnalysisLibrary::MaintenanceDue() const
{
    if (!onServer)
        return retryAt;
    return outboxHolds ? sendAt : Clock::time_point::max();
}

void FallbackAnalysisLibrary::Maintain()
{
    if (!onServer) {
        if (Clock::now() >= retryAt)
            connectServer();
        return;
    }
    if (outboxHolds && Clock::now() >= sendAt)
        sendKeptRows();
}

void FallbackAnalysisLibrary::sendKeptRows()
{
    if (!server->IsWritable()) {
        outboxHolds = false;
        return;
    }
    const std::vector<LibraryRow> rows = outboxLibrary().FetchAny(options.sendRows);
    collectProblems(*outbox);
    if (rows.empty()) {
        outboxHolds = false;
        return;
    }
    if (!server->Store(rows)) {
        if (!server->IsUsable())
            serverLost();
        else
            sendAt = Clock::now() + options.retryDelay;
        return;
    }
    LibraryKeys sent;
    sent.reserve(rows.size());
    for (const LibraryRow& row : rows)
        sent.push_back(row.key);
    // An outbox that cannot be emptied would have the same rows sent forever.
    if (!outbox->Remove(sent))
        outboxHolds = false;
    collectProblems(*outbox);
}
