#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Speech at 8 kHz with one mouth letter ('A' to 'G', 'X') per sample.
struct LabelledSpeech {
    std::vector<int16_t> samples;
    std::vector<char> labels;
};

// One synthetic speaker: an espeak-ng voice name (with any "+variant"), rate in words
// per minute and base pitch (0-100).
struct SpeakerSpec {
    std::string voice;
    int rate = 175;
    int pitch = 50;
};

// How an utterance is made: sentences joined by pauses, then gain, band limits and
// room noise, so that silence is not digital zero.
struct AugmentSpec {
    bool noise = true;
    double minSnrDb = 15.0, maxSnrDb = 45.0;
};

// Mouth shapes of one espeak-ng phoneme: one or two (letter, share of the duration) parts.
std::vector<std::pair<char, double>> MouthOfPhoneme(const std::string& phoneme);

// Synthesises `text` with the phoneme timings of espeak-ng, at 8 kHz. False on failure.
bool SpeakLabelled(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out);

// An utterance of the given sentences (each through SpeakLabelled) with pauses and
// augmentation drawn from `random`; kept below one analysis block (65,536 samples) by
// dropping sentences that would not fit.
LabelledSpeech MakeUtterance(const SpeakerSpec& speaker, const std::vector<std::string>& sentences,
                             const AugmentSpec& augment, std::mt19937& random);

// Sentences of a text file: split at . ? ! and blank lines, kept when 3 to 24 words of
// mostly letters.
std::vector<std::string> LoadSentences(const std::string& path);
