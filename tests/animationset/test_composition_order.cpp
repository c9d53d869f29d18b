// The composition orders: tree operations against a plain tree of nodes on seeded random
// input, the scanners, frame ranges and the stream form.

#include "ByteBuilder.h"
#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/AnimationSetTypes.h"
#include "animationset/CDopeSheetObj.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "motion/MotionTypes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

using Flat = std::vector<std::pair<uint32_t, int32_t>>;

// The slow reference: a forest of nodes with child lists.
struct Node {
    uint32_t id;
    bool peg;
    std::vector<std::unique_ptr<Node>> children;
};

struct Forest {
    std::vector<std::unique_ptr<Node>> roots;

    void Flatten(const std::vector<std::unique_ptr<Node>>& list, int32_t depth, Flat& out) const {
        for (const auto& node : list) {
            out.emplace_back(node->id, depth);
            Flatten(node->children, depth + 1, out);
        }
    }
    Flat Flatten() const {
        Flat out;
        Flatten(roots, 1, out);
        return out;
    }
    // The list that holds the node and its position there.
    std::pair<std::vector<std::unique_ptr<Node>>*, size_t> Locate(uint32_t id) { return Locate(roots, id); }
    std::pair<std::vector<std::unique_ptr<Node>>*, size_t> Locate(std::vector<std::unique_ptr<Node>>& list,
                                                                  uint32_t id) {
        for (size_t i = 0; i < list.size(); ++i) {
            if (list[i]->id == id)
                return {&list, i};
            auto found = Locate(list[i]->children, id);
            if (found.first)
                return found;
        }
        return {nullptr, 0};
    }
    Node* Find(uint32_t id) {
        auto [list, i] = Locate(id);
        return list ? (*list)[i].get() : nullptr;
    }
    std::unique_ptr<Node> Detach(uint32_t id) {
        auto [list, i] = Locate(id);
        std::unique_ptr<Node> node = std::move((*list)[i]);
        list->erase(list->begin() + static_cast<long>(i));
        return node;
    }
    uint32_t ParentOf(uint32_t id) {
        uint32_t parent = AS_kInvalidId;
        ParentOf(roots, id, AS_kInvalidId, parent);
        return parent;
    }
    void ParentOf(const std::vector<std::unique_ptr<Node>>& list, uint32_t id, uint32_t above,
                  uint32_t& out) {
        for (const auto& node : list) {
            if (node->id == id)
                out = above;
            ParentOf(node->children, id, node->id, out);
        }
    }
    static bool Contains(const Node& node, uint32_t id) {
        if (node.id == id)
            return true;
        for (const auto& child : node.children)
            if (Contains(*child, id))
                return true;
        return false;
    }
    // What the no-peg scanner should give: descendants in pre-order, not entering pegs.
    static void Scan(const std::vector<std::unique_ptr<Node>>& list, std::vector<uint32_t>& out) {
        for (const auto& node : list) {
            out.push_back(node->id);
            if (!node->peg)
                Scan(node->children, out);
        }
    }
};

Flat RowsOf(const AS_CompositionOrder& order) {
    Flat out;
    for (const AS_CompositionRow& row : order.Rows())
        out.emplace_back(row.id, row.depth);
    return out;
}

class CompositionOrderTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        MotionRegisterTypes();
        AnimationSetRegisterTypes();
        scene.Initialise(1, u"Scene-1", nullptr);
    }
    uint32_t AddDrawing() {
        const uint32_t id = scene.NewElementId();
        scene.AddElement(AS_VectorGraphicLevelObj::Create(id, scene.UniqueName(u"Drawing")));
        return id;
    }
    uint32_t AddPeg() {
        const uint32_t id = scene.NewElementId();
        scene.AddElement(AS_PegLevelObj::Create(id, scene.UniqueName(u"Peg")));
        return id;
    }
    CDopeSheetObj scene;
};

TEST_F(CompositionOrderTest, MasksDecideWhichOrderTakesALevel) {
    const uint32_t peg = AddPeg();
    const uint32_t drawing = AddDrawing();
    const uint32_t sound = scene.NewElementId();
    scene.AddElement(AS_SoundLevel::Create(sound, u"Sound"));
    const uint32_t group = scene.NewElementId();
    scene.AddElement(AS_ParamGroupLevel::Create(group, u"Group"));

    // The Drawing order appends and refuses the peg; the Sceneplanning order puts each
    // new level on top.
    EXPECT_EQ(RowsOf(scene.DrawingOrder()), (Flat{{drawing, 1}, {sound, 1}}));
    EXPECT_EQ(RowsOf(scene.SceneplanningOrder()), (Flat{{group, 1}, {sound, 1}, {drawing, 1}, {peg, 1}}));
    // A parameter group starts hidden in the Sceneplanning order.
    EXPECT_EQ(scene.SceneplanningOrder().GetShownCount(), 3);
    EXPECT_EQ(scene.SceneplanningOrder().FindShownIndex(group), -1);
    EXPECT_EQ(scene.SceneplanningOrder().GetLevel(0)->GetId(), sound);
    const AS_CompositionRow& row = scene.DrawingOrder().Rows()[0];
    EXPECT_TRUE(row.shown && row.enabled && row.render && row.expanded && !row.collapsed);
    // Unknown ids and out-of-range indices give nothing.
    scene.SceneplanningOrder().AddLevel(999999, true);
    EXPECT_EQ(scene.SceneplanningOrder().GetRowCount(), 4);
    EXPECT_EQ(scene.DrawingOrder().GetLevel(-1), nullptr);
    EXPECT_EQ(scene.DrawingOrder().GetLevelId(7), AS_kInvalidId);
    EXPECT_EQ(scene.DrawingOrder().GetParent(9), -1);
}

TEST_F(CompositionOrderTest, RemoveReparentAndMoveOnAHandBuiltTree) {
    AS_SPCompositionOrder& order = scene.SceneplanningOrder();
    const uint32_t d = AddDrawing(), c = AddDrawing(), b = AddDrawing(), peg = AddPeg();
    // peg, b, c, d on top; hang b and c under the peg.
    ASSERT_EQ(RowsOf(order), (Flat{{peg, 1}, {b, 1}, {c, 1}, {d, 1}}));
    EXPECT_TRUE(order.Reparent(1, 0));
    EXPECT_TRUE(order.Reparent(2, 0));
    ASSERT_EQ(RowsOf(order), (Flat{{peg, 1}, {b, 2}, {c, 2}, {d, 1}}));
    // A new child lands behind the existing children.
    EXPECT_TRUE(order.Reparent(3, 0));
    EXPECT_EQ(RowsOf(order), (Flat{{peg, 1}, {b, 2}, {c, 2}, {d, 2}}));
    EXPECT_EQ(order.GetParent(3), 0);
    EXPECT_TRUE(order.IsAncestor(0, 3));
    EXPECT_TRUE(order.IsAncestor(-1, 3));
    EXPECT_FALSE(order.IsAncestor(1, -1));
    // A subtree cannot go below itself.
    EXPECT_FALSE(order.Reparent(0, 2));
    // To -1: a top row at the end.
    EXPECT_TRUE(order.Reparent(1, -1));
    EXPECT_EQ(RowsOf(order), (Flat{{peg, 1}, {c, 2}, {d, 2}, {b, 1}}));
    // Move b before the peg, then behind the peg's whole subtree again.
    order.Move(3, 0, true);
    EXPECT_EQ(RowsOf(order), (Flat{{b, 1}, {peg, 1}, {c, 2}, {d, 2}}));
    order.Move(0, 1, false);
    EXPECT_EQ(RowsOf(order), (Flat{{peg, 1}, {c, 2}, {d, 2}, {b, 1}}));
    // Removing the peg without children lifts them one level.
    order.RemoveRow(0, false);
    EXPECT_EQ(RowsOf(order), (Flat{{c, 1}, {d, 1}, {b, 1}}));
    // The Drawing order does not reparent.
    EXPECT_TRUE(scene.DrawingOrder().Reparent(1, 0));
    EXPECT_EQ(scene.DrawingOrder().GetDepth(1), 1);
}

TEST_F(CompositionOrderTest, HiddenSubtreeKeepsItsRowsAndComesBack) {
    AS_SPCompositionOrder& order = scene.SceneplanningOrder();
    const uint32_t child = AddDrawing(), peg = AddPeg(), top = AddDrawing();
    order.Reparent(order.FindRow(child), order.FindRow(peg));
    ASSERT_EQ(RowsOf(order), (Flat{{top, 1}, {peg, 1}, {child, 2}}));
    order.SetShownWithChildren(1, false);
    EXPECT_EQ(order.ShownIndices(), std::vector<int>{0});
    EXPECT_EQ(order.GetRowCount(), 3);
    EXPECT_EQ(order.GetShownIndexAtOrAfter(1), 1);
    order.SetShownWithChildren(1, true);
    EXPECT_EQ(order.ShownIndices(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(order.FindShownIndex(child), 2);
}

TEST_F(CompositionOrderTest, RandomTreeOperationsMatchTheReference) {
    std::mt19937 random(20261123);
    AS_SPCompositionOrder& order = scene.SceneplanningOrder();
    Forest forest;
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };

    for (int step = 0; step < 4000; ++step) {
        const int rows = order.GetRowCount();
        const int op = rows < 3 ? 0 : pick(10);
        if (op <= 2) {
            const bool peg = pick(2) == 0;
            const uint32_t id = peg ? AddPeg() : AddDrawing();
            forest.roots.insert(forest.roots.begin(), std::make_unique<Node>(Node{id, peg, {}}));
        } else if (op == 3) {
            const int row = pick(rows);
            const bool withChildren = pick(2) == 0;
            const uint32_t id = order.GetLevelId(row);
            auto [list, i] = forest.Locate(id);
            std::unique_ptr<Node> node = std::move((*list)[i]);
            list->erase(list->begin() + static_cast<long>(i));
            if (!withChildren)
                for (size_t k = 0; k < node->children.size(); ++k)
                    list->insert(list->begin() + static_cast<long>(i + k), std::move(node->children[k]));
            order.RemoveRow(row, withChildren);
        } else if (op <= 6) {
            const int row = pick(rows);
            const int parent = pick(rows + 1) - 1;
            const uint32_t id = order.GetLevelId(row);
            const uint32_t parentId = order.GetLevelId(parent);
            const bool valid = parent == -1 || !Forest::Contains(*forest.Find(id), parentId);
            EXPECT_EQ(order.Reparent(row, parent), valid);
            if (valid) {
                std::unique_ptr<Node> node = forest.Detach(id);
                (parent == -1 ? forest.roots : forest.Find(parentId)->children).push_back(std::move(node));
            }
        } else {
            // Moves between siblings of equal depth, the target outside the moved subtree.
            const int from = pick(rows);
            const int to = pick(rows);
            const bool before = pick(2) == 0;
            const uint32_t id = order.GetLevelId(from);
            const uint32_t toId = order.GetLevelId(to);
            if (order.GetDepth(from) != order.GetDepth(to) || Forest::Contains(*forest.Find(id), toId))
                continue;
            order.Move(from, to, before);
            std::unique_ptr<Node> node = forest.Detach(id);
            auto [list, i] = forest.Locate(toId);
            list->insert(list->begin() + static_cast<long>(before ? i : i + 1), std::move(node));
        }
        const Flat expected = forest.Flatten();
        ASSERT_EQ(RowsOf(order), expected) << "step " << step << " op " << op;
        ASSERT_EQ(order.GetShownCount(), order.GetRowCount());
        if (step % 50 != 0)
            continue;
        for (int row = 0; row < order.GetRowCount(); ++row) {
            const uint32_t parentId = forest.ParentOf(order.GetLevelId(row));
            ASSERT_EQ(order.GetLevelId(order.GetParent(row)), parentId) << "row " << row;
        }
        for (int start = -1; start < order.GetRowCount(); ++start) {
            std::vector<uint32_t> expectedScan;
            Forest::Scan(start == -1 ? forest.roots : forest.Find(order.GetLevelId(start))->children,
                         expectedScan);
            AS_CompositionOrder::NoPegRecursionChildScanner scanner(order, start);
            std::vector<uint32_t> scanned;
            for (int row = scanner.NextRow(); row != -1; row = scanner.NextRow())
                scanned.push_back(order.GetLevelId(row));
            ASSERT_EQ(scanned, expectedScan) << "start " << start;
            EXPECT_TRUE(scanner.IsFinished());
        }
    }
}

TEST_F(CompositionOrderTest, ScannerFromOutsideTheListFindsNothing) {
    AddDrawing();
    AS_CompositionOrder::NoPegRecursionChildScanner scanner(scene.SceneplanningOrder(), 5);
    EXPECT_EQ(scanner.GetWantedDepth(), 9999);
    EXPECT_EQ(scanner.NextRow(), -1);
}

TEST_F(CompositionOrderTest, FrameRangeCountsShownEnabledLevelsWithFrames) {
    AS_DSCompositionOrder& order = scene.DrawingOrder();
    int32_t first = 0, last = 0;
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(-1, -1));
    EXPECT_EQ(order.GetLastFrame(), 0);

    const uint32_t a = AddDrawing();
    const uint32_t b = AddDrawing();
    auto* levelA = static_cast<AS_DrawingLevelObj*>(scene.FindElement(a));
    auto* levelB = static_cast<AS_DrawingLevelObj*>(scene.FindElement(b));
    // Levels without frames do not count.
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(-1, -1));
    levelA->Cells().assign(8, AS_CellRecord{});
    levelA->Cells()[3].drawingId = 1001;
    levelA->Cells()[5].drawingId = 1001;
    levelB->Cells().assign(12, AS_CellRecord{});
    levelB->Cells()[7].drawingId = 1002;
    levelB->Cells()[10].drawingId = 1002;
    EXPECT_EQ(levelA->GetDuration(), 3u);

    // Cached until marked dirty.
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(-1, -1));
    scene.MarkDirty();
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(3, 10));
    EXPECT_EQ(order.GetLastFrame(), 10);

    order.SetEnabled(order.FindRow(b), false);
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(3, 5));
    order.SetEnabled(order.FindRow(a), false);
    order.GetFrameRange(first, last);
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(-1, -1));
    EXPECT_GT(order.GetShownCount(), 0);
    EXPECT_EQ(order.GetLastFrame(), 0);
}

TEST_F(CompositionOrderTest, StreamFormIsElevenBytesPerRow) {
    AS_SPCompositionOrder& order = scene.SceneplanningOrder();
    const uint32_t child = AddDrawing(), peg = AddPeg();
    order.Reparent(1, 0);
    order.SetCollapsed(0, true);
    order.SetEnabled(1, false);
    order.SetRender(1, false);
    order.SetExpanded(0, false);
    DB_MemFile file;
    DB_Archive writer(&file, false);
    ASSERT_TRUE(writer.WriteTyped(order));
    const std::vector<uint8_t> expected = ByteBuilder()
                                              .U16(4)
                                              .U32(2)
                                              .U32(peg)
                                              .Bool(true)
                                              .U32(1)
                                              .Bool(true)
                                              .Bool(true)
                                              .U32(child)
                                              .Bool(true)
                                              .U32(2)
                                              .Bool(false)
                                              .Bool(false)
                                              .Bytes();
    ASSERT_EQ(std::vector<uint8_t>(file.Data(), file.Data() + file.Size()), expected);

    file.Rewind();
    DB_Archive reader(&file, false);
    auto read = reader.ReadNewAs<AS_SPCompositionOrder>();
    EXPECT_EQ(RowsOf(*read), RowsOf(order));
    EXPECT_TRUE(read->IsCollapsed(0));
    EXPECT_FALSE(read->IsEnabled(1));
    // Not persisted: back to their start values.
    EXPECT_TRUE(read->IsRender(1));
    EXPECT_TRUE(read->IsExpanded(0));
    EXPECT_EQ(read->GetShownCount(), 2);
}

TEST_F(CompositionOrderTest, TruncatedOrderThrows) {
    const std::vector<uint8_t> bytes = ByteBuilder().U32(3).U32(2001).Bool(true).Bytes();
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive reader(&file, false);
    AS_DSCompositionOrder order;
    EXPECT_THROW(order.Read(reader), DB_Exception);
}

} // namespace
