#include "Corpus.h"

#include "lipsync/LipsyncSound.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <espeak-ng/speak_lib.h>
#include <fstream>
#include <map>
#include <sstream>

namespace {

constexpr int kRate = 8000;
constexpr size_t kLongest = 65536 - 800;

struct Capture {
    std::vector<int16_t> samples;
    std::vector<std::pair<int, std::string>> phonemes; // start sample, name
};
Capture* gCapture = nullptr;

int OnSynth(short* wave, int count, espeak_EVENT* events) {
    for (espeak_EVENT* e = events; e != nullptr && e->type != espeakEVENT_LIST_TERMINATED; ++e)
        if (e->type == espeakEVENT_PHONEME)
            gCapture->phonemes.emplace_back(e->sample, std::string(e->id.string, strnlen(e->id.string, 8)));
    if (wave != nullptr && count > 0)
        gCapture->samples.insert(gCapture->samples.end(), wave, wave + count);
    return 0;
}

int EspeakRate() {
    static const int rate = [] {
        int r = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 200, nullptr, espeakINITIALIZE_PHONEME_EVENTS);
        espeak_SetSynthCallback(OnSynth);
        return r;
    }();
    return rate;
}

bool StartsWith(const std::string& s, const char* prefix) {
    return s.rfind(prefix, 0) == 0;
}

} // namespace

std::vector<std::pair<char, double>> MouthOfPhoneme(const std::string& p) {
    if (p.empty() || p[0] == '_')
        return {{'X', 1.0}};
    // Diphthongs: 60% first part, 40% second part.
    if (StartsWith(p, "aI"))
        return {{'D', 0.6}, {'B', 0.4}};
    if (StartsWith(p, "aU"))
        return {{'C', 0.6}, {'F', 0.4}};
    if (StartsWith(p, "OI"))
        return {{'E', 0.6}, {'B', 0.4}};
    static const std::map<std::string, char> table = {
        {"m", 'A'},  {"b", 'A'},  {"p", 'A'},  {"m-", 'A'},  {"f", 'G'},  {"v", 'G'},  {"oU", 'E'},
        {"o@", 'E'}, {"U", 'E'},  {"U@", 'E'}, {"O@", 'E'},  {"o", 'E'},  {"u:", 'F'}, {"u", 'F'},
        {"u@", 'F'}, {"3:", 'B'}, {"3", 'B'},  {"@r", 'B'},  {"I", 'B'},  {"I2", 'B'}, {"I#", 'B'},
        {"i", 'C'},  {"i:", 'C'}, {"i@", 'C'}, {"i@3", 'C'}, {"E", 'C'},  {"e@", 'C'}, {"eI", 'C'},
        {"e", 'C'},  {"a", 'C'},  {"V", 'C'},  {"A:", 'D'},  {"A@", 'D'}, {"0", 'D'},  {"O:", 'D'},
        {"O", 'D'},  {"aa", 'D'}, {"a#", 'D'}, {"@", 'D'},   {"@2", 'D'}, {"@5", 'D'}, {"@L", 'D'},
        {"@-", 'D'},
    };
    auto found = table.find(p);
    if (found != table.end())
        return {{found->second, 1.0}};
    // Other vowels are open; every other consonant is slightly open.
    const bool vowel = std::strchr("aeiouAEIOUV03@", p[0]) != nullptr;
    return {{vowel ? 'C' : 'B', 1.0}};
}

bool SpeakLabelled(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out) {
    const int inRate = EspeakRate();
    if (inRate <= 0)
        return false;
    Capture capture;
    gCapture = &capture;
    if (espeak_SetVoiceByName(speaker.voice.c_str()) != EE_OK)
        return false;
    espeak_SetParameter(espeakRATE, speaker.rate, 0);
    espeak_SetParameter(espeakPITCH, speaker.pitch, 0);
    espeak_Synth(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0, espeakCHARS_AUTO, nullptr, nullptr);
    espeak_Synchronize();
    gCapture = nullptr;
    if (capture.samples.empty())
        return false;

    // Labels at the synthesiser's rate, from each phoneme's start to the next one's.
    const size_t n = capture.samples.size();
    std::vector<char> labels(n, 'X');
    for (size_t i = 0; i < capture.phonemes.size(); ++i) {
        const size_t start = size_t(std::clamp<int>(capture.phonemes[i].first, 0, int(n)));
        const size_t end = i + 1 < capture.phonemes.size()
                               ? size_t(std::clamp<int>(capture.phonemes[i + 1].first, 0, int(n)))
                               : n;
        if (end <= start)
            continue;
        size_t at = start;
        for (auto [letter, share] : MouthOfPhoneme(capture.phonemes[i].second)) {
            const size_t to = std::min(end, at + size_t(std::lround(share * double(end - start))));
            std::fill(labels.begin() + long(at), labels.begin() + long(to), letter);
            at = to;
        }
        std::fill(labels.begin() + long(at), labels.begin() + long(end),
                  MouthOfPhoneme(capture.phonemes[i].second).back().first);
    }

    std::vector<float> in(n), resampled;
    for (size_t i = 0; i < n; ++i)
        in[i] = float(capture.samples[i]) / 32768.0f;
    LipsyncResampler resampler(inRate, kRate);
    resampler.push(in.data(), n, resampled);
    resampler.finish(resampled);
    out.samples.clear();
    LipsyncToPcm16(resampled, out.samples);
    out.labels.resize(out.samples.size());
    for (size_t i = 0; i < out.samples.size(); ++i)
        out.labels[i] = labels[std::min(n - 1, size_t(double(i) * inRate / kRate))];
    return true;
}

LabelledSpeech MakeUtterance(const SpeakerSpec& speaker, const std::vector<std::string>& sentences,
                             const AugmentSpec& augment, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto pause = [&](double low, double high) { return size_t((low + (high - low) * unit(random)) * kRate); };
    std::vector<double> speech;
    std::vector<char> labels;
    auto addSilence = [&](size_t count) {
        speech.insert(speech.end(), count, 0.0);
        labels.insert(labels.end(), count, 'X');
    };
    addSilence(pause(0.1, 0.6));
    for (const std::string& sentence : sentences) {
        LabelledSpeech part;
        if (!SpeakLabelled(speaker, sentence, part))
            continue;
        if (speech.size() + part.samples.size() + kRate / 2 > kLongest)
            break;
        speech.insert(speech.end(), part.samples.begin(), part.samples.end());
        labels.insert(labels.end(), part.labels.begin(), part.labels.end());
        addSilence(pause(0.1, 0.8));
    }
    if (speech.size() > kLongest) {
        speech.resize(kLongest);
        labels.resize(kLongest);
    }

    // Gain, then band limits by one-pole filters.
    const double gain = 0.12 + 0.88 * unit(random);
    for (double& v : speech)
        v *= gain;
    if (unit(random) < 0.5) {
        const double cut = 80 + 220 * unit(random);
        const double a = std::exp(-2 * 3.14159265358979 * cut / kRate);
        double previousIn = 0, previousOut = 0;
        for (double& v : speech) {
            const double y = a * (previousOut + v - previousIn);
            previousIn = v;
            previousOut = y;
            v = y;
        }
    }
    if (unit(random) < 0.5) {
        const double cut = 2400 + 1400 * unit(random);
        const double a = std::exp(-2 * 3.14159265358979 * cut / kRate);
        double state = 0;
        for (double& v : speech)
            v = state = (1 - a) * v + a * state;
    }

    // Room noise: white, pink or brown, at an SNR against the speech's mean power.
    if (augment.noise && unit(random) < 0.85) {
        double power = 0;
        size_t voiced = 0;
        for (size_t i = 0; i < speech.size(); ++i)
            if (labels[i] != 'X') {
                power += speech[i] * speech[i];
                ++voiced;
            }
        power = voiced > 0 ? power / double(voiced) : 1e4;
        const double snr = augment.minSnrDb + (augment.maxSnrDb - augment.minSnrDb) * unit(random);
        const int colour = int(unit(random) * 3);
        std::normal_distribution<double> white(0.0, 1.0);
        std::vector<double> noise(speech.size());
        double b0 = 0, b1 = 0, b2 = 0, brown = 0, noisePower = 0;
        for (double& v : noise) {
            const double w = white(random);
            if (colour == 0) {
                v = w;
            } else if (colour == 1) {
                b0 = 0.99765 * b0 + w * 0.0990460;
                b1 = 0.96300 * b1 + w * 0.2965164;
                b2 = 0.57000 * b2 + w * 1.0526913;
                v = b0 + b1 + b2 + w * 0.1848;
            } else {
                brown = 0.995 * brown + 0.1 * w;
                v = brown;
            }
            noisePower += v * v;
        }
        noisePower /= double(std::max<size_t>(noise.size(), 1));
        const double scale = std::sqrt(power / std::pow(10.0, snr / 10.0) / std::max(noisePower, 1e-12));
        for (size_t i = 0; i < speech.size(); ++i)
            speech[i] += scale * noise[i];
    } else if (unit(random) < 0.5) {
        std::uniform_int_distribution<int> dither(-2, 2);
        for (double& v : speech)
            v += dither(random);
    }

    LabelledSpeech out;
    out.labels = std::move(labels);
    out.samples.reserve(speech.size());
    for (double v : speech)
        out.samples.push_back(static_cast<int16_t>(std::lround(std::clamp(v, -32768.0, 32767.0))));
    return out;
}

std::vector<std::string> LoadSentences(const std::string& path) {
    std::ifstream file(path);
    std::stringstream whole;
    whole << file.rdbuf();
    const std::string text = whole.str();
    std::vector<std::string> sentences;
    std::string current;
    auto flush = [&] {
        std::istringstream words(current);
        std::string word, clean;
        int count = 0;
        bool ok = true;
        while (words >> word) {
            ++count;
            int letters = 0;
            for (char c : word)
                letters += std::isalpha(static_cast<unsigned char>(c)) ? 1 : 0;
            ok = ok && letters * 2 >= int(word.size());
            clean += (clean.empty() ? "" : " ") + word;
        }
        if (ok && count >= 3 && count <= 24)
            sentences.push_back(clean + ".");
        current.clear();
    };
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.' || c == '?' || c == '!' || (c == '\n' && i + 1 < text.size() && text[i + 1] == '\n')) {
            flush();
        } else if (c == '\n' || c == '\t') {
            current += ' ';
        } else {
            current += c;
        }
    }
    flush();
    return sentences;
}
