// Transactions on a drawing: pending states, cutting and splitting at commit, recolouring
// of zones, cleaning of layers, removal of empty layers, the tree edits with what the
// listeners hear, and the queries through the index.

#include "DrawingTestUtil.h"
#include "colour/CM_Color.h"
#include "colour/CM_Texture.h"
#include "vector/GR_ChangeListener.h"
#include "vector/GR_LayerListener.h"

#include <gtest/gtest.h>

namespace {

using namespace drawtest;

GR_ColorRef Paint(uint64_t id) {
    return std::make_shared<GR_Color>(UT_UniqueId(id));
}

// Records every change with a copy of the layer as the listener saw it.
class Recorder : public GR_Listener {
public:
    struct Seen {
        GR_LayerChange change;
        size_t strokes = 0;
    };
    void LayerChanged(GR_VectorDrawingObj&, UT_Node* node, const GR_LayerChange& change) override {
        const GR_Layer* layer = GR_LayerOf(node);
        seen.push_back({change, layer ? layer->StrokeCount() : 0});
    }
    size_t Count(GR_ChangeKind kind) const {
        size_t n = 0;
        for (const Seen& s : seen)
            n += s.change.kind == kind ? 1 : 0;
        return n;
    }
    std::vector<Seen> seen;
};

class AccessTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterTypes();
        access.SetDrawing(&drawing);
        access.AddListener(&recorder);
    }
    GR_Layer* Add(const std::vector<GR_StrokeDesc>& descs, uint16_t kind = GR_Layer::kBrush) {
        return access.AddStrokes(descs, kind);
    }
    ::testing::AssertionResult AllPlanar() {
        for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer)) {
            ::testing::AssertionResult result = Planar(*layer);
            if (!result)
                return result;
            if (!layer->CheckZoneColors())
                return ::testing::AssertionFailure() << "zone colours not uniform";
        }
        return ::testing::AssertionSuccess();
    }

    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access;
    Recorder recorder;
};

TEST_F(AccessTest, CrossingStrokesAreSplitAtOneSharedVertex) {
    GR_Layer* layer = Add({Line(0, 0, 10, 10), Line(0, 10, 10, 0)});
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->StrokeCount(), 4u);
    EXPECT_EQ(layer->Vertices().size(), 5u);
    const GR_StrokeEnd centre = layer->VertexAt({5, 5});
    ASSERT_FALSE(centre.IsNull());
    EXPECT_EQ(centre.Degree(), 4u);
    EXPECT_TRUE(AllPlanar());
    EXPECT_EQ(access.LastCommitRounds(), 2u);
    EXPECT_FALSE(drawing.GetRoot() == nullptr);
    EXPECT_TRUE(drawing.IsModified());
}

TEST_F(AccessTest, OneStrokeAtATimeOrAllAtOnceGiveTheSameMap) {
    const std::vector<GR_StrokeDesc> descs = {Line(0, 0, 30, 0),
                                              Line(10, -10, 10, 10),
                                              Line(20, -10, 20, 10),
                                              Line(0, 5, 30, -5),
                                              Line(15, 0, 15, 8),
                                              Line(5, 0, 25, 0),
                                              Curve({0, -8}, {10, 20}, {20, -20}, {30, 8})};
    GR_Layer* all = Add(descs);
    GR_VectorDrawingObj other;
    GR_DrawingAccess second;
    second.SetDrawing(&other);
    GR_Layer* one = second.AddStrokes({descs[0]}, GR_Layer::kBrush);
    for (size_t i = 1; i < descs.size(); ++i) {
        second.BeginEdit();
        second.AddStroke(descs[i], one);
        second.Commit();
    }
    ASSERT_TRUE(all && one);
    EXPECT_TRUE(Planar(*all));
    EXPECT_TRUE(Planar(*one));
    EXPECT_EQ(all->StrokeCount(), one->StrokeCount());
    EXPECT_EQ(all->Vertices().size(), one->Vertices().size());
    EXPECT_EQ(all->Zones().size(), one->Zones().size());
    for (const auto& [point, head] : all->Vertices())
        EXPECT_EQ(head.Degree(), one->VertexAt(point).IsNull() ? 0u : one->VertexAt(point).Degree());
}

TEST_F(AccessTest, TJunctionAndOverlapBecomeSharedVertexAndOneEdge) {
    GR_Layer* layer = Add({Line(0, 0, 20, 0), Line(10, 0, 10, 10), Line(5, 0, 30, 0)});
    ASSERT_NE(layer, nullptr);
    // 0-5, 5-10, 10-20 (kept once), 20-30, and the upright.
    EXPECT_EQ(layer->StrokeCount(), 5u);
    EXPECT_EQ(layer->VertexAt({10, 0}).Degree(), 3u);
    EXPECT_EQ(layer->VertexAt({5, 0}).Degree(), 2u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, PaintFillsAZoneAndBothPartsKeepItWhenCut) {
    GR_Layer* layer = Add(Square(0, 0, 100));
    ASSERT_NE(layer, nullptr);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({50, 50}), Paint(40));
    access.Commit();
    GR_Zone* zone = layer->ZoneAt({50, 50});
    ASSERT_NE(zone, nullptr);
    ASSERT_TRUE(zone->Color());
    EXPECT_EQ(zone->Color()->GetId(), UT_UniqueId(40));
    // Without palettes every colour is plain: placed on the zone's box.
    EXPECT_TRUE(zone->Color()->IsPlaced());
    EXPECT_EQ(zone->Color()->GetMatrix().a, 100.0);
    EXPECT_EQ(zone->Color()->GetMatrix().f, 50.0);
    EXPECT_EQ(layer->Components()[0]->outer->Color(), nullptr);

    // A new line divides the zone; both parts keep the paint.
    access.BeginEdit();
    access.AddStroke(Line(-10, 30, 110, 30), layer);
    access.Commit();
    ASSERT_TRUE(AllPlanar());
    GR_Zone* below = layer->ZoneAt({50, 10});
    GR_Zone* above = layer->ZoneAt({50, 60});
    ASSERT_TRUE(below && above);
    EXPECT_NE(below, above);
    ASSERT_TRUE(below->Color() && above->Color());
    EXPECT_EQ(below->Color()->GetId(), UT_UniqueId(40));
    EXPECT_EQ(above->Color()->GetId(), UT_UniqueId(40));
    // Every half-edge of both parts holds the placed colour that the whole zone had, which
    // is left as it is.
    EXPECT_EQ(below->Color(), above->Color());
    EXPECT_EQ(below->Color()->GetMatrix().f, 50.0);
    // The ends of the line outside the square stay unpainted.
    EXPECT_EQ(layer->ZoneAt({-5, 30}), nullptr);
}

// A square whose strokes say one thing on the inside and another on the outside: the walk
// into the zone crosses a side that takes `outside` away and gives `inside`. Mode 1 takes
// the topmost entry of the tally whatever its count, mode 3 the highest count if positive.
TEST_F(AccessTest, RecolourModesChooseFromTheTallyByTheirRules) {
    struct Case {
        uint32_t mode;
        bool paintedInside;
        uint64_t expected; // 0: no paint
    };
    for (const Case& c :
         {Case{GR_DrawingAccess::kKeepZones, true, 22}, Case{GR_DrawingAccess::kKeepZonesByCount, true, 21},
          Case{GR_DrawingAccess::kKeepZones, false, 22},
          Case{GR_DrawingAccess::kKeepZonesByCount, false, 0}}) {
        SCOPED_TRACE(testing::Message() << "mode " << c.mode << (c.paintedInside ? " painted" : " bare"));
        GR_VectorDrawingObj square;
        GR_DrawingAccess edit;
        edit.SetDrawing(&square);
        GR_Layer* layer = edit.AddStrokes(Square(0, 0, 100), GR_Layer::kBrush);
        ASSERT_NE(layer, nullptr);
        if (c.paintedInside) {
            edit.BeginEdit();
            edit.SetZoneColor(layer->ZoneAt({50, 50}), Paint(21));
            edit.Commit();
        }
        // Made after the paint, the outside colour sorts after it in the tally.
        const GR_ColorRef outside = Paint(22);
        edit.BeginEdit(c.mode);
        for (GR_VectorStroke* s : Strokes(*layer))
            edit.SetStrokeColor(s, 1, outside);
        edit.Commit();
        GR_Zone* zone = layer->ZoneAt({50, 50});
        ASSERT_NE(zone, nullptr);
        if (c.expected) {
            ASSERT_TRUE(zone->Color());
            EXPECT_EQ(zone->Color()->GetId(), UT_UniqueId(c.expected));
        } else {
            EXPECT_EQ(zone->Color(), nullptr);
        }
        // Whatever the mode, nothing stays painted outside.
        EXPECT_EQ(layer->Components()[0]->outer->Color(), nullptr);
        for (GR_VectorStroke* s : Strokes(*layer))
            EXPECT_EQ(s->colour[1], nullptr);
    }
}

// Paint is placed on the box of its zone by the kind of its palette entry; a texture keeps
// the placement it has.
TEST_F(AccessTest, ZoneColoursAreFittedToTheirZoneByKind) {
    CM_PaletteList palettes;
    CM_Palette* palette = palettes.AddPalette(u"P", u"S");
    for (auto [id, kind] : {std::pair{31u, CM_Color::kLinear}, std::pair{32u, CM_Color::kRadial}}) {
        auto colour = std::make_unique<CM_Color>(u"G", UT_UniqueId(id));
        colour->SetGradientKind(kind);
        colour->AddStop({0.0, {0, 0, 0, 255}, 0});
        colour->AddStop({1.0, {255, 255, 255, 255}, 0});
        palette->AddEntry(std::move(colour));
    }
    palette->AddEntry(std::make_unique<CM_Texture>(u"T", UT_UniqueId(33)));
    GR_VectorDrawingObj rectangles;
    GR_DrawingAccess edit(&palettes);
    edit.SetDrawing(&rectangles);
    // A rectangle from (10, 20) to (50, 80).
    GR_Layer* layer =
        edit.AddStrokes({Poly({{10, 20}, {50, 20}, {50, 80}, {10, 80}, {10, 20}})}, GR_Layer::kBrush);
    ASSERT_NE(layer, nullptr);
    const auto paint = [&](const GR_ColorRef& colour) {
        edit.BeginEdit();
        edit.SetZoneColor(layer->ZoneAt({30, 50}), colour);
        edit.Commit();
        GR_Zone* zone = layer->ZoneAt({30, 50});
        return zone ? zone->Color() : nullptr;
    };

    // Linear: scaled by the width on both axes, moved to the left side's middle.
    GR_ColorRef linear = paint(Paint(31));
    ASSERT_TRUE(linear && linear->IsPlaced());
    const GR_Affine2d& l = linear->GetMatrix();
    EXPECT_EQ(std::vector<double>({l.a, l.b, l.c, l.d, l.e, l.f}),
              std::vector<double>({40, 0, 0, 40, 10, 50}));
    // Radial: half the extents, moved to the centre.
    GR_ColorRef radial = paint(Paint(32));
    ASSERT_TRUE(radial && radial->IsPlaced());
    const GR_Affine2d& r = radial->GetMatrix();
    EXPECT_EQ(std::vector<double>({r.a, r.b, r.c, r.d, r.e, r.f}),
              std::vector<double>({20, 0, 0, 30, 30, 50}));
    // A placed colour that every half-edge holds stays the very same reference.
    EXPECT_EQ(paint(radial), radial);
    // A texture is set as it stands.
    const GR_ColorRef texture = std::make_shared<GR_Color>(UT_UniqueId(33), GR_Affine2d{2, 0, 0, 2, 1, 1});
    EXPECT_EQ(paint(texture), texture);
}

TEST_F(AccessTest, ContourBetweenEqualColoursVanishesAndZonesMerge) {
    std::vector<GR_StrokeDesc> descs = Square(0, 0, 100);
    descs.push_back(Line(50, 0, 50, 100, GR_LineStyle(GR_LineStyle::kContour, 1, UT_UniqueId())));
    GR_Layer* layer = Add(descs);
    ASSERT_NE(layer, nullptr);
    // Unpainted on both sides: the contour goes at once, but the sides it split stay split.
    EXPECT_EQ(InnerZoneCount(*layer), 1u);
    EXPECT_EQ(layer->StrokeCount(), 6u);

    // A contour between two different colours stays until the colours agree.
    access.BeginEdit();
    access.AddStroke(Line(50, 0, 50, 100, GR_LineStyle(GR_LineStyle::kContour, 1, UT_UniqueId())), layer);
    access.Commit();
    EXPECT_EQ(InnerZoneCount(*layer), 1u);
    access.BeginEdit();
    access.AddStroke(Line(50, 0, 50, 100, PenLine()), layer);
    access.Commit();
    ASSERT_EQ(InnerZoneCount(*layer), 2u);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({25, 50}), Paint(1001));
    access.SetZoneColor(layer->ZoneAt({75, 50}), Paint(1002));
    access.Commit();
    GR_VectorStroke* middle = nullptr;
    for (GR_VectorStroke* s : Strokes(*layer))
        if (s->Path().points.front().x == 50 && s->Path().points.back().x == 50)
            middle = s;
    ASSERT_NE(middle, nullptr);
    access.BeginEdit();
    access.SetStrokeStyle(middle, GR_LineStyle(GR_LineStyle::kContour, 1, UT_UniqueId()));
    access.Commit();
    EXPECT_EQ(InnerZoneCount(*layer), 2u);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({75, 50}), Paint(1001));
    access.Commit();
    EXPECT_EQ(InnerZoneCount(*layer), 1u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, StrokeKindStaysBetweenEqualColoursAndTurnsIntoAContour) {
    std::vector<GR_StrokeDesc> descs = Square(0, 0, 100);
    descs.push_back(Line(50, 0, 50, 100, GR_LineStyle(GR_LineStyle::kStroke, 1, UT_UniqueId())));
    GR_Layer* layer = Add(descs);
    ASSERT_EQ(InnerZoneCount(*layer), 2u);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({25, 50}), Paint(5));
    access.Commit();
    GR_VectorStroke* middle = layer->VertexAt({50, 0}).stroke;
    for (GR_StrokeEnd e = layer->VertexAt({50, 0});; e = e.Next())
        if (e.Twin().Point() == GR_Point2f{50, 100}) {
            middle = e.stroke;
            break;
        }
    EXPECT_EQ(middle->style.kind, GR_LineStyle::kContour);
    // It does not turn back when the colours agree again: it goes.
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({75, 50}), Paint(5));
    access.Commit();
    EXPECT_EQ(InnerZoneCount(*layer), 1u);
}

TEST_F(AccessTest, CutStrokeWithoutColourVanishesButItsSplitsStay) {
    GR_Layer* layer = Add({Line(0, 0, 100, 0)});
    ASSERT_NE(layer, nullptr);
    access.BeginEdit();
    access.AddStroke(Line(50, -10, 50, 10, GR_LineStyle(GR_LineStyle::kCut, 1, UT_UniqueId())), layer);
    access.Commit();
    ASSERT_EQ(layer->StrokeCount(), 2u);
    for (GR_VectorStroke* s : Strokes(*layer)) {
        EXPECT_EQ(s->style.kind, GR_LineStyle::kPenLine);
        // The ends at the cut carry the mark of a cut: the logical line stops there.
        const bool startsAtCut = s->Path().points.front() == GR_Point2f{50, 0};
        EXPECT_EQ(s->endFlags[0], startsAtCut ? 1 : 0);
        EXPECT_EQ(s->endFlags[1], startsAtCut ? 0 : 1);
    }
    GR_StrokeSet logical;
    access.CollectLogicalStroke(layer->FirstStroke(), logical);
    EXPECT_EQ(logical.size(), 1u);
}

TEST_F(AccessTest, LogicalStrokeFollowsEqualStylesThroughVertices) {
    GR_Layer* layer = Add({Line(0, 0, 100, 0), Line(50, -50, 50, 50, PenLine(3)), Line(100, 0, 150, 20)});
    ASSERT_EQ(layer->StrokeCount(), 5u);
    GR_VectorStroke* start = layer->VertexAt({0, 0}).stroke;
    GR_StrokeSet logical;
    access.CollectLogicalStroke(start, logical);
    EXPECT_EQ(logical.size(), 3u);
    for (GR_VectorStroke* s : logical)
        EXPECT_EQ(s->style.width, 2.0f);
}

TEST_F(AccessTest, DuplicateStrokesShareAPathAndOneIsLeft) {
    GR_Layer* layer = Add({Line(0, 0, 10, 0), Line(0, 0, 10, 0)});
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->StrokeCount(), 1u);
    // Reversed, the same curve is also found out.
    access.BeginEdit();
    access.AddStroke(Line(10, 0, 0, 0), layer);
    access.Commit();
    EXPECT_EQ(layer->StrokeCount(), 1u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, PendingStatesFollowTheTable) {
    GR_Layer* a = Add({Line(0, 0, 10, 0), Line(0, 5, 10, 5)});
    GR_Layer* b = Add({Line(0, 20, 10, 20)});
    ASSERT_TRUE(a && b);
    const std::vector<GR_VectorStroke*> strokes = Strokes(*a);
    access.BeginEdit();
    GR_VectorStroke* added = access.AddStroke(Line(0, 10, 10, 10), a);
    EXPECT_EQ(access.StateOf(added), GR_DrawingAccess::kAdded);
    EXPECT_EQ(added->ListLayer(), nullptr);
    access.MoveStroke(added, b);
    EXPECT_EQ(access.StateOf(added), GR_DrawingAccess::kAdded);
    EXPECT_EQ(added->targetLayer, b);
    access.RemoveStroke(added);
    EXPECT_EQ(access.StateOf(added), GR_DrawingAccess::kAddedRemoved);
    access.MoveStroke(strokes[0], b);
    EXPECT_EQ(access.StateOf(strokes[0]), GR_DrawingAccess::kMoved);
    access.RemoveStroke(strokes[0]);
    EXPECT_EQ(access.StateOf(strokes[0]), GR_DrawingAccess::kRemoved);
    EXPECT_EQ(strokes[0]->targetLayer, a);
    access.MoveStroke(strokes[1], b);
    access.Commit();
    // The first went, the second moved; a is left empty and removed.
    EXPECT_EQ(drawing.LayerCount(), 1u);
    EXPECT_EQ(drawing.FirstLayer(), b);
    EXPECT_EQ(b->StrokeCount(), 2u);
    EXPECT_EQ(strokes[1]->committedLayer, b);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, LayersNeverCutEachOther) {
    GR_Layer* a = Add({Line(0, 0, 10, 10)});
    GR_Layer* b = Add({Line(0, 10, 10, 0)});
    EXPECT_EQ(a->StrokeCount(), 1u);
    EXPECT_EQ(b->StrokeCount(), 1u);
    // Moving one into the other's layer cuts it there.
    access.BeginEdit();
    access.MoveAllStrokes(b, a);
    access.Commit();
    EXPECT_EQ(drawing.LayerCount(), 1u);
    EXPECT_EQ(a->StrokeCount(), 4u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, PaintOfAnUpperLayerCoversTheLinesBelow) {
    GR_Layer* lower = Add({Line(20, -10, 20, 110)});
    GR_Layer* upper = Add(Square(0, 0, 100));
    access.BeginEdit();
    access.SetZoneColor(upper->ZoneAt({50, 50}), Paint(9));
    access.Commit();
    access.BeginEdit();
    access.MoveAllStrokes(upper, lower);
    access.Commit();
    ASSERT_EQ(drawing.LayerCount(), 1u);
    EXPECT_TRUE(AllPlanar());
    // Both parts of the square are painted; the line of the lower layer inside became a
    // contour between equal paint and went.
    EXPECT_EQ(InnerZoneCount(*lower), 1u);
    ASSERT_TRUE(lower->ZoneAt({50, 50})->Color());
    EXPECT_EQ(lower->ZoneAt({50, 50})->Color()->GetId(), UT_UniqueId(9));
    size_t uprightPieces = 0;
    for (GR_VectorStroke* s : Strokes(*lower))
        if (s->Path().points.front().x == 20 && s->Path().points.back().x == 20)
            ++uprightPieces;
    EXPECT_EQ(uprightPieces, 2u);
}

TEST_F(AccessTest, EraserPaintRemovesPaint) {
    GR_Layer* layer = Add(Square(0, 0, 10));
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({5, 5}), Paint(3));
    access.Commit();
    ASSERT_TRUE(layer->ZoneAt({5, 5})->Color());
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({5, 5}), Paint(kCM_EraserColorId.Value()));
    access.Commit();
    EXPECT_EQ(layer->ZoneAt({5, 5})->Color(), nullptr);
}

TEST_F(AccessTest, NestedComponentTakesThePaintAroundIt) {
    std::vector<GR_StrokeDesc> descs = Square(0, 0, 100);
    GR_Layer* layer = Add(descs);
    access.BeginEdit();
    access.SetZoneColor(layer->ZoneAt({50, 50}), Paint(11));
    access.Commit();
    access.BeginEdit();
    for (const GR_StrokeDesc& d : Square(40, 40, 20))
        access.AddStroke(d, layer);
    access.Commit();
    EXPECT_TRUE(AllPlanar());
    GR_Zone* ring = layer->ZoneAt({10, 10});
    GR_Zone* hole = layer->ZoneAt({50, 50});
    ASSERT_TRUE(ring && hole && ring != hole);
    EXPECT_EQ(hole->component->parent, ring);
    // The new square's inside inherits the paint; its outside carries the paint around it.
    ASSERT_TRUE(hole->Color());
    EXPECT_EQ(hole->Color()->GetId(), UT_UniqueId(11));
    EXPECT_EQ(hole->component->outer->Color(), ring->Color());
}

TEST_F(AccessTest, RemovingTheLastStrokeRemovesLayerAndEmptiedGroup) {
    // A group holding one layer, under a root that holds another layer.
    GR_Layer* keep = Add({Line(0, 0, 1, 1)});
    ASSERT_TRUE(drawing.InsertNode({0, 1}, std::make_unique<UT_Node>()));
    GR_Layer* inner = access.AddLayer(GR_Layer::kBrush, {0, 1, 0});
    ASSERT_NE(inner, nullptr);
    access.BeginEdit();
    access.AddStroke(Line(5, 5, 6, 6), inner);
    access.Commit();
    recorder.seen.clear();
    access.BeginEdit();
    access.RemoveAllStrokes(inner);
    access.Commit();
    EXPECT_EQ(drawing.LayerCount(), 1u);
    EXPECT_EQ(drawing.GetRoot()->ChildCount(), 1u);
    ASSERT_EQ(recorder.seen.size(), 3u);
    EXPECT_EQ(recorder.seen[0].change.kind, GR_ChangeKind::kChanged);
    // The change is announced before the stroke goes, the removal before the layer goes.
    EXPECT_EQ(recorder.seen[0].strokes, 1u);
    EXPECT_EQ(recorder.seen[1].change.kind, GR_ChangeKind::kRemoved);
    EXPECT_EQ(recorder.seen[1].change.path, (GR_LayerPath{0, 1, 0}));
    EXPECT_EQ(recorder.seen[2].change.kind, GR_ChangeKind::kRemoved);
    EXPECT_EQ(recorder.seen[2].change.path, (GR_LayerPath{0, 1}));
    // The last layer goes with the root.
    access.BeginEdit();
    access.RemoveAllStrokes(keep);
    access.Commit();
    EXPECT_EQ(drawing.GetRoot(), nullptr);
}

TEST_F(AccessTest, AStrokeEditAnnouncesEachLayerOncePerTransaction) {
    GR_Layer* a = Add({Line(0, 0, 10, 0), Line(0, 5, 10, 5)});
    GR_Layer* b = Add({Line(0, 20, 10, 20)});
    recorder.seen.clear();
    access.BeginEdit();
    for (GR_VectorStroke* s : Strokes(*a))
        access.SetStrokeColor(s, 0, Paint(2));
    access.SetStrokeStyle(b->FirstStroke(), PenLine(5));
    access.Commit();
    EXPECT_EQ(recorder.Count(GR_ChangeKind::kChanged), 2u);
    EXPECT_EQ(recorder.seen.size(), 2u);
}

TEST_F(AccessTest, TreeEditsAreAnnouncedAndListenersFollowPaths) {
    GR_Layer* a = Add({Line(0, 0, 1, 0)});
    GR_Layer* b = Add({Line(0, 1, 1, 1)});
    GR_Layer* c = Add({Line(0, 2, 1, 2)});
    GR_ChangeListener changes;
    GR_LayerListener followB(drawing.PathOf(b));
    access.AddListener(&changes);
    access.AddListener(&followB);
    recorder.seen.clear();
    ASSERT_TRUE(access.MoveLayer({0, 0}, {0, 2}));
    EXPECT_EQ(drawing.LayerAt(2), a);
    ASSERT_EQ(recorder.seen.size(), 1u);
    EXPECT_EQ(recorder.seen[0].change.kind, GR_ChangeKind::kMoved);
    // The new place first, the old one second.
    EXPECT_EQ(recorder.seen[0].change.path, (GR_LayerPath{0, 2}));
    EXPECT_EQ(recorder.seen[0].change.second, (GR_LayerPath{0, 0}));
    EXPECT_EQ(followB.Path(), (GR_LayerPath{0, 0}));
    GR_Layer* d = access.AddLayer(GR_Layer::kLine, {0, 0});
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(followB.Path(), drawing.PathOf(b));
    ASSERT_TRUE(access.RemoveLayer(drawing.PathOf(c)));
    EXPECT_EQ(followB.Path(), drawing.PathOf(b));
    EXPECT_FALSE(access.MoveLayer({0, 9}, {0, 0}));
    EXPECT_FALSE(access.MoveLayer({0, 0}, {0, 9}));
    // A selection carried through all the changes lands where the layers are now.
    GR_LayerPath pathOfA{0, 0}, pathOfC{0, 2};
    EXPECT_TRUE(changes.Replay(pathOfA));
    EXPECT_EQ(pathOfA, drawing.PathOf(a));
    EXPECT_FALSE(changes.Replay(pathOfC));
    ASSERT_TRUE(access.RemoveLayer(drawing.PathOf(b)));
    EXPECT_FALSE(followB.IsValid());
    access.RemoveListener(&changes);
    access.RemoveListener(&followB);
}

TEST_F(AccessTest, InvalidLayerPathsAreRefused) {
    EXPECT_EQ(access.AddLayer(0, {0, 1}), nullptr);
    EXPECT_EQ(access.AddLayer(0, {1, 0}), nullptr);
    EXPECT_EQ(access.AddLayer(0, {0}), nullptr);
    EXPECT_EQ(drawing.GetRoot(), nullptr);
    // Inserting into an empty drawing creates the root first.
    ASSERT_NE(access.AddLayer(0, {0, 0}), nullptr);
    EXPECT_NE(drawing.GetRoot(), nullptr);
    EXPECT_EQ(access.AddLayer(0, {0, 2}), nullptr);
    EXPECT_EQ(access.AddLayer(0, {0, 0, 1}), nullptr);
}

TEST_F(AccessTest, CutWithStrokesCutsEveryLayerItMeets) {
    GR_Layer* a = Add({Line(0, 0, 100, 0)});
    GR_Layer* b = Add({Line(0, 10, 100, 10)});
    GR_Layer* far = Add({Line(500, 0, 600, 0)});
    access.BeginEdit();
    access.CutWithStrokes({Line(50, -20, 50, 20, GR_LineStyle(GR_LineStyle::kCut, 1, UT_UniqueId()))});
    access.Commit();
    EXPECT_EQ(a->StrokeCount(), 2u);
    EXPECT_EQ(b->StrokeCount(), 2u);
    EXPECT_EQ(far->StrokeCount(), 1u);
    // The cutting layer kept nothing.
    EXPECT_EQ(drawing.LayerCount(), 3u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, AppendDrawingCopiesGroupsAndLayers) {
    GR_VectorDrawingObj other;
    {
        GR_DrawingAccess build;
        build.SetDrawing(&other);
        build.AddStrokes({Line(0, 0, 10, 0)}, GR_Layer::kPencil);
        ASSERT_TRUE(other.InsertNode({0, 1}, std::make_unique<UT_Node>()));
        GR_Layer* inner = build.AddLayer(GR_Layer::kLine, {0, 1, 0});
        build.BeginEdit();
        build.AddStroke(Line(0, 0, 0, 10), inner);
        build.Commit();
    }
    Add({Line(0, 5, 10, 5)});
    access.BeginEdit();
    access.AppendDrawing(other);
    access.Commit();
    ASSERT_EQ(drawing.LayerCount(), 3u);
    EXPECT_EQ(drawing.LayerAt(1)->GetKind(), GR_Layer::kPencil);
    EXPECT_EQ(drawing.LayerAt(2)->GetKind(), GR_Layer::kLine);
    EXPECT_EQ(drawing.PathOf(drawing.LayerAt(2)), (GR_LayerPath{0, 2, 0}));
    EXPECT_EQ(drawing.LayerAt(1)->StrokeCount(), 1u);
    EXPECT_TRUE(AllPlanar());
}

TEST_F(AccessTest, PickAndLasso) {
    Add({Line(0, 0, 100, 0), Line(0, 50, 100, 50), Curve({0, 100}, {30, 140}, {70, 60}, {100, 100})});
    double t = -1;
    GR_VectorStroke* picked = access.PickStroke({40, 3}, 5, &t);
    ASSERT_NE(picked, nullptr);
    EXPECT_EQ(picked->Path().points.back().y, 0.0f);
    EXPECT_NEAR(t, 0.4, 1e-9);
    EXPECT_EQ(access.PickStroke({40, 25}, 5), nullptr);
    EXPECT_NE(access.PickStroke({40, 45}, 5), nullptr);
    // A lasso around the left end of the lower line, and one cutting through the upper.
    GR_StrokeSet caught;
    access.StrokesInLasso({{-5, -5}, {5, -5}, {5, 5}, {-5, 5}}, caught);
    EXPECT_EQ(caught.size(), 1u);
    caught.clear();
    access.StrokesInLasso({{40, 40}, {60, 40}, {60, 60}, {40, 60}}, caught);
    ASSERT_EQ(caught.size(), 1u);
    EXPECT_EQ((*caught.begin())->Path().points.front().y, 50.0f);
}

TEST_F(AccessTest, DegenerateDescriptionsAreDroppedSilently) {
    GR_Layer* layer = Add({Line(3, 3, 3, 3), Poly({{1, 1}})});
    EXPECT_EQ(layer, nullptr);
    EXPECT_EQ(drawing.GetRoot(), nullptr);
    EXPECT_EQ(drawing.Paths().Size(), 0u);
}

} // namespace
