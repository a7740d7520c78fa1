#pragma once

#include "FlacLayout.h"
#include "IntegerFrameSource.h"

#include <memory>
#include <vector>

class WaveByteSource;

// FLAC through libFLAC. Our own walk of the block headers comes first
// (FlacLayout.h): it checks STREAMINFO, takes the length from the last frame
// rather than from STREAMINFO's total, and hides from the decoder any block it
// would otherwise load whole. The decoder reports no metadata.
//
// Frames are placed by the sample numbers in their headers, so a frame lost to
// damage leaves silence of its length and the rest stays in place; a frame
// whose checksum fails is silence. A stream that ends more than one block
// before its last frame header said sets errorText() and stops.
class FlacSoundSource final : public IntegerFrameSource
{
public:
    FlacSoundSource();
    ~FlacSoundSource() override;

    bool open(const char* localPath) override;
    // Reads from the caller's buffer, which must outlive the source.
    bool openMemory(const void* data, std::size_t size);
    std::int64_t read(float* interleaved, std::int64_t frames) override;
    std::int64_t readLeftJustified(std::int32_t* interleaved, std::int64_t frames) override;
    bool seek(std::int64_t frame) override;
    void close() override;

    std::int32_t bitsPerSample() const { return std::int32_t(m_layout.info.bitsPerSample); }

private:
    struct Glue;    // libFLAC's callbacks
    struct Decoder; // owns libFLAC's decoder (an unnamed struct, so not declared here)

    bool openBytes(std::unique_ptr<WaveByteSource> bytes);
    bool fail(const char* reason);
    // Decodes until something waits to be handed out; false at the end.
    bool refill();
    void dropPending();
    bool restart();
    bool skipTo(std::int64_t frame);
    template<typename Out, typename Convert>
    std::int64_t take(Out* interleaved, std::int64_t frames, Convert convert);

    std::unique_ptr<WaveByteSource> m_bytes;
    FlacLayout m_layout;
    std::unique_ptr<Decoder> m_decoder;
    std::int64_t m_bytePosition = 0;
    // What waits to be handed out, starting at frame m_next: m_gap frames of
    // silence, then the rest of the last decoded block (left-justified).
    std::int64_t m_next = 0;
    std::int64_t m_gap = 0;
    std::vector<std::int32_t> m_block;
    std::int64_t m_blockFrames = 0;
    std::int64_t m_blockUsed = 0;
    bool m_ended = false;
    bool m_badFrame = false;   // the decoder reported a checksum error
    bool m_seekBroken = false; // libFLAC's seek failed once: decode onwards instead
};
