#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Converts a stream of mono float samples from one rate to another with a windowed-sinc
// low-pass, chunk by chunk.
class LipsyncResampler {
public:
    LipsyncResampler(int inRate, int outRate);
    // Appends the output that `count` more input samples make available.
    void push(const float* in, size_t count, std::vector<float>& out);
    // Appends the rest, the input being followed by silence.
    void finish(std::vector<float>& out);

private:
    void produce(std::vector<float>& out, bool final);
    float kernel(double x) const;
    int inRate_, outRate_;
    double cutoff_; // in cycles per input sample, times 2
    int halfWidth_; // input samples on each side
    std::vector<float> table_;
    std::vector<float> pending_;
    int64_t base_ = 0;    // input index of pending_[0]
    int64_t nextOut_ = 0; // index of the next output sample
    int64_t inputTotal_ = 0;
};

// Float samples in [-1, 1] to 16-bit values, rounded and clipped.
void LipsyncToPcm16(const std::vector<float>& in, std::vector<int16_t>& out);

// The longest sound taken, in seconds.
constexpr int64_t kLipsyncLongestSound = 3 * 3600;

// Reads a sound file (WAV, AIFF, FLAC, MP3 ... whatever libsndfile reads) as 8 kHz, 16-bit
// mono: channels are averaged and the rate converted. False with a message on failure.
bool LipsyncReadSound(const std::string& path, std::vector<int16_t>& samples, std::string& error);
