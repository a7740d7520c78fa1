#include "LoudnessMatch.h"

#include "AudioEngine.h"
#include "AudioFileInfo.h"
#include "LoudnessMeter.h"

#include <algorithm>
#include <cmath>

double DecibelsToGain(double db)
{
    return std::pow(10.0, db / 20.0);
}

double PlayedLoudness(double loudnessLufs, std::int32_t channels)
{
    if (channels == 1)
        return loudnessLufs + 10.0 * std::log10(2.0);
    return loudnessLufs +
           20.0 * std::log10(static_cast<double>(AudioEngine::StereoFoldScale(channels)));
}

LoudnessMatch ComputeLoudnessMatch(const AudioFileInfo& info, const LoudnessMatchSettings& settings)
{
    LoudnessMatch m;
    if (!settings.enabled)
        return m;
    // The floor stands for "not measured": a gated-out (silent) file lands there too.
    if (info.isHeaderRead == 0 || !(info.loudness > kLoudnessFloor) || info.channels < 1) {
        m.basis = LoudnessMatch::Basis::Unknown;
        return m;
    }
    m.gainDb = settings.targetLufs - PlayedLoudness(info.loudness, info.channels);
    m.basis = LoudnessMatch::Basis::Matched;
    const double maxBoost = std::max(0.0, settings.maxBoostDb);
    if (m.gainDb > maxBoost) {
        m.gainDb = maxBoost;
        m.basis = LoudnessMatch::Basis::BoostLimited;
    }
    if (m.gainDb <= 0.0)
        return m;
    if (!(info.samplePeak > 0.0f)) {
        m.gainDb = 0.0;
        m.basis = LoudnessMatch::Basis::PeakUnknown;
        return m;
    }
    // The fold never raises a peak (its weights sum to at most 1 per side).
    const double ceiling =
        kMatchPeakCeilingDbfs - 20.0 * std::log10(static_cast<double>(info.samplePeak));
    if (m.gainDb > ceiling) {
        m.gainDb = std::max(0.0, ceiling);
        m.basis = LoudnessMatch::Basis::PeakLimited;
    }
    return m;
}
