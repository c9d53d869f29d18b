// The exposure of a drawing element: its operations against a plain model built on a list
// of runs, under thousands of random operations, and the run arithmetic and drawing names
// that users meet.

#include "animationset/AS_DrawingLevelObj.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

constexpr uint32_t kBlank = AS_kInvalidId;

// Drawings "1" to "3" of the element have ids 1001 to 1003: cells are written as letters,
// A for 1001, B for 1002, C for 1003 and _ for a blank frame.
std::vector<AS_CellRecord> Cells(std::string_view text) {
    std::vector<AS_CellRecord> cells;
    for (char c : text)
        cells.push_back({c == '_' ? kBlank : 1001u + static_cast<uint32_t>(c - 'A'), {}});
    return cells;
}

std::string Text(const std::vector<AS_CellRecord>& cells) {
    std::string text;
    for (const AS_CellRecord& cell : cells)
        text += cell.drawingId == kBlank ? '_' : static_cast<char>('A' + (cell.drawingId - 1001));
    return text;
}

std::unique_ptr<AS_VectorGraphicLevelObj> ElementWithDrawings(std::string_view cells = {}) {
    auto level = AS_VectorGraphicLevelObj::Create(2001, u"Arm");
    for (const char16_t* name : {u"1", u"2", u"3"})
        level->CreateDrawing(name);
    level->Cells() = Cells(cells);
    return level;
}

// The plain model: the exposure cut into segments, a run or a single blank frame each.
struct Segment {
    size_t start;
    size_t length;
    uint32_t id;
};

std::vector<Segment> Segments(const std::vector<AS_CellRecord>& cells) {
    std::vector<Segment> segments;
    for (size_t i = 0; i < cells.size(); ++i) {
        const uint32_t id = cells[i].drawingId;
        if (id != kBlank && !segments.empty() && segments.back().id == id)
            ++segments.back().length;
        else
            segments.push_back({i, 1, id});
    }
    return segments;
}

class Model {
public:
    std::vector<AS_CellRecord> cells;

    void Insert(int32_t frame, bool shift, int32_t count) {
        frame = std::max(frame, 0);
        if (cells.size() < static_cast<size_t>(frame))
            cells.resize(static_cast<size_t>(frame));
        for (int32_t i = 0; i < count; ++i) {
            const auto at = static_cast<size_t>(frame + i);
            if (shift)
                cells.insert(cells.begin() + frame, AS_CellRecord{});
            else if (at < cells.size())
                cells[at] = AS_CellRecord{};
            else
                cells.push_back(AS_CellRecord{});
        }
    }
    void Remove(int32_t frame, int32_t count, bool shift) {
        for (int32_t i = frame + count - 1; i >= frame; --i) {
            if (i < 0 || static_cast<size_t>(i) >= cells.size())
                continue;
            if (shift)
                cells.erase(cells.begin() + i);
            else
                cells[static_cast<size_t>(i)] = AS_CellRecord{};
        }
    }
    void Set(uint32_t id, int32_t first, int32_t count) {
        for (int32_t frame = std::max(first, 0); frame < first + count; ++frame) {
            if (cells.size() <= static_cast<size_t>(frame))
                cells.resize(static_cast<size_t>(frame) + 1);
            cells[static_cast<size_t>(frame)].drawingId = id;
        }
    }
    int32_t RunLength(int32_t& frame) const {
        for (const Segment& segment : Segments(cells)) {
            if (frame >= 0 && static_cast<size_t>(frame) >= segment.start &&
                static_cast<size_t>(frame) < segment.start + segment.length) {
                frame = static_cast<int32_t>(segment.start);
                return static_cast<int32_t>(segment.length);
            }
        }
        return 1;
    }
    // Rebuilds the exposure segment by segment: the segments before the one at `first`
    // stay, those that the count reaches take the length, the rest stay.
    void SetRunLengths(int32_t first, int32_t count, int32_t length, int32_t& outFirst, int32_t& outLast) {
        if (first < 0) {
            count += first;
            first = 0;
        }
        outFirst = outLast = first;
        const std::vector<Segment> segments = Segments(cells);
        size_t k = 0;
        while (k < segments.size() && segments[k].start + segments[k].length <= static_cast<size_t>(first))
            ++k;
        if (k == segments.size())
            return;
        if (segments[k].id != kBlank) {
            count += first - static_cast<int32_t>(segments[k].start);
            outFirst = static_cast<int32_t>(segments[k].start);
        }
        std::vector<AS_CellRecord> rebuilt(cells.begin(),
                                           cells.begin() + static_cast<std::ptrdiff_t>(segments[k].start));
        size_t next = k;
        for (; next < segments.size() && count > 0; ++next) {
            const Segment& segment = segments[next];
            count -= static_cast<int32_t>(segment.length);
            const size_t wanted = segment.id == kBlank ? 1 : static_cast<size_t>(length);
            for (size_t i = 0; i < wanted; ++i)
                rebuilt.push_back(i < segment.length ? cells[segment.start + i]
                                                     : AS_CellRecord{segment.id, {}});
        }
        outLast = static_cast<int32_t>(rebuilt.size());
        for (; next < segments.size(); ++next)
            for (size_t i = 0; i < segments[next].length; ++i)
                rebuilt.push_back(cells[segments[next].start + i]);
        cells = std::move(rebuilt);
    }
};

TEST(ExposureTest, OperationsAgreeWithThePlainModelUnderRandomUse) {
    std::mt19937 random(5150);
    auto pick = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    auto level = ElementWithDrawings();
    Model model;
    const std::vector<UT_WString> names = {u"1", u"2", u"3", u"missing"};
    int runsRetimed = 0;
    for (int step = 0; step < 6000; ++step) {
        const int op = pick(0, 8);
        const int32_t frame = pick(-3, 40);
        const int32_t count = pick(-1, 9);
        const bool shift = pick(0, 1) == 1;
        const uint32_t id = 1001u + static_cast<uint32_t>(pick(0, 2));
        std::string what;
        switch (op) {
        case 0:
            what = "InsertCells";
            level->InsertCells(frame, shift, count);
            model.Insert(frame, shift, count);
            break;
        case 1:
            what = "RemoveCells";
            level->RemoveCells(frame, count, shift);
            model.Remove(frame, count, shift);
            break;
        case 2:
        case 3:
            what = "SetCells";
            level->SetCells(id, frame, count);
            model.Set(id, frame, count);
            break;
        case 4: {
            what = "SetCellsFromNames";
            std::vector<UT_WString> frameNames;
            for (int i = pick(0, 6); i > 0; --i)
                frameNames.push_back(names[static_cast<size_t>(pick(0, 3))]);
            const auto index = static_cast<size_t>(pick(0, 2));
            level->SetCellsFromNames(frameNames, index, frame, count);
            for (int32_t i = 0; i < count; ++i) {
                const size_t at = index + static_cast<size_t>(i);
                uint32_t named = kBlank;
                if (at < frameNames.size() && frameNames[at] != u"missing")
                    named = 1001u + static_cast<uint32_t>(frameNames[at][0] - u'1');
                if (frame + i >= 0)
                    model.Set(named, frame + i, 1);
            }
            break;
        }
        case 5: {
            what = "SetRunLengths";
            const int32_t length = pick(0, 4);
            int32_t first = -1, last = -1, expectedFirst = -1, expectedLast = -1;
            level->SetRunLengths(frame, count, length, first, last);
            model.SetRunLengths(frame, count, length, expectedFirst, expectedLast);
            ASSERT_EQ(first, expectedFirst) << "step " << step;
            ASSERT_EQ(last, expectedLast) << "step " << step;
            runsRetimed += last > first ? 1 : 0;
            break;
        }
        case 6: {
            what = "GetRunLength and CollectRunLengths";
            int32_t at = frame, expectedAt = frame;
            ASSERT_EQ(level->GetRunLength(at), model.RunLength(expectedAt)) << "step " << step;
            ASSERT_EQ(at, expectedAt) << "step " << step;
            std::vector<int32_t> lengths, expected;
            int32_t walk = frame, expectedWalk = frame;
            level->CollectRunLengths(walk, frame + count, lengths);
            while (expectedWalk <= frame + count) {
                expected.push_back(model.RunLength(expectedWalk));
                expectedWalk += expected.back();
            }
            ASSERT_EQ(lengths, expected) << "step " << step;
            ASSERT_EQ(walk, expectedWalk) << "step " << step;
            break;
        }
        default: {
            what = "PutCellRecords";
            std::vector<AS_CellRecord> records;
            for (int i = pick(0, 4); i > 0; --i)
                records.push_back({pick(0, 3) == 0 ? kBlank : id, pick(0, 1) ? u"note" : u""});
            level->PutCellRecords(frame, records);
            for (size_t i = 0; i < records.size(); ++i) {
                const int32_t at = frame + static_cast<int32_t>(i);
                if (at < 0)
                    continue;
                if (model.cells.size() <= static_cast<size_t>(at))
                    model.cells.resize(static_cast<size_t>(at) + 1);
                model.cells[static_cast<size_t>(at)] = records[i];
            }
            break;
        }
        }
        ASSERT_EQ(level->Cells(), model.cells)
            << "step " << step << " (" << what << "): " << Text(level->Cells()) << " against "
            << Text(model.cells);
        // Frames past the end read blank, and the records of a range are what the vector holds.
        const std::vector<AS_CellRecord> read = level->CellRecords(frame, std::max(count, 0));
        for (size_t i = 0; i < read.size(); ++i) {
            const int32_t at = frame + static_cast<int32_t>(i);
            const bool inside = at >= 0 && static_cast<size_t>(at) < model.cells.size();
            ASSERT_EQ(read[i], inside ? model.cells[static_cast<size_t>(at)] : AS_CellRecord{})
                << "step " << step;
        }
    }
    EXPECT_GT(runsRetimed, 300);
}

TEST(ExposureTest, RunArithmetic) {
    struct Case {
        const char* before;
        int32_t first, count, length;
        const char* after;
        int32_t outFirst, outLast;
    };
    const Case cases[] = {
        // Twos and threes.
        {"AAAB", 0, 4, 2, "AABB", 0, 4},
        {"ABC", 0, 3, 2, "AABBCC", 0, 6},
        {"ABC", 0, 3, 3, "AAABBBCCC", 0, 9},
        {"AAAAAABBBBBB", 0, 12, 3, "AAABBB", 0, 6},
        // Over blanks: the blanks stay as they are and count one frame each.
        {"A__BBB", 0, 6, 2, "AA__BB", 0, 6},
        {"__A_", 0, 3, 3, "__AAA_", 0, 5},
        // Starting within a run takes the whole run, and a run reached by the count is
        // retimed whole even where it runs past the range.
        {"AAAB", 2, 1, 1, "AB", 0, 1},
        {"ABBBBC", 0, 2, 2, "AABBC", 0, 4},
        // Past the end nothing changes.
        {"AB", 5, 3, 2, "AB", 5, 5},
    };
    for (const Case& c : cases) {
        auto level = ElementWithDrawings(c.before);
        int32_t first = -1, last = -1;
        level->SetRunLengths(c.first, c.count, c.length, first, last);
        EXPECT_EQ(Text(level->Cells()), c.after) << c.before << " to " << c.length;
        EXPECT_EQ(first, c.outFirst) << c.before;
        EXPECT_EQ(last, c.outLast) << c.before;
    }

    auto level = ElementWithDrawings("AAA__BC");
    int32_t frame = 4;
    EXPECT_EQ(level->GetRunLength(frame), 1);
    EXPECT_EQ(frame, 4) << "a blank frame keeps its place";
    frame = 2;
    EXPECT_EQ(level->GetRunLength(frame), 3);
    EXPECT_EQ(frame, 0) << "the frame goes back to the start of its run";
    frame = 1;
    std::vector<int32_t> lengths;
    level->CollectRunLengths(frame, 6, lengths);
    EXPECT_EQ(lengths, (std::vector<int32_t>{3, 1, 1, 1, 1}));
    EXPECT_EQ(frame, 7);
}

TEST(ExposureTest, GrowthTrailingBlanksAndNotes) {
    auto level = ElementWithDrawings("A");
    level->Cells()[0].note = u"start";
    level->SetCell(1002, 5);
    EXPECT_EQ(Text(level->Cells()), "A____B") << "blanks between the old end and the frame";
    EXPECT_EQ(level->Cells()[0].note, u"start") << "setting a cell keeps its note";

    // Trailing blanks carry no meaning.
    level->InsertCells(12, false, 3);
    EXPECT_EQ(level->Cells().size(), 15u);
    EXPECT_EQ(level->GetLastFrame(), 5);
    EXPECT_EQ(level->GetDuration(), 6u);

    // Removed cells lose their notes; cells moved back keep theirs.
    level->Cells()[5].note = u"end";
    level->RemoveCells(0, 2, true);
    EXPECT_EQ(level->Cells()[3].note, u"end");
    level->RemoveCells(3, 1, false);
    EXPECT_EQ(level->Cells()[3], AS_CellRecord{});
    EXPECT_EQ(level->GetDuration(), 0u);

    // Nothing is written at or past the frame limit, and nothing grows there.
    const size_t size = level->Cells().size();
    level->SetCell(1001, AS_kFrameLimit);
    level->InsertCells(AS_kFrameLimit + 5, true, 2);
    EXPECT_EQ(level->Cells().size(), size);
}

TEST(ExposureTest, NewDrawingNamesAndDrawingLists) {
    auto level = AS_VectorGraphicLevelObj::Create(2001, u"Arm");
    std::vector<AS_ElementDrawingNames> lists;
    level->CollectDrawings(lists);
    EXPECT_TRUE(lists.empty()) << "an element without drawings adds nothing";
    EXPECT_EQ(level->CommonDrawing()->MakeNewDrawingName(), u"1");

    for (const char16_t* name : {u"1", u"2", u"B"})
        level->CreateDrawing(name);
    EXPECT_EQ(level->CommonDrawing()->MakeNewDrawingName(), u"3");
    level->CreateDrawing(u"12a");
    EXPECT_EQ(level->CommonDrawing()->MakeNewDrawingName(), u"13") << "12a counts as 12";
    const uint32_t id = level->CreateNewDrawing();
    EXPECT_EQ(level->CommonDrawing()->FindDrawing(id)->GetName(), u"13");
    level->CreateDrawing(u"99999999999999999999");
    EXPECT_EQ(level->CommonDrawing()->MakeNewDrawingName(), u"4294967296") << "absurd numbers do not wrap";

    EXPECT_EQ(level->FindDrawingId(u"B"), 1003u);
    EXPECT_EQ(level->FindDrawingId(u"b"), kBlank);
    level->CollectDrawings(lists);
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0],
              (AS_ElementDrawingNames{u"Arm", {u"1", u"2", u"B", u"12a", u"13", u"99999999999999999999"}}));
}

} // namespace
