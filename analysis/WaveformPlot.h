#pragma once

// Waveform overviews: 250 buckets across a file, each the highest and lowest
// sample in percent of full scale. Only the first 20 ms of each bucket is
// looked at, which bounds the work for long files (later peaks are missed).

#include "AudioFileInfo.h"

struct WaveHeaderHandle;

struct PlotGeometry
{
    int points = 0; // buckets computed; the rest of the 250 stay {0, 0}
    int framesPerBucket = 0;
    int scan = 0; // frames looked at per bucket
    int skip = 0; // frames passed over after them
};

PlotGeometry ComputePlotGeometry(int samples, int samplingRate);

// Planar float input (MP3, Ogg Vorbis), full scale +-1.0.
// Mixed: all channels averaged into one trace of 250 points.
void ComputeMixedPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out /*250*/);
// One trace per channel, at most the first 8.
void ComputeMultiPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out /*8 x 250*/);

// WAV/AIFF through an open header, reading only the frames each bucket looks
// at. 16-bit data is plotted from the high byte of each sample; other depths
// from decoded values. The mixed plot of a file with more than two channels
// uses its first two.
void ComputeWaveMixedPlot(WaveHeaderHandle* handle, PlotPoint* out /*250*/);
void ComputeWaveMultiPlot(WaveHeaderHandle* handle, PlotPoint* out /*8 x 250*/);
