#include "colour/CM_Color.h"

#include "core/DB_Archive.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t kStopBytes = 8 + 4 + 4;

uint8_t Lerp(uint8_t left, uint8_t right, double fraction) {
    return static_cast<uint8_t>(static_cast<int>(left + (double(right) - double(left)) * fraction));
}

} // namespace

std::unique_ptr<CM_Color> CM_Color::MakeSolid(UT_WString name, BM_Rgba colour) {
    auto color = std::make_unique<CM_Color>(std::move(name));
    color->AddStop({0.0, colour, 0});
    return color;
}

void CM_Color::Read(DB_Archive& archive) {
    kind_ = archive.ReadU32();
    currentStyle_ = archive.ReadU32();
    const uint32_t styles = archive.ReadCount(4);
    if (styles == 0)
        archive.ThrowUnexpected();
    std::vector<CM_GradientStops> values(styles);
    uint32_t maxKey = 0;
    bool anyStop = false;
    for (CM_GradientStops& stops : values) {
        const uint32_t count = archive.ReadCount(kStopBytes);
        stops.resize(count);
        for (CM_GradientData& stop : stops) {
            stop.position = archive.ReadF64();
            stop.colour.r = archive.ReadU8();
            stop.colour.g = archive.ReadU8();
            stop.colour.b = archive.ReadU8();
            stop.colour.a = archive.ReadU8();
            stop.key = archive.ReadU32();
            maxKey = std::max(maxKey, stop.key);
            anyStop = true;
        }
    }
    values_ = std::move(values);
    // New keys must not meet any key of any style.
    keyCounter_ = anyStop ? maxKey + 1 : 0;
    ReadBase(archive);
}

void CM_Color::Write(DB_Archive& archive) {
    archive.WriteU32(kind_);
    archive.WriteU32(currentStyle_);
    archive.WriteCount(values_.size());
    for (const CM_GradientStops& stops : values_) {
        archive.WriteCount(stops.size());
        for (const CM_GradientData& stop : stops) {
            archive.WriteF64(stop.position);
            archive.WriteU8(stop.colour.r);
            archive.WriteU8(stop.colour.g);
            archive.WriteU8(stop.colour.b);
            archive.WriteU8(stop.colour.a);
            archive.WriteU32(stop.key);
        }
    }
    WriteBase(archive);
}

bool CM_Color::IsOpaque() const {
    const CM_GradientStops& stops = Current();
    return std::all_of(stops.begin(), stops.end(),
                       [](const CM_GradientData& s) { return s.colour.a == 255; });
}

std::unique_ptr<CM_BaseColorObj> CM_Color::Duplicate() const {
    auto copy = std::make_unique<CM_Color>(GetName(), GetId());
    copy->CopyAllFrom(*this);
    copy->currentStyle_ = currentStyle_;
    return copy;
}

std::unique_ptr<CM_BaseColorObj> CM_Color::DuplicateCurrentStyle() const {
    auto copy = std::make_unique<CM_Color>(GetName(), GetId());
    copy->kind_ = kind_;
    copy->keyCounter_ = keyCounter_;
    copy->values_ = {Current()};
    return copy;
}

uint32_t CM_Color::AddStop(const CM_GradientData& stop) {
    CM_GradientStops& stops = Current();
    const uint32_t key = keyCounter_++;
    CM_GradientData added = stop;
    added.key = key;
    stops.push_back(added);
    if (kind_ == kSolid) {
        CM_GradientData end = added;
        end.position = 1.0;
        end.key = keyCounter_++;
        stops.push_back(end);
    } else {
        SortStops(stops);
    }
    return key;
}

bool CM_Color::RemoveStop(uint32_t key) {
    return std::erase_if(Current(), [key](const CM_GradientData& s) { return s.key == key; }) != 0;
}

const CM_GradientData* CM_Color::GetStop(uint32_t key) const {
    const CM_GradientStops& stops = Current();
    const auto it =
        std::find_if(stops.begin(), stops.end(), [key](const CM_GradientData& s) { return s.key == key; });
    return it == stops.end() ? nullptr : &*it;
}

bool CM_Color::SetStop(const CM_GradientData& stop) {
    CM_GradientStops& stops = Current();
    const auto it = std::find_if(stops.begin(), stops.end(),
                                 [&stop](const CM_GradientData& s) { return s.key == stop.key; });
    if (it == stops.end())
        return false;
    const bool moved = it->position != stop.position;
    *it = stop;
    if (moved)
        SortStops(stops);
    return true;
}

void CM_Color::SortStops(CM_GradientStops& stops) {
    std::stable_sort(stops.begin(), stops.end(), [](const CM_GradientData& a, const CM_GradientData& b) {
        return a.position < b.position;
    });
}

void CM_Color::CopyCurrentFrom(const CM_Color& other) {
    Current() = other.Current();
    kind_ = other.kind_;
    keyCounter_ = std::max(keyCounter_, other.keyCounter_);
}

void CM_Color::CopyAllFrom(const CM_Color& other) {
    values_ = other.values_;
    kind_ = other.kind_;
    keyCounter_ = other.keyCounter_;
    if (currentStyle_ >= values_.size())
        currentStyle_ = static_cast<uint32_t>(values_.size() - 1);
}

BM_Rgba CM_Color::ColorAt(double t) const {
    return ColorAt(Current(), t);
}

BM_Rgba CM_Color::ColorAt(const CM_GradientStops& stops, double t) {
    if (stops.empty())
        return {0, 0, 0, 0};
    if (t < 0.0)
        return stops.front().colour;
    if (t > 1.0)
        return stops.back().colour;
    const auto right =
        std::find_if(stops.begin(), stops.end(), [t](const CM_GradientData& s) { return !(s.position < t); });
    BM_Rgba leftColour, rightColour;
    double leftPos, rightPos;
    if (right == stops.end()) {
        leftColour = rightColour = stops.back().colour;
        leftPos = stops.back().position;
        rightPos = 1.0;
    } else if (right == stops.begin()) {
        leftColour = rightColour = right->colour;
        leftPos = 0.0;
        rightPos = right->position;
    } else {
        leftColour = (right - 1)->colour;
        leftPos = (right - 1)->position;
        rightColour = right->colour;
        rightPos = right->position;
    }
    const double d = rightPos - leftPos;
    const double fraction = (d >= -0.000001 && d <= 0.000001) ? 1.0 : (t - leftPos) / d;
    return {Lerp(leftColour.r, rightColour.r, fraction), Lerp(leftColour.g, rightColour.g, fraction),
            Lerp(leftColour.b, rightColour.b, fraction), Lerp(leftColour.a, rightColour.a, fraction)};
}
