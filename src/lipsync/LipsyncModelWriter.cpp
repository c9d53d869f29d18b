#include "lipsync/LipsyncModelWriter.h"

#include "lipsync/HMMSet.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/detail/LogDet.h"

#include <cmath>

namespace {
constexpr double kLog2Pi = 1.8378770664093453;

void Put(std::vector<unsigned char>& bytes, double value) {
    LipsyncPutFloat(bytes, static_cast<float>(value));
}
} // namespace

float LipsyncGConst(const std::vector<float>& inverse, int n) {
    std::vector<double> a(inverse.begin(), inverse.end());
    a.resize(size_t(n) * size_t(n), 0.0);
    double logDet;
    if (!LipsyncLogDeterminant(a.data(), n, logDet))
        return 1.0e30f;
    return static_cast<float>(n * kLog2Pi - logDet);
}

std::vector<unsigned char> LipsyncWriteModel(const LipsyncModelParams& model) {
    std::vector<unsigned char> bytes;
    const int n = static_cast<int>(model.states.size()) + 2;
    const int streams = static_cast<int>(model.widths.size());
    int vecSize = 0;
    for (int w : model.widths)
        vecSize += w;
    Put(bytes, kSymBeginHMM);
    Put(bytes, kSymNumStates);
    Put(bytes, n);
    Put(bytes, kSymStreamInfo);
    Put(bytes, streams);
    for (int w : model.widths)
        Put(bytes, w);
    Put(bytes, kSymVecSize);
    Put(bytes, vecSize);
    Put(bytes, kSymFullC);
    Put(bytes, kSymNullD);
    Put(bytes, kSampKindMFCC_E_D_A);
    for (int j = 0; j < n - 2; ++j) {
        const LipsyncStateModel& state = model.states[size_t(j)];
        Put(bytes, kSymState);
        Put(bytes, j + 2);
        Put(bytes, kSymNumMixes);
        for (const auto& mixture : state.streams)
            Put(bytes, double(mixture.size()));
        Put(bytes, kSymSWeights);
        Put(bytes, streams);
        for (int s = 0; s < streams; ++s)
            Put(bytes, size_t(s) < state.streamWeights.size() ? state.streamWeights[size_t(s)] : 1.0f);
        for (int s = 0; s < streams; ++s) {
            Put(bytes, kSymStream);
            Put(bytes, s + 1);
            const auto& mixture = state.streams[size_t(s)];
            for (size_t m = 0; m < mixture.size(); ++m) {
                const LipsyncGaussian& g = mixture[m];
                Put(bytes, kSymMixture);
                Put(bytes, double(m + 1));
                Put(bytes, g.weight);
                // Sizes are written as given, so that a caller's mistake shows at loading.
                const int size = static_cast<int>(g.mean.size());
                Put(bytes, kSymMean);
                Put(bytes, size);
                for (float v : g.mean)
                    Put(bytes, v);
                const int order = static_cast<int>(std::lround(std::sqrt(double(g.inverse.size()))));
                Put(bytes, kSymInvCovar);
                Put(bytes, order);
                for (int r = 0; r < order; ++r)
                    for (int c = r; c < order; ++c)
                        Put(bytes, g.inverse[size_t(r * order + c)]);
                Put(bytes, kSymGConst);
                Put(bytes, LipsyncGConst(g.inverse, order));
            }
        }
    }
    Put(bytes, kSymTransP);
    Put(bytes, n);
    for (const auto& row : model.transitions)
        for (float p : row)
            Put(bytes, p);
    Put(bytes, kSymEndHMM);
    Put(bytes, kSymEOF);
    return bytes;
}
