#include "FileMetadata.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char* kKeyNames[kMetadataKeyCount] = {
    "description",
    "title",
    "artist",
    "album",
    "comment",
    "date",
    "genre",
    "copyright",
    "software",
    "keywords",
    "bpm",
    "musicalKey",
    "originator",
    "originatorReference",
    "originationDate",
    "originationTime",
    "project",
    "scene",
    "take",
    "tape",
    "note",
    "timecodeRate",
    "timecodeFlag",
    "userDescription",
    "userCategory",
    "userSubCategory",
    "userCatId",
    "userFxName",
    "userCreator",
    "userSource",
    "userKeywords",
    "userText",
    "cueLabels",
    "cueNotes",
};

} // namespace

std::vector<FileMetadata::Place>::iterator FileMetadata::find(MetadataKey key)
{
    return std::lower_bound(places.begin(), places.end(), key,
                            [](const Place& place, MetadataKey k) { return place.key < k; });
}

std::string_view FileMetadata::text(MetadataKey key) const
{
    const auto it =
        std::lower_bound(places.begin(), places.end(), key,
                         [](const Place& place, MetadataKey k) { return place.key < k; });
    if (it == places.end() || it->key != key)
        return {};
    return std::string_view(blob).substr(it->offset, it->size);
}

void FileMetadata::setText(MetadataKey key, std::string_view text)
{
    std::string value(text.substr(0, std::min(text.size(), kMaxMetadataTextBytes + 4)));
    CutUtf8(value, kMaxMetadataTextBytes);
    auto it = find(key);
    if (it != places.end() && it->key == key) {
        // Take the old text out and move the later ones down.
        const std::uint32_t offset = it->offset;
        const std::uint16_t removed = it->size;
        blob.erase(offset, removed);
        for (Place& place : places) {
            if (place.offset > offset)
                place.offset -= removed;
        }
        it = places.erase(it);
    }
    if (value.empty())
        return;
    const Place place{static_cast<std::uint32_t>(blob.size()),
                      static_cast<std::uint16_t>(value.size()), key};
    blob += value;
    places.insert(it, place);
}

void FileMetadata::setTextIfEmpty(MetadataKey key, std::string_view text)
{
    if (this->text(key).empty())
        setText(key, text);
}

void FileMetadata::appendLine(MetadataKey key, std::string_view line)
{
    if (line.empty())
        return;
    const std::string_view current = text(key);
    if (current.empty()) {
        setText(key, line);
        return;
    }
    if (current.size() >= kMaxMetadataTextBytes)
        return;
    std::string joined;
    joined.reserve(current.size() + 1 + line.size());
    joined.append(current).append(1, '\n').append(line);
    setText(key, joined);
}

FileMetadata::Entry FileMetadata::entry(std::size_t index) const
{
    const Place& place = places[index];
    return {place.key, std::string_view(blob).substr(place.offset, place.size)};
}

std::vector<FileMetadata::Entry> FileMetadata::entries() const
{
    std::vector<Entry> all;
    all.reserve(places.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        all.push_back(entry(i));
    return all;
}

void FileMetadata::shrink()
{
    blob.shrink_to_fit();
    places.shrink_to_fit();
}

FileMetadataPtr ShareMetadata(FileMetadata&& metadata)
{
    if (metadata.isEmpty())
        return nullptr;
    metadata.shrink();
    return std::make_shared<const FileMetadata>(std::move(metadata));
}

const char* MetadataKeyName(MetadataKey key)
{
    const auto index = static_cast<std::size_t>(key);
    return index < kMetadataKeyCount ? kKeyNames[index] : "";
}

void CutUtf8(std::string& text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return;
    std::size_t end = maxBytes;
    // Step back over continuation bytes to the start of the cut character.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    text.resize(end);
}

namespace {

constexpr char kStoredFormat = 1;

template<typename T>
void PutLittle(std::string& out, T value)
{
    for (std::size_t i = 0; i < sizeof(T); ++i)
        out.push_back(static_cast<char>((static_cast<std::uint64_t>(value) >> (8 * i)) & 0xFF));
}

template<typename T>
bool TakeLittle(std::string_view& in, T& value)
{
    if (in.size() < sizeof(T))
        return false;
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        v |= std::uint64_t(static_cast<unsigned char>(in[i])) << (8 * i);
    value = static_cast<T>(v);
    in.remove_prefix(sizeof(T));
    return true;
}

} // namespace

std::string StoredMetadataBytes(const FileMetadata* metadata)
{
    if (!metadata || metadata->isEmpty())
        return {};
    std::string out(1, kStoredFormat);
    PutLittle<std::uint8_t>(out, metadata->size());
    for (const FileMetadata::Entry& e : metadata->entries()) {
        PutLittle<std::uint8_t>(out, static_cast<std::uint8_t>(e.key));
        PutLittle<std::uint16_t>(out, static_cast<std::uint16_t>(e.text.size()));
        out.append(e.text);
    }
    PutLittle<std::uint8_t>(out,
                            (metadata->hasTimeReference ? 1 : 0) | (metadata->hasAcid ? 2 : 0));
    if (metadata->hasTimeReference)
        PutLittle<std::uint64_t>(out, metadata->timeReference);
    if (metadata->hasAcid) {
        const AcidInfo& a = metadata->acid;
        std::uint32_t tempoBits = 0;
        std::memcpy(&tempoBits, &a.tempo, sizeof tempoBits);
        PutLittle(out, a.flags);
        PutLittle(out, a.rootNote);
        PutLittle(out, a.beats);
        PutLittle(out, a.meterNumerator);
        PutLittle(out, a.meterDenominator);
        PutLittle(out, tempoBits);
    }
    return out;
}

FileMetadataPtr MetadataFromStoredBytes(std::string_view in)
{
    // A damaged or foreign blob gives what could be read before the damage.
    FileMetadata m;
    std::uint8_t format = 0;
    std::uint8_t count = 0;
    if (!TakeLittle(in, format) || format != kStoredFormat || !TakeLittle(in, count))
        return nullptr;
    for (std::uint8_t i = 0; i < count; ++i) {
        std::uint8_t key = 0;
        std::uint16_t size = 0;
        if (!TakeLittle(in, key) || !TakeLittle(in, size) || in.size() < size ||
            key >= kMetadataKeyCount)
            return ShareMetadata(std::move(m));
        m.setText(static_cast<MetadataKey>(key), in.substr(0, size));
        in.remove_prefix(size);
    }
    std::uint8_t flags = 0;
    if (!TakeLittle(in, flags))
        return ShareMetadata(std::move(m));
    if ((flags & 1) != 0)
        m.hasTimeReference = TakeLittle(in, m.timeReference);
    if ((flags & 2) != 0) {
        AcidInfo a;
        std::uint32_t tempoBits = 0;
        if (TakeLittle(in, a.flags) && TakeLittle(in, a.rootNote) && TakeLittle(in, a.beats) &&
            TakeLittle(in, a.meterNumerator) && TakeLittle(in, a.meterDenominator) &&
            TakeLittle(in, tempoBits)) {
            std::memcpy(&a.tempo, &tempoBits, sizeof tempoBits);
            m.acid = a;
            m.hasAcid = true;
        }
    }
    m.shrink();
    return ShareMetadata(std::move(m));
}
