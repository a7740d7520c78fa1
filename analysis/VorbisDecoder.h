#pragma once

#include <QByteArray>

#include <cstdint>

class QString;
struct stb_vorbis;

// The three bit-rate fields of the Vorbis identification header, in header
// order, as the signed 32-bit values the file holds.
struct VorbisHeaderBitRates
{
    std::int32_t maximum = 0;
    std::int32_t nominal = 0;
    std::int32_t minimum = 0;
};

// Reads the identification header from the first Ogg page of a file.
bool ReadVorbisHeaderBitRates(const char* localPath, VorbisHeaderBitRates& out);

// kbps values for the record: unsigned 32-bit divisions, so -1 ("unset")
// shows as 4294967; a maximum of 0 means only the nominal rate is known.
void VorbisKbps(const VorbisHeaderBitRates& rates, std::int32_t& minKbps, std::int32_t& maxKbps);

// Whole-file Ogg Vorbis decoding to float through stb_vorbis.
class VorbisDecoder final
{
public:
    VorbisDecoder() = default;
    ~VorbisDecoder();
    VorbisDecoder(const VorbisDecoder&) = delete;
    VorbisDecoder& operator=(const VorbisDecoder&) = delete;

    // False when the file cannot be opened or is not Ogg Vorbis.
    bool Open(const char* localPath);

    std::int32_t SamplingRate() const { return samplingRate; }
    std::int32_t Channels() const { return channels; }
    // Stream length in sample frames.
    std::int64_t Samples() const { return samples; }

    // Decodes up to `frames` frames into one array per channel.
    std::int64_t ReadPlanar(float* const* out, std::int64_t frames);
    // Decodes up to `frames` interleaved frames.
    std::int64_t ReadInterleaved(float* out, std::int64_t frames);

private:
    stb_vorbis* vorbis = nullptr;
    std::int32_t samplingRate = 0;
    std::int32_t channels = 0;
    std::int64_t samples = 0;
};

// The whole file as interleaved float32 (frames x channels x 4 bytes); empty
// when the file cannot be opened.
QByteArray DecodeVorbisToPcm(const QString& path, std::int32_t& samplingRate,
                             std::int32_t& channels);
