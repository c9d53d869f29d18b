// The exposure of drawing and image levels: a vector of one record per frame.

#include "animationset/AS_DrawingLevelObj.h"

#include <algorithm>

namespace {

// Cuts [first, first + count) to the frames that may hold cells; false when nothing is left.
bool ClipToFrames(int32_t& first, int32_t& count) {
    int64_t begin = first;
    int64_t end = begin + count;
    begin = std::max<int64_t>(begin, 0);
    end = std::min<int64_t>(end, AS_kFrameLimit);
    if (begin >= end)
        return false;
    first = static_cast<int32_t>(begin);
    count = static_cast<int32_t>(end - begin);
    return true;
}

AS_CellRecord Blank() {
    return AS_CellRecord{};
}

} // namespace

uint32_t AS_DrawingLevelObj::DrawingIdAt(int32_t frame) const {
    if (frame < 0 || static_cast<size_t>(frame) >= cells_.size())
        return AS_kInvalidId;
    return cells_[static_cast<size_t>(frame)].drawingId;
}

std::vector<AS_CellRecord> AS_DrawingLevelObj::CellRecords(int32_t first, int32_t count) const {
    std::vector<AS_CellRecord> records;
    for (int64_t frame = first; frame < static_cast<int64_t>(first) + count; ++frame) {
        if (frame >= 0 && static_cast<size_t>(frame) < cells_.size())
            records.push_back(cells_[static_cast<size_t>(frame)]);
        else
            records.push_back(Blank());
    }
    return records;
}

void AS_DrawingLevelObj::PutCellRecords(int32_t first, const std::vector<AS_CellRecord>& records) {
    int32_t begin = first;
    int32_t count = static_cast<int32_t>(std::min<size_t>(records.size(), AS_kFrameLimit));
    if (!ClipToFrames(begin, count))
        return;
    const size_t skipped = static_cast<size_t>(begin - first);
    if (cells_.size() < static_cast<size_t>(begin + count))
        cells_.resize(static_cast<size_t>(begin + count));
    std::copy_n(records.begin() + static_cast<std::ptrdiff_t>(skipped), count, cells_.begin() + begin);
}

void AS_DrawingLevelObj::InsertCells(int32_t frame, bool shift, int32_t count) {
    frame = std::max(frame, 0);
    if (frame >= AS_kFrameLimit)
        return;
    if (cells_.size() < static_cast<size_t>(frame))
        cells_.resize(static_cast<size_t>(frame));
    if (count <= 0)
        return;
    if (shift) {
        const int64_t room = static_cast<int64_t>(AS_kFrameLimit) - static_cast<int64_t>(cells_.size());
        count = static_cast<int32_t>(std::min<int64_t>(count, room));
        if (count > 0)
            cells_.insert(cells_.begin() + frame, static_cast<size_t>(count), Blank());
        return;
    }
    if (!ClipToFrames(frame, count))
        return;
    if (cells_.size() < static_cast<size_t>(frame + count))
        cells_.resize(static_cast<size_t>(frame + count));
    std::fill_n(cells_.begin() + frame, count, Blank());
}

void AS_DrawingLevelObj::RemoveCells(int32_t frame, int32_t count, bool shift) {
    if (!ClipToFrames(frame, count) || static_cast<size_t>(frame) >= cells_.size())
        return;
    const auto end = std::min(static_cast<size_t>(frame) + static_cast<size_t>(count), cells_.size());
    if (shift)
        cells_.erase(cells_.begin() + frame, cells_.begin() + static_cast<std::ptrdiff_t>(end));
    else
        std::fill(cells_.begin() + frame, cells_.begin() + static_cast<std::ptrdiff_t>(end), Blank());
}

void AS_DrawingLevelObj::CollectDrawings(std::vector<AS_ElementDrawingNames>& out) const {
    if (!CommonDrawing() || CommonDrawing()->DrawingCount() == 0)
        return;
    out.push_back({GetName(), CommonDrawing()->GetDrawingNames()});
}

void AS_DrawingLevelObj::SetCellsFromNames(const std::vector<UT_WString>& names, size_t index, int32_t first,
                                           int32_t count) {
    const int32_t asked = first;
    if (!ClipToFrames(first, count))
        return;
    index += static_cast<size_t>(first - asked);
    if (cells_.size() < static_cast<size_t>(first + count))
        cells_.resize(static_cast<size_t>(first + count));
    for (int32_t frame = first; frame < first + count; ++frame)
        cells_[static_cast<size_t>(frame)].drawingId = AS_kInvalidId;
    for (int32_t frame = first + count - 1; frame >= first; --frame) {
        const size_t at = index + static_cast<size_t>(frame - first);
        if (at < names.size())
            cells_[static_cast<size_t>(frame)].drawingId = FindDrawingId(names[at]);
    }
}

uint32_t AS_DrawingLevelObj::CreateDrawing(const UT_WString& name) {
    return CommonDrawing() ? CommonDrawing()->AddDrawing(name) : AS_kInvalidId;
}

uint32_t AS_DrawingLevelObj::CreateNewDrawing() {
    return CommonDrawing() ? CreateDrawing(CommonDrawing()->MakeNewDrawingName()) : AS_kInvalidId;
}

uint32_t AS_DrawingLevelObj::FindDrawingId(const UT_WString& name) const {
    const AS_DopeSheetDrawingObj* drawing =
        CommonDrawing() ? CommonDrawing()->FindDrawingByName(name) : nullptr;
    return drawing ? drawing->GetId() : AS_kInvalidId;
}

void AS_DrawingLevelObj::SetCells(uint32_t id, int32_t first, int32_t count) {
    if (!ClipToFrames(first, count))
        return;
    if (cells_.size() < static_cast<size_t>(first + count))
        cells_.resize(static_cast<size_t>(first + count));
    for (int32_t frame = first; frame < first + count; ++frame)
        cells_[static_cast<size_t>(frame)].drawingId = id;
}

int32_t AS_DrawingLevelObj::GetRunLength(int32_t& frame) const {
    const uint32_t id = DrawingIdAt(frame);
    if (id == AS_kInvalidId)
        return 1;
    auto start = static_cast<size_t>(frame);
    while (start > 0 && cells_[start - 1].drawingId == id)
        --start;
    size_t end = static_cast<size_t>(frame) + 1;
    while (end < cells_.size() && cells_[end].drawingId == id)
        ++end;
    frame = static_cast<int32_t>(start);
    return static_cast<int32_t>(end - start);
}

void AS_DrawingLevelObj::CollectRunLengths(int32_t& frame, int32_t last, std::vector<int32_t>& out) const {
    while (frame <= last) {
        const int32_t length = GetRunLength(frame);
        out.push_back(length);
        frame += length;
    }
}

void AS_DrawingLevelObj::SetRunLengths(int32_t first, int32_t count, int32_t length, int32_t& outFirst,
                                       int32_t& outLast) {
    length = std::clamp(length, 0, AS_kFrameLimit);
    if (first < 0) {
        count += first;
        first = 0;
    }
    const uint32_t startId = DrawingIdAt(first);
    if (startId != AS_kInvalidId) {
        while (first > 0 && cells_[static_cast<size_t>(first) - 1].drawingId == startId) {
            --first;
            ++count;
        }
    }
    outFirst = first;
    auto frame = static_cast<size_t>(first);
    while (count > 0 && frame < cells_.size()) {
        const uint32_t id = cells_[frame].drawingId;
        if (id == AS_kInvalidId) {
            ++frame;
            --count;
            continue;
        }
        size_t run = 1;
        while (frame + run < cells_.size() && cells_[frame + run].drawingId == id)
            ++run;
        count -= static_cast<int32_t>(std::min<size_t>(run, AS_kFrameLimit));
        const auto wanted = static_cast<size_t>(length);
        if (run > wanted)
            cells_.erase(cells_.begin() + static_cast<std::ptrdiff_t>(frame + wanted),
                         cells_.begin() + static_cast<std::ptrdiff_t>(frame + run));
        else if (run < wanted)
            cells_.insert(cells_.begin() + static_cast<std::ptrdiff_t>(frame + run), wanted - run,
                          AS_CellRecord{id, {}});
        frame += wanted;
    }
    outLast = static_cast<int32_t>(std::min<size_t>(frame, INT32_MAX));
}
