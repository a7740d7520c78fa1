#pragma once

#include <QByteArray>
#include <QString>

struct AudioFileInfo;
class UcsCatalog;

// One scanned file as a CSV row or a JSON object, formatted as the file table
// formats its cells.
class ScanReport final
{
public:
    // The column headers of the file table: the 15 fixed ones, then the
    // metadata columns (Description .. Source).
    static QString CsvHeader();
    // File, Full Path and the record columns; Plots and the two sort-order
    // columns stay empty. Metadata cells on one line as the table shows them;
    // the UCS columns from the file name, checked against `catalog` when given.
    static QString CsvRow(const QString& path, const AudioFileInfo& info, bool loudnessVoltMode,
                          const UcsCatalog* catalog = nullptr);
    // RFC 4180 quoting: fields with a comma, quote or line break are quoted.
    static QString CsvField(const QString& text);

    // "path" and every record field under its own name; plots as integers,
    // max and min interleaved, one array per channel for the multi-channel plot;
    // "metadata" with every text field the file carries under its key
    // (MetadataKeyName), "timeReference" and "timecode", "acid"; "ucs" with the
    // blocks of a UCS file name.
    static QByteArray JsonObject(const QString& path, const AudioFileInfo& info,
                                 const UcsCatalog* catalog = nullptr);
};
