#include "lipsync/LipsyncSound.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sndfile.h>

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr int kZeroCrossings = 8;
constexpr int kTableSteps = 512; // kernel samples per zero crossing
} // namespace

LipsyncResampler::LipsyncResampler(int inRate, int outRate) : inRate_(inRate), outRate_(outRate) {
    // Pass band up to 92% of the lower Nyquist frequency.
    cutoff_ = 0.92 * std::min(1.0, double(outRate) / double(inRate));
    halfWidth_ = static_cast<int>(std::ceil(kZeroCrossings / cutoff_));
    table_.resize(size_t(kZeroCrossings * kTableSteps + 2));
    for (size_t i = 0; i < table_.size(); ++i) {
        double x = double(i) / kTableSteps; // in zero crossings
        double sinc = i == 0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
        double window = x >= kZeroCrossings ? 0.0 : 0.5 + 0.5 * std::cos(kPi * x / kZeroCrossings);
        table_[i] = static_cast<float>(sinc * window);
    }
}

float LipsyncResampler::kernel(double x) const {
    double position = std::fabs(x * cutoff_) * kTableSteps;
    size_t index = static_cast<size_t>(position);
    if (index + 1 >= table_.size())
        return 0.0f;
    double fraction = position - double(index);
    return static_cast<float>((table_[index] * (1.0 - fraction) + table_[index + 1] * fraction) * cutoff_);
}

void LipsyncResampler::produce(std::vector<float>& out, bool final) {
    for (;;) {
        // Input time of the next output sample, as whole part and fraction.
        const int64_t numerator = nextOut_ * inRate_;
        const int64_t whole = numerator / outRate_;
        const double fraction = double(numerator % outRate_) / outRate_;
        if (final ? whole >= inputTotal_ : whole + halfWidth_ >= base_ + int64_t(pending_.size()))
            break;
        double sum = 0.0;
        for (int64_t k = whole - halfWidth_ + 1; k <= whole + halfWidth_; ++k) {
            if (k < base_ || k >= base_ + int64_t(pending_.size()))
                continue;
            sum += pending_[size_t(k - base_)] * kernel(double(k - whole) - fraction);
        }
        out.push_back(static_cast<float>(sum));
        ++nextOut_;
    }
    // Drop the input that no later output needs.
    const int64_t needed = (nextOut_ * inRate_) / outRate_ - halfWidth_;
    if (needed > base_) {
        const int64_t drop = std::min<int64_t>(needed - base_, int64_t(pending_.size()));
        pending_.erase(pending_.begin(), pending_.begin() + drop);
        base_ += drop;
    }
}

void LipsyncResampler::push(const float* in, size_t count, std::vector<float>& out) {
    pending_.insert(pending_.end(), in, in + count);
    inputTotal_ += int64_t(count);
    if (inRate_ == outRate_) {
        out.insert(out.end(), pending_.begin(), pending_.end());
        base_ += int64_t(pending_.size());
        nextOut_ = base_;
        pending_.clear();
        return;
    }
    produce(out, false);
}

void LipsyncResampler::finish(std::vector<float>& out) {
    if (inRate_ != outRate_)
        produce(out, true);
}

void LipsyncToPcm16(const std::vector<float>& in, std::vector<int16_t>& out) {
    for (float v : in) {
        float scaled = std::round(v * 32768.0f);
        out.push_back(static_cast<int16_t>(std::clamp(scaled, -32768.0f, 32767.0f)));
    }
}

bool LipsyncReadSound(const std::string& path, std::vector<int16_t>& samples, std::string& error) {
    samples.clear();
    SF_INFO info{};
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
    if (!file) {
        error = "cannot read the sound file \"" + path + "\": " + sf_strerror(nullptr);
        return false;
    }
    if (info.channels < 1 || info.channels > 64 || info.samplerate < 1000 || info.samplerate > 384000) {
        error = "the sound file \"" + path + "\" has an unsupported format";
        return false;
    }
    if (info.frames > kLipsyncLongestSound * info.samplerate) {
        error = "the sound file \"" + path + "\" is longer than 3 hours";
        return false;
    }
    sf_command(file.get(), SFC_SET_NORM_FLOAT, nullptr, SF_TRUE);
    if (info.frames > 0)
        samples.reserve(size_t(info.frames * 8000 / info.samplerate + 16));
    LipsyncResampler resampler(info.samplerate, 8000);
    const size_t chunk = 16384;
    std::vector<float> interleaved(chunk * size_t(info.channels)), mono(chunk), out;
    int64_t total = 0;
    for (;;) {
        sf_count_t got = sf_readf_float(file.get(), interleaved.data(), sf_count_t(chunk));
        if (got <= 0)
            break;
        total += got;
        if (total > kLipsyncLongestSound * info.samplerate) {
            error = "the sound file \"" + path + "\" is longer than 3 hours";
            return false;
        }
        for (sf_count_t i = 0; i < got; ++i) {
            float sum = 0.0f;
            for (int c = 0; c < info.channels; ++c)
                sum += interleaved[size_t(i) * size_t(info.channels) + size_t(c)];
            mono[size_t(i)] = sum / float(info.channels);
        }
        out.clear();
        resampler.push(mono.data(), size_t(got), out);
        LipsyncToPcm16(out, samples);
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR) {
        error = "error while reading \"" + path + "\": " + sf_strerror(file.get());
        return false;
    }
    out.clear();
    resampler.finish(out);
    LipsyncToPcm16(out, samples);
    return true;
}
