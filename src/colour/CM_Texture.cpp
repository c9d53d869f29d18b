#include "colour/CM_Texture.h"

#include "core/DB_Archive.h"

void CM_Texture::Read(DB_Archive& archive) {
    currentStyle_ = archive.ReadU32();
    // A shared reference takes at least a tag and an index.
    const uint32_t styles = archive.ReadCount(6);
    if (styles == 0)
        archive.ThrowUnexpected();
    std::vector<CM_TextureData> values(styles);
    for (CM_TextureData& value : values)
        value.data = archive.ReadSharedAs<CM_ShareTextureData>();
    values_ = std::move(values);
    ReadBase(archive);
}

void CM_Texture::Write(DB_Archive& archive) {
    archive.WriteU32(currentStyle_);
    archive.WriteCount(values_.size());
    for (const CM_TextureData& value : values_)
        archive.WriteShared(value.data.get());
    WriteBase(archive);
}

bool CM_Texture::IsOpaque() const {
    const auto& data = Current().data;
    return data && data->Image().GetBitmap() && data->IsOpaque();
}

std::unique_ptr<CM_BaseColorObj> CM_Texture::Duplicate() const {
    auto copy = std::make_unique<CM_Texture>(GetName(), GetId());
    copy->values_ = values_;
    copy->currentStyle_ = currentStyle_;
    return copy;
}

std::unique_ptr<CM_BaseColorObj> CM_Texture::DuplicateCurrentStyle() const {
    auto copy = std::make_unique<CM_Texture>(GetName(), GetId());
    copy->values_ = {Current()};
    return copy;
}
