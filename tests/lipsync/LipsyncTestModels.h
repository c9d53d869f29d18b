#pragma once

#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/LipsyncModelWriter.h"

#include <cstring>
#include <string>
#include <vector>

namespace lipsynctest {

// A model of the shipped shape (5 states, streams 8, 8, 8, 3) whose densities all have
// identity inverse covariance and a mean of `c1` in the first element of stream 1, 0
// elsewhere. Mixture weights are equal.
inline LipsyncModelParams MakeModel(float c1, int mixtures = 7, float selfLoop = 0.6f) {
    LipsyncModelParams model;
    model.widths = {8, 8, 8, 3};
    for (int j = 0; j < 3; ++j) {
        LipsyncStateModel state;
        state.streamWeights = {1, 1, 1, 1};
        for (int width : model.widths) {
            std::vector<LipsyncGaussian> mixture;
            for (int m = 0; m < mixtures; ++m) {
                LipsyncGaussian g;
                g.weight = 1.0f / float(mixtures);
                g.mean.assign(size_t(width), 0.0f);
                if (width == 8 && state.streams.empty())
                    g.mean[0] = c1;
                g.inverse.assign(size_t(width * width), 0.0f);
                for (int i = 0; i < width; ++i)
                    g.inverse[size_t(i * width + i)] = 1.0f;
                mixture.push_back(g);
            }
            state.streams.push_back(mixture);
        }
        model.states.push_back(state);
    }
    model.transitions.assign(5, std::vector<float>(5, 0.0f));
    model.transitions[0][1] = 1.0f;
    for (int i = 1; i <= 3; ++i) {
        model.transitions[size_t(i)][size_t(i)] = selfLoop;
        model.transitions[size_t(i)][size_t(i + 1)] = 1.0f - selfLoop;
    }
    return model;
}

inline std::vector<float> ToFloats(const std::vector<unsigned char>& bytes) {
    std::vector<float> floats(bytes.size() / 4);
    std::memcpy(floats.data(), bytes.data(), floats.size() * 4);
    return floats;
}

inline std::vector<unsigned char> ToBytes(const std::vector<float>& floats) {
    std::vector<unsigned char> bytes;
    for (float f : floats)
        LipsyncPutFloat(bytes, f);
    return bytes;
}

// Models A..G, X with stream-1 means 0, 10, ..., 70 in place of the shipped ones.
inline void InstallSeparatedModels(int mixtures = 1) {
    const char* letters = "ABCDEFGX";
    for (int i = 0; i < 8; ++i)
        LipsyncFiles::setOverride(std::string(1, letters[i]),
                                  LipsyncWriteModel(MakeModel(10.0f * float(i), mixtures)));
}

// Fatal errors become exceptions and warnings are collected for the time of a test.
class ExitCapture {
public:
    ExitCapture() {
        warnings().clear();
        previous_ = LipsyncSetExitRoutine(&Routine);
    }
    ~ExitCapture() {
        LipsyncSetExitRoutine(previous_);
        LipsyncFiles::resetOverrides();
    }
    ExitCapture(const ExitCapture&) = delete;
    ExitCapture& operator=(const ExitCapture&) = delete;
    static std::vector<std::string>& warnings() {
        static std::vector<std::string> list;
        return list;
    }

private:
    static void Routine(int code, const std::string& message) {
        if (code < 0) {
            warnings().push_back(message);
            return;
        }
        throw LipsyncFatalError(code, message);
    }
    LipsyncExitRoutine previous_;
};

} // namespace lipsynctest
