#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_UniqueId.h"
#include "vector/GR_BezierPath2d.h"

#include <cstdint>
#include <memory>

// A colour on one side of a stroke (type 205): a palette colour or texture by id, with the
// placement of a gradient or texture in drawing space. Strokes share these; the archive's
// table of shared references hands them out as std::shared_ptr, so that is how they are held.
// A colour does not change once made: recolouring gives a side another one.
class GR_Color : public CPersistentObjBase {
public:
    GR_Color();
    explicit GR_Color(UT_UniqueId id);
    GR_Color(UT_UniqueId id, const GR_Affine2d& matrix);

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    UT_UniqueId GetId() const { return id_; }
    const GR_Affine2d& GetMatrix() const { return matrix_; }
    // False: the matrix is the identity and not used.
    bool IsPlaced() const { return placed_; }
    // Creation order, which stands in for identity wherever colours are sorted.
    uint64_t Serial() const { return serial_; }

    // Equal ids and, unless the entry is a plain colour, equal placements.
    bool SameValue(const GR_Color& other, bool plain) const;

private:
    UT_UniqueId id_;
    GR_Affine2d matrix_;
    bool placed_ = false;
    uint64_t serial_;
};

using GR_ColorRef = std::shared_ptr<GR_Color>;

// Null-safe comparison by reference order (serial), null first.
inline uint64_t GR_ColorKey(const GR_ColorRef& colour) {
    return colour ? colour->Serial() : 0;
}
