#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/SpeechFrontEnd.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;

// Static rows (c1..c8, raw log energy) of a block by a plain DFT in double precision.
std::vector<std::vector<double>> ReferenceRows(const std::vector<int16_t>& samples) {
    const int frames = samples.size() < 200 ? 0 : int((samples.size() - 200) / 80 + 1);
    const double fres = 1e7 / (1250.0 * 256 * 700);
    auto mel = [&](int k) { return 1127.0 * std::log(1.0 + (k - 1) * fres); };
    const double ms = mel(129);
    std::vector<double> cf(32);
    for (int i = 1; i <= 31; ++i)
        cf[size_t(i)] = i / 31.0 * ms;
    std::vector<std::vector<double>> rows;
    for (int f = 0; f < frames; ++f) {
        std::vector<double> s(200);
        double energy = 0.0;
        for (int i = 0; i < 200; ++i) {
            s[size_t(i)] = samples[size_t(f * 80 + i)];
            energy += s[size_t(i)] * s[size_t(i)];
        }
        for (int i = 199; i > 0; --i)
            s[size_t(i)] -= 0.9375 * s[size_t(i - 1)];
        s[0] *= 1.0 - 0.9375;
        for (int i = 0; i < 200; ++i)
            s[size_t(i)] *= 0.54 - 0.46 * std::cos(2 * kPi * i / 199.0);
        std::vector<double> acc(31, 0.0);
        for (int k = 2; k <= 128; ++k) {
            double re = 0.0, im = 0.0;
            for (int i = 0; i < 200; ++i) {
                re += s[size_t(i)] * std::cos(2 * kPi * (k - 1) * i / 256.0);
                im -= s[size_t(i)] * std::sin(2 * kPi * (k - 1) * i / 256.0);
            }
            const double mag = std::sqrt(re * re + im * im);
            // The channel whose centre is the first at or above the bin's mel value.
            int upper = 1;
            while (upper <= 31 && cf[size_t(upper)] < mel(k))
                ++upper;
            const double lower = upper > 1 ? cf[size_t(upper - 1)] : 0.0;
            const double w = (cf[size_t(upper)] - mel(k)) / (cf[size_t(upper)] - lower);
            if (upper - 1 > 0)
                acc[size_t(upper - 1)] += mag * w;
            if (upper <= 30)
                acc[size_t(upper)] += mag * (1 - w);
        }
        std::vector<double> row(9);
        for (int i = 1; i <= 8; ++i) {
            double sum = 0.0;
            for (int j = 1; j <= 30; ++j)
                sum += std::log(std::max(acc[size_t(j)], 1.0)) * std::cos(i * kPi / 30 * (j - 0.5));
            row[size_t(i - 1)] = std::sqrt(2.0 / 30) * sum;
        }
        row[8] = energy < 2.45e-308 ? 3.0 : std::log(energy);
        rows.push_back(row);
    }
    return rows;
}

SpeechBuffer Analyse(const std::vector<int16_t>& samples, bool coerce) {
    SpeechBuffer buffer;
    computeObservations(samples.data(), int64_t(samples.size()) * 2, buffer);
    if (coerce)
        coerceToTargetKind(buffer);
    return buffer;
}

} // namespace

TEST(FrontEnd, FrameCountsAtBlockBoundaries) {
    EXPECT_EQ(LipsyncFrameCount(0), 0);
    EXPECT_EQ(LipsyncFrameCount(199), 0);
    EXPECT_EQ(LipsyncFrameCount(200), 1);
    EXPECT_EQ(LipsyncFrameCount(279), 1);
    EXPECT_EQ(LipsyncFrameCount(280), 2);
    EXPECT_EQ(LipsyncFrameCount(65536), 817);
    LipsyncMemoryManagerObject manager;
    SpeechBuffer buffer = Analyse(std::vector<int16_t>(199, 100), true);
    EXPECT_EQ(buffer.sampleCount, 0);
    buffer = Analyse(std::vector<int16_t>(65536, 0), true);
    EXPECT_EQ(buffer.sampleCount, 817);
    EXPECT_EQ(buffer.samplePeriod, 100000);
    EXPECT_EQ(buffer.sampleSize, 108);
    EXPECT_EQ(buffer.parmKind, 838);
}

// Weights worked out by hand from the mel scale (bins counted from 1).
TEST(FrontEnd, FilterbankWeightsOfChosenBins) {
    LipsyncMemoryManagerObject manager;
    Analyse(std::vector<int16_t>(200, 0), false);
    struct Expected {
        int bin, channel;
        double weight;
    };
    const Expected expected[] = {{1, 0, 1.0},
                                 {2, 0, 0.288992574589389},
                                 {3, 1, 0.6077432870113267},
                                 {10, 5, 0.501654748438586},
                                 {50, 18, 0.12822317672561126},
                                 {100, 27, 0.48718775084640226},
                                 {127, 30, 0.21793474531113607},
                                 {128, 30, 0.10860268662366268}};
    for (const Expected& e : expected) {
        int channel;
        float weight;
        LipsyncFilterbankBin(e.bin, channel, weight);
        EXPECT_EQ(channel, e.channel) << "bin " << e.bin;
        EXPECT_NEAR(weight, e.weight, 2e-5) << "bin " << e.bin;
    }
}

TEST(FrontEnd, MatchesPlainDftReferenceOnRandomSpeechLikeInput) {
    std::mt19937 random(1234);
    std::normal_distribution<double> noise(0.0, 1.0);
    std::vector<int16_t> samples(1000);
    double phase = 0.0;
    for (size_t i = 0; i < samples.size(); ++i) {
        phase += 2 * kPi * (300 + 200 * std::sin(i * 0.003)) / 8000.0;
        double v = 6000 * std::sin(phase) + 2500 * std::sin(2.7 * phase) + 800 * noise(random);
        samples[i] = static_cast<int16_t>(std::lround(std::clamp(v, -32768.0, 32767.0)));
    }
    const auto reference = ReferenceRows(samples);
    LipsyncMemoryManagerObject manager;
    SpeechBuffer buffer = Analyse(samples, false);
    ASSERT_EQ(buffer.sampleCount, int(reference.size()));
    ASSERT_EQ(buffer.sampleCount, 11);
    double top = -1e300;
    for (const auto& row : reference)
        top = std::max(top, row[8]);
    for (int f = 0; f < buffer.sampleCount; ++f) {
        for (int i = 0; i < 8; ++i)
            EXPECT_NEAR(buffer.row(f)[i], reference[size_t(f)][size_t(i)], 2e-3)
                << "frame " << f << " c" << i + 1;
        EXPECT_NEAR(buffer.row(f)[8], reference[size_t(f)][8] - top + 1.0, 1e-4) << "frame " << f;
    }
}

TEST(FrontEnd, SilenceAndConstantEnergy) {
    LipsyncMemoryManagerObject manager;
    // Digital silence: log energy 3.0, all filterbank logs 0, so all cepstra 0; a block of
    // constant energy normalises to 1.0 everywhere.
    SpeechBuffer buffer = Analyse(std::vector<int16_t>(600, 0), true);
    ASSERT_EQ(buffer.sampleCount, 6);
    for (int f = 0; f < 6; ++f)
        for (int i = 0; i < 27; ++i)
            EXPECT_EQ(buffer.row(f)[i], i == 8 ? 1.0f : 0.0f) << f << " " << i;
    // Silence then sound: the loudest frame has 1.0, silence has 3.0 - ln(e max) + 1.
    std::vector<int16_t> samples(600, 0);
    for (size_t i = 300; i < 600; ++i)
        samples[i] = i % 2 ? 1000 : -1000;
    buffer = Analyse(samples, false);
    EXPECT_FLOAT_EQ(buffer.row(5)[8], 1.0f);
    EXPECT_NEAR(buffer.row(0)[8], 3.0 - std::log(200.0 * 1e6) + 1.0, 1e-5);
}

TEST(FrontEnd, DeltasFollowRegressionAndEndRules) {
    std::mt19937 random(99);
    std::uniform_int_distribution<int> value(-20000, 20000);
    for (int length : {200, 360, 440, 1000}) {
        std::vector<int16_t> samples(static_cast<size_t>(length));
        for (auto& s : samples)
            s = static_cast<int16_t>(value(random));
        LipsyncMemoryManagerObject manager;
        SpeechBuffer statics = Analyse(samples, false);
        const int frames = statics.sampleCount;
        std::vector<float> x(size_t(frames) * 9);
        for (int f = 0; f < frames; ++f)
            for (int c = 0; c < 9; ++c)
                x[size_t(f * 9 + c)] = statics.row(f)[c];
        SpeechBuffer full = Analyse(samples, true);
        ASSERT_EQ(full.sampleCount, frames);
        auto regress = [&](auto at, int t) -> double {
            if (frames == 1)
                return 0.0;
            if (t >= 2 && t <= frames - 3)
                return ((at(t + 1) - at(t - 1)) + 2 * (at(t + 2) - at(t - 2))) / 10.0;
            if (t < 2)
                return at(t + 1) - at(t);
            return at(t) - at(t - 1);
        };
        for (int f = 0; f < frames; ++f)
            for (int c = 0; c < 9; ++c) {
                EXPECT_FLOAT_EQ(full.row(f)[c], x[size_t(f * 9 + c)]);
                auto xs = [&](int t) { return double(x[size_t(t * 9 + c)]); };
                EXPECT_NEAR(full.row(f)[9 + c], regress(xs, f), 1e-3) << length << " " << f << " " << c;
                auto ds = [&](int t) { return double(full.row(t)[9 + c]); };
                EXPECT_NEAR(full.row(f)[18 + c], regress(ds, f), 1e-3) << length << " " << f << " " << c;
            }
    }
}

TEST(FrontEnd, StreamsPutEnergiesLast) {
    LipsyncMemoryManagerObject manager;
    SpeechBuffer buffer;
    std::vector<float> row(27);
    for (int i = 0; i < 27; ++i)
        row[size_t(i)] = float(i + 1);
    buffer.sampleCount = 1;
    buffer.sampleSize = 108;
    buffer.parmKind = 838;
    buffer.data = row.data();
    const int widths[] = {0, 8, 8, 8, 3};
    Observation o = MakeStreams(4, widths);
    frameToStreams(buffer, 0, o);
    // c1-c8 are 1-8, E 9, d1-d8 10-17, dE 18, a1-a8 19-26, aE 27.
    const float expected[4][8] = {{1, 2, 3, 4, 5, 6, 7, 8},
                                  {10, 11, 12, 13, 14, 15, 16, 17},
                                  {19, 20, 21, 22, 23, 24, 25, 26},
                                  {9, 18, 27}};
    for (int s = 1; s <= 4; ++s)
        for (int i = 1; i <= widths[s]; ++i)
            EXPECT_EQ((*o.fv[s])[i], expected[s - 1][i - 1]) << s << " " << i;
}

TEST(FrontEnd, LogAddition) {
    EXPECT_DOUBLE_EQ(LAdd(std::log(0.25), std::log(0.5)), std::log(0.75));
    EXPECT_DOUBLE_EQ(LAdd(0.0, -30.0), 0.0);
    EXPECT_DOUBLE_EQ(LAdd(-1e10, -3e10), -1e10);
    EXPECT_DOUBLE_EQ(LAdd(-1e10, -1e10), -1e10 + std::log(2.0));
    EXPECT_DOUBLE_EQ(LAdd(-6e9, -6e9 - 50), -1e10);
}

// The discrete cosine transform against sphinx_fe's HTK transform of log spectra.
TEST(FrontEnd, DctMatchesSphinxFe) {
    if (std::system("command -v sphinx_fe > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "sphinx_fe (sphinxbase-utils) is not installed";
    std::mt19937 random(7);
    std::uniform_real_distribution<double> value(0.0, 12.0);
    const int rows = 5;
    std::vector<double> logs(size_t(rows) * 30);
    for (double& v : logs)
        v = value(random);
    const std::string in = testing::TempDir() + "lipsync_dct_in.mfc";
    const std::string out = testing::TempDir() + "lipsync_dct_out.mfc";
    {
        std::ofstream file(in, std::ios::binary);
        int32_t count = rows * 30;
        file.write(reinterpret_cast<const char*>(&count), 4);
        for (double v : logs) {
            float f = static_cast<float>(v);
            file.write(reinterpret_cast<const char*>(&f), 4);
        }
    }
    const std::string command = "sphinx_fe -spec2cep yes -transform htk -lifter 0 -nfilt 30 -ncep 9 -i " +
                                in + " -o " + out + " > /dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream file(out, std::ios::binary);
    int32_t count = 0;
    file.read(reinterpret_cast<char*>(&count), 4);
    ASSERT_EQ(count, rows * 9);
    std::vector<float> theirs(static_cast<size_t>(count));
    file.read(reinterpret_cast<char*>(theirs.data()), count * 4);
    for (int r = 0; r < rows; ++r) {
        std::vector<double> rounded(30);
        for (int j = 0; j < 30; ++j)
            rounded[size_t(j)] = static_cast<float>(logs[size_t(r * 30 + j)]);
        float ours[8];
        LipsyncDct(rounded.data(), ours);
        for (int i = 0; i < 8; ++i)
            EXPECT_NEAR(ours[i], theirs[size_t(r * 9 + i + 1)], 2e-5) << "row " << r << " c" << i + 1;
    }
    std::remove(in.c_str());
    std::remove(out.c_str());
}

TEST(MemoryManager, ChainReleaseAndTearDown) {
    EXPECT_EQ(LipsyncMemoryManagerObject::Current(), nullptr);
    {
        LipsyncMemoryManagerObject manager;
        EXPECT_EQ(LipsyncMemoryManagerObject::Current(), &manager);
        auto* a = static_cast<unsigned char*>(manager.allocate(16));
        void* b = manager.allocateZeroed(4, 8);
        for (int i = 0; i < 32; ++i)
            ASSERT_EQ(static_cast<unsigned char*>(b)[i], 0);
        for (int i = 0; i < 16; ++i)
            a[i] = static_cast<unsigned char>(i);
        auto* c = static_cast<unsigned char*>(manager.reallocate(a, 8));
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(c[i], i);
        EXPECT_EQ(manager.blockCount(), 2u);
        manager.release(b);
        EXPECT_EQ(manager.blockCount(), 1u);
        Vector* v = CreateVector(5);
        EXPECT_EQ(v->size(), 5);
        EXPECT_EQ((*v)[5], 0.0f);
    }
    EXPECT_EQ(LipsyncMemoryManagerObject::Current(), nullptr);
}
