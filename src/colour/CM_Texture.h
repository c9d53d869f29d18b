#pragma once

#include "colour/CM_ColorVersion.h"
#include "colour/CM_ShareTextureData.h"

#include <memory>

// The value of a texture in one palette style: a reference to a shared image.
struct CM_TextureData {
    std::shared_ptr<CM_ShareTextureData> data;
    bool operator==(const CM_TextureData&) const = default;
};

// A palette entry that paints with an image (type 124).
class CM_Texture : public CM_ColorVersion<CM_TextureData> {
public:
    CM_Texture() = default;
    explicit CM_Texture(UT_WString name) : CM_ColorVersion(std::move(name)) {}
    CM_Texture(UT_WString name, UT_UniqueId id) : CM_ColorVersion(std::move(name), id) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    int GetClass() const override { return kTexture; }
    // True if the current style's image is present and has no transparent pixel.
    bool IsOpaque() const override;
    std::unique_ptr<CM_BaseColorObj> Duplicate() const override;
    std::unique_ptr<CM_BaseColorObj> DuplicateCurrentStyle() const override;

    const std::shared_ptr<CM_ShareTextureData>& GetTextureData() const { return Current().data; }
    void SetTextureData(std::shared_ptr<CM_ShareTextureData> data) { Current().data = std::move(data); }
};
