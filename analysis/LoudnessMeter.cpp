#include "LoudnessMeter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace {

constexpr int kMeterSlots = 7;
constexpr int kInputChannels = 8;
constexpr int kRingSlots = 4;
// The fourth input channel (LFE) is dropped; surrounds weigh 1.41.
constexpr int kChannelMap[kInputChannels] = {0, 1, 2, -1, 3, 4, 5, 6};
constexpr float kSurroundWeight = 1.41f;
constexpr std::size_t kFixedStateBytes = 504;
// Below 8 kHz the K-weighting shelf (near 1.7 kHz) has no room under the
// Nyquist frequency and the filter turns unstable; above 384 kHz the
// single-precision high-pass loses its corner. Such input is not measured.
constexpr std::uint32_t kMinMeterRate = 8000;
constexpr std::uint32_t kMaxMeterRate = 384000;

struct Biquad
{
    float a1, a2, b0, b1, b2;
    float state[kMeterSlots][4]; // x1, x2, y1, y2
};

struct BlockEntry
{
    float power;
    float loudness;
};

struct Meter
{
    std::uint32_t inputChannels;
    std::uint32_t meterChannels;
    float* subBlock[kMeterSlots];
    std::uint32_t subBlockFrames;
    std::uint32_t samplingRate;
    std::uint32_t totalFrames;
    Biquad stage[2];
    float ringSums[kRingSlots][kMeterSlots];
    std::uint32_t ringFrames[kRingSlots];
    std::uint32_t ringIndex;
    std::uint32_t subBlocksSeen;
    BlockEntry* history;
    std::uint32_t blockCapacity;
    std::uint32_t writeIndex;
    std::uint32_t fillCount;
};
static_assert(sizeof(Meter) <= kFixedStateBytes, "the work-size formula leaves 504 bytes");

std::uint64_t subBlockFramesFor(std::uint32_t rate)
{
    return (std::uint64_t(rate) + 9) / 10;
}

std::uint64_t blockCountFor(const LoudnessConfig& config)
{
    const float blocks = static_cast<float>(config.samples) * 1000.0f /
                         static_cast<float>(config.samplingRate) / 100.0f;
    // Beyond this the history simply wraps; keep the work area addressable.
    return static_cast<std::uint64_t>(std::min(blocks, 4.0e9f));
}

void setCoefficients(Meter& m)
{
    Biquad& s1 = m.stage[0];
    Biquad& s2 = m.stage[1];
    if (m.samplingRate == 48000) {
        s1.b0 = 1.5351249f;
        s1.b1 = -2.6916962f;
        s1.b2 = 1.1983929f;
        s1.a1 = -1.6906593f;
        s1.a2 = 0.7324808f;
        s2.b0 = 1.0f;
        s2.b1 = -2.0f;
        s2.b2 = 1.0f;
        s2.a1 = -1.9900475f;
        s2.a2 = 0.9900723f;
        return;
    }
    const float fs = static_cast<float>(m.samplingRate);
    {
        const float k = std::tan(5284.0786f / fs);
        const float vh = 1.5848647f;
        const float vb = 1.2587209f;
        const float q = 0.70717525f;
        const float a0 = 1.0f + k / q + k * k;
        s1.b0 = (k * k + vb * k / q + vh) / a0;
        s1.b1 = 2.0f * (k * k - vh) / a0;
        s1.b2 = (k * k - vb * k / q + vh) / a0;
        s1.a1 = 2.0f * (k * k - 1.0f) / a0;
        s1.a2 = (k * k - k / q + 1.0f) / a0;
    }
    {
        const float k = std::tan(119.80612f / fs);
        const float q = 0.50032705f;
        const float a0 = 1.0f + k / q + k * k;
        s2.a1 = 2.0f * (k * k - 1.0f) / a0;
        s2.a2 = (k * k - k / q + 1.0f) / a0;
        // The high-pass numerator stays unnormalised, as in the reference filter.
        s2.b0 = 1.0f;
        s2.b1 = -2.0f;
        s2.b2 = 1.0f;
    }
}

// Both K-weighting stages of one channel, the state in registers.
struct KWeighting
{
    float x1, x2, y1, y2, z1, z2;

    void load(const Meter& m, int slot)
    {
        const float* ps = m.stage[0].state[slot];
        const float* rs = m.stage[1].state[slot];
        x1 = ps[0], x2 = ps[1], y1 = ps[2], y2 = ps[3];
        z1 = rs[2], z2 = rs[3];
    }
    // The second stage's past inputs are the first stage's past outputs.
    float step(const Biquad& p, const Biquad& r, float x)
    {
        const float y = p.b0 * x + p.b1 * x1 + p.b2 * x2 - p.a1 * y1 - p.a2 * y2;
        const float z = r.b0 * y + r.b1 * y1 + r.b2 * y2 - r.a1 * z1 - r.a2 * z2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        z2 = z1;
        z1 = z;
        return z;
    }
    void store(Meter& m, int slot) const
    {
        float* ps = m.stage[0].state[slot];
        float* rs = m.stage[1].state[slot];
        ps[0] = x1, ps[1] = x2, ps[2] = y1, ps[3] = y2;
        rs[0] = y1, rs[1] = y2, rs[2] = z1, rs[3] = z2;
    }
};

// N channels' sub-blocks through the filter side by side: each channel is a
// chain of dependent steps, so two chains in one loop keep the core twice as
// busy (every channel's arithmetic is the same as alone).
template<int N>
void filterChannels(Meter& m, const std::uint32_t* slots, const float* const* in, float* const* out,
                    std::uint32_t n)
{
    const Biquad& p = m.stage[0];
    const Biquad& r = m.stage[1];
    KWeighting f[N];
    for (int c = 0; c < N; ++c)
        f[c].load(m, int(slots[c]));
    for (std::uint32_t i = 0; i < n; ++i) {
        for (int c = 0; c < N; ++c)
            out[c][i] = f[c].step(p, r, in[c][i]);
    }
    for (int c = 0; c < N; ++c)
        f[c].store(m, int(slots[c]));
}

using Float4 = float __attribute__((vector_size(16)));

float sumOfSquares(const float* data, std::uint32_t n)
{
    Float4 acc0 = {0, 0, 0, 0};
    Float4 acc1 = {0, 0, 0, 0};
    std::uint32_t i = 0;
    for (; i + 8 <= n; i += 8) {
        Float4 a, b;
        std::memcpy(&a, data + i, sizeof a);
        std::memcpy(&b, data + i + 4, sizeof b);
        acc0 += a * a;
        acc1 += b * b;
    }
    const Float4 acc = acc0 + acc1;
    float sum = (acc[0] + acc[1]) + (acc[2] + acc[3]);
    for (; i < n; ++i)
        sum += data[i] * data[i];
    return sum;
}

float blockLoudness(double power)
{
    if (!(power > 0.0))
        return kLoudnessFloor;
    return std::max(static_cast<float>(10.0 * std::log10(power) - 0.691), kLoudnessFloor);
}

void processSubBlock(Meter& m, const float* const* inputs, std::uint32_t offset,
                     std::uint32_t frames)
{
    float* sums = m.ringSums[m.ringIndex];
    std::uint32_t slot = 0;
    for (; slot + 2 <= m.meterChannels; slot += 2) {
        const std::uint32_t slots[2] = {slot, slot + 1};
        const float* in[2] = {inputs[slot] + offset, inputs[slot + 1] + offset};
        float* out[2] = {m.subBlock[slot], m.subBlock[slot + 1]};
        filterChannels<2>(m, slots, in, out, frames);
    }
    if (slot < m.meterChannels) {
        const float* in = inputs[slot] + offset;
        float* out = m.subBlock[slot];
        filterChannels<1>(m, &slot, &in, &out, frames);
    }
    for (slot = 0; slot < m.meterChannels; ++slot) {
        float* buffer = m.subBlock[slot];
        if (frames < m.subBlockFrames)
            std::fill(buffer + frames, buffer + m.subBlockFrames, 0.0f);
        sums[slot] = sumOfSquares(buffer, frames);
    }
    m.ringFrames[m.ringIndex] = frames;
    ++m.subBlocksSeen;

    const std::uint32_t n = std::min<std::uint32_t>(m.subBlocksSeen, kRingSlots);
    double frameCount = 0.0;
    double mean[kMeterSlots] = {};
    for (std::uint32_t k = 0; k < n; ++k) {
        const std::uint32_t at = (m.ringIndex + kRingSlots - k) % kRingSlots;
        frameCount += m.ringFrames[at];
        for (std::uint32_t slot = 0; slot < m.meterChannels; ++slot)
            mean[slot] += m.ringSums[at][slot];
    }
    double power = 0.0;
    if (frameCount > 0.0) {
        power = (mean[0] + mean[1] + mean[2]) / frameCount +
                kSurroundWeight * ((mean[3] + mean[4] + mean[5] + mean[6]) / frameCount);
    }
    m.history[m.writeIndex] = {static_cast<float>(power), blockLoudness(power)};
    m.writeIndex = m.writeIndex + 1 == m.blockCapacity ? 0 : m.writeIndex + 1;
    m.fillCount = std::min(m.fillCount + 1, m.blockCapacity);

    m.ringIndex = (m.ringIndex + 1) % kRingSlots;
    std::fill(m.ringSums[m.ringIndex], m.ringSums[m.ringIndex] + kMeterSlots, 0.0f);
    m.ringFrames[m.ringIndex] = 0;
}

float gatedLoudness(const Meter& m, float threshold)
{
    double sum = 0.0;
    std::uint64_t count = 0;
    for (std::uint32_t i = 0; i < m.fillCount; ++i) {
        if (m.history[i].loudness >= threshold) {
            sum += m.history[i].power;
            ++count;
        }
    }
    if (count == 0)
        return kLoudnessFloor;
    return blockLoudness(sum / static_cast<double>(count));
}

} // namespace

std::size_t GetLoudnessWorkSize(const LoudnessConfig& config)
{
    if (config.samplingRate == 0)
        return 0;
    return static_cast<std::size_t>(28 * subBlockFramesFor(config.samplingRate) +
                                    8 * (blockCountFor(config) + 64));
}

namespace {

// Lays the meter out in a zeroed work area; nullptr when the area is too small
// or the input cannot be measured.
Meter* initMeter(const LoudnessConfig& config, void* work, std::size_t workSize)
{
    if (config.samples == 0 || config.samplingRate < kMinMeterRate ||
        config.samplingRate > kMaxMeterRate || config.channels == 0 || !work ||
        reinterpret_cast<std::uintptr_t>(work) % alignof(Meter) != 0)
        return nullptr;
    const std::uint64_t s = subBlockFramesFor(config.samplingRate);
    const std::uint64_t b = blockCountFor(config);
    if (workSize < 28 * s + 8 * b + 512)
        return nullptr;

    std::memset(work, 0, static_cast<std::size_t>(28 * s + 8 * b + 512));
    auto* bytes = static_cast<unsigned char*>(work);
    auto* m = new (work) Meter{};
    m->inputChannels = std::min<std::uint32_t>(config.channels, kInputChannels);
    m->meterChannels = m->inputChannels >= 4 ? m->inputChannels - 1 : m->inputChannels;
    m->subBlockFrames = static_cast<std::uint32_t>(s);
    m->samplingRate = config.samplingRate;
    m->totalFrames = config.samples;
    auto* buffers = reinterpret_cast<float*>(bytes + kFixedStateBytes);
    for (int slot = 0; slot < kMeterSlots; ++slot)
        m->subBlock[slot] = buffers + slot * s;
    m->history = reinterpret_cast<BlockEntry*>(bytes + kFixedStateBytes + 28 * s);
    m->blockCapacity = static_cast<std::uint32_t>(b + 1);
    setCoefficients(*m);
    return m;
}

LoudnessResult gatedResult(const Meter& m)
{
    LoudnessResult result;
    result.valid = 1;
    const float absolute = gatedLoudness(m, -70.0f);
    if (absolute >= -70.0f) {
        const float relative = absolute - 10.0f > -70.0f ? absolute - 10.0f : -70.0f;
        result.value = gatedLoudness(m, relative);
    } else {
        result.value = absolute;
    }
    // A value the meter cannot stand behind is no value.
    if (!std::isfinite(result.value))
        return {};
    return result;
}

} // namespace

LoudnessResult MeasureLoudness(const LoudnessConfig& config, void* work, std::size_t workSize,
                               const float* const* channels)
{
    Meter* m = channels ? initMeter(config, work, workSize) : nullptr;
    if (!m)
        return {};
    const float* inputs[kMeterSlots] = {};
    for (std::uint32_t ch = 0; ch < m->inputChannels; ++ch) {
        if (kChannelMap[ch] >= 0)
            inputs[kChannelMap[ch]] = channels[ch];
    }
    for (std::uint32_t slot = 0; slot < m->meterChannels; ++slot) {
        if (!inputs[slot])
            return {};
    }

    for (std::uint32_t offset = 0; offset < m->totalFrames;) {
        const std::uint32_t frames = std::min(m->subBlockFrames, m->totalFrames - offset);
        processSubBlock(*m, inputs, offset, frames);
        offset += frames;
    }
    return gatedResult(*m);
}

LoudnessStream::LoudnessStream() = default;
LoudnessStream::~LoudnessStream() = default;

bool LoudnessStream::start(const LoudnessConfig& config)
{
    m_meter = nullptr;
    m_fed = 0;
    m_staged = 0;
    const std::size_t workSize = GetLoudnessWorkSize(config);
    if (workSize == 0)
        return false;
    const std::size_t words = (workSize + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t);
    m_work.reset(new (std::nothrow) std::max_align_t[words]);
    if (!m_work)
        return false;
    Meter* m = initMeter(config, m_work.get(), workSize);
    if (!m)
        return false;
    m_staging.assign(std::size_t(m->subBlockFrames) * m->meterChannels, 0.0f);
    m_channels = config.channels;
    m_meter = m;
    return true;
}

void LoudnessStream::feed(const float* interleaved, std::uint32_t frames)
{
    if (!m_meter)
        return;
    Meter& m = *static_cast<Meter*>(m_meter);
    // Frames past the stated length are not measured, as in the whole-file meter.
    frames = std::min(frames, m.totalFrames - m_fed);
    const std::uint32_t s = m.subBlockFrames;
    for (std::uint32_t i = 0; i < frames;) {
        const std::uint32_t n = std::min(frames - i, s - m_staged);
        for (std::uint32_t ch = 0; ch < m.inputChannels; ++ch) {
            const int slot = kChannelMap[ch];
            if (slot < 0)
                continue;
            float* dst = m_staging.data() + std::size_t(slot) * s + m_staged;
            const float* src = interleaved + std::size_t(i) * m_channels + ch;
            for (std::uint32_t k = 0; k < n; ++k)
                dst[k] = src[std::size_t(k) * m_channels];
        }
        m_staged += n;
        i += n;
        if (m_staged == s)
            flush();
    }
    m_fed += frames;
}

void LoudnessStream::flush()
{
    Meter& m = *static_cast<Meter*>(m_meter);
    const float* inputs[kMeterSlots] = {};
    for (std::uint32_t slot = 0; slot < m.meterChannels; ++slot)
        inputs[slot] = m_staging.data() + std::size_t(slot) * m.subBlockFrames;
    processSubBlock(m, inputs, 0, m_staged);
    m_staged = 0;
}

LoudnessResult LoudnessStream::finish()
{
    if (!m_meter)
        return {};
    if (m_staged > 0)
        flush();
    const LoudnessResult result = gatedResult(*static_cast<Meter*>(m_meter));
    m_meter = nullptr;
    return result;
}
