#pragma once

#include "LibraryServer.h"

#include <QStringList>

// Where analysis results are kept, as Tool > Analysis Library > Settings
// shows it: this computer's library or a studio's shared one on a server,
// and the library roots ("NAME=FOLDER" each).
struct AnalysisLibrarySettings
{
    bool onServer = false;
    LibraryServer server;
    QStringList roots;

    bool operator==(const AnalysisLibrarySettings& o) const
    {
        return onServer == o.onServer && server.host == o.server.host &&
               server.port == o.server.port && server.database == o.server.database &&
               server.user == o.server.user && roots == o.roots;
    }
    bool operator!=(const AnalysisLibrarySettings& o) const { return !(*this == o); }
};
