#include "LipsyncTestModels.h"
#include "lipsync/LipSyncAlgorithm.h"
#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/Recogniser.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace lipsynctest;

namespace {

// Observation rows of the target kind whose only non-zero element is c1.
struct Rows {
    std::vector<float> data;
    SpeechBuffer buffer() {
        SpeechBuffer b;
        b.sampleCount = static_cast<int>(data.size() / 27);
        b.samplePeriod = 100000;
        b.sampleSize = 108;
        b.parmKind = 838;
        b.data = data.data();
        return b;
    }
    void add(float c1, int frames) {
        for (int f = 0; f < frames; ++f) {
            data.insert(data.end(), 27, 0.0f);
            data[data.size() - 27] = c1;
        }
    }
};

// The c1 value that model `letter` of InstallSeparatedModels sits on.
float Centre(char letter) {
    return letter == 'X' ? 70.0f : 10.0f * float(letter - 'A');
}

std::string Describe(const std::vector<LipsyncRecord>& records) {
    std::string text;
    for (const LipsyncRecord& r : records)
        text += std::string(1, char(r.letter)) + std::to_string(r.duration / 100000) + " ";
    return text;
}

std::vector<LipsyncRecord> Decode(Rows& rows, int* status = nullptr,
                                  CLipSyncProgressCallBack* progress = nullptr) {
    LipsyncMemoryManagerObject manager;
    initialiseRecogniser();
    std::vector<LipsyncRecord> records;
    const int result = recogniseBlock(rows.buffer(), records, progress);
    if (status != nullptr)
        *status = result;
    shutdownRecogniser();
    return records;
}

class StopAt : public CLipSyncProgressCallBack {
public:
    explicit StopAt(int frame) : frame_(frame) {}
    void start(int frameCount) override { started = frameCount; }
    bool step(int frame) override {
        last = frame;
        return frame < frame_;
    }
    int started = -1, last = 0;

private:
    int frame_;
};

} // namespace

TEST(Decoder, FindsTheKnownBestPath) {
    ExitCapture capture;
    InstallSeparatedModels();
    Rows rows;
    const std::vector<std::pair<char, int>> truth = {{'X', 10}, {'B', 8}, {'D', 12}, {'B', 5},
                                                     {'G', 3},  {'C', 7}, {'X', 10}};
    std::string expected;
    for (auto [letter, frames] : truth) {
        rows.add(Centre(letter), frames);
        expected += std::string(1, letter) + std::to_string(frames) + " ";
    }
    EXPECT_EQ(Describe(Decode(rows)), expected);
    EXPECT_TRUE(ExitCapture::warnings().empty());
}

TEST(Decoder, ShippedDefinitionsLoadOrStopWithAMessage) {
    ExitCapture capture;
    LipsyncMemoryManagerObject manager;
    Rows rows;
    rows.add(0.0f, 40);
    try {
        initialiseRecogniser();
        std::vector<LipsyncRecord> records;
        EXPECT_EQ(recogniseBlock(rows.buffer(), records, nullptr), 0);
        int total = 0;
        for (const LipsyncRecord& r : records)
            total += r.duration;
        EXPECT_EQ(total, 40 * 100000);
    } catch (const LipsyncFatalError& e) {
        // Without trained data the first model is all zeros and fails its checks.
        EXPECT_NE(std::string(e.what()).find("CheckStream: A:"), std::string::npos) << e.what();
    }
}

TEST(Decoder, EqualScoresKeepTheEarlierInstance) {
    ExitCapture capture;
    InstallSeparatedModels();
    // C and D identical, and a flat bigram: C comes first in the network and wins.
    LipsyncFiles::setOverride("D", LipsyncWriteModel(MakeModel(20.0f, 1)));
    std::vector<float> flat(100, 0.1f);
    LipsyncFiles::setOverride("bigram",
                              LipsyncMakeBigram({'A', 'B', 'C', 'D', 'E', 'F', 'G', 'X', -1, -2}, flat));
    Rows rows;
    rows.add(70.0f, 6);
    rows.add(20.0f, 9);
    rows.add(70.0f, 6);
    EXPECT_EQ(Describe(Decode(rows)), "X6 C9 X6 ");
    // Listed the other way round, D is first.
    LipsyncFiles::setOverride("network", {});
    const std::string text = "$vsm = A | B | D | C | E | F | G | X;\n(<$vsm>)\n";
    LipsyncFiles::setOverride("network", std::vector<unsigned char>(text.begin(), text.end()));
    EXPECT_EQ(Describe(Decode(rows)), "X6 D9 X6 ");
}

TEST(Decoder, ShortBlocksWarnAndGiveNoRecords) {
    ExitCapture capture;
    InstallSeparatedModels();
    for (int frames = 0; frames < 3; ++frames) {
        ExitCapture::warnings().clear();
        Rows rows;
        rows.add(10.0f, frames);
        int status = 1;
        EXPECT_TRUE(Decode(rows, &status).empty());
        EXPECT_EQ(status, 0);
        ASSERT_EQ(ExitCapture::warnings().size(), 1u) << frames;
        EXPECT_EQ(ExitCapture::warnings()[0], "No tokens survived to end of input for dummy");
    }
    ExitCapture::warnings().clear();
    Rows rows;
    rows.add(10.0f, 3);
    EXPECT_EQ(Describe(Decode(rows)), "B3 ");
    EXPECT_TRUE(ExitCapture::warnings().empty());
}

TEST(Decoder, CollectionKeepsEveryLivePathOverManySegments) {
    ExitCapture capture;
    InstallSeparatedModels();
    Rows rows;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        const char letter = i % 2 ? 'D' : 'B';
        const int frames = 3 + i % 3;
        rows.add(Centre(letter), frames);
        expected += std::string(1, letter) + std::to_string(frames) + " ";
    }
    LipsyncMemoryManagerObject manager;
    initialiseRecogniser();
    std::vector<LipsyncRecord> records;
    ASSERT_EQ(recogniseBlock(rows.buffer(), records, nullptr), 0);
    EXPECT_EQ(records.size(), 500u);
    EXPECT_EQ(Describe(records), expected);
    const LipsyncDecoderStats stats = LipsyncLastDecoderStats();
    EXPECT_GT(stats.collections, 2);
    EXPECT_GT(stats.recordsFreed, 0);
    EXPECT_GE(stats.recordsMade, 499);
}

TEST(Decoder, StopFromProgressGivesNoRecords) {
    ExitCapture capture;
    InstallSeparatedModels();
    Rows rows;
    rows.add(10.0f, 30);
    StopAt stop(12);
    int status = 0;
    EXPECT_TRUE(Decode(rows, &status, &stop).empty());
    EXPECT_EQ(status, -1);
    EXPECT_EQ(stop.started, 30);
    EXPECT_EQ(stop.last, 12);
}

TEST(Decoder, UnknownModelNamesReadAsX) {
    ExitCapture capture;
    InstallSeparatedModels();
    LipsyncFiles::setOverride("Y", LipsyncWriteModel(MakeModel(80.0f, 1)));
    const std::string list = "A\nB\nC\nD\nE\nF\nG\nX\nY\n";
    LipsyncFiles::setOverride("reclist", std::vector<unsigned char>(list.begin(), list.end()));
    const std::string net = "$vsm = A | B | C | D | E | F | G | X | Y;\n(<$vsm>)\n";
    LipsyncFiles::setOverride("network", std::vector<unsigned char>(net.begin(), net.end()));
    LipsyncFiles::setOverride("bigram",
                              LipsyncMakeBigram({'A', 'B', 'C', 'D', 'E', 'F', 'G', 'X', 'Y', -1, -2},
                                                std::vector<float>(121, 1.0f / 11)));
    Rows rows;
    rows.add(10.0f, 5);
    rows.add(80.0f, 5);
    rows.add(10.0f, 5);
    EXPECT_EQ(Describe(Decode(rows)), "B5 X5 B5 ");
}

TEST(Decoder, WrongObservationsAndMissingBigramLabelsAreFatal) {
    ExitCapture capture;
    InstallSeparatedModels();
    Rows rows;
    rows.add(0.0f, 5);
    SpeechBuffer wrongKind = rows.buffer();
    wrongKind.parmKind = 70;
    SpeechBuffer wrongSize = rows.buffer();
    wrongSize.sampleSize = 36;
    LipsyncMemoryManagerObject manager;
    initialiseRecogniser();
    std::vector<LipsyncRecord> records;
    try {
        recogniseBlock(wrongKind, records, nullptr);
        ADD_FAILURE();
    } catch (const LipsyncFatalError& e) {
        EXPECT_STREQ(e.what(), "CheckData: Incompatible Sample Kind in file dummy");
    }
    try {
        recogniseBlock(wrongSize, records, nullptr);
        ADD_FAILURE();
    } catch (const LipsyncFatalError& e) {
        EXPECT_STREQ(e.what(), "CheckData: Incompatible Vec Size in file dummy");
    }
}

TEST(Decoder, BigramWithoutAModelLabelIsFatal) {
    ExitCapture capture;
    InstallSeparatedModels();
    std::vector<float> values(81, 0.0f);
    for (int r = 0; r < 9; ++r)
        values[size_t(r * 9 + 8)] = 1.0f;
    LipsyncFiles::setOverride("bigram",
                              LipsyncMakeBigram({'A', 'B', 'C', 'D', 'E', 'F', 'G', -1, -2}, values));
    LipsyncMemoryManagerObject manager;
    try {
        initialiseRecogniser();
        ADD_FAILURE();
    } catch (const LipsyncFatalError& e) {
        EXPECT_STREQ(e.what(), "SetBigramIndex: Label X not found in bigram file bigram");
    }
}

// Segments to frames with whole numbers: 0.4 s at 25 fps is exactly 10 frames, where
// 0.4 * 25 in floating point may fall just short.
TEST(LipSyncFrames, SegmentsBecomeFramesByIntegerArithmetic) {
    std::vector<uint8_t> codes;
    LipSyncAlgorithm::SegmentsToFrames({{'X', 4000000}, {'B', 2000000}, {'A', 100000}, {'D', 1900000}}, 80,
                                       25, codes);
    // X 0-0.4 s: frames 0-9; B 0.4-0.6: 10-14; A 0.6-0.61 vanishes; D 0.61-0.8: 15-19.
    std::vector<uint8_t> expected(10, 8);
    expected.insert(expected.end(), 5, 2);
    expected.insert(expected.end(), 5, 4);
    EXPECT_EQ(codes, expected);
    for (int fps : {12, 15, 24, 25, 30, 60}) {
        codes.clear();
        std::vector<LipsyncRecord> records;
        for (int i = 0; i < 817; ++i)
            records.push_back({i % 2 ? 'B' : 'C', 100000});
        LipSyncAlgorithm::SegmentsToFrames(records, 817, fps, codes);
        EXPECT_EQ(codes.size(), size_t(817 * fps / 100)) << fps;
        codes.clear();
        LipSyncAlgorithm::SegmentsToFrames({}, 817, fps, codes);
        EXPECT_EQ(codes.size(), size_t(817 * fps / 100)) << fps;
    }
    EXPECT_EQ(codes.size(), 490u);
    codes.clear();
    LipSyncAlgorithm::SegmentsToFrames({{'B', 817 * 100000}}, 817, 24, codes);
    EXPECT_EQ(codes.size(), 196u);
}

TEST(LipSyncFrames, MouthCodes) {
    const char letters[] = "ABCDEFGX";
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(LipSyncAlgorithm::MouthCode(letters[i]), i + 1);
        EXPECT_EQ(LipSyncAlgorithm::MouthLetter(uint8_t(i + 1)), letters[i]);
    }
    EXPECT_EQ(LipSyncAlgorithm::MouthCode('H'), 8); // the letter after G, as X is
    EXPECT_EQ(LipSyncAlgorithm::MouthCode('I'), 0);
    EXPECT_EQ(LipSyncAlgorithm::MouthCode('@'), 0);
    EXPECT_EQ(LipSyncAlgorithm::MouthLetter(0), 'X');
}

TEST(LipSyncAlgorithmRun, BlocksAreDecodedOneByOne) {
    ExitCapture capture;
    InstallSeparatedModels();
    // Two blocks of digital silence and a short third one; each block starts over.
    std::vector<int16_t> samples(2 * 65536 + 1000, 0);
    const LipsyncAnalysis analysis =
        LipSyncAlgorithm::Analyse(samples.data(), int64_t(samples.size()), 24, nullptr);
    EXPECT_EQ(analysis.blocks, 3);
    EXPECT_FALSE(analysis.stopped);
    EXPECT_EQ(analysis.codes.size(), size_t(196 + 196 + (1000 - 200) / 80 + 1) * 0 + 196 + 196 + 2);
    int64_t at = 0;
    for (const LipsyncSegment& s : analysis.segments) {
        if (s.start >= 65536 * 1250 && at < 65536 * 1250)
            at = 65536 * 1250;
        if (s.start >= 2 * 65536 * 1250 && at < 2 * 65536 * 1250)
            at = 2 * 65536 * 1250;
        EXPECT_EQ(s.start, at);
        at += s.duration;
    }
}
