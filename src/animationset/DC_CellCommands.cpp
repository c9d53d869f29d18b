// The commands on cells and the drawing removals that undo the making of drawings.

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_AddCellsCommand.h"
#include "animationset/DC_ComplexCommand.h"
#include "animationset/DC_ReLabelCellCommand.h"
#include "animationset/DC_RemoveCellsCommand.h"
#include "animationset/DC_RemoveDrawingCommand.h"
#include "animationset/DC_ReplaceCellsCommand.h"
#include "animationset/DC_RestoreTimingCommand.h"
#include "animationset/DC_UnRemoveDrawingCommand.h"
#include "core/DB_Archive.h"

#include <algorithm>
#include <set>

namespace {

uint32_t RecordsSize(const std::vector<DC_LevelCells>& cells) {
    size_t bytes = 0;
    for (const DC_LevelCells& level : cells) {
        bytes += sizeof level;
        for (const AS_CellRecord& record : level.records)
            bytes += sizeof record + record.note.size() * sizeof(char16_t);
    }
    return static_cast<uint32_t>(std::min<size_t>(bytes, UINT32_MAX));
}

// The current cell, when it stands in the scene and order of `iterator`.
AS_CellIteratorObservable* CurrentCellIn(const CAnimationSetObj& set, const AS_CellIterator& iterator) {
    if (CAnimationSetObj::Current() != &set)
        return nullptr;
    AS_CellIteratorObservable& current = AS_CellIteratorObservable::Instance();
    if (current.Scene() != iterator.Scene() || current.Order() != iterator.Order())
        return nullptr;
    return &current;
}

} // namespace

// The base.

DC_CellCommand::DC_CellCommand(CAnimationSetObj& set, DC_CellSelection selection, bool notify)
    : DC_Command(set, notify), selection_(std::move(selection)) {}

DC_CellCommand::DC_CellCommand(const DC_Command& origin, DC_CellSelection selection)
    : DC_Command(origin), selection_(std::move(selection)) {}

void DC_CellCommand::Prepare() {
    DC_Command::Prepare();
    const std::optional<AS_DopeSheetCellIterator> iterator = selection_.Resolve(AnimationSet());
    if (!iterator)
        return;
    if (AS_CellIteratorObservable* current = CurrentCellIn(AnimationSet(), *iterator))
        static_cast<AS_CellIterator&>(*current) = *iterator;
}

CDopeSheetObj* DC_CellCommand::FindScene() const {
    return AnimationSet().FindScene(selection_.SceneId());
}

AS_DrawingLevelObj* DC_CellCommand::FindCellLevel(const CDopeSheetObj& scene, uint32_t id) {
    if (scene.IsRemoved(id))
        return nullptr;
    return dynamic_cast<AS_DrawingLevelObj*>(scene.FindElement(id));
}

std::optional<std::vector<AS_DrawingLevelObj*>>
DC_CellCommand::FindCellLevels(const CDopeSheetObj& scene, const std::vector<DC_LevelCells>& cells) {
    std::vector<AS_DrawingLevelObj*> levels;
    for (const DC_LevelCells& record : cells) {
        AS_DrawingLevelObj* level = FindCellLevel(scene, record.element);
        if (!level)
            return std::nullopt;
        levels.push_back(level);
    }
    return levels;
}

void DC_CellCommand::SendCells(CDopeSheetObj& scene, uint32_t code, const DC_CellSelection& after) const {
    if (!Notifies())
        return;
    std::optional<AS_DopeSheetCellIterator> iterator = after.Resolve(AnimationSet());
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kExposure, code, &scene);
    for (const DC_CellSelection::Level& level : after.Levels()) {
        data.elements.push_back(level.element);
        data.cells.push_back({scene.SceneId(), level.element, static_cast<uint32_t>(level.frames.first)});
    }
    if (!after.Levels().empty())
        data.element = scene.FindElement(after.Levels().front().element);
    if (iterator) {
        if (AS_CellIteratorObservable* current = CurrentCellIn(AnimationSet(), *iterator))
            static_cast<AS_CellIterator&>(*current) = *iterator;
        data.iterator = std::make_shared<AS_DopeSheetCellIterator>(*iterator);
    }
    Send(data);
}

// Replacing.

DC_ReplaceCellsCommand::DC_ReplaceCellsCommand(CAnimationSetObj& set, DC_CellSelection selection,
                                               std::vector<DC_LevelCells> cells)
    : DC_CellCommand(set, std::move(selection)), cells_(std::move(cells)) {}

DC_ReplaceCellsCommand::DC_ReplaceCellsCommand(const DC_Command& origin, DC_CellSelection selection,
                                               std::vector<DC_LevelCells> cells)
    : DC_CellCommand(origin, std::move(selection)), cells_(std::move(cells)) {}

uint32_t DC_ReplaceCellsCommand::Size() const {
    return RecordsSize(cells_);
}

std::unique_ptr<UT_Command> DC_ReplaceCellsCommand::Execute() {
    CDopeSheetObj* scene = FindScene();
    if (!scene)
        return nullptr;
    const std::optional<std::vector<AS_DrawingLevelObj*>> found = FindCellLevels(*scene, cells_);
    if (!found)
        return nullptr;
    const std::vector<AS_DrawingLevelObj*>& levels = *found;
    std::vector<DC_LevelCells> old;
    for (size_t i = 0; i < cells_.size(); ++i) {
        const DC_LevelCells& cells = cells_[i];
        AS_DrawingLevelObj& level = *levels[i];
        old.push_back({cells.element, cells.first,
                       level.CellRecords(cells.first, static_cast<int32_t>(cells.records.size())),
                       level.Cells().size()});
        level.PutCellRecords(cells.first, cells.records);
        level.Cells().resize(cells.length);
    }
    SendCells(*scene, kCellsChanged, selection_);
    return std::make_unique<DC_ReplaceCellsCommand>(*this, selection_, std::move(old));
}

// Relabelling.

DC_ReLabelCellCommand::DC_ReLabelCellCommand(CAnimationSetObj& set, DC_CellSelection selection,
                                             UT_WString drawingName)
    : DC_CellCommand(set, std::move(selection)), name_(std::move(drawingName)) {}

std::unique_ptr<UT_Command> DC_ReLabelCellCommand::Execute() {
    CDopeSheetObj* scene = FindScene();
    if (!scene)
        return nullptr;
    std::vector<std::pair<AS_DrawingLevelObj*, AS_FrameRange>> targets;
    for (const DC_CellSelection::Level& selected : selection_.Levels()) {
        if (!scene->FindElement(selected.element) || scene->IsRemoved(selected.element))
            return nullptr;
        AS_DrawingLevelObj* level = FindCellLevel(*scene, selected.element);
        if (level && level->HasDrawingCells() && selected.frames.count > 0)
            targets.emplace_back(level, selected.frames);
    }
    if (targets.empty())
        return nullptr;

    std::vector<DC_LevelCells> old;
    // The drawings made, per element whose common half they went into.
    auto group = std::make_unique<UT_ComplexCommand>();
    std::set<uint32_t> commonsDone;
    for (auto& [level, frames] : targets) {
        old.push_back({level->GetId(), frames.first, level->CellRecords(frames.first, frames.count),
                       level->Cells().size()});
        uint32_t id = level->FindDrawingId(name_);
        if (id == AS_kInvalidId) {
            const uint32_t counter = level->CommonDrawing()->NextDrawingId();
            id = level->CreateDrawing(name_);
            auto removal = std::make_unique<DC_RemoveDrawingCommand>(*this, scene->SceneId(), level->GetId(),
                                                                     std::vector<uint32_t>{id}, counter);
            removal->SetNotify(false);
            group->Add(std::move(removal));
        }
        level->SetCells(id, frames.first, frames.count);
    }
    SendCells(*scene, kCellsChanged, selection_);

    auto restore = std::make_unique<DC_ReplaceCellsCommand>(*this, selection_, std::move(old));
    if (group->IsEmpty())
        return restore;
    // The old cells go back first, then the drawings that no cell shows any more.
    restore->SetNotify(false);
    group->Add(std::move(restore));
    AS_DopeSheetUpdateData record(AS_DopeSheetCategory::kExposure, kCellsChanged, scene);
    for (const DC_CellSelection::Level& selected : selection_.Levels())
        record.elements.push_back(selected.element);
    auto inverse = std::make_unique<DC_ComplexCommand>(AnimationSet(), std::move(group), std::move(record));
    inverse->SetNotify(Notifies());
    inverse->SetContext(Context());
    return inverse;
}

// Removing and adding.

DC_RemoveCellsCommand::DC_RemoveCellsCommand(CAnimationSetObj& set, DC_CellSelection selection, bool shift)
    : DC_CellCommand(set, std::move(selection)), shift_(shift) {}

DC_RemoveCellsCommand::DC_RemoveCellsCommand(const DC_Command& origin, DC_CellSelection selection, bool shift)
    : DC_CellCommand(origin, std::move(selection)), shift_(shift) {}

std::unique_ptr<UT_Command> DC_RemoveCellsCommand::Execute() {
    CDopeSheetObj* scene = FindScene();
    if (!scene)
        return nullptr;
    std::vector<AS_DrawingLevelObj*> levels;
    for (const DC_CellSelection::Level& selected : selection_.Levels()) {
        if (!scene->FindElement(selected.element) || scene->IsRemoved(selected.element))
            return nullptr;
        // Only drawing and image elements hold cells so far.
        levels.push_back(FindCellLevel(*scene, selected.element));
    }
    std::vector<DC_LevelCells> removed;
    for (size_t i = 0; i < levels.size(); ++i) {
        AS_DrawingLevelObj* level = levels[i];
        const AS_FrameRange& frames = selection_.Levels()[i].frames;
        if (!level)
            continue;
        // What RemoveCells takes: the range cut at both ends of the exposure.
        const int64_t size = static_cast<int64_t>(level->Cells().size());
        const int64_t begin = std::clamp<int64_t>(frames.first, 0, size);
        const int64_t end =
            std::clamp<int64_t>(static_cast<int64_t>(frames.first) + frames.count, begin, size);
        if (begin == end)
            continue;
        removed.push_back({level->GetId(), static_cast<int32_t>(begin),
                           level->CellRecords(static_cast<int32_t>(begin), static_cast<int32_t>(end - begin)),
                           level->Cells().size()});
        level->RemoveCells(frames.first, frames.count, shift_);
    }
    SendCells(*scene, kCellsRemoved, selection_);
    return std::make_unique<DC_AddCellsCommand>(*this, selection_, std::move(removed), shift_);
}

DC_AddCellsCommand::DC_AddCellsCommand(const DC_Command& origin, DC_CellSelection selection,
                                       std::vector<DC_LevelCells> cells, bool shift)
    : DC_CellCommand(origin, std::move(selection)), cells_(std::move(cells)), shift_(shift) {}

uint32_t DC_AddCellsCommand::Size() const {
    return RecordsSize(cells_);
}

std::unique_ptr<UT_Command> DC_AddCellsCommand::Execute() {
    CDopeSheetObj* scene = FindScene();
    if (!scene)
        return nullptr;
    const std::optional<std::vector<AS_DrawingLevelObj*>> found = FindCellLevels(*scene, cells_);
    if (!found)
        return nullptr;
    const std::vector<AS_DrawingLevelObj*>& levels = *found;
    for (size_t i = 0; i < cells_.size(); ++i) {
        const DC_LevelCells& cells = cells_[i];
        if (shift_)
            levels[i]->InsertCells(cells.first, true, static_cast<int32_t>(cells.records.size()));
        levels[i]->PutCellRecords(cells.first, cells.records);
    }
    SendCells(*scene, kCellsChanged, selection_);
    return std::make_unique<DC_RemoveCellsCommand>(*this, selection_, shift_);
}

// Timing.

DC_RestoreTimingCommand::DC_RestoreTimingCommand(CAnimationSetObj& set, DC_CellSelection selection,
                                                 int32_t length, bool whole)
    : DC_CellCommand(set, std::move(selection)), whole_(whole), length_(std::max(length, 1)) {}

DC_RestoreTimingCommand::DC_RestoreTimingCommand(const DC_Command& origin, DC_CellSelection selection,
                                                 std::vector<int32_t> lengths)
    : DC_CellCommand(origin, std::move(selection)), lengths_(std::move(lengths)) {}

std::unique_ptr<UT_Command> DC_RestoreTimingCommand::Execute() {
    CDopeSheetObj* scene = FindScene();
    if (!scene || selection_.IsEmpty())
        return nullptr;
    const DC_CellSelection::Level& selected = selection_.Levels().front();
    AS_DrawingLevelObj* level = FindCellLevel(*scene, selected.element);
    if (!level || !level->HasDrawingCells())
        return nullptr;
    const int32_t first = selected.frames.first;
    const int32_t count = whole_ ? 1 : std::max(selected.frames.count, 1);

    std::vector<int32_t> old;
    int32_t walk = first;
    level->CollectRunLengths(walk, first + count - 1, old);

    int32_t coveredFirst = first;
    int32_t coveredEnd = first;
    if (length_ >= 0) {
        level->SetRunLengths(first, count, length_, coveredFirst, coveredEnd);
    } else {
        int32_t frame = first;
        for (size_t i = 0; i < lengths_.size(); ++i) {
            int32_t runFirst = frame;
            level->SetRunLengths(frame, 1, lengths_[i], runFirst, frame);
            if (i == 0)
                coveredFirst = runFirst;
        }
        coveredEnd = frame;
    }
    const DC_CellSelection after =
        DC_CellSelection::OfElement(scene->SceneId(), level->GetId(), coveredFirst,
                                    std::max(coveredEnd - 1, coveredFirst), selection_.Sceneplanning());
    SendCells(*scene, kCellsChanged, after);
    return std::make_unique<DC_RestoreTimingCommand>(*this, after, std::move(old));
}

// Drawings.

DC_RemoveDrawingCommand::DC_RemoveDrawingCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId,
                                                 std::vector<uint32_t> drawingIds, uint32_t nextDrawingId)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), drawingIds_(std::move(drawingIds)),
      nextDrawingId_(nextDrawingId) {}

DC_RemoveDrawingCommand::DC_RemoveDrawingCommand(const DC_Command& origin, uint32_t sceneId,
                                                 uint32_t elementId, std::vector<uint32_t> drawingIds,
                                                 uint32_t nextDrawingId)
    : DC_Command(origin), sceneId_(sceneId), elementId_(elementId), drawingIds_(std::move(drawingIds)),
      nextDrawingId_(nextDrawingId) {}

std::unique_ptr<UT_Command> DC_RemoveDrawingCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    auto* level = scene ? dynamic_cast<AS_DrawingLevelObj*>(scene->FindElement(elementId_)) : nullptr;
    AS_CommonDrawingLevel* common = level ? level->CommonDrawing() : nullptr;
    if (!common)
        return nullptr;
    for (uint32_t id : drawingIds_)
        if (!common->FindDrawing(id))
            return nullptr;

    DB_MemFile snapshot;
    {
        DB_Archive archive(&snapshot, true);
        archive.SetContext(common->GetPaletteList());
        for (uint32_t id : drawingIds_) {
            archive.WriteId(id);
            common->FindDrawing(id)->Write(archive);
        }
    }
    const std::set<uint32_t> ids(drawingIds_.begin(), drawingIds_.end());
    std::vector<DC_UnRemoveDrawingCommand::Cell> blanked;
    // Clones show the same drawings, removed ones too, since an undo brings them back.
    for (const CDopeSheetObj::LevelEntry& entry : scene->Levels()) {
        auto* holder = dynamic_cast<AS_DrawingLevelObj*>(entry.level.get());
        if (!holder || holder->CommonDrawing() != common)
            continue;
        std::vector<AS_CellRecord>& cells = holder->Cells();
        for (size_t frame = 0; frame < cells.size(); ++frame) {
            if (ids.count(cells[frame].drawingId) == 0)
                continue;
            blanked.push_back({holder->GetId(), static_cast<int32_t>(frame), cells[frame].drawingId});
            cells[frame].drawingId = AS_kInvalidId;
        }
    }
    for (uint32_t id : drawingIds_)
        common->RemoveDrawing(id);
    uint32_t counterBefore = AS_kInvalidId;
    if (nextDrawingId_ != AS_kInvalidId) {
        counterBefore = common->NextDrawingId();
        common->SetNextDrawingId(nextDrawingId_);
    }
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kExposure, kCellsChanged, scene);
    data.element = level;
    data.elements = {elementId_};
    Send(data);
    return std::make_unique<DC_UnRemoveDrawingCommand>(*this, sceneId_, elementId_, drawingIds_, snapshot,
                                                       std::move(blanked), counterBefore);
}

DC_UnRemoveDrawingCommand::DC_UnRemoveDrawingCommand(const DC_Command& origin, uint32_t sceneId,
                                                     uint32_t elementId, std::vector<uint32_t> drawingIds,
                                                     DB_MemFile snapshot, std::vector<Cell> cells,
                                                     uint32_t nextDrawingId)
    : DC_Command(origin), sceneId_(sceneId), elementId_(elementId), drawingIds_(std::move(drawingIds)),
      snapshot_(snapshot), cells_(std::move(cells)), nextDrawingId_(nextDrawingId) {}

uint32_t DC_UnRemoveDrawingCommand::Size() const {
    return snapshot_.Size() + static_cast<uint32_t>(cells_.size() * sizeof(Cell)) + 12;
}

std::unique_ptr<UT_Command> DC_UnRemoveDrawingCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    auto* level = scene ? dynamic_cast<AS_DrawingLevelObj*>(scene->FindElement(elementId_)) : nullptr;
    AS_CommonDrawingLevel* common = level ? level->CommonDrawing() : nullptr;
    if (!common)
        return nullptr;
    for (uint32_t id : drawingIds_)
        if (common->FindDrawing(id))
            return nullptr;
    // Taken before the entries go back, since entering them moves the counter past them.
    const uint32_t counterBefore = nextDrawingId_ != AS_kInvalidId ? common->NextDrawingId() : AS_kInvalidId;

    snapshot_.Rewind();
    {
        DB_Archive archive(&snapshot_, true);
        archive.SetContext(common->GetPaletteList());
        for (size_t i = 0; i < drawingIds_.size(); ++i) {
            const uint32_t id = archive.ReadId();
            if (id != drawingIds_[i])
                archive.ThrowUnexpected();
            AS_DopeSheetDrawingObj* entry = common->AddDrawingWithId(id, {});
            try {
                entry->Read(archive);
            } catch (...) {
                common->RemoveDrawing(id);
                throw;
            }
        }
    }
    snapshot_.Rewind();
    for (const Cell& cell : cells_)
        if (auto* holder = dynamic_cast<AS_DrawingLevelObj*>(scene->FindElement(cell.element)))
            holder->SetCell(cell.drawing, cell.frame);
    if (nextDrawingId_ != AS_kInvalidId)
        common->SetNextDrawingId(nextDrawingId_);
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kExposure, kCellsChanged, scene);
    data.element = level;
    data.elements = {elementId_};
    Send(data);
    return std::make_unique<DC_RemoveDrawingCommand>(*this, sceneId_, elementId_, drawingIds_, counterBefore);
}
