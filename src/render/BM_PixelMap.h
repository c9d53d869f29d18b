#pragma once

#include "render/BM_Bitmap.h"

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

// A bitmap of one pixel type. The stride follows from the width by the rule of the type.
template <class P> class BM_PixelMap : public BM_Bitmap {
public:
    using Pixel = P;

    BM_PixelMap() = default;
    BM_PixelMap(uint32_t width, uint32_t height) : BM_Bitmap(CheckedSize(width, height), width, height) {
        stride_ = StrideFor(width);
    }
    BM_PixelMap(const BM_PixelMap& other) : BM_PixelMap() { Assign(other); }
    BM_PixelMap& operator=(const BM_PixelMap& other) {
        Assign(other);
        return *this;
    }
    BM_PixelMap(BM_PixelMap&& other) noexcept { Swap(other); }
    BM_PixelMap& operator=(BM_PixelMap&& other) noexcept {
        Swap(other);
        return *this;
    }
    void Swap(BM_PixelMap& other) noexcept {
        SwapBlocks(other);
        std::swap(stride_, other.stride_);
    }

    std::unique_ptr<BM_Bitmap> Clone() const override { return std::make_unique<BM_PixelMap<P>>(*this); }
    uint32_t GetBitsPerPixel() const override { return P::kBits; }
    BM_PixelType GetPixelType() const override { return P::kType; }
    uint32_t GetStride() const override { return stride_; }

    // A new zeroed block of the new size; the old pixels are not kept.
    void Resize(uint32_t width, uint32_t height) override {
        const uint32_t size = CheckedSize(width, height);
        Adopt(Allocate(size), size, width, height, true);
    }
    // Adopts foreign memory laid out with this type's stride.
    void SetData(uint8_t* data, uint32_t width, uint32_t height, bool owns) {
        Adopt(data, CheckedSize(width, height), width, height, owns);
    }

    uint8_t* PixelAt(uint32_t x, uint32_t y) { return Row(y) + ((size_t(P::kBits) * x) >> 3); }
    const uint8_t* PixelAt(uint32_t x, uint32_t y) const { return Row(y) + ((size_t(P::kBits) * x) >> 3); }
    P GetPixel(uint32_t x, uint32_t y) const { return P::Get(Row(y), x); }
    void SetPixel(uint32_t x, uint32_t y, const P& pixel) { P::Put(Row(y), x, pixel); }

    static uint32_t StrideFor(uint32_t width) {
        const uint64_t stride = P::Stride(width);
        if (stride > UINT32_MAX)
            throw std::bad_alloc();
        return static_cast<uint32_t>(stride);
    }
    // stride*height, refused with the allocator's exception when it does not fit in 32 bits.
    static uint32_t CheckedSize(uint32_t width, uint32_t height) {
        const uint64_t size = P::Stride(width) * uint64_t(height);
        if (size > UINT32_MAX)
            throw std::bad_alloc();
        return static_cast<uint32_t>(size);
    }

protected:
    void OnWidthChanged() override { stride_ = StrideFor(Width()); }

private:
    uint32_t stride_ = 0;
};

using BM_Bgra32Map = BM_PixelMap<BM_PixelBgra32>;
using BM_Rgba32Map = BM_PixelMap<BM_PixelRgba32>;
using BM_Argb32Map = BM_PixelMap<BM_PixelArgb32>;
using BM_Bgr24Map = BM_PixelMap<BM_PixelBgr24>;
using BM_Rgb24Map = BM_PixelMap<BM_PixelRgb24>;
using BM_Argb16Map = BM_PixelMap<BM_PixelArgb16>;
using BM_Pixel8Map = BM_PixelMap<BM_Pixel8>;
using BM_Gray8Map = BM_PixelMap<BM_PixelGray8>;
using BM_Pixel2Map = BM_PixelMap<BM_Pixel2>;
using BM_Pixel1Map = BM_PixelMap<BM_Pixel1>;

// Makes an empty map of the given pixel type.
std::unique_ptr<BM_Bitmap> BM_MakePixelMap(BM_PixelType type, uint32_t width = 0, uint32_t height = 0);
