// Undo of drawing transactions through what the listeners are told. A recorder keeps, per
// transaction, the changes with copies of the layers taken when each change is announced,
// as the undo of the drawing tools does; executing the records newest first puts the
// drawing back and gives the records that redo it. Thousands of random transactions from a
// fixed seed must undo to the starting bytes and redo to the final ones.

#include "DrawingTestUtil.h"
#include "colour/CM_Color.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace drawtest;

struct Record {
    GR_ChangeKind kind;
    // The node's place; for a move, the old place.
    GR_LayerPath path;
    // For a move, the new place.
    GR_LayerPath second;
    // The layer before the change; null for an addition and for a group.
    std::shared_ptr<const GR_Layer> snapshot;
};
using Command = std::vector<Record>;

std::shared_ptr<const GR_Layer> Snapshot(const UT_Node* node) {
    const GR_Layer* layer = GR_LayerOf(node);
    return layer ? std::shared_ptr<const GR_Layer>(layer->Clone()) : nullptr;
}

std::unique_ptr<UT_Node> NodeFrom(const std::shared_ptr<const GR_Layer>& snapshot) {
    if (!snapshot)
        return std::make_unique<UT_Node>();
    return std::make_unique<GR_LayerNode>(snapshot->Clone());
}

class Recorder : public GR_Listener {
public:
    void LayerChanged(GR_VectorDrawingObj&, UT_Node* node, const GR_LayerChange& change) override {
        Record record{change.kind, change.path, change.second, nullptr};
        // A move record keeps the old place first and the new one second.
        if (change.kind == GR_ChangeKind::kMoved)
            std::swap(record.path, record.second);
        if (change.kind == GR_ChangeKind::kChanged || change.kind == GR_ChangeKind::kRemoved)
            record.snapshot = Snapshot(node);
        command.push_back(std::move(record));
    }
    Command command;
};

// Plays a command backwards and gives the command that plays it forward again.
Command Execute(GR_VectorDrawingObj& drawing, const Command& command) {
    Command reverse;
    for (auto r = command.rbegin(); r != command.rend(); ++r) {
        switch (r->kind) {
        case GR_ChangeKind::kAdded: {
            UT_Node* node = drawing.LayerNodeAt(r->path);
            EXPECT_NE(node, nullptr);
            if (!node)
                break;
            reverse.push_back({GR_ChangeKind::kRemoved, r->path, {}, Snapshot(node)});
            drawing.TakeNode(node);
            break;
        }
        case GR_ChangeKind::kChanged: {
            UT_Node* node = drawing.LayerNodeAt(r->path);
            EXPECT_NE(GR_LayerOf(node), nullptr);
            if (!node)
                break;
            reverse.push_back({GR_ChangeKind::kChanged, r->path, {}, Snapshot(node)});
            EXPECT_TRUE(drawing.InsertNode(r->path, NodeFrom(r->snapshot)));
            drawing.TakeNode(node);
            break;
        }
        case GR_ChangeKind::kRemoved:
            EXPECT_TRUE(drawing.InsertNode(r->path, NodeFrom(r->snapshot)));
            reverse.push_back({GR_ChangeKind::kAdded, r->path, {}, nullptr});
            break;
        case GR_ChangeKind::kMoved: {
            UT_Node* node = drawing.LayerNodeAt(r->second);
            EXPECT_NE(node, nullptr);
            if (!node)
                break;
            EXPECT_TRUE(drawing.InsertNode(r->path, drawing.TakeNode(node, false)));
            reverse.push_back({GR_ChangeKind::kMoved, r->second, r->path, nullptr});
            break;
        }
        }
    }
    // A root without children does not stay.
    if (drawing.GetRoot() && !drawing.GetRoot()->FirstChild())
        drawing.TakeNode(drawing.GetRoot());
    drawing.MarkChanged();
    return reverse;
}

// Random transactions on a small drawing: strokes on a coarse lattice (so that strokes
// share end points, touch and overlap), curves, colours, and every kind of tree edit.
class RandomEditor {
public:
    RandomEditor(GR_VectorDrawingObj& drawing, GR_DrawingAccess& access, uint32_t seed)
        : drawing_(drawing), access_(access), rng_(seed) {
        GR_DrawingAccess build;
        build.SetDrawing(&other_);
        build.AddStrokes({Line(0, 0, 40, 40), Line(0, 40, 40, 0)}, GR_Layer::kPencil);
        other_.InsertNode({0, 1}, std::make_unique<UT_Node>());
        GR_Layer* inner = build.AddLayer(GR_Layer::kLine, {0, 1, 0});
        build.BeginEdit();
        for (const GR_StrokeDesc& d : Square(10, 10, 20))
            build.AddStroke(d, inner);
        build.Commit();
    }

    void Transaction() {
        const int kind = Pick(0, 19);
        if (kind == 0) {
            std::vector<GR_StrokeDesc> descs;
            for (int i = Pick(1, 3); i > 0; --i)
                descs.push_back(RandomDesc());
            access_.AddStrokes(descs, static_cast<uint16_t>(Pick(0, 9)), RandomNode());
            return;
        }
        if (kind == 1) {
            access_.AddLayer(static_cast<uint16_t>(Pick(0, 9)), RandomInsertPath());
            return;
        }
        if (kind == 2) {
            if (UT_Node* node = RandomNode())
                access_.MoveLayer(drawing_.PathOf(node), RandomInsertPath());
            return;
        }
        if (kind == 3) {
            if (GR_Layer* layer = RandomLayer())
                access_.RemoveLayer(drawing_.PathOf(layer));
            return;
        }
        static const uint32_t kModes[] = {1, 1, 1, 3, 4};
        access_.BeginEdit(kModes[Pick(0, 4)]);
        for (int i = Pick(1, 4); i > 0; --i)
            Operation();
        access_.Commit();
    }

    size_t StrokeCount() const {
        size_t n = 0;
        for (GR_Layer* layer = drawing_.FirstLayer(); layer; layer = drawing_.NextLayer(layer))
            n += layer->StrokeCount();
        return n;
    }

private:
    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng_); }

    double Coordinate() { return Pick(0, 8) * 10.0; }

    GR_ColorRef RandomColour() {
        static const uint64_t kIds[] = {10, 11, 12, 1};
        const int k = Pick(0, 4);
        return k == 4 ? nullptr : std::make_shared<GR_Color>(UT_UniqueId(kIds[k]));
    }

    GR_LineStyle RandomStyle() {
        const uint8_t kind = static_cast<uint8_t>(Pick(0, 4));
        return GR_LineStyle(kind, static_cast<float>(Pick(1, 3)),
                            UT_UniqueId(static_cast<uint64_t>(Pick(10, 11))));
    }

    GR_StrokeDesc RandomDesc() {
        GR_StrokeDesc desc;
        if (Pick(0, 3) == 0) {
            const GR_Point2d a{Coordinate(), Coordinate()}, d{Coordinate(), Coordinate()};
            const GR_Point2d b{Coordinate() + 3.25, Coordinate() - 1.5},
                c{Coordinate() - 2.75, Coordinate() + 4.5};
            desc = Curve(a, b, c, d, RandomStyle());
        } else {
            desc = Line(Coordinate(), Coordinate(), Coordinate(), Coordinate(), RandomStyle());
        }
        if (Pick(0, 2) == 0) {
            desc.colour0 = RandomColour();
            desc.colour1 = RandomColour();
        }
        return desc;
    }

    std::vector<GR_Layer*> Layers() const {
        std::vector<GR_Layer*> layers;
        for (GR_Layer* layer = drawing_.FirstLayer(); layer; layer = drawing_.NextLayer(layer))
            layers.push_back(layer);
        return layers;
    }

    GR_Layer* RandomLayer() {
        const std::vector<GR_Layer*> layers = Layers();
        return layers.empty() ? nullptr : layers[Pick(0, static_cast<int>(layers.size()) - 1)];
    }

    UT_Node* RandomNode() {
        std::vector<UT_Node*> nodes;
        if (UT_Node* root = drawing_.GetRoot())
            for (UT_Node* node = root->FirstChild(); node; node = node->NextInTree(root))
                nodes.push_back(node);
        return nodes.empty() ? nullptr : nodes[Pick(0, static_cast<int>(nodes.size()) - 1)];
    }

    GR_LayerPath RandomInsertPath() {
        UT_Node* parent = Pick(0, 3) == 0 ? RandomNode() : drawing_.GetRoot();
        if (!parent || GR_LayerOf(parent))
            parent = drawing_.GetRoot();
        if (!parent)
            return {0, 0};
        GR_LayerPath path = drawing_.PathOf(parent);
        path.push_back(static_cast<uint32_t>(Pick(0, static_cast<int>(parent->ChildCount()))));
        return path;
    }

    GR_VectorStroke* RandomStroke() {
        std::vector<GR_VectorStroke*> strokes;
        for (GR_Layer* layer : Layers())
            for (GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
                strokes.push_back(s);
        return strokes.empty() ? nullptr : strokes[Pick(0, static_cast<int>(strokes.size()) - 1)];
    }

    void Operation() {
        GR_Layer* layer = RandomLayer();
        if (!layer || StrokeCount() < 12) {
            if (!layer)
                layer = access_.AddLayer(GR_Layer::kBrush, {0, 0});
            access_.AddStroke(RandomDesc(), layer);
            return;
        }
        GR_VectorStroke* stroke = RandomStroke();
        switch (Pick(0, 13)) {
        case 0:
        case 1:
            if (StrokeCount() < 40)
                access_.AddStroke(RandomDesc(), layer);
            break;
        case 2:
            access_.RemoveStroke(stroke);
            break;
        case 3:
            access_.MoveStroke(stroke, layer);
            break;
        case 4:
            access_.CopyStrokeTo(stroke, layer);
            break;
        case 5:
            access_.SetStrokeStyle(stroke, RandomStyle());
            break;
        case 6:
            access_.SetStrokeColor(stroke, Pick(0, 1), RandomColour());
            break;
        case 7:
        case 8: {
            std::vector<GR_Zone*> zones;
            for (GR_Zone* zone : layer->Zones())
                if (!zone->IsOuter())
                    zones.push_back(zone);
            if (!zones.empty())
                access_.SetZoneColor(zones[Pick(0, static_cast<int>(zones.size()) - 1)], RandomColour());
            break;
        }
        case 9:
            access_.CutWithStrokes({Line(Coordinate(), Coordinate(), Coordinate(), Coordinate(),
                                         GR_LineStyle(1, 1, UT_UniqueId()))});
            break;
        case 10:
            if (Pick(0, 3) == 0)
                access_.RemoveAllStrokes(layer);
            break;
        case 11:
            access_.MoveAllStrokes(layer, RandomLayer());
            break;
        case 12:
            if (Pick(0, 5) == 0 && drawing_.LayerCount() < 8)
                access_.AppendDrawing(other_);
            break;
        default:
            access_.AddLayer(static_cast<uint16_t>(Pick(0, 9)), RandomInsertPath());
            break;
        }
    }

    GR_VectorDrawingObj& drawing_;
    GR_DrawingAccess& access_;
    std::mt19937 rng_;
    GR_VectorDrawingObj other_;
};

TEST(DrawingUndo, RandomTransactionsUndoToTheStartAndRedoToTheEnd) {
    RegisterTypes();
    CM_PaletteList palettes;
    CM_Palette* palette = palettes.AddPalette(u"P", u"S");
    for (uint64_t id : {10, 11, 12}) {
        auto colour =
            std::make_unique<CM_Color>(u"C" + std::u16string(1, char16_t('0' + id - 10)), UT_UniqueId(id));
        colour->AddStop({0.0, {uint8_t(id * 20), 0, 0, 255}, 0});
        palette->AddEntry(std::move(colour));
    }
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(&drawing);
    access.AddStrokes(Square(0, 0, 80), GR_Layer::kRectangle);
    access.AddStrokes({Line(0, 40, 80, 40)}, GR_Layer::kLine);
    const std::vector<uint8_t> start = Typed(drawing, &palettes);

    Recorder recorder;
    access.AddListener(&recorder);
    RandomEditor editor(drawing, access, 20240611);
    std::vector<Command> commands;
    constexpr int kTransactions = 2000;
    for (int i = 0; i < kTransactions; ++i) {
        recorder.command.clear();
        editor.Transaction();
        commands.push_back(recorder.command);
        for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer)) {
            ASSERT_TRUE(Planar(*layer)) << "after transaction " << i;
            ASSERT_TRUE(layer->CheckZoneColors()) << "after transaction " << i;
        }
    }
    access.RemoveListener(&recorder);
    const std::vector<uint8_t> end = Typed(drawing, &palettes);
    EXPECT_GT(editor.StrokeCount(), 0u);
    // The transactions did change layers of every kind.
    size_t kinds[4] = {0, 0, 0, 0};
    for (const Command& command : commands)
        for (const Record& record : command)
            ++kinds[static_cast<int>(record.kind)];
    for (size_t count : kinds)
        EXPECT_GT(count, 50u);

    std::vector<Command> redo;
    for (auto c = commands.rbegin(); c != commands.rend(); ++c)
        redo.push_back(Execute(drawing, *c));
    EXPECT_EQ(Typed(drawing, &palettes), start);
    for (auto c = redo.rbegin(); c != redo.rend(); ++c)
        Execute(drawing, *c);
    EXPECT_EQ(Typed(drawing, &palettes), end);
}

} // namespace
