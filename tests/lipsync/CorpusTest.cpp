#include "Corpus.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using Parts = std::vector<std::pair<char, double>>;

// Mean power of the samples labelled as speech (`speech` true) or as rest.
double Power(const LabelledSpeech& s, bool speech) {
    double sum = 0;
    long count = 0;
    for (size_t i = 0; i < s.samples.size(); ++i)
        if ((s.labels[i] != 'X') == speech) {
            sum += double(s.samples[i]) * s.samples[i];
            ++count;
        }
    return count > 0 ? sum / double(count) : 0.0;
}

// Samples at which the label changes.
std::vector<size_t> Changes(const LabelledSpeech& s) {
    std::vector<size_t> at;
    for (size_t i = 1; i < s.labels.size(); ++i)
        if (s.labels[i] != s.labels[i - 1])
            at.push_back(i);
    return at;
}

} // namespace

// Phonemes of both synthesisers to mouth letters, diphthongs in two parts.
TEST(LipsyncCorpus, PhonemeMappings) {
    EXPECT_EQ(MouthOfPhoneme("m"), (Parts{{'A', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("f"), (Parts{{'G', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("u:"), (Parts{{'F', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("oU"), (Parts{{'E', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("A:"), (Parts{{'D', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("E"), (Parts{{'C', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("I"), (Parts{{'B', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("_:"), (Parts{{'X', 1.0}}));
    EXPECT_EQ(MouthOfPhoneme("aU"), (Parts{{'C', 0.6}, {'F', 0.4}}));
    EXPECT_EQ(MouthOfPhoneme("aI@"), (Parts{{'D', 0.6}, {'B', 0.4}}));
    EXPECT_EQ(MouthOfPhoneme("tS"), (Parts{{'B', 1.0}}));

    EXPECT_EQ(MouthOfArpabet("pau"), (Parts{{'X', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("b"), (Parts{{'A', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("v"), (Parts{{'G', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("ah"), (Parts{{'C', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("ax"), (Parts{{'D', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("uh"), (Parts{{'E', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("uw"), (Parts{{'F', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("er"), (Parts{{'B', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("ih"), (Parts{{'B', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("w"), (Parts{{'B', 1.0}}));
    EXPECT_EQ(MouthOfArpabet("oy"), (Parts{{'E', 0.6}, {'B', 0.4}}));
    EXPECT_EQ(MouthOfArpabet("ay"), (Parts{{'D', 0.6}, {'B', 0.4}}));
}

TEST(LipsyncCorpus, FlitePhoneLinesAndLabels) {
    const auto phones = ParseFlitePhones("pau:0.197 g:0.248 x: :0.3 n:abc aw:0.5e0 pau:0.6\n");
    ASSERT_EQ(phones.size(), 4u);
    EXPECT_EQ(phones[0].first, "pau");
    EXPECT_DOUBLE_EQ(phones[0].second, 0.197);
    EXPECT_EQ(phones[2].first, "aw");
    EXPECT_DOUBLE_EQ(phones[2].second, 0.5);

    // A rest, a diphthong of 20 samples split 12 / 8, and lips closed to the end; a phone
    // that starts where the next one does has no samples.
    const std::vector<char> labels = LabelPhones(
        {{0, {{'X', 1.0}}}, {10, MouthOfArpabet("aw")}, {30, {{'G', 1.0}}}, {30, {{'A', 1.0}}}}, 40);
    EXPECT_EQ(std::string(labels.begin(), labels.end()),
              std::string(10, 'X') + std::string(12, 'C') + std::string(8, 'F') + std::string(10, 'A'));
    // Starts beyond the sound are clipped to it.
    const std::vector<char> clipped = LabelPhones({{-5, {{'B', 1.0}}}, {8, {{'D', 1.0}}}}, 6);
    EXPECT_EQ(std::string(clipped.begin(), clipped.end()), "BBBBBB");
}

// Both synthesisers give labels that line up with their sound: rest is quiet, speech is
// loud, and the labels run parallel to the samples.
TEST(LipsyncCorpus, SynthesisedLabelsFollowTheSound) {
    for (const char* voice : {"en-us", "flite:slt"}) {
        LabelledSpeech s;
        ASSERT_TRUE(SpeakLabelled({voice, 160, 50}, "Who would move the blue boat now?", s)) << voice;
        ASSERT_EQ(s.labels.size(), s.samples.size()) << voice;
        EXPECT_GT(s.samples.size(), 8000u) << voice;
        EXPECT_GT(Power(s, true), 30 * Power(s, false)) << voice;
        const std::string text(s.labels.begin(), s.labels.end());
        for (char shape : std::string("ABDFX"))
            EXPECT_NE(text.find(shape), std::string::npos) << voice << " lacks " << shape;
        EXPECT_EQ(text.front(), 'X') << voice;
        // Labels change only where a phone starts or inside a diphthong; phones are in order.
        ASSERT_GT(s.phoneStarts.size(), 15u) << voice;
        for (size_t k = 1; k < s.phoneStarts.size(); ++k)
            EXPECT_LE(s.phoneStarts[k - 1], s.phoneStarts[k]) << voice;
        size_t changes = 0, atStarts = 0;
        for (size_t i = 1; i < s.labels.size(); ++i)
            if (s.labels[i] != s.labels[i - 1]) {
                ++changes;
                atStarts += std::binary_search(s.phoneStarts.begin(), s.phoneStarts.end(), i) ? 1 : 0;
            }
        EXPECT_EQ(changes, atStarts + 1) << voice << ": only the diphthong of \"now\" changes within a phone";
    }
    LabelledSpeech none;
    EXPECT_FALSE(SpeakLabelled({"flite:no-such-voice", 160, 50}, "Hello there.", none));
}

// Augmented utterances fit one analysis block, and rest in them is mostly not digital zero.
TEST(LipsyncCorpus, UtterancesFitABlockAndCarryRoomNoise) {
    std::mt19937 random(11);
    AugmentSpec augment;
    augment.roomShare = 1.0;
    const std::vector<std::string> sentences(6, "The old man would go home and look at the boat.");
    for (int i = 0; i < 3; ++i) {
        const LabelledSpeech u = MakeUtterance({"en-gb-x-rp", 170, 50}, sentences, augment, random);
        ASSERT_EQ(u.labels.size(), u.samples.size());
        EXPECT_LT(u.samples.size(), 65536u);
        EXPECT_GT(u.samples.size(), 30000u);
        EXPECT_EQ(u.labels.front(), 'X');
        EXPECT_EQ(u.labels.back(), 'X');
        EXPECT_GT(Power(u, true), Power(u, false));
    }
    // Most utterances carry noise, so that rest is seldom digital zero.
    augment.roomShare = 0.0;
    long zeros = 0, rest = 0;
    for (int i = 0; i < 20; ++i) {
        const LabelledSpeech u = MakeUtterance({"en-us", 170, 50}, {sentences[0]}, augment, random);
        for (size_t k = 0; k < u.samples.size(); ++k)
            if (u.labels[k] == 'X') {
                ++rest;
                zeros += u.samples[k] == 0 ? 1 : 0;
            }
    }
    EXPECT_LT(double(zeros), 0.25 * double(rest));
}

// A warped speaker is slower by the warp, and the labels keep up with the sound (to within
// the rounding of diphthong parts).
TEST(LipsyncCorpus, WarpStretchesSoundAndLabelsTogether) {
    for (const char* voice : {"en-gb-x-rp", "flite:rms"}) {
        LabelledSpeech plain, slow;
        ASSERT_TRUE(SpeakLabelled({voice, 170, 50, 1.0}, "Move the old boat over to the pool.", plain));
        ASSERT_TRUE(SpeakLabelled({voice, 170, 50, 1.1}, "Move the old boat over to the pool.", slow));
        ASSERT_EQ(slow.labels.size(), slow.samples.size());
        EXPECT_NEAR(double(slow.samples.size()) / double(plain.samples.size()), 1.1, 0.01) << voice;
        const std::vector<size_t> plainChanges = Changes(plain), slowChanges = Changes(slow);
        ASSERT_EQ(slowChanges.size(), plainChanges.size()) << voice;
        for (size_t k = 0; k < plainChanges.size(); ++k)
            EXPECT_NEAR(double(slowChanges[k]), 1.1 * double(plainChanges[k]), 12.0) << voice << " " << k;
        EXPECT_GT(Power(slow, true), 30 * Power(slow, false)) << voice;
    }
}
