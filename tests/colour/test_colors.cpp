// Colour entries: stops and their keys, the colour along a gradient, styles of a palette.

#include "colour/CM_Color.h"
#include "colour/CM_Palette.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

constexpr BM_Rgba kRed{255, 0, 0, 255};
constexpr BM_Rgba kBlue{0, 0, 255, 255};

TEST(Color, SolidStopGetsItsTwin) {
    CM_Color color(u"c");
    EXPECT_EQ(color.AddStop({0.3, kRed, 99}), 0u);
    ASSERT_EQ(color.Stops().size(), 2u);
    EXPECT_EQ(color.Stops()[0].position, 0.3);
    EXPECT_EQ(color.Stops()[1].position, 1.0);
    EXPECT_EQ(color.Stops()[1].colour, kRed);
    EXPECT_EQ(color.Stops()[1].key, 1u);
    EXPECT_EQ(color.GetKeyCounter(), 2u);
    EXPECT_TRUE(color.IsOpaque());
}

TEST(Color, GradientStopsStaySortedAndKeepTheirKeys) {
    CM_Color color(u"g");
    color.SetGradientKind(CM_Color::kLinear);
    const uint32_t a = color.AddStop({0.8, kRed, 0});
    const uint32_t b = color.AddStop({0.2, kBlue, 0});
    const uint32_t c = color.AddStop({0.5, {0, 255, 0, 128}, 0});
    ASSERT_EQ(color.Stops().size(), 3u);
    EXPECT_EQ(color.Stops()[0].key, b);
    EXPECT_EQ(color.Stops()[1].key, c);
    EXPECT_EQ(color.Stops()[2].key, a);
    EXPECT_FALSE(color.IsOpaque());

    CM_GradientData moved = *color.GetStop(b);
    moved.position = 0.9;
    ASSERT_TRUE(color.SetStop(moved));
    EXPECT_EQ(color.Stops().back().key, b);
    EXPECT_TRUE(color.RemoveStop(c));
    EXPECT_FALSE(color.RemoveStop(c));
    EXPECT_EQ(color.GetStop(c), nullptr);
    EXPECT_TRUE(color.IsOpaque());
    moved.key = 77;
    EXPECT_FALSE(color.SetStop(moved));
}

TEST(Color, ColorAtFollowsTheStops) {
    CM_GradientStops stops = {{0.25, {0, 0, 0, 255}, 0}, {0.75, {200, 100, 51, 255}, 1}};
    // Before the first stop: the first colour; after the last: the last.
    EXPECT_EQ(CM_Color::ColorAt(stops, 0.1), (BM_Rgba{0, 0, 0, 255}));
    EXPECT_EQ(CM_Color::ColorAt(stops, 0.9), (BM_Rgba{200, 100, 51, 255}));
    EXPECT_EQ(CM_Color::ColorAt(stops, -0.5), (BM_Rgba{0, 0, 0, 255}));
    EXPECT_EQ(CM_Color::ColorAt(stops, 1.0), (BM_Rgba{200, 100, 51, 255}));
    // Halfway, truncated: 51 * 0.5 = 25.5 gives 25.
    EXPECT_EQ(CM_Color::ColorAt(stops, 0.5), (BM_Rgba{100, 50, 25, 255}));
    // Two stops at one position: the right one wins there.
    CM_GradientStops step = {{0.0, kRed, 0}, {0.5, kRed, 1}, {0.5, kBlue, 2}, {1.0, kBlue, 3}};
    EXPECT_EQ(CM_Color::ColorAt(step, 0.5), kRed);
    EXPECT_EQ(CM_Color::ColorAt(step, 0.5000001), kBlue);
    CM_GradientStops touching = {{0.5, kRed, 0}, {0.5000005, kBlue, 1}};
    EXPECT_EQ(CM_Color::ColorAt(touching, 0.5000002), kBlue);
    EXPECT_EQ(CM_Color::ColorAt({}, 0.5), (BM_Rgba{0, 0, 0, 0}));
}

TEST(Color, CopiesKeepValuesAndKind) {
    CM_Color a(u"a");
    a.SetGradientKind(CM_Color::kRadial);
    a.AddStop({0.0, kRed, 0});
    a.AddStop({1.0, kBlue, 0});
    CM_Color b(u"b");
    b.CopyCurrentFrom(a);
    EXPECT_EQ(b.Stops(), a.Stops());
    EXPECT_EQ(b.GetGradientKind(), CM_Color::kRadial);
    // New keys of the copy never meet the copied ones.
    EXPECT_EQ(b.AddStop({0.5, kRed, 0}), 2u);

    auto dup = a.Duplicate();
    EXPECT_EQ(dup->GetId(), a.GetId());
    EXPECT_EQ(dup->GetName(), u"a");
    EXPECT_NE(a.GetId(), b.GetId());
    EXPECT_EQ(CM_Color().GetId(), UT_UniqueId(~uint64_t(0)));
}

std::unique_ptr<CM_Color> Solid(const char16_t* name, BM_Rgba c) {
    return CM_Color::MakeSolid(name, c);
}

TEST(Palette, StylesCarryOneValuePerEntry) {
    CM_Palette palette(u"P", u"Day");
    auto* red = static_cast<CM_Color*>(palette.AddEntry(Solid(u"red", kRed)));
    const uint32_t night = palette.AddStyle(u"Night");
    EXPECT_EQ(night, 1u);
    EXPECT_EQ(palette.GetStyles()[1].id, 1u);
    EXPECT_EQ(red->GetStyleCount(), 2u);
    EXPECT_TRUE(palette.HasStyleNamed(u"Night"));
    EXPECT_FALSE(palette.HasStyleNamed(u"night"));

    ASSERT_TRUE(palette.SetCurrentStyle(night));
    EXPECT_EQ(red->GetCurrentStyle(), night);
    red->Stops()[0].colour = kBlue;
    EXPECT_EQ(red->ValueAt(0)[0].colour, kRed);
    EXPECT_EQ(red->ColorAt(0.0), kBlue);

    // An entry added later gets a value for every style and the current style.
    auto* blue = palette.AddEntry(Solid(u"blue", kBlue));
    EXPECT_EQ(blue->GetStyleCount(), 2u);
    EXPECT_EQ(blue->GetCurrentStyle(), night);

    // Style ids: the largest plus one, even after a removal.
    palette.AddStyle(u"Dusk");
    ASSERT_TRUE(palette.RemoveStyle(0));
    EXPECT_EQ(palette.AddStyle(u"Dawn"), 2u);
    EXPECT_EQ(palette.GetStyles()[2].id, 3u);
    EXPECT_EQ(palette.GetCurrentStyle(), 0u); // Night moved down to 0
    EXPECT_EQ(red->GetStyleCount(), 3u);
    EXPECT_EQ(red->ValueAt(0)[0].colour, kBlue);
    ASSERT_TRUE(palette.RenameStyle(0, u"Moon"));
    EXPECT_EQ(palette.GetStyles()[0].name, u"Moon");
    EXPECT_FALSE(palette.SetCurrentStyle(9));

    CM_Palette single(u"S", u"Only");
    EXPECT_FALSE(single.RemoveStyle(0));
}

TEST(Palette, EntriesMoveAndCopy) {
    CM_Palette palette(u"P", u"Default");
    palette.AddEntry(Solid(u"a", kRed));
    palette.AddEntry(Solid(u"b", kRed));
    palette.InsertEntry(Solid(u"c", kBlue), 0);
    EXPECT_EQ(palette.GetEntry(0)->GetName(), u"c");
    ASSERT_TRUE(palette.MoveEntry(0, 2));
    EXPECT_EQ(palette.GetEntry(2)->GetName(), u"c");
    EXPECT_FALSE(palette.MoveEntry(0, 3));
    EXPECT_EQ(palette.Find(palette.GetEntry(1)->GetId()), 1);
    EXPECT_EQ(palette.Find(UT_UniqueId(12345)), -1);

    CM_Palette copy(u"Q", u"X");
    copy.CopyFrom(palette);
    EXPECT_EQ(copy.GetName(), u"Q");
    EXPECT_EQ(copy.GetStyles(), palette.GetStyles());
    ASSERT_EQ(copy.GetEntryCount(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(copy.GetEntry(i)->GetName(), palette.GetEntry(i)->GetName());
        EXPECT_NE(copy.GetEntry(i)->GetId(), palette.GetEntry(i)->GetId());
        EXPECT_EQ(static_cast<CM_Color*>(copy.GetEntry(i))->Stops(),
                  static_cast<CM_Color*>(palette.GetEntry(i))->Stops());
    }
    EXPECT_TRUE(palette.RemoveEntry(0));
    EXPECT_FALSE(palette.RemoveEntry(5));
    EXPECT_EQ(palette.GetEntryCount(), 2u);
}

TEST(Palette, SortingByNameMatchesTheStandardSort) {
    std::mt19937 rng(42);
    for (size_t n : {0u, 1u, 2u, 31u, 32u, 33u, 200u, 1000u}) {
        CM_Palette palette(u"P", u"Default");
        std::vector<std::u16string> names;
        for (size_t i = 0; i < n; ++i) {
            // Few distinct names, so that equal keys are common.
            std::u16string name = u"Color ";
            name += char16_t(u'A' + rng() % 7);
            name += char16_t(u'a' + rng() % 5);
            names.push_back(name);
            palette.AddEntry(Solid(name.c_str(), kRed));
        }
        palette.SortEntries();
        std::sort(names.begin(), names.end());
        ASSERT_EQ(palette.GetEntryCount(), n);
        for (size_t i = 0; i < n; ++i)
            ASSERT_EQ(palette.GetEntry(i)->GetName(), names[i]) << n << " at " << i;
    }
    // Already sorted and reversed input: the quadratic cases of a plain quicksort.
    for (bool reversed : {false, true}) {
        CM_Palette palette(u"P", u"Default");
        for (int i = 0; i < 3000; ++i) {
            const int k = reversed ? 2999 - i : i;
            std::u16string name = u"n";
            name += char16_t(u'0' + k / 1000);
            name += char16_t(u'0' + k / 100 % 10);
            name += char16_t(u'0' + k / 10 % 10);
            name += char16_t(u'0' + k % 10);
            palette.AddEntry(Solid(name.c_str(), kRed));
        }
        palette.SortEntries();
        for (size_t i = 1; i < palette.GetEntryCount(); ++i)
            ASSERT_LT(palette.GetEntry(i - 1)->GetName(), palette.GetEntry(i)->GetName());
    }
}

} // namespace
