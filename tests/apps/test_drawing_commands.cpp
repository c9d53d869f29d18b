// qms drawing info and svg on drawing files written by the library, an older file that is
// rebuilt on reading, and files that are no drawings.

#include "QmsRun.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_FileContainer.h"
#include "qms/QmsCommands.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorDrawingObj.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

GR_StrokeDesc Line(double x0, double y0, double x1, double y1) {
    return GR_StrokeDesc(GR_BezierPath2d::Polyline({{x0, y0}, {x1, y1}}),
                         GR_LineStyle(GR_LineStyle::kPenLine, 2.0f, UT_UniqueId()));
}

// Two layers: a square cut in two by a line, one half painted; a lone line.
void WriteDrawing(const fs::path& file) {
    QmsRegisterAllTypes();
    CM_PaletteList palettes;
    palettes.AddDefaultPalette();
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access(&palettes);
    access.SetDrawing(&drawing);
    GR_Layer* square = access.AddStrokes({Line(0, 0, 100, 0), Line(100, 0, 100, 100), Line(100, 100, 0, 100),
                                          Line(0, 100, 0, 0), Line(-10, 50, 110, 50)},
                                         GR_Layer::kRectangle);
    access.BeginEdit();
    access.SetZoneColor(square->ZoneAt({50, 25}),
                        std::make_shared<GR_Color>(palettes.GetPalette(0)->GetEntry(1)->GetId()));
    access.Commit();
    access.AddStrokes({Line(200, 0, 300, 10)}, GR_Layer::kLine);
    DB_FileContainer::SaveTyped(UT_FilePath(file), drawing, DB_FileContainer::kVectorDrawing, &palettes);
}

TEST(QmsDrawing, InfoShowsLayersZonesAndColours) {
    ScratchFolder dir("drawing-info");
    WriteDrawing(dir.Path() / "d.qmd");
    QmsResult r = RunQms("drawing info " + dir.Quoted("d.qmd"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("version 51"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("2 layers"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("layer 0 at 0/0, kind 4: 9 strokes, 8 vertices, 1 components, 2 zones (1 painted)"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("layer 1 at 0/1, kind 6: 1 strokes"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"Color 2\""), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("NOT PLANAR"), std::string::npos);

    r = RunQms("--json drawing info " + dir.Quoted("d.qmd"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("\"version\":51"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"zones\":2,\"painted\":1,\"planar\":true"), std::string::npos) << r.out;
}

TEST(QmsDrawing, SvgDrawsOneLayerByIndexOrPath) {
    ScratchFolder dir("drawing-svg");
    WriteDrawing(dir.Path() / "d.qmd");
    QmsResult r = RunQms("drawing svg " + dir.Quoted("d.qmd") + " 0 " + dir.Quoted("a.svg"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::ifstream in(dir.Path() / "a.svg");
    const std::string svg{std::istreambuf_iterator<char>(in), {}};
    EXPECT_EQ(svg.rfind("<svg", 0), 0u);
    // Nine strokes with their arrows, eight vertices, two bounded zones with their labels.
    size_t arrows = 0, vertices = 0;
    for (size_t at = svg.find("marker-end"); at != std::string::npos; at = svg.find("marker-end", at + 1))
        ++arrows;
    for (size_t at = svg.find("<circle"); at != std::string::npos; at = svg.find("<circle", at + 1))
        ++vertices;
    EXPECT_EQ(arrows, 9u);
    EXPECT_EQ(vertices, 8u);
    EXPECT_NE(svg.find(">z1</text>"), std::string::npos);
    EXPECT_NE(svg.find(">z2</text>"), std::string::npos);

    r = RunQms("drawing svg " + dir.Quoted("d.qmd") + " 0/1 " + dir.Quoted("b.svg"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("layer 0/1, 1 strokes, 0 zones"), std::string::npos) << r.out;
    r = RunQms("drawing svg " + dir.Quoted("d.qmd") + " 5 " + dir.Quoted("c.svg"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("no layer 5 in a drawing of 2 layers"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(dir.Path() / "c.svg"));
}

TEST(QmsDrawing, BadFilesAndArguments) {
    ScratchFolder dir("drawing-bad");
    WriteDrawing(dir.Path() / "d.qmd");
    std::ifstream in(dir.Path() / "d.qmd", std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    std::ofstream(dir.Path() / "cut.qmd", std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    QmsResult r = RunQms("drawing info " + dir.Quoted("cut.qmd"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Reading past end of file"), std::string::npos) << r.err;
    std::ofstream(dir.Path() / "text.qmd") << "not a drawing";
    r = RunQms("drawing info " + dir.Quoted("text.qmd"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("is not a valid Quilmoor Studio file."), std::string::npos) << r.err;
    r = RunQms("drawing info " + dir.Quoted("missing.qmd"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(RunQms("drawing", dir.Path()).exitCode, 2);
    EXPECT_EQ(RunQms("drawing paint " + dir.Quoted("d.qmd"), dir.Path()).exitCode, 2);
    EXPECT_EQ(RunQms("drawing svg " + dir.Quoted("d.qmd") + " 0", dir.Path()).exitCode, 2);
}

} // namespace
