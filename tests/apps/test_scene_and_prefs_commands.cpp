// qms scene and qms prefs on real project folders and a real settings file, with the
// errors a user meets.

#include "QmsRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class QmsSceneTest : public QmsRobotTest {
protected:
    QmsSceneTest() : QmsRobotTest("scene") {}
    QmsResult Scene(const std::string& arguments) {
        return RunQms("scene " + arguments + " " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    }
    QmsResult Scene(const std::string& verb, const std::string& rest) { return Run("scene " + verb, rest); }
};

TEST_F(QmsSceneTest, ChangesAreSavedAndSeenByTheNextRun) {
    QmsResult r = Scene("add", "");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "added scene 2 \"Scene-2\" at position 2\n1  id 1  \"Scene-1\"\n2  id 2  \"Scene-2\"\n");
    EXPECT_TRUE(fs::is_directory(Project() / "Scene-002" / "Drawing"));

    ASSERT_EQ(Scene("add", "'Walk cycle' --at 1").exitCode, 0);
    ASSERT_EQ(Scene("move", "1 3").exitCode, 0);
    ASSERT_EQ(Scene("rename", "2 Intro").exitCode, 0);
    ASSERT_EQ(Scene("hide", "2").exitCode, 0);
    r = Scene("list");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "1  id 3  \"Walk cycle\"\n2  id 2  \"Intro\"  (hidden)\n3  id 1  \"Scene-1\"\n");

    // Deleting erases the scene's folder with the save.
    ASSERT_TRUE(fs::is_directory(Project() / "Scene-003"));
    ASSERT_EQ(Scene("delete", "3").exitCode, 0);
    EXPECT_FALSE(fs::exists(Project() / "Scene-003"));
    r = RunQms("--json scene list " + dir.Quoted("Robot/Robot"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out,
              "{\"project\":\"" + (Project() / "Robot.qmp").string() +
                  "\",\"scenes\":[{\"position\":1,\"id\":2,\"name\":\"Intro\",\"visible\":false,"
                  "\"folder\":\"Scene-002\",\"elements\":3},{\"position\":2,\"id\":1,\"name\":\"Scene-1\","
                  "\"visible\":true,\"folder\":\"Scene-001\",\"elements\":3}]}\n");
    // The desktop program's view of the same file.
    r = RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    EXPECT_NE(r.out.find("scene 2 \"Intro\" (hidden)"), std::string::npos);

    // A scene id is never given again, even after its scene went.
    r = Scene("add", "");
    EXPECT_NE(r.out.find("added scene 4 \"Scene-2\""), std::string::npos) << r.out;
}

TEST_F(QmsSceneTest, BadArgumentsLeaveTheProjectAlone) {
    ASSERT_EQ(Scene("add", "Second").exitCode, 0);
    const std::string before = ReadAll(Project() / "Robot.qmp");
    struct Case {
        std::string verb, rest;
        int exitCode;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"delete", "7", 1, "Unknown scene id 7"},
        {"rename", "1 ''", 1, "The name of the scene cannot be empty."},
        {"rename", "1 Second", 1,
         "This name is already used by another scene; please choose a different one."},
        {"add", "'a:b'", 1, "This name contains invalid characters; please choose a different one."},
        {"add", "Third --at 4", 1, "The position must lie between 1 and 3, not 4."},
        {"move", "1 0", 1, "The position must lie between 1 and 2, not 0."},
        {"move", "x 1", 2, "ID must be a whole number"},
        {"rename", "1 Third --at 1", 2, "--at goes with add only"},
        {"frob", "", 2, "unknown action 'frob'"},
    };
    for (const Case& c : cases) {
        const QmsResult r = Scene(c.verb, c.rest);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.verb << " " << c.rest;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.verb << " " << c.rest << ": " << r.err;
    }
    ASSERT_EQ(Scene("delete", "2").exitCode, 0);
    const QmsResult last = Scene("delete", "1");
    EXPECT_EQ(last.exitCode, 1);
    EXPECT_NE(last.err.find("only scene"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(Project() / "Scene-001"));
    EXPECT_NE(ReadAll(Project() / "Robot.qmp"), before);
    EXPECT_EQ(RunQms("scene list " + dir.Quoted("Robot/Nothing.qmp"), dir.Path()).exitCode, 1);
}

TEST(QmsPrefs, ValuesPersistInTheSettingsFileAndBadOnesAreRefused) {
    ScratchFolder dir("prefs");
    const fs::path ini = dir.Path() / "config" / "Quilmoor Technologies Inc" / "Quilmoor Studio 2.0.ini";
    QmsResult r = RunQms("prefs get frameRate", dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "12\n");
    EXPECT_FALSE(fs::exists(ini));

    r = RunQms("prefs set Animation/frameRate 24", dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(ReadAll(ini).find("frameRate=24"), std::string::npos);
    r = RunQms("--json prefs get framerate", dir.Path());
    EXPECT_NE(r.out.find("\"value\":24"), std::string::npos) << r.out;
    // A new project takes the frame rate from there.
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    EXPECT_NE(RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path()).out.find("24 fps"),
              std::string::npos);

    r = RunQms("prefs get noSuchKey", dir.Path());
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("unknown preference 'noSuchKey'"), std::string::npos);
    r = RunQms("prefs set frameRate fast", dir.Path());
    EXPECT_EQ(r.exitCode, 2);
    r = RunQms("prefs set frameRate 0", dir.Path());
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("The minimum value is 1"), std::string::npos);
    EXPECT_EQ(RunQms("prefs get frameRate", dir.Path()).out, "24\n");

    // A damaged value in the file reads as the default.
    std::ofstream(ini, std::ios::app) << "\n[UIUnits]\ncoordinateUnit=lots\n";
    EXPECT_EQ(RunQms("prefs get coordinateUnit", dir.Path()).out, "3\n");

    r = RunQms("prefs reset", dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(RunQms("prefs get frameRate", dir.Path()).out, "12\n");
}

} // namespace
