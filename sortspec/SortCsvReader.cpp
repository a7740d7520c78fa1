#include "SortCsvReader.h"

#include <QFile>
#include <QStringList>
#include <QTextStream>

SortEntryList ReadSortCsv(const QString& csvPath, int pathColumn, int commentColumn,
                          bool ignoreFirstLine)
{
    if (pathColumn < 1 || commentColumn < 1)
        return {};

    QFile file(csvPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};

    // The stream's default codec is the local 8-bit one; a byte-order mark
    // switches it to UTF-8 or UTF-16, which is what spreadsheets export.
    QTextStream stream(&file);
    SortEntryList entries;
    int expectedFields = -1;
    bool firstLine = true;
    while (!stream.atEnd()) {
        const QStringList fields = stream.readLine().split(QLatin1Char(','), Qt::KeepEmptyParts);
        if (expectedFields < 0)
            expectedFields = int(fields.size());
        if (fields.size() != expectedFields || fields.size() < pathColumn ||
            fields.size() < commentColumn)
            return {};
        if (!(firstLine && ignoreFirstLine))
            entries.append({fields.at(pathColumn - 1), fields.at(commentColumn - 1)});
        firstLine = false;
    }
    return entries;
}
