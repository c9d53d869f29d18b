#include "LipsyncTestModels.h"
#include "lipsync/Bigram.h"
#include "lipsync/HMMSet.h"
#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/Network.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>

using namespace lipsynctest;

namespace {

// Float positions in a model of the shipped shape.
constexpr size_t kStateStart = 14; // "14, 2" of state 2
constexpr size_t kStateFloats = 1260;
constexpr size_t kTransStart = 3794; // "26, 5"
constexpr size_t kModelFloats = 3823;

// Loads the eight models with `edit` applied to model B; returns the fatal message, or
// "" when the set loads.
std::string LoadWithEdit(const std::function<void(std::vector<float>&)>& edit) {
    ExitCapture capture;
    const char* letters = "ABCDEFGX";
    for (int i = 0; i < 8; ++i) {
        std::vector<float> floats = ToFloats(LipsyncWriteModel(MakeModel(float(i))));
        if (letters[i] == 'B')
            edit(floats);
        LipsyncFiles::setOverride(std::string(1, letters[i]), ToBytes(floats));
    }
    LipsyncMemoryManagerObject manager;
    try {
        HMMSet* set = CreateHMMList("reclist");
        LoadHMMDefs(*set);
    } catch (const LipsyncFatalError& e) {
        return e.what();
    }
    return "";
}

} // namespace

TEST(ModelFormat, ShippedShapeIsWrittenAndLoads) {
    const auto bytes = LipsyncWriteModel(MakeModel(3.0f));
    ASSERT_EQ(bytes.size(), 15292u);
    const auto f = ToFloats(bytes);
    const std::vector<float> head = {0,  4, 5, 5, 4, 8, 8, 8,  3, 6, 27, 12, 7, 500,
                                     14, 2, 3, 7, 7, 7, 7, 18, 4, 1, 1,  1,  1};
    for (size_t i = 0; i < head.size(); ++i)
        EXPECT_EQ(f[i], head[i]) << i;
    EXPECT_EQ(f[kStateStart + kStateFloats], 14.0f);
    EXPECT_EQ(f[kStateStart + kStateFloats + 1], 3.0f);
    EXPECT_EQ(f[kTransStart], 26.0f);
    EXPECT_EQ(f[kModelFloats - 2], 2.0f);
    EXPECT_EQ(f[kModelFloats - 1], 29.0f);
    // The Gaussian constant of an identity inverse covariance of width 8 is 8 ln(2 pi).
    EXPECT_EQ(f[27], 17.0f);
    EXPECT_EQ(f[29], 16.0f);
    EXPECT_EQ(f[32], 19.0f);
    EXPECT_EQ(f[33], 8.0f);
    EXPECT_EQ(f[34], 3.0f);
    EXPECT_EQ(f[42], 21.0f);
    EXPECT_EQ(f[43 + 1 + 36], 23.0f);
    EXPECT_NEAR(f[43 + 1 + 37], 8 * std::log(2 * 3.14159265358979), 1e-4);

    ExitCapture capture;
    InstallSeparatedModels(7);
    LipsyncMemoryManagerObject manager;
    HMMSet* set = CreateHMMList("reclist");
    LoadHMMDefs(*set);
    ASSERT_EQ(set->numModels, 8);
    EXPECT_EQ(set->numStates, 5);
    EXPECT_EQ(set->streams, 4);
    EXPECT_EQ(set->vecSize, 27);
    EXPECT_EQ(set->parmKind, 838);
    const HMMDef* c = FindHMM(*set, "C");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ((*c->states[3]->pdf[1].spdf[7].mpdf->mean)[1], 20.0f);
    EXPECT_FLOAT_EQ((*c->transP)[2][2], std::log(0.6f));
    EXPECT_EQ((*c->transP)[2][4], -1e10f);
    EXPECT_EQ((*c->transP)[5][5], -1e10f);
}

TEST(ModelFormat, EveryCheckStopsTheLoadWithItsMessage) {
    EXPECT_EQ(LoadWithEdit([](std::vector<float>&) {}), "");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[0] = 2; }), "<BeginHMM> symbol expected");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[1] = 31; }).rfind("GetSym: Unknown symbol ", 0), 0u);
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[2] = 1; }), "State number out of range");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kStateStart + 1] = 5; }), "State number out of range");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[4] = 5; }), "Stream limit exceeded");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[8] = 4; }), "LoadOptions: Sum of Stream widths 28 != vecSize 27");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[22] = 3; }), "Incorrect number of stream weights");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[28] = 5; }), "Stream index out of range");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[30] = 8; }), "Mixture index out of range");
    // State 3's block numbered 2: state 3 is never read.
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kStateStart + kStateFloats + 1] = 2; }),
              "CheckHMM: B: state 3 has NULL info");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[31] = 0.5f; }).rfind("CheckStream: B: Mix weights sum 1.3", 0),
              0u);
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kTransStart] = 2; }), "Transition Matrix Missing");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kTransStart + 1] = 4; }), "Trans Mat Dimensions not 5 x 5");
    // Row 2 (self loop 0.6, step 0.4) made to sum to 1.05.
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kTransStart + 2 + 5 + 2] = 0.45f; }),
              "GetTransMat: Bad Trans Mat Sum in Row 2\n");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[kModelFloats - 2] = 29; }), "<EndHMM> symbol expected");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f.push_back(0); }), "Garbage at end of macro file");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[13] = 7; }), "LoadHMM: HMMs have different sample kinds");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f[11] = 11; }), "LoadHMM: HMMs have different covariance kinds");
    EXPECT_EQ(LoadWithEdit([](auto& f) { f.resize(40); }), "ReadVector: Reading vector component 7");
}

TEST(ModelFormat, DensityShapesAreChecked) {
    auto load = [](const LipsyncModelParams& b) {
        ExitCapture capture;
        InstallSeparatedModels();
        LipsyncFiles::setOverride("B", LipsyncWriteModel(b));
        LipsyncMemoryManagerObject manager;
        try {
            LoadHMMDefs(*CreateHMMList("reclist"));
        } catch (const LipsyncFatalError& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    LipsyncModelParams model = MakeModel(10, 1);
    model.states[1].streams[2][0].mean.resize(7);
    EXPECT_EQ(load(model), "CheckMix: B: mean for stream 3 state 3 mix 1 has bad vecSize");
    model = MakeModel(10, 1);
    model.states[2].streams[3][0].inverse.assign(16, 0.0f);
    for (int i = 0; i < 4; ++i)
        model.states[2].streams[3][0].inverse[size_t(i * 5)] = 1.0f;
    EXPECT_EQ(load(model), "CheckMix: B: inv for stream 4 state 4 mix 1 has bad dimensions");
}

TEST(ModelFormat, MissingGaussianConstantIsDerivedFromTheInverse) {
    ExitCapture capture;
    InstallSeparatedModels(1);
    LipsyncModelParams model = MakeModel(10, 1);
    // A diagonal inverse covariance of 2s in stream 4: gconst = 3 ln(2 pi) - 3 ln 2.
    for (int i = 0; i < 3; ++i)
        model.states[0].streams[3][0].inverse[size_t(i * 4)] = 2.0f;
    std::vector<float> f = ToFloats(LipsyncWriteModel(model));
    // Drop every "23, constant" pair; no other value of these models is 23.
    std::vector<float> stripped;
    for (size_t i = 0; i < f.size(); ++i) {
        if (f[i] == 23.0f) {
            ++i;
            continue;
        }
        stripped.push_back(f[i]);
    }
    ASSERT_EQ(stripped.size(), f.size() - 2 * 3 * 4);
    LipsyncFiles::setOverride("B", ToBytes(stripped));
    LipsyncMemoryManagerObject manager;
    HMMSet* set = CreateHMMList("reclist");
    LoadHMMDefs(*set);
    const MixPDF& pdf = *FindHMM(*set, "B")->states[2]->pdf[4].spdf[1].mpdf;
    EXPECT_NEAR(pdf.gConst, 3 * std::log(2 * 3.14159265358979) - 3 * std::log(2.0), 1e-5);
}

namespace {

std::string ReadBigramWith(const std::vector<float>& labels, const std::vector<float>& values) {
    ExitCapture capture;
    InstallSeparatedModels();
    LipsyncFiles::setOverride("bigram", LipsyncMakeBigram(labels, values));
    LipsyncMemoryManagerObject manager;
    try {
        HMMSet* set = CreateHMMList("reclist");
        LoadHMMDefs(*set);
        ReadBigram("bigram", *set);
    } catch (const LipsyncFatalError& e) {
        return e.what();
    }
    return "";
}

std::vector<float> ShippedValues() {
    std::vector<float> values;
    for (const auto& row : LipsyncFiles::bigramTable())
        values.insert(values.end(), std::begin(row), std::end(row));
    return values;
}

const std::vector<float> kLabels = {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'X', -1.0f, -2.0f};

} // namespace

TEST(Bigram, ShippedTableLoads) {
    EXPECT_EQ(LipsyncFiles::bigramBytes().size(), 444u);
    const auto f = ToFloats(LipsyncFiles::bigramBytes());
    EXPECT_EQ(f[0], 10.0f);
    EXPECT_EQ(f[1], 65.0f);
    EXPECT_EQ(f[1 + 11 * 8], -1.0f);
    EXPECT_EQ(f[1 + 11 * 9], -2.0f);
    EXPECT_EQ(f[1 + 11 * 7 + 10], 0.3846f);

    ExitCapture capture;
    InstallSeparatedModels();
    LipsyncMemoryManagerObject manager;
    HMMSet* set = CreateHMMList("reclist");
    LoadHMMDefs(*set);
    Bigram* bigram = ReadBigram("bigram", *set);
    ASSERT_EQ(bigram->n, 10);
    EXPECT_EQ(BigramIndex(*bigram, "X"), 7);
    EXPECT_EQ(BigramIndex(*bigram, "ENTER"), 8);
    EXPECT_EQ(BigramIndex(*bigram, "EXIT"), 9);
    EXPECT_FLOAT_EQ(bigram->logProb(1, 3), std::log(0.3782f));
    EXPECT_EQ(bigram->logProb(0, 0), -1e10f);
    EXPECT_EQ(bigram->labels[4], InternName("E"));
}

TEST(Bigram, ChecksRefuseBadTables) {
    EXPECT_EQ(ReadBigramWith(kLabels, ShippedValues()), "");
    std::vector<float> values = ShippedValues();
    values[1 * 10 + 1] -= 0.02f; // row B sums to 0.98
    EXPECT_EQ(ReadBigramWith(kLabels, values), "ReadBigram: Row 2 (B) of bigram sums to 0.980");
    values = ShippedValues();
    values[1 * 10 + 1] += 0.0099f; // 1.0099 is still accepted
    EXPECT_EQ(ReadBigramWith(kLabels, values), "");
    values = ShippedValues();
    values[2 * 10 + 0] = -0.1113f;
    values[2 * 10 + 1] += 2 * 0.1113f;
    EXPECT_EQ(ReadBigramWith(kLabels, values).rfind("ReadBigram: Negative probability", 0), 0u);
    std::vector<float> labels = kLabels;
    labels[3] = 'Q';
    EXPECT_EQ(ReadBigramWith(labels, ShippedValues()).rfind("ReadBigram: Unknown label 81 in row 4", 0), 0u);
    labels = kLabels;
    labels[4] = 'A';
    EXPECT_EQ(ReadBigramWith(labels, ShippedValues()), "ReadBigram: Label A appears twice in bigram");
    std::vector<unsigned char> bytes = LipsyncMakeBigram(kLabels, ShippedValues());
    bytes.resize(bytes.size() - 4);
    ExitCapture capture;
    LipsyncFiles::setOverride("bigram", bytes);
    LipsyncMemoryManagerObject manager;
    HMMSet* set = CreateHMMList("reclist");
    EXPECT_THROW(ReadBigram("bigram", *set), LipsyncFatalError);
}

TEST(Network, StoredDefinitionMakesAFreeLoop) {
    ExitCapture capture;
    InstallSeparatedModels();
    LipsyncMemoryManagerObject manager;
    HMMSet* set = CreateHMMList("reclist");
    LoadHMMDefs(*set);
    Network* net = ParseNetwork("network");
    AttachPhoneInsts(*net, *set);
    LabelPhoneInsts(*net);
    EXPECT_EQ(net->numNodes, 10);
    EXPECT_STREQ(net->enter->name->name, "ENTER");
    EXPECT_STREQ(net->exit->name->name, "EXIT");
    ASSERT_EQ(net->enter->succ->count, 8);
    ASSERT_EQ(net->exit->pred->count, 8);
    int models = 0;
    for (NetNode* n = net->chain; n != nullptr; n = n->chain) {
        if (n->inst == nullptr)
            continue;
        ++models;
        EXPECT_EQ(n->inst->kind, kInstUnitEnd);
        EXPECT_EQ(n->inst->hmm, FindHMM(*set, n->name->name));
        ASSERT_EQ(n->succ->count, 9) << n->name->name;
        EXPECT_EQ(n->succ->links[8], net->exit);
        EXPECT_EQ(n->pred->count, 9);
        EXPECT_EQ(n->name, InternName(n->name->name));
    }
    EXPECT_EQ(models, 8);
    // A comment, a sequence and an option.
    LipsyncFiles::setOverride("network", {});
    const std::string text = "/* two */ $a = A | B; $b = C;\n( $a [ $b ] X )";
    LipsyncFiles::setOverride("network", std::vector<unsigned char>(text.begin(), text.end()));
    Network* small = ParseNetwork("network");
    EXPECT_EQ(small->numNodes, 6);
    EXPECT_EQ(small->enter->succ->count, 2);
    EXPECT_EQ(small->exit->pred->count, 1);
    const std::string bad = "$a = A | ;\n($a)";
    LipsyncFiles::setOverride("network", std::vector<unsigned char>(bad.begin(), bad.end()));
    EXPECT_THROW(ParseNetwork("network"), LipsyncFatalError);
}
