#include "Corpus.h"
#include "Evaluate.h"
#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"

#include <gtest/gtest.h>
#include <random>

// The shipped models on held-out sentences, spoken by voices of the training set with
// room noise. The shipped models reach accuracy 0.809, macro recall 0.803, kappa 0.760 and
// speech F1 0.984 here; the floor lies a little below, and clearly above the baselines.
TEST(LipsyncQuality, ShippedModelsDecodeHeldOutSpeech) {
    if (LipsyncFiles::shippedModel('A').empty())
        GTEST_SKIP() << "this build carries no mouth models";
    const std::vector<std::string> sentences =
        LoadSentences(std::string(LIPSYNC_SENTENCES_DIR) + "/heldout.txt");
    ASSERT_GE(sentences.size(), 12u);
    const std::vector<std::string> voices = {"en-us", "en-gb-x-rp", "en-us+f2"};
    std::mt19937 random(4242);
    LipsyncScoreboard models, alwaysB;
    LipsyncExitRoutine previous = LipsyncSetExitRoutine(&LipsyncThrowingExit);
    for (size_t i = 0; i < 12; ++i) {
        const SpeakerSpec speaker{voices[i % voices.size()], 150 + int(i) * 5, 40 + int(i) * 2};
        const LabelledSpeech speech = MakeUtterance(speaker, {sentences[i]}, AugmentSpec(), random);
        ASSERT_GT(speech.samples.size(), 8000u) << sentences[i];
        const std::vector<char> decoded = DecodeFrames(speech.samples, 24);
        const std::vector<char> reference = ReferenceFrames(speech, 24, decoded.size());
        models.add(reference, decoded);
        alwaysB.add(reference, std::vector<char>(reference.size(), 'B'));
    }
    LipsyncSetExitRoutine(previous);
    SCOPED_TRACE(models.report("held-out sentences"));
    EXPECT_GT(models.frames(), 600);
    EXPECT_GE(models.accuracy(), 0.76);
    EXPECT_GE(models.macroRecall(), 0.72);
    EXPECT_GE(models.kappa(), 0.70);
    EXPECT_GE(models.speechF1(), 0.95);
    EXPECT_GT(models.accuracy(), alwaysB.accuracy() + 0.2);
}
