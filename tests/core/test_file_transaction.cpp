// The save transaction: temporary names, commit, and restoring every file after a failure.

#include "core/UT_ErrorCollector.h"
#include "core/UT_FileOperations.h"
#include "core/UT_FileTransaction.h"
#include "core/UT_MessageHandler.h"
#include "core/UT_TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace {

class TempDir {
public:
    TempDir() {
        path_ = fs::temp_directory_path() /
                ("qms-tx-" + std::to_string(::getpid()) + "-" + std::to_string(counter_++));
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~TempDir() { fs::remove_all(path_); }
    const fs::path& Path() const { return path_; }

private:
    fs::path path_;
    static inline int counter_ = 0;
};

void WriteFile(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::set<std::string> Listing(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

// Fails the n-th rename (counting from 1), or every rename of a chosen path.
class FailingOperations : public UT_FileOperations {
public:
    int failAt = 0;
    int renames = 0;
    int Rename(const UT_FilePath& from, const UT_FilePath& to) override {
        if (++renames == failAt)
            return EIO;
        return UT_FileOperations::Rename(from, to);
    }
};

class InstallOperations {
public:
    explicit InstallOperations(UT_FileOperations* ops) : previous_(UT_FileOperations::SetCurrent(ops)) {}
    ~InstallOperations() { UT_FileOperations::SetCurrent(previous_); }

private:
    UT_FileOperations* previous_;
};

TEST(FileTransaction, FreeNameCountsFromOne) {
    TempDir dir;
    const UT_FilePath project(dir.Path() / "x.qmp");
    EXPECT_EQ(UT_FileTransaction::FreeName(project, u"new").Path(), dir.Path() / "x.qmp.new");
    WriteFile(dir.Path() / "x.qmp.new", "stale");
    EXPECT_EQ(UT_FileTransaction::FreeName(project, u"new").Path(), dir.Path() / "x.qmp.1.new");
    WriteFile(dir.Path() / "x.qmp.1.new", "stale");
    EXPECT_EQ(UT_FileTransaction::FreeName(project, u"deleted").Path(), dir.Path() / "x.qmp.deleted");
    EXPECT_EQ(UT_FileTransaction::FreeName(project, u"new").Path(), dir.Path() / "x.qmp.2.new");
}

TEST(FileTransaction, ReplaceOfAnExistingFileLeavesOnlyTheNewOne) {
    TempDir dir;
    const fs::path a = dir.Path() / "a.qmp";
    const fs::path b = dir.Path() / "b.qmd";
    WriteFile(a, "old a");
    UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
    const UT_FilePath ta = tx->AddReplace(UT_FilePath(a));
    const UT_FilePath tb = tx->AddReplace(UT_FilePath(b));
    ASSERT_EQ(tx->Entries().size(), 3u);
    EXPECT_EQ(tx->Entries()[0].operation, UT_FileTransaction::kDeleteReplaced);
    EXPECT_EQ(ta.Path(), dir.Path() / "a.qmp.new");
    WriteFile(ta.Path(), "new a");
    WriteFile(tb.Path(), "new b");
    ASSERT_TRUE(tx->Commit()) << UT_ToUtf8(tx->ErrorText());
    EXPECT_EQ(ReadFile(a), "new a");
    EXPECT_EQ(ReadFile(b), "new b");
    EXPECT_EQ(Listing(dir.Path()), (std::set<std::string>{"a.qmp", "b.qmd"}));
    EXPECT_TRUE(tx->IsEmpty());
    EXPECT_TRUE(tx->Commit()); // an empty list commits at once
}

TEST(FileTransaction, AFailedRenameAtAnyPositionRestoresEveryFile) {
    for (int failAt = 1; failAt <= 6; ++failAt) {
        TempDir dir;
        const fs::path a = dir.Path() / "a.qmp";
        const fs::path b = dir.Path() / "b.qmd";
        const fs::path c = dir.Path() / "c.qmd";
        WriteFile(a, "old a");
        WriteFile(b, "old b");
        FailingOperations failing;
        failing.failAt = failAt;
        InstallOperations install(&failing);
        UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
        WriteFile(tx->AddReplace(UT_FilePath(a)).Path(), "new a");
        WriteFile(tx->AddReplace(UT_FilePath(b)).Path(), "new b");
        WriteFile(tx->AddReplace(UT_FilePath(c)).Path(), "new c");
        // Delete a, replace a, delete b, replace b, replace c: five renames.
        const bool committed = tx->Commit();
        if (failAt > 5) {
            EXPECT_TRUE(committed);
            EXPECT_EQ(ReadFile(a), "new a");
            continue;
        }
        EXPECT_FALSE(committed) << "fail at " << failAt;
        EXPECT_EQ(tx->ErrorText().rfind(u"Unable to rename ", 0), 0u);
        EXPECT_EQ(ReadFile(a), "old a") << "fail at " << failAt;
        EXPECT_EQ(ReadFile(b), "old b") << "fail at " << failAt;
        EXPECT_EQ(Listing(dir.Path()), (std::set<std::string>{"a.qmp", "b.qmd"})) << "fail at " << failAt;
    }
}

TEST(FileTransaction, CheckFailureChangesNothing) {
    TempDir dir;
    const fs::path a = dir.Path() / "a.qmp";
    WriteFile(a, "old a");
    fs::permissions(a, fs::perms::owner_read | fs::perms::group_read);
    UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
    WriteFile(tx->AddReplace(UT_FilePath(a)).Path(), "new a");
    EXPECT_FALSE(tx->Commit());
    EXPECT_EQ(tx->ErrorText(), UT_FromUtf8(a.string()) + u" is read-only");
    EXPECT_EQ(ReadFile(a), "old a");
    EXPECT_EQ(Listing(dir.Path()), (std::set<std::string>{"a.qmp"}));

    UT_FileTransaction::Handle tx2 = UT_FileTransaction::Get();
    tx2->AddRename(UT_FilePath(dir.Path() / "missing"), UT_FilePath(dir.Path() / "other"));
    EXPECT_FALSE(tx2->Commit());
    EXPECT_EQ(tx2->ErrorText(),
              u"Unable to access file " + UT_FromUtf8((dir.Path() / "missing").string()) + u".");
}

TEST(FileTransaction, LastHandleCommitsUnlessErrorsWereCollected) {
    TempDir dir;
    const fs::path a = dir.Path() / "a.qmp";
    {
        UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
        WriteFile(tx->AddReplace(UT_FilePath(a)).Path(), "committed");
        UT_FileTransaction::Handle second = UT_FileTransaction::Get();
        EXPECT_EQ(second.Get(), tx.Get());
    }
    EXPECT_EQ(ReadFile(a), "committed");
    {
        UT_MessageHandlerScope silent(nullptr);
        UT_ErrorCollector::Handle errors = UT_ErrorCollector::Get();
        errors->SetHeading(u"Saving");
        UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
        WriteFile(tx->AddReplace(UT_FilePath(a)).Path(), "never");
        errors->Add(u"a drawing could not be written");
    }
    EXPECT_EQ(ReadFile(a), "committed");
    EXPECT_EQ(Listing(dir.Path()), (std::set<std::string>{"a.qmp"}));
}

TEST(FileTransaction, UnwindingNeverCommits) {
    TempDir dir;
    const fs::path a = dir.Path() / "a.qmp";
    WriteFile(a, "old");
    try {
        UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
        WriteFile(tx->AddReplace(UT_FilePath(a)).Path(), "half written");
        throw std::runtime_error("writer failed");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(ReadFile(a), "old");
    EXPECT_EQ(Listing(dir.Path()), (std::set<std::string>{"a.qmp"}));
}

TEST(FileTransaction, DeleteIfPossibleRemovesAFolderAndToleratesFailure) {
    TempDir dir;
    const fs::path scene = dir.Path() / "Scene-002";
    fs::create_directories(scene / "Drawing");
    WriteFile(scene / "Drawing" / "d-1.qmd", "x");
    UT_FileTransaction::Handle tx = UT_FileTransaction::Get();
    tx->AddDelete(UT_FilePath(scene), UT_FileTransaction::kDeleteIfPossible);
    tx->AddDelete(UT_FilePath(dir.Path() / "not-there"), UT_FileTransaction::kDeleteIfPossible);
    EXPECT_TRUE(tx->Commit());
    EXPECT_TRUE(Listing(dir.Path()).empty());
}

class CollectingHandler : public UT_MessageHandler {
public:
    std::vector<UT_WString> messages;
    void Message(int, const UT_WString& text) override { messages.push_back(text); }
    int Question(int, const UT_WString&) override { return kOk; }
    void MessageOnce(int, const UT_WString&, bool*) override {}
    void MessageOnceById(int, uint32_t, bool*) override {}
    int QuestionOnceById(int, uint32_t, bool*) override { return kOk; }
};

TEST(ErrorCollector, ReportsHeadingAndAtMostElevenMessages) {
    CollectingHandler handler;
    UT_MessageHandlerScope scope(&handler);
    {
        UT_ErrorCollector::Handle errors = UT_ErrorCollector::Get();
        errors->SetHeading(u"Heading");
        UT_ErrorCollector::Get()->SetHeading(u"ignored");
        for (int i = 0; i < 13; ++i)
            errors->Add(UT_WString(1, char16_t(u'a' + i)));
    }
    ASSERT_EQ(handler.messages.size(), 1u);
    EXPECT_EQ(handler.messages[0], u"Heading\n\na\nb\nc\nd\ne\nf\ng\nh\ni\nj\nk\nMore errors...\n");
    {
        UT_ErrorCollector::Handle errors = UT_ErrorCollector::Get();
        errors->Add(u"no heading: nothing is shown");
    }
    EXPECT_EQ(handler.messages.size(), 1u);
}

// The scratch folder lies under $TMPDIR, is emptied at its first use in the process, and
// hands out names that are free.
TEST(TempFolder, FirstUseEmptiesItAndFileNamesAreFree) {
    TempDir root;
    const fs::path folder = root.Path() / "QuilmoorStudioTempDir";
    fs::create_directories(folder);
    std::ofstream(folder / "stale.tmp") << "left from an earlier run";
    std::ofstream(folder / "tmpfs_1.tmp") << "taken";
    const char* previous = std::getenv("TMPDIR");
    const std::string saved = previous ? previous : "";
    ::setenv("TMPDIR", root.Path().c_str(), 1);
    const UT_FilePath made = UT_TempFolder::Folder();
    previous ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    if (made.Path() != folder)
        GTEST_SKIP() << "the scratch folder was made earlier in this process";

    EXPECT_TRUE(fs::is_directory(folder));
    EXPECT_FALSE(fs::exists(folder / "stale.tmp"));
    const UT_FilePath first = UT_TempFolder::NewFile();
    EXPECT_EQ(first.Path(), folder / "tmpfs_0.tmp");
    std::ofstream(first.Path()) << "in use";
    std::ofstream(folder / "tmpfs_1.tmp") << "taken";
    EXPECT_EQ(UT_TempFolder::NewFile().Path(), folder / "tmpfs_2.tmp");
}

} // namespace
