#include "render/BM_Convert.h"

#include "render/BM_PixelMap.h"
#include "render/detail/BM_PixelKernels.h"

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

// Bgra32 and Rgba32 differ by the exchange of the first and third byte.
void SwapRedBlue(BM_Bitmap& dst, const BM_Bitmap& src) {
    for (uint32_t y = 0; y < src.Height(); ++y)
        BM_Kernels::SwapRedBlue(dst.Row(y), src.Row(y), src.Width());
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

using BM_Kernels::BoxDivider;

// Where the channels of a box source lie: three or four bytes, red first or blue first.
// The destinations, BM_PixelRgba32 and BM_PixelBgra32, are described the same way.
template <class P> struct BoxLayout;
template <> struct BoxLayout<BM_PixelRgba32> {
    static constexpr uint32_t kBytes = 4;
    static constexpr bool kRedFirst = true;
};
template <> struct BoxLayout<BM_PixelBgra32> {
    static constexpr uint32_t kBytes = 4;
    static constexpr bool kRedFirst = false;
};
template <> struct BoxLayout<BM_PixelRgb24> {
    static constexpr uint32_t kBytes = 3;
    static constexpr bool kRedFirst = true;
};
template <> struct BoxLayout<BM_PixelBgr24> {
    static constexpr uint32_t kBytes = 3;
    static constexpr bool kRedFirst = false;
};

// One destination row from the column sums of a band, for any source layout and sums of
// any width. A source without alpha is opaque.
template <class S, class D, class Column, class Total>
void BoxRow(uint8_t* out, const Column* sums, const std::vector<uint32_t>& ends,
            const std::vector<BoxDivider>& divide) {
    constexpr uint32_t kBytes = BoxLayout<S>::kBytes;
    const Column* p = sums;
    uint32_t sx = 0;
    for (uint32_t dx = 0; dx < ends.size(); ++dx) {
        Total total[kBytes] = {};
        for (; sx < ends[dx]; ++sx, p += kBytes)
            for (uint32_t c = 0; c < kBytes; ++c)
                total[c] += p[c];
        const BoxDivider& d = divide[dx];
        const uint8_t first = d(total[0]), green = d(total[1]), third = d(total[2]);
        const uint8_t alpha = kBytes == 4 ? d(total[kBytes - 1]) : 255;
        const BM_Rgba rgba = BoxLayout<S>::kRedFirst ? BM_Rgba{first, green, third, alpha}
                                                     : BM_Rgba{third, green, first, alpha};
        D::Put(out, dx, D::FromRgba(rgba));
    }
}

// The width of the narrowest box but the last when every box but the last has that width
// or one more, else 0.
uint32_t ShortestRegularWidth(const std::vector<uint32_t>& ends) {
    uint32_t shortest = UINT32_MAX, longest = 0, start = 0;
    for (size_t k = 0; k + 1 < ends.size(); ++k) {
        shortest = std::min(shortest, ends[k] - start);
        longest = std::max(longest, ends[k] - start);
        start = ends[k];
    }
    return longest > 0 && longest - shortest <= 1 ? shortest : 0;
}

// One band of source rows at a time: the rows are added up column by column into one sum
// per byte (a plain run over the bytes, whatever the pixel layout), then the sums of each
// destination box are taken from those and divided. The work per source byte is one
// widening add; the work per box is done once per band instead of once per row.
// With `paired`, every box starts and ends on an even column: the column sums then take
// two neighbouring pixels each, which halves the sums and the work of the boxes.
template <class S, class D, class Column, class Total>
void BoxAverage(const BM_Bitmap& src, BM_Bitmap& dst, const std::vector<uint32_t>& colEnds,
                const std::vector<uint32_t>& rowEnds, bool paired) {
    const uint32_t step = paired ? 2 : 1;
    std::vector<uint32_t> sumEnds(colEnds);
    for (uint32_t& end : sumEnds)
        end /= step;
    const uint32_t shortest = ShortestRegularWidth(sumEnds);
    const size_t rowBytes = size_t(src.Width()) * BoxLayout<S>::kBytes;
    std::vector<Column> sums(rowBytes / step);
    std::vector<const uint8_t*> rows;
    // The box sizes of a destination row depend only on the band height, which takes
    // few values: the dividers are made once for each.
    std::map<uint32_t, std::vector<BoxDivider>> dividers;
    uint32_t sy = 0;
    for (uint32_t dy = 0; dy < dst.Height(); ++dy) {
        const uint32_t bandHeight = rowEnds[dy] - sy;
        rows.clear();
        for (; sy < rowEnds[dy]; ++sy)
            rows.push_back(src.Row(sy));
        if (paired)
            BM_Kernels::SumRowsPaired(sums.data(), rows.data(), rows.size(), rowBytes);
        else
            BM_Kernels::SumRows(sums.data(), rows.data(), rows.size(), rowBytes);
        std::vector<BoxDivider>& divide = dividers[bandHeight];
        if (divide.empty()) {
            uint32_t colStart = 0;
            for (const uint32_t colEnd : colEnds) {
                divide.emplace_back(uint64_t(colEnd - colStart) * bandHeight);
                colStart = colEnd;
            }
        }
        if constexpr (BoxLayout<S>::kBytes == 4 && sizeof(Total) == 4)
            BM_Kernels::BoxRow4(dst.Row(dy), sums.data(), sumEnds.data(), divide.data(), dst.Width(),
                                shortest, BoxLayout<S>::kRedFirst != BoxLayout<D>::kRedFirst);
        else
            BoxRow<S, D, Column, Total>(dst.Row(dy), sums.data(), sumEnds, divide);
    }
}

uint32_t LongestRun(const std::vector<uint32_t>& ends) {
    uint32_t longest = 0, start = 0;
    for (const uint32_t end : ends) {
        longest = std::max(longest, end - start);
        start = end;
    }
    return longest;
}

// The narrowest sums that cannot overflow: 16-bit column sums for bands of at most 257
// rows (128 when paired), 32-bit box totals while a box of one channel stays below 2^32.
template <class S, class D> void BoxAverage(const BM_Bitmap& src, BM_Bitmap& dst) {
    const std::vector<uint32_t> colEnds = BoxBoundaries(src.Width(), dst.Width());
    const std::vector<uint32_t> rowEnds = BoxBoundaries(src.Height(), dst.Height());
    const bool paired = BoxLayout<S>::kBytes == 4 && std::all_of(colEnds.begin(), colEnds.end(),
                                                                 [](uint32_t end) { return end % 2 == 0; });
    const uint64_t band = uint64_t(LongestRun(rowEnds)) * 255;
    const uint64_t column = band * (paired ? 2 : 1);
    const bool narrowTotals = band * LongestRun(colEnds) <= UINT32_MAX;
    if (column <= UINT16_MAX && narrowTotals)
        BoxAverage<S, D, uint16_t, uint32_t>(src, dst, colEnds, rowEnds, paired);
    else if (narrowTotals)
        BoxAverage<S, D, uint32_t, uint32_t>(src, dst, colEnds, rowEnds, paired);
    else if (column <= UINT32_MAX)
        BoxAverage<S, D, uint32_t, uint64_t>(src, dst, colEnds, rowEnds, paired);
    else
        BoxAverage<S, D, uint64_t, uint64_t>(src, dst, colEnds, rowEnds, paired);
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
        // Every pixel is written below: a map of the right size is reused as it is.
        if (dst.Width() != newWidth || dst.Height() != newHeight)
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
