#include "render/detail/BM_PixelKernels.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#define BM_KERNELS_SSE2 1
#endif

namespace BM_Kernels {

namespace {

#if BM_KERNELS_SSE2
__m128i Load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
void Store(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

// The four channel sums of one source column, as 32-bit lanes.
__m128i LoadColumn(const uint16_t* p) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(static_cast<const __m128i*>(static_cast<const void*>(p))),
                              _mm_setzero_si128());
}

__m128i LoadColumn(const uint32_t* p) {
    return Load(p);
}

// (lane * m) >> 32 in each 32-bit lane, for m below 2^32 in every lane of `factor`.
__m128i MultiplyHigh(__m128i lanes, __m128i factor) {
    const __m128i even = _mm_srli_epi64(_mm_mul_epu32(lanes, factor), 32);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(lanes, 32), factor);
    return _mm_or_si128(even, _mm_and_si128(odd, _mm_set_epi32(-1, 0, -1, 0)));
}
#endif

// sums[i] (+)= the sum of rows[r][i] over kRows rows, for `count` bytes: the first rows of
// a band set the sums, the others add to them, up to four rows at a time. Paired, each sum
// takes the same byte of two neighbouring four-byte pixels, and there are half as many.
template <bool kVector, class Sum, bool kAdd, size_t kRows, bool kPaired>
void WidenRows(Sum* sums, const uint8_t* const* rowList, size_t count) {
    // Held locally: the stores to the sums could otherwise alias the list of rows.
    const uint8_t* rows[kRows];
    for (size_t r = 0; r < kRows; ++r)
        rows[r] = rowList[r];
    size_t i = 0;
#if BM_KERNELS_SSE2
    if constexpr (kVector && sizeof(Sum) <= 4) {
        const __m128i zero = _mm_setzero_si128();
        for (; i + 16 <= count; i += 16) {
            __m128i lo = zero, hi = zero;
            for (size_t r = 0; r < kRows; ++r) {
                const __m128i bytes = Load(rows[r] + i);
                lo = _mm_add_epi16(lo, _mm_unpacklo_epi8(bytes, zero));
                hi = _mm_add_epi16(hi, _mm_unpackhi_epi8(bytes, zero));
            }
            Sum* out = sums + (kPaired ? i / 2 : i);
            if constexpr (kPaired) {
                // lo holds pixels 0 and 1, hi pixels 2 and 3: the pair sums go to the low half.
                lo = _mm_add_epi16(_mm_unpacklo_epi64(lo, hi), _mm_unpackhi_epi64(lo, hi));
                if constexpr (sizeof(Sum) == 2) {
                    Store(out, kAdd ? _mm_add_epi16(Load(out), lo) : lo);
                } else {
                    const __m128i parts[2] = {_mm_unpacklo_epi16(lo, zero), _mm_unpackhi_epi16(lo, zero)};
                    for (size_t k = 0; k < 2; ++k)
                        Store(out + 4 * k, kAdd ? _mm_add_epi32(Load(out + 4 * k), parts[k]) : parts[k]);
                }
            } else if constexpr (sizeof(Sum) == 2) {
                Store(out, kAdd ? _mm_add_epi16(Load(out), lo) : lo);
                Store(out + 8, kAdd ? _mm_add_epi16(Load(out + 8), hi) : hi);
            } else {
                const __m128i parts[4] = {_mm_unpacklo_epi16(lo, zero), _mm_unpackhi_epi16(lo, zero),
                                          _mm_unpacklo_epi16(hi, zero), _mm_unpackhi_epi16(hi, zero)};
                for (size_t k = 0; k < 4; ++k)
                    Store(out + 4 * k, kAdd ? _mm_add_epi32(Load(out + 4 * k), parts[k]) : parts[k]);
            }
        }
    }
#endif
    constexpr size_t kStep = kPaired ? 8 : 1;
    for (; i + kStep <= count; i += kStep) {
        for (size_t c = 0; c < (kPaired ? 4 : 1); ++c) {
            Sum* out = sums + (kPaired ? i / 2 : i) + c;
            Sum value = kAdd ? *out : 0;
            for (size_t r = 0; r < kRows; ++r)
                value = static_cast<Sum>(value + rows[r][i + c] + (kPaired ? rows[r][i + 4 + c] : 0));
            *out = value;
        }
    }
}

// Four rows at a time, then two, then one.
template <bool kVector, bool kPaired, class Sum>
void SumRowsOf(Sum* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    size_t r = 0;
    if (rowCount >= 4) {
        WidenRows<kVector, Sum, false, 4, kPaired>(sums, rows, count);
        r = 4;
    } else if (rowCount >= 2) {
        WidenRows<kVector, Sum, false, 2, kPaired>(sums, rows, count);
        r = 2;
    } else {
        WidenRows<kVector, Sum, false, 1, kPaired>(sums, rows, count);
        r = 1;
    }
    for (; r + 4 <= rowCount; r += 4)
        WidenRows<kVector, Sum, true, 4, kPaired>(sums, rows + r, count);
    if (r + 2 <= rowCount) {
        WidenRows<kVector, Sum, true, 2, kPaired>(sums, rows + r, count);
        r += 2;
    }
    if (r < rowCount)
        WidenRows<kVector, Sum, true, 1, kPaired>(sums, rows + r, count);
}

// One destination row, a box at a time.
template <class Sum>
void PlainBoxRow(uint8_t* out, const Sum* sums, const uint32_t* ends, const BoxDivider* divide,
                 uint32_t width, bool swap) {
    const Sum* p = sums;
    uint32_t sx = 0;
    for (uint32_t dx = 0; dx < width; ++dx, out += 4) {
        uint32_t total[4] = {0, 0, 0, 0};
        for (const uint32_t end = ends[dx]; sx < end; ++sx, p += 4)
            for (int c = 0; c < 4; ++c)
                total[c] += p[c];
        const BoxDivider& d = divide[dx];
        const uint8_t bytes[4] = {d(total[swap ? 2 : 0]), d(total[1]), d(total[swap ? 0 : 2]), d(total[3])};
        std::memcpy(out, bytes, 4);
    }
}

#if BM_KERNELS_SSE2
// The first and third byte of each 32-bit lane exchanged.
__m128i SwapLanes(__m128i v) {
    const __m128i low = _mm_set1_epi32(0xFF);
    const __m128i first = _mm_and_si128(_mm_srli_epi32(v, 16), low);
    const __m128i third = _mm_slli_epi32(_mm_and_si128(v, low), 16);
    return _mm_or_si128(_mm_and_si128(v, _mm_set1_epi32(static_cast<int>(0xFF00FF00u))),
                        _mm_or_si128(first, third));
}

// The channel sums of the next `count` columns, as four 32-bit lanes; `p` moves past them.
[[gnu::always_inline]] inline __m128i SumColumns(const uint16_t*& p, uint32_t count) {
    const __m128i zero = _mm_setzero_si128();
    __m128i acc = zero;
    for (; count >= 2; count -= 2, p += 8) {
        const __m128i two = Load(p);
        acc = _mm_add_epi32(acc, _mm_add_epi32(_mm_unpacklo_epi16(two, zero), _mm_unpackhi_epi16(two, zero)));
    }
    if (count) {
        acc = _mm_add_epi32(acc, LoadColumn(p));
        p += 4;
    }
    return acc;
}
[[gnu::always_inline]] inline __m128i SumColumns(const uint32_t*& p, uint32_t count) {
    __m128i acc = _mm_setzero_si128();
    for (; count > 0; --count, p += 4)
        acc = _mm_add_epi32(acc, Load(p));
    return acc;
}

// Division lane by lane, for the boxes that the multiply does not serve.
[[gnu::noinline]] __m128i DivideEach(__m128i sums, const BoxDivider& d) {
    uint32_t lanes[4];
    Store(lanes, sums);
    for (uint32_t& lane : lanes)
        lane = d(lane);
    return Load(lanes);
}

// Four lanes divided by one box size. The multiplier of a one-pixel box is 2^32: its low
// half is 0 and the sum itself is added instead, so no test is needed for it.
[[gnu::always_inline]] inline __m128i Divide(__m128i sums, const BoxDivider& d) {
    if (d.m == 0) [[unlikely]]
        return DivideEach(sums, d);
    const __m128i low = MultiplyHigh(sums, _mm_set1_epi32(static_cast<int>(static_cast<uint32_t>(d.m))));
    return _mm_add_epi32(low, _mm_and_si128(sums, _mm_set1_epi32(-static_cast<int>(d.m >> 32))));
}

// Two destination pixels packed to bytes and stored together.
void StorePair(uint8_t* out, __m128i first, __m128i second, bool swap) {
    const __m128i words = _mm_packs_epi32(first, second);
    __m128i bytes = _mm_packus_epi16(words, words);
    if (swap)
        bytes = SwapLanes(bytes);
    _mm_storel_epi64(static_cast<__m128i*>(static_cast<void*>(out)), bytes);
}

// Boxes [0, end) of `columns` columns each and one divider, two at a time. A box of a
// power of two pixels is divided by a shift.
template <uint32_t kColumns, bool kSwap, bool kShift, class Sum>
void UniformBoxes(uint8_t*& out, const Sum*& p, uint32_t end, uint32_t columns, const BoxDivider& d) {
    if constexpr (kColumns != 0)
        columns = kColumns;
    int shift = 0;
    while ((uint64_t(1) << shift) < d.n)
        ++shift;
    const __m128i count = _mm_cvtsi32_si128(shift);
    const auto divide = [&](__m128i sums) { return kShift ? _mm_srl_epi32(sums, count) : Divide(sums, d); };
    for (uint32_t dx = 0; dx + 2 <= end; dx += 2, out += 8) {
        const __m128i first = divide(SumColumns(p, columns));
        const __m128i second = divide(SumColumns(p, columns));
        StorePair(out, first, second, kSwap);
    }
}

template <uint32_t kColumns, bool kSwap, class Sum>
void UniformBoxes(uint8_t*& out, const Sum*& p, uint32_t end, uint32_t columns, const BoxDivider& d) {
    if ((d.n & (d.n - 1)) == 0)
        UniformBoxes<kColumns, kSwap, true>(out, p, end, columns, d);
    else
        UniformBoxes<kColumns, kSwap, false>(out, p, end, columns, d);
}

// Boxes [0, end) of `shortest` or one more columns, two at a time: the extra column is
// added under a mask, so that the irregular widths cost no mispredicted branches.
template <bool kSwap, class Sum>
void NearUniformBoxes(uint8_t*& out, const Sum*& p, const uint32_t* ends, const BoxDivider* divide,
                      uint32_t end, uint32_t shortest) {
    uint32_t sx = 0;
    const auto box = [&](uint32_t dx) {
        __m128i acc = SumColumns(p, shortest);
        const uint32_t extra = ends[dx] - sx - shortest;
        acc = _mm_add_epi32(acc, _mm_and_si128(LoadColumn(p), _mm_set1_epi32(-static_cast<int>(extra))));
        p += 4 * extra;
        sx = ends[dx];
        return Divide(acc, divide[dx]);
    };
    for (uint32_t dx = 0; dx + 2 <= end; dx += 2, out += 8) {
        const __m128i first = box(dx);
        const __m128i second = box(dx + 1);
        StorePair(out, first, second, kSwap);
    }
}

template <bool kSwap, class Sum>
void RegularBoxes(uint8_t*& out, const Sum*& p, const uint32_t* ends, const BoxDivider* divide, uint32_t end,
                  uint32_t shortest) {
    if (ends[end - 1] != shortest * end)
        NearUniformBoxes<kSwap>(out, p, ends, divide, end, shortest);
    else if (shortest == 1)
        UniformBoxes<1, kSwap>(out, p, end, shortest, divide[0]);
    else if (shortest == 2)
        UniformBoxes<2, kSwap>(out, p, end, shortest, divide[0]);
    else
        UniformBoxes<0, kSwap>(out, p, end, shortest, divide[0]);
}

// Two destination pixels per step. When the boxes before the last are regular, they go
// through the loops above; whatever remains through the plain one.
template <class Sum>
void VectorBoxRow(uint8_t* out, const Sum* sums, const uint32_t* ends, const BoxDivider* divide,
                  uint32_t width, uint32_t shortest, bool swap) {
    const Sum* p = sums;
    uint32_t sx = 0, dx = 0;
    if (shortest > 0 && width > 2) {
        const uint32_t regular = (width - 1) & ~1u;
        if (swap)
            RegularBoxes<true>(out, p, ends, divide, regular, shortest);
        else
            RegularBoxes<false>(out, p, ends, divide, regular, shortest);
        dx = regular;
        sx = ends[dx - 1];
    }
    for (; dx + 2 <= width; dx += 2, out += 8) {
        const __m128i first = Divide(SumColumns(p, ends[dx] - sx), divide[dx]);
        const __m128i second = Divide(SumColumns(p, ends[dx + 1] - ends[dx]), divide[dx + 1]);
        sx = ends[dx + 1];
        StorePair(out, first, second, swap);
    }
    if (dx < width) {
        const __m128i last = Divide(SumColumns(p, ends[dx] - sx), divide[dx]);
        const __m128i words = _mm_packs_epi32(last, last);
        __m128i bytes = _mm_packus_epi16(words, words);
        if (swap)
            bytes = SwapLanes(bytes);
        const uint32_t word = static_cast<uint32_t>(_mm_cvtsi128_si32(bytes));
        std::memcpy(out, &word, 4);
    }
}
#endif

template <bool kVector> void SwapRedBlueOf(uint8_t* out, const uint8_t* in, size_t count) {
    size_t i = 0;
#if BM_KERNELS_SSE2
    if constexpr (kVector)
        for (; i + 4 <= count; i += 4)
            Store(out + 4 * i, SwapLanes(Load(in + 4 * i)));
#endif
    for (; i < count; ++i) {
        const uint8_t b0 = in[4 * i], b1 = in[4 * i + 1], b2 = in[4 * i + 2], b3 = in[4 * i + 3];
        out[4 * i] = b2;
        out[4 * i + 1] = b1;
        out[4 * i + 2] = b0;
        out[4 * i + 3] = b3;
    }
}

#if BM_KERNELS_SSE2
constexpr bool kVector = true;
template <class Sum>
void BoxRowOf(uint8_t* out, const Sum* sums, const uint32_t* ends, const BoxDivider* divide, uint32_t width,
              uint32_t shortest, bool swap) {
    VectorBoxRow(out, sums, ends, divide, width, shortest, swap);
}
#else
constexpr bool kVector = false;
template <class Sum>
void BoxRowOf(uint8_t* out, const Sum* sums, const uint32_t* ends, const BoxDivider* divide, uint32_t width,
              uint32_t, bool swap) {
    PlainBoxRow(out, sums, ends, divide, width, swap);
}
#endif

} // namespace

void SwapRedBlue(uint8_t* out, const uint8_t* in, size_t count) {
    SwapRedBlueOf<kVector>(out, in, count);
}

void SumRows(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, false>(sums, rows, rowCount, count);
}
void SumRows(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, false>(sums, rows, rowCount, count);
}
void SumRows(uint64_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, false>(sums, rows, rowCount, count);
}
void SumRowsPaired(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, true>(sums, rows, rowCount, count);
}
void SumRowsPaired(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, true>(sums, rows, rowCount, count);
}
void SumRowsPaired(uint64_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<kVector, true>(sums, rows, rowCount, count);
}

void BoxRow4(uint8_t* out, const uint16_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap) {
    BoxRowOf(out, sums, ends, divide, width, shortest, swap);
}
void BoxRow4(uint8_t* out, const uint32_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap) {
    BoxRowOf(out, sums, ends, divide, width, shortest, swap);
}

namespace Portable {

void SwapRedBlue(uint8_t* out, const uint8_t* in, size_t count) {
    SwapRedBlueOf<false>(out, in, count);
}
void SumRows(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<false, false>(sums, rows, rowCount, count);
}
void SumRows(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<false, false>(sums, rows, rowCount, count);
}
void SumRowsPaired(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<false, true>(sums, rows, rowCount, count);
}
void SumRowsPaired(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count) {
    SumRowsOf<false, true>(sums, rows, rowCount, count);
}
void BoxRow4(uint8_t* out, const uint16_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t, bool swap) {
    PlainBoxRow(out, sums, ends, divide, width, swap);
}
void BoxRow4(uint8_t* out, const uint32_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t, bool swap) {
    PlainBoxRow(out, sums, ends, divide, width, swap);
}

} // namespace Portable

} // namespace BM_Kernels
