// qms element and qms dump on real project folders, with the errors a user meets.

#include "QmsRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class QmsElementTest : public QmsRobotTest {
protected:
    QmsElementTest() : QmsRobotTest("element") {}
    QmsResult Element(const std::string& verb, const std::string& rest) {
        return Run("element " + verb, rest);
    }
};

TEST_F(QmsElementTest, ChangesGoThroughTheHistoryAndAreSaved) {
    QmsResult r = Element("add", "1 drawing Arm --count 2");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find('\n')), "added 2006 \"Arm\" 2007 \"Arm 2\"");
    ASSERT_EQ(Element("parent", "1 Arm Peg").exitCode, 0);
    ASSERT_EQ(Element("set", "1 Arm offset 10 -20 0.5").exitCode, 0);
    ASSERT_EQ(Element("set", "1 2006 type background").exitCode, 0);
    ASSERT_EQ(Element("rename", "Scene-1 Arm Hand").exitCode, 0);
    // Each run opens the project, which gives each scene's default camera a new id.
    r = Element("clone", "1 Hand");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Contains(r.out, "cloned 2006 as 2013")) << r.out;
    ASSERT_EQ(Element("note", "1 'Arm 2' 'left arm'").exitCode, 0);
    ASSERT_EQ(Element("move", "1 2007 --top").exitCode, 0);

    // The next run sees it all: placements, clone names and both trees.
    r = Element("list", "1");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "scene 1 \"Scene-1\"\n"
                     "  2002  camera  \"Camera\"\n"
                     "  2003  peg  \"Peg\"\n"
                     "  2004  drawing  \"Drawing\"\n"
                     "      offset 0 0 0  rotation 0  scale 1 1  start 1  normal\n"
                     "  2006  drawing  \"Hand(0)\"\n"
                     "      offset 10 -20 0.5  rotation 0  scale 1 1  start 1  background\n"
                     "  2007  drawing  \"Arm 2\"  note \"left arm\"\n"
                     "      offset 0 0 0  rotation 0  scale 1 1  start 1  normal\n"
                     "  2013  drawing  \"Hand(1)\"\n"
                     "      offset 10 -20 0.5  rotation 0  scale 1 1  start 1  background\n"
                     "    drawing order:\n"
                     "        2007 Arm 2\n"
                     "        2004 Drawing\n"
                     "        2006 Hand(0)\n"
                     "        2013 Hand(1)\n"
                     "    sceneplanning order:\n"
                     "        2013 Hand(1)\n"
                     "        2007 Arm 2\n"
                     "        2004 Drawing\n"
                     "        2003 Peg (disabled)\n"
                     "          2006 Hand(0)\n"
                     "        2002 Camera\n");
    r = RunQms("info " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    EXPECT_TRUE(Contains(r.out, "        2003 Peg (disabled)\n          2006 Hand(0)\n")) << r.out;
    r = RunQms("--json element list " + dir.Quoted("Robot/Robot.qmp") + " 1", dir.Path());
    EXPECT_TRUE(Contains(r.out, "{\"id\":2006,\"kind\":\"drawing\",\"kindCode\":0,\"name\":\"Hand\","
                                "\"displayName\":\"Hand(0)\",\"commonId\":2006,\"note\":\"\",\"drawings\":0,"
                                "\"frames\":0,\"placement\":{\"offset\":[10,-20,0.5]"))
        << r.out;

    // A parent goes with the rows below it only when asked.
    r = Element("delete", "1 Peg");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(r.err, "has elements below it in the sceneplanning order")) << r.err;
    r = Element("delete", "1 Peg --with-children");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Contains(r.out, "deleted 2003 2006\n"));
    EXPECT_TRUE(Contains(r.out, "  2013  drawing  \"Hand\"\n")) << r.out;
    EXPECT_FALSE(Contains(r.out, "2003  peg"));
}

TEST_F(QmsElementTest, BadArgumentsLeaveTheProjectAlone) {
    const std::string before = ReadAll(Project() / "Robot.qmp");
    struct Case {
        std::string verb, rest;
        int exitCode;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"list", "7", 1, "Unknown scene 7; 'qms scene list' shows the scenes."},
        {"list", "Nowhere", 1, "Unknown scene Nowhere"},
        {"rename", "1 2999 X", 1, "Unknown element 2999 in scene 1"},
        {"rename", "1 Ghost X", 1, "Unknown element Ghost in scene 1"},
        {"add", "1 puppet", 2, "unknown kind 'puppet'"},
        {"add", "1 drawing Peg", 1, "The new element name already exists."},
        {"add", "1 drawing ''", 1, "The name of the element cannot be empty."},
        {"add", "1 drawing ../up", 1,
         "This name contains invalid characters; please choose a different one."},
        {"rename", "1 Drawing 'a/b'", 1, "This name contains invalid characters"},
        {"rename", "1 Drawing ..", 1, "This name contains invalid characters"},
        {"rename", "1 Drawing Camera", 1, "The new element name already exists."},
        {"set", "1 Drawing name Camera", 1, "The new element name already exists."},
        {"set", "1 Peg rotation 3", 1, "only drawing, image and media elements have these fields"},
        {"set", "1 Drawing spin 3", 2, "unknown field 'spin'"},
        {"set", "1 Drawing offset 1 2", 2, "offset takes 3 values"},
        {"set", "1 Drawing type upside", 2, "type must be normal, foreground or background"},
        {"set", "1 Drawing keep-proportions yes", 2, "keep-proportions must be on or off"},
        {"set", "1 Drawing rotation nan", 2, "VALUE must be a number"},
        {"add", "1 drawing --count 0", 2, "COUNT must lie between 1 and 1000"},
        {"parent", "1 Peg Peg", 1, "an element cannot hang below itself"},
        {"move", "1 Drawing", 2, "move takes one of --before ELEMENT, --after ELEMENT or --top"},
        {"move", "1 Peg --top", 1, "The element has no row in the drawing order."},
        {"rename", "1 Drawing X --count 2", 2, "--count goes with add only"},
        {"frob", "1", 2, "unknown action 'frob'"},
        {"list", "", 2, "too few arguments"},
    };
    for (const Case& c : cases) {
        const QmsResult r = Element(c.verb, c.rest);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.verb << " " << c.rest << ": " << r.err;
        EXPECT_TRUE(Contains(r.err, c.message)) << c.verb << " " << c.rest << ": " << r.err;
    }
    EXPECT_EQ(ReadAll(Project() / "Robot.qmp"), before);
}

class QmsDumpTest : public ::testing::Test {
protected:
    ScratchFolder dir{"dump"};
};

TEST_F(QmsDumpTest, ObjectsWithOffsetsAndWhereDamageStopsTheReading) {
    ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0);
    ASSERT_EQ(RunQms("element clone " + dir.Quoted("Robot/Robot.qmp") + " 1 Drawing", dir.Path()).exitCode,
              0);
    const fs::path project = dir.Path() / "Robot" / "Robot.qmp";
    QmsResult r = RunQms("dump " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string bytes = ReadAll(project);
    EXPECT_TRUE(
        Contains(r.out, ": " + std::to_string(bytes.size()) + " bytes, version 51, kind 0 (project file)\n"));
    EXPECT_TRUE(Contains(r.out, "       0        33  header\n"));
    EXPECT_TRUE(Contains(r.out, "      33  " +
                                    std::string(8 - std::to_string(bytes.size() - 33).size(), ' ') +
                                    std::to_string(bytes.size() - 33) + "  CAnimationSetObj (bare body)\n"));
    // The clone refers to the common half that the original's body holds.
    const std::string shared = "[6] AS_CommonVectorDrawingLevel  #";
    const size_t common = r.out.find(shared);
    ASSERT_NE(common, std::string::npos) << r.out;
    const size_t at = common + shared.size();
    const std::string index = r.out.substr(at, r.out.find('\n', at) - at);
    EXPECT_TRUE(Contains(r.out, "-> #" + index + " AS_CommonVectorDrawingLevel\n")) << r.out;
    EXPECT_TRUE(Contains(r.out, "[4] AS_SPCompositionOrder"));

    // A file cut inside the scene's Sceneplanning order: what was read, the objects where
    // it stopped, and the reason.
    const size_t order = r.out.find("[4] AS_SPCompositionOrder");
    const size_t line = r.out.rfind('\n', order) + 1;
    const long cutAt = std::stol(r.out.substr(line, 8)) + 5;
    {
        std::ofstream cut(dir.Path() / "cut.qmp", std::ios::binary);
        cut.write(bytes.data(), cutAt);
    }
    r = RunQms("dump " + dir.Quoted("cut.qmp"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(r.out, "[2] CDopeSheetObj  (incomplete)")) << r.out;
    EXPECT_TRUE(Contains(r.out, "[4] AS_SPCompositionOrder  (incomplete)")) << r.out;
    EXPECT_TRUE(Contains(r.out, "[3] AS_VectorGraphicLevelObj\n")) << r.out;
    EXPECT_TRUE(Contains(r.err, "Reading stopped at offset ")) << r.err;

    // A drawing file: one typed object; one of a class this program does not know yet.
    {
        std::ofstream drawing(dir.Path() / "one.qmd", std::ios::binary);
        drawing << std::string("QuilmoorTechnologiesInc \0"
                               "51\0"
                               "\x01\0\0\0"
                               "\0",
                               33)
                << std::string("\x58\x02\x01\0\0\0\x7f", 7) << std::string("\x58\x02", 2);
        std::ofstream unknown(dir.Path() / "two.qmd", std::ios::binary);
        unknown << std::string("QuilmoorTechnologiesInc \0"
                               "51\0"
                               "\x01\0\0\0"
                               "\0",
                               33)
                << std::string("\xff\x7f", 2);
    }
    r = RunQms("dump " + dir.Quoted("one.qmd"), dir.Path());
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Contains(r.out, "kind 1 (vector drawing)"));
    EXPECT_TRUE(Contains(r.out, "      33         7  [600] DB_MemFile\n")) << r.out;
    EXPECT_TRUE(Contains(r.out, "2 bytes after the content\n"));
    r = RunQms("--json dump " + dir.Quoted("two.qmd"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(
        r.out, "{\"offset\":33,\"size\":null,\"depth\":0,\"typeId\":32767,\"class\":\"unknown type\"}"))
        << r.out;
    r = RunQms("dump " + dir.Quoted("missing.qmp"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(r.err, "Unable to read"));
}

} // namespace
