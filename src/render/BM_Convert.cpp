#include "render/BM_Convert.h"

#include "render/BM_PixelMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <typeinfo>
#include <vector>

namespace {

using ConvertFn = void (*)(BM_Bitmap& dst, const BM_Bitmap& src);

// One tight loop per pair of pixel types.
template <class D, class S> void ConvertPixels(BM_Bitmap& dst, const BM_Bitmap& src) {
    const uint32_t width = src.Width();
    for (uint32_t y = 0; y < src.Height(); ++y) {
        const uint8_t* in = src.Row(y);
        uint8_t* out = dst.Row(y);
        for (uint32_t x = 0; x < width; ++x)
            D::Put(out, x, D::FromRgba(S::Get(in, x).ToRgba()));
    }
}

// Bgra32 and Rgba32 differ by the exchange of the first and third byte: one word operation.
void SwapRedBlue(BM_Bitmap& dst, const BM_Bitmap& src) {
    const uint32_t width = src.Width();
    for (uint32_t y = 0; y < src.Height(); ++y) {
        const uint8_t* in = src.Row(y);
        uint8_t* out = dst.Row(y);
        for (uint32_t x = 0; x < width; ++x) {
            uint32_t v;
            std::memcpy(&v, in + size_t(x) * 4, 4);
            v = (v & 0xFF00FF00u) | ((v >> 16) & 0xFFu) | ((v & 0xFFu) << 16);
            std::memcpy(out + size_t(x) * 4, &v, 4);
        }
    }
}

// Same pixel type in different classes: rows copied, each with its own stride.
void CopyRows(BM_Bitmap& dst, const BM_Bitmap& src) {
    const size_t rowBytes = (size_t(src.Width()) * src.GetBitsPerPixel() + 7) >> 3;
    for (uint32_t y = 0; y < src.Height(); ++y)
        std::memcpy(dst.Row(y), src.Row(y), rowBytes);
}

constexpr size_t kDestinations = 11;
constexpr size_t kSources = 14;

template <class D> constexpr std::array<ConvertFn, kSources> RowFor() {
    return {
        ConvertPixels<D, BM_PixelBgra32>, ConvertPixels<D, BM_PixelRgba32>, ConvertPixels<D, BM_PixelArgb32>,
        ConvertPixels<D, BM_PixelHsva32>, ConvertPixels<D, BM_PixelBgr24>,  ConvertPixels<D, BM_PixelRgb24>,
        ConvertPixels<D, BM_PixelHsv24>,  ConvertPixels<D, BM_PixelArgb16>, ConvertPixels<D, BM_PixelBgra16>,
        ConvertPixels<D, BM_Pixel8>,      ConvertPixels<D, BM_PixelGray8>,  ConvertPixels<D, BM_Pixel4>,
        ConvertPixels<D, BM_Pixel2>,      ConvertPixels<D, BM_Pixel1>};
}

// Indexed by destination type, then source type, in the order of BM_PixelType.
const std::array<std::array<ConvertFn, kSources>, kDestinations>& Table() {
    static const std::array<std::array<ConvertFn, kSources>, kDestinations> table = [] {
        std::array<std::array<ConvertFn, kSources>, kDestinations> t = {
            RowFor<BM_PixelBgra32>(), RowFor<BM_PixelRgba32>(), RowFor<BM_PixelArgb32>(),
            RowFor<BM_PixelHsva32>(), RowFor<BM_PixelBgr24>(),  RowFor<BM_PixelRgb24>(),
            RowFor<BM_PixelHsv24>(),  RowFor<BM_PixelArgb16>(), RowFor<BM_PixelBgra16>(),
            RowFor<BM_Pixel8>(),      RowFor<BM_PixelGray8>()};
        t[size_t(BM_PixelType::Bgra32)][size_t(BM_PixelType::Rgba32)] = SwapRedBlue;
        t[size_t(BM_PixelType::Rgba32)][size_t(BM_PixelType::Bgra32)] = SwapRedBlue;
        return t;
    }();
    return table;
}

} // namespace

bool BM_Convert(BM_Bitmap& dst, const BM_Bitmap& src) {
    const auto dstIndex = size_t(dst.GetPixelType());
    const auto srcIndex = size_t(src.GetPixelType());
    if (dstIndex >= kDestinations || srcIndex >= kSources)
        return false;
    if (typeid(dst) == typeid(src)) {
        dst.Assign(src);
        return true;
    }
    if (dst.Width() != src.Width() || dst.Height() != src.Height())
        dst.Resize(src.Width(), src.Height());
    if (src.IsEmpty())
        return true;
    if (dstIndex == srcIndex)
        CopyRows(dst, src);
    else
        Table()[dstIndex][srcIndex](dst, src);
    return true;
}

namespace {

// ---- Box average -------------------------------------------------------------------

// For one axis, the source index at which each destination index ends, in the 9-bit
// fixed point of the stepping rule. Every destination index keeps at least one source
// index, and the last one takes whatever lies beyond.
std::vector<uint32_t> BoxBoundaries(uint32_t from, uint32_t to) {
    const float ratio = float(from) / float(to);
    const auto stepInt = static_cast<uint32_t>(ratio);
    const auto stepFrac = static_cast<uint32_t>((ratio - float(stepInt)) * 512.0f + 0.5f);
    const uint64_t step = (uint64_t(stepInt) << 9) + stepFrac;
    std::vector<uint32_t> ends(to);
    for (uint32_t k = 0; k < to; ++k) {
        const uint64_t end = (step * (k + 1)) >> 9;
        ends[k] = static_cast<uint32_t>(std::min<uint64_t>(end, from - (to - 1 - k)));
    }
    ends[to - 1] = from;
    return ends;
}

// floor(sum / n) for sums of n bytes, by a multiply where that is exact: with
// m = ceil(2^32 / n) the error stays below 1/n while n*n*255 < 2^32.
struct Divider {
    uint64_t n = 1, m = 0;
    explicit Divider(uint64_t count)
        : n(count), m(count < 4096 ? ((uint64_t(1) << 32) + count - 1) / count : 0) {}
    template <class Acc> uint8_t operator()(Acc sum) const {
        return static_cast<uint8_t>(m ? (uint64_t(sum) * m) >> 32 : uint64_t(sum) / n);
    }
};

// One band of source rows at a time: each row adds its pixels into one accumulator of
// four channels per destination column, in registers while a column lasts; at the end of
// the band the sums are divided by the box sizes and written as one destination row.
template <class S, class D, class Acc> void BoxAverage(const BM_Bitmap& src, BM_Bitmap& dst) {
    const uint32_t dstW = dst.Width(), dstH = dst.Height();
    const std::vector<uint32_t> colEnds = BoxBoundaries(src.Width(), dstW);
    const std::vector<uint32_t> rowEnds = BoxBoundaries(src.Height(), dstH);
    std::vector<Acc> acc(size_t(dstW) * 4);
    // The box sizes of a row of destination pixels depend only on the band height, which
    // takes few values: the dividers are made once for each.
    std::map<uint32_t, std::vector<Divider>> dividers;
    uint32_t sy = 0;
    for (uint32_t dy = 0; dy < dstH; ++dy) {
        const uint32_t bandHeight = rowEnds[dy] - sy;
        std::fill(acc.begin(), acc.end(), Acc(0));
        for (; sy < rowEnds[dy]; ++sy) {
            const uint8_t* in = src.Row(sy);
            Acc* a = acc.data();
            uint32_t sx = 0;
            for (uint32_t dx = 0; dx < dstW; ++dx, a += 4) {
                Acc r = 0, g = 0, b = 0, al = 0;
                for (const uint32_t end = colEnds[dx]; sx < end; ++sx) {
                    const BM_Rgba c = S::Get(in, sx).ToRgba();
                    r += c.r;
                    g += c.g;
                    b += c.b;
                    al += c.a;
                }
                a[0] += r;
                a[1] += g;
                a[2] += b;
                a[3] += al;
            }
        }
        std::vector<Divider>& divide = dividers[bandHeight];
        if (divide.empty()) {
            uint32_t colStart = 0;
            for (uint32_t dx = 0; dx < dstW; ++dx) {
                divide.emplace_back(uint64_t(colEnds[dx] - colStart) * bandHeight);
                colStart = colEnds[dx];
            }
        }
        uint8_t* out = dst.Row(dy);
        const Acc* a = acc.data();
        for (uint32_t dx = 0; dx < dstW; ++dx, a += 4) {
            const Divider& d = divide[dx];
            D::Put(out, dx, D::FromRgba({d(a[0]), d(a[1]), d(a[2]), d(a[3])}));
        }
    }
}

// 32-bit sums while a box cannot overflow them, 64-bit ones beyond.
template <class S, class D> void BoxAverage(const BM_Bitmap& src, BM_Bitmap& dst) {
    const uint64_t boxW = src.Width() / dst.Width() + 2, boxH = src.Height() / dst.Height() + 2;
    if (boxW * boxH * 255 < (uint64_t(1) << 32))
        BoxAverage<S, D, uint32_t>(src, dst);
    else
        BoxAverage<S, D, uint64_t>(src, dst);
}

template <class D> bool BoxAverageInto(const BM_Bitmap& src, BM_Bitmap& dst) {
    switch (src.GetPixelType()) {
    case BM_PixelType::Rgba32:
        BoxAverage<BM_PixelRgba32, D>(src, dst);
        return true;
    case BM_PixelType::Bgra32:
        BoxAverage<BM_PixelBgra32, D>(src, dst);
        return true;
    case BM_PixelType::Rgb24:
        BoxAverage<BM_PixelRgb24, D>(src, dst);
        return true;
    case BM_PixelType::Bgr24:
        BoxAverage<BM_PixelBgr24, D>(src, dst);
        return true;
    default:
        return false;
    }
}

bool IsBoxSource(BM_PixelType t) {
    return t == BM_PixelType::Rgba32 || t == BM_PixelType::Bgra32 || t == BM_PixelType::Rgb24 ||
           t == BM_PixelType::Bgr24;
}

bool BoxScale(const BM_Bitmap& src, uint32_t newWidth, uint32_t newHeight, BM_Bitmap& dst) {
    const BM_Bitmap* source = &src;
    BM_PixelMap<BM_PixelBgra32> converted;
    if (!IsBoxSource(src.GetPixelType())) {
        BM_Convert(converted, src);
        source = &converted;
    }
    const BM_PixelType dstType = dst.GetPixelType();
    if (dstType == BM_PixelType::Rgba32 || dstType == BM_PixelType::Bgra32) {
        dst.Resize(newWidth, newHeight);
        if (dst.IsEmpty() || source->IsEmpty())
            return true;
        return dstType == BM_PixelType::Rgba32 ? BoxAverageInto<BM_PixelRgba32>(*source, dst)
                                               : BoxAverageInto<BM_PixelBgra32>(*source, dst);
    }
    if (size_t(dstType) >= kDestinations)
        return false;
    BM_PixelMap<BM_PixelBgra32> temp(newWidth, newHeight);
    if (!temp.IsEmpty() && !source->IsEmpty())
        BoxAverageInto<BM_PixelBgra32>(*source, temp);
    return BM_Convert(dst, temp);
}

// ---- Separable resampler -------------------------------------------------------------

// The taps of one pass: for each destination index a first source index and `taps` weights.
struct Filter {
    uint32_t first = 0, last = 0; // destination indices that the source reaches
    uint32_t taps = 0;
    std::vector<int64_t> start;
    std::vector<double> weights;
};

Filter MakeFilter(uint32_t oldSize, uint32_t newSize) {
    Filter f;
    const double scale = double(newSize) / double(oldSize);
    const double oldCentre = oldSize / 2.0, newCentre = newSize / 2.0;
    const double lo = std::clamp(-oldCentre * scale + newCentre, 0.0, double(newSize));
    const double hi = std::clamp((oldSize - oldCentre) * scale + newCentre, 0.0, double(newSize));
    f.first = static_cast<uint32_t>(std::floor(lo));
    f.last = static_cast<uint32_t>(std::ceil(hi));
    const bool shrinking = scale < 1.0;
    f.taps = shrinking ? static_cast<uint32_t>(std::ceil(1.0 / scale + 1.0)) : 2;
    f.start.assign(newSize, 0);
    f.weights.assign(size_t(newSize) * f.taps, 0.0);
    for (uint32_t j = f.first; j < f.last; ++j) {
        double* w = &f.weights[size_t(j) * f.taps];
        if (shrinking) {
            // Overlaps of the source pixels with the footprint of destination pixel j.
            const double begin = std::max(0.0, (j - newCentre) / scale + oldCentre);
            const double end = std::min(double(oldSize), (j + 1 - newCentre) / scale + oldCentre);
            const auto firstSrc = static_cast<int64_t>(std::floor(begin));
            f.start[j] = firstSrc;
            if (end <= begin)
                continue;
            const double norm = (1.0 / scale) / (end - begin);
            for (uint32_t t = 0; t < f.taps; ++t) {
                const double i = double(firstSrc + t);
                const double overlap = std::min(i + 1.0, end) - std::max(i, begin);
                w[t] = overlap > 0.0 ? overlap * scale * norm : 0.0;
            }
        } else {
            const double pos = (j + 0.5 - newCentre) / scale + oldCentre - 0.5;
            const double base = std::floor(pos);
            const double frac = pos - base;
            f.start[j] = static_cast<int64_t>(base);
            w[0] = 1.0 - frac;
            w[1] = frac;
        }
    }
    return f;
}

// Applies a filter along lines: `count` source values at `in + i*step`, destination
// values at `out + j*outStep`, four channels each.
void ApplyFilter(const Filter& f, uint32_t oldSize, const uint8_t* in, size_t step, uint8_t* out,
                 size_t outStep) {
    for (uint32_t j = f.first; j < f.last; ++j) {
        const double* w = &f.weights[size_t(j) * f.taps];
        double sum[4] = {0, 0, 0, 0};
        for (uint32_t t = 0; t < f.taps; ++t) {
            if (w[t] == 0.0)
                continue;
            const int64_t i = std::clamp<int64_t>(f.start[j] + t, 0, int64_t(oldSize) - 1);
            const uint8_t* p = in + size_t(i) * step;
            for (int c = 0; c < 4; ++c)
                sum[c] += w[t] * p[c];
        }
        uint8_t* o = out + size_t(j) * outStep;
        for (int c = 0; c < 4; ++c)
            o[c] = static_cast<uint8_t>(std::clamp(std::lround(sum[c]), 0L, 255L));
    }
}

void Resample(const BM_PixelMap<BM_PixelRgba32>& src, BM_PixelMap<BM_PixelRgba32>& dst) {
    const uint32_t w = src.Width(), h = src.Height(), newW = dst.Width(), newH = dst.Height();
    // Horizontal pass into a buffer of height*newWidth pixels.
    BM_PixelMap<BM_PixelRgba32> horizontal;
    const BM_PixelMap<BM_PixelRgba32>* mid = &src;
    if (newW != w) {
        horizontal.Resize(newW, h);
        const Filter f = MakeFilter(w, newW);
        for (uint32_t y = 0; y < h; ++y)
            ApplyFilter(f, w, src.Row(y), 4, horizontal.Row(y), 4);
        mid = &horizontal;
    }
    if (newH != h) {
        const Filter f = MakeFilter(h, newH);
        for (uint32_t x = 0; x < newW; ++x)
            ApplyFilter(f, h, mid->Data() + size_t(x) * 4, mid->GetStride(), dst.Data() + size_t(x) * 4,
                        dst.GetStride());
    } else {
        std::memcpy(dst.Data(), mid->Data(), mid->Size());
    }
}

bool ResampleScale(const BM_Bitmap& src, uint32_t newWidth, uint32_t newHeight, BM_Bitmap& dst) {
    const BM_PixelMap<BM_PixelRgba32>* source = dynamic_cast<const BM_PixelMap<BM_PixelRgba32>*>(&src);
    BM_PixelMap<BM_PixelRgba32> converted;
    if (!source) {
        if (!BM_Convert(converted, src))
            return false;
        source = &converted;
    }
    auto* target = dynamic_cast<BM_PixelMap<BM_PixelRgba32>*>(&dst);
    BM_PixelMap<BM_PixelRgba32> temp;
    if (!target) {
        if (size_t(dst.GetPixelType()) >= kDestinations)
            return false;
        target = &temp;
    }
    target->Resize(newWidth, newHeight);
    if (!target->IsEmpty() && !source->IsEmpty())
        Resample(*source, *target);
    return target == &dst || BM_Convert(dst, temp);
}

} // namespace

bool BM_Scale(const BM_Bitmap& src, uint32_t newWidth, uint32_t newHeight, BM_Bitmap& dst) {
    if (src.Width() == newWidth && src.Height() == newHeight)
        return BM_Convert(dst, src);
    if (newWidth <= src.Width() && newHeight <= src.Height())
        return BoxScale(src, newWidth, newHeight, dst);
    return ResampleScale(src, newWidth, newHeight, dst);
}

bool BM_Blit(BM_Bitmap& dst, int32_t x, int32_t y, int32_t width, int32_t height, const BM_Bitmap& src,
             int32_t srcX, int32_t srcY) {
    const BM_PixelType type = dst.GetPixelType();
    if (type != src.GetPixelType() || (type != BM_PixelType::Bgra32 && type != BM_PixelType::Rgba32))
        return false;
    if (x < 0 || y < 0 || srcX < 0 || srcY < 0 || width <= 0 || height <= 0)
        return true;
    const int64_t w = std::min<int64_t>({width, int64_t(dst.Width()) - x, int64_t(src.Width()) - srcX});
    const int64_t h = std::min<int64_t>({height, int64_t(dst.Height()) - y, int64_t(src.Height()) - srcY});
    for (int64_t row = 0; row < h && w > 0; ++row)
        std::memmove(dst.Row(uint32_t(y + row)) + size_t(x) * 4,
                     src.Row(uint32_t(srcY + row)) + size_t(srcX) * 4, size_t(w) * 4);
    return true;
}
