#include "Evaluate.h"

#include "lipsync/LipSyncAlgorithm.h"

#include <cstdio>
#include <cstring>

namespace {
int IndexOf(char letter) {
    const char* at = std::strchr(LipsyncScoreboard::kLetters, letter);
    return at != nullptr && letter != '\0' ? int(at - LipsyncScoreboard::kLetters) : 7;
}
} // namespace

void LipsyncScoreboard::add(const std::vector<char>& reference, const std::vector<char>& decoded) {
    const size_t n = std::min(reference.size(), decoded.size());
    for (size_t i = 0; i < n; ++i)
        ++confusion_[size_t(IndexOf(reference[i]))][size_t(IndexOf(decoded[i]))];
    total_ += int(n);
    for (size_t i = 0; i < n;) {
        size_t j = i;
        while (j < n && decoded[j] == decoded[i])
            ++j;
        ++runs_;
        shortRuns_ += j - i < 2 ? 1 : 0;
        i = j;
    }
}

double LipsyncScoreboard::accuracy() const {
    long right = 0;
    for (size_t i = 0; i < 8; ++i)
        right += confusion_[i][i];
    return total_ > 0 ? double(right) / total_ : 0.0;
}

double LipsyncScoreboard::macroRecall() const {
    double sum = 0;
    int classes = 0;
    for (size_t i = 0; i < 8; ++i) {
        long row = 0;
        for (size_t j = 0; j < 8; ++j)
            row += confusion_[i][j];
        if (row > 0) {
            sum += double(confusion_[i][i]) / double(row);
            ++classes;
        }
    }
    return classes > 0 ? sum / classes : 0.0;
}

double LipsyncScoreboard::kappa() const {
    if (total_ == 0)
        return 0.0;
    double expected = 0;
    for (size_t k = 0; k < 8; ++k) {
        long row = 0, column = 0;
        for (size_t j = 0; j < 8; ++j) {
            row += confusion_[k][j];
            column += confusion_[j][k];
        }
        expected += double(row) * double(column);
    }
    expected /= double(total_) * double(total_);
    return expected < 1.0 ? (accuracy() - expected) / (1.0 - expected) : 0.0;
}

double LipsyncScoreboard::speechF1() const {
    long tp = 0, fp = 0, fn = 0;
    for (size_t i = 0; i < 8; ++i)
        for (size_t j = 0; j < 8; ++j) {
            const bool refSpeech = i != 7, hypSpeech = j != 7;
            tp += refSpeech && hypSpeech ? confusion_[i][j] : 0;
            fp += !refSpeech && hypSpeech ? confusion_[i][j] : 0;
            fn += refSpeech && !hypSpeech ? confusion_[i][j] : 0;
        }
    return tp > 0 ? 2.0 * double(tp) / double(2 * tp + fp + fn) : 0.0;
}

double LipsyncScoreboard::flicker() const {
    return runs_ > 0 ? double(shortRuns_) / double(runs_) : 0.0;
}

std::string LipsyncScoreboard::report(const std::string& title) const {
    char line[256];
    std::string text = title + "\n";
    std::snprintf(line, sizeof line,
                  "  frames %d  accuracy %.3f  macro recall %.3f  kappa %.3f  speech F1 %.3f  flicker %.3f\n",
                  total_, accuracy(), macroRecall(), kappa(), speechF1(), flicker());
    text += line;
    text += "  ref\\dec      A      B      C      D      E      F      G      X\n";
    for (size_t i = 0; i < 8; ++i) {
        std::snprintf(line, sizeof line, "  %c      ", kLetters[i]);
        text += line;
        for (size_t j = 0; j < 8; ++j) {
            std::snprintf(line, sizeof line, " %6ld", confusion_[i][j]);
            text += line;
        }
        text += "\n";
    }
    return text;
}

std::vector<char> ReferenceFrames(const LabelledSpeech& speech, int fps, size_t count, int offset) {
    std::vector<char> frames(count, 'X');
    for (size_t k = 0; k < count; ++k) {
        const int64_t sample = (2 * int64_t(k) + 1) * 8000 / (2 * int64_t(fps)) + offset;
        if (sample >= 0 && sample < int64_t(speech.labels.size()))
            frames[k] = speech.labels[size_t(sample)];
    }
    return frames;
}

std::vector<char> DecodeFrames(const std::vector<int16_t>& samples, int fps) {
    const LipsyncAnalysis analysis =
        LipSyncAlgorithm::Analyse(samples.data(), int64_t(samples.size()), fps, nullptr);
    std::vector<char> frames;
    for (uint8_t code : analysis.codes)
        frames.push_back(LipSyncAlgorithm::MouthLetter(code));
    return frames;
}
