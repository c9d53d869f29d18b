// qms palette on a real project folder: each change goes through the history, is saved,
// and is what the next run reads; wrong arguments leave the project as it was.

#include "QmsRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The 16 hex digits that follow `before` in the output.
std::string IdAfter(const std::string& text, const std::string& before) {
    const size_t at = text.find(before);
    return at == std::string::npos ? std::string() : text.substr(at + before.size(), 16);
}

class QmsPaletteTest : public QmsRobotTest {
protected:
    QmsPaletteTest() : QmsRobotTest("palette") {}
    void SetUp() override {
        QmsRobotTest::SetUp();
        if (HasFatalFailure())
            return;
        const QmsResult r = Palette("list", "");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        defaultPalette = IdAfter(r.out, "palette ");
        ASSERT_EQ(defaultPalette.size(), 16u);
    }
    QmsResult Palette(const std::string& verb, const std::string& rest) {
        return Run("palette " + verb, rest);
    }

    std::string defaultPalette;
};

TEST_F(QmsPaletteTest, ChangesAreSavedAndSeenByTheNextRun) {
    QmsResult r = Palette("list", defaultPalette);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    // The default palette: its one flavour and 120 colours, the first of the table.
    EXPECT_EQ(r.out.substr(0, r.out.find('\n', r.out.find("Color 2"))),
              "palette " + defaultPalette + " \"Default\"\n  flavours: 1 \"Default\" (in force)\n  1  " +
                  IdAfter(r.out, "  1  ") + "  \"Color 1\"  solid #000000FF\n  2  " +
                  IdAfter(r.out, "  2  ") + "  \"Color 2\"  solid #FF0000FF");
    EXPECT_NE(r.out.find("  120  "), std::string::npos);

    r = Palette("add", "Skin --flavour Day --at 1");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string skin = IdAfter(r.out, "added palette ");
    EXPECT_EQ(r.out, "added palette " + skin + " \"Skin\" at position 1\npalette " + skin +
                         " \"Skin\"\n  flavours: 1 \"Day\" (in force)\n");
    r = Palette("add-colour", skin + " cheek '#FAC8BE'");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string cheek = IdAfter(r.out, "added colour ");
    r = Palette("add-colour", skin + " glass '#c8e6ff5a' --at 1");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string glass = IdAfter(r.out, "added colour ");
    ASSERT_EQ(Palette("set", cheek + " '#102030'").exitCode, 0);
    ASSERT_EQ(Palette("move", cheek + " 1").exitCode, 0);
    ASSERT_EQ(Palette("rename", glass + " Glass").exitCode, 0);

    // A tinted night version, which stays in force; then back to the day.
    r = Palette("tint", skin + " --rgb 0,0,100 --amount 50 --into Night");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("  1  " + cheek + "  \"cheek\"  solid #102062FF\n"), std::string::npos) << r.out;
    ASSERT_EQ(Palette("flavour", skin + " Day").exitCode, 0);

    r = Palette("list", skin);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "palette " + skin + " \"Skin\"\n  flavours: 1 \"Day\" (in force), 2 \"Night\"\n  1  " +
                         cheek + "  \"cheek\"  solid #102030FF\n  2  " + glass +
                         "  \"Glass\"  solid #C8E6FF5A\n");

    // A copy has new ids, and stands after its source.
    r = Palette("duplicate", skin + " 'Skin B'");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string copy = IdAfter(r.out, " as ");
    EXPECT_NE(copy, skin);
    EXPECT_EQ(r.out.find(cheek), std::string::npos);
    r = RunQms("--json palette list " + dir.Quoted("Robot/Robot.qmp"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const size_t skinAt = r.out.find("{\"id\":\"" + skin + "\""),
                 copyAt = r.out.find("{\"id\":\"" + copy + "\""),
                 defaultAt = r.out.find("{\"id\":\"" + defaultPalette + "\"");
    EXPECT_LT(skinAt, copyAt);
    EXPECT_LT(copyAt, defaultAt);
    EXPECT_NE(
        r.out.find(
            "{\"id\":\"" + skin +
            "\",\"name\":\"Skin\",\"flavour\":1,\"flavours\":[{\"position\":1,\"id\":0,\"name\":\"Day\"},"
            "{\"position\":2,\"id\":1,\"name\":\"Night\"}],\"colours\":[{\"position\":1,\"id\":\"" +
            cheek +
            "\",\"name\":\"cheek\",\"kind\":\"solid\",\"colour\":\"#102030FF\",\"stops\":[{\"position\":"
            "0,\"colour\":\"#102030FF\"},{\"position\":1,\"colour\":\"#102030FF\"}]}"),
        std::string::npos)
        << r.out;

    // Removing the day leaves the night in force; removing the colour and the palette.
    ASSERT_EQ(Palette("rename-flavour", copy + " 2 Dusk").exitCode, 0);
    ASSERT_EQ(Palette("remove-flavour", skin + " 1").exitCode, 0);
    ASSERT_EQ(Palette("remove", cheek).exitCode, 0);
    r = Palette("list", skin);
    EXPECT_EQ(r.out, "palette " + skin + " \"Skin\"\n  flavours: 1 \"Night\" (in force)\n  1  " + glass +
                         "  \"Glass\"  solid #C8E6FF5A\n");
    r = Palette("remove", defaultPalette);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "removed palette " + defaultPalette + " \"Default\"\n");
    r = Palette("list", "");
    EXPECT_EQ(r.out.find(defaultPalette), std::string::npos);
    EXPECT_NE(r.out.find("flavours: 1 \"Day\" (in force), 2 \"Dusk\""), std::string::npos) << r.out;
}

TEST_F(QmsPaletteTest, BadArgumentsLeaveTheProjectAlone) {
    const std::string cheek =
        IdAfter(Palette("add-colour", defaultPalette + " cheek '#FAC8BE'").out, "added colour ");
    ASSERT_EQ(cheek.size(), 16u);
    const std::string before = ReadAll(ProjectFile());
    struct Case {
        std::string verb, rest;
        int exitCode;
        std::string message;
    };
    const std::string p = defaultPalette;
    const std::vector<Case> cases = {
        {"list", "0123456789abcdef", 1, "Unknown palette id 0123456789abcdef"},
        {"set", "42 '#FFFFFF'", 1, "Unknown colour id 42"},
        {"set", "nothex '#FFFFFF'", 2, "COLOUR must be an id of up to 16 hex digits"},
        {"set", cheek + " red", 2, "a colour is written #RRGGBB or #RRGGBBAA in hex digits, not 'red'"},
        {"set", cheek + " '#FFF'", 2, "not '#FFF'"},
        {"add-colour", p + " x '#GG0000'", 2, "not '#GG0000'"},
        {"add-colour", p + " '' '#000000'", 1, "The name of the colour cannot be empty."},
        {"add-colour", p + " x '#000000' --at 123", 1, "The position must lie between 1 and 122, not 123."},
        {"rename", "7 x", 1, "Unknown palette or colour id 7"},
        {"remove", "0123456789abcdef0", 2, "ID must be an id of up to 16 hex digits"},
        {"move", cheek + " 0", 1, "The position must lie between 1 and 121, not 0."},
        {"flavour", p + " Night", 1, "Palette \"Default\" has no flavour named or numbered 'Night'."},
        {"rename-flavour", p + " 1 Default", 1, "has a flavour named \"Default\" already"},
        {"remove-flavour", p + " 1", 1, "is the only flavour of palette"},
        {"tint", p, 2, "tint takes one of --rgb, --hsv or --blend"},
        {"tint", p + " --rgb 1,2,3 --hsv 1,2,3", 2, "tint takes one of --rgb, --hsv or --blend"},
        {"tint", p + " --rgb 1,2", 2, "--rgb takes three numbers separated by commas"},
        {"tint", p + " --hsv 400,0,0", 2, "the hue offset of --hsv must lie between -360 and 360"},
        {"tint", p + " --rgb 0,0,0 --amount 120", 2, "--amount must lie between 0 and 100"},
        {"tint", p + " --blend '#000000' --alpha 4", 2, "--alpha goes with --rgb or --hsv"},
        {"tint", p + " --rgb 0,0,0 --from Night", 1, "has no flavour named or numbered 'Night'"},
        {"add", "Eyes --into x", 2, "--into does not go with add"},
        {"duplicate", "", 2, "too few arguments"},
        {"paint", "", 2, "unknown action 'paint'"},
    };
    for (const Case& c : cases) {
        const QmsResult r = Palette(c.verb, c.rest);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.verb << " " << c.rest;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.verb << " " << c.rest << ": " << r.err;
        EXPECT_TRUE(r.out.empty()) << c.verb << " " << c.rest;
    }
    EXPECT_EQ(ReadAll(ProjectFile()), before);
    EXPECT_EQ(RunQms("palette list " + dir.Quoted("Robot/Nothing.qmp"), dir.Path()).exitCode, 1);
}

} // namespace
