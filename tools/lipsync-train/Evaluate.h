#pragma once

#include "Corpus.h"

#include <array>
#include <string>
#include <vector>

// Frame-level agreement between reference and decoded mouth letters over a test set.
class LipsyncScoreboard {
public:
    static constexpr const char* kLetters = "ABCDEFGX";

    // Adds one utterance's frames; the shorter of the two lengths counts.
    void add(const std::vector<char>& reference, const std::vector<char>& decoded);

    int frames() const { return total_; }
    double accuracy() const;
    double macroRecall() const;
    double kappa() const;
    // F1 of "speech" (any shape but X) against X.
    double speechF1() const;
    // Share of decoded runs shorter than two frames.
    double flicker() const;
    std::string report(const std::string& title) const;

private:
    std::array<std::array<long, 8>, 8> confusion_{}; // [reference][decoded]
    int total_ = 0;
    long runs_ = 0, shortRuns_ = 0;
};

// The reference letter of each video frame: the label at the frame's centre time, moved
// by `offset` samples.
std::vector<char> ReferenceFrames(const LabelledSpeech& speech, int fps, size_t count, int offset = 0);

// The decoded letters of a sound at `fps` through the product's own analysis.
std::vector<char> DecodeFrames(const std::vector<int16_t>& samples, int fps);
