// The stream form of drawings, laid out field by field by hand: an empty drawing, one line,
// a square with a copy in another layer, a square with a painted zone; the older forms that
// are rebuilt at first use; and damaged files.

#include "DrawingTestUtil.h"
#include "animationset/ByteBuilder.h"
#include "colour/CM_Color.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace drawtest;

constexpr uint16_t kDrawingType = 202;
constexpr uint16_t kColourType = 205;
constexpr uint16_t kPaletteColourType = 121;

ByteBuilder& NullRef(ByteBuilder& b) {
    return b.U16(0).U32(0);
}

// A straight two-point path in full: point count, knot mask, points.
ByteBuilder& TwoPointPath(ByteBuilder& b, float x0, float y0, float x1, float y1) {
    return b.U16(2).U8(0x03).F32(x0).F32(y0).F32(x1).F32(y1);
}

// The stroke fields up to the path: style, both colour references (null), end flags.
ByteBuilder& PlainStroke(ByteBuilder& b, uint8_t kind, float width, uint64_t colour) {
    b.U8(kind).F32(width).U64(colour);
    NullRef(b);
    NullRef(b);
    return b.Bool(false).Bool(false);
}

// A file of a given header version around the bytes of a typed drawing.
std::vector<uint8_t> File(const std::string& version, const std::vector<uint8_t>& typed) {
    ByteBuilder b;
    b.Narrow("QuilmoorTechnologiesInc ").Narrow(version).U32(1);
    if (version != "30" && version != "31")
        b.U8(0);
    return b.Raw(typed).Bytes();
}

std::unique_ptr<GR_VectorDrawingObj> LoadFile(const std::vector<uint8_t>& bytes, CM_PaletteList* palettes) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    archive.SetContext(palettes);
    DB_FileContainer::ReadHeader(archive, DB_FileContainer::kVectorDrawing, u"test.qmd");
    return archive.ReadNewAs<GR_VectorDrawingObj>();
}

class FormatTest : public ::testing::Test {
protected:
    void SetUp() override { RegisterTypes(); }
};

TEST_F(FormatTest, EmptyDrawing) {
    GR_VectorDrawingObj drawing;
    const std::vector<uint8_t> expected = ByteBuilder().U16(kDrawingType).U8(0).Bool(false).U32(0).Bytes();
    EXPECT_EQ(Typed(drawing), expected);
    auto back = ReadTyped(expected);
    EXPECT_EQ(back->GetRoot(), nullptr);
    EXPECT_EQ(back->LayerCount(), 0u);
}

TEST_F(FormatTest, OneLine) {
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access;
    access.SetDrawing(&drawing);
    access.AddStrokes({Line(0, 0, 10, 0, PenLine(2.0f, UT_UniqueId(7)))}, GR_Layer::kBrush);
    ByteBuilder b;
    b.U16(kDrawingType).U8(0).Bool(true);
    b.U32(1).U32(1);                   // the root: a group with one child
    b.U32(2).Bool(true).U16(2).U32(1); // a layer of kind 2 with one stroke
    PlainStroke(b, 4, 2.0f, 7).Bool(false);
    TwoPointPath(b, 0, 0, 10, 0);
    b.U32(0); // the layer node has no children
    b.U32(0); // no colours without palettes
    EXPECT_EQ(Typed(drawing), b.Bytes());

    auto back = ReadTyped(b.Bytes());
    ASSERT_EQ(back->LayerCount(), 1u);
    GR_Layer* layer = back->FirstLayer();
    EXPECT_EQ(layer->GetKind(), GR_Layer::kBrush);
    ASSERT_EQ(layer->StrokeCount(), 1u);
    EXPECT_EQ(layer->FirstStroke()->style, PenLine(2.0f, UT_UniqueId(7)));
    EXPECT_EQ(Typed(*back), b.Bytes());
}

TEST_F(FormatTest, SquareAndACopyShareTheirPathOnTheStream) {
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access;
    access.SetDrawing(&drawing);
    const GR_LineStyle thin(GR_LineStyle::kThinLine, 1.0f, UT_UniqueId(3));
    GR_Layer* square = access.AddStrokes(Square(0, 0, 10, thin), GR_Layer::kRectangle);
    GR_Layer* copy = access.AddLayer(GR_Layer::kDefault, {0, 1});
    access.BeginEdit();
    access.CopyStrokeTo(square->FirstStroke(), copy);
    access.Commit();

    ByteBuilder b;
    b.U16(kDrawingType).U8(0).Bool(true).U32(1).U32(2);
    b.U32(2).Bool(true).U16(4).U32(4);
    const float corners[5][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
    for (int i = 0; i < 4; ++i) {
        PlainStroke(b, 3, 1.0f, 3).Bool(false);
        TwoPointPath(b, corners[i][0], corners[i][1], corners[i + 1][0], corners[i + 1][1]);
    }
    b.U32(0);
    // The copy refers to the first path: the first entry of the table after null.
    b.U32(2).Bool(true).U16(0).U32(1);
    PlainStroke(b, 3, 1.0f, 3).Bool(true).U32(1);
    b.U32(0);
    b.U32(0);
    EXPECT_EQ(Typed(drawing), b.Bytes());

    auto back = ReadTyped(b.Bytes());
    ASSERT_EQ(back->LayerCount(), 2u);
    EXPECT_EQ(back->LayerAt(1)->FirstStroke()->SharedPath(), back->LayerAt(0)->FirstStroke()->SharedPath());
    EXPECT_EQ(InnerZoneCount(*back->LayerAt(0)), 1u);
    EXPECT_EQ(Typed(*back), b.Bytes());
}

TEST_F(FormatTest, SquareWithAPaintedZone) {
    CM_PaletteList palettes;
    CM_Palette* palette = palettes.AddPalette(u"P", u"S");
    auto red = std::make_unique<CM_Color>(u"Red", UT_UniqueId(0x1234));
    red->AddStop({0.0, {255, 0, 0, 255}, 0});
    palette->AddEntry(std::move(red));

    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(&drawing);
    GR_Layer* layer = access.AddStrokes(
        Square(0, 0, 10, GR_LineStyle(GR_LineStyle::kStroke, 1.0f, UT_UniqueId())), GR_Layer::kRectangle);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({5, 5}), std::make_shared<GR_Color>(UT_UniqueId(0x1234)));
    access.Commit();

    ByteBuilder b;
    b.U16(kDrawingType).U8(0).Bool(true).U32(1).U32(1);
    b.U32(2).Bool(true).U16(4).U32(4);
    const float corners[5][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
    for (int i = 0; i < 4; ++i) {
        // The sides run counter-clockwise: the paint lies on their left, as colour 0. It is
        // placed on the zone's box: scaled by the width, moved to (x0, middle of y).
        b.U8(0).F32(1.0f).U64(0);
        if (i == 0)
            b.U16(1).U16(kColourType).Bool(true).F64(10).F64(0).F64(0).F64(10).F64(0).F64(5).U64(0x1234);
        else
            b.U16(0).U32(1);
        NullRef(b);
        b.Bool(false).Bool(false).Bool(false);
        TwoPointPath(b, corners[i][0], corners[i][1], corners[i + 1][0], corners[i + 1][1]);
    }
    b.U32(0);
    // The palette entry of the zone's colour: kind, style, one style of two stops, name, id.
    b.U32(1).U64(0x1234).U16(kPaletteColourType);
    b.U32(0).U32(0).U32(1).U32(2);
    b.F64(0.0).U8(255).U8(0).U8(0).U8(255).U32(0);
    b.F64(1.0).U8(255).U8(0).U8(0).U8(255).U32(1);
    b.Wide(u"Red").U64(0x1234);
    // The strokes of kind 2 turned into contours between the paint and the outside.
    EXPECT_EQ(Typed(drawing, &palettes), b.Bytes());

    CM_PaletteList empty;
    auto back = ReadTyped(b.Bytes(), &empty);
    ASSERT_TRUE(back->FirstLayer()->ZoneAt({5, 5})->Color());
    EXPECT_EQ(back->FirstLayer()->ZoneAt({5, 5})->Color()->GetId(), UT_UniqueId(0x1234));
    // The colour came back to a project that did not know it.
    ASSERT_NE(empty.GetRecoveredPalette(), nullptr);
    EXPECT_NE(empty.Lookup(UT_UniqueId(0x1234)), nullptr);
    EXPECT_EQ(Typed(*back, &empty), b.Bytes());
}

TEST_F(FormatTest, MissingPaletteColourIsWrittenWithTheEntryForLostColours) {
    CM_PaletteList palettes;
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(&drawing);
    access.AddStrokes({Line(0, 0, 1, 1, GR_LineStyle(GR_LineStyle::kThinLine, 1, UT_UniqueId(99)))}, 0);
    const std::vector<uint8_t> bytes = Typed(drawing, &palettes);
    // The tail: one colour, under its own id, with the body of "NoColor" (id -1).
    const std::vector<uint8_t> tail = ByteBuilder().Wide(u"NoColor").U64(~uint64_t(0)).Bytes();
    ASSERT_GT(bytes.size(), tail.size());
    EXPECT_TRUE(std::equal(tail.begin(), tail.end(), bytes.end() - static_cast<long>(tail.size())));
    CM_PaletteList other;
    ReadTyped(bytes, &other);
    const CM_BaseColorObj* recovered = other.Lookup(UT_UniqueId(99));
    ASSERT_NE(recovered, nullptr);
    EXPECT_EQ(recovered->GetName(), u"Deleted color");
}

// Two crossing lines and a colour on one side, in the list of layers of version 31.
std::vector<uint8_t> Version31Drawing() {
    ByteBuilder b;
    b.U16(kDrawingType).U32(1);
    b.U32(5).U32(2); // a discarded kind, two strokes
    b.U8(4).F32(1.0f).U64(7);
    // An old colour: gradient axis from (1, 2) to (1, 5), stored as y, x, y, x.
    b.U16(1).U16(kColourType).F64(2).F64(1).F64(5).F64(1).U64(0x55);
    NullRef(b);
    b.Bool(false).Bool(false);
    TwoPointPath(b, 0, 0, 10, 10);
    b.U8(4).F32(1.0f).U64(7);
    NullRef(b);
    NullRef(b);
    b.Bool(false).Bool(false);
    TwoPointPath(b, 0, 10, 10, 0);
    b.U32(0);
    return b.Bytes();
}

TEST_F(FormatTest, Version31IsRebuiltAtFirstUse) {
    CM_PaletteList palettes;
    auto drawing = LoadFile(File("31", Version31Drawing()), &palettes);
    ASSERT_EQ(drawing->LayerCount(), 1u);
    GR_Layer* layer = drawing->FirstLayer();
    EXPECT_EQ(drawing->GetRebuild(), GR_VectorDrawingObj::kTrusted);
    EXPECT_EQ(layer->StrokeCount(), 4u);
    EXPECT_EQ(layer->VertexAt({5, 5}).Degree(), 4u);
    EXPECT_TRUE(Planar(*layer));
    EXPECT_TRUE(drawing->IsModified());
    // The colour lay on a side that bounds no zone: the rebuild leaves no paint outside.
    for (GR_VectorStroke* s : Strokes(*layer))
        EXPECT_FALSE(s->colour[0] || s->colour[1]);
    // Saved in the current form, with rebuild 0.
    const std::vector<uint8_t> saved = Typed(*drawing);
    ASSERT_GT(saved.size(), 4u);
    EXPECT_EQ(saved[2], 0);
    EXPECT_EQ(ReadTyped(saved)->FirstLayer()->StrokeCount(), 4u);
}

TEST_F(FormatTest, OlderDrawingWithoutPalettesWaitsForSetDrawing) {
    auto drawing = LoadFile(File("30", Version31Drawing()), nullptr);
    EXPECT_EQ(drawing->GetRebuild(), GR_VectorDrawingObj::kRebuildKeepZones);
    EXPECT_EQ(drawing->FirstLayer()->StrokeCount(), 2u);
    // The old axis became a placement: scaled by 3, turned by 90 degrees, moved to (1, 2).
    const GR_ColorRef& colour = drawing->FirstLayer()->FirstStroke()->colour[0];
    ASSERT_TRUE(colour);
    EXPECT_TRUE(colour->IsPlaced());
    const GR_Affine2d& m = colour->GetMatrix();
    EXPECT_NEAR(m.a, 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(m.b, 3.0);
    EXPECT_DOUBLE_EQ(m.c, -3.0);
    EXPECT_NEAR(m.d, 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(m.e, 1.0);
    EXPECT_DOUBLE_EQ(m.f, 2.0);
    GR_DrawingAccess access;
    access.SetDrawing(drawing.get());
    EXPECT_EQ(drawing->GetRebuild(), GR_VectorDrawingObj::kTrusted);
    EXPECT_EQ(drawing->FirstLayer()->StrokeCount(), 4u);
}

TEST_F(FormatTest, Version30ColoursAreOfferedForRecovery) {
    ByteBuilder b;
    b.U16(kDrawingType).U32(0).U32(1).U64(0x77).U16(kPaletteColourType);
    b.U32(0).U32(0).U32(1).U32(2);
    b.F64(0.0).U8(1).U8(2).U8(3).U8(255).U32(0);
    b.F64(1.0).U8(1).U8(2).U8(3).U8(255).U32(1);
    // Version 30 keeps names as bytes.
    b.U32(4).U8('B').U8('l').U8('u').U8('e').U64(0x77);
    CM_PaletteList palettes;
    auto drawing = LoadFile(File("30", b.Bytes()), &palettes);
    EXPECT_EQ(drawing->LayerCount(), 0u);
    const CM_BaseColorObj* entry = palettes.Lookup(UT_UniqueId(0x77));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->GetName(), u"Blue");
}

TEST_F(FormatTest, RebuildWithLongestBoundarySwapsSidesStoredTheOtherWayRound) {
    // A square whose paint is stored on the right of its counter-clockwise sides, with
    // rebuild 2 in a version-40 file.
    ByteBuilder b;
    b.U16(kDrawingType).U8(2).Bool(true).U32(1).U32(1).U32(2).Bool(true).U16(0).U32(4);
    const float corners[5][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
    for (int i = 0; i < 4; ++i) {
        b.U8(2).F32(1.0f).U64(0);
        NullRef(b);
        if (i == 0)
            b.U16(1).U16(kColourType).Bool(false).F64(1).F64(0).F64(0).F64(1).F64(0).F64(0).U64(0x66);
        else
            b.U16(0).U32(1);
        b.Bool(false).Bool(false).Bool(false);
        TwoPointPath(b, corners[i][0], corners[i][1], corners[i + 1][0], corners[i + 1][1]);
    }
    b.U32(0).U32(0);
    CM_PaletteList palettes;
    auto drawing = LoadFile(File("40", b.Bytes()), &palettes);
    // Every zone looks consistent, so the load leaves the rebuild to the first use.
    EXPECT_EQ(drawing->GetRebuild(), GR_VectorDrawingObj::kRebuildLongestBoundary);
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(drawing.get());
    EXPECT_EQ(drawing->GetRebuild(), GR_VectorDrawingObj::kTrusted);
    GR_Layer* layer = drawing->FirstLayer();
    ASSERT_NE(layer, nullptr);
    GR_Zone* inside = layer->ZoneAt({5, 5});
    ASSERT_NE(inside, nullptr);
    ASSERT_TRUE(inside->Color());
    EXPECT_EQ(inside->Color()->GetId(), UT_UniqueId(0x66));
    EXPECT_EQ(layer->Components()[0]->outer->Color(), nullptr);
}

TEST_F(FormatTest, WidthOfVersion22IsAByte) {
    ByteBuilder b;
    b.U16(kDrawingType).U32(1).U32(0).U32(1);
    b.U8(4).U8(3).U64(7);
    NullRef(b);
    NullRef(b);
    b.Bool(false).Bool(true);
    TwoPointPath(b, 0, 0, 5, 0);
    b.U32(0);
    auto drawing = ReadTyped(b.Bytes(), nullptr, 22);
    const GR_VectorStroke* s = drawing->FirstLayer()->FirstStroke();
    EXPECT_EQ(s->style.width, 3.0f);
    EXPECT_EQ(s->endFlags[1], 1);
}

TEST_F(FormatTest, UnknownNodeKindsAndForeignColourObjectsAreSkipped) {
    ByteBuilder b;
    b.U16(kDrawingType).U8(0).Bool(true).U32(1).U32(2);
    b.U32(9);                        // a child of no known kind ends its branch
    b.U32(2).Bool(false).U32(0);     // a layer node without a layer is a group
    b.U32(1).U64(5).U16(600).U32(0); // a memory file where a palette entry should be
    auto drawing = ReadTyped(b.Bytes(), nullptr);
    ASSERT_NE(drawing->GetRoot(), nullptr);
    EXPECT_EQ(drawing->GetRoot()->ChildCount(), 1u);
    EXPECT_EQ(drawing->LayerCount(), 0u);
}

TEST_F(FormatTest, DamagedFilesThrowAndNeverCrash) {
    // A drawing with groups, shared colours and shared paths, written as a whole file.
    CM_PaletteList palettes;
    palettes.AddDefaultPalette();
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(&drawing);
    GR_Layer* a = access.AddStrokes(Square(0, 0, 50), GR_Layer::kBrush);
    ASSERT_TRUE(drawing.InsertNode({0, 1}, std::make_unique<UT_Node>()));
    GR_Layer* b = access.AddLayer(GR_Layer::kPencil, {0, 1, 0});
    access.BeginEdit();
    access.SetZoneColor(a->ZoneAt({25, 25}),
                        std::make_shared<GR_Color>(palettes.GetPalette(0)->GetEntry(3)->GetId()));
    access.CopyStrokeTo(a->FirstStroke(), b);
    access.AddStroke(Curve({0, 0}, {20, 40}, {40, -40}, {60, 0}), b);
    access.Commit();
    DB_MemFile file;
    {
        DB_Archive archive(&file, false);
        archive.SetContext(&palettes);
        DB_FileContainer::WriteHeader(archive, DB_FileContainer::kVectorDrawing);
        archive.WriteTyped(drawing);
    }
    const std::vector<uint8_t> whole = BytesOf(file);
    ASSERT_NO_THROW(LoadFile(whole, &palettes));
    for (size_t size = 0; size < whole.size(); ++size) {
        const std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<long>(size));
        EXPECT_THROW(LoadFile(cut, &palettes), DB_Exception) << size;
    }
    // Each byte changed in turn: the result either loads or throws.
    for (size_t i = 33; i < whole.size(); ++i) {
        std::vector<uint8_t> changed = whole;
        changed[i] ^= 0xA5;
        try {
            auto back = LoadFile(changed, &palettes);
            for (GR_Layer* layer = back->FirstLayer(); layer; layer = back->NextLayer(layer))
                layer->EnsureZones();
        } catch (const DB_Exception&) {
        }
    }
}

TEST_F(FormatTest, CorruptStructuresGiveAClearMessage) {
    const auto fails = [](const std::vector<uint8_t>& typed) {
        try {
            ReadTyped(typed);
        } catch (const DB_Exception& e) {
            return std::string(e.what());
        }
        return std::string("no exception");
    };
    const std::string unexpected = "Unexpected data found while reading <memory file>";
    // A path index beyond the table.
    ByteBuilder badIndex;
    badIndex.U16(kDrawingType).U8(0).Bool(true).U32(2).Bool(true).U16(0).U32(1);
    PlainStroke(badIndex, 4, 1, 0).Bool(true).U32(3);
    EXPECT_EQ(fails(badIndex.U32(0).U32(0).Bytes()), unexpected);
    // A path index that names a colour.
    ByteBuilder colourIndex;
    colourIndex.U16(kDrawingType).U8(0).Bool(true).U32(2).Bool(true).U16(0).U32(1);
    colourIndex.U8(4).F32(1).U64(0).U16(1).U16(kColourType).Bool(false);
    for (int i = 0; i < 6; ++i)
        colourIndex.F64(0);
    colourIndex.U64(1);
    NullRef(colourIndex).Bool(false).Bool(false).Bool(true).U32(1);
    EXPECT_EQ(fails(colourIndex.U32(0).U32(0).Bytes()), unexpected);
    // A point that is not a number.
    ByteBuilder notANumber;
    notANumber.U16(kDrawingType).U8(0).Bool(true).U32(2).Bool(true).U16(0).U32(1);
    PlainStroke(notANumber, 4, 1, 0).Bool(false);
    TwoPointPath(notANumber, 0, 0, std::nanf(""), 0);
    EXPECT_EQ(fails(notANumber.U32(0).U32(0).Bytes()), unexpected);
    // A point far beyond any drawing, which would make cutting the curve take forever.
    ByteBuilder faraway;
    faraway.U16(kDrawingType).U8(0).Bool(true).U32(2).Bool(true).U16(0).U32(1);
    PlainStroke(faraway, 4, 1, 0).Bool(false);
    faraway.U16(4).U8(0x09).F32(0).F32(0).F32(3e30f).F32(-2e31f).F32(-1e31f).F32(4e30f).F32(5).F32(5);
    EXPECT_EQ(fails(faraway.U32(0).U32(0).Bytes()), unexpected);
    // A stroke count that the stream cannot hold.
    ByteBuilder huge;
    huge.U16(kDrawingType).U8(0).Bool(true).U32(2).Bool(true).U16(0).U32(0x7FFFFFFF);
    EXPECT_EQ(fails(huge.Bytes()), unexpected);
    // Groups nested deeper than any drawing needs.
    ByteBuilder deep;
    deep.U16(kDrawingType).U8(0).Bool(true);
    for (int i = 0; i < 400; ++i)
        deep.U32(1).U32(1);
    EXPECT_EQ(fails(deep.Bytes()), unexpected);
}

} // namespace
