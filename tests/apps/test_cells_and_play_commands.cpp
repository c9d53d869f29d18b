// qms cells and qms play on real project folders: exposure changed, saved and seen by the
// next run; playback that shows every frame in order and ends; the errors a user meets.

#include "QmsRun.h"

#include <gtest/gtest.h>
#include <regex>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The frames that `qms play` printed, in order.
std::vector<int> FramesPlayed(const std::string& out) {
    std::vector<int> frames;
    const std::regex line("^frame ([0-9]+) at [0-9]+\\.[0-9]{3} ms$");
    std::istringstream lines(out);
    for (std::string text; std::getline(lines, text);) {
        std::smatch match;
        if (std::regex_match(text, match, line))
            frames.push_back(std::stoi(match[1]));
    }
    return frames;
}

class QmsCellsTest : public QmsRobotTest {
protected:
    QmsCellsTest() : QmsRobotTest("cells") {}
    QmsResult Cells(const std::string& rest) { return Run("cells", "Scene-1 Drawing " + rest); }
    QmsResult Play(const std::string& rest) { return Run("play", "1 " + rest); }
};

TEST_F(QmsCellsTest, ExposureIsChangedSavedAndUndoneByTheNextCommand) {
    QmsResult r = Cells("");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "no cells\n");

    for (const char* frame : {"1", "2", "3"})
        ASSERT_EQ(Cells(std::string("set ") + frame + " A").exitCode, 0);
    r = Cells("set 4 B");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "frame 4 shows drawing \"B\" (new)\n1  A\n2  A\n3  A\n4  B\n");
    r = Cells("set 7 A");
    EXPECT_EQ(r.out, "frame 7 shows drawing \"A\"\n1  A\n2  A\n3  A\n4  B\n5  -\n6  -\n7  A\n");

    r = Cells("runs");
    EXPECT_EQ(r.out, "1-3  A  3 frames\n4-4  B  1 frame\n5-6  -  2 frames\n7-7  A  1 frame\n");
    r = Cells("timing 1 4 2");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out,
              "held every run of frames 1 to 4 for 2 frames\n1  A\n2  A\n3  B\n4  B\n5  -\n6  -\n7  A\n");

    r = Cells("remove 2 3");
    EXPECT_EQ(r.out, "removed frames 2 to 3; the later frames moved back\n1  A\n2  B\n3  -\n4  -\n5  A\n");
    r = Cells("clear 1 2");
    EXPECT_EQ(r.out, "cleared frames 1 to 2\n1  -\n2  -\n3  -\n4  -\n5  A\n");

    r = RunQms("--json cells " + dir.Quoted("Robot/Robot.qmp") + " 1 Drawing runs", dir.Path());
    EXPECT_EQ(r.out,
              "{\"element\":\"Drawing\",\"runs\":[{\"first\":1,\"last\":4,\"drawing\":null,\"length\":4},"
              "{\"first\":5,\"last\":5,\"drawing\":\"A\",\"length\":1}]}\n");
}

TEST_F(QmsCellsTest, BadArgumentsLeaveTheProjectAlone) {
    ASSERT_EQ(Cells("set 1 A").exitCode, 0);
    const std::string before = ReadAll(ProjectFile());
    struct Case {
        std::string arguments;
        int exitCode;
        std::string message;
    };
    const std::string project = dir.Quoted("Robot/Robot.qmp");
    const std::vector<Case> cases = {
        {"Scene-1 Drawing set 0 A", 1, "FRAME must lie between 1 and 1048576, not 0."},
        {"Scene-1 Drawing set x A", 2, "FRAME must be a whole number"},
        {"Scene-1 Drawing set 2 'a/b'", 1, "This name contains invalid characters"},
        {"Scene-1 Drawing clear 5 2", 1, "TO (2) comes before FROM (5)."},
        {"Scene-1 Drawing timing 1 2 0", 1, "LENGTH must lie between 1 and 1000, not 0."},
        {"Scene-1 Drawing timing 1 2", 2, "too few arguments"},
        {"Scene-1 Drawing blink", 2, "unknown action 'blink'"},
        {"Scene-1 Peg", 1, "Element \"Peg\" has no cells of its own"},
        {"Scene-1 Arm", 1, "Scene \"Scene-1\" has no element 'Arm'"},
        {"Scene-9 Drawing", 1, "There is no scene 'Scene-9'"},
    };
    for (const Case& c : cases) {
        const QmsResult r = RunQms("cells " + project + " " + c.arguments, dir.Path());
        EXPECT_EQ(r.exitCode, c.exitCode) << c.arguments;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.arguments << ": " << r.err;
    }
    EXPECT_EQ(ReadAll(ProjectFile()), before);
}

TEST_F(QmsCellsTest, PlayShowsEveryFrameInOrderAndEnds) {
    ASSERT_EQ(Cells("set 1 A").exitCode, 0);
    ASSERT_EQ(Cells("set 6 B").exitCode, 0);
    const std::string before = ReadAll(ProjectFile());

    // One cell is current after opening: the whole scene plays, the start shown at once.
    QmsResult r = Play("--fps 200");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(FramesPlayed(r.out), (std::vector<int>{1, 1, 2, 3, 4, 5, 6})) << r.out;
    EXPECT_NE(r.out.find("# 7 frames in "), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("(asked 200, a tick every 5 ms)"), std::string::npos) << r.out;

    r = Play("--fps 200 --from 2 --to 4 --loop 2");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(FramesPlayed(r.out), (std::vector<int>{2, 3, 4, 2, 3, 4}));

    r = RunQms("--json play " + dir.Quoted("Robot/Robot.qmp") + " Scene-1 --fps 250 --loop 2", dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("\"shown\":13"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"period_ms\":4"), std::string::npos);
    EXPECT_EQ(ReadAll(ProjectFile()), before) << "playing changes nothing";
    EXPECT_FALSE(fs::exists(dir.Path() / "config")) << "nor the user's settings";

    const std::vector<std::pair<std::string, std::string>> refusals = {
        {"--from 3 --to 3", "has nothing to play"},
        {"--from 3", "--from and --to go together"},
        {"--fps 0", "--fps must lie between 1 and 1000, not 0."},
        {"--loop 0", "at least 1, not 0."},
    };
    for (const auto& [arguments, message] : refusals) {
        r = Play(arguments);
        EXPECT_NE(r.exitCode, 0) << arguments;
        EXPECT_NE(r.err.find(message), std::string::npos) << arguments << ": " << r.err;
    }
    // A scene without cells has a single frame.
    ASSERT_EQ(Cells("clear 1 6").exitCode, 0);
    EXPECT_EQ(Play("").exitCode, 1);
}

} // namespace
