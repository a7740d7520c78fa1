#include "PostgresCluster.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <pwd.h>
#include <unistd.h>

namespace fixtures {

namespace {

const QString kAdmin = QStringLiteral("tesk_admin");
const QString kAdminPassword = QStringLiteral("admin-secret");

// The newest installed server's programs (Debian keeps them per version).
QString FindBinaries()
{
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    QStringList names = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(names.begin(), names.end(),
              [](const QString& a, const QString& b) { return a.toInt() > b.toInt(); });
    for (const QString& name : names) {
        const QString bin = versions.filePath(name + QStringLiteral("/bin"));
        if (QFile::exists(bin + QStringLiteral("/initdb")) &&
            QFile::exists(bin + QStringLiteral("/pg_ctl")))
            return bin;
    }
    return {};
}

} // namespace

PostgresCluster::PostgresCluster()
    : dir(QDir::tempPath() + QStringLiteral("/tesk-pg-XXXXXX"))
{}

PostgresCluster::~PostgresCluster()
{
    if (running)
        run(binaries + QStringLiteral("/pg_ctl"),
            {QStringLiteral("-D"), dataFolder, QStringLiteral("-m"), QStringLiteral("immediate"),
             QStringLiteral("-w"), QStringLiteral("stop")},
            true);
}

bool PostgresCluster::run(const QString& program, const QStringList& arguments, bool asServerUser,
                          QString* output)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PGPASSWORD"), kAdminPassword);
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    env.remove(QStringLiteral("PGPASSFILE"));
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (asServerUser && ::geteuid() == 0)
        process.start(QStringLiteral("runuser"),
                      QStringList{QStringLiteral("-u"), QStringLiteral("postgres"),
                                  QStringLiteral("--"), program} +
                          arguments);
    else
        process.start(program, arguments);
    if (!process.waitForFinished(120000)) {
        error = QStringLiteral("%1 did not finish: %2").arg(program, process.errorString());
        process.kill();
        process.waitForFinished();
        return false;
    }
    const QString text = QString::fromLocal8Bit(process.readAll());
    if (output)
        *output = text.trimmed();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        error = QStringLiteral("%1 failed: %2").arg(QFileInfo(program).fileName(), text.trimmed());
        return false;
    }
    return true;
}

bool PostgresCluster::Start(bool durable)
{
    binaries = FindBinaries();
    if (binaries.isEmpty()) {
        error = QStringLiteral("no PostgreSQL server is installed (Debian package postgresql)");
        return false;
    }
    if (!dir.isValid()) {
        error = QStringLiteral("cannot make a temporary folder");
        return false;
    }
    if (::geteuid() == 0) {
        // The server refuses to run as root; its folder must be its own.
        const passwd* user = ::getpwnam("postgres");
        if (!user) {
            error = QStringLiteral("there is no \"postgres\" user to run the server as");
            return false;
        }
        if (::chown(QFile::encodeName(dir.path()).constData(), user->pw_uid, user->pw_gid) != 0) {
            error = QStringLiteral("cannot give %1 to the postgres user").arg(dir.path());
            return false;
        }
    }
    socketFolder = dir.path();
    dataFolder = dir.filePath(QStringLiteral("data"));
    const QString passwordFile = dir.filePath(QStringLiteral("admin-password"));
    {
        QFile file(passwordFile);
        if (!file.open(QIODevice::WriteOnly) || file.write(kAdminPassword.toUtf8()) < 0) {
            error = QStringLiteral("cannot write %1").arg(passwordFile);
            return false;
        }
    }
    QFile::setPermissions(passwordFile, QFile::ReadOwner | QFile::ReadOther | QFile::WriteOwner);
    if (!run(binaries + QStringLiteral("/initdb"),
             {QStringLiteral("-D"), dataFolder, QStringLiteral("-U"), kAdmin,
              QStringLiteral("--pwfile=") + passwordFile, QStringLiteral("--auth=scram-sha-256"),
              QStringLiteral("-E"), QStringLiteral("UTF8"), QStringLiteral("--locale=C.UTF-8"),
              QStringLiteral("--no-sync")},
             true))
        return false;
    QFile::remove(passwordFile);
    // Only the socket: nothing listens on the network.
    serverOptions = QStringLiteral("-k %1 -c listen_addresses='' -p %2 -c lc_messages=C")
                        .arg(socketFolder)
                        .arg(Port());
    if (!durable)
        serverOptions += QStringLiteral(" -c fsync=off -c synchronous_commit=off"
                                        " -c full_page_writes=off");
    return Restart();
}

bool PostgresCluster::Stop()
{
    if (!run(binaries + QStringLiteral("/pg_ctl"),
             {QStringLiteral("-D"), dataFolder, QStringLiteral("-m"), QStringLiteral("fast"),
              QStringLiteral("-w"), QStringLiteral("stop")},
             true))
        return false;
    running = false;
    return true;
}

bool PostgresCluster::Restart()
{
    if (!run(binaries + QStringLiteral("/pg_ctl"),
             {QStringLiteral("-D"), dataFolder, QStringLiteral("-o"), serverOptions,
              QStringLiteral("-l"), dir.filePath(QStringLiteral("server.log")),
              QStringLiteral("-w"), QStringLiteral("-t"), QStringLiteral("60"),
              QStringLiteral("start")},
             true))
        return false;
    running = true;
    return true;
}

QString PostgresCluster::Url(const QString& user, const QString& database) const
{
    return QStringLiteral("postgresql://%1@/%2?host=%3").arg(user, database, socketFolder);
}

bool PostgresCluster::Sql(const QString& sql, const QString& database, QString* output)
{
    return run(QStringLiteral("psql"),
               {QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-A"),
                QStringLiteral("-t"), QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"),
                QStringLiteral("-h"), socketFolder, QStringLiteral("-p"), QString::number(Port()),
                QStringLiteral("-U"), kAdmin, QStringLiteral("-d"), database, QStringLiteral("-c"),
                sql},
               false, output);
}

bool PostgresCluster::AddUser(const QString& user, const QString& password, const QString& database)
{
    // Names and passwords come from the tests themselves: plain words.
    if (!Sql(QStringLiteral("CREATE ROLE %1 LOGIN PASSWORD '%2'").arg(user, password)))
        return false;
    return database.isEmpty() ||
           Sql(QStringLiteral("CREATE DATABASE %1 OWNER %2").arg(database, user));
}

QString PostgresCluster::WritePasswordFile(const QString& name, const QStringList& pairs)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    for (int i = 0; i + 1 < pairs.size(); i += 2)
        file.write(QStringLiteral("*:*:*:%1:%2\n").arg(pairs.at(i), pairs.at(i + 1)).toUtf8());
    file.close();
    // libpq ignores a password file that others may read.
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    return path;
}

} // namespace fixtures
