#include "lipsync/Bigram.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"

#include <cmath>
#include <cstring>
#include <string>

using namespace LipsyncFrontEnd;

namespace {

constexpr int kMaxBigramSize = 256;

std::string LabelName(float value) {
    if (value == -1.0f)
        return "ENTER";
    if (value == -2.0f)
        return "EXIT";
    if (value >= 33.0f && value <= 126.0f && value == std::floor(value))
        return std::string(1, static_cast<char>(value));
    return std::string();
}

float ReadValue(LipsyncSource& source, const char* fileName) {
    float value;
    if (!source.readFloat(value))
        LipsyncFatal(8001, "ReadBigram: Unexpected end of file %s", fileName);
    return value;
}

} // namespace

Bigram* ReadBigram(const char* fileName, const HMMSet& set) {
    LipsyncSource source;
    if (!LipsyncFiles::open(fileName, source))
        LipsyncFatal(8000, "ReadBigram: Cannot open bigram file %s", fileName);
    const float size = ReadValue(source, fileName);
    if (!(size >= 1.0f && size <= float(kMaxBigramSize)) || size != std::floor(size))
        LipsyncFatal(8002, "ReadBigram: Bad size %g in %s", double(size), fileName);
    const int n = static_cast<int>(size);
    if (source.remaining() != size_t(n) * size_t(n + 1) * 4)
        LipsyncFatal(8003, "ReadBigram: %s should hold %d rows of %d values", fileName, n, n);

    Bigram* bigram = new Bigram;
    bigram->n = n;
    bigram->labels = LipsyncNewArray<NameCell*>(size_t(n), "ReadBigram");
    bigram->logP = LipsyncNewArray<float>(size_t(n) * size_t(n), "ReadBigram");
    for (int row = 0; row < n; ++row) {
        const float label = ReadValue(source, fileName);
        const std::string name = LabelName(label);
        const bool known = name == "ENTER" || name == "EXIT" || (!name.empty() && FindHMM(set, name.c_str()));
        if (!known)
            LipsyncFatal(8004, "ReadBigram: Unknown label %g in row %d of %s", double(label), row + 1,
                         fileName);
        NameCell* cell = InternName(name.c_str());
        for (int earlier = 0; earlier < row; ++earlier)
            if (bigram->labels[earlier] == cell)
                LipsyncFatal(8005, "ReadBigram: Label %s appears twice in %s", name.c_str(), fileName);
        bigram->labels[row] = cell;
        double sum = 0.0;
        for (int column = 0; column < n; ++column) {
            const float p = ReadValue(source, fileName);
            if (!(p >= 0.0f) || !std::isfinite(p))
                LipsyncFatal(8006, "ReadBigram: Negative probability %g in row %d of %s", double(p), row + 1,
                             fileName);
            sum += p;
            bigram->logP[row * n + column] =
                p < kMinLogArg ? static_cast<float>(kLogZero) : static_cast<float>(std::log(double(p)));
        }
        if (sum < 0.99 || sum > 1.01)
            LipsyncFatal(8007, "ReadBigram: Row %d (%s) of %s sums to %.3f", row + 1, name.c_str(), fileName,
                         sum);
    }
    return bigram;
}

int BigramIndex(const Bigram& bigram, const char* label) {
    for (int i = 0; i < bigram.n; ++i)
        if (std::strcmp(bigram.labels[i]->name, label) == 0)
            return i;
    return -1;
}
