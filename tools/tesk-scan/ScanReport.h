#pragma once

#include <QByteArray>
#include <QString>

struct AudioFileInfo;

// One scanned file as a CSV row or a JSON object, formatted as the file table
// formats its cells.
class ScanReport final
{
public:
    // The 15 column headers of the file table.
    static QString CsvHeader();
    // File, Full Path and the record columns; Plots and the two sort-order
    // columns stay empty.
    static QString CsvRow(const QString& path, const AudioFileInfo& info, bool loudnessVoltMode);
    // RFC 4180 quoting: fields with a comma, quote or line break are quoted.
    static QString CsvField(const QString& text);

    // "path" and every record field under its own name; plots as integers,
    // max and min interleaved, one array per channel for the multi-channel plot.
    static QByteArray JsonObject(const QString& path, const AudioFileInfo& info);
};
