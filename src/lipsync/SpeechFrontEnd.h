#pragma once

#include "lipsync/SpeechBuffer.h"
#include "lipsync/Vector.h"

#include <cstdint>

// The fixed settings of the front end.
namespace LipsyncFrontEnd {
constexpr int kSampleRate = 8000;
constexpr int kSourcePeriod = 1250;  // 100 ns units
constexpr int kWindowSamples = 200;  // 25 ms
constexpr int kShiftSamples = 80;    // 10 ms
constexpr int kFramePeriod = 100000; // 100 ns units
constexpr float kPreEmphasis = 0.9375f;
constexpr int kFftSize = 256;
constexpr int kChannels = 30;
constexpr int kCepstra = 8;
constexpr float kEnergyScale = 1.0f;
constexpr int kDeltaWindow = 2;
constexpr int kAccWindow = 2;
constexpr int kStreams = 4;
constexpr int kStreamWidths[kStreams + 1] = {0, 8, 8, 8, 3};
constexpr int kStaticWidth = kCepstra + 1;    // 9
constexpr int kVectorSize = 3 * kStaticWidth; // 27
constexpr int kMaxStreams = 4;
// "HCOERCE": the kind that the models are trained on.
constexpr uint16_t kTargetKind = kParmMFCC_E_D_A;

// Log arithmetic shared with the recogniser.
constexpr double kLogZero = -1.0e10;
constexpr double kLogSmall = -0.5e10;
constexpr double kMinLogExp = -23.025850929940457; // -ln(1e10)
constexpr double kMinLogArg = 2.45e-308;
} // namespace LipsyncFrontEnd

// Number of analysis frames in a block of n samples.
int LipsyncFrameCount(int64_t samples);

// The filterbank of FFT bin k (1 .. 128): the lower channel (0 below the first) and
// the weight that the lower channel takes of the bin's magnitude. Valid once a block
// has been analysed in the current run.
void LipsyncFilterbankBin(int k, int& lowerChannel, float& lowerWeight);

// Cepstra c1 .. c8 of 30 log filterbank outputs: sqrt(2 / 30) times the sum over j of
// logs[j - 1] cos(i pi / 30 (j - 0.5)), in double precision; no lifter.
void LipsyncDct(const double* logs, float* cepstra);

// Makes the MFCC_E rows of a block of 16-bit samples (byteCount / 2 of them) in the
// current manager's memory, with the energy normalised within the block. The rows have
// room for the coercion below.
void computeObservations(const int16_t* samples, int64_t byteCount, SpeechBuffer& buffer);

// Adds deltas and accelerations in place: MFCC_E becomes MFCC_E_D_A, 27 columns.
void coerceToTargetKind(SpeechBuffer& buffer);

// One observation cut into its streams, vectors addressed from 1; stream s is fv[s].
struct Observation {
    int streams = 0;
    Vector* fv[LipsyncFrontEnd::kMaxStreams + 1] = {};
};

// Streams of the given widths (widths[0] unused), in the manager's memory.
Observation MakeStreams(int streams, const int* widths);

// Delivers frame `frameIndex` (from 0) as streams: c1-c8, d1-d8, a1-a8, then E, dE, aE.
void frameToStreams(const SpeechBuffer& buffer, int frameIndex, Observation& streams);

// log(exp(x) + exp(y)) with the log-zero conventions above.
double LAdd(double x, double y);
