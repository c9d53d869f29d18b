// The whole project file of a new set, laid out field by field from the format tables of
// the set, the scene, the levels, the curves, the palettes, the pens and the user colours,
// and compared with what the New flow and the first Save put on disk. A second reader
// went through every field again against the format tables alone: order, width, type id,
// default value, version rule and string encoding, and the hand-made files of the
// earlier versions below.

#include "ByteBuilder.h"
#include "FakeHosts.h"
#include "RegisterAll.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunApp.h"
#include "animationset/CSketchrunDoc.h"
#include "core/PR_Preferences.h"
#include "core/PR_UserColorSettings.h"
#include "core/UT_SettingsStore.h"
#include "core/UT_UniqueId.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// The clock every identifier of the test is made with.
constexpr UT_UniqueId::Time kClock{7, 14, 9, 30, 15, 250};

// Month, then day (5 bits), hour (4), minute (6), second (6), millisecond (10) and the
// low 20 bits of the counter, each shifted in from the right.
uint64_t IdAt(uint32_t counter) {
    uint64_t v = 7;
    v = (v << 5) | 14;
    v = (v << 4) | 9;
    v = (v << 6) | 30;
    v = (v << 6) | 15;
    v = (v << 10) | 250;
    return (v << 20) | counter;
}

struct Rgb {
    uint8_t r, g, b;
};

// The default palette: twelve fixed colours, then twelve hues 30 degrees apart in nine
// shades (saturation, value). For a hue on a multiple of 30 degrees every channel is the
// value V, the floor p = V(1 - S) or the midpoint m = V(1 - S/2), each scaled to 255 and
// rounded; the pattern of the twelve hues walks the colour wheel from red.
std::vector<Rgb> DefaultPaletteColours() {
    std::vector<Rgb> colours = {{0, 0, 0},       {255, 0, 0},     {0, 255, 0},     {0, 0, 255},
                                {243, 212, 181}, {243, 194, 145}, {255, 255, 255}, {255, 255, 0},
                                {0, 255, 255},   {255, 0, 255},   {230, 200, 170}, {217, 174, 130}};
    const double saturation[9] = {1.0, 0.75, 0.5, 0.25, 1.0, 0.75, 0.5, 1.0, 0.5};
    const double value[9] = {1.0, 1.0, 1.0, 1.0, 0.75, 0.75, 0.75, 0.5, 0.5};
    const char* wheel[12] = {"Vpp", "Vmp", "VVp", "mVp", "pVp", "pVm",
                             "pVV", "pmV", "ppV", "mpV", "VpV", "Vpm"};
    for (int shade = 0; shade < 9; ++shade) {
        const double v = value[shade], s = saturation[shade];
        const auto level = [&](char c) {
            const double x = c == 'V' ? v : c == 'p' ? v * (1.0 - s) : v * (1.0 - s / 2);
            return static_cast<uint8_t>(std::lround(x * 255.0));
        };
        for (const char* hue : wheel)
            colours.push_back({level(hue[0]), level(hue[1]), level(hue[2])});
    }
    return colours;
}

// A spline of two keys as its constructor makes it: the inner handles a third of the span
// (in whole frames) away at the key's value; the outer ones at (-1, -1). Handle ids 0 to 3.
void TwoKeySpline(ByteBuilder& b, int16_t x0, float y0, int16_t x1, float y1) {
    const int16_t third = static_cast<int16_t>((x1 - x0) / 3);
    b.U16(300);                                           // type id: CSpline
    b.U32(2);                                             // key count
    b.F32(x0).F32(y0);                                    // key 0: frame, value
    b.U16(0).U16(0);                                      // key 0: kind, index
    b.F32(static_cast<float>(x0 + third)).F32(y0).U16(1); // key 0: out-handle x, y, id
    b.F32(-1.0f).F32(-1.0f).U16(0);                       // key 0: in-handle x, y, id
    b.F32(x1).F32(y1);                                    // key 1: frame, value
    b.U16(0).U16(1);                                      // key 1: kind, index
    b.F32(-1.0f).F32(-1.0f).U16(3);                       // key 1: out-handle x, y, id
    b.F32(static_cast<float>(x1 - third)).F32(y1).U16(2); // key 1: in-handle x, y, id
}

// A path key at the origin: point, index, frame, then the two lock bytes.
void OriginKey(ByteBuilder& b, uint16_t index, double frame, bool lockedInSpace, bool lockedInTime) {
    b.F32(0).F32(0).F32(0); // x, y, z
    b.U16(index);           // index
    b.F64(frame);           // frame
    b.U8(lockedInSpace);    // locked in space
    b.U8(lockedInTime);     // locked in time
}

// Id, note, clone number and the shared common half up to its name; the caller goes on.
void LevelHead(ByteBuilder& b, uint16_t levelType, uint32_t id, uint16_t commonType,
               std::u16string_view name) {
    b.U16(levelType);  // type id of the level
    b.U32(id);         // element id
    b.Wide(u"");       // note
    b.U32(0);          // clone number
    b.U16(1);          // shared reference: a new object follows
    b.U16(commonType); // type id of the common half
    b.Wide(name);      // common: name
    b.U32(0);          // common: last clone number
    b.U32(id);         // common: common id
}

void CompositionRow(ByteBuilder& b, uint32_t id, bool enabled) {
    b.U32(id);       // element id
    b.Bool(true);    // shown
    b.U32(1);        // depth
    b.Bool(false);   // collapsed
    b.Bool(enabled); // enabled
}

// `nextElementIdAt` receives the offset of the scene's next element id.
std::vector<uint8_t> NewProjectBytes(size_t* nextElementIdAt = nullptr) {
    ByteBuilder b;
    b.Header(0); // magic, "51", kind 0 (project), header flag 0

    // The set.
    b.U32(2); // next scene id

    // Palette list: one palette, "Default", its id generated first, then one id per colour.
    b.U16(120);         // type id: CM_PaletteList
    b.U32(1);           // palette count
    b.Wide(u"Default"); // palette name
    b.U64(IdAt(0));     // palette id
    b.U32(0);           // current style
    b.U32(1);           // style count
    b.U32(0);           // style id
    b.Wide(u"Default"); // style name
    const std::vector<Rgb> colours = DefaultPaletteColours();
    b.U32(static_cast<uint32_t>(colours.size())); // entry count
    for (size_t i = 0; i < colours.size(); ++i) {
        const Rgb c = colours[i];
        b.U16(121);                                        // type id: CM_Color
        b.U32(0);                                          // gradient kind: solid
        b.U32(0);                                          // current style
        b.U32(1);                                          // style count
        b.U32(2);                                          // stop count
        b.F64(0.0).U8(c.r).U8(c.g).U8(c.b).U8(255).U32(0); // stop: position, RGBA, key
        b.F64(1.0).U8(c.r).U8(c.g).U8(c.b).U8(255).U32(1); // stop: position, RGBA, key
        const std::string name = "Color " + std::to_string(i + 1);
        b.Wide(std::u16string(name.begin(), name.end())); // name
        b.U64(IdAt(static_cast<uint32_t>(i + 1)));        // colour id
    }

    b.U32(0); // media object count
    b.U32(1); // scene count

    // Scene 1.
    b.U16(2); // type id: CDopeSheetObj
    b.U32(3); // element count

    // Camera: 10 frames, placed 12 depth fields back, where the frame of 24 horizontal
    // fields (5000 model units) fills a field of view of 30 degrees.
    LevelHead(b, 7, 2002, 9, u"Camera");
    const double depthField = ((2500.0 + 2500.0) * 0.5 / std::tan(0.261903)) / 12.0;
    b.F64(0.0);                          // position y
    b.F64(0.0);                          // position x
    b.F64(12.0 * depthField);            // position z
    b.F64(375.0);                        // height
    b.F64(500.0);                        // width
    b.Bool(true);                        // fixed: the constant below holds
    b.F64(30.0);                         // fixed field of view
    TwoKeySpline(b, 0, 30.0f, 9, 30.0f); // field of view curve
    b.U32(0);                            // start frame
    b.U32(10);                           // duration

    // Peg: 20 frames.
    LevelHead(b, 8, 2003, 10, u"Peg");
    b.U32(20);                            // common: duration
    TwoKeySpline(b, 0, 0.0f, 19, 0.0f);   // common: rotation
    TwoKeySpline(b, 0, 1.0f, 19, 1.0f);   // common: vertical scale
    TwoKeySpline(b, 0, 1.0f, 19, 1.0f);   // common: horizontal scale
    TwoKeySpline(b, 0, 0.0f, 19, 100.0f); // common: velocity
    b.U16(301);                           // common: path, type id CCatmullCurve
    b.U32(2);                             // key count
    OriginKey(b, 0, 0.0, true, true);     // key 0
    b.F32(0).F32(0).F32(0);               // key 0: tension, continuity, bias
    OriginKey(b, 1, 19.0, true, true);    // key 1
    b.F32(0).F32(0).F32(0);               // key 1: tension, continuity, bias
    b.U8(0);                              // mode byte
    b.U16(40);                            // smoothness
    b.U16(302);                           // common: pivot path, type id C3DInterpolation
    b.U32(2);                             // key count
    OriginKey(b, 0, 0.0, false, true);    // key 0
    OriginKey(b, 1, 19.0, false, true);   // key 1
    b.U8(0);                              // mode byte
    b.U16(1);                             // smoothness
    b.Bool(false);                        // common: flag
    b.F32(1.0f).F32(1.0f);                // common: base scale x, y
    b.F64(0.0);                           // common: base rotation
    b.Bool(false);                        // common: keep proportions
    b.Bool(false);                        // common: pivot on scaling
    b.U32(0);                             // start frame
    for (int i = 0; i < 6; ++i)
        b.F64(0.0); // offset y, x, z, second offset y, x, z
    b.Bool(false);  // looped
    b.U32(0);       // loop type
    b.U32(1);       // loop end
    b.U32(0);       // last field

    // Drawing: no drawings, no cells.
    LevelHead(b, 3, 2004, 6, u"Drawing");
    b.U32(1001); // common: next drawing id
    b.U32(0);    // common: drawing count
    for (int i = 0; i < 12; ++i)
        b.F32(0);  // offset, rotation pivot, scale pivot, fourth point
    b.U32(1);      // start frame
    b.F64(0.0);    // rotation
    b.F64(1.0);    // vertical scale
    b.F64(1.0);    // horizontal scale
    b.U32(0);      // element type: Normal
    b.Bool(false); // keep proportions
    b.U32(0);      // cell count

    b.U32(1);                          // scene id
    b.Wide(u"Scene-1");                // name
    b.U8(255).U8(255).U8(255).U8(255); // background colour bytes 0, 2, 1, 3
    b.Bool(true);                      // visible
    b.U32(2);                          // composition order count
    b.U16(5);                          // Drawing order, type id AS_DSCompositionOrder
    b.U32(1);                          // row count: the drawing only
    CompositionRow(b, 2004, true);
    b.U16(4); // Sceneplanning order, type id AS_SPCompositionOrder
    b.U32(3); // row count: each new level went on top
    CompositionRow(b, 2004, true);
    CompositionRow(b, 2003, false); // a new peg does not count for the frame range
    CompositionRow(b, 2002, true);
    if (nextElementIdAt)
        *nextElementIdAt = b.Bytes().size();
    b.U32(2004); // next element id (2001 went to the default camera)
    b.U32(2002); // current camera's element id

    b.U32(1); // sequence count
    b.U32(1); // sequence: scene 1

    // Pen list: five pens, smoothness not stored, no colour.
    b.U16(201); // type id: CPenStyleList
    b.U32(5);   // pen count
    const uint32_t pens[5][2] = {{5, 20}, {1, 5}, {3, 12}, {10, 10}, {10, 25}};
    for (int i = 0; i < 5; ++i) {
        b.U32(pens[i][0]); // minimum size
        b.U32(pens[i][1]); // maximum size
        b.U32(0);          // reserved
        b.U64(0);          // colour: none
        const std::string name = "Pen " + std::to_string(i + 1);
        b.Wide(std::u16string(name.begin(), name.end())); // name
    }

    // User colours: both maps empty, the sheet's four flags.
    b.U16(400);    // type id: PR_UserColorSettings
    b.U32(0);      // element colour count
    b.U32(0);      // background colour count
    b.Bool(true);  // show element name
    b.Bool(true);  // show exposure
    b.Bool(true);  // show notes
    b.Bool(false); // show thumbnails

    b.U32(12);  // frame rate
    b.U32(375); // camera height
    b.U32(500); // camera width
    return b.Bytes();
}

class ProjectFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterAllTypesForTests();
        PR_Preferences::UseStore(std::make_unique<UT_MemorySettingsStore>());
        UT_UniqueId::SetClock([] { return kClock; });
        host.newLocation = folder.Wide();
    }
    void TearDown() override {
        UT_UniqueId::SetClock(nullptr);
        PR_Preferences::ResetInstance();
    }

    TempFolder folder{"file"};
    ScriptedMessages messages;
    UT_MessageHandlerScope scope{&messages};
    FakeAppHost host;
};

std::vector<uint8_t> ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Reports the first differing offset, which a plain comparison of 12,000 bytes hides.
::testing::AssertionResult SameBytes(const std::vector<uint8_t>& expected,
                                     const std::vector<uint8_t>& actual) {
    const size_t common = std::min(expected.size(), actual.size());
    for (size_t i = 0; i < common; ++i) {
        if (expected[i] != actual[i])
            return ::testing::AssertionFailure() << "first difference at byte " << i << ": expected "
                                                 << int(expected[i]) << ", found " << int(actual[i]);
    }
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure()
               << "sizes differ: expected " << expected.size() << ", found " << actual.size();
    return ::testing::AssertionSuccess();
}

TEST_F(ProjectFileTest, NewSetIsWrittenExactlyAsTheFormatSays) {
    CSketchrunApp app(host);
    host.newName = u"Film";
    UT_UniqueId::ResetCounter(0);
    ASSERT_TRUE(app.OnFileNew());
    ASSERT_TRUE(app.OnFileSave());
    const fs::path project = folder.Path() / "Film" / "Film.qmp";
    const std::vector<uint8_t> written = ReadFile(project);
    size_t nextId = 0;
    EXPECT_TRUE(SameBytes(NewProjectBytes(&nextId), written));

    // Opened and saved again: the same bytes, but for the next element id. The default
    // camera is not stored, so opening makes it anew and it takes the next id, 2005.
    CSketchrunDoc reopened(host);
    ASSERT_TRUE(reopened.OpenPath(UT_FilePath(project)));
    ASSERT_TRUE(reopened.Save(false, true));
    std::vector<uint8_t> again = written;
    again[nextId] = 0xD5; // 2005 = 0x7D5
    EXPECT_TRUE(SameBytes(again, ReadFile(project)));
}

// A wide string of the earlier format: a byte count, then the bytes (UTF-8 at version 31,
// one byte per character at 30 and 40).
void OldWide(ByteBuilder& b, std::string_view bytes) {
    b.U32(static_cast<uint32_t>(bytes.size()));
    for (char c : bytes)
        b.U8(static_cast<uint8_t>(c));
}

// A project of the earlier format, laid out by hand: one scene with one drawing element
// "Arm" + e-acute, whose one drawing "1" has a file; no palettes, pens or colours.
std::vector<uint8_t> OldProjectBytes(int version) {
    const std::string_view arm = version == 31 ? "Arm\xC3\xA9" : "Arm\xE9";
    ByteBuilder b;
    b.Narrow("QuilmoorTechnologiesInc ").Narrow(std::to_string(version)).U32(0); // magic, version, kind
    if (version > 31)
        b.U8(0);                     // header flag
    b.U32(2);                        // next scene id
    b.U16(120).U32(0);               // palette list: no palettes
    b.U32(0);                        // media objects
    b.U32(1);                        // scene count
    b.U16(2);                        // scene
    b.U32(1);                        // element count
    b.U16(3);                        // drawing element
    b.U32(2001);                     // element id
    OldWide(b, "n");                 // note
    b.U32(0);                        // clone number
    b.U16(1).U16(6);                 // shared reference: a new common half of a drawing element
    OldWide(b, arm);                 // common: name
    b.U32(0);                        // common: last clone number
    b.U32(version > 31 ? 2001 : 77); // common id; before 32 a word that is dropped
    b.U32(1002);                     // next drawing id
    b.U32(1);                        // drawing count
    b.U32(1001);                     // key
    if (version < 32)
        OldWide(b, "dropped"); // a string ahead of the name
    OldWide(b, "1");           // drawing name
    b.U32(1001);               // drawing id
    b.Bool(false);             // locked
    b.Bool(true);              // has file
    const auto placement = [&] {
        for (int i = 0; i < 12; ++i)
            b.F32(0); // offset, pivots, fourth point
        b.U32(1).F64(0).F64(1).F64(1).U32(0).Bool(false);
    };
    const auto cells = [&] {
        b.U32(1);       // cell count
        b.U32(1001);    // drawing id
        OldWide(b, ""); // cell note
    };
    if (version > 31) {
        placement();
        cells();
    } else {
        cells();
        b.U32(5); // a word that is dropped
        placement();
    }
    b.U32(1);              // scene id
    OldWide(b, "Scene-1"); // scene name
    if (version >= 38)
        b.U8(1).U8(3).U8(2).U8(4); // background colour bytes 0, 2, 1, 3
    b.Bool(true);                  // visible
    b.U32(2);                      // composition orders
    for (uint16_t order : {5, 4})
        b.U16(order).U32(1).U32(2001).Bool(true).U32(1).Bool(false).Bool(true);
    b.U32(2001);              // next element id
    b.U32(0xFFFFFFFF);        // current camera: none
    b.U32(1).U32(1);          // sequence
    b.U16(201).U32(0);        // pen list: no pens
    b.U16(400).U32(0).U32(0); // user colours: no entries
    if (version > 31)
        b.Bool(false).Bool(true).Bool(false).Bool(true); // the sheet's flags
    b.U32(24).U32(480).U32(640);                         // frame rate, camera height, camera width
    return b.Bytes();
}

// The same project as written again in the current form. Opening gave the scene its
// default camera, which took the next element id, 2002, and is the current camera, since
// the scene has no camera element. The sheet's flags of a file before 32 read as three
// on and thumbnails off.
std::vector<uint8_t> ConvertedProjectBytes(int version) {
    ByteBuilder b;
    b.Header(0);
    b.U32(2);             // next scene id
    b.U16(120).U32(0);    // palette list: no palettes
    b.U32(0);             // media objects
    b.U32(1);             // scene count
    b.U16(2);             // scene
    b.U32(1);             // element count
    b.U16(3);             // drawing element
    b.U32(2001);          // element id
    b.Wide(u"n");         // note
    b.U32(0);             // clone number
    b.U16(1).U16(6);      // shared reference: a new common half of a drawing element
    b.Wide(u"Arm\u00e9"); // common: name
    b.U32(0);             // common: last clone number
    b.U32(2001);          // common id
    b.U32(1002);          // next drawing id
    b.U32(1);             // drawing count
    b.U32(1001);          // key
    b.Wide(u"1");         // drawing name
    b.U32(1001);          // drawing id
    b.Bool(false);        // locked
    b.Bool(true);         // has file
    for (int i = 0; i < 12; ++i)
        b.F32(0); // offset, pivots, fourth point
    b.U32(1).F64(0).F64(1).F64(1).U32(0).Bool(false);
    b.U32(1);           // cell count
    b.U32(1001);        // drawing id
    b.Wide(u"");        // cell note
    b.U32(1);           // scene id
    b.Wide(u"Scene-1"); // scene name
    if (version >= 38)
        b.U8(1).U8(3).U8(2).U8(4); // background colour bytes 0, 2, 1, 3, as read
    else
        b.U8(255).U8(255).U8(255).U8(255);
    b.Bool(true); // visible
    b.U32(2);     // composition orders
    for (uint16_t order : {5, 4})
        b.U16(order).U32(1).U32(2001).Bool(true).U32(1).Bool(false).Bool(true);
    b.U32(2002);              // next element id: the default camera took 2002
    b.U32(2002);              // current camera: the default camera
    b.U32(1).U32(1);          // sequence
    b.U16(201).U32(0);        // pen list: no pens
    b.U16(400).U32(0).U32(0); // user colours: no entries
    if (version > 31)
        b.Bool(false).Bool(true).Bool(false).Bool(true); // the sheet's flags as read
    else
        b.Bool(true).Bool(true).Bool(true).Bool(false); // the flags a file before 32 lacks
    b.U32(24).U32(480).U32(640);                        // frame rate, camera height, camera width
    return b.Bytes();
}

void WriteFile(const fs::path& path, const std::vector<uint8_t>& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TEST_F(ProjectFileTest, EarlierVersionsAreReadAndRewrittenAs51) {
    for (int version : {30, 31, 40}) {
        SCOPED_TRACE(version);
        const fs::path root = folder.Path() / ("Old" + std::to_string(version));
        const fs::path project = root / "Old.qmp";
        const fs::path drawing = root / "Scene-001" / "Drawing" / "Arm\xC3\xA9-1.qmd";
        WriteFile(project, OldProjectBytes(version));
        ByteBuilder drawingFile;
        drawingFile.Narrow("QuilmoorTechnologiesInc ").Narrow(std::to_string(version)).U32(1);
        if (version > 31)
            drawingFile.U8(0); // header flag
        drawingFile.U16(202);  // an empty vector drawing
        if (version > 31)
            drawingFile.U8(0).Bool(false); // rebuild; no layer tree
        else
            drawingFile.U32(0); // layer count
        drawingFile.U32(0);     // colour count
        WriteFile(drawing, drawingFile.Bytes());
        const auto past = fs::file_time_type::clock::now() - std::chrono::hours(24);
        fs::last_write_time(drawing, past);

        CSketchrunDoc document(host);
        ASSERT_TRUE(document.OpenPath(UT_FilePath(project)));
        CAnimationSetObj* set = document.Set();
        EXPECT_EQ(set->Version(), version);
        EXPECT_TRUE(set->IsDirty()); // so that the conversion question comes
        EXPECT_EQ(set->FrameRate(), 24u);
        CDopeSheetObj* scene = set->FindScene(1);
        ASSERT_NE(scene, nullptr);
        EXPECT_EQ(scene->Name(), u"Scene-1");
        EXPECT_EQ(scene->BackgroundColour(), version >= 38 ? (std::array<uint8_t, 4>{1, 2, 3, 4})
                                                           : (std::array<uint8_t, 4>{255, 255, 255, 255}));
        auto* level = dynamic_cast<AS_VectorGraphicLevelObj*>(scene->FindElement(2001));
        ASSERT_NE(level, nullptr);
        EXPECT_EQ(level->GetName(), u"Arm\u00e9");
        EXPECT_EQ(level->GetNote(), u"n");
        EXPECT_EQ(level->GetCommonId(), 2001u); // rebuilt from the level's id before 32
        EXPECT_EQ(level->Cells(), (std::vector<AS_CellRecord>{{1001, u""}}));
        EXPECT_EQ(level->CommonDrawing()->FindDrawing(1001)->GetName(), u"1");
        const PR_UserColorSettings& colours = set->UserColors();
        EXPECT_EQ(colours.GetFlag(PR_UserColorSettings::kShowElementName), version <= 31);
        EXPECT_EQ(colours.GetFlag(PR_UserColorSettings::kShowThumbnails), version > 31);

        // No to the conversion: the save fails and touches nothing.
        const auto before = ReadFile(project);
        messages.questions.clear();
        messages.answers = {UT_MessageHandler::kNo};
        EXPECT_FALSE(document.Save());
        ASSERT_EQ(messages.questions.size(), 1u);
        EXPECT_EQ(
            messages.questions[0],
            u"Saving the animation will convert it to Quilmoor Studio V2.0 format.\nOnce converted, you will "
            u"not be able to open this animation in V1.0.\nDo you want to continue?");
        EXPECT_EQ(ReadFile(project), before);
        EXPECT_EQ(fs::last_write_time(drawing), past);
        EXPECT_TRUE(document.IsModified());

        // Yes: the project is written as 51, and the drawing file is written again too.
        messages.answers = {UT_MessageHandler::kYes};
        ASSERT_TRUE(document.Save());
        EXPECT_FALSE(document.IsModified());
        EXPECT_EQ(set->Version(), 51);
        EXPECT_TRUE(SameBytes(ConvertedProjectBytes(version), ReadFile(project)));
        EXPECT_GT(fs::last_write_time(drawing), past);
        EXPECT_FALSE(level->CommonDrawing()->FindDrawing(1001)->HasDrawing()); // let go after the write
        for (const auto& entry : fs::recursive_directory_iterator(root))
            EXPECT_EQ(entry.path().string().find(".new"), std::string::npos) << entry.path();

        // Opened again: the current version, clean, with the same content; no question.
        CSketchrunDoc again(host);
        ASSERT_TRUE(again.OpenPath(UT_FilePath(project)));
        EXPECT_EQ(again.Set()->Version(), 51);
        EXPECT_FALSE(again.IsModified());
        auto* reread = dynamic_cast<AS_VectorGraphicLevelObj*>(again.Set()->FindScene(1)->FindElement(2001));
        ASSERT_NE(reread, nullptr);
        EXPECT_EQ(reread->GetName(), u"Arm\u00e9");
        EXPECT_EQ(reread->Cells(), level->Cells());
        EXPECT_TRUE(reread->CommonDrawing()->FindDrawing(1001)->HasFile());
    }
}

} // namespace
