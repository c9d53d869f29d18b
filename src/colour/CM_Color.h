#pragma once

#include "colour/CM_ColorVersion.h"
#include "render/BM_PixelTypes.h"

#include <cstdint>
#include <vector>

// One colour stop of a gradient.
struct CM_GradientData {
    double position = 0.0; // 0.0 to 1.0 along the gradient
    BM_Rgba colour;        // alpha 255 is opaque
    uint32_t key = 0;      // unique within its CM_Color, so a user interface can follow a stop
    bool operator==(const CM_GradientData&) const = default;
};

using CM_GradientStops = std::vector<CM_GradientData>;

// A palette colour: solid, linear or radial, as a list of stops per palette style
// (type 121). A solid colour is two stops of the same colour at 0.0 and 1.0.
class CM_Color : public CM_ColorVersion<CM_GradientStops> {
public:
    enum Kind : uint32_t { kSolid = 0, kLinear = 1, kRadial = 2 };

    CM_Color() = default;
    explicit CM_Color(UT_WString name) : CM_ColorVersion(std::move(name)) {}
    CM_Color(UT_WString name, UT_UniqueId id) : CM_ColorVersion(std::move(name), id) {}
    // A solid colour with a newly generated id.
    static std::unique_ptr<CM_Color> MakeSolid(UT_WString name, BM_Rgba colour);

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    int GetClass() const override { return kColor; }
    // True if every stop of the current style has alpha 255.
    bool IsOpaque() const override;
    std::unique_ptr<CM_BaseColorObj> Duplicate() const override;
    std::unique_ptr<CM_BaseColorObj> DuplicateCurrentStyle() const override;

    uint32_t GetGradientKind() const { return kind_; }
    void SetGradientKind(uint32_t kind) { kind_ = kind; }
    uint32_t GetKeyCounter() const { return keyCounter_; }

    // Adds a stop to the current style under the next key and returns that key. A solid
    // colour also gets a second stop at 1.0 with the same colour and the key after; the
    // stops of a gradient stay sorted by position.
    uint32_t AddStop(const CM_GradientData& stop);
    bool RemoveStop(uint32_t key);
    const CM_GradientData* GetStop(uint32_t key) const;
    // Replaces the stop with the same key; false if there is none.
    bool SetStop(const CM_GradientData& stop);
    const CM_GradientStops& Stops() const { return Current(); }
    CM_GradientStops& Stops() { return Current(); }

    // The current style's stops and the kind of another colour.
    void CopyCurrentFrom(const CM_Color& other);
    // Every style's stops, the kind and the key counter of another colour.
    void CopyAllFrom(const CM_Color& other);

    // The colour at position t of the current style; transparent black without stops.
    BM_Rgba ColorAt(double t) const;
    static BM_Rgba ColorAt(const CM_GradientStops& stops, double t);

private:
    void SortStops(CM_GradientStops& stops);

    uint32_t kind_ = kSolid;
    uint32_t keyCounter_ = 0;
};
