// The file container: header bytes of each kind and version, and every load failure message.

#include "core/CPersistentType.h"
#include "core/DB_Exception.h"
#include "core/DB_File.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

namespace fs = std::filesystem;

namespace {

class Body : public CPersistentObjBase {
public:
    uint32_t value = 0;
    void Read(DB_Archive& a) override { value = a.ReadU32(); }
    void Write(DB_Archive& a) override { a.WriteU32(value); }
};

class OtherBody : public Body {};

class ContainerTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        CPersistentTypeRegistry::Instance().Register<Body>(9100, "TestBody");
        CPersistentTypeRegistry::Instance().Register<OtherBody>(9102, "OtherTestBody");
        dir_ = fs::temp_directory_path() / ("qms-container-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    fs::path File(const std::vector<uint8_t>& bytes) {
        const fs::path path = dir_ / ("f" + std::to_string(n_++) + ".qmp");
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return path;
    }
    static std::vector<uint8_t> Read(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    static std::vector<uint8_t> Header(const std::string& version, uint32_t kind, bool flag) {
        std::vector<uint8_t> h;
        for (char c : std::string("QuilmoorTechnologiesInc "))
            h.push_back(static_cast<uint8_t>(c));
        h.push_back(0);
        for (char c : version)
            h.push_back(static_cast<uint8_t>(c));
        h.push_back(0);
        for (int i = 0; i < 4; ++i)
            h.push_back(static_cast<uint8_t>(kind >> (8 * i)));
        if (flag)
            h.push_back(0);
        return h;
    }
    static UT_WString LoadError(const fs::path& path, uint32_t kind = 0) {
        Body body;
        try {
            DB_FileContainer::LoadBare(UT_FilePath(path), body, kind);
        } catch (const DB_Exception& e) {
            return e.Message();
        }
        return u"(loaded)";
    }

    fs::path dir_;
    int n_ = 0;
};

TEST_F(ContainerTest, SavedHeaderIsThirtyThreeBytesThenTheBody) {
    Body body;
    body.value = 0x04030201;
    const fs::path path = dir_ / "bare.qmp";
    DB_FileContainer::SaveBare(UT_FilePath(path), body, DB_FileContainer::kProject);
    std::vector<uint8_t> expected = Header("51", 0, true);
    ASSERT_EQ(expected.size(), 33u);
    expected.insert(expected.end(), {1, 2, 3, 4});
    EXPECT_EQ(Read(path), expected);

    const fs::path typed = dir_ / "typed.qmd";
    DB_FileContainer::SaveTyped(UT_FilePath(typed), body, DB_FileContainer::kVectorDrawing);
    expected = Header("51", 1, true);
    expected.insert(expected.end(), {0x8C, 0x23, 1, 2, 3, 4});
    EXPECT_EQ(Read(typed), expected);

    Body back;
    DB_FileContainer::LoadTyped(UT_FilePath(typed), back, DB_FileContainer::kVectorDrawing);
    EXPECT_EQ(back.value, body.value);
    auto fresh = DB_FileContainer::LoadNew(UT_FilePath(typed), DB_FileContainer::kVectorDrawing);
    EXPECT_EQ(dynamic_cast<Body&>(*fresh).value, body.value);
}

TEST_F(ContainerTest, OlderVersionsHaveNoFlagByte) {
    for (const char* version : {"30", "31"}) {
        std::vector<uint8_t> bytes = Header(version, 0, false);
        bytes.insert(bytes.end(), {7, 0, 0, 0});
        Body body;
        DB_FileContainer::LoadBare(UT_FilePath(File(bytes)), body, 0);
        EXPECT_EQ(body.value, 7u) << version;
    }
    std::vector<uint8_t> v40 = Header("40", 0, true);
    v40.insert(v40.end(), {8, 0, 0, 0});
    Body body;
    DB_FileContainer::LoadBare(UT_FilePath(File(v40)), body, 0);
    EXPECT_EQ(body.value, 8u);
    // Leading digits count: "051" is version 51.
    std::vector<uint8_t> padded = Header("051", 0, true);
    padded.insert(padded.end(), {9, 0, 0, 0});
    DB_FileContainer::LoadBare(UT_FilePath(File(padded)), body, 0);
    EXPECT_EQ(body.value, 9u);
}

TEST_F(ContainerTest, LoadFailuresGiveTheSystemsMessages) {
    const auto invalid = [](const fs::path& p) {
        return UT_FromUtf8(p.string()) + u"  is not a valid Quilmoor Studio file.";
    };

    const fs::path missing = dir_ / "missing.qmp";
    EXPECT_EQ(LoadError(missing), invalid(missing));

    std::vector<uint8_t> wrongMagic = Header("51", 0, true);
    wrongMagic[0] = 'q';
    const fs::path p1 = File(wrongMagic);
    EXPECT_EQ(LoadError(p1), invalid(p1));

    const fs::path p2 = File(Header("51", 1, true));
    EXPECT_EQ(LoadError(p2, 0), invalid(p2));

    std::vector<uint8_t> truncated = Header("51", 0, true);
    truncated.resize(20);
    const fs::path p3 = File(truncated);
    EXPECT_EQ(LoadError(p3), invalid(p3));

    const fs::path p4 = File({});
    EXPECT_EQ(LoadError(p4), invalid(p4));

    for (const char* version : {"50", "52", "", "x51"}) {
        const fs::path p = File(Header(version, 0, true));
        EXPECT_EQ(LoadError(p), UT_FromUtf8(p.string()) + u" is not a supported version") << version;
    }

    const fs::path p5 = File(Header("51", 0, true));
    EXPECT_EQ(LoadError(p5), u"Reading past end of file");

    const fs::path folder = dir_ / "folder.qmp";
    fs::create_directories(folder);
    EXPECT_EQ(LoadError(folder), invalid(folder));
}

TEST_F(ContainerTest, CatalogHeaderTypeMismatchAndFullDisk) {
    Body body;
    body.value = 5;
    const fs::path catalog = dir_ / "lib.qmc";
    DB_FileContainer::SaveNew(UT_FilePath(catalog), body, DB_FileContainer::kCatalog);
    std::vector<uint8_t> expected = Header("51", 3, true);
    expected.insert(expected.end(), {0x8C, 0x23, 5, 0, 0, 0});
    EXPECT_EQ(Read(catalog), expected);

    // The file holds a Body; reading it as another class names the file.
    OtherBody other;
    try {
        DB_FileContainer::LoadTyped(UT_FilePath(catalog), other, DB_FileContainer::kCatalog);
        ADD_FAILURE() << "read as another class";
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"Unexpected data found while reading " + UT_FromUtf8(catalog.string()));
    }

    // A disk that takes no byte: the buffered data fails when it is flushed.
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    try {
        DB_FileContainer::SaveBare(UT_FilePath("/dev/full"), body, DB_FileContainer::kProject);
        ADD_FAILURE() << "wrote to a full disk";
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"Unable to write to file");
    }
}

TEST_F(ContainerTest, WritingIntoAMissingFolderFails) {
    Body body;
    EXPECT_THROW(DB_FileContainer::SaveBare(UT_FilePath(dir_ / "no" / "such.qmp"), body, 0), DB_Exception);
}

// Reads of every size, across the boundaries of the file's read buffer, give the bytes
// that were written; a read past the end fails only once the bytes run out.
TEST_F(ContainerTest, FileReadsAcrossItsBufferGiveEveryByte) {
    std::mt19937 rng(5);
    std::vector<uint8_t> bytes(300000);
    for (uint8_t& b : bytes)
        b = static_cast<uint8_t>(rng());
    const fs::path path = File(bytes);

    DB_File file;
    ASSERT_TRUE(file.Open(UT_FilePath(path), DB_File::Mode::Read));
    std::vector<uint8_t> back(bytes.size());
    size_t at = 0;
    while (at < bytes.size()) {
        // Mostly small reads, now and then one longer than the buffer.
        size_t count = rng() % 10 == 0 ? 70000 + rng() % 70000 : 1 + rng() % 9;
        count = std::min(count, bytes.size() - at);
        file.Read(back.data() + at, count);
        at += count;
        EXPECT_EQ(file.BytesLeft(), bytes.size() - at);
    }
    EXPECT_EQ(back, bytes);
    uint8_t one = 0;
    EXPECT_THROW(file.Read(&one, 1), DB_Exception);

    // Rewound, the same bytes again; a read that runs over the end names the cause.
    file.Rewind();
    std::vector<uint8_t> head(65537);
    file.Read(head.data(), head.size());
    EXPECT_TRUE(std::equal(head.begin(), head.end(), bytes.begin()));
    std::vector<uint8_t> rest(bytes.size() - head.size() + 1);
    try {
        file.Read(rest.data(), rest.size());
        ADD_FAILURE() << "read past the end";
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"Reading past end of file");
    }
}

} // namespace
