#pragma once

#include <cstdint>

// Parameter kinds: a base kind in the low six bits plus qualifier bits.
constexpr uint16_t kParmMFCC = 6;
constexpr uint16_t kParmE = 0x40;
constexpr uint16_t kParmN = 0x80;
constexpr uint16_t kParmD = 0x100;
constexpr uint16_t kParmA = 0x200;
constexpr uint16_t kParmMFCC_E = kParmMFCC | kParmE;                       // 70
constexpr uint16_t kParmMFCC_E_D_A = kParmMFCC | kParmE | kParmD | kParmA; // 838, "MFCC_E_D_A"

// What the decoder sees of one block: rows of floats, one row per 10 ms frame.
struct SpeechBuffer {
    int32_t sampleCount = 0;  // analysis frames
    int32_t samplePeriod = 0; // 100 ns units
    int32_t sampleSize = 0;   // bytes per row
    uint16_t parmKind = 0;
    float* data = nullptr; // rows of sampleSize / 4 floats, in the manager's memory

    int rowWidth() const { return sampleSize / 4; }
    float* row(int frame) { return data + static_cast<int64_t>(frame) * rowWidth(); }
    const float* row(int frame) const { return data + static_cast<int64_t>(frame) * rowWidth(); }
};
