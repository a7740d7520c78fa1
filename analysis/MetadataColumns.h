#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <string_view>

class FileMetadata;
struct UcsName;

// How the metadata columns of the file table (Description .. Source, see
// CellFormat.h) show a record's metadata and the UCS blocks of its name.
// Each column gathers a group of fields: the cell shows the first one present
// on one line, the tooltip every one in full. Shared by the table model and
// tesk-scan. Texts are translated in the "krokTableModel" context.

// The eleven headers, Description to Source.
QStringList MetadataColumnHeaderLabels();

bool IsMetadataColumn(int column);
// CatID, Category, FX Name, Creator, Source: filled from the file name even
// before the file is analysed.
bool IsUcsColumn(int column);

// One field of a column's group, as the tooltip lists it.
struct MetadataItem
{
    QString label;
    QString text;
    bool inCell = true; // false: in the tooltip only
};

// The group's fields that are present, in order, repeated texts left out.
// `metadata` is null for a file without any and for a row not analysed yet;
// `samplingRate` is the file's, for the time reference.
QVector<MetadataItem> MetadataItems(int column, const FileMetadata* metadata,
                                    std::int32_t samplingRate, const UcsName& ucs);

// The cell: its first field on one line (display), or for sorting the same
// text case-folded (the Tempo/Key column: the tempo as a number). Invalid
// when the group is empty.
QVariant MetadataCellValue(int column, const FileMetadata* metadata, std::int32_t samplingRate,
                           const UcsName& ucs, bool forSorting);
// The tooltip: the one field's full text, or "label: text" lines; empty when
// the group is.
QString MetadataToolTip(int column, const FileMetadata* metadata, std::int32_t samplingRate,
                        const UcsName& ucs);

// Whether any text of the metadata or the UCS category names contains
// `needle`, letter case aside. `metadata` may be null.
bool MetadataContains(const FileMetadata* metadata, const UcsName& ucs, const QString& needle);

// The bext TimeReference (samples since midnight at `samplingRate`) as
// hh:mm:ss:ff at the iXML timecode rate ("25/1", "30000/1001"; drop-frame
// counted and shown with ';' when `flag` is "DF"), or as hh:mm:ss.mmm without
// a rate. Empty without a sampling rate.
QString FormatTimecode(std::uint64_t samples, std::int32_t samplingRate, std::string_view rate,
                       std::string_view flag);
// "C4" for MIDI note 60.
QString MidiNoteName(int note);
// "120 BPM", "92.5 BPM".
QString FormatTempo(double bpm);
