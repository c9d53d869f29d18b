#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <cstdint>

// A named pen: the brush radius under no and full pressure, the smoothing of a gesture
// and the palette colour it lays down.
class CPenStyle : public CPersistentObjBase {
public:
    CPenStyle() = default;
    CPenStyle(uint32_t minimum, uint32_t maximum, uint32_t smoothness, UT_WString name)
        : minimumSize(minimum), maximumSize(maximum), name(std::move(name)), smoothness(smoothness) {}

    // Smoothness is not stored: a pen read back has the default.
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    // The colour does not take part in equality.
    bool operator==(const CPenStyle& o) const {
        return minimumSize == o.minimumSize && maximumSize == o.maximumSize && name == o.name &&
               reserved == o.reserved && smoothness == o.smoothness;
    }

    static constexpr uint32_t kDefaultSmoothness = 2;

    uint32_t minimumSize = 3;
    uint32_t maximumSize = 12;
    UT_WString name = u"Pen";
    uint32_t reserved = 0;
    UT_UniqueId colour;
    uint32_t smoothness = kDefaultSmoothness;
};
