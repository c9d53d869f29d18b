#pragma once

#include "lipsync/SpeechBuffer.h"

#include <cstdint>
#include <vector>

// Told of the frames of each block; step returning false stops the analysis.
class CLipSyncProgressCallBack {
public:
    virtual ~CLipSyncProgressCallBack() = default;
    virtual void start(int frameCount) = 0;
    virtual bool step(int frame) = 0;
};

// One decoded mouth segment: the letter code ('A' to 'G', 'X') and its duration in 100 ns.
struct LipsyncRecord {
    int32_t letter;
    int32_t duration;
};

// Builds the models, network and bigram from the in-memory files, once per run (under a
// LipsyncMemoryManagerObject). Definition errors are fatal.
void initialiseRecogniser();

// Decodes one block of MFCC_E_D_A observations. Returns 0, or -1 when the progress
// object asked to stop (records are then empty). A block too short for any model gives a
// warning and no records.
int recogniseBlock(const SpeechBuffer& observations, std::vector<LipsyncRecord>& records,
                   CLipSyncProgressCallBack* progress);

void shutdownRecogniser();

// Path records made and records alive after the last collection of the last block.
struct LipsyncDecoderStats {
    long recordsMade = 0;
    long collections = 0;
    long recordsFreed = 0;
};
LipsyncDecoderStats LipsyncLastDecoderStats();
