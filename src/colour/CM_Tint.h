#pragma once

#include "colour/CM_Color.h"
#include "render/BM_PixelTypes.h"

#include <cstdint>
#include <vector>

class CM_Palette;
class CM_PaletteList;

// A colour in hue (degrees, 0 to 360), saturation and value (0 to 1).
struct CM_Hsv {
    double h = 0.0, s = 0.0, v = 0.0;
};

// The derivation of one palette style from another, stop by stop: either an offset of the
// channels (in RGB or in HSV, with an alpha offset), or a blend towards a colour.
// Textures are left alone.
class CM_Tint {
public:
    enum Mode { kOffsetRgb, kOffsetHsv, kBlend };

    // Offsets of -255 to 255 per channel; `percent` 0 to 100.
    static CM_Tint OffsetRgb(int red, int green, int blue, int alpha, float percent = 100.0f);
    // Hue in degrees (-360 to 360), saturation and value as fractions (-1 to 1).
    static CM_Tint OffsetHsv(double hue, double saturation, double value, int alpha, float percent = 100.0f);
    // `percent` (0 to 100) of the blend colour and the rest of the source.
    static CM_Tint Blend(BM_Rgba colour, double percent = 50.0);

    Mode GetMode() const { return mode_; }
    BM_Rgba Apply(BM_Rgba colour) const;
    CM_GradientStops Apply(const CM_GradientStops& stops) const;

    // The tinted stops of every entry's style `fromStyle`, by entry position; textures give
    // empty lists. This is also the preview: the palette is not changed.
    std::vector<CM_GradientStops> Compute(const CM_Palette& palette, uint32_t fromStyle) const;
    // Gives each colour entry's style `style` the value of the same position (a texture's
    // is skipped), and makes `style` the palette's style in force. Returns the values that
    // were replaced, for undo, and sends kind 13 through the palette's list if it has one.
    // Nothing happens, and nothing is returned, for a style the palette lacks.
    static std::vector<CM_GradientStops> Install(CM_Palette& palette, uint32_t style,
                                                 const std::vector<CM_GradientStops>& values);
    // The same, leaving the style `inForce` in force afterwards: an undo puts back the
    // values of the tinted style and the style the user had before.
    static std::vector<CM_GradientStops> Install(CM_Palette& palette, uint32_t style,
                                                 const std::vector<CM_GradientStops>& values,
                                                 uint32_t inForce);

    static CM_Hsv RgbToHsv(BM_Rgba colour);
    // Channels rounded to the nearest integer; a hue of 360 is the hue 0.
    static BM_Rgba HsvToRgb(const CM_Hsv& hsv, uint8_t alpha);

private:
    Mode mode_ = kOffsetRgb;
    float amount_ = 1.0f; // a fraction, held as the user's percent times 0.01
    int rgb_[3] = {0, 0, 0};
    int alpha_ = 0;
    double hsv_[3] = {0.0, 0.0, 0.0};
    BM_Rgba blend_;
    double blendPercent_ = 50.0;
};
