#include "Corpus.h"

#include "lipsync/LipsyncSound.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <espeak-ng/speak_lib.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

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

// 16-bit speech made at `rate`, resampled to 8 kHz as if read `warp` times slower than it
// was made: the speech lasts `warp` times longer and its voice is lower.
std::vector<int16_t> ResampleWarped(const std::vector<int16_t>& samples, double rate, double warp) {
    std::vector<float> in(samples.size()), resampled;
    for (size_t i = 0; i < in.size(); ++i)
        in[i] = float(samples[i]) / 32768.0f;
    LipsyncResampler resampler(int(std::lround(rate / warp)), kRate);
    resampler.push(in.data(), in.size(), resampled);
    resampler.finish(resampled);
    std::vector<int16_t> out;
    LipsyncToPcm16(resampled, out);
    return out;
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

std::vector<std::pair<char, double>> MouthOfArpabet(const std::string& p) {
    static const std::map<std::string, std::vector<std::pair<char, double>>> table = {
        {"pau", {{'X', 1.0}}},
        {"m", {{'A', 1.0}}},
        {"b", {{'A', 1.0}}},
        {"p", {{'A', 1.0}}},
        {"f", {{'G', 1.0}}},
        {"v", {{'G', 1.0}}},
        {"eh", {{'C', 1.0}}},
        {"ae", {{'C', 1.0}}},
        {"ah", {{'C', 1.0}}},
        {"iy", {{'C', 1.0}}},
        {"ey", {{'C', 1.0}}},
        {"aa", {{'D', 1.0}}},
        {"ao", {{'D', 1.0}}},
        {"ax", {{'D', 1.0}}},
        {"ow", {{'E', 1.0}}},
        {"uh", {{'E', 1.0}}},
        {"uw", {{'F', 1.0}}},
        {"ay", {{'D', 0.6}, {'B', 0.4}}},
        {"aw", {{'C', 0.6}, {'F', 0.4}}},
        {"oy", {{'E', 0.6}, {'B', 0.4}}},
    };
    auto found = table.find(p);
    // Every other phone (the remaining consonants, er and ih) is slightly open.
    return found != table.end() ? found->second : std::vector<std::pair<char, double>>{{'B', 1.0}};
}

std::vector<std::pair<std::string, double>> ParseFlitePhones(const std::string& line) {
    std::vector<std::pair<std::string, double>> phones;
    std::istringstream words(line);
    std::string word;
    while (words >> word) {
        const size_t colon = word.find(':');
        if (colon == 0 || colon == std::string::npos)
            continue;
        char* end = nullptr;
        const double time = std::strtod(word.c_str() + colon + 1, &end);
        if (end == word.c_str() + colon + 1 || *end != '\0' || !(time >= 0.0))
            continue;
        phones.emplace_back(word.substr(0, colon), time);
    }
    return phones;
}

std::vector<char>
LabelPhones(const std::vector<std::pair<int64_t, std::vector<std::pair<char, double>>>>& phones,
            size_t count) {
    std::vector<char> labels(count, 'X');
    for (size_t i = 0; i < phones.size(); ++i) {
        const size_t start = size_t(std::clamp<int64_t>(phones[i].first, 0, int64_t(count)));
        const size_t end = i + 1 < phones.size()
                               ? size_t(std::clamp<int64_t>(phones[i + 1].first, 0, int64_t(count)))
                               : count;
        if (end <= start)
            continue;
        size_t at = start;
        for (auto [letter, share] : phones[i].second) {
            const size_t to = std::min(end, at + size_t(std::lround(share * double(end - start))));
            std::fill(labels.begin() + long(at), labels.begin() + long(to), letter);
            at = to;
        }
        std::fill(labels.begin() + long(at), labels.begin() + long(end), phones[i].second.back().first);
    }
    return labels;
}

namespace {

// Labels the samples of `out` from its phones, and keeps the start of each phone that
// falls inside them.
void LabelSpeech(const std::vector<std::pair<int64_t, std::vector<std::pair<char, double>>>>& phones,
                 LabelledSpeech& out) {
    out.labels = LabelPhones(phones, out.samples.size());
    out.phoneStarts.clear();
    for (const auto& phone : phones)
        if (phone.first >= 0 && size_t(phone.first) < out.samples.size())
            out.phoneStarts.push_back(size_t(phone.first));
}

bool SpeakEspeak(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out) {
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

    std::vector<std::pair<int64_t, std::vector<std::pair<char, double>>>> phones;
    for (const auto& [start, name] : capture.phonemes)
        phones.emplace_back(std::llround(double(start) * kRate * speaker.warp / inRate),
                            MouthOfPhoneme(name));
    out.samples = ResampleWarped(capture.samples, inRate, speaker.warp);
    LabelSpeech(phones, out);
    return true;
}

// Runs a program with its output into `output` and its errors dropped; true when it
// ended with status 0. No shell sees the arguments.
bool RunProgram(const std::vector<std::string>& args, std::string& output) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipeEnds[1], 1);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        std::vector<char*> argv;
        for (const std::string& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    char chunk[4096];
    for (ssize_t got; (got = read(pipeEnds[0], chunk, sizeof chunk)) > 0;)
        output.append(chunk, size_t(got));
    close(pipeEnds[0]);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// flite speaks with its default voice when it does not know the one asked for: the
// names come from its own list.
bool FliteHasVoice(const std::string& voice) {
    static const std::string names = [] {
        std::string list;
        return RunProgram({"flite", "-lv"}, list) ? list + " " : std::string();
    }();
    return names.find(" " + voice + " ") != std::string::npos;
}

// A private folder under /tmp for flite's text and sound, removed with what it holds when
// the program ends.
struct ScratchFolder {
    std::string path;
    ScratchFolder() {
        char name[] = "/tmp/lipsync-flite-XXXXXX";
        if (mkdtemp(name) != nullptr)
            path = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        if (!path.empty())
            std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
};

// Runs flite on `text` (through a file) and reads its phone line and sound.
bool SpeakFlite(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out) {
    static const ScratchFolder scratch;
    const std::string& folder = scratch.path;
    const std::string voice = speaker.voice.substr(speaker.voice.find(':') + 1);
    if (folder.empty() || !FliteHasVoice(voice))
        return false;
    const std::string textPath = folder + "/text.txt", wavePath = folder + "/speech.wav";
    {
        std::ofstream file(textPath);
        file << text << "\n";
        if (!file)
            return false;
    }
    char stretch[64];
    std::snprintf(stretch, sizeof stretch, "duration_stretch=%.3f", 175.0 / std::max(speaker.rate, 40));
    std::string line, error;
    if (!RunProgram({"flite", "-voice", voice, "-psdur", "--setf", stretch, "-f", textPath, "-o", wavePath},
                    line))
        return false;
    if (!LipsyncReadSound(wavePath, out.samples, error) || out.samples.empty())
        return false;
    if (speaker.warp != 1.0)
        out.samples = ResampleWarped(out.samples, kRate, speaker.warp);
    // flite gives end times: each phone starts where the one before it ends.
    std::vector<std::pair<int64_t, std::vector<std::pair<char, double>>>> phones;
    double start = 0.0;
    for (const auto& [name, end] : ParseFlitePhones(line)) {
        phones.emplace_back(std::llround(start * kRate * speaker.warp), MouthOfArpabet(name));
        start = end;
    }
    if (phones.empty())
        return false;
    LabelSpeech(phones, out);
    return true;
}

} // namespace

bool SpeakLabelled(const SpeakerSpec& speaker, const std::string& text, LabelledSpeech& out) {
    return StartsWith(speaker.voice, "flite:") ? SpeakFlite(speaker, text, out)
                                               : SpeakEspeak(speaker, text, out);
}

LabelledSpeech MakeUtterance(const SpeakerSpec& speaker, const std::vector<std::string>& sentences,
                             const AugmentSpec& augment, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto pause = [&](double low, double high) { return size_t((low + (high - low) * unit(random)) * kRate); };
    std::vector<double> speech;
    std::vector<char> labels;
    std::vector<size_t> phoneStarts;
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
        for (size_t start : part.phoneStarts)
            phoneStarts.push_back(speech.size() + start);
        speech.insert(speech.end(), part.samples.begin(), part.samples.end());
        labels.insert(labels.end(), part.labels.begin(), part.labels.end());
        addSilence(pause(0.1, 0.8));
    }
    if (speech.size() > kLongest) {
        speech.resize(kLongest);
        labels.resize(kLongest);
        while (!phoneStarts.empty() && phoneStarts.back() >= kLongest)
            phoneStarts.pop_back();
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

    // A small room: a Schroeder reverberator (four combs, two all-passes) with a
    // reverberation time of 0.15-0.6 s, mixed at a direct-to-reverberant ratio of 0-12 dB.
    if (unit(random) < augment.roomShare) {
        const double seconds = 0.15 + 0.45 * unit(random);
        const double ratioDb = 12.0 * unit(random);
        std::vector<double> wet(speech.size(), 0.0), comb(speech.size());
        for (size_t delay : {238u, 297u, 329u, 350u}) {
            const double feedback = std::pow(10.0, -3.0 * double(delay) / (seconds * kRate));
            for (size_t i = 0; i < speech.size(); ++i) {
                comb[i] = i >= delay ? speech[i - delay] + feedback * comb[i - delay] : 0.0;
                wet[i] += 0.25 * comb[i];
            }
        }
        for (size_t delay : {40u, 14u}) {
            std::vector<double> in = wet;
            for (size_t i = 0; i < wet.size(); ++i)
                wet[i] = -0.7 * in[i] + (i >= delay ? in[i - delay] + 0.7 * wet[i - delay] : 0.0);
        }
        double dryPower = 0, wetPower = 0;
        for (size_t i = 0; i < speech.size(); ++i) {
            dryPower += speech[i] * speech[i];
            wetPower += wet[i] * wet[i];
        }
        const double level = std::sqrt(dryPower / std::max(wetPower, 1e-12) / std::pow(10.0, ratioDb / 10.0));
        for (size_t i = 0; i < speech.size(); ++i)
            speech[i] += level * wet[i];
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
    out.phoneStarts = std::move(phoneStarts);
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
