#pragma once

#include <QString>

#include <atomic>
#include <cstdint>

// A region of a file written out as a WAV of its own, for dragging one hit
// out of a long take. WAV, AIFF and CAF sources keep their rate, channels,
// bit depth and sample format (a WAV source its own 'fmt ' chunk, its 'bext'
// with the time reference moved to the region's first frame, and its
// LIST/INFO chunk); MP3 and Ogg Vorbis sources become 24-bit PCM. Reads and
// writes a block at a time. Returns an empty string on success, otherwise
// what went wrong (for the status line).
QString ExportRegion(const QString& source, std::int64_t startFrame, std::int64_t endFrame,
                     const QString& target, const std::atomic<bool>* cancel = nullptr);

// "<name>_<start>-<end>ms.wav" in `folder` (a RegionFolder's).
QString RegionFilePath(const QString& folder, const QString& source, std::int64_t startFrame,
                       std::int64_t endFrame, std::int32_t rate);
