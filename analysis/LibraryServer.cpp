#include "LibraryServer.h"

#include <QUrl>
#include <QUrlQuery>

QString LibraryServer::Describe() const
{
    QString text;
    if (!user.isEmpty())
        text += user + QLatin1Char('@');
    text += host.isEmpty() ? QStringLiteral("localhost") : host;
    text += QLatin1Char(':') + QString::number(port) + QLatin1Char('/') + database;
    return text;
}

bool LibraryServer::IsUrl(const QString& text)
{
    return text.startsWith(QLatin1String("postgresql://")) ||
           text.startsWith(QLatin1String("postgres://"));
}

std::optional<LibraryServer> LibraryServer::FromUrl(const QString& text, QString* error)
{
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return std::nullopt;
    };
    if (!IsUrl(text))
        return fail(tr("\"%1\" is not a postgresql:// URL").arg(text));
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return fail(tr("\"%1\" is not a valid URL (%2)").arg(text, url.errorString()));
    if (!url.password().isEmpty())
        return fail(tr("the URL holds a password; give it in ~/.pgpass (or PGPASSFILE) or "
                       "PGPASSWORD instead"));
    LibraryServer server;
    server.user = url.userName();
    server.host = url.host();
    const QUrlQuery query(url);
    for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded)) {
        if (key == QLatin1String("host") && server.host.isEmpty())
            server.host = value;
        else
            return fail(
                tr("the URL's parameter \"%1\" is not one Tesk knows (only host)").arg(key));
    }
    server.port = url.port(5432);
    server.database = url.path().mid(1);
    if (server.database.isEmpty() || server.database.contains(QLatin1Char('/')))
        return fail(tr("the URL names no database (postgresql://user@host:port/database)"));
    return server;
}
