#include "animationset/AS_CellIterator.h"

#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/CDopeSheetObj.h"

#include <algorithm>
#include <climits>

void AS_CellIterator::Set(CDopeSheetObj* scene, AS_CompositionOrder* order, AS_CellPosition from,
                          AS_CellPosition to, AS_CellPosition current) {
    scene_ = scene;
    order_ = order;
    SetSelection(from, to);
    SetCell(current);
}

void AS_CellIterator::SetScene(CDopeSheetObj* scene, AS_CompositionOrder* order) {
    scene_ = scene;
    order_ = order;
    if (LevelCount() > 0) {
        Set(scene, order, {}, {}, {});
        return;
    }
    ClearSelection();
    frame_ = 0;
    level_ = -1;
    position_ = -1;
}

int32_t AS_CellIterator::LevelCount() const {
    return order_ ? order_->GetShownCount() : 0;
}

void AS_CellIterator::ClearSelection() {
    levels_.clear();
    frames_.clear();
    flag_ = false;
    position_ = -1;
}

void AS_CellIterator::SetSelection(AS_CellPosition from, AS_CellPosition to) {
    ClearSelection();
    const int32_t low = std::max(std::min(from.level, to.level), 0);
    const int32_t high = std::min(std::max(from.level, to.level), LevelCount() - 1);
    const int32_t first = std::min(from.frame, to.frame);
    const auto count = static_cast<int32_t>(
        std::min<int64_t>(static_cast<int64_t>(std::max(from.frame, to.frame)) - first + 1, INT32_MAX));
    for (int32_t level = low; level <= high; ++level) {
        levels_.push_back(level);
        frames_.push_back({first, count});
    }
    UpdatePosition();
}

void AS_CellIterator::SelectLevel(int32_t level, AS_FrameRange frames) {
    flag_ = false;
    const auto at = std::lower_bound(levels_.begin(), levels_.end(), level);
    const auto index = at - levels_.begin();
    if (at != levels_.end() && *at == level) {
        frames_[static_cast<size_t>(index)] = frames;
    } else {
        levels_.insert(at, level);
        frames_.insert(frames_.begin() + index, frames);
    }
    UpdatePosition();
}

void AS_CellIterator::SelectCurrentCell() {
    ClearSelection();
    if (level_ >= 0 && level_ < LevelCount())
        SelectLevel(level_, {frame_, 1});
}

void AS_CellIterator::SelectAll(bool atStart) {
    ClearSelection();
    const int32_t length = GetSceneLastFrame() + 1;
    for (int32_t level = 0; level < LevelCount(); ++level) {
        levels_.push_back(level);
        frames_.push_back({0, length});
    }
    UpdatePosition();
    if (atStart)
        GoToSelectionStart();
    else
        GoToSelectionEnd();
    flag_ = !levels_.empty();
}

void AS_CellIterator::SetCell(AS_CellPosition cell) {
    frame_ = cell.frame;
    level_ = cell.level;
    UpdatePosition();
}

void AS_CellIterator::SetFrame(int32_t frame) {
    frame_ = frame;
}

void AS_CellIterator::UpdatePosition() {
    const auto at = std::lower_bound(levels_.begin(), levels_.end(), level_);
    position_ = at != levels_.end() && *at == level_ ? static_cast<int32_t>(at - levels_.begin()) : -1;
}

const AS_FrameRange* AS_CellIterator::CurrentRange() const {
    return position_ >= 0 ? &frames_[static_cast<size_t>(position_)] : nullptr;
}

bool AS_CellIterator::MoveTo(int32_t frame, int32_t level) {
    const bool changed = frame != frame_ || level != level_;
    frame_ = frame;
    level_ = level;
    UpdatePosition();
    return changed;
}

bool AS_CellIterator::GoToSelectionStart() {
    return !levels_.empty() && MoveTo(GetFirstSelectedFrame(), levels_.front());
}

bool AS_CellIterator::GoToSelectionEnd() {
    return !levels_.empty() && MoveTo(GetLastSelectedFrame(), levels_.back());
}

bool AS_CellIterator::NextFrameInRange() {
    const AS_FrameRange* range = CurrentRange();
    if (!range || frame_ >= range->Last())
        return false;
    return MoveTo(std::max(frame_ + 1, range->first), level_);
}

bool AS_CellIterator::PrevFrameInRange() {
    const AS_FrameRange* range = CurrentRange();
    if (!range || frame_ <= range->first)
        return false;
    return MoveTo(std::min(frame_ - 1, range->Last()), level_);
}

bool AS_CellIterator::NextFrame() {
    if (frame_ == INT32_MAX)
        return false;
    return MoveTo(frame_ + 1, level_);
}

bool AS_CellIterator::GoToRangeStart() {
    const AS_FrameRange* range = CurrentRange();
    return range && MoveTo(range->first, level_);
}

bool AS_CellIterator::GoToRangeEnd() {
    const AS_FrameRange* range = CurrentRange();
    return range && MoveTo(range->Last(), level_);
}

bool AS_CellIterator::GoToSelected(int32_t index) {
    if (index < 0 || index >= static_cast<int32_t>(levels_.size()))
        return false;
    return MoveTo(frame_, levels_[static_cast<size_t>(index)]);
}

bool AS_CellIterator::NextSelectedLevel() {
    if (position_ >= 0)
        return GoToSelected(position_ + 1);
    // Off the selection: the first selected level after the current one.
    const auto after = std::upper_bound(levels_.begin(), levels_.end(), level_);
    return GoToSelected(static_cast<int32_t>(after - levels_.begin()));
}

bool AS_CellIterator::PrevSelectedLevel() {
    if (position_ >= 0)
        return GoToSelected(position_ - 1);
    const auto at = std::lower_bound(levels_.begin(), levels_.end(), level_);
    return GoToSelected(static_cast<int32_t>(at - levels_.begin()) - 1);
}

bool AS_CellIterator::NextSelectedLevelAtStart() {
    if (!NextSelectedLevel())
        return false;
    GoToRangeStart();
    return true;
}

bool AS_CellIterator::PrevSelectedLevelAtStart() {
    if (!PrevSelectedLevel())
        return false;
    GoToRangeStart();
    return true;
}

bool AS_CellIterator::FirstSelectedLevel() {
    return GoToSelected(0);
}

bool AS_CellIterator::LastSelectedLevel() {
    return GoToSelected(static_cast<int32_t>(levels_.size()) - 1);
}

bool AS_CellIterator::NextLevel() {
    const int32_t target = level_ + 1;
    return target >= 0 && target < LevelCount() && MoveTo(frame_, target);
}

bool AS_CellIterator::PrevLevel() {
    const int32_t target = std::min(level_ - 1, LevelCount() - 1);
    return target >= 0 && MoveTo(frame_, target);
}

bool AS_CellIterator::SetLevelZero() {
    return MoveTo(frame_, 0);
}

bool AS_CellIterator::NextDrawing() {
    const AS_DrawingLevelObj* level = GetDrawingLevel();
    if (!level)
        return false;
    const uint32_t noted = level->DrawingIdAt(frame_);
    const int32_t limit = levels_.empty() ? level->GetLastFrame() : GetLastSelectedFrame();
    for (int64_t frame = static_cast<int64_t>(frame_) + 1; frame <= limit; ++frame) {
        const uint32_t id = level->DrawingIdAt(static_cast<int32_t>(frame));
        if (id != AS_kInvalidId && id != noted)
            return MoveTo(static_cast<int32_t>(frame), level_);
    }
    return false;
}

bool AS_CellIterator::PrevDrawing() {
    const AS_DrawingLevelObj* level = GetDrawingLevel();
    if (!level)
        return false;
    const uint32_t noted = level->DrawingIdAt(frame_);
    // Frames past the exposure are blank: the walk starts at its last record.
    int32_t frame =
        std::min<int64_t>(static_cast<int64_t>(frame_) - 1, static_cast<int64_t>(level->Cells().size()) - 1);
    for (; frame >= 0; --frame) {
        const uint32_t id = level->DrawingIdAt(frame);
        if (id == AS_kInvalidId || id == noted)
            continue;
        while (frame > 0 && level->DrawingIdAt(frame - 1) == id)
            --frame;
        return MoveTo(frame, level_);
    }
    return false;
}

AS_DopeSheetLevelObj* AS_CellIterator::GetLevel() const {
    return order_ && scene_ ? order_->GetLevel(level_) : nullptr;
}

uint32_t AS_CellIterator::GetLevelId() const {
    const AS_DopeSheetLevelObj* level = GetLevel();
    return level ? level->GetId() : AS_kInvalidId;
}

uint32_t AS_CellIterator::GetCommonId() const {
    const AS_DopeSheetLevelObj* level = GetLevel();
    return level ? level->GetCommonId() : AS_kInvalidId;
}

AS_DrawingLevelObj* AS_CellIterator::GetDrawingLevel() const {
    return dynamic_cast<AS_DrawingLevelObj*>(GetLevel());
}

AS_SoundLevel* AS_CellIterator::GetSoundLevel() const {
    return dynamic_cast<AS_SoundLevel*>(GetLevel());
}

AS_MediaLinkLevelObj* AS_CellIterator::GetMediaLevel() const {
    return dynamic_cast<AS_MediaLinkLevelObj*>(GetLevel());
}

bool AS_CellIterator::IsSingleCell() const {
    return levels_.size() == 1 && frames_.front().count == 1;
}

bool AS_CellIterator::IsInSelection() const {
    const AS_FrameRange* range = CurrentRange();
    return range && range->Contains(frame_);
}

bool AS_CellIterator::IsAtLastFrame() const {
    return order_ && frame_ == GetSceneLastFrame();
}

int32_t AS_CellIterator::GetSceneLastFrame() const {
    int32_t last = 0;
    for (int32_t index = 0; index < LevelCount(); ++index)
        if (const AS_DopeSheetLevelObj* level = order_->GetLevel(index))
            last = std::max(last, level->GetEndFrame());
    return last;
}

uint32_t AS_CellIterator::GetTotalDuration() const {
    uint32_t total = 0;
    for (int32_t index = 0; index < LevelCount(); ++index)
        if (const AS_DopeSheetLevelObj* level = order_->GetLevel(index))
            total += level->GetDuration();
    return total;
}

int32_t AS_CellIterator::GetFirstSelectedFrame() const {
    if (frames_.empty())
        return -1;
    int32_t first = INT32_MAX;
    for (const AS_FrameRange& range : frames_)
        first = std::min(first, range.first);
    return first;
}

int32_t AS_CellIterator::GetLastSelectedFrame() const {
    if (frames_.empty())
        return -1;
    int32_t last = INT32_MIN;
    for (const AS_FrameRange& range : frames_)
        last = std::max(last, range.Last());
    return last;
}

bool AS_CellIterator::SelectionHasCells() const {
    for (size_t i = 0; i < levels_.size() && order_; ++i) {
        const AS_DopeSheetLevelObj* level = order_->GetLevel(levels_[i]);
        if (level && !level->IsRangeEmpty(frames_[i].first, frames_[i].Last()))
            return true;
    }
    return false;
}

AS_DopeSheetDrawingObj* AS_CellIterator::GetDrawing() const {
    const AS_DrawingLevelObj* level = GetDrawingLevel();
    if (!level || !level->CommonDrawing())
        return nullptr;
    return level->CommonDrawing()->FindDrawing(level->DrawingIdAt(frame_));
}

bool AS_CellIterator::GetDrawingKey(AS_DrawingKey& key) const {
    const AS_DrawingLevelObj* level = GetDrawingLevel();
    const uint32_t drawing = level ? level->DrawingIdAt(frame_) : AS_kInvalidId;
    if (drawing == AS_kInvalidId)
        return false;
    key = {scene_->SceneId(), level->GetCommonId(), drawing};
    return true;
}

UT_WString AS_CellIterator::GetCellLabel() const {
    const AS_DrawingLevelObj* level = GetDrawingLevel();
    if (!level)
        return u"NoLevel";
    const AS_DopeSheetDrawingObj* drawing = GetDrawing();
    return drawing ? level->GetName() + u"-" + drawing->GetName() : level->GetName();
}

AS_DopeSheetDrawingObj* AS_CellIterator::CreateDrawingAtCell() {
    AS_DrawingLevelObj* level = GetDrawingLevel();
    if (!level)
        return nullptr;
    const uint32_t id = level->CreateNewDrawing();
    if (id == AS_kInvalidId)
        return nullptr;
    level->SetCell(id, frame_);
    return level->CommonDrawing()->FindDrawing(id);
}
