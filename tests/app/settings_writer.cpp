// Saves settings into the INI file named on the command line, over and over,
// each generation's values all derived from its number, until it is killed.
// Prints "saved" once the first generation is on disk.
#include "SettingsStore.h"

#include <QCoreApplication>
#include <QSettings>

#include <cstdio>

StoredSettings Generation(int g)
{
    StoredSettings s;
    s.rootPath = QStringLiteral("/gen/%1/").arg(g) + QString(g % 997, QLatin1Char('p'));
    s.rowHeight = kMinRowHeight + g % 100;
    s.seekTimeMs = kMinSeekTimeMs + g;
    s.fontTreeSize = s.fontTableSize = 11;
    for (int i = 0; i < g % 50 + 1; ++i)
        s.bookmarks.append({QStringLiteral("/gen/%1/%2").arg(g).arg(i), QString::number(i)});
    return s;
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 3)
        return 2;
    const int first = QByteArray(argv[2]).toInt();
    for (int g = first;; ++g) {
        QSettings store(QString::fromLocal8Bit(argv[1]), QSettings::IniFormat);
        SettingsStore::Save(store, Generation(g));
        if (store.status() != QSettings::NoError)
            return 3;
        if (g == first && std::puts("saved") >= 0)
            std::fflush(stdout);
    }
}
