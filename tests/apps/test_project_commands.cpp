// qms new, info, save and demo on real folders, including damaged and missing files.

#include "QmsRun.h"

#include <chrono>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(QmsProject, NewCreatesTheProjectFolderAndFile) {
    ScratchFolder dir("new");
    QmsResult r = RunQms("new " + dir.Quoted() + " '  Robot  '", dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const fs::path project = dir.Path() / "Robot" / "Robot.qmp";
    EXPECT_EQ(r.out, project.string() + "\n");
    ASSERT_TRUE(fs::is_regular_file(project));
    EXPECT_TRUE(fs::is_directory(dir.Path() / "Robot" / "Scene-001" / "Drawing"));
    EXPECT_TRUE(fs::is_directory(dir.Path() / "Robot" / "Scene-001" / "Bitmap"));
    EXPECT_EQ(ReadAll(project).substr(0, 28), std::string("QuilmoorTechnologiesInc ") + '\0' + "51" + '\0');

    // The dialog's rules, with its messages.
    r = RunQms("new " + dir.Quoted() + " Robot", dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("This project folder already exists; please choose another name."),
              std::string::npos);
    r = RunQms("new " + dir.Quoted() + " '   '", dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Enter an animation name."), std::string::npos);
    r = RunQms("new " + dir.Quoted() + " 'a/b'", dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    r = RunQms("new " + dir.Quoted("nowhere") + " Robot2", dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Cannot Access the Specified Project Path"), std::string::npos);
    r = RunQms("new " + dir.Quoted(), dir.Path());
    EXPECT_EQ(r.exitCode, 2);
}

TEST(QmsProject, InfoShowsTheNewSetAndAddsTheExtension) {
    ScratchFolder dir("info");
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    QmsResult r = RunQms("info " + dir.Quoted("Robot/Robot"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("Robot"), std::string::npos);
    EXPECT_NE(r.out.find("Scene-1"), std::string::npos);
    EXPECT_NE(r.out.find("12 fps"), std::string::npos);
    EXPECT_NE(r.out.find("500 x 375"), std::string::npos);

    r = RunQms("--json info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("\"version\":51"), std::string::npos);
    EXPECT_NE(r.out.find("\"frameRate\":12"), std::string::npos);
    EXPECT_NE(r.out.find("\"name\":\"Scene-1\""), std::string::npos);
}

TEST(QmsProject, SavingAnUnchangedProjectWritesNothing) {
    ScratchFolder dir("save");
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    const fs::path project = dir.Path() / "Robot" / "Robot.qmp";
    const std::string before = ReadAll(project);
    const auto stamp = fs::last_write_time(project);
    QmsResult r = RunQms("save " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out.rfind("unchanged", 0), 0u);
    EXPECT_EQ(fs::last_write_time(project), stamp);
    EXPECT_EQ(ReadAll(project), before);
    for (const auto& entry : fs::recursive_directory_iterator(dir.Path() / "Robot")) {
        const std::string name = entry.path().filename().string();
        EXPECT_EQ(name.find(".new"), std::string::npos) << name;
        EXPECT_EQ(name.find(".deleted"), std::string::npos) << name;
    }
}

TEST(QmsProject, DamagedAndMissingFilesFailCleanly) {
    ScratchFolder dir("bad");
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    const fs::path project = dir.Path() / "Robot" / "Robot.qmp";
    const std::string good = ReadAll(project);

    QmsResult r = RunQms("info " + dir.Quoted("Robot/Missing.qmp"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("could not be found.\nThis file may have been moved, renamed or deleted."),
              std::string::npos);

    // Every truncation of a real project fails with a message, never a crash.
    for (size_t size : {size_t(0), size_t(10), size_t(33), good.size() / 2, good.size() - 1}) {
        std::ofstream(project, std::ios::binary | std::ios::trunc).write(good.data(), std::streamsize(size));
        r = RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
        EXPECT_EQ(r.exitCode, 1) << "size " << size;
        EXPECT_FALSE(r.err.empty()) << "size " << size;
    }
    std::string corrupt = good;
    corrupt[3] = 'X';
    std::ofstream(project, std::ios::binary | std::ios::trunc) << corrupt;
    r = RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("  is not a valid Quilmoor Studio file."), std::string::npos);
}

TEST(QmsProject, InterruptedSaveIsRecovered) {
    ScratchFolder dir("recover");
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    const fs::path project = dir.Path() / "Robot" / "Robot.qmp";
    fs::rename(project, project.string() + ".deleted");
    QmsResult r = RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.err.find("Recovered"), std::string::npos);
    EXPECT_TRUE(fs::is_regular_file(project));
}

TEST(QmsProject, DemoCreatesSavesAndReopens) {
    ScratchFolder dir("demo");
    QmsResult r = RunQms("demo " + dir.Quoted("out"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(fs::is_regular_file(dir.Path() / "out" / "Demo" / "Demo.qmp"));
    EXPECT_NE(r.out.find("Walk cycle"), std::string::npos);
    EXPECT_NE(r.out.find("Title"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(dir.Path() / "out" / "Demo" / "Scene-003"));
}

TEST(QmsProject, UnknownCommandsAndOptionsAreUsageErrors) {
    ScratchFolder dir("usage");
    EXPECT_EQ(RunQms("frobnicate", dir.Path()).exitCode, 2);
    EXPECT_EQ(RunQms("info --bogus x", dir.Path()).exitCode, 2);
    EXPECT_EQ(RunQms("", dir.Path()).exitCode, 2);
    QmsResult help = RunQms("help", dir.Path());
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("qms new LOCATION NAME"), std::string::npos);
}

} // namespace
