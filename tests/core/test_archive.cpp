// Byte-exact encodings of the archive, shared references and the memory file.

#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_BufferFile.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "core/DB_SharedFile.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<uint8_t> Bytes(const DB_MemFile& file) {
    return {file.Data(), file.Data() + file.Size()};
}

// A small persistent class for reference tests: one u32 and an optional shared child.
class Node : public CPersistentObjBase {
public:
    uint32_t value = 0;
    std::shared_ptr<CPersistentObjBase> child;
    void Read(DB_Archive& a) override {
        value = a.ReadU32();
        child = a.ReadShared();
    }
    void Write(DB_Archive& a) override {
        a.WriteU32(value);
        a.WriteShared(child.get());
    }
};

class Unregistered : public CPersistentObjBase {
public:
    void Read(DB_Archive&) override {}
    void Write(DB_Archive& a) override { a.WriteU32(7); }
};

class ArchiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        CPersistentTypeRegistry::Instance().Register<Node>(9001, "TestNode");
    }
    DB_MemFile file;
    DB_Archive out{&file, true};
};

TEST_F(ArchiveTest, PrimitivesAreLittleEndianUnpadded) {
    out.WriteBool(true);
    out.WriteU8(0xAB);
    out.WriteU16(0x1234);
    out.WriteU32(0xDEADBEEF);
    out.WriteF32(1.0f);
    out.WriteF64(-2.0);
    out.WriteU64(0x0102030405060708ull);
    out.WriteTriple({1, 2, 0xFFFFFFFF});
    out.WriteNarrowString("51");
    const std::vector<uint8_t> expected = {
        0x01, 0xAB, 0x34, 0x12, 0xEF, 0xBE, 0xAD, 0xDE, 0x00, 0x00, 0x80, 0x3F, // bool u8 u16 u32 f32
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0,                         // f64 -2.0
        0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,                         // u64
        0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, '5', '1', 0 // triple, narrow
    };
    EXPECT_EQ(Bytes(file), expected);

    file.Rewind();
    DB_Archive in(&file, true);
    EXPECT_TRUE(in.ReadBool());
    EXPECT_EQ(in.ReadU8(), 0xAB);
    EXPECT_EQ(in.ReadU16(), 0x1234);
    EXPECT_EQ(in.ReadU32(), 0xDEADBEEFu);
    EXPECT_EQ(in.ReadF32(), 1.0f);
    EXPECT_EQ(in.ReadF64(), -2.0);
    EXPECT_EQ(in.ReadU64(), 0x0102030405060708ull);
    EXPECT_EQ(in.ReadTriple(), (std::array<uint32_t, 3>{1, 2, 0xFFFFFFFF}));
    EXPECT_EQ(in.ReadNarrowString(), "51");
    EXPECT_THROW(in.ReadU8(), DB_Exception);
}

TEST_F(ArchiveTest, AnyNonZeroByteReadsAsTrue) {
    const uint8_t data[] = {0x00, 0x02, 0xFF};
    DB_BufferFile buffer(data, sizeof data);
    DB_Archive in(&buffer, false);
    EXPECT_FALSE(in.ReadBool());
    EXPECT_TRUE(in.ReadBool());
    EXPECT_TRUE(in.ReadBool());
}

TEST_F(ArchiveTest, WideStringWrittenAsUtf16Units) {
    out.WriteWideString(u"A\u00e9");
    out.WriteWideString(u"");
    EXPECT_EQ(Bytes(file), (std::vector<uint8_t>{2, 0, 0, 0, 'A', 0, 0xE9, 0, 0, 0, 0, 0}));
}

struct WideCase {
    int32_t version;
    std::vector<uint8_t> body; // count and payload
    std::u16string expected;
};

TEST_F(ArchiveTest, WideStringReadingDependsOnVersion) {
    const std::vector<WideCase> cases = {
        {51, {2, 0, 0, 0, 'h', 0, 0x3A, 0xD8}, u"h\xD83A"},
        {41, {1, 0, 0, 0, 0xAC, 0x20}, u"\u20AC"},
        // Version 31 holds UTF-8 bytes: "é" and U+1F600 as a surrogate pair.
        {31, {6, 0, 0, 0, 0xC3, 0xA9, 0xF0, 0x9F, 0x98, 0x80}, u"\u00e9\U0001F600"},
        // A four-byte form above U+10FFFF becomes U+FFFD.
        {31, {4, 0, 0, 0, 0xF4, 0x90, 0x80, 0x80}, u"\uFFFD"},
        // Versions 30 and 40 widen each byte.
        {30, {2, 0, 0, 0, 0xC3, 0xA9}, u"\u00c3\u00a9"},
        {40, {1, 0, 0, 0, 0xE9}, u"\u00e9"},
        {51, {0, 0, 0, 0}, u""},
    };
    for (const WideCase& c : cases) {
        DB_BufferFile buffer(c.body.data(), c.body.size());
        DB_Archive in(&buffer, false);
        in.SetVersion(c.version);
        std::u16string text = u"stale";
        in.ReadWideString(text);
        EXPECT_EQ(text, c.expected) << "version " << c.version;
        EXPECT_EQ(buffer.BytesLeft(), 0u) << "version " << c.version;
    }
}

TEST_F(ArchiveTest, CountsLargerThanTheDataAreRefused) {
    const uint8_t data[] = {0xFF, 0xFF, 0xFF, 0x7F, 1, 2};
    DB_BufferFile buffer(data, sizeof data);
    DB_Archive in(&buffer, false);
    EXPECT_THROW(in.ReadWideString(), DB_Exception);
    buffer.Rewind();
    EXPECT_THROW(in.ReadBlob(), DB_Exception);
    buffer.Rewind();
    EXPECT_THROW(in.ReadCount(4), DB_Exception);
}

TEST_F(ArchiveTest, SharedReferencesWriteOneBodyThenIndices) {
    auto a = std::make_shared<Node>();
    a->value = 0xA;
    auto b = std::make_shared<Node>();
    b->value = 0xB;
    out.WriteShared(a.get());
    out.WriteShared(a.get());
    out.WriteShared(b.get());
    out.WriteShared(nullptr);
    const std::vector<uint8_t> expected = {
        1, 0, 0x29, 0x23, 0xA, 0, 0, 0, 0, 0, 0, 0, 0, 0, // tag 1, id 9001, value, null child
        0, 0, 1,    0,    0,   0,                         // back-reference to index 1
        1, 0, 0x29, 0x23, 0xB, 0, 0, 0, 0, 0, 0, 0, 0, 0, // second object
        0, 0, 0,    0,    0,   0                          // null: six zero bytes
    };
    EXPECT_EQ(Bytes(file), expected);

    file.Rewind();
    DB_Archive in(&file, true);
    auto ra = in.ReadShared();
    auto ra2 = in.ReadShared();
    auto rb = in.ReadShared();
    EXPECT_EQ(ra, ra2);
    EXPECT_NE(ra, rb);
    EXPECT_EQ(std::dynamic_pointer_cast<Node>(rb)->value, 0xBu);
    EXPECT_EQ(in.ReadShared(), nullptr);
}

TEST_F(ArchiveTest, InnerSharedObjectGetsTheLowerIndex) {
    auto outer = std::make_shared<Node>();
    auto inner = std::make_shared<Node>();
    outer->child = inner;
    out.WriteShared(outer.get());
    out.WriteShared(inner.get()); // inner ended first: index 1
    out.WriteShared(outer.get()); // outer: index 2
    const std::vector<uint8_t> bytes = Bytes(file);
    const size_t tail = bytes.size() - 12;
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + tail, bytes.end()),
              (std::vector<uint8_t>{0, 0, 1, 0, 0, 0, 0, 0, 2, 0, 0, 0}));

    file.Rewind();
    DB_Archive in(&file, true);
    auto rOuter = std::dynamic_pointer_cast<Node>(in.ReadShared());
    EXPECT_EQ(in.ReadShared(), rOuter->child);
    EXPECT_EQ(in.ReadShared(), rOuter);
}

TEST_F(ArchiveTest, BackReferenceBeyondTheTableReadsAsNull) {
    const uint8_t data[] = {0, 0, 9, 0, 0, 0};
    DB_BufferFile buffer(data, sizeof data);
    DB_Archive in(&buffer, false);
    EXPECT_EQ(in.ReadShared(), nullptr);
}

TEST_F(ArchiveTest, NestedArchiveRestartsItsTable) {
    auto a = std::make_shared<Node>();
    out.WriteShared(a.get());
    {
        DB_Archive nested(out);
        auto b = std::make_shared<Node>();
        nested.WriteShared(b.get());
        nested.WriteShared(b.get());
    }
    out.WriteShared(a.get());
    const std::vector<uint8_t> bytes = Bytes(file);
    // The nested back-reference names index 1 of its own table, the outer one index 1 of the outer.
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 28, bytes.begin() + 34),
              (std::vector<uint8_t>{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(std::vector<uint8_t>(bytes.end() - 6, bytes.end()), (std::vector<uint8_t>{0, 0, 1, 0, 0, 0}));
}

TEST_F(ArchiveTest, TypedObjectsCheckTheirId) {
    Node node;
    node.value = 5;
    EXPECT_TRUE(out.WriteTyped(node));
    Unregistered stranger;
    const uint32_t before = file.Size();
    EXPECT_FALSE(out.WriteTyped(stranger));
    EXPECT_EQ(file.Size(), before);

    file.Rewind();
    DB_Archive in(&file, true);
    DB_MemFile wrongClass;
    try {
        in.ReadTyped(wrongClass);
        FAIL() << "a node read as a memory file";
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"Unexpected data found while reading <memory file>");
    }

    in.Rewind();
    auto fresh = in.ReadNewAs<Node>();
    EXPECT_EQ(fresh->value, 5u);

    const uint8_t unknown[] = {0x34, 0x12};
    DB_BufferFile buffer(unknown, sizeof unknown);
    DB_Archive in2(&buffer, false);
    EXPECT_THROW(in2.ReadNew(), DB_Exception);
}

TEST_F(ArchiveTest, MemFileGrowthAndPersistentForm) {
    DB_MemFile grow;
    std::vector<uint8_t> block(5000, 1);
    grow.Write(block.data(), block.size());
    EXPECT_EQ(grow.Capacity(), 5000u);
    grow.Write(block.data(), 1);
    EXPECT_EQ(grow.Capacity(), 10000u);

    DB_MemFile small;
    small.Write(block.data(), 10);
    EXPECT_EQ(small.Capacity(), 4096u);

    DB_MemFile empty;
    out.WriteTyped(empty);
    EXPECT_EQ(Bytes(file), (std::vector<uint8_t>{0x58, 0x02, 0, 0, 0, 0})); // id 600, count 0

    DB_MemFile payload;
    const uint8_t abc[] = {'a', 'b', 'c'};
    payload.Write(abc, 3);
    out.WriteTyped(payload);
    file.Rewind();
    DB_Archive in(&file, true);
    in.ReadNew();
    auto copy = in.ReadNewAs<DB_MemFile>();
    EXPECT_EQ(Bytes(*copy), (std::vector<uint8_t>{'a', 'b', 'c'}));
    EXPECT_EQ(copy->Capacity(), 3u);
    EXPECT_THROW(
        {
            uint8_t four[4];
            copy->Read(four, 4);
        },
        DB_Exception);
}

TEST_F(ArchiveTest, StreamErrorsCarryTheirMessages) {
    const uint8_t data[] = {1};
    DB_BufferFile buffer(data, sizeof data);
    uint8_t two[2];
    try {
        buffer.Read(two, 2);
        FAIL();
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"Read paste end of file");
    }
    DB_MemFile mem;
    try {
        mem.Read(two, 1);
        FAIL();
    } catch (const DB_Exception& e) {
        EXPECT_EQ(e.Message(), u"End of file on mem file");
    }
}

TEST_F(ArchiveTest, NarrowStringIntoACallersBuffer) {
    const uint8_t data[] = {'5', '1', 0, 'x', 'y', 'z'};
    DB_BufferFile buffer(data, sizeof data);
    DB_Archive in(&buffer, false);
    char text[3] = {};
    EXPECT_TRUE(in.ReadNarrowString(text, 3));
    EXPECT_STREQ(text, "51");
    EXPECT_FALSE(in.ReadNarrowString(text, 2)); // the capacity runs out before a NUL
    EXPECT_EQ(buffer.BytesLeft(), 1u);
    EXPECT_FALSE(in.ReadNarrowString(text, 0));
    EXPECT_EQ(buffer.BytesLeft(), 1u);
    // A buffer file is read only: writing leaves it as it was.
    buffer.Write("abc", 3);
    EXPECT_EQ(buffer.BytesLeft(), 1u);
}

TEST_F(ArchiveTest, SharedFileCarriesAClipboardBlock) {
    DB_SharedFile source;
    EXPECT_EQ(source.GetName(), u"SharedStream");
    {
        DB_Archive a(&source, true);
        Node node;
        node.value = 0xA1B2C3D4;
        a.WriteTyped(node);
    }
    const std::optional<std::vector<uint8_t>> block = source.Export();
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(*block, (std::vector<uint8_t>{0x29, 0x23, 0xD4, 0xC3, 0xB2, 0xA1, 0, 0, 0, 0, 0, 0}));

    DB_SharedFile target;
    target.Import(*block);
    DB_Archive in(&target, true);
    EXPECT_EQ(in.ReadNewAs<Node>()->value, 0xA1B2C3D4u);
    EXPECT_EQ(target.Export(), block); // export rewinds: the same bytes again
}

TEST_F(ArchiveTest, DeeplyNestedDataIsRefused) {
    // Each node's child is another typed node: far more nesting than any real file has.
    DB_MemFile deep;
    DB_Archive a(&deep, true);
    for (int i = 0; i < 1000; ++i) {
        a.WriteU16(1);
        a.WriteU16(9001);
        a.WriteU32(static_cast<uint32_t>(i));
    }
    deep.Rewind();
    DB_Archive in(&deep, true);
    EXPECT_THROW(in.ReadShared(), DB_Exception);
}

} // namespace
