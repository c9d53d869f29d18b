#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

// Speech at 8 kHz with one mouth letter ('A' to 'G', 'X') per sample, and the sample at
// which each phone starts.
struct LabelledSpeech {
    std::vector<int16_t> samples;
    std::vector<char> labels;
    std::vector<size_t> phoneStarts;
};

// One synthetic speaker. `voice` is an espeak-ng voice name (with any "+variant"), or
// "flite:NAME" for one of flite's voices. `rate` is in words per minute (flite stretches
// its durations by 175 / rate); `pitch` (0-100) is the base pitch of espeak-ng and has no
// effect on flite.
//
// `warp` plays the speech that much slower (above 1) or faster: formants and pitch fall or
// rise by its inverse, as with a longer or shorter vocal tract.
struct SpeakerSpec {
    std::string voice;
    int rate = 175;
    int pitch = 50;
    double warp = 1.0;
};

// How an utterance is made: sentences joined by pauses, then gain, band limits, a room
// and noise, so that silence is not digital zero.
struct AugmentSpec {
    bool noise = true;
    double minSnrDb = 15.0, maxSnrDb = 45.0;
    double roomShare = 0.0; // share of utterances heard through a small reverberant room
    double warp = 0.0;      // speakers' warps are drawn from 1 - warp to 1 + warp
};

// Mouth shapes of one espeak-ng phoneme: one or two (letter, share of the duration) parts.
std::vector<std::pair<char, double>> MouthOfPhoneme(const std::string& phoneme);

// The same for one ARPAbet phone as flite names it ("pau" is silence).
std::vector<std::pair<char, double>> MouthOfArpabet(const std::string& phone);

// Phones and their end times in seconds from flite's "-psdur" line ("pau:0.197 g:0.248 ...").
// Entries that do not parse are skipped.
std::vector<std::pair<std::string, double>> ParseFlitePhones(const std::string& line);

// Labels `count` samples from phone start samples: each phone runs to the next one's start
// (the last to the end) and is split by its mouth parts.
std::vector<char>
LabelPhones(const std::vector<std::pair<int64_t, std::vector<std::pair<char, double>>>>& phones,
            size_t count);

// Synthesises `text` with the synthesiser's own phone timings, at 8 kHz. False on failure.
bool SpeakLabelled(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out);

// An utterance of the given sentences (each through SpeakLabelled) with pauses and
// augmentation drawn from `random`; kept below one analysis block (65,536 samples) by
// dropping sentences that would not fit.
LabelledSpeech MakeUtterance(const SpeakerSpec& speaker, const std::vector<std::string>& sentences,
                             const AugmentSpec& augment, std::mt19937& random);

// Sentences of a text file: split at . ? ! and blank lines, kept when 3 to 24 words of
// mostly letters.
std::vector<std::string> LoadSentences(const std::string& path);
