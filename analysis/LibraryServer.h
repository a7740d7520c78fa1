#pragma once

#include <QCoreApplication>
#include <QString>

#include <optional>

// Where a studio's shared analysis library lives: a PostgreSQL server and
// database, and the user Tesk logs in as. The password is never part of it:
// libpq reads it from PGPASSWORD or the password file (PGPASSFILE, else
// ~/.pgpass). Empty fields are left to libpq's defaults (PGHOST, PGUSER...).
struct LibraryServer
{
    Q_DECLARE_TR_FUNCTIONS(LibraryServer)

public:
    // A host name or address, or the folder of the server's Unix socket.
    QString host;
    int port = 5432;
    QString database;
    QString user;

    // "user@host:port/database", for messages.
    QString Describe() const;

    static bool IsUrl(const QString& text);
    // Reads postgresql://user@host:port/database (a socket folder may be
    // given as ?host=/folder instead of the host). Nothing, with the reason in
    // `error`, for another text or one that holds a password.
    static std::optional<LibraryServer> FromUrl(const QString& url, QString* error = nullptr);
};
