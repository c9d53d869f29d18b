#include "render/BM_Bitmap.h"

#include <cstring>
#include <utility>

BM_Bitmap::BM_Bitmap(uint32_t size, uint32_t width, uint32_t height)
    : data_(Allocate(size)), size_(size), width_(width), height_(height) {}

BM_Bitmap::BM_Bitmap(uint8_t* data, uint32_t size, uint32_t width, uint32_t height, bool owns)
    : data_(data), size_(size), width_(width), height_(height), ownsData_(owns) {}

BM_Bitmap::~BM_Bitmap() {
    if (ownsData_)
        delete[] data_;
}

uint8_t* BM_Bitmap::Allocate(uint32_t size) {
    if (size == 0)
        return nullptr;
    return new uint8_t[size]();
}

void BM_Bitmap::Adopt(uint8_t* data, uint32_t size, uint32_t width, uint32_t height, bool owns) {
    if (ownsData_ && data_ != data)
        delete[] data_;
    data_ = data;
    size_ = size;
    height_ = height;
    ownsData_ = owns;
    width_ = width;
    OnWidthChanged();
}

void BM_Bitmap::Reset() {
    Adopt(nullptr, 0, 0, 0, true);
}

void BM_Bitmap::Assign(const BM_Bitmap& other) {
    if (&other == this)
        return;
    uint8_t* copy = Allocate(other.size_);
    if (copy)
        std::memcpy(copy, other.data_, other.size_);
    Adopt(copy, other.size_, other.width_, other.height_, true);
}

void BM_Bitmap::SwapBlocks(BM_Bitmap& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    std::swap(ownsData_, other.ownsData_);
}
