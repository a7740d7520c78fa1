#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// What a file says about itself beyond its audio format: the descriptive
// texts of BWF 'bext', iXML, RIFF INFO, AIFF text chunks, ID3 and Vorbis
// comments, the 'acid' loop facts and the cue labels. Immutable once read and
// shared between copies of the record, so a record without any costs one
// null pointer.

// One key per field; several containers feed the same key (INFO INAM, AIFF
// NAME, ID3 title and Vorbis TITLE are all Title). The order is the order of
// the JSON keys and of the lines of a tooltip.
enum class MetadataKey : std::uint8_t
{
    Description,         // bext Description, Vorbis/ID3 DESCRIPTION
    Title,               // INFO INAM, AIFF NAME, ID3 title, Vorbis TITLE
    Artist,              // INFO IART, AIFF AUTH, ID3 artist, Vorbis ARTIST
    Album,               // ID3 album, Vorbis ALBUM
    Comment,             // INFO ICMT, AIFF ANNO, ID3 comment, Vorbis COMMENT
    Date,                // INFO ICRD, ID3 year/date, Vorbis DATE
    Genre,               // INFO IGNR, ID3 genre, Vorbis GENRE
    Copyright,           // INFO ICOP, AIFF "(c) ", Vorbis COPYRIGHT
    Software,            // INFO ISFT
    Keywords,            // INFO IKEY
    Bpm,                 // ID3 TBPM, Vorbis BPM
    MusicalKey,          // ID3 TKEY, Vorbis INITIALKEY
    Originator,          // bext
    OriginatorReference, // bext
    OriginationDate,     // bext, yyyy-mm-dd
    OriginationTime,     // bext, hh:mm:ss
    Project,             // iXML PROJECT
    Scene,               // iXML SCENE
    Take,                // iXML TAKE
    Tape,                // iXML TAPE
    Note,                // iXML NOTE
    TimecodeRate,        // iXML SPEED/TIMECODE_RATE, such as "25/1"
    TimecodeFlag,        // iXML SPEED/TIMECODE_FLAG: "DF" or "NDF"
    UserDescription,     // iXML USER/DESCRIPTION
    UserCategory,        // iXML USER/CATEGORY
    UserSubCategory,     // iXML USER/SUBCATEGORY
    UserCatId,           // iXML USER/CATID
    UserFxName,          // iXML USER/FXNAME
    UserCreator,         // iXML USER/DESIGNER
    UserSource,          // iXML USER/LIBRARY
    UserKeywords,        // iXML USER/KEYWORDS
    UserText,            // iXML USER as free text, and its other fields as "NAME: value" lines
    CueLabels,           // 'labl' texts, one per line
    CueNotes,            // 'note' texts, one per line
    Count
};

inline constexpr std::size_t kMetadataKeyCount = static_cast<std::size_t>(MetadataKey::Count);

// Longest text kept per field; longer ones are cut at a character boundary.
inline constexpr std::size_t kMaxMetadataTextBytes = 4096;

// The 'acid' chunk of loop-based music tools.
struct AcidInfo
{
    std::uint32_t flags = 0;    // bit 0 one-shot, bit 1 root note set
    std::uint16_t rootNote = 0; // MIDI note number
    std::uint32_t beats = 0;
    std::uint16_t meterNumerator = 0;
    std::uint16_t meterDenominator = 0;
    float tempo = 0.0f; // beats per minute

    bool isOneShot() const { return (flags & 1u) != 0; }
    bool hasRootNote() const { return (flags & 2u) != 0; }
};

// Compact: the texts sit end to end in one string, indexed by 8-byte places,
// so a record with thirty fields costs little more than their text.
class FileMetadata final
{
public:
    struct Entry
    {
        MetadataKey key;
        std::string_view text; // UTF-8, trimmed, never empty; valid while the record is
    };

    // The field's text; empty when the file has none.
    std::string_view text(MetadataKey key) const;
    // Replaces the field; an empty text removes it. Cut to kMaxMetadataTextBytes.
    void setText(MetadataKey key, std::string_view text);
    // Sets the field unless it already holds a text.
    void setTextIfEmpty(MetadataKey key, std::string_view text);
    // Adds a line to the field (cue labels, several AIFF annotations).
    void appendLine(MetadataKey key, std::string_view line);

    // Fields in key order.
    std::size_t size() const { return places.size(); }
    Entry entry(std::size_t index) const;
    std::vector<Entry> entries() const;

    // Gives back the room that building the record left over.
    void shrink();

    bool hasTimeReference = false;
    // bext TimeReference: samples since midnight at the file's rate.
    std::uint64_t timeReference = 0;
    bool hasAcid = false;
    AcidInfo acid;

    bool isEmpty() const { return places.empty() && !hasTimeReference && !hasAcid; }

private:
    struct Place
    {
        std::uint32_t offset;
        std::uint16_t size;
        MetadataKey key;
    };
    std::vector<Place>::iterator find(MetadataKey key);

    std::string blob;
    std::vector<Place> places; // sorted by key
};

// The record's shared form: null when the file carries nothing.
using FileMetadataPtr = std::shared_ptr<const FileMetadata>;

// Null for an empty record, so that files without metadata stay small.
FileMetadataPtr ShareMetadata(FileMetadata&& metadata);

// The field's name in tesk-scan's JSON ("description", "originatorReference").
const char* MetadataKeyName(MetadataKey key);

// Keeps at most `maxBytes` of UTF-8 text without splitting a character.
void CutUtf8(std::string& text, std::size_t maxBytes);

// The record as the analysis library stores it (empty for none), and back;
// damaged bytes give what could be read before the damage, never garbage.
std::string StoredMetadataBytes(const FileMetadata* metadata);
FileMetadataPtr MetadataFromStoredBytes(std::string_view bytes);
