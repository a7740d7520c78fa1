#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>

struct AudioFileInfo;

// How the file table shows an analysed record, kept free of widgets so that
// the table model and tesk-scan print the same texts. Texts the table
// translates go through QCoreApplication::translate in the "krokTableModel"
// context.

enum TableColumn : int
{
    ColumnFile = 0,
    ColumnFullPath,
    ColumnSize,
    ColumnModifyTime,
    ColumnFormat,
    ColumnSamplingRate,
    ColumnChannels,
    ColumnSamples,
    ColumnBits,
    ColumnDuration,
    ColumnPlots,
    ColumnLoudness,
    ColumnLoops,
    ColumnSortSpecification,
    ColumnSortComments,
    // What the files say about themselves (MetadataColumns.h), hidden by default.
    ColumnDescription,
    ColumnTitle,
    ColumnArtist,
    ColumnComment,
    ColumnDate,
    ColumnTempoKey,
    ColumnCatId,
    ColumnCategory,
    ColumnFxName,
    ColumnCreator,
    ColumnSource,
    TableColumnCount
};

// The first column of the metadata group; the columns before it are the 15
// that every table shows by default.
inline constexpr int kFirstMetadataColumn = ColumnDescription;

// The 15 fixed column headers in column order; "BIT" is never translated.
// MetadataColumnHeaderLabels() (MetadataColumns.h) holds the rest.
QStringList TableColumnHeaderLabels();

// "511 byte", "0.50 KB", "1.25 MB", "0.50 GB": each unit from half of it
// upwards.
QString FormatFileSize(std::int64_t size);

// Seconds in single precision, as the table sorts them; 0 without a rate.
float DurationSeconds(std::int32_t samples, std::int32_t samplingRate);
// "%1:%2": minutes, then seconds with three decimals padded to 6 ("3:05.250").
QString FormatDuration(std::int32_t samples, std::int32_t samplingRate);

// The bit depth, or "%1 - %2" when the two fields differ (MP3/Ogg kbps range).
QString FormatBits(std::int32_t first, std::int32_t second);
// The first field as a number when both agree, else the "%1 - %2" text.
QVariant BitsSortValue(std::int32_t first, std::int32_t second);

// A mono file measures 3.0103 dB below the same signal on two channels; the
// volt mode adds that back for mono files only.
float DisplayedLoudness(float loudness, std::int32_t channels, bool voltMode);
// "---" at -96.0 or below (not measured) or for a value that is not finite,
// else two decimals.
QString FormatLoudness(float loudness, std::int32_t channels, bool voltMode);

// The format text, or "ERROR" for a file that could not be opened.
QString FormatText(const AudioFileInfo& info);
// Whether the row shows "ERROR".
bool IsFailedRecord(const AudioFileInfo& info);
// The reason a failed row gives in its tooltip, translated; empty otherwise.
QString ErrorReasonText(const AudioFileInfo& info);

// The display (forSorting false) or sort value (true) of a record column:
// Size, Modify Time, Format, Sampling Rate, Channels, Samples, BIT, Duration,
// Loudness and Loops. Other columns do not come from the record and yield an
// invalid value. A failed record ("ERROR") shows only its size and time.
QVariant RecordCellValue(int column, const AudioFileInfo& info, bool forSorting,
                         bool loudnessVoltMode);
