#include "lipsync/SpeechFrontEnd.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/detail/ModuleState.h"

#include <array>
#include <cmath>
#include <complex>
#include <cstring>

using namespace LipsyncFrontEnd;

namespace {

// Module state, reset by the manager's tear-down.
float* gHamming = nullptr; // window table, kept for the run
int gHammingLength = 0;
int gLoChan[kFftSize / 2 + 1];
float gLoWt[kFftSize / 2 + 1];

constexpr double kPi = 3.14159265358979323846;

void BuildHamming(int n) {
    if (gHamming != nullptr && gHammingLength == n)
        return;
    gHamming = LipsyncNewArray<float>(size_t(n), "LoadData: Cannot allocate memory for file data");
    for (int i = 0; i < n; ++i)
        gHamming[i] = static_cast<float>(0.54 - 0.46 * std::cos(2.0 * kPi * i / (n - 1)));
    gHammingLength = n;
}

float Mel(int k, float fres) {
    return static_cast<float>(1127.0 * std::log(1.0 + (k - 1) * fres));
}

// Channel of each FFT bin and the weight of its lower channel.
void BuildFilterbank() {
    const int n = kFftSize;
    const float fres = static_cast<float>(1.0e7 / (double(kSourcePeriod) * n * 700.0));
    const float ms = Mel(n / 2 + 1, fres);
    float cf[kChannels + 2];
    for (int i = 1; i <= kChannels + 1; ++i)
        cf[i] = (float(i) / float(kChannels + 1)) * ms;
    int chan = 1;
    for (int k = 1; k <= n / 2; ++k) {
        float melk = Mel(k, fres);
        while (chan <= kChannels + 1 && cf[chan] < melk)
            ++chan;
        gLoChan[k] = chan - 1;
        if (chan > 1)
            gLoWt[k] = (cf[chan] - melk) / (cf[chan] - cf[chan - 1]);
        else
            gLoWt[k] = (cf[1] - melk) / cf[1];
    }
}

// In-place radix-2 FFT of kFftSize complex points.
void Fft(std::array<std::complex<float>, kFftSize>& x) {
    static const std::array<std::complex<float>, kFftSize / 2> twiddles = [] {
        std::array<std::complex<float>, kFftSize / 2> t;
        for (int i = 0; i < kFftSize / 2; ++i)
            t[size_t(i)] = std::complex<float>(static_cast<float>(std::cos(-2.0 * kPi * i / kFftSize)),
                                               static_cast<float>(std::sin(-2.0 * kPi * i / kFftSize)));
        return t;
    }();
    const int n = kFftSize;
    for (int i = 1, j = 0; i < n; ++i) {
        int bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(x[size_t(i)], x[size_t(j)]);
    }
    for (int length = 2; length <= n; length <<= 1) {
        int step = n / length;
        for (int start = 0; start < n; start += length)
            for (int k = 0; k < length / 2; ++k) {
                std::complex<float> w = twiddles[size_t(k * step)];
                std::complex<float> a = x[size_t(start + k)];
                std::complex<float> b = x[size_t(start + k + length / 2)] * w;
                x[size_t(start + k)] = a + b;
                x[size_t(start + k + length / 2)] = a - b;
            }
    }
}

// One row of c1..c8 and the raw log energy from 200 samples.
void AnalyseFrame(const int16_t* in, float* row) {
    float s[kWindowSamples];
    double energy = 0.0;
    for (int i = 0; i < kWindowSamples; ++i) {
        s[i] = static_cast<float>(in[i]);
        energy += double(in[i]) * double(in[i]);
    }
    const double logEnergy = energy < kMinLogArg ? 3.0 : std::log(energy);

    for (int i = kWindowSamples - 1; i > 0; --i)
        s[i] -= kPreEmphasis * s[i - 1];
    s[0] *= 1.0f - kPreEmphasis;
    for (int i = 0; i < kWindowSamples; ++i)
        s[i] *= gHamming[i];

    std::array<std::complex<float>, kFftSize> spectrum{};
    for (int i = 0; i < kWindowSamples; ++i)
        spectrum[size_t(i)] = std::complex<float>(s[i], 0.0f);
    Fft(spectrum);

    float acc[kChannels + 2] = {};
    for (int k = 2; k <= kFftSize / 2; ++k) {
        // Bin k counts from 1, so it is element k - 1 of the transform.
        const std::complex<float> v = spectrum[size_t(k - 1)];
        const float mag = std::sqrt(v.real() * v.real() + v.imag() * v.imag());
        const int c = gLoChan[k];
        const float t = mag * gLoWt[k];
        if (c > 0)
            acc[c] += t;
        if (c < kChannels)
            acc[c + 1] += mag - t;
    }
    double logs[kChannels];
    for (int j = 1; j <= kChannels; ++j)
        logs[j - 1] = std::log(acc[j] < 1.0f ? 1.0 : double(acc[j]));
    LipsyncDct(logs, row);
    row[kCepstra] = static_cast<float>(logEnergy);
}

// Regression over `width` columns starting at `from` into the columns starting at `to`.
void Regress(SpeechBuffer& buffer, int from, int to, int width, int window) {
    const int frames = buffer.sampleCount;
    const int stride = buffer.rowWidth();
    float denominator = 0.0f;
    for (int k = 1; k <= window; ++k)
        denominator += 2.0f * float(k * k);
    for (int t = 0; t < frames; ++t) {
        float* out = buffer.data + int64_t(t) * stride + to;
        const bool middle = t >= window && t <= frames - window - 1;
        for (int c = 0; c < width; ++c) {
            auto x = [&](int frame) { return buffer.data[int64_t(frame) * stride + from + c]; };
            float d;
            if (middle) {
                d = 0.0f;
                for (int k = 1; k <= window; ++k)
                    d += float(k) * (x(t + k) - x(t - k));
                d /= denominator;
            } else if (t < window && t + 1 < frames) {
                d = x(t + 1) - x(t);
            } else if (t >= 1) {
                d = x(t) - x(t - 1);
            } else {
                d = 0.0f; // a lone frame has no neighbour to differ from
            }
            out[c] = d;
        }
    }
}

} // namespace

void LipsyncDct(const double* logs, float* cepstra) {
    static const auto table = [] {
        std::array<double, kCepstra * kChannels> t{};
        for (int i = 1; i <= kCepstra; ++i)
            for (int j = 1; j <= kChannels; ++j)
                t[size_t((i - 1) * kChannels + j - 1)] = std::cos(i * kPi / kChannels * (j - 0.5));
        return t;
    }();
    const double scale = std::sqrt(2.0 / kChannels);
    for (int i = 0; i < kCepstra; ++i) {
        double sum = 0.0;
        for (int j = 0; j < kChannels; ++j)
            sum += logs[j] * table[size_t(i * kChannels + j)];
        cepstra[i] = static_cast<float>(scale * sum);
    }
}

int LipsyncFrameCount(int64_t samples) {
    if (samples < kWindowSamples)
        return 0;
    return static_cast<int>((samples - kWindowSamples) / kShiftSamples + 1);
}

void LipsyncFilterbankBin(int k, int& lowerChannel, float& lowerWeight) {
    const bool inRange = k >= 1 && k <= kFftSize / 2;
    lowerChannel = inRange ? gLoChan[k] : 0;
    lowerWeight = inRange ? gLoWt[k] : 0.0f;
}

void computeObservations(const int16_t* samples, int64_t byteCount, SpeechBuffer& buffer) {
    const int64_t sampleCount = byteCount / 2;
    if (sampleCount > int64_t(1) << 28)
        LipsyncFatal(5008, "PutSample: Unable to grow data file to %ld bytes",
                     static_cast<long>(LipsyncFrameCount(sampleCount) * int64_t(kVectorSize) * 4));
    const int frames = LipsyncFrameCount(sampleCount);
    BuildHamming(kWindowSamples);
    BuildFilterbank();

    buffer.sampleCount = frames;
    buffer.samplePeriod = kFramePeriod;
    buffer.sampleSize = kStaticWidth * 4;
    buffer.parmKind = kParmMFCC_E;
    // Room for the full rows of the target kind, so that coercion needs no second buffer.
    buffer.data = LipsyncNewArray<float>(size_t(frames > 0 ? frames : 1) * kVectorSize,
                                         "LoadData: Cannot allocate memory for file data");
    for (int f = 0; f < frames; ++f)
        AnalyseFrame(samples + int64_t(f) * kShiftSamples, buffer.row(f));

    if (frames == 0)
        return;
    float top = buffer.row(0)[kCepstra];
    for (int f = 1; f < frames; ++f)
        top = std::max(top, buffer.row(f)[kCepstra]);
    for (int f = 0; f < frames; ++f) {
        float& e = buffer.row(f)[kCepstra];
        e = (e - top) * kEnergyScale + 1.0f;
    }
}

void coerceToTargetKind(SpeechBuffer& buffer) {
    if (buffer.parmKind == kTargetKind)
        return;
    if (buffer.parmKind != kParmMFCC_E || buffer.sampleSize != kStaticWidth * 4)
        LipsyncFatal(5010, "ConvertHMMData: Cannot convert parameter kind %d to %d", buffer.parmKind,
                     kTargetKind);
    if (buffer.data == nullptr && buffer.sampleCount > 0)
        LipsyncFatal(5009, "LoadData: Cannot allocate memory for file data");
    // Spread the rows from the last so that each lands past the rows still to move.
    for (int t = buffer.sampleCount - 1; t > 0; --t)
        std::memmove(buffer.data + int64_t(t) * kVectorSize, buffer.data + int64_t(t) * kStaticWidth,
                     kStaticWidth * sizeof(float));
    buffer.sampleSize = kVectorSize * 4;
    buffer.parmKind = kTargetKind;
    Regress(buffer, 0, kStaticWidth, kStaticWidth, kDeltaWindow);
    Regress(buffer, kStaticWidth, 2 * kStaticWidth, kStaticWidth, kAccWindow);
}

Observation MakeStreams(int streams, const int* widths) {
    if (streams < 1 || streams > kMaxStreams)
        LipsyncFatal(5006, "MakeStreams: %d streams requested (Max is %d)", streams, kMaxStreams);
    Observation o;
    o.streams = streams;
    for (int s = 1; s <= streams; ++s)
        o.fv[s] = CreateVector(widths[s]);
    return o;
}

void frameToStreams(const SpeechBuffer& buffer, int frameIndex, Observation& streams) {
    const int size = buffer.rowWidth();
    int total = 0;
    for (int s = 1; s <= streams.streams; ++s)
        total += streams.fv[s]->size();
    if (total != size)
        LipsyncFatal(5005, "Vec2Streams: vec size=%d, total stream size=%d", size, total);
    float v[kVectorSize + 1];
    if (size > kVectorSize)
        LipsyncFatal(5005, "Vec2Streams: vec size=%d, total stream size=%d", size, total);
    std::memcpy(v + 1, buffer.row(frameIndex), size_t(size) * sizeof(float));
    if (size == kVectorSize) {
        // Move dE (18) to 26, then E (9) to 25, the others closing up.
        auto move = [&](int from, int to) {
            float x = v[from];
            for (int i = from; i < to; ++i)
                v[i] = v[i + 1];
            v[to] = x;
        };
        move(2 * kStaticWidth, kVectorSize - 1);
        move(kStaticWidth, kVectorSize - 2);
    }
    int at = 1;
    for (int s = 1; s <= streams.streams; ++s) {
        Vector& out = *streams.fv[s];
        for (int i = 1; i <= out.size(); ++i)
            out[i] = v[at++];
    }
}

double LAdd(double x, double y) {
    if (x < y)
        std::swap(x, y);
    double diff = y - x;
    if (diff < kMinLogExp)
        return x < kLogSmall ? kLogZero : x;
    double z = std::exp(diff);
    if (!std::isfinite(z))
        LipsyncFatal(5007, "LAdd: exp op failed");
    return x + std::log(1.0 + z);
}

void LipsyncResetFrontEnd() {
    gHamming = nullptr;
    gHammingLength = 0;
    std::memset(gLoChan, 0, sizeof gLoChan);
    std::memset(gLoWt, 0, sizeof gLoWt);
}
