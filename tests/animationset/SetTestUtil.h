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

#include <algorithm>
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

// What the set would write into a snapshot, with the counters of ids apart: ids are
// taken when a command is made or first runs and never given back, so the counter of
// scene ids, each scene's counter of element ids and each common half's last clone
// number only grow while commands are undone and redone. The scene id counter is kept
// to check that; the others are masked out of the body.
struct SetState {
    std::vector<uint8_t> body;
    uint32_t nextSceneId = 0;
    bool operator==(const SetState&) const = default;
};

// Finds, while a snapshot is read back, the bytes of the counters that StateOf masks.
class CounterFinder : public DB_ArchiveTrace {
public:
    explicit CounterFinder(const DB_MemFile& file) : file_(file) {}

    void ObjectBegins(uint16_t typeId, const CPersistentObjBase*) override {
        open_.push_back({typeId, file_.Position() - 2});
    }
    void ObjectEnds() override {
        const Open object = open_.back();
        open_.pop_back();
        if (object.typeId == kSceneType) {
            // The scene ends with the element id counter and the current camera's id.
            counters.push_back(file_.Position() - 8);
        } else if (IsCommonHalf(object.typeId)) {
            // A common half starts with its name; the last clone number follows it.
            uint32_t units;
            std::memcpy(&units, file_.Data() + object.begin + 2, sizeof units);
            counters.push_back(object.begin + 2 + 4 + 2 * units);
        }
    }
    void SharedEntered(uint32_t) override {}
    void SharedReferenced(uint32_t) override {}

    // Offsets of the u32 counters.
    std::vector<uint32_t> counters;

private:
    static constexpr uint16_t kSceneType = 2;
    static bool IsCommonHalf(uint16_t typeId) {
        for (uint16_t common : {6, 9, 10, 15, 16, 19, 21})
            if (typeId == common)
                return true;
        return false;
    }
    struct Open {
        uint16_t typeId;
        uint32_t begin;
    };
    const DB_MemFile& file_;
    std::vector<Open> open_;
};

inline SetState StateOf(CAnimationSetObj& set) {
    DB_MemFile file;
    {
        DB_Archive archive(&file, true);
        set.Write(archive);
    }
    std::vector<uint8_t> bytes(file.Data(), file.Data() + file.Size());
    CounterFinder finder(file);
    file.Rewind();
    {
        CAnimationSetObj copy;
        DB_Archive reader(&file, true);
        reader.SetTrace(&finder);
        copy.Read(reader);
    }
    for (uint32_t at : finder.counters)
        std::fill(bytes.begin() + at, bytes.begin() + at + 4, 0);
    SetState state;
    // The body starts with the scene id counter.
    std::memcpy(&state.nextSceneId, bytes.data(), sizeof state.nextSceneId);
    state.body.assign(bytes.begin() + sizeof state.nextSceneId, bytes.end());
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
