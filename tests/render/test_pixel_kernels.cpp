// The SSE2 loops of conversion and box scaling against the plain loops, on random data of
// every length, so that both sides of every loop and every tail are compared.

#include "render/detail/BM_PixelKernels.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using BM_Kernels::BoxDivider;

std::vector<uint8_t> RandomBytes(size_t count, std::mt19937& rng) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t& b : bytes)
        b = uint8_t(rng());
    return bytes;
}

TEST(PixelKernels, SwapRedBlueOfEveryLength) {
    std::mt19937 rng(1);
    for (size_t count = 0; count < 40; ++count) {
        const std::vector<uint8_t> in = RandomBytes(4 * count, rng);
        std::vector<uint8_t> fast(in.size()), plain(in.size());
        BM_Kernels::SwapRedBlue(fast.data(), in.data(), count);
        BM_Kernels::Portable::SwapRedBlue(plain.data(), in.data(), count);
        ASSERT_EQ(fast, plain) << count;
        for (size_t i = 0; i < count; ++i)
            ASSERT_EQ(plain[4 * i], in[4 * i + 2]);
        // In place, as the conversion of a map into itself would do it.
        std::vector<uint8_t> same = in;
        BM_Kernels::SwapRedBlue(same.data(), same.data(), count);
        ASSERT_EQ(same, plain) << count;
    }
}

template <class Sum> void CheckSums(std::mt19937& rng) {
    for (int round = 0; round < 200; ++round) {
        const size_t rowCount = 1 + rng() % 11;
        const size_t count = 8 * (rng() % 40);
        std::vector<std::vector<uint8_t>> data;
        std::vector<const uint8_t*> rows;
        for (size_t r = 0; r < rowCount; ++r)
            data.push_back(RandomBytes(count, rng));
        for (const auto& row : data)
            rows.push_back(row.data());
        SCOPED_TRACE(testing::Message() << rowCount << " rows of " << count << " bytes");

        std::vector<Sum> fast(count, Sum(7)), plain(count, Sum(9));
        BM_Kernels::SumRows(fast.data(), rows.data(), rowCount, count);
        BM_Kernels::Portable::SumRows(plain.data(), rows.data(), rowCount, count);
        ASSERT_EQ(fast, plain);
        for (size_t i = 0; i < count; ++i) {
            Sum expected = 0;
            for (const auto& row : data)
                expected = Sum(expected + row[i]);
            ASSERT_EQ(plain[i], expected) << i;
        }

        std::vector<Sum> fastPairs(count / 2, Sum(7)), plainPairs(count / 2, Sum(9));
        BM_Kernels::SumRowsPaired(fastPairs.data(), rows.data(), rowCount, count);
        BM_Kernels::Portable::SumRowsPaired(plainPairs.data(), rows.data(), rowCount, count);
        ASSERT_EQ(fastPairs, plainPairs);
        for (size_t i = 0; i < count / 2; ++i)
            ASSERT_EQ(plainPairs[i], Sum(plain[(i / 4) * 8 + i % 4] + plain[(i / 4) * 8 + 4 + i % 4])) << i;
    }
}

TEST(PixelKernels, ColumnSumsOfEveryBandAndLength) {
    std::mt19937 rng(2);
    CheckSums<uint16_t>(rng);
    CheckSums<uint32_t>(rng);
}

// Box rows of every shape the scaler makes: all boxes alike, boxes of two widths, boxes
// of any width; one-pixel boxes, boxes of a power of two pixels, boxes too large for the
// multiply.
template <class Sum> void CheckBoxRows(std::mt19937& rng) {
    for (int round = 0; round < 400; ++round) {
        const uint32_t width = 1 + rng() % 23;
        const uint32_t shape = rng() % 3;
        const uint32_t base = 1 + rng() % 5;
        const uint32_t band = (rng() % 4 == 0) ? 1 : 1 + rng() % (sizeof(Sum) == 2 ? 40 : 1500);
        std::vector<uint32_t> ends(width);
        uint32_t end = 0, shortest = UINT32_MAX, longest = 0;
        for (uint32_t k = 0; k < width; ++k) {
            const uint32_t columns = shape == 0 ? base : shape == 1 ? base + rng() % 2 : 1 + rng() % 9;
            end += k + 1 == width ? 1 + rng() % 9 : columns;
            ends[k] = end;
            if (k + 1 < width) {
                shortest = std::min(shortest, columns);
                longest = std::max(longest, columns);
            }
        }
        const uint32_t regular = width > 1 && longest - shortest <= 1 ? shortest : 0;
        std::vector<BoxDivider> divide;
        uint32_t start = 0;
        for (const uint32_t e : ends) {
            divide.emplace_back(uint64_t(e - start) * band);
            start = e;
        }
        // Sums as a band of `band` rows of bytes could give them.
        std::vector<Sum> sums(size_t(end) * 4);
        for (Sum& sum : sums)
            sum = Sum(rng() % (255 * band + 1));
        const bool swap = rng() % 2;
        SCOPED_TRACE(testing::Message() << "width " << width << ", shape " << shape << ", band " << band
                                        << (swap ? ", swapped" : ""));

        std::vector<uint8_t> fast(4 * width), plain(4 * width);
        BM_Kernels::BoxRow4(fast.data(), sums.data(), ends.data(), divide.data(), width, regular, swap);
        BM_Kernels::Portable::BoxRow4(plain.data(), sums.data(), ends.data(), divide.data(), width, regular,
                                      swap);
        ASSERT_EQ(fast, plain);
        // The plain loop itself against a division.
        start = 0;
        for (uint32_t k = 0; k < width; ++k) {
            uint64_t total[4] = {0, 0, 0, 0};
            for (uint32_t x = start; x < ends[k]; ++x)
                for (int c = 0; c < 4; ++c)
                    total[c] += sums[4 * x + c];
            const uint64_t n = divide[k].n;
            ASSERT_EQ(plain[4 * k + (swap ? 2 : 0)], total[0] / n);
            ASSERT_EQ(plain[4 * k + 1], total[1] / n);
            ASSERT_EQ(plain[4 * k + (swap ? 0 : 2)], total[2] / n);
            ASSERT_EQ(plain[4 * k + 3], total[3] / n);
            start = ends[k];
        }
    }
}

TEST(PixelKernels, BoxRowsOfEveryShape) {
    std::mt19937 rng(3);
    CheckBoxRows<uint16_t>(rng);
    CheckBoxRows<uint32_t>(rng);
}

// The multiply gives floor(sum / n) exactly as far as it is used, checked at the largest
// sums of each box size, where the error would show first.
TEST(PixelKernels, DividerIsExactWhereItMultiplies) {
    for (uint64_t n = 1; n < 5000; ++n) {
        const BoxDivider d(n);
        if (n * n * 255 >= (uint64_t(1) << 32)) {
            EXPECT_EQ(d.m, 0u) << n;
            continue;
        }
        for (uint64_t sum = 255 * n; sum + 2 * n > 255 * n && sum > 0; --sum)
            ASSERT_EQ(d(sum), sum / n) << n << " " << sum;
        for (uint64_t k = 1; k < 255; ++k) {
            ASSERT_EQ(d(k * n), k) << n;
            ASSERT_EQ(d(k * n - 1), k - 1) << n;
        }
    }
}

} // namespace
