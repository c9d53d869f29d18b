// Tint arithmetic: offsets in RGB and HSV, blends, and their installation as a style.

#include "colour/CM_PaletteList.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace {

TEST(Tint, RgbOffsetTruncatesThenClamps) {
    const CM_Tint tint = CM_Tint::OffsetRgb(100, -50, 255, -10, 50.0f);
    EXPECT_EQ(tint.Apply({200, 100, 50, 255}), (BM_Rgba{250, 75, 177, 250}));
    EXPECT_EQ(tint.Apply({200, 20, 250, 3}), (BM_Rgba{250, 0, 255, 0}));
    // Towards zero: -2.5 truncates to -2 before the clamp, 0.5 to 0.
    EXPECT_EQ(CM_Tint::OffsetRgb(-5, 1, 0, 0, 50.0f).Apply({0, 0, 0, 0}), (BM_Rgba{0, 0, 0, 0}));
    // The amount is a float: 70% is 0.69999999, so 10 x 70% truncates to 6.
    EXPECT_EQ(CM_Tint::OffsetRgb(10, 0, 0, 0, 70.0f).Apply({0, 0, 0, 0}).r, 6);
    EXPECT_EQ(CM_Tint::OffsetRgb(10, 0, 0, 0).Apply({0, 0, 0, 0}).r, 10);
}

TEST(Tint, HsvOffsetWrapsTheHueAt361) {
    // Hue 1.18 degrees plus 360 truncates to 361, which is hue 0: pure red.
    const CM_Tint full = CM_Tint::OffsetHsv(360.0, 0.0, 0.0, 0);
    EXPECT_EQ(full.Apply({255, 5, 0, 255}), (BM_Rgba{255, 0, 0, 255}));
    // Plus 120 degrees: red becomes green; minus 120: blue.
    EXPECT_EQ(CM_Tint::OffsetHsv(120.0, 0.0, 0.0, 0).Apply({255, 0, 0, 9}), (BM_Rgba{0, 255, 0, 9}));
    EXPECT_EQ(CM_Tint::OffsetHsv(-120.0, 0.0, 0.0, 0).Apply({255, 0, 0, 9}), (BM_Rgba{0, 0, 255, 9}));
    // Saturation and value clamp to 0..1; alpha takes its offset.
    EXPECT_EQ(CM_Tint::OffsetHsv(0.0, 0.5, 0.0, -9).Apply({100, 100, 100, 255}), (BM_Rgba{100, 50, 50, 246}));
    EXPECT_EQ(CM_Tint::OffsetHsv(0.0, -2.0, 2.0, 0).Apply({200, 10, 10, 255}), (BM_Rgba{255, 255, 255, 255}));
    EXPECT_EQ(CM_Tint::OffsetHsv(0.0, 0.0, -0.5, 0, 50.0f).Apply({200, 0, 0, 255}),
              (BM_Rgba{136, 0, 0, 255}));
}

TEST(Tint, HsvConversionRoundTrips) {
    std::mt19937 rng(11);
    for (int i = 0; i < 5000; ++i) {
        const BM_Rgba c{uint8_t(rng()), uint8_t(rng()), uint8_t(rng()), uint8_t(rng())};
        const CM_Hsv hsv = CM_Tint::RgbToHsv(c);
        ASSERT_GE(hsv.h, 0.0);
        ASSERT_LT(hsv.h, 360.0);
        ASSERT_EQ(CM_Tint::HsvToRgb(hsv, c.a), c);
    }
    EXPECT_EQ(CM_Tint::HsvToRgb({360.0, 1.0, 1.0}, 1), (BM_Rgba{255, 0, 0, 1}));
}

TEST(Tint, BlendMixesBothSides) {
    const CM_Tint blend = CM_Tint::Blend({255, 0, 0, 255}, 30.0);
    // 76 + 70, 0 + 140, 0 + 35, 76 + 178.
    EXPECT_EQ(blend.Apply({100, 200, 50, 255}), (BM_Rgba{146, 140, 35, 254}));
    EXPECT_EQ(CM_Tint::Blend({10, 20, 30, 40}, 100.0).Apply({1, 2, 3, 4}), (BM_Rgba{10, 20, 30, 40}));
    EXPECT_EQ(CM_Tint::Blend({10, 20, 30, 40}, 0.0).Apply({1, 2, 3, 4}), (BM_Rgba{1, 2, 3, 4}));
}

TEST(Tint, InstallMakesAStyleAndLeavesTexturesAlone) {
    CM_PaletteList list;
    CM_Palette* palette = list.AddPalette(u"P", u"Day");
    list.AddSolidColor(palette->GetId(), u"a", {200, 100, 50, 255});
    palette->AddEntry(std::make_unique<CM_Texture>(u"t"));
    auto* gradient = static_cast<CM_Color*>(list.AddSolidColor(palette->GetId(), u"g", {0, 0, 0, 255}));
    gradient->SetGradientKind(CM_Color::kLinear);
    gradient->AddStop({0.5, {10, 10, 10, 10}, 0});
    const uint32_t night = palette->AddStyle(u"Night");
    palette->SetCurrentStyle(0);

    const CM_Tint tint = CM_Tint::OffsetRgb(-100, 0, 0, 0);
    const std::vector<CM_GradientStops> preview = tint.Compute(*palette, 0);
    ASSERT_EQ(preview.size(), 3u);
    EXPECT_TRUE(preview[1].empty());
    ASSERT_EQ(preview[2].size(), 3u);
    // The preview changed nothing.
    EXPECT_EQ(static_cast<CM_Color*>(palette->GetEntry(0))->ValueAt(night)[0].colour.r, 200);

    struct Recorder : CM_PaletteListObserverInterface {
        uint32_t last = 99;
        void OnPaletteListChanged(const void*, const CM_PaletteListData& d) override { last = d.kind; }
    } recorder;
    list.Attach(&recorder);
    const std::vector<CM_GradientStops> old = CM_Tint::Install(*palette, night, preview);
    list.Detach(&recorder);
    EXPECT_EQ(recorder.last, uint32_t(CM_PaletteListData::kStyleTinted));
    EXPECT_EQ(palette->GetCurrentStyle(), night);
    auto* first = static_cast<CM_Color*>(palette->GetEntry(0));
    EXPECT_EQ(first->ColorAt(0.0), (BM_Rgba{100, 100, 50, 255}));
    EXPECT_EQ(first->ValueAt(0)[0].colour.r, 200);
    EXPECT_EQ(gradient->Stops()[1].colour, (BM_Rgba{0, 10, 10, 10}));
    EXPECT_EQ(old[0][0].colour.r, 200);
    // Undo by installing the old values.
    CM_Tint::Install(*palette, night, old);
    EXPECT_EQ(first->ColorAt(0.0).r, 200);
}

} // namespace
