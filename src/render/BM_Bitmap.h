#pragma once

#include "render/BM_PixelTypes.h"

#include <cstdint>
#include <memory>

// What a viewer (a QImage, a texture upload) needs to show a bitmap in place, without copying.
struct BM_ImageView {
    uint8_t* data = nullptr;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bytesPerLine = 0;
    BM_PixelType type = BM_PixelType::Rgba32;
};

// A block of pixel memory with a width and a height. The typed form is BM_PixelMap<P>.
// The first byte of `data` is the first byte of the top row.
class BM_Bitmap {
public:
    BM_Bitmap() = default;
    // Allocates `size` zero bytes.
    BM_Bitmap(uint32_t size, uint32_t width, uint32_t height);
    // Adopts foreign memory; it is freed with delete[] when `owns` is set.
    BM_Bitmap(uint8_t* data, uint32_t size, uint32_t width, uint32_t height, bool owns);
    BM_Bitmap(const BM_Bitmap&) = delete;
    BM_Bitmap& operator=(const BM_Bitmap&) = delete;
    virtual ~BM_Bitmap();

    // A new object of the same dynamic type with a deep copy of the pixels.
    virtual std::unique_ptr<BM_Bitmap> Clone() const = 0;
    virtual uint32_t GetBitsPerPixel() const = 0;
    virtual BM_PixelType GetPixelType() const = 0;
    virtual uint32_t GetStride() const = 0;
    // Gives the bitmap a new zeroed block of the new size; the old pixels are not kept.
    virtual void Resize(uint32_t width, uint32_t height) = 0;

    // Frees owned memory and leaves an empty bitmap that owns its (absent) data.
    void Reset();
    // Deep copy of the pixels, the size and the dimensions. Self-assignment does nothing.
    void Assign(const BM_Bitmap& other);

    uint8_t* Data() { return data_; }
    const uint8_t* Data() const { return data_; }
    uint32_t Size() const { return size_; }
    uint32_t Width() const { return width_; }
    uint32_t Height() const { return height_; }
    bool OwnsData() const { return ownsData_; }
    bool IsEmpty() const { return size_ == 0 || width_ == 0 || height_ == 0; }
    uint8_t* Row(uint32_t y) { return data_ + size_t(GetStride()) * y; }
    const uint8_t* Row(uint32_t y) const { return data_ + size_t(GetStride()) * y; }

    BM_ImageView View() { return {data_, width_, height_, GetStride(), GetPixelType()}; }

protected:
    // Called whenever the width changes so that typed maps recompute their stride.
    virtual void OnWidthChanged() {}
    // Replaces the block; frees the old one if owned.
    void Adopt(uint8_t* data, uint32_t size, uint32_t width, uint32_t height, bool owns);
    // Exchanges blocks and dimensions with another bitmap of the same pixel type.
    void SwapBlocks(BM_Bitmap& other) noexcept;
    // A new zeroed block, or null for size 0.
    static uint8_t* Allocate(uint32_t size);

private:
    uint8_t* data_ = nullptr;
    uint32_t size_ = 0;
    uint32_t width_ = 0;
    uint32_t height_ = 0;
    bool ownsData_ = true;
};
