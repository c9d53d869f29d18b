// Trains the eight mouth-shape models from synthetic labelled speech and measures them.
//
//   lipsync-train train --sentences DIR --out FILE [--seed N] [--utterances N] [--rounds N]
//                       [--realign N] [--band FRAMES] [--shift-after FRAMES] [--split-b 0|1]
//                       [--label-delay MS] [--flite-share P] [--room-share P] [--warp W]
//                       [--max-frames N] [--prior-frames N] [--var-floor F] [--cache DIR]
//   lipsync-train eval  --sentences DIR --models FILE [--seed N] [--utterances N]
//                       [--set dev|test] [--voices seen|unseen|unseen-espeak]
//                       [--flite-share P] [--room-share P] [--cache DIR]
//
// --cache keeps the synthesised speech of each set in DIR, so that runs with other training
// settings skip the synthesis.
//
// Features come from the program's own front end; the models are written by the
// program's model writer and must load through its own reader with every check.
#include "Align.h"
#include "Corpus.h"
#include "Evaluate.h"
#include "MixtureFit.h"
#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/LipsyncMemoryManagerObject.h"
#include "lipsync/LipsyncModelWriter.h"
#include "lipsync/Recogniser.h"
#include "lipsync/SpeechFrontEnd.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const char* const kShapes = "ABCDEFGX";

// Voices of the training set, and voices kept out of it for testing: flite's awb, and two
// espeak-ng accents.
const std::vector<std::string> kSeenEspeak = {"en-us",          "en-gb-x-rp",    "en",       "en-029",
                                              "en-gb-scotland", "en-us+m3",      "en-us+f2", "en+f4",
                                              "en-us+klatt",    "en-gb-x-rp+m1", "en-us+f5", "en-us+m7"};
const std::vector<std::string> kSeenFlite = {"flite:slt", "flite:rms"};
const std::vector<std::string> kUnseenFlite = {"flite:awb"};
const std::vector<std::string> kUnseenEspeak = {"en-gb-x-gbcwmd+m6", "en-gb-x-gbclan+f1"};

// Who speaks a set: flite voices take `fliteShare` of the utterances.
struct VoicePool {
    std::vector<std::string> espeak, flite;
    double fliteShare = 0.0;
};

struct Utterance {
    std::vector<Frame> frames;
    std::vector<int> labels;        // shape index of each analysis frame
    std::vector<bool> shapeRepeats; // the frame starts another phone of the same shape
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
            for (int i = 0; i < kStreamWidths[s]; ++i)
                frames[size_t(t)][size_t(kStreamOffsets[s] + i)] = (*o.fv[s + 1])[i + 1];
    }
    return frames;
}

// Sentences: our own lists and the licence texts. Every tenth licence sentence and every
// tenth own sentence is kept for tuning (dev); another tenth of the licence sentences and
// the whole held-out list are never used before the final test.
struct CorpusText {
    std::vector<std::string> train, dev, test;
};

CorpusText LoadCorpusText(const std::string& dir) {
    CorpusText text;
    const std::vector<std::string> own = LoadSentences(dir + "/own.txt");
    for (size_t i = 0; i < own.size(); ++i)
        (i % 10 == 7 ? text.dev : text.train).push_back(own[i]);
    text.test = LoadSentences(dir + "/heldout.txt");
    std::ifstream list(dir + "/licences.txt");
    std::string path;
    while (std::getline(list, path)) {
        if (path.empty() || path[0] == '#')
            continue;
        const std::vector<std::string> sentences = LoadSentences(path);
        for (size_t i = 0; i < sentences.size(); ++i)
            (i % 10 == 3 ? text.test : i % 10 == 7 ? text.dev : text.train).push_back(sentences[i]);
    }
    return text;
}

// Made speech can be kept in a cache folder between runs, under a hash of everything that
// made it; synthesis is most of the time of a run.
std::string gCacheDir;

uint64_t Fnv(uint64_t h, const void* data, size_t size) {
    for (size_t i = 0; i < size; ++i)
        h = (h ^ static_cast<const unsigned char*>(data)[i]) * 0x100000001b3ull;
    return h;
}

uint64_t Fnv(uint64_t h, const std::string& text) {
    return Fnv(h, text.data(), text.size() + 1);
}

bool ReadCached(const std::string& path, std::vector<LabelledSpeech>& speech) {
    std::ifstream file(path, std::ios::binary);
    uint64_t count = 0;
    if (!file.read(reinterpret_cast<char*>(&count), sizeof count))
        return false;
    speech.resize(size_t(count));
    for (LabelledSpeech& s : speech) {
        uint64_t n = 0;
        file.read(reinterpret_cast<char*>(&n), sizeof n);
        s.samples.resize(size_t(n));
        s.labels.resize(size_t(n));
        file.read(reinterpret_cast<char*>(s.samples.data()), std::streamsize(n * sizeof(int16_t)));
        file.read(s.labels.data(), std::streamsize(n));
        uint64_t phones = 0;
        file.read(reinterpret_cast<char*>(&phones), sizeof phones);
        s.phoneStarts.resize(size_t(phones));
        file.read(reinterpret_cast<char*>(s.phoneStarts.data()), std::streamsize(phones * sizeof(size_t)));
    }
    return bool(file);
}

void WriteCached(const std::string& path, const std::vector<LabelledSpeech>& speech) {
    // A name of this process's own, as two runs may make the same set at once.
    const std::string part = path + ".part" + std::to_string(getpid());
    std::ofstream file(part, std::ios::binary);
    const uint64_t count = speech.size();
    file.write(reinterpret_cast<const char*>(&count), sizeof count);
    for (const LabelledSpeech& s : speech) {
        const uint64_t n = s.samples.size();
        file.write(reinterpret_cast<const char*>(&n), sizeof n);
        file.write(reinterpret_cast<const char*>(s.samples.data()), std::streamsize(n * sizeof(int16_t)));
        file.write(s.labels.data(), std::streamsize(n));
        const uint64_t phones = s.phoneStarts.size();
        file.write(reinterpret_cast<const char*>(&phones), sizeof phones);
        file.write(reinterpret_cast<const char*>(s.phoneStarts.data()),
                   std::streamsize(phones * sizeof(size_t)));
    }
    file.close();
    if (file)
        std::rename(part.c_str(), path.c_str());
}

// Utterances of 1 to 3 sentences by voices of the pool at random rates and pitches.
std::vector<LabelledSpeech> MakeSpeech(const std::vector<std::string>& sentences, const VoicePool& voices,
                                       int count, uint32_t seed, const AugmentSpec& augment) {
    std::string path;
    if (!gCacheDir.empty()) {
        uint64_t h = Fnv(0xcbf29ce484222325ull, "speech with phone starts");
        for (const std::string& s : sentences)
            h = Fnv(h, s);
        for (const std::string& v : voices.espeak)
            h = Fnv(h, v);
        h = Fnv(h, "|");
        for (const std::string& v : voices.flite)
            h = Fnv(h, v);
        const double numbers[] = {voices.fliteShare,     double(count),    double(seed),
                                  double(augment.noise), augment.minSnrDb, augment.maxSnrDb,
                                  augment.roomShare};
        h = Fnv(h, numbers, sizeof numbers);
        if (augment.warp > 0)
            h = Fnv(h, &augment.warp, sizeof augment.warp);
        char name[32];
        std::snprintf(name, sizeof name, "/set-%016llx.bin", static_cast<unsigned long long>(h));
        path = gCacheDir + name;
        std::vector<LabelledSpeech> cached;
        if (ReadCached(path, cached))
            return cached;
    }
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<size_t> pickSentence(0, sentences.size() - 1);
    std::uniform_int_distribution<int> rate(120, 230), pitch(25, 75), sentencesPer(1, 3);
    std::vector<LabelledSpeech> set;
    for (int u = 0; u < count; ++u) {
        const bool flite =
            !voices.flite.empty() && (voices.espeak.empty() || unit(random) < voices.fliteShare);
        const std::vector<std::string>& pool = flite ? voices.flite : voices.espeak;
        SpeakerSpec speaker{pool[std::uniform_int_distribution<size_t>(0, pool.size() - 1)(random)],
                            rate(random), pitch(random)};
        if (augment.warp > 0)
            speaker.warp = 1.0 + augment.warp * (2.0 * unit(random) - 1.0);
        std::vector<std::string> text;
        for (int k = sentencesPer(random); k > 0; --k)
            text.push_back(sentences[pickSentence(random)]);
        LabelledSpeech speech = MakeUtterance(speaker, text, augment, random);
        if (speech.samples.size() >= 2000)
            set.push_back(std::move(speech));
    }
    if (!path.empty())
        WriteCached(path, set);
    return set;
}

// The utterances with their features. The label of an analysis frame is the label
// `delay` samples before its centre.
std::vector<Utterance> MakeSet(const std::vector<std::string>& sentences, const VoicePool& voices, int count,
                               uint32_t seed, int delay, const AugmentSpec& augment) {
    std::vector<Utterance> set;
    for (LabelledSpeech& speech : MakeSpeech(sentences, voices, count, seed, augment)) {
        Utterance utt;
        utt.speech = std::move(speech);
        utt.frames = Features(utt.speech.samples);
        size_t phone = 0;
        for (size_t t = 0; t < utt.frames.size(); ++t) {
            const long at =
                std::clamp<long>(long(t * 80 + 100) - delay, 0, long(utt.speech.labels.size()) - 1);
            utt.labels.push_back(ShapeIndex(utt.speech.labels[size_t(at)]));
            // Whether a phone starts after the label point of the frame before, up to this one.
            bool started = false;
            while (phone < utt.speech.phoneStarts.size() && long(utt.speech.phoneStarts[phone]) <= at) {
                started = t > 0;
                ++phone;
            }
            utt.shapeRepeats.push_back(started && utt.labels[t] == utt.labels[t - 1]);
        }
        set.push_back(std::move(utt));
    }
    return set;
}

// The models and the alignment of every training frame to a shape and state.
class Trainer {
public:
    // With `splitB`, every phone of shape B is a run of its own, as the bigram lets B follow
    // B; runs of the other shapes are whole.
    Trainer(const std::vector<Utterance>& set, uint32_t seed, const FitSettings& fit, bool splitB)
        : set_(set), models_(8), random_(seed), fit_(fit) {
        for (const Utterance& u : set_) {
            std::vector<bool> breaks(u.labels.size(), false);
            for (size_t t = 0; t < breaks.size() && splitB; ++t)
                breaks[t] = u.shapeRepeats[t] && u.labels[t] == ShapeIndex('B');
            runs_.push_back(RunsOfLabels(u.labels, breaks));
        }
        // The first alignment: each labelled run cut into equal thirds.
        for (size_t u = 0; u < set_.size(); ++u) {
            paths_.emplace_back(set_[u].frames.size());
            for (const LabelRun& run : runs_[u])
                for (size_t t = run.begin; t < run.end; ++t)
                    paths_[u][t] = {uint8_t(run.shape),
                                    uint8_t((t - run.begin) * kShapeStates / (run.end - run.begin))};
        }
    }

    // Each labelled run aligned to the three states of its own model.
    void alignRuns() {
        std::vector<int> states;
        for (size_t u = 0; u < set_.size(); ++u)
            for (const LabelRun& run : runs_[u]) {
                AlignSegment(models_[size_t(run.shape)], &set_[u].frames[run.begin], run.end - run.begin,
                             states);
                for (size_t t = run.begin; t < run.end; ++t)
                    paths_[u][t] = {uint8_t(run.shape), uint8_t(states[t - run.begin])};
            }
    }

    // Whole utterances aligned through their concatenated models; the boundaries between
    // shapes may move up to `band` frames. Returns the share of frames whose shape moved.
    double alignUtterances(int band) {
        long moved = 0, total = 0, failed = 0;
        for (size_t u = 0; u < set_.size(); ++u) {
            if (!AlignUtterance(models_, set_[u].frames, runs_[u], band, paths_[u]))
                ++failed;
            for (size_t t = 0; t < paths_[u].size(); ++t)
                moved += paths_[u][t].shape != set_[u].labels[t] ? 1 : 0;
            total += long(paths_[u].size());
        }
        if (failed > 0)
            std::printf("    %ld utterances kept their alignment\n", failed);
        return total > 0 ? double(moved) / double(total) : 0.0;
    }

    // Makes the shapes of the present alignment, each moved `frames` later, the labelled
    // runs of the following rounds.
    void delayBoundaries(int frames) {
        for (size_t u = 0; u < set_.size(); ++u) {
            std::vector<int> shapes(paths_[u].size());
            for (size_t t = 0; t < shapes.size(); ++t)
                shapes[t] = paths_[u][t >= size_t(frames) ? t - size_t(frames) : 0].shape;
            runs_[u] = RunsOfLabels(shapes);
        }
    }

    // Refits every state to the frames aligned to it: from k-means the first time, else
    // from the present mixtures. Self loops follow the mean stay in each state.
    void reestimate(int emSteps, size_t maxFrames) {
        for (int c = 0; c < 8; ++c)
            for (int j = 0; j < kShapeStates; ++j) {
                std::vector<const Frame*> frames;
                long entries = 0;
                for (size_t u = 0; u < set_.size(); ++u)
                    for (size_t t = 0; t < paths_[u].size(); ++t) {
                        const AlignedFrame a = paths_[u][t];
                        if (a.shape != c || a.state != j)
                            continue;
                        frames.push_back(&set_[u].frames[t]);
                        const bool entered =
                            t == 0 || paths_[u][t - 1].shape != a.shape || paths_[u][t - 1].state != a.state;
                        entries += entered ? 1 : 0;
                    }
                // Bounded work per state: an even subsample.
                std::vector<const Frame*> used;
                const size_t stride = std::max<size_t>(1, frames.size() / maxFrames + 1);
                for (size_t k = 0; k < frames.size(); k += stride)
                    used.push_back(frames[k]);
                ShapeModel& model = models_[size_t(c)];
                for (int s = 0; s < 4; ++s) {
                    std::vector<const float*> data;
                    for (const Frame* f : used)
                        data.push_back(f->data() + kStreamOffsets[s]);
                    Mixture& mixture = model.states[size_t(j)][size_t(s)];
                    const bool fresh = mixture.parts.empty();
                    mixture = FitMixture(data, kStreamWidths[s], fresh ? nullptr : &mixture, random_,
                                         fresh ? emSteps + 1 : emSteps, fit_);
                }
                const double loop = frames.empty() ? 0.6 : 1.0 - double(entries) / double(frames.size());
                model.selfLoop[size_t(j)] = std::clamp(loop, 0.5, 0.95);
            }
    }

    const std::vector<ShapeModel>& models() const { return models_; }

private:
    const std::vector<Utterance>& set_;
    std::vector<std::vector<LabelRun>> runs_;
    std::vector<std::vector<AlignedFrame>> paths_;
    std::vector<ShapeModel> models_;
    std::mt19937 random_;
    FitSettings fit_;
};

LipsyncModelParams ToParams(const ShapeModel& model) {
    LipsyncModelParams p;
    p.widths = {8, 8, 8, 3};
    for (int j = 0; j < kShapeStates; ++j) {
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
    for (int j = 0; j < kShapeStates; ++j) {
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

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

VoicePool SeenVoices(double fliteShare) {
    return {kSeenEspeak, kSeenFlite, fliteShare};
}

int RunTrain(int argc, char** argv) {
    const auto started = std::chrono::steady_clock::now();
    gCacheDir = Option(argc, argv, "--cache", "");
    const std::string dir = Option(argc, argv, "--sentences", "tools/lipsync-train/sentences");
    const std::string out = Option(argc, argv, "--out", "mouth_models.bin");
    const uint32_t seed = uint32_t(std::stoul(Option(argc, argv, "--seed", "20261123")));
    const int utterances = std::stoi(Option(argc, argv, "--utterances", "1500"));
    const int rounds = std::stoi(Option(argc, argv, "--rounds", "4"));
    const int realign = std::stoi(Option(argc, argv, "--realign", "0"));
    const int band = std::stoi(Option(argc, argv, "--band", "3"));
    const int shiftAfter = std::stoi(Option(argc, argv, "--shift-after", "0"));
    const int delay = std::stoi(Option(argc, argv, "--label-delay", "0")) * 8;
    const double fliteShare = std::stod(Option(argc, argv, "--flite-share", "0.3"));
    const size_t maxFrames = size_t(std::stoul(Option(argc, argv, "--max-frames", "25000")));
    const CorpusText text = LoadCorpusText(dir);
    std::printf("sentences: %zu for training, %zu for tuning, %zu for the test\n", text.train.size(),
                text.dev.size(), text.test.size());
    AugmentSpec augment;
    augment.roomShare = std::stod(Option(argc, argv, "--room-share", "0"));
    augment.warp = std::stod(Option(argc, argv, "--warp", "0"));
    const std::vector<Utterance> set =
        MakeSet(text.train, SeenVoices(fliteShare), utterances, seed, delay, augment);
    long frames = 0;
    std::array<long, 8> perShape{}, segments{};
    for (const Utterance& u : set) {
        frames += long(u.frames.size());
        for (const LabelRun& run : RunsOfLabels(u.labels)) {
            perShape[size_t(run.shape)] += long(run.end - run.begin);
            ++segments[size_t(run.shape)];
        }
    }
    std::printf("corpus: %zu utterances, %ld frames (%.1f minutes), made in %.0f s\n", set.size(), frames,
                frames / 6000.0, Seconds(started));
    for (int c = 0; c < 8; ++c)
        std::printf("  %c: %ld frames, %ld segments\n", kShapes[c], perShape[size_t(c)], segments[size_t(c)]);

    FitSettings fit;
    fit.priorFrames = std::stod(Option(argc, argv, "--prior-frames", "16"));
    fit.floor = std::stod(Option(argc, argv, "--var-floor", "0.02"));
    Trainer trainer(set, seed + 1, fit, Option(argc, argv, "--split-b", "0") == "1");
    trainer.reestimate(3, maxFrames);
    for (int round = 1; round <= rounds; ++round) {
        trainer.alignRuns();
        trainer.reestimate(3, maxFrames);
        std::printf("  segmental round %d done at %.0f s\n", round, Seconds(started));
        std::fflush(stdout);
    }
    for (int round = 1; round <= realign; ++round) {
        const double moved = trainer.alignUtterances(band);
        trainer.reestimate(3, maxFrames);
        std::printf("  embedded round %d: %.1f%% of frames off their label, done at %.0f s\n", round,
                    100.0 * moved, Seconds(started));
        std::fflush(stdout);
    }
    if (shiftAfter > 0) {
        trainer.delayBoundaries(shiftAfter);
        for (int round = 1; round <= 2; ++round) {
            trainer.alignRuns();
            trainer.reestimate(3, maxFrames);
        }
        std::printf("  boundaries moved %d frames later and trained again, done at %.0f s\n", shiftAfter,
                    Seconds(started));
    }
    std::vector<unsigned char> bytes;
    for (int c = 0; c < 8; ++c) {
        const ShapeModel& model = trainer.models()[size_t(c)];
        const std::vector<unsigned char> one = LipsyncWriteModel(ToParams(model));
        bytes.insert(bytes.end(), one.begin(), one.end());
        std::printf("  model %c: self loops %.2f %.2f %.2f\n", kShapes[c], model.selfLoop[0],
                    model.selfLoop[1], model.selfLoop[2]);
    }
    CheckModels(bytes);
    std::ofstream file(out, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), long(bytes.size()));
    std::printf("wrote %s: %zu bytes in %.0f s\n", out.c_str(), bytes.size(), Seconds(started));
    return file ? 0 : 1;
}

int RunEval(int argc, char** argv) {
    gCacheDir = Option(argc, argv, "--cache", "");
    const std::string dir = Option(argc, argv, "--sentences", "tools/lipsync-train/sentences");
    const std::string modelsPath = Option(argc, argv, "--models", "");
    const uint32_t seed = uint32_t(std::stoul(Option(argc, argv, "--seed", "777")));
    const int utterances = std::stoi(Option(argc, argv, "--utterances", "150"));
    const std::string setName = Option(argc, argv, "--set", "test");
    const std::string voiceName = Option(argc, argv, "--voices", "seen");
    const double fliteShare = std::stod(Option(argc, argv, "--flite-share", "0.3"));
    const int fps = 24;
    if (setName != "dev" && setName != "test")
        throw std::invalid_argument("--set takes dev or test");
    VoicePool voices;
    if (voiceName == "seen")
        voices = SeenVoices(fliteShare);
    else if (voiceName == "unseen")
        voices = {{}, kUnseenFlite, 1.0};
    else if (voiceName == "unseen-espeak")
        voices = {kUnseenEspeak, {}, 0.0};
    else
        throw std::invalid_argument("--voices takes seen, unseen or unseen-espeak");
    if (!modelsPath.empty()) {
        std::ifstream file(modelsPath, std::ios::binary);
        std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(file)),
                                         std::istreambuf_iterator<char>());
        if (bytes.size() != 8 * 15292)
            throw std::runtime_error(modelsPath + ": not a set of eight models");
        CheckModels(bytes);
    }
    const CorpusText text = LoadCorpusText(dir);
    // The energy baseline's threshold comes from training sentences of the training voices.
    AugmentSpec augment;
    augment.roomShare = std::stod(Option(argc, argv, "--room-share", "0"));
    const double threshold =
        EnergyThreshold(MakeSet(text.train, SeenVoices(fliteShare), 100, seed + 1, 0, augment));
    const std::vector<Utterance> set =
        MakeSet(setName == "dev" ? text.dev : text.test, voices, utterances, seed, 0, augment);
    LipsyncScoreboard models, alwaysB, energy;
    // How the agreement changes when the reference is taken earlier or later.
    std::array<LipsyncScoreboard, 7> shifted;
    LipsyncExitRoutine previous = LipsyncSetExitRoutine(&LipsyncThrowingExit);
    for (const Utterance& u : set) {
        const std::vector<char> decoded = DecodeFrames(u.speech.samples, fps);
        const std::vector<char> reference = ReferenceFrames(u.speech, fps, decoded.size());
        models.add(reference, decoded);
        alwaysB.add(reference, std::vector<char>(reference.size(), 'B'));
        energy.add(reference, EnergyFrames(u, fps, reference.size(), threshold));
        for (size_t k = 0; k < shifted.size(); ++k)
            shifted[k].add(ReferenceFrames(u.speech, fps, decoded.size(), (int(k) - 3) * 80), decoded);
    }
    LipsyncSetExitRoutine(previous);
    const std::string title = voiceName + " voices, " + setName + " sentences, " +
                              std::to_string(set.size()) + " utterances at 24 fps";
    std::printf("%s", models.report("models: " + title).c_str());
    std::printf("  accuracy with the reference moved by -30 .. +30 ms:");
    for (const LipsyncScoreboard& s : shifted)
        std::printf(" %.3f", s.accuracy());
    std::printf("\n%s", alwaysB.report("baseline always B").c_str());
    char line[64];
    std::snprintf(line, sizeof line, "baseline energy only (X below %.2f)", threshold);
    std::printf("%s", energy.report(line).c_str());
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
