// The undoable changes of a palette list, through a command history: every undo and redo
// gives back the exact bytes of the list, and observers hear the kind of each change.

#include "colour/CM_AddEntryCommand.h"
#include "colour/CM_AddPaletteCommand.h"
#include "colour/CM_EditEntryCommand.h"
#include "colour/CM_MoveEntryCommand.h"
#include "colour/CM_PaletteList.h"
#include "colour/CM_RemoveEntryCommand.h"
#include "colour/CM_RemovePaletteCommand.h"
#include "colour/CM_RemoveStyleCommand.h"
#include "colour/CM_RenameEntryCommand.h"
#include "colour/CM_RenamePaletteCommand.h"
#include "colour/CM_RenameStyleCommand.h"
#include "colour/CM_SwitchStyleCommand.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"
#include "colour/CM_TintCommand.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"
#include "core/UT_CommandHistory.h"
#include "render/BM_PixelMap.h"
#include "render/BM_QMTBitmap.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Kinds = std::vector<uint32_t>;
using Data = CM_PaletteListData;

class Recorder : public CM_PaletteListObserverInterface {
public:
    void OnPaletteListChanged(const void*, const CM_PaletteListData& data) override { heard.push_back(data); }
    // The kinds heard since the last call.
    Kinds Take() {
        Kinds kinds;
        for (const CM_PaletteListData& data : heard)
            kinds.push_back(data.kind);
        heard.clear();
        return kinds;
    }
    std::vector<CM_PaletteListData> heard;
};

std::vector<uint8_t> BytesOf(CM_PaletteList& list) {
    DB_MemFile file;
    {
        DB_Archive archive(&file, false);
        list.Write(archive);
    }
    return {file.Data(), file.Data() + file.Size()};
}

std::shared_ptr<CM_ShareTextureData> Image(uint8_t red) {
    auto pixels = std::make_unique<BM_PixelMap<BM_PixelRgba32>>(2, 2);
    for (uint32_t y = 0; y < 2; ++y)
        for (uint32_t x = 0; x < 2; ++x)
            pixels->SetPixel(x, y, BM_PixelRgba32::Make(red, uint8_t(x * 100), uint8_t(y * 100), 255));
    return std::make_shared<CM_ShareTextureData>(std::move(pixels));
}

// Every entry of every palette, and nothing else but the reserved colours, is in the id map.
::testing::AssertionResult IdMapMatches(const CM_PaletteList& list) {
    size_t entries = 0;
    for (size_t p = 0; p < list.GetPaletteCount(); ++p) {
        const CM_Palette& palette = *list.GetPalette(p);
        for (size_t i = 0; i < palette.GetEntryCount(); ++i, ++entries) {
            const CM_BaseColorObj* entry = palette.GetEntry(i);
            if (list.Lookup(entry->GetId()) != entry)
                return ::testing::AssertionFailure()
                       << "entry " << i << " of palette " << p << " is not mapped";
            if (entry->GetStyleCount() != palette.GetStyleCount() ||
                entry->GetCurrentStyle() != palette.GetCurrentStyle())
                return ::testing::AssertionFailure()
                       << "entry " << i << " of palette " << p << " is out of step with the styles";
        }
    }
    if (list.GetIdCount() != entries + 2)
        return ::testing::AssertionFailure() << list.GetIdCount() << " ids for " << entries << " entries";
    return ::testing::AssertionSuccess();
}

// Two palettes that share a texture image; "Skin" has two styles, with "Night" in force.
struct Palettes {
    Palettes() {
        skin = list.AddPalette(u"Skin", u"Day");
        list.AddSolidColor(skin->GetId(), u"cheek", {250, 200, 190, 255});
        auto* sky = list.AddSolidColor(skin->GetId(), u"sky", {0, 0, 0, 255});
        sky->SetGradientKind(CM_Color::kLinear);
        sky->AddStop({0.5, {20, 40, 200, 128}, 0});
        auto cloth = std::make_unique<CM_Texture>(u"cloth");
        cloth->SetTextureData(shared);
        skin->AddEntry(std::move(cloth));
        list.AddSolidColor(skin->GetId(), u"hair", {90, 60, 20, 255});
        skin->SetCurrentStyle(skin->AddStyle(u"Night"));
        static_cast<CM_Color*>(skin->GetEntry(0))->Stops()[0].colour = {120, 90, 100, 255};
        static_cast<CM_Texture*>(skin->GetEntry(2))->SetTextureData(Image(9));
        props = list.AddPalette(u"Props", u"Default");
        auto wood = std::make_unique<CM_Texture>(u"wood");
        wood->SetTextureData(shared);
        props->AddEntry(std::move(wood));
        list.AddSolidColor(props->GetId(), u"metal", {128, 128, 140, 255});
        list.Attach(&recorder);
    }
    ~Palettes() { list.Detach(&recorder); }

    UT_UniqueId EntryId(const CM_Palette* palette, size_t index) const {
        return palette->GetEntry(index)->GetId();
    }

    std::shared_ptr<CM_ShareTextureData> shared = Image(200);
    CM_PaletteList list;
    CM_Palette* skin = nullptr;
    CM_Palette* props = nullptr;
    Recorder recorder;
    UT_CommandHistory history;
};

class PaletteCommands : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        PixelsRegisterTypes();
        ColourRegisterTypes();
    }
};

TEST_F(PaletteCommands, UndoAndRedoGiveBackTheExactBytes) {
    struct Case {
        const char* what;
        std::function<std::unique_ptr<UT_Command>(Palettes&)> make;
        Kinds done, undone;
    };
    const std::vector<Case> cases = {
        {"add a colour",
         [](Palettes& t) {
             return std::make_unique<CM_AddEntryCommand>(t.list, t.skin->GetId(), 1,
                                                         CM_Color::MakeSolid(u"lips", {200, 0, 40, 255}));
         },
         {Data::kEntriesAdded},
         {Data::kEntryRemoved}},
        {"remove a colour",
         [](Palettes& t) { return std::make_unique<CM_RemoveEntryCommand>(t.list, t.EntryId(t.skin, 1)); },
         {Data::kEntryRemoved},
         {Data::kEntriesAdded}},
        {"remove a shared texture",
         [](Palettes& t) { return std::make_unique<CM_RemoveEntryCommand>(t.list, t.EntryId(t.props, 0)); },
         {Data::kEntryRemoved},
         {Data::kEntriesAdded}},
        {"make a gradient solid",
         [](Palettes& t) -> std::unique_ptr<UT_Command> {
             return CM_EditEntryCommand::SolidColor(t.list, t.EntryId(t.skin, 1), {1, 2, 3, 4});
         },
         {Data::kEntryEdited},
         {Data::kEntryEdited}},
        {"give a texture another image",
         [](Palettes& t) {
             std::unique_ptr<CM_BaseColorObj> values = t.skin->GetEntry(2)->Duplicate();
             static_cast<CM_Texture&>(*values).SetTextureData(Image(77));
             return std::make_unique<CM_EditEntryCommand>(t.list, std::move(values));
         },
         {Data::kEntryEdited},
         {Data::kEntryEdited}},
        {"rename a colour",
         [](Palettes& t) {
             return std::make_unique<CM_RenameEntryCommand>(t.list, t.EntryId(t.skin, 3), u"fringe");
         },
         {Data::kEntryRenamed},
         {Data::kEntryRenamed}},
        {"drag a colour down",
         [](Palettes& t) { return std::make_unique<CM_MoveEntryCommand>(t.list, t.EntryId(t.skin, 0), 3); },
         {Data::kEntryMoved},
         {Data::kEntryMoved}},
        {"drag a colour up",
         [](Palettes& t) { return std::make_unique<CM_MoveEntryCommand>(t.list, t.EntryId(t.skin, 2), 0); },
         {Data::kEntryMoved},
         {Data::kEntryMoved}},
        {"add a palette",
         [](Palettes& t) { return CM_AddPaletteCommand::NewPalette(t.list, u"Eyes", u"Default", 1); },
         {Data::kPaletteAdded},
         {Data::kPaletteRemoved}},
        {"remove a palette",
         [](Palettes& t) { return std::make_unique<CM_RemovePaletteCommand>(t.list, t.skin->GetId()); },
         {Data::kPaletteRemoved},
         {Data::kPaletteAdded}},
        {"duplicate a palette",
         [](Palettes& t) { return CM_AddPaletteCommand::Duplicate(t.list, t.skin->GetId(), u"Skin 2"); },
         {Data::kPaletteDuplicatedSource, Data::kPaletteDuplicated},
         {Data::kPaletteRemoved}},
        {"rename a palette",
         [](Palettes& t) {
             return std::make_unique<CM_RenamePaletteCommand>(t.list, t.props->GetId(), u"Set");
         },
         {Data::kPaletteRenamed},
         {Data::kPaletteRenamed}},
        {"switch the style",
         [](Palettes& t) { return std::make_unique<CM_SwitchStyleCommand>(t.list, t.skin->GetId(), 0); },
         {Data::kStyleSwitched},
         {Data::kStyleSwitched}},
        {"rename a style",
         [](Palettes& t) {
             return std::make_unique<CM_RenameStyleCommand>(t.list, t.skin->GetId(), 0, u"Noon");
         },
         {Data::kStyleRenamed},
         {Data::kStyleRenamed}},
        {"remove the style in force",
         [](Palettes& t) { return std::make_unique<CM_RemoveStyleCommand>(t.list, t.skin->GetId(), 1); },
         {Data::kStyleRemoved},
         {Data::kStyleTinted}},
        {"remove a style before the one in force",
         [](Palettes& t) { return std::make_unique<CM_RemoveStyleCommand>(t.list, t.skin->GetId(), 0); },
         {Data::kStyleRemoved},
         {Data::kStyleTinted}},
        {"tint another style in place",
         [](Palettes& t) -> std::unique_ptr<UT_Command> {
             return CM_TintCommand::Make(t.list, t.skin->GetId(), CM_Tint::OffsetRgb(30, -30, 0, -10), 1, 0);
         },
         {Data::kStyleTinted},
         {Data::kStyleTinted}},
        {"tint into a new style",
         [](Palettes& t) -> std::unique_ptr<UT_Command> {
             return CM_TintCommand::Make(t.list, t.skin->GetId(), CM_Tint::OffsetHsv(40, 0, -0.2, 0), 0,
                                         std::nullopt, u"Dusk");
         },
         {Data::kStyleTinted},
         {Data::kStyleRemoved}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Palettes t;
        const std::vector<uint8_t> before = BytesOf(t.list);
        std::unique_ptr<UT_Command> command = c.make(t);
        ASSERT_NE(command, nullptr);
        ASSERT_TRUE(t.history.Execute(*command, u"change"));
        const std::vector<uint8_t> after = BytesOf(t.list);
        EXPECT_NE(after, before);
        EXPECT_EQ(t.recorder.Take(), c.done);
        EXPECT_TRUE(IdMapMatches(t.list));
        // Twice through, so that the inverses of the inverses are tried as well.
        for (int round = 0; round < 2; ++round) {
            t.history.Undo();
            EXPECT_EQ(BytesOf(t.list), before);
            EXPECT_EQ(t.recorder.Take(), c.undone);
            EXPECT_TRUE(IdMapMatches(t.list));
            t.history.Redo();
            EXPECT_EQ(BytesOf(t.list), after);
            EXPECT_EQ(t.recorder.Take(), c.done);
            EXPECT_TRUE(IdMapMatches(t.list));
        }
        EXPECT_TRUE(t.history.CanUndo());
    }
}

// Commands that cannot do what they hold fail before they change anything.
TEST_F(PaletteCommands, RefusedCommandsChangeNothing) {
    Palettes t;
    const UT_UniqueId cheek = t.EntryId(t.skin, 0);
    auto wrongClass = std::make_unique<CM_Texture>(u"cheek", cheek);
    wrongClass->AppendStyleFrom(0);
    std::vector<std::pair<const char*, std::unique_ptr<UT_Command>>> commands;
    commands.emplace_back("drag past the end", std::make_unique<CM_MoveEntryCommand>(t.list, cheek, 4));
    commands.emplace_back("add under an id in use",
                          std::make_unique<CM_AddEntryCommand>(t.list, t.props->GetId(), 0,
                                                               std::make_unique<CM_Color>(u"twin", cheek)));
    commands.emplace_back(
        "add under a reserved id",
        std::make_unique<CM_AddEntryCommand>(t.list, t.props->GetId(), 0,
                                             std::make_unique<CM_Color>(u"x", kCM_EraserColorId)));
    commands.emplace_back("edit a colour with texture values",
                          std::make_unique<CM_EditEntryCommand>(t.list, std::move(wrongClass)));
    commands.emplace_back(
        "edit with one style for two",
        std::make_unique<CM_EditEntryCommand>(t.list, std::make_unique<CM_Color>(u"cheek", cheek)));
    commands.emplace_back("remove the only style",
                          std::make_unique<CM_RemoveStyleCommand>(t.list, t.props->GetId(), 0));
    commands.emplace_back(
        "tint with values for other entries",
        std::make_unique<CM_TintCommand>(t.list, t.skin->GetId(), 0, std::vector<CM_GradientStops>(2), 0));
    const std::vector<uint8_t> before = BytesOf(t.list);
    for (auto& [what, command] : commands) {
        EXPECT_EQ(command->Execute(), nullptr) << what;
        EXPECT_EQ(BytesOf(t.list), before) << what;
    }
    EXPECT_TRUE(t.recorder.heard.empty());
    EXPECT_TRUE(IdMapMatches(t.list));
    EXPECT_EQ(CM_EditEntryCommand::SolidColor(t.list, t.EntryId(t.skin, 2), {}), nullptr) << "a texture";
}

TEST_F(PaletteCommands, DuplicateTakesNewIdsAndStandsAfterItsSource) {
    Palettes t;
    std::unique_ptr<CM_AddPaletteCommand> duplicate =
        CM_AddPaletteCommand::Duplicate(t.list, t.skin->GetId(), u"Twin");
    const UT_UniqueId id = duplicate->PaletteId();
    ASSERT_TRUE(t.history.Execute(*duplicate, CM_AddPaletteCommand::kDuplicateName));
    ASSERT_EQ(t.list.GetPaletteCount(), 3u);
    const CM_Palette* copy = t.list.GetPalette(1);
    EXPECT_EQ(copy->GetId(), id);
    EXPECT_EQ(copy->GetName(), u"Twin");
    EXPECT_EQ(copy->GetStyles(), t.skin->GetStyles());
    EXPECT_EQ(copy->GetCurrentStyle(), t.skin->GetCurrentStyle());
    ASSERT_EQ(copy->GetEntryCount(), t.skin->GetEntryCount());
    for (size_t i = 0; i < copy->GetEntryCount(); ++i) {
        EXPECT_EQ(copy->GetEntry(i)->GetName(), t.skin->GetEntry(i)->GetName());
        EXPECT_NE(copy->GetEntry(i)->GetId(), t.skin->GetEntry(i)->GetId());
    }
    const std::vector<CM_PaletteListData> heard = t.recorder.heard;
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_EQ(heard[0].paletteId, t.skin->GetId());
    EXPECT_EQ(heard[1].paletteId, id);
    // A removed palette that the history holds counts with its entries against the size limit.
    CM_RemovePaletteCommand remove(t.list, t.skin->GetId());
    ASSERT_TRUE(t.history.Execute(remove, CM_RemovePaletteCommand::kName));
    EXPECT_GT(t.history.UndoList().back().command->Size(), 4 * 2 * sizeof(CM_GradientData));
}

TEST_F(PaletteCommands, TintIntoANewStyleStartsFromItsSource) {
    Palettes t;
    t.list.Detach(&t.recorder);
    ASSERT_EQ(t.skin->GetCurrentStyle(), 1u);
    // From "Day" while "Night" is in force: the texture of the new style is Day's.
    std::unique_ptr<CM_TintCommand> tint = CM_TintCommand::Make(
        t.list, t.skin->GetId(), CM_Tint::OffsetRgb(0, 0, 50, 0), 0, std::nullopt, u"Blue");
    ASSERT_TRUE(t.history.Execute(*tint, CM_TintCommand::kName));
    ASSERT_EQ(t.skin->GetStyleCount(), 3u);
    EXPECT_EQ(t.skin->GetStyles()[2].name, u"Blue");
    EXPECT_EQ(t.skin->GetCurrentStyle(), 2u);
    const auto* cheek = static_cast<const CM_Color*>(t.skin->GetEntry(0));
    EXPECT_EQ(cheek->ColorAt(0.0), (BM_Rgba{250, 200, 240, 255}));
    EXPECT_EQ(cheek->ValueAt(1)[0].colour, (BM_Rgba{120, 90, 100, 255}));
    EXPECT_EQ(static_cast<const CM_Texture*>(t.skin->GetEntry(2))->GetTextureData(), t.shared);

    // Tinting a style that is not in force puts it in force, and the undo puts back the
    // one the user had.
    std::unique_ptr<CM_TintCommand> again =
        CM_TintCommand::Make(t.list, t.skin->GetId(), CM_Tint::Blend({0, 0, 0, 255}, 100.0), 2, 0);
    ASSERT_TRUE(t.history.Execute(*again, CM_TintCommand::kName));
    EXPECT_EQ(t.skin->GetCurrentStyle(), 0u);
    EXPECT_EQ(cheek->ColorAt(0.0), (BM_Rgba{0, 0, 0, 255}));
    t.history.Undo();
    EXPECT_EQ(t.skin->GetCurrentStyle(), 2u);
    EXPECT_EQ(cheek->ValueAt(0)[0].colour, (BM_Rgba{250, 200, 190, 255}));
}

TEST_F(PaletteCommands, TheRecoveryPaletteKeepsItsRoleThroughUndo) {
    Palettes t;
    const UT_UniqueId lost(4242);
    auto copy = std::make_unique<CM_Color>(u"NoColor", kCM_NoColorId);
    std::map<UT_UniqueId, const CM_BaseColorObj*> colours{{lost, copy.get()}};
    ASSERT_EQ(t.list.Recover(colours), 1u);
    const UT_UniqueId recovered = t.list.GetRecoveredPalette()->GetId();

    // Reshaping the palette replaces it with a copy; the copy has the role.
    CM_PaletteList& list = t.list;
    CM_TintCommand tint(list, recovered, 0, u"Second", {CM_GradientStops()});
    ASSERT_TRUE(t.history.Execute(tint, CM_TintCommand::kName));
    t.history.Undo();
    ASSERT_NE(t.list.GetRecoveredPalette(), nullptr);
    EXPECT_EQ(t.list.GetRecoveredPalette()->GetId(), recovered);

    CM_RemovePaletteCommand remove(list, recovered);
    ASSERT_TRUE(t.history.Execute(remove, CM_RemovePaletteCommand::kName));
    EXPECT_EQ(t.list.GetRecoveredPalette(), nullptr);
    t.history.Undo();
    ASSERT_NE(t.list.GetRecoveredPalette(), nullptr);
    EXPECT_EQ(t.list.GetRecoveredPalette()->GetId(), recovered);
    // A later loss goes into the same palette.
    colours = {{UT_UniqueId(4343), copy.get()}};
    ASSERT_EQ(t.list.Recover(colours), 1u);
    EXPECT_EQ(t.list.GetPaletteCount(), 3u);
    EXPECT_EQ(t.list.FindEntry(UT_UniqueId(4343)).palette->GetId(), recovered);
}

} // namespace
