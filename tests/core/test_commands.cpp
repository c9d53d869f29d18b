// The command history: limits, saved positions, groups, undo and redo; snapshots;
// observers.

#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/OB_Observable.h"
#include "core/UT_CommandHistory.h"
#include "core/UT_ComplexCommand.h"
#include "core/UT_StreamCommand.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

// A tiny model: a list of numbers, and a log of what the commands did.
struct Model {
    std::vector<int> values;
    std::vector<std::string> log;
};

// Inserts a value at a position; its inverse erases it, and the other way round.
class EditCommand : public UT_Command {
public:
    EditCommand(Model& model, bool insert, size_t index, int value, uint32_t size = 500)
        : model_(model), insert_(insert), index_(index), value_(value), size_(size) {}

    std::unique_ptr<UT_Command> Execute() override {
        if (index_ > model_.values.size() || (!insert_ && index_ == model_.values.size()))
            return nullptr;
        const auto at = model_.values.begin() + static_cast<std::ptrdiff_t>(index_);
        int value = value_;
        if (insert_) {
            model_.values.insert(at, value_);
        } else {
            value = *at;
            model_.values.erase(at);
        }
        model_.log.push_back((insert_ ? "+" : "-") + std::to_string(value));
        return std::make_unique<EditCommand>(model_, !insert_, index_, value, size_);
    }
    uint32_t Size() const override { return size_; }
    void Prepare() override { model_.log.push_back("prepare " + std::to_string(value_)); }

private:
    Model& model_;
    bool insert_;
    size_t index_;
    int value_;
    uint32_t size_;
};

// A command that fails, or one that succeeds without inverse when marked optional.
class NoInverseCommand : public UT_Command {
public:
    explicit NoInverseCommand(bool optional = false) : UT_Command(optional) {}
    std::unique_ptr<UT_Command> Execute() override { return nullptr; }
};

UT_WString Name(int i) {
    return u"Edit " + UT_FromUtf8(std::to_string(i));
}

// Pushes `count` inverses of the given size without touching any model.
void PushMany(UT_CommandHistory& history, Model& model, int count, uint32_t size = 500) {
    for (int i = 0; i < count; ++i)
        history.Add(std::make_unique<EditCommand>(model, true, 0, i, size), Name(i));
}

TEST(CommandHistory, CountLimitIsTestedBeforeAppending) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 1001);
    EXPECT_EQ(history.UndoList().size(), 1001u);
    EXPECT_EQ(history.TotalSize(), 1001u * 500u);
    PushMany(history, model, 1);
    EXPECT_EQ(history.UndoList().size(), 802u);
    EXPECT_EQ(history.TotalSize(), 802u * 500u);
    // The oldest 200 went: the first entry left is the 201st pushed.
    EXPECT_EQ(history.UndoList().front().name, Name(200));
    EXPECT_EQ(history.UndoList().back().name, Name(0));
}

TEST(CommandHistory, SavedPositionFollowsDroppedEntries) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 500);
    history.MarkSaved();
    PushMany(history, model, 502);
    EXPECT_EQ(history.UndoList().size(), 802u);
    EXPECT_EQ(history.SavedPosition(), 300);
    EXPECT_EQ(history.LibrarySavedPosition(), 300);
    EXPECT_TRUE(history.HasChanges(false));
    for (int i = 0; i < 502; ++i)
        history.Undo();
    EXPECT_EQ(history.UndoList().size(), 300u);
    EXPECT_FALSE(history.HasChanges(false));
    EXPECT_FALSE(history.HasChanges(true));
}

TEST(CommandHistory, SaveDroppedOffTheStartIsUnreachable) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 5);
    history.MarkSaved();
    PushMany(history, model, 1000);
    EXPECT_LT(history.SavedPosition(), 0);
    while (history.CanUndo()) {
        EXPECT_TRUE(history.HasChanges(false));
        history.Undo();
    }
    EXPECT_TRUE(history.HasChanges(false));
}

TEST(CommandHistory, PushAfterUndoingPastTheSaveLosesIt) {
    Model model;
    UT_CommandHistory history;
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(history.Execute(*std::make_unique<EditCommand>(model, true, 0, i), Name(i)));
    history.MarkSaved();
    for (int i = 0; i < 3; ++i)
        history.Undo();
    EXPECT_TRUE(history.HasChanges(false));
    EditCommand edit(model, true, 0, 99);
    ASSERT_TRUE(history.Execute(edit, u"Other"));
    EXPECT_EQ(history.SavedPosition(), -1);
    EXPECT_FALSE(history.CanRedo());
    // Length 8 again, as at no saved state.
    history.Undo();
    history.Redo();
    EXPECT_TRUE(history.HasChanges(false));
}

TEST(CommandHistory, PushAfterOneUndoDoesNotLandOnTheSave) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 4);
    history.MarkSaved();
    history.Undo();
    PushMany(history, model, 1);
    // Same length as at the save, but another state.
    EXPECT_EQ(history.UndoList().size(), 4u);
    EXPECT_EQ(history.SavedPosition(), -1);
    EXPECT_EQ(history.LibrarySavedPosition(), -1);
    EXPECT_TRUE(history.HasChanges(false));
    EXPECT_TRUE(history.HasChanges(true));
}

TEST(CommandHistory, ByteLimitDropsOldestPastAFifth) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 6, 3000000);
    EXPECT_EQ(history.TotalSize(), 18000000u);
    // 21,000,000 > 20,000,000: the walk takes 3,000,000 then 6,000,000 > 4,000,000 and
    // drops two, leaving four plus the new one.
    PushMany(history, model, 1, 3000000);
    EXPECT_EQ(history.UndoList().size(), 5u);
    EXPECT_EQ(history.TotalSize(), 15000000u);
    EXPECT_EQ(history.UndoList().front().name, Name(2));

    // A huge entry still drops only past a fifth of the limit, not down to the limit.
    PushMany(history, model, 1, 25000000);
    EXPECT_EQ(history.UndoList().size(), 4u);
    EXPECT_EQ(history.TotalSize(), 34000000u);
}

TEST(CommandHistory, ByteLimitMovesSavedPositions) {
    Model model;
    UT_CommandHistory history;
    history.SetLimits(1000, 1000);
    PushMany(history, model, 4, 200);
    history.MarkSaved();
    history.MarkLibrarySaved();
    PushMany(history, model, 1, 200);
    // 1000 is not over the limit.
    EXPECT_EQ(history.UndoList().size(), 5u);
    PushMany(history, model, 1, 200);
    // Target 200: the walk takes 200 (not over), then 400, so two go.
    EXPECT_EQ(history.UndoList().size(), 4u);
    EXPECT_EQ(history.SavedPosition(), 2);
    EXPECT_EQ(history.TotalSize(), 800u);
}

TEST(CommandHistory, FailedExecuteDiscardsEverything) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 3);
    history.MarkSaved();
    history.Undo();
    NoInverseCommand failing;
    EXPECT_FALSE(history.Execute(failing, u"Fail"));
    EXPECT_FALSE(history.CanUndo());
    EXPECT_FALSE(history.CanRedo());
    EXPECT_EQ(history.SavedPosition(), -1);
    EXPECT_EQ(history.LibrarySavedPosition(), -1);
    EXPECT_TRUE(history.HasChanges(true));
}

TEST(CommandHistory, OptionalInverseIsLeftOutOfAGroup) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 2);
    history.BeginGroup();
    NoInverseCommand optional(true);
    EditCommand add(model, true, 0, 4);
    EXPECT_TRUE(history.Execute(optional, u"Copy"));
    EXPECT_TRUE(history.Execute(add, u"Add"));
    history.EndGroup(u"Copy and add");
    ASSERT_EQ(history.UndoList().size(), 3u);
    EXPECT_EQ(static_cast<UT_ComplexCommand&>(*history.UndoList().back().command).Count(), 1u);
    // Without anything else in the group, nothing is recorded.
    history.BeginGroup();
    EXPECT_TRUE(history.Execute(optional, u"Copy"));
    history.EndGroup(u"Copy");
    EXPECT_EQ(history.UndoList().size(), 3u);
}

// Size is asked once per push; the whole list is measured only when entries are dropped.
TEST(CommandHistory, NormalPushesMeasureOnlyTheNewEntry) {
    struct Measured : UT_Command {
        explicit Measured(int& calls) : calls_(calls) {}
        std::unique_ptr<UT_Command> Execute() override { return nullptr; }
        uint32_t Size() const override {
            ++calls_;
            return 1000;
        }
        int& calls_;
    };
    int calls = 0;
    UT_CommandHistory history;
    history.SetLimits(10, 100000);
    for (int i = 0; i < 11; ++i)
        history.Add(std::make_unique<Measured>(calls), u"x");
    EXPECT_EQ(calls, 11);
    // The 12th push drops two entries and measures the nine that stay.
    history.Add(std::make_unique<Measured>(calls), u"x");
    EXPECT_EQ(calls, 12 + 9);
    EXPECT_EQ(history.UndoList().size(), 10u);
    EXPECT_EQ(history.TotalSize(), 10000u);
}

TEST(CommandHistory, UndoWithoutInverseClearsTheOtherList) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 2);
    model.values = {1, 2};
    EditCommand first(model, false, 1, 0);
    ASSERT_TRUE(history.Execute(first, u"Erase"));
    history.Undo();
    ASSERT_TRUE(history.CanRedo());
    ASSERT_EQ(history.UndoList().size(), 2u);
    // The redo erases index 1, which someone else removed meanwhile: it fails.
    model.values.pop_back();
    history.Redo();
    EXPECT_FALSE(history.CanRedo());
    EXPECT_FALSE(history.CanUndo());
}

TEST(CommandHistory, UndoPreparesThenExecutesAndRedoRestores) {
    Model model;
    UT_CommandHistory history;
    EditCommand add(model, true, 0, 7);
    ASSERT_TRUE(history.Execute(add, u"Add"));
    EXPECT_EQ(history.UndoMenuText(u"Ctrl+Z"), u"&Undo Add\tCtrl+Z");
    EXPECT_EQ(history.RedoMenuText(u"Ctrl+Y"), u"&Redo \tCtrl+Y");
    model.log.clear();
    history.Undo();
    EXPECT_EQ(model.log, (std::vector<std::string>{"prepare 7", "-7"}));
    EXPECT_TRUE(model.values.empty());
    EXPECT_EQ(history.RedoName(), u"Add");
    EXPECT_EQ(history.RedoMenuText(u"Ctrl+Y"), u"&Redo Add\tCtrl+Y");
    history.Redo();
    EXPECT_EQ(model.values, std::vector<int>{7});
    EXPECT_EQ(history.UndoName(), u"Add");
    // Nothing left to redo: a no-op.
    history.Redo();
    EXPECT_EQ(model.values, std::vector<int>{7});
}

TEST(CommandHistory, LibraryAndProjectPositions) {
    Model model;
    UT_CommandHistory history;
    EXPECT_FALSE(history.HasChanges(false));
    PushMany(history, model, 2);
    EXPECT_TRUE(history.HasChanges(true));
    history.MarkLibrarySaved();
    EXPECT_FALSE(history.HasChanges(true));
    EXPECT_TRUE(history.HasChanges(false));
    history.MarkSaved();
    EXPECT_FALSE(history.HasChanges(false));
    PushMany(history, model, 1);
    history.MarkLibrarySaved();
    history.Undo();
    // Back at the project's save, but away from the library's.
    EXPECT_TRUE(history.HasChanges(true));
    EXPECT_TRUE(history.HasChanges(false));
}

TEST(CommandHistory, GroupsRunInReverseAndRedoForward) {
    Model model;
    UT_CommandHistory history;
    history.BeginGroup();
    for (int i = 1; i <= 3; ++i) {
        EditCommand add(model, true, model.values.size(), i);
        ASSERT_TRUE(history.Execute(add, u"ignored"));
    }
    EXPECT_FALSE(history.CanUndo());
    history.EndGroup(u"Three");
    ASSERT_EQ(history.UndoList().size(), 1u);
    EXPECT_EQ(history.UndoName(), u"Three");
    EXPECT_EQ(history.TotalSize(), 1500u);
    model.log.clear();
    history.Undo();
    EXPECT_EQ(model.log, (std::vector<std::string>{"prepare 1", "prepare 2", "prepare 3", "-3", "-2", "-1"}));
    EXPECT_TRUE(model.values.empty());
    model.log.clear();
    history.Redo();
    EXPECT_EQ(model.log, (std::vector<std::string>{"prepare 3", "prepare 2", "prepare 1", "+1", "+2", "+3"}));
    EXPECT_EQ(model.values, (std::vector<int>{1, 2, 3}));
}

TEST(CommandHistory, EmptyOrAbortedGroupAddsNothing) {
    Model model;
    UT_CommandHistory history;
    PushMany(history, model, 2);
    history.Undo();
    history.BeginGroup();
    history.EndGroup(u"Empty");
    EXPECT_EQ(history.UndoList().size(), 1u);
    EXPECT_TRUE(history.CanRedo());
    EXPECT_FALSE(history.IsGroupOpen());

    history.BeginGroup();
    PushMany(history, model, 3);
    history.AbortGroup();
    EXPECT_FALSE(history.IsGroupOpen());
    EXPECT_EQ(history.UndoList().size(), 1u);
    EXPECT_TRUE(history.CanRedo());

    // Any new entry empties the redo list.
    PushMany(history, model, 1);
    EXPECT_FALSE(history.CanRedo());
}

TEST(ComplexCommand, SkipsNullsSumsSizesAndForwardsPrepare) {
    Model model;
    UT_ComplexCommand group;
    group.Add(nullptr);
    group.Add(std::make_unique<EditCommand>(model, true, 0, 1, 10));
    group.Add(std::make_unique<NoInverseCommand>(true));
    group.Add(std::make_unique<EditCommand>(model, true, 0, 2, 20));
    EXPECT_EQ(group.Count(), 3u);
    EXPECT_EQ(group.Size(), 530u);
    group.Prepare();
    EXPECT_EQ(model.log, (std::vector<std::string>{"prepare 1", "prepare 2"}));
    std::unique_ptr<UT_Command> inverse = group.Execute();
    ASSERT_NE(inverse, nullptr);
    // The child without inverse is left out.
    EXPECT_EQ(static_cast<UT_ComplexCommand&>(*inverse).Count(), 2u);
    EXPECT_EQ(inverse->Size(), 30u);
    EXPECT_EQ(model.values, (std::vector<int>{1, 2}));
}

// Random edits, undos and redos from a fixed seed. Undoing everything must give back the
// start, and redoing everything the end: any wrong inverse breaks one of the two.
TEST(CommandHistory, RandomUndoRedoRoundTrip) {
    std::mt19937 random(20261123);
    Model model;
    model.values = {5, 6, 7};
    const std::vector<int> start = model.values;
    UT_CommandHistory history;
    // No entry may be dropped, or the start could not be reached again.
    history.SetLimits(100000, UINT32_MAX);
    for (int step = 0; step < 3000; ++step) {
        const unsigned choice = random() % 10;
        if (choice < 2) {
            history.Undo();
        } else if (choice < 3) {
            history.Redo();
        } else if (choice < 4) {
            history.BeginGroup();
            for (unsigned n = random() % 4; n > 0; --n) {
                EditCommand add(model, true, random() % (model.values.size() + 1),
                                static_cast<int>(random() % 100));
                ASSERT_TRUE(history.Execute(add, u"In group"));
            }
            history.EndGroup(u"Group");
        } else if (choice < 7 || model.values.empty()) {
            EditCommand add(model, true, random() % (model.values.size() + 1),
                            static_cast<int>(random() % 100));
            ASSERT_TRUE(history.Execute(add, u"Add"));
        } else {
            EditCommand erase(model, false, random() % model.values.size(), 0);
            ASSERT_TRUE(history.Execute(erase, u"Erase"));
        }
    }
    while (history.CanRedo())
        history.Redo();
    const std::vector<int> end = model.values;
    const size_t depth = history.UndoList().size();
    while (history.CanUndo())
        history.Undo();
    EXPECT_EQ(model.values, start);
    EXPECT_EQ(history.RedoList().size(), depth);
    while (history.CanRedo())
        history.Redo();
    EXPECT_EQ(model.values, end);
}

// A persistent object for snapshots; it records the archive context it saw.
class Sample : public CPersistentObjBase {
public:
    uint32_t value = 0;
    UT_WString text;
    void* seenContext = nullptr;
    void Read(DB_Archive& a) override {
        seenContext = a.Context();
        value = a.ReadU32();
        text = a.ReadWideString();
    }
    void Write(DB_Archive& a) override {
        seenContext = a.Context();
        a.WriteU32(value);
        a.WriteWideString(text);
    }
};

class Unregistered : public CPersistentObjBase {
public:
    void Read(DB_Archive&) override {}
    void Write(DB_Archive&) override {}
};

class SnapshotCommand : public UT_StreamCommand {
public:
    using UT_StreamCommand::UT_StreamCommand;
    std::unique_ptr<UT_Command> Execute() override { return nullptr; }
};

class StreamCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        CPersistentTypeRegistry::Instance().Register<Sample>(9101, "TestSample");
    }
};

TEST_F(StreamCommandTest, SnapshotBytesSizeAndRoundTrip) {
    int palette = 0;
    SnapshotCommand command(&palette);
    Sample sample;
    sample.value = 0x01020304;
    sample.text = u"Ab";
    ASSERT_TRUE(command.Store(sample));
    EXPECT_EQ(sample.seenContext, &palette);
    const std::vector<uint8_t> expected = {0x8D, 0x23, 0x04, 0x03, 0x02, 0x01, 0x02,
                                           0x00, 0x00, 0x00, 'A',  0x00, 'b',  0x00};
    const DB_MemFile& file = command.Snapshot();
    EXPECT_EQ(std::vector<uint8_t>(file.Data(), file.Data() + file.Size()), expected);
    EXPECT_EQ(file.Position(), 0u);
    EXPECT_EQ(command.Size(), expected.size() + 12);

    std::unique_ptr<CPersistentObjBase> copy = command.LoadNew();
    auto* typed = dynamic_cast<Sample*>(copy.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(typed->value, sample.value);
    EXPECT_EQ(typed->text, sample.text);
    EXPECT_EQ(typed->seenContext, &palette);

    // The snapshot can be read again and again.
    Sample into;
    EXPECT_TRUE(command.LoadInto(into));
    EXPECT_TRUE(command.LoadInto(into));
    EXPECT_EQ(into.text, u"Ab");

    // Storing again replaces the snapshot rather than appending to it.
    sample.text = u"";
    ASSERT_TRUE(command.Store(sample));
    EXPECT_EQ(command.Snapshot().Size(), 10u);
}

TEST_F(StreamCommandTest, BadSnapshotsAreRefused) {
    SnapshotCommand command;
    Unregistered unregistered;
    EXPECT_FALSE(command.Store(unregistered));
    // Nothing stored: reading runs off the end.
    EXPECT_THROW(command.LoadNew(), DB_Exception);
    // A snapshot of one class does not read into another.
    DB_MemFile other;
    ASSERT_TRUE(command.Store(other));
    Sample sample;
    EXPECT_THROW(command.LoadInto(sample), DB_Exception);
    EXPECT_EQ(command.Snapshot().Position(), 0u);
}

// Observers.
struct Record {
    int value = 0;
};

class Listener {
public:
    virtual ~Listener() = default;
    virtual void First(const void* sender, const Record& record) = 0;
    virtual void Second(const void* sender, const Record& record) = 0;
};

using Observable = OB_Observable<Listener, Record, &Listener::Second>;

class Recorder : public Listener {
public:
    Recorder(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}
    void First(const void*, const Record&) override { log_.push_back(name_ + " first"); }
    void Second(const void*, const Record& record) override {
        log_.push_back(name_ + " " + std::to_string(record.value));
        if (onCall)
            onCall();
    }
    std::function<void()> onCall;

private:
    std::vector<std::string>& log_;
    std::string name_;
};

TEST(Observable, NotifySkipsOnlyTheSenderAndCallsTheChosenMember) {
    std::vector<std::string> log;
    Recorder a(log, "a"), b(log, "b"), c(log, "c");
    Observable observable;
    observable.Attach(&a);
    observable.Attach(&b);
    observable.Attach(&b);
    observable.Attach(&c);
    EXPECT_EQ(observable.ObserverCount(), 3u);
    observable.Notify(&b, Record{1});
    observable.Notify(nullptr, Record{2});
    EXPECT_EQ(log, (std::vector<std::string>{"a 1", "c 1", "a 2", "b 2", "c 2"}));
}

TEST(Observable, ObserversMayDetachDuringNotify) {
    std::vector<std::string> log;
    Recorder a(log, "a"), b(log, "b"), c(log, "c");
    Observable observable;
    observable.Attach(&a);
    observable.Attach(&b);
    observable.Attach(&c);
    // a removes itself and c; c must not be called afterwards.
    a.onCall = [&] {
        EXPECT_TRUE(observable.IsNotifying());
        observable.Detach(&a);
        observable.Detach(&c);
    };
    observable.Notify(nullptr, Record{3});
    EXPECT_EQ(log, (std::vector<std::string>{"a 3", "b 3"}));
    EXPECT_FALSE(observable.IsNotifying());
    EXPECT_EQ(observable.ObserverCount(), 1u);
}

} // namespace
