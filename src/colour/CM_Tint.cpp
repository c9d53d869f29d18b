#include "colour/CM_Tint.h"

#include "colour/CM_Palette.h"
#include "colour/CM_PaletteList.h"

#include <algorithm>
#include <cmath>

namespace {

uint8_t ClampChannel(double value) {
    const double truncated = std::trunc(value);
    return static_cast<uint8_t>(std::clamp(truncated, 0.0, 255.0));
}

uint8_t BlendChannel(uint8_t blend, uint8_t source, double percent) {
    const double value = std::trunc(blend * percent * 0.01) - std::trunc(source * (100.0 - percent) * -0.01);
    return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0));
}

} // namespace

CM_Tint CM_Tint::OffsetRgb(int red, int green, int blue, int alpha, float percent) {
    CM_Tint tint;
    tint.mode_ = kOffsetRgb;
    tint.amount_ = percent * 0.01f;
    tint.rgb_[0] = red;
    tint.rgb_[1] = green;
    tint.rgb_[2] = blue;
    tint.alpha_ = alpha;
    return tint;
}

CM_Tint CM_Tint::OffsetHsv(double hue, double saturation, double value, int alpha, float percent) {
    CM_Tint tint;
    tint.mode_ = kOffsetHsv;
    tint.amount_ = percent * 0.01f;
    tint.hsv_[0] = hue;
    tint.hsv_[1] = saturation;
    tint.hsv_[2] = value;
    tint.alpha_ = alpha;
    return tint;
}

CM_Tint CM_Tint::Blend(BM_Rgba colour, double percent) {
    CM_Tint tint;
    tint.mode_ = kBlend;
    tint.blend_ = colour;
    tint.blendPercent_ = percent;
    return tint;
}

BM_Rgba CM_Tint::Apply(BM_Rgba colour) const {
    const double amount = amount_;
    BM_Rgba out = colour;
    switch (mode_) {
    case kOffsetRgb:
        out.r = ClampChannel(colour.r + rgb_[0] * amount);
        out.g = ClampChannel(colour.g + rgb_[1] * amount);
        out.b = ClampChannel(colour.b + rgb_[2] * amount);
        out.a = ClampChannel(colour.a + alpha_ * amount);
        break;
    case kOffsetHsv: {
        CM_Hsv hsv = RgbToHsv(colour);
        int hue = static_cast<int>(std::trunc(hsv.h + hsv_[0] * amount)) % 361;
        if (hue < 0)
            hue += 360;
        hsv.h = hue;
        hsv.s = std::clamp(hsv.s + hsv_[1] * amount, 0.0, 1.0);
        hsv.v = std::clamp(hsv.v + hsv_[2] * amount, 0.0, 1.0);
        out = HsvToRgb(hsv, ClampChannel(colour.a + alpha_ * amount));
        break;
    }
    case kBlend:
        out.r = BlendChannel(blend_.r, colour.r, blendPercent_);
        out.g = BlendChannel(blend_.g, colour.g, blendPercent_);
        out.b = BlendChannel(blend_.b, colour.b, blendPercent_);
        out.a = BlendChannel(blend_.a, colour.a, blendPercent_);
        break;
    }
    return out;
}

CM_GradientStops CM_Tint::Apply(const CM_GradientStops& stops) const {
    CM_GradientStops out = stops;
    for (CM_GradientData& stop : out)
        stop.colour = Apply(stop.colour);
    return out;
}

std::vector<CM_GradientStops> CM_Tint::Compute(const CM_Palette& palette, uint32_t fromStyle) const {
    std::vector<CM_GradientStops> values(palette.GetEntryCount());
    for (size_t i = 0; i < values.size(); ++i)
        if (const auto* color = dynamic_cast<const CM_Color*>(palette.GetEntry(i)))
            values[i] = Apply(color->ValueAt(fromStyle));
    return values;
}

std::vector<CM_GradientStops> CM_Tint::Install(CM_Palette& palette, uint32_t style,
                                               const std::vector<CM_GradientStops>& values) {
    return Install(palette, style, values, style);
}

std::vector<CM_GradientStops> CM_Tint::Install(CM_Palette& palette, uint32_t style,
                                               const std::vector<CM_GradientStops>& values,
                                               uint32_t inForce) {
    if (style >= palette.GetStyleCount() || inForce >= palette.GetStyleCount())
        return {};
    std::vector<CM_GradientStops> previous(std::min(palette.GetEntryCount(), values.size()));
    for (size_t i = 0; i < previous.size(); ++i) {
        if (auto* color = dynamic_cast<CM_Color*>(palette.GetEntry(i))) {
            previous[i] = color->ValueAt(style);
            color->ValueAt(style) = values[i];
        }
    }
    palette.SetCurrentStyle(inForce);
    if (CM_PaletteList* list = palette.GetList())
        list->NotifyChange(CM_PaletteListData::kStyleTinted, UT_UniqueId(), palette.GetId());
    return previous;
}

CM_Hsv CM_Tint::RgbToHsv(BM_Rgba colour) {
    const double r = colour.r / 255.0, g = colour.g / 255.0, b = colour.b / 255.0;
    const double maxC = std::max({r, g, b}), minC = std::min({r, g, b});
    const double delta = maxC - minC;
    CM_Hsv hsv;
    hsv.v = maxC;
    hsv.s = maxC > 0.0 ? delta / maxC : 0.0;
    if (delta <= 0.0)
        return hsv;
    double h;
    if (maxC == r)
        h = (g - b) / delta;
    else if (maxC == g)
        h = 2.0 + (b - r) / delta;
    else
        h = 4.0 + (r - g) / delta;
    h *= 60.0;
    if (h < 0.0)
        h += 360.0;
    hsv.h = h;
    return hsv;
}

BM_Rgba CM_Tint::HsvToRgb(const CM_Hsv& hsv, uint8_t alpha) {
    const auto channel = [](double c) {
        return static_cast<uint8_t>(std::lround(std::clamp(c, 0.0, 1.0) * 255.0));
    };
    const double s = std::clamp(hsv.s, 0.0, 1.0), v = std::clamp(hsv.v, 0.0, 1.0);
    if (s <= 0.0)
        return {channel(v), channel(v), channel(v), alpha};
    double h = std::fmod(hsv.h, 360.0);
    if (h < 0.0)
        h += 360.0;
    h /= 60.0;
    const int sextant = std::min(5, static_cast<int>(h));
    const double f = h - sextant;
    const double p = v * (1.0 - s), q = v * (1.0 - s * f), t = v * (1.0 - s * (1.0 - f));
    double r, g, b;
    switch (sextant) {
    case 0:
        r = v, g = t, b = p;
        break;
    case 1:
        r = q, g = v, b = p;
        break;
    case 2:
        r = p, g = v, b = t;
        break;
    case 3:
        r = p, g = q, b = v;
        break;
    case 4:
        r = t, g = p, b = v;
        break;
    default:
        r = v, g = p, b = q;
        break;
    }
    return {channel(r), channel(g), channel(b), alpha};
}
