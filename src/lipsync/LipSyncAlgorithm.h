#pragma once

#include "core/UT_Progress.h"
#include "lipsync/Recogniser.h"

#include <cstdint>
#include <vector>

// One mouth segment of a sound: letter 'A' to 'G' or 'X', start and duration in 100 ns.
struct LipsyncSegment {
    char letter;
    int64_t start;
    int64_t duration;
};

// The result of analysing one sound.
struct LipsyncAnalysis {
    std::vector<LipsyncSegment> segments;
    std::vector<uint8_t> codes; // one mouth code per frame: 1..7 for A..G, 8 for X, 0 for none
    int blocks = 0;
    bool stopped = false;
};

// Progress of an analysis in blocks of 100 steps each, shown on a UT_Progress.
class CLipSyncProgress : public CLipSyncProgressCallBack {
public:
    CLipSyncProgress(UT_Progress& progress, int blocks);
    void start(int frameCount) override;
    bool step(int frame) override;

private:
    UT_Progress& progress_;
    int block_ = -1;
    int frames_ = 0;
};

// Sound to mouth shapes: 8 kHz 16-bit mono, cut into blocks of 65,536 samples, each block
// decoded by itself and its segments turned into frames at a whole number of frames per
// second.
class LipSyncAlgorithm {
public:
    static constexpr int kBlockSamples = 65536;

    // Blocks of a sound of `samples` samples.
    static int BlockCount(int64_t samples);

    // Mouth code of a decoded letter: 'A'..'G' give 1..7, 'X' gives 8, anything else 0.
    static uint8_t MouthCode(int letter);
    // Letter of a mouth code as read from a frame: 0 reads as X.
    static char MouthLetter(uint8_t code);

    // Appends the frames of one block: a segment from t0 to t0 + d (100 ns) covers frames
    // trunc(t0 fps / 1e7) to trunc((t0 + d) fps / 1e7) - 1. A block without records
    // gives trunc(T fps / 100) frames of code 0.
    static void SegmentsToFrames(const std::vector<LipsyncRecord>& records, int analysisFrames, int fps,
                                 std::vector<uint8_t>& codes);

    // Analyses a whole sound. Runs one recogniser (under its own memory manager);
    // a stop from the progress ends it, keeping what earlier blocks gave.
    static LipsyncAnalysis Analyse(const int16_t* samples, int64_t count, int fps,
                                   CLipSyncProgressCallBack* progress);
};
