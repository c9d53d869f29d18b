#pragma once

// Helpers for tests that change a whole animation set through commands: a fresh set, its
// state as bytes, and an observer that writes down what it hears.

#include "RegisterAll.h"
#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_Command.h"
#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// A new set of one scene, made as the New flow makes it.
inline std::unique_ptr<CAnimationSetObj> MakeNewSet() {
    auto set = std::make_unique<CAnimationSetObj>();
    set->InitialiseNew(12, 500, 375);
    return set;
}

// What the set would write into a snapshot, and the counter of scene ids apart: ids are
// taken when a command is made and never given back, so the counter only grows while
// commands are undone and redone.
struct SetState {
    std::vector<uint8_t> body;
    uint32_t nextSceneId = 0;
    bool operator==(const SetState&) const = default;
};

inline SetState StateOf(CAnimationSetObj& set) {
    DB_MemFile file;
    {
        DB_Archive archive(&file, true);
        set.Write(archive);
    }
    SetState state;
    // The body starts with the counter.
    std::memcpy(&state.nextSceneId, file.Data(), sizeof state.nextSceneId);
    state.body.assign(file.Data() + sizeof state.nextSceneId, file.Data() + file.Size());
    return state;
}

// The frame ranges of every scene are computed, so that the orders are clean.
inline void CleanOrders(CAnimationSetObj& set) {
    int32_t first, last;
    for (CDopeSheetObj* scene : set.Sequence()) {
        scene->DrawingOrder().GetFrameRange(first, last);
        scene->SceneplanningOrder().GetFrameRange(first, last);
    }
}

// Writes down every record it hears, with whether both orders of the record's scene were
// marked for rebuilding at that moment.
class RecordingObserver : public AS_DopeSheetObserverInterface {
public:
    struct Heard {
        AS_DopeSheetCategory category;
        uint32_t code;
        uint32_t sceneId;
        bool ordersDirty;
        bool operator==(const Heard&) const = default;
    };

    RecordingObserver(CAnimationSetObj& set, std::string name = {}) : set_(&set), name_(std::move(name)) {
        set.NotifProxy().Attach(this);
    }
    ~RecordingObserver() override {
        if (set_)
            set_->NotifProxy().Detach(this);
    }
    RecordingObserver(const RecordingObserver&) = delete;
    RecordingObserver& operator=(const RecordingObserver&) = delete;

    void DopeSheetChanged(const void*, const AS_DopeSheetUpdateData& data) override {
        const CDopeSheetObj* scene = data.scene ? data.scene : set_->CurrentScene();
        const bool dirty =
            scene && scene->DrawingOrder().IsRangeDirty() && scene->SceneplanningOrder().IsRangeDirty();
        heard.push_back({data.category, data.code, scene ? scene->SceneId() : AS_kInvalidId, dirty});
        if (log)
            log->push_back(name_);
    }
    void DopeSheetObservableGone(const void*) override { set_ = nullptr; }

    std::vector<uint32_t> Codes() const {
        std::vector<uint32_t> codes;
        for (const Heard& h : heard)
            codes.push_back(h.code);
        return codes;
    }
    // Code and scene id of each record.
    std::vector<std::pair<uint32_t, uint32_t>> CodesAndScenes() const {
        std::vector<std::pair<uint32_t, uint32_t>> out;
        for (const Heard& h : heard)
            out.emplace_back(h.code, h.sceneId);
        return out;
    }
    bool Attached() const { return set_ != nullptr; }

    std::vector<Heard> heard;
    // Shared by several observers, to see the order in which they are called.
    std::vector<std::string>* log = nullptr;

private:
    CAnimationSetObj* set_;
    std::string name_;
};

// Registers the types, and leaves no process-wide state behind for the next test.
class SetCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterAllTypesForTests();
        AS_DopeSheetNotifProxy::ResetPermanentObservers();
        AS_CellIteratorObservable::ResetForTests();
    }
    void TearDown() override {
        CAnimationSetObj::SetCurrent(nullptr);
        AS_DopeSheetNotifProxy::ResetPermanentObservers();
        DC_Command::SetModeCommandTarget(nullptr);
    }
};
