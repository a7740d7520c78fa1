#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace fixtures {

// A throwaway PostgreSQL server for the tests and the benchmarks: a cluster
// made with initdb in a temporary folder, listening only on a Unix socket in
// that folder, with password (SCRAM) logins. Run as the unprivileged
// "postgres" user when we are root, as PostgreSQL requires. Stopped and
// removed with the object.
class PostgresCluster final
{
public:
    PostgresCluster();
    ~PostgresCluster();
    PostgresCluster(const PostgresCluster&) = delete;
    PostgresCluster& operator=(const PostgresCluster&) = delete;

    // Makes and starts the cluster; false, with the reason in Error(), when
    // PostgreSQL is not installed or will not start. `durable` keeps fsync
    // on, as a real server has it; tests leave it off for speed.
    bool Start(bool durable = false);
    // Stops the server at once (as a crash or a shutdown would for clients),
    // and starts it again on the same data.
    bool Stop();
    bool Restart();
    QString Error() const { return error; }

    // Where clients connect: the socket folder stands as the host.
    QString Host() const { return socketFolder; }
    int Port() const { return 5432; }
    // "postgresql://USER@/DATABASE?host=FOLDER", as tesk-scan takes it.
    QString Url(const QString& user, const QString& database) const;

    // Runs SQL as the cluster's superuser; its output (unaligned, tuples only)
    // in `output`. False, with psql's message in Error(), when it fails.
    bool Sql(const QString& sql, const QString& database = QStringLiteral("postgres"),
             QString* output = nullptr);
    // Makes a login role with `password`, and a database it owns when
    // `database` is given.
    bool AddUser(const QString& user, const QString& password, const QString& database = {});
    // A libpq password file (0600) with a line "*:*:*:USER:PASSWORD" each.
    QString WritePasswordFile(const QString& name, const QStringList& userPasswordPairs);

private:
    bool run(const QString& program, const QStringList& arguments, bool asServerUser,
             QString* output = nullptr);

    QTemporaryDir dir;
    QString binaries;
    QString dataFolder;
    QString socketFolder;
    QString serverOptions;
    QString error;
    bool running = false;
};

} // namespace fixtures
