// The palette list: reserved colours, the id map, the default palette, notifications and
// the recovery of lost colours.

#include "colour/CM_PaletteList.h"
#include "colour/CM_RecoverColors.h"
#include "colour/CM_Texture.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

constexpr BM_Rgba kRed{255, 0, 0, 255};

class Recorder : public CM_PaletteListObserverInterface {
public:
    void OnPaletteListChanged(const void*, const CM_PaletteListData& data) override {
        records.push_back(data);
    }
    std::vector<CM_PaletteListData> records;
};

BM_Rgba FirstColour(const CM_BaseColorObj* entry) {
    return static_cast<const CM_Color*>(entry)->Stops().front().colour;
}

TEST(PaletteList, ReservedColoursResolveEverythingElse) {
    CM_PaletteList list;
    EXPECT_EQ(list.GetPaletteCount(), 0u);
    EXPECT_EQ(list.GetIdCount(), 2u);
    const CM_BaseColorObj* none = list.Resolve(UT_UniqueId(~uint64_t(0)));
    EXPECT_EQ(none->GetName(), u"NoColor");
    EXPECT_EQ(FirstColour(none), kRed);
    const CM_BaseColorObj* eraser = list.Resolve(UT_UniqueId(1));
    EXPECT_EQ(eraser->GetName(), u"EraserColor");
    EXPECT_EQ(FirstColour(eraser), (BM_Rgba{255, 255, 255, 255}));
    EXPECT_EQ(list.Resolve(UT_UniqueId(987654)), none);
    EXPECT_EQ(list.Lookup(UT_UniqueId(987654)), nullptr);
    EXPECT_EQ(list.FindEntry(UT_UniqueId(1)).palette, nullptr);
}

TEST(PaletteList, DefaultPalette) {
    CM_PaletteList list;
    CM_Palette* palette = list.AddDefaultPalette();
    EXPECT_EQ(palette->GetName(), u"Default");
    ASSERT_EQ(palette->GetStyleCount(), 1u);
    EXPECT_EQ(palette->GetStyles()[0].name, u"Default");
    ASSERT_EQ(palette->GetEntryCount(), 120u);
    EXPECT_EQ(palette->GetEntry(0)->GetName(), u"Color 1");
    EXPECT_EQ(palette->GetEntry(119)->GetName(), u"Color 120");
    const BM_Rgba first[12] = {{0, 0, 0, 255},       {255, 0, 0, 255},     {0, 255, 0, 255},
                               {0, 0, 255, 255},     {243, 212, 181, 255}, {243, 194, 145, 255},
                               {255, 255, 255, 255}, {255, 255, 0, 255},   {0, 255, 255, 255},
                               {255, 0, 255, 255},   {230, 200, 170, 255}, {217, 174, 130, 255}};
    for (size_t i = 0; i < 12; ++i)
        EXPECT_EQ(FirstColour(palette->GetEntry(i)), first[i]) << i;
    for (size_t i = 0; i < 120; ++i) {
        auto* color = static_cast<const CM_Color*>(palette->GetEntry(i));
        EXPECT_EQ(color->GetGradientKind(), CM_Color::kSolid);
        EXPECT_TRUE(color->IsOpaque());
        EXPECT_EQ(list.Resolve(color->GetId()), color);
    }
    EXPECT_EQ(list.GetIdCount(), 122u);
}

TEST(PaletteList, IdMapFollowsPalettesAndEntries) {
    CM_PaletteList list;
    Recorder recorder;
    list.Attach(&recorder);
    CM_Palette* palette = list.AddPalette(u"Skin", u"Day");
    CM_Color* color = list.AddSolidColor(palette->GetId(), u"cheek", {250, 200, 190, 255});
    ASSERT_NE(color, nullptr);
    ASSERT_EQ(recorder.records.size(), 1u);
    EXPECT_EQ(recorder.records[0].kind, uint32_t(CM_PaletteListData::kEntriesAdded));
    EXPECT_EQ(recorder.records[0].colorId, color->GetId());
    EXPECT_EQ(list.Resolve(color->GetId()), color);
    const auto place = list.FindEntry(color->GetId());
    EXPECT_EQ(place.palette, palette);
    EXPECT_EQ(place.index, 0);

    ASSERT_TRUE(list.SetSolidColor(color->GetId(), {1, 2, 3, 4}));
    EXPECT_EQ(color->ColorAt(0.7), (BM_Rgba{1, 2, 3, 4}));
    EXPECT_EQ(recorder.records.back().kind, uint32_t(CM_PaletteListData::kEntryEdited));
    EXPECT_FALSE(list.SetSolidColor(UT_UniqueId(5), kRed));
    EXPECT_EQ(list.AddSolidColor(UT_UniqueId(5), u"x", kRed), nullptr);

    // A second palette with the same id is refused.
    auto twin = std::make_unique<CM_Palette>(u"Twin", u"Default");
    twin->SetId(palette->GetId());
    EXPECT_FALSE(list.InsertPalette(std::move(twin), 0));
    EXPECT_EQ(list.GetPaletteCount(), 1u);

    // Removing an entry or a palette takes its ids away: they resolve to red.
    const UT_UniqueId id = color->GetId();
    ASSERT_TRUE(palette->RemoveEntry(0));
    EXPECT_EQ(list.Lookup(id), nullptr);
    list.AddSolidColor(palette->GetId(), u"again", kRed);
    const UT_UniqueId again = palette->GetEntry(0)->GetId();
    ASSERT_TRUE(list.RemovePalette(palette->GetId()));
    EXPECT_EQ(list.Resolve(again)->GetName(), u"NoColor");
    EXPECT_EQ(list.GetIdCount(), 2u);
    list.Detach(&recorder);
}

// A drawing's copies of its colours, as read from its file.
struct DrawingColours {
    std::vector<std::unique_ptr<CM_BaseColorObj>> owned;
    std::map<UT_UniqueId, const CM_BaseColorObj*> map;
    void Add(UT_UniqueId id, std::unique_ptr<CM_BaseColorObj> copy) {
        map[id] = copy.get();
        owned.push_back(std::move(copy));
    }
};

TEST(PaletteList, RecoveryOfLostColours) {
    CM_PaletteList list;
    list.AddDefaultPalette();
    Recorder recorder;
    list.Attach(&recorder);

    DrawingColours drawing;
    // A colour the list still knows: nothing to do.
    drawing.Add(list.GetPalette(0)->GetEntry(3)->GetId(), list.GetPalette(0)->GetEntry(3)->Duplicate());
    // A colour deleted before the drawing was saved: stored as the NoColor copy.
    auto lost = std::make_unique<CM_Color>(u"NoColor", UT_UniqueId(~uint64_t(0)));
    lost->AddStop({0.0, kRed, 0});
    drawing.Add(UT_UniqueId(500), std::move(lost));
    // A colour of another project, with two styles; the second is in force.
    auto foreign = std::make_unique<CM_Color>(u"Foreign", UT_UniqueId(400));
    foreign->AddStop({0.0, {10, 20, 30, 255}, 0});
    foreign->AppendStyleFrom(0);
    foreign->SetCurrentStyle(1);
    foreign->Stops()[0].colour = {40, 50, 60, 255};
    drawing.Add(UT_UniqueId(400), std::move(foreign));
    // A lost texture.
    drawing.Add(UT_UniqueId(600), std::make_unique<CM_Texture>(u"NoColor", UT_UniqueId(~uint64_t(0))));

    EXPECT_EQ(list.Recover(drawing.map), 3u);
    CM_Palette* recovered = list.GetRecoveredPalette();
    ASSERT_NE(recovered, nullptr);
    EXPECT_EQ(recovered->GetName(), u"Recovered");
    EXPECT_EQ(recovered->GetStyles()[0].name, u"Default");
    EXPECT_EQ(list.GetPalette(1), recovered);
    ASSERT_EQ(recovered->GetEntryCount(), 3u);
    // In id order: 400, 500, 600.
    const auto* foreignCopy = static_cast<const CM_Color*>(recovered->GetEntry(0));
    EXPECT_EQ(foreignCopy->GetName(), u"Foreign");
    EXPECT_EQ(foreignCopy->GetId(), UT_UniqueId(400));
    EXPECT_EQ(foreignCopy->GetStyleCount(), 1u);
    EXPECT_EQ(foreignCopy->GetCurrentStyle(), 0u);
    EXPECT_EQ(foreignCopy->Stops()[0].colour, (BM_Rgba{40, 50, 60, 255}));
    EXPECT_EQ(recovered->GetEntry(1)->GetName(), u"Deleted color");
    EXPECT_EQ(recovered->GetEntry(1)->GetId(), UT_UniqueId(500));
    EXPECT_EQ(FirstColour(recovered->GetEntry(1)), kRed);
    EXPECT_EQ(recovered->GetEntry(2)->GetName(), u"Deleted texture");
    EXPECT_EQ(recovered->GetEntry(2)->GetClass(), CM_BaseColorObj::kTexture);
    EXPECT_EQ(list.Resolve(UT_UniqueId(500)), recovered->GetEntry(1));
    ASSERT_EQ(recorder.records.size(), 1u);
    EXPECT_EQ(recorder.records[0].kind, uint32_t(CM_PaletteListData::kEntriesAdded));
    EXPECT_EQ(recorder.records[0].paletteId, recovered->GetId());

    // A second load of the same drawing adds nothing.
    EXPECT_EQ(list.Recover(drawing.map), 0u);
    EXPECT_EQ(recovered->GetEntryCount(), 3u);
    EXPECT_EQ(recorder.records.size(), 1u);

    // A later loss goes into the same palette.
    DrawingColours later;
    later.Add(UT_UniqueId(700), std::make_unique<CM_Color>(u"NoColor", UT_UniqueId(~uint64_t(0))));
    EXPECT_EQ(list.Recover(later.map), 1u);
    EXPECT_EQ(list.GetPaletteCount(), 2u);
    EXPECT_EQ(recovered->GetEntryCount(), 4u);

    // With the flag off nothing happens.
    list.SetRecover(false);
    DrawingColours off;
    off.Add(UT_UniqueId(800), std::make_unique<CM_Color>(u"x", UT_UniqueId(800)));
    EXPECT_EQ(list.Recover(off.map), 0u);
    EXPECT_EQ(list.Lookup(UT_UniqueId(800)), nullptr);
    list.Detach(&recorder);
}

TEST(PaletteList, UndoableRecoveryHandsOverItsUndo) {
    CM_PaletteList list(true);
    std::unique_ptr<CM_RecoverColors> undo;
    UT_WString label;
    list.SetCommandSink([&](std::unique_ptr<CM_RecoverColors> command, const UT_WString& name) {
        undo = std::move(command);
        label = name;
    });
    Recorder recorder;
    list.Attach(&recorder);
    DrawingColours drawing;
    drawing.Add(UT_UniqueId(900), std::make_unique<CM_Color>(u"NoColor", UT_UniqueId(~uint64_t(0))));
    drawing.Add(UT_UniqueId(901), std::make_unique<CM_Color>(u"Kept", UT_UniqueId(901)));
    ASSERT_EQ(list.Recover(drawing.map), 2u);
    ASSERT_NE(undo, nullptr);
    EXPECT_EQ(label, u"Color Recovery");
    EXPECT_EQ(undo->GetDirection(), CM_RecoverColors::kRemove);
    const UT_UniqueId paletteId = list.GetRecoveredPalette()->GetId();

    // Undo: the entries go, and with them the palette, which is reported removed.
    std::unique_ptr<UT_Command> redo = undo->Execute();
    ASSERT_NE(redo, nullptr);
    EXPECT_EQ(list.GetPaletteCount(), 0u);
    EXPECT_EQ(list.Lookup(UT_UniqueId(900)), nullptr);
    EXPECT_EQ(list.GetRecoveredPalette(), nullptr);
    EXPECT_EQ(recorder.records.back().kind, uint32_t(CM_PaletteListData::kPaletteRemoved));

    // Redo: the palette comes back under its id with both entries.
    std::unique_ptr<UT_Command> undoAgain = redo->Execute();
    ASSERT_NE(undoAgain, nullptr);
    ASSERT_EQ(list.GetPaletteCount(), 1u);
    EXPECT_EQ(list.GetPalette(0)->GetId(), paletteId);
    EXPECT_EQ(list.GetRecoveredPalette(), list.GetPalette(0));
    EXPECT_EQ(list.Resolve(UT_UniqueId(900))->GetName(), u"Deleted color");
    EXPECT_EQ(list.Resolve(UT_UniqueId(901))->GetName(), u"Kept");
    EXPECT_EQ(recorder.records.back().kind, uint32_t(CM_PaletteListData::kEntriesAdded));
    list.Detach(&recorder);
}

} // namespace
