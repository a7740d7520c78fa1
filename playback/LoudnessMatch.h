#pragma once

#include <cstdint>

struct AudioFileInfo;

// What "Match loudness" asks for.
struct LoudnessMatchSettings
{
    bool enabled = false;
    double targetLufs = -23.0;
    double maxBoostDb = 12.0;
};

// The gain a file is previewed with so that its loudness meets the target,
// and what decided it.
struct LoudnessMatch
{
    enum class Basis
    {
        Off,          // matching is off: unity
        Unknown,      // loudness not measured (yet): unity
        Matched,      // the target reached
        BoostLimited, // the boost stopped at its limit
        PeakLimited,  // the boost stopped where the sample peak would pass -1 dBFS
        PeakUnknown,  // no boost: the sample peak is not known
    };
    double gainDb = 0.0;
    Basis basis = Basis::Off;
};

// No preview is pushed past this, measured on the file's sample peak.
inline constexpr double kMatchPeakCeilingDbfs = -1.0;
// Bounds kept by the settings.
inline constexpr double kMatchTargetMin = -60.0;
inline constexpr double kMatchTargetMax = 0.0;
inline constexpr double kMatchBoostMax = 40.0;

// The loudness the file has as the preview plays it: a mono file goes to both
// speakers (+3.01 dB), more than two channels lose the fold's scale.
double PlayedLoudness(double loudnessLufs, std::int32_t channels);

LoudnessMatch ComputeLoudnessMatch(const AudioFileInfo& info,
                                   const LoudnessMatchSettings& settings);

double DecibelsToGain(double db);
