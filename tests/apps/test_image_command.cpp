// qms image convert on real files: a TGA of the bottom-left origin written by hand goes to
// PNG and back, and comes back as the top-left file that the codec writes; bad input
// fails with a message.

#include "QmsRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteAll(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// An uncompressed true-colour TGA header: type 2, the size, the depth, the descriptor.
std::string TgaHeader(uint8_t width, uint8_t height, uint8_t depth, uint8_t descriptor) {
    std::string h(18, '\0');
    h[2] = 2;
    h[12] = char(width);
    h[14] = char(height);
    h[16] = char(depth);
    h[17] = char(descriptor);
    return h;
}

TEST(QmsImage, ConvertsThroughPngAndBackToTopLeftTga) {
    ScratchFolder dir("image");
    // 2 x 2, 24 bits, rows from the bottom: the bottom row first, each pixel B, G, R.
    const std::string bottomLeft = TgaHeader(2, 2, 24, 0x00) + std::string("\x01\x02\x03\x04\x05\x06"
                                                                           "\x0A\x0B\x0C\x0D\x0E\x0F",
                                                                           12);
    WriteAll(dir.Path() / "in.tga", bottomLeft);

    QmsResult r = RunQms("image convert " + dir.Quoted("in.tga") + " " + dir.Quoted("mid.png"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("(2x2)"), std::string::npos);
    EXPECT_EQ(ReadAll(dir.Path() / "mid.png").substr(1, 3), "PNG");

    r = RunQms("--json image convert " + dir.Quoted("mid.png") + " " + dir.Quoted("out.tga"), dir.Path());
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("\"width\":2"), std::string::npos);
    // Top row first now, B, G, R, A with an opaque alpha, and the top-left descriptor.
    const std::string expected = TgaHeader(2, 2, 32, 0x28) + std::string("\x0A\x0B\x0C\xFF\x0D\x0E\x0F\xFF"
                                                                         "\x01\x02\x03\xFF\x04\x05\x06\xFF",
                                                                         16);
    EXPECT_EQ(ReadAll(dir.Path() / "out.tga"), expected);
}

TEST(QmsImage, BadInputFailsWithAMessage) {
    ScratchFolder dir("image-bad");
    QmsResult r = RunQms("image convert " + dir.Quoted("none.tga") + " " + dir.Quoted("out.tga"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_FALSE(r.err.empty());
    EXPECT_FALSE(fs::exists(dir.Path() / "out.tga"));

    WriteAll(dir.Path() / "cut.tga", TgaHeader(4, 4, 32, 0x28) + std::string(10, 'x'));
    r = RunQms("image convert " + dir.Quoted("cut.tga") + " " + dir.Quoted("out.tga"), dir.Path());
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_FALSE(r.err.empty());
    EXPECT_FALSE(fs::exists(dir.Path() / "out.tga"));

    r = RunQms("image convert " + dir.Quoted("cut.tga") + " " + dir.Quoted("out.bmp"), dir.Path());
    EXPECT_EQ(r.exitCode, 2);
    r = RunQms("image frobnicate a b", dir.Path());
    EXPECT_EQ(r.exitCode, 2);
}

} // namespace
