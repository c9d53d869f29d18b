// Trains the eight mouth-shape models from synthetic labelled speech and measures them.
//
//   lipsync-train train --sentences DIR --out FILE [--seed N] [--utterances N] [--rounds N]
//   lipsync-train eval  --sentences DIR --models FILE [--seed N] [--utterances N] [--voices seen|unseen]
//
// Features come from the program's own front end; the models are written by the
// program's model writer and must load through its own reader with every check.
#include "Corpus.h"
#include "Evaluate.h"
#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/LipsyncModelWriter.h"
#include "lipsync/Recogniser.h"
#include "lipsync/SpeechFrontEnd.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kMixtures = 7;
constexpr int kStates = 3;
constexpr int kWidths[4] = {8, 8, 8, 3};
constexpr int kOffsets[4] = {0, 8, 16, 24};
constexpr double kLog2Pi = 1.8378770664093453;
const char* const kShapes = "ABCDEFGX";

using Frame = std::array<float, 27>; // in stream order: c, d, a, then E dE aE

const std::vector<std::string> kSeenVoices = {"en-us",          "en-gb-x-rp",    "en",       "en-029",
                                              "en-gb-scotland", "en-us+m3",      "en-us+f2", "en+f4",
                                              "en-us+klatt",    "en-gb-x-rp+m1", "en-us+f5", "en-us+m7"};
const std::vector<std::string> kUnseenVoices = {"en-gb-x-gbcwmd+m6", "en-gb-x-gbclan+f1"};

struct Utterance {
    std::vector<Frame> frames;
    std::vector<int> labels; // shape index of each analysis frame
    LabelledSpeech speech;
};

int ShapeIndex(char letter) {
    return int(std::strchr(kShapes, letter) - kShapes);
}

std::vector<Frame> Features(const std::vector<int16_t>& samples) {
    LipsyncMemoryManagerObject manager;
    SpeechBuffer buffer;
    computeObservations(samples.data(), int64_t(samples.size()) * 2, buffer);
    coerceToTargetKind(buffer);
    const int widths[] = {0, 8, 8, 8, 3};
    Observation o = MakeStreams(4, widths);
    std::vector<Frame> frames(size_t(buffer.sampleCount));
    for (int t = 0; t < buffer.sampleCount; ++t) {
        frameToStreams(buffer, t, o);
        for (int s = 0; s < 4; ++s)
            for (int i = 0; i < kWidths[s]; ++i)
                frames[size_t(t)][size_t(kOffsets[s] + i)] = (*o.fv[s + 1])[i + 1];
    }
    return frames;
}

// Sentences: the own lists and the licence texts; every tenth licence sentence and the
// whole held-out list are kept out of training.
void LoadCorpusText(const std::string& dir, std::vector<std::string>& train,
                    std::vector<std::string>& heldOut) {
    train = LoadSentences(dir + "/own.txt");
    heldOut = LoadSentences(dir + "/heldout.txt");
    std::ifstream list(dir + "/licences.txt");
    std::string path;
    while (std::getline(list, path)) {
        if (path.empty() || path[0] == '#')
            continue;
        const std::vector<std::string> sentences = LoadSentences(path);
        for (size_t i = 0; i < sentences.size(); ++i)
            (i % 10 == 3 ? heldOut : train).push_back(sentences[i]);
    }
}

std::vector<Utterance> MakeSet(const std::vector<std::string>& sentences,
                               const std::vector<std::string>& voices, int count, uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<size_t> pickSentence(0, sentences.size() - 1);
    std::uniform_int_distribution<size_t> pickVoice(0, voices.size() - 1);
    std::uniform_int_distribution<int> rate(120, 230), pitch(25, 75), sentencesPer(1, 3);
    std::vector<Utterance> set;
    for (int u = 0; u < count; ++u) {
        SpeakerSpec speaker{voices[pickVoice(random)], rate(random), pitch(random)};
        std::vector<std::string> text;
        for (int k = sentencesPer(random); k > 0; --k)
            text.push_back(sentences[pickSentence(random)]);
        Utterance utt;
        utt.speech = MakeUtterance(speaker, text, AugmentSpec(), random);
        if (utt.speech.samples.size() < 2000)
            continue;
        utt.frames = Features(utt.speech.samples);
        for (size_t t = 0; t < utt.frames.size(); ++t)
            utt.labels.push_back(
                ShapeIndex(utt.speech.labels[std::min(utt.speech.labels.size() - 1, t * 80 + 100)]));
        set.push_back(std::move(utt));
    }
    return set;
}

// One full-covariance Gaussian in double precision.
struct Gaussian {
    double weight = 0;
    std::vector<double> mean, inverse; // inverse is d x d
    double gconst = 0;                 // d ln(2 pi) + ln |covariance|
};

struct Mixture {
    int dim = 0;
    std::vector<Gaussian> parts;
    double logLikelihood(const float* x) const {
        double best = -1e300, sum = 0;
        double scores[kMixtures];
        for (size_t k = 0; k < parts.size(); ++k) {
            scores[k] = std::log(std::max(parts[k].weight, 1e-300)) + logDensity(parts[k], x);
            best = std::max(best, scores[k]);
        }
        for (size_t k = 0; k < parts.size(); ++k)
            sum += std::exp(scores[k] - best);
        return best + std::log(sum);
    }
    double logDensity(const Gaussian& g, const float* x) const {
        double d[8];
        for (int i = 0; i < dim; ++i)
            d[i] = double(x[i]) - g.mean[size_t(i)];
        double q = 0;
        for (int i = 0; i < dim; ++i) {
            double row = 0;
            for (int k = 0; k < dim; ++k)
                row += g.inverse[size_t(i * dim + k)] * d[k];
            q += d[i] * row;
        }
        return -0.5 * (g.gconst + q);
    }
};

// Inverse and log determinant of a symmetric positive definite matrix by Cholesky.
bool InvertSpd(const std::vector<double>& a, int n, std::vector<double>& inverse, double& logDet) {
    std::vector<double> l(size_t(n * n), 0.0);
    logDet = 0;
    for (int j = 0; j < n; ++j) {
        double s = a[size_t(j * n + j)];
        for (int k = 0; k < j; ++k)
            s -= l[size_t(j * n + k)] * l[size_t(j * n + k)];
        if (s <= 1e-12)
            return false;
        l[size_t(j * n + j)] = std::sqrt(s);
        logDet += std::log(s);
        for (int i = j + 1; i < n; ++i) {
            double t = a[size_t(i * n + j)];
            for (int k = 0; k < j; ++k)
                t -= l[size_t(i * n + k)] * l[size_t(j * n + k)];
            l[size_t(i * n + j)] = t / l[size_t(j * n + j)];
        }
    }
    inverse.assign(size_t(n * n), 0.0);
    for (int c = 0; c < n; ++c) {
        std::vector<double> y(size_t(n), 0.0), x(size_t(n), 0.0);
        for (int i = 0; i < n; ++i) {
            double s = i == c ? 1.0 : 0.0;
            for (int k = 0; k < i; ++k)
                s -= l[size_t(i * n + k)] * y[size_t(k)];
            y[size_t(i)] = s / l[size_t(i * n + i)];
        }
        for (int i = n - 1; i >= 0; --i) {
            double s = y[size_t(i)];
            for (int k = i + 1; k < n; ++k)
                s -= l[size_t(k * n + i)] * x[size_t(k)];
            x[size_t(i)] = s / l[size_t(i * n + i)];
        }
        for (int i = 0; i < n; ++i)
            inverse[size_t(i * n + c)] = x[size_t(i)];
    }
    return true;
}

// Sets one component from weighted sums, with shrinkage towards the diagonal and a floor
// from the pooled variances so that no covariance is singular.
void SetComponent(Gaussian& g, int d, double n, const std::vector<double>& sum,
                  const std::vector<double>& scatter, const std::vector<double>& pooledVar, double total) {
    g.weight = std::max(n / total, 2e-5);
    g.mean.assign(size_t(d), 0.0);
    std::vector<double> cov(size_t(d * d), 0.0);
    const double count = std::max(n, 1e-9);
    for (int i = 0; i < d; ++i)
        g.mean[size_t(i)] = sum[size_t(i)] / count;
    const double shrink = std::min(1.0, 0.05 + 4.0 * d / (count + 1.0));
    for (int i = 0; i < d; ++i)
        for (int k = 0; k < d; ++k) {
            double c = scatter[size_t(i * d + k)] / count - g.mean[size_t(i)] * g.mean[size_t(k)];
            if (i != k)
                c *= 1.0 - shrink;
            cov[size_t(i * d + k)] = c;
        }
    for (int i = 0; i < d; ++i) {
        double& v = cov[size_t(i * d + i)];
        v = (1.0 - shrink) * v + shrink * pooledVar[size_t(i)];
        v = std::max(v, 0.02 * pooledVar[size_t(i)]) + 1e-4;
    }
    double logDet;
    while (!InvertSpd(cov, d, g.inverse, logDet))
        for (int i = 0; i < d; ++i)
            cov[size_t(i * d + i)] += 0.1 * pooledVar[size_t(i)];
    g.gconst = d * kLog2Pi + logDet;
}

// Fits a mixture of kMixtures Gaussians to `data` (pointers to d floats): k-means++ seeds
// and Lloyd steps for a first model, then EM steps.
Mixture FitMixture(const std::vector<const float*>& data, int d, const Mixture* start, std::mt19937& random,
                   int emSteps) {
    Mixture m;
    m.dim = d;
    const size_t n = data.size();
    std::vector<double> pooledMean(size_t(d), 0.0), pooledVar(size_t(d), 0.0);
    for (const float* x : data)
        for (int i = 0; i < d; ++i)
            pooledMean[size_t(i)] += x[i];
    for (int i = 0; i < d; ++i)
        pooledMean[size_t(i)] /= double(std::max<size_t>(n, 1));
    for (const float* x : data)
        for (int i = 0; i < d; ++i)
            pooledVar[size_t(i)] += (x[i] - pooledMean[size_t(i)]) * (x[i] - pooledMean[size_t(i)]);
    for (int i = 0; i < d; ++i)
        pooledVar[size_t(i)] = std::max(pooledVar[size_t(i)] / double(std::max<size_t>(n, 1)), 1e-3);

    std::vector<std::vector<double>> centres;
    if (start != nullptr) {
        m = *start;
    } else {
        std::uniform_int_distribution<size_t> pick(0, std::max<size_t>(n, 1) - 1);
        std::vector<double> nearest(n, 1e300);
        for (int k = 0; k < kMixtures; ++k) {
            size_t chosen = n > 0 ? pick(random) : 0;
            if (k > 0 && n > 0) {
                double total = 0;
                for (double v : nearest)
                    total += v;
                double r = std::uniform_real_distribution<double>(0, total)(random);
                for (size_t i = 0; i < n; ++i) {
                    r -= nearest[i];
                    if (r <= 0) {
                        chosen = i;
                        break;
                    }
                }
            }
            std::vector<double> c(size_t(d), 0.0);
            for (int i = 0; i < d && n > 0; ++i)
                c[size_t(i)] = data[chosen][i] + 1e-3 * k;
            centres.push_back(c);
            for (size_t p = 0; p < n; ++p) {
                double dist = 0;
                for (int i = 0; i < d; ++i)
                    dist += (data[p][i] - c[size_t(i)]) * (data[p][i] - c[size_t(i)]) / pooledVar[size_t(i)];
                nearest[p] = std::min(nearest[p], dist);
            }
        }
        std::vector<int> owner(n, 0);
        for (int step = 0; step < 12; ++step) {
            std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
            std::vector<double> counts(kMixtures, 0.0);
            for (size_t p = 0; p < n; ++p) {
                double best = 1e300;
                for (int k = 0; k < kMixtures; ++k) {
                    double dist = 0;
                    for (int i = 0; i < d; ++i)
                        dist += (data[p][i] - centres[size_t(k)][size_t(i)]) *
                                (data[p][i] - centres[size_t(k)][size_t(i)]) / pooledVar[size_t(i)];
                    if (dist < best) {
                        best = dist;
                        owner[p] = k;
                    }
                }
                counts[size_t(owner[p])] += 1;
                for (int i = 0; i < d; ++i)
                    sums[size_t(owner[p])][size_t(i)] += data[p][i];
            }
            for (int k = 0; k < kMixtures; ++k)
                if (counts[size_t(k)] > 0)
                    for (int i = 0; i < d; ++i)
                        centres[size_t(k)][size_t(i)] = sums[size_t(k)][size_t(i)] / counts[size_t(k)];
        }
        m.parts.assign(kMixtures, Gaussian());
        std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
        std::vector<std::vector<double>> scatters(kMixtures, std::vector<double>(size_t(d * d), 0.0));
        std::vector<double> counts(kMixtures, 0.0);
        for (size_t p = 0; p < n; ++p) {
            const size_t k = size_t(owner[p]);
            counts[k] += 1;
            for (int i = 0; i < d; ++i) {
                sums[k][size_t(i)] += data[p][i];
                for (int j = 0; j < d; ++j)
                    scatters[k][size_t(i * d + j)] += double(data[p][i]) * data[p][j];
            }
        }
        for (size_t k = 0; k < size_t(kMixtures); ++k) {
            if (counts[k] < 1) {
                for (int i = 0; i < d; ++i) {
                    sums[k][size_t(i)] = centres[k][size_t(i)];
                    scatters[k][size_t(i * d + i)] =
                        centres[k][size_t(i)] * centres[k][size_t(i)] + pooledVar[size_t(i)];
                }
                counts[k] = 1;
            }
            SetComponent(m.parts[k], d, counts[k], sums[k], scatters[k], pooledVar,
                         double(std::max<size_t>(n, 1)));
        }
    }

    for (int step = 0; step < emSteps && n > 0; ++step) {
        std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
        std::vector<std::vector<double>> scatters(kMixtures, std::vector<double>(size_t(d * d), 0.0));
        std::vector<double> counts(kMixtures, 0.0);
        double post[kMixtures];
        for (const float* x : data) {
            double best = -1e300, total = 0;
            for (size_t k = 0; k < size_t(kMixtures); ++k) {
                post[k] = std::log(m.parts[k].weight) + m.logDensity(m.parts[k], x);
                best = std::max(best, post[k]);
            }
            for (size_t k = 0; k < size_t(kMixtures); ++k)
                total += post[k] = std::exp(post[k] - best);
            for (size_t k = 0; k < size_t(kMixtures); ++k) {
                const double r = post[k] / total;
                if (r < 1e-6)
                    continue;
                counts[k] += r;
                for (int i = 0; i < d; ++i) {
                    sums[k][size_t(i)] += r * x[i];
                    for (int j = i; j < d; ++j)
                        scatters[k][size_t(i * d + j)] += r * double(x[i]) * x[j];
                }
            }
        }
        for (size_t k = 0; k < size_t(kMixtures); ++k) {
            for (int i = 0; i < d; ++i)
                for (int j = 0; j < i; ++j)
                    scatters[k][size_t(i * d + j)] = scatters[k][size_t(j * d + i)];
            if (counts[k] < 0.5) // an empty component keeps its place with a tiny weight
                continue;
            SetComponent(m.parts[k], d, counts[k], sums[k], scatters[k], pooledVar, double(n));
        }
        double weights = 0;
        for (const Gaussian& g : m.parts)
            weights += g.weight;
        for (Gaussian& g : m.parts)
            g.weight /= weights;
    }
    return m;
}

struct ShapeModel {
    std::array<std::array<Mixture, 4>, kStates> states;
    std::array<double, kStates> selfLoop{0.6, 0.6, 0.6};
    double emission(int state, const Frame& f) const {
        double total = 0;
        for (int s = 0; s < 4; ++s)
            total += states[size_t(state)][size_t(s)].logLikelihood(f.data() + kOffsets[s]);
        return total;
    }
};

struct Segment {
    const Utterance* utt;
    size_t start, length;
};

// Best left-to-right path of a segment through the three states; writes the state of each frame.
void AlignSegment(const ShapeModel& model, const Segment& seg, std::vector<int>& states) {
    const size_t n = seg.length;
    states.assign(n, 0);
    if (n < size_t(kStates)) {
        for (size_t t = 0; t < n; ++t)
            states[t] = int(t * kStates / n);
        return;
    }
    std::vector<std::array<double, kStates>> score(n), emit(n);
    std::vector<std::array<int, kStates>> from(n);
    for (size_t t = 0; t < n; ++t)
        for (int j = 0; j < kStates; ++j)
            emit[t][size_t(j)] = model.emission(j, seg.utt->frames[seg.start + t]);
    const double never = -1e300;
    for (int j = 0; j < kStates; ++j)
        score[0][size_t(j)] = j == 0 ? emit[0][0] : never;
    for (size_t t = 1; t < n; ++t)
        for (int j = 0; j < kStates; ++j) {
            const double stay = score[t - 1][size_t(j)] + std::log(model.selfLoop[size_t(j)]);
            const double move =
                j > 0 ? score[t - 1][size_t(j - 1)] + std::log(1 - model.selfLoop[size_t(j - 1)]) : never;
            score[t][size_t(j)] = std::max(stay, move) + emit[t][size_t(j)];
            from[t][size_t(j)] = stay >= move ? j : j - 1;
        }
    int j = kStates - 1;
    for (size_t t = n; t-- > 0;) {
        states[t] = j;
        if (t > 0)
            j = from[t][size_t(j)];
    }
}

ShapeModel TrainShape(const std::vector<Segment>& segments, int rounds, std::mt19937& random) {
    ShapeModel model;
    std::vector<std::vector<int>> alignment(segments.size());
    for (size_t i = 0; i < segments.size(); ++i)
        for (size_t t = 0; t < segments[i].length; ++t)
            alignment[i].push_back(int(t * kStates / segments[i].length));
    for (int round = 0; round <= rounds; ++round) {
        if (round > 0)
            for (size_t i = 0; i < segments.size(); ++i)
                AlignSegment(model, segments[i], alignment[i]);
        for (int j = 0; j < kStates; ++j) {
            std::vector<const Frame*> frames;
            for (size_t i = 0; i < segments.size(); ++i)
                for (size_t t = 0; t < segments[i].length; ++t)
                    if (alignment[i][t] == j)
                        frames.push_back(&segments[i].utt->frames[segments[i].start + t]);
            // Bounded work per state: an even subsample of at most 25,000 frames.
            std::vector<const Frame*> used;
            const size_t stride = std::max<size_t>(1, frames.size() / 25000 + 1);
            for (size_t k = 0; k < frames.size(); k += stride)
                used.push_back(frames[k]);
            for (int s = 0; s < 4; ++s) {
                std::vector<const float*> data;
                for (const Frame* f : used)
                    data.push_back(f->data() + kOffsets[s]);
                const Mixture* previous = round > 0 ? &model.states[size_t(j)][size_t(s)] : nullptr;
                model.states[size_t(j)][size_t(s)] =
                    FitMixture(data, kWidths[s], previous, random, round == 0 ? 4 : 3);
            }
            const double count = double(frames.size());
            const double loop = count > 0 ? 1.0 - double(segments.size()) / count : 0.6;
            model.selfLoop[size_t(j)] = std::clamp(loop, 0.5, 0.95);
        }
    }
    return model;
}

LipsyncModelParams ToParams(const ShapeModel& model) {
    LipsyncModelParams p;
    p.widths = {8, 8, 8, 3};
    for (int j = 0; j < kStates; ++j) {
        LipsyncStateModel state;
        state.streamWeights = {1, 1, 1, 1};
        for (int s = 0; s < 4; ++s) {
            std::vector<LipsyncGaussian> mixture;
            const Mixture& m = model.states[size_t(j)][size_t(s)];
            for (const Gaussian& g : m.parts) {
                LipsyncGaussian out;
                out.weight = float(g.weight);
                out.mean.assign(g.mean.begin(), g.mean.end());
                out.inverse.assign(g.inverse.begin(), g.inverse.end());
                mixture.push_back(out);
            }
            // Weights that sum to 1 in float.
            double sum = 0;
            for (const auto& g : mixture)
                sum += g.weight;
            for (auto& g : mixture)
                g.weight = float(g.weight / sum);
            state.streams.push_back(mixture);
        }
        p.states.push_back(state);
    }
    p.transitions.assign(5, std::vector<float>(5, 0.0f));
    p.transitions[0][1] = 1.0f;
    for (int j = 0; j < kStates; ++j) {
        const float loop = float(model.selfLoop[size_t(j)]);
        p.transitions[size_t(j + 1)][size_t(j + 1)] = loop;
        p.transitions[size_t(j + 1)][size_t(j + 2)] = 1.0f - loop;
    }
    return p;
}

void InstallModels(const std::vector<unsigned char>& bytes) {
    const size_t each = bytes.size() / 8;
    for (int i = 0; i < 8; ++i)
        LipsyncFiles::setOverride(
            std::string(1, kShapes[i]),
            std::vector<unsigned char>(bytes.begin() + long(i * each), bytes.begin() + long((i + 1) * each)));
}

// Loads the models through the program's reader with every check; throws on failure.
void CheckModels(const std::vector<unsigned char>& bytes) {
    InstallModels(bytes);
    LipsyncExitRoutine previous = LipsyncSetExitRoutine(&LipsyncThrowingExit);
    try {
        LipsyncMemoryManagerObject manager;
        initialiseRecogniser();
        shutdownRecogniser();
    } catch (...) {
        LipsyncSetExitRoutine(previous);
        throw;
    }
    LipsyncSetExitRoutine(previous);
}

std::string Option(int argc, char** argv, const char* name, const std::string& fallback) {
    for (int i = 2; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], name) == 0)
            return argv[i + 1];
    return fallback;
}

// Threshold on the normalised log energy that best splits X from speech on `set`.
double EnergyThreshold(const std::vector<Utterance>& set) {
    double best = 0, bestRight = -1;
    for (double threshold = -12; threshold <= 0.5; threshold += 0.25) {
        long right = 0;
        for (const Utterance& u : set)
            for (size_t t = 0; t < u.frames.size(); ++t)
                right += ((u.frames[t][24] < threshold) == (u.labels[t] == 7)) ? 1 : 0;
        if (right > bestRight) {
            bestRight = double(right);
            best = threshold;
        }
    }
    return best;
}

std::vector<char> EnergyFrames(const Utterance& u, int fps, size_t count, double threshold) {
    std::vector<char> out(count, 'X');
    for (size_t k = 0; k < count; ++k) {
        const int64_t centre = (2 * int64_t(k) + 1) * 8000 / (2 * int64_t(fps));
        const int64_t t = std::clamp<int64_t>((centre - 100) / 80, 0, int64_t(u.frames.size()) - 1);
        out[k] = u.frames[size_t(t)][24] < threshold ? 'X' : 'B';
    }
    return out;
}

int RunTrain(int argc, char** argv) {
    const std::string dir = Option(argc, argv, "--sentences", "tools/lipsync-train/sentences");
    const std::string out = Option(argc, argv, "--out", "mouth_models.bin");
    const uint32_t seed = uint32_t(std::stoul(Option(argc, argv, "--seed", "20261123")));
    const int utterances = std::stoi(Option(argc, argv, "--utterances", "600"));
    const int rounds = std::stoi(Option(argc, argv, "--rounds", "3"));
    std::vector<std::string> train, heldOut;
    LoadCorpusText(dir, train, heldOut);
    std::printf("sentences: %zu for training, %zu held out\n", train.size(), heldOut.size());
    const std::vector<Utterance> set = MakeSet(train, kSeenVoices, utterances, seed);
    long frames = 0;
    std::array<long, 8> perShape{};
    std::array<std::vector<Segment>, 8> segments;
    for (const Utterance& u : set) {
        frames += long(u.frames.size());
        for (size_t t = 0; t < u.labels.size();) {
            size_t e = t;
            while (e < u.labels.size() && u.labels[e] == u.labels[t])
                ++e;
            segments[size_t(u.labels[t])].push_back({&u, t, e - t});
            perShape[size_t(u.labels[t])] += long(e - t);
            t = e;
        }
    }
    std::printf("corpus: %zu utterances, %ld frames (%.1f minutes)\n", set.size(), frames, frames / 6000.0);
    for (int c = 0; c < 8; ++c)
        std::printf("  %c: %ld frames, %zu segments\n", kShapes[c], perShape[size_t(c)],
                    segments[size_t(c)].size());
    std::mt19937 random(seed + 1);
    std::vector<unsigned char> bytes;
    for (int c = 0; c < 8; ++c) {
        const ShapeModel model = TrainShape(segments[size_t(c)], rounds, random);
        const std::vector<unsigned char> one = LipsyncWriteModel(ToParams(model));
        bytes.insert(bytes.end(), one.begin(), one.end());
        std::printf("  model %c: self loops %.2f %.2f %.2f\n", kShapes[c], model.selfLoop[0],
                    model.selfLoop[1], model.selfLoop[2]);
        std::fflush(stdout);
    }
    CheckModels(bytes);
    std::ofstream file(out, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), long(bytes.size()));
    std::printf("wrote %s: %zu bytes; energy threshold of the baseline %.2f\n", out.c_str(), bytes.size(),
                EnergyThreshold(set));
    return file ? 0 : 1;
}

int RunEval(int argc, char** argv) {
    const std::string dir = Option(argc, argv, "--sentences", "tools/lipsync-train/sentences");
    const std::string modelsPath = Option(argc, argv, "--models", "");
    const uint32_t seed = uint32_t(std::stoul(Option(argc, argv, "--seed", "777")));
    const int utterances = std::stoi(Option(argc, argv, "--utterances", "120"));
    const bool unseen = Option(argc, argv, "--voices", "seen") == "unseen";
    const double threshold = std::stod(Option(argc, argv, "--energy-threshold", "-6"));
    const int fps = 24;
    if (!modelsPath.empty()) {
        std::ifstream file(modelsPath, std::ios::binary);
        std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(file)),
                                         std::istreambuf_iterator<char>());
        if (bytes.size() != 8 * 15292) {
            std::fprintf(stderr, "%s: not a set of eight models\n", modelsPath.c_str());
            return 1;
        }
        CheckModels(bytes);
    }
    std::vector<std::string> train, heldOut;
    LoadCorpusText(dir, train, heldOut);
    const std::vector<Utterance> set =
        MakeSet(heldOut, unseen ? kUnseenVoices : kSeenVoices, utterances, seed);
    LipsyncScoreboard models, alwaysB, energy;
    LipsyncExitRoutine previous = LipsyncSetExitRoutine(&LipsyncThrowingExit);
    for (const Utterance& u : set) {
        const std::vector<char> decoded = DecodeFrames(u.speech.samples, fps);
        const std::vector<char> reference = ReferenceFrames(u.speech, fps, decoded.size());
        models.add(reference, decoded);
        alwaysB.add(reference, std::vector<char>(reference.size(), 'B'));
        energy.add(reference, EnergyFrames(u, fps, reference.size(), threshold));
    }
    LipsyncSetExitRoutine(previous);
    const std::string title = std::string(unseen ? "unseen voices" : "seen voices") +
                              ", held-out sentences, " + std::to_string(set.size()) + " utterances at 24 fps";
    std::printf("%s", models.report("models: " + title).c_str());
    std::printf("%s", alwaysB.report("baseline always B").c_str());
    std::printf("%s", energy.report("baseline energy only").c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc >= 2 && std::strcmp(argv[1], "train") == 0)
            return RunTrain(argc, argv);
        if (argc >= 2 && std::strcmp(argv[1], "eval") == 0)
            return RunEval(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "lipsync-train: %s\n", e.what());
        return 1;
    }
    std::fprintf(stderr, "usage: lipsync-train train|eval [options]; see the top of Train.cpp\n");
    return 2;
}
