#pragma once

#include <cstddef>
#include <cstdint>

// The innermost loops of conversion and box scaling, over plain byte and sum arrays.
// Each has an SSE2 body where the target has SSE2 (every x86-64 does) and a plain loop
// elsewhere and for the tail; both give the same results, bit for bit.
namespace BM_Kernels {

// Exchanges the first and third byte of each of `count` four-byte pixels: BGRA to RGBA
// and back. `out` may equal `in`.
void SwapRedBlue(uint8_t* out, const uint8_t* in, size_t count);

// Column sums of a band of rows: sums[i] becomes the sum of rows[r][i] over the
// `rowCount` rows (at least one), for `count` bytes. The caller keeps the sums from
// overflowing: a band of at most 257 rows for 16-bit sums.
void SumRows(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRows(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRows(uint64_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
// The same over rows of four-byte pixels, `count` a multiple of 8, with each sum taking two
// neighbouring pixels: sums[4j + c] adds the bytes 8j + c and 8j + 4 + c of every row.
void SumRowsPaired(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRowsPaired(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRowsPaired(uint64_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);

// floor(sum / n) for the sums of n bytes, by a multiply where that is exact: with
// m = ceil(2^32 / n) the error stays below 1/n while n * n * 255 < 2^32 (n up to 4103).
// Beyond that m is 0 and the division is done as such.
struct BoxDivider {
    uint64_t n = 1, m = 0;
    BoxDivider() = default;
    explicit BoxDivider(uint64_t count)
        : n(count),
          m(count * count * 255 < (uint64_t(1) << 32) ? ((uint64_t(1) << 32) + count - 1) / count : 0) {}
    template <class Sum> uint8_t operator()(Sum sum) const {
        return static_cast<uint8_t>(m ? (uint64_t(sum) * m) >> 32 : uint64_t(sum) / n);
    }
};

// One destination row of a box average of four-channel sums: destination column k takes
// the source columns up to ends[k], its channel sums are divided by divide[k], and the
// four bytes are written in the order of the sums, or with the first and third exchanged
// when `swap` is set. A non-zero `shortest` says that every box but the last has that many
// columns or one more; the rows of a box all have the same height. Every box must hold
// fewer than 2^32 / 255 bytes of one channel.
void BoxRow4(uint8_t* out, const uint16_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap);
void BoxRow4(uint8_t* out, const uint32_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap);

// The plain loops alone, whatever the target: what a machine without SSE2 runs, and what
// the tests hold the SSE2 loops to.
namespace Portable {
void SwapRedBlue(uint8_t* out, const uint8_t* in, size_t count);
void SumRows(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRows(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRowsPaired(uint16_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void SumRowsPaired(uint32_t* sums, const uint8_t* const* rows, size_t rowCount, size_t count);
void BoxRow4(uint8_t* out, const uint16_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap);
void BoxRow4(uint8_t* out, const uint32_t* sums, const uint32_t* ends, const BoxDivider* divide,
             uint32_t width, uint32_t shortest, bool swap);
} // namespace Portable

} // namespace BM_Kernels
