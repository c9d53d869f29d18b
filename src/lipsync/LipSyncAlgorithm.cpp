#include "lipsync/LipSyncAlgorithm.h"

#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/SpeechFrontEnd.h"

#include <algorithm>

CLipSyncProgress::CLipSyncProgress(UT_Progress& progress, int blocks) : progress_(progress) {
    progress_.SetRange(0, int64_t(std::max(blocks, 1)) * 100, 0);
}

void CLipSyncProgress::start(int frameCount) {
    ++block_;
    frames_ = frameCount;
    progress_.SetPosition(int64_t(block_) * 100);
}

bool CLipSyncProgress::step(int frame) {
    if (frames_ > 0 && frame % 64 == 0) {
        progress_.SetPosition(int64_t(block_) * 100 + int64_t(frame) * 100 / frames_);
        progress_.ProcessEvents();
    }
    return !progress_.IsCancelled();
}

int LipSyncAlgorithm::BlockCount(int64_t samples) {
    return static_cast<int>((samples + kBlockSamples - 1) / kBlockSamples);
}

uint8_t LipSyncAlgorithm::MouthCode(int letter) {
    if (letter == 'X')
        letter = 'G' + 1;
    int code = letter - 0x40;
    return code >= 1 && code <= 8 ? static_cast<uint8_t>(code) : 0;
}

char LipSyncAlgorithm::MouthLetter(uint8_t code) {
    if (code == 0 || code >= 8)
        return 'X';
    return static_cast<char>('A' + code - 1);
}

void LipSyncAlgorithm::SegmentsToFrames(const std::vector<LipsyncRecord>& records, int analysisFrames,
                                        int fps, std::vector<uint8_t>& codes) {
    constexpr int64_t kTicksPerSecond = 10000000;
    if (records.empty()) {
        codes.insert(codes.end(), size_t(int64_t(analysisFrames) * fps / 100), 0);
        return;
    }
    int64_t t0 = 0;
    for (const LipsyncRecord& r : records) {
        const int64_t t1 = t0 + r.duration;
        const int64_t f0 = t0 * fps / kTicksPerSecond;
        const int64_t f1 = t1 * fps / kTicksPerSecond;
        codes.insert(codes.end(), size_t(std::max<int64_t>(f1 - f0, 0)), MouthCode(r.letter));
        t0 = t1;
    }
}

LipsyncAnalysis LipSyncAlgorithm::Analyse(const int16_t* samples, int64_t count, int fps,
                                          CLipSyncProgressCallBack* progress) {
    LipsyncAnalysis result;
    result.blocks = BlockCount(count);
    LipsyncMemoryManagerObject manager;
    std::vector<LipsyncRecord> records;
    for (int b = 0; b < result.blocks; ++b) {
        const int64_t first = int64_t(b) * kBlockSamples;
        const int64_t length = std::min<int64_t>(kBlockSamples, count - first);
        if (b == 0)
            initialiseRecogniser();
        SpeechBuffer buffer;
        computeObservations(samples + first, length * 2, buffer);
        coerceToTargetKind(buffer);
        const int status = recogniseBlock(buffer, records, progress);
        LipsyncFree(buffer.data);
        if (status < 0) {
            result.stopped = true;
            break;
        }
        int64_t at = first * LipsyncFrontEnd::kSourcePeriod;
        for (const LipsyncRecord& r : records) {
            result.segments.push_back({static_cast<char>(r.letter), at, r.duration});
            at += r.duration;
        }
        SegmentsToFrames(records, buffer.sampleCount, fps, result.codes);
    }
    shutdownRecogniser();
    return result;
}
