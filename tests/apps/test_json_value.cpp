// The JSON reader that the commands share: what it accepts, and where and why it refuses
// malformed text.

#include "qms/QmsCli.h"
#include "qms/QmsJsonValue.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using Type = QmsJsonValue::Type;

std::string FailureOf(const std::string& text) {
    try {
        QmsJsonValue::Parse(text);
    } catch (const QmsFailure& failure) {
        return failure.what();
    }
    return "(accepted)";
}

TEST(QmsJson, ReadsEveryKindOfValue) {
    const QmsJsonValue doc = QmsJsonValue::Parse(
        " {\"keys\": [[0, -1.5e2], {\"x\": 0.25, \"y\": -0}], \"on\": true, \"off\": false,\r\n"
        "  \"none\": null, \"name\": \"A\\\"b\\\\c\\/\\n\\t\\u00e9\\ud83d\\ude00\", \"empty\": {}, \"list\": "
        "[]}\t");
    ASSERT_EQ(doc.type, Type::Object);
    ASSERT_EQ(doc.names.size(), 7u);
    ASSERT_EQ(doc.values.size(), 7u);
    EXPECT_EQ(doc.names[0], "keys"); // in the order of the text
    EXPECT_EQ(doc.names[6], "list");
    const QmsJsonValue* keys = doc.Find("keys");
    ASSERT_NE(keys, nullptr);
    ASSERT_EQ(keys->items.size(), 2u);
    EXPECT_EQ(QmsJsonNumbers(keys->items[0], 2, "key"), (std::vector<double>{0.0, -150.0}));
    EXPECT_EQ(QmsJsonNumber(*keys->items[1].Find("x"), "x"), 0.25);
    EXPECT_TRUE(doc.Find("on")->flag);
    EXPECT_EQ(doc.Find("off")->type, Type::Bool);
    EXPECT_FALSE(doc.Find("off")->flag);
    EXPECT_EQ(doc.Find("none")->type, Type::Null);
    EXPECT_EQ(doc.Find("name")->text, "A\"b\\c/\n\t\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(doc.Find("empty")->type, Type::Object);
    EXPECT_EQ(doc.Find("list")->type, Type::Array);
    EXPECT_EQ(doc.Find("missing"), nullptr);
    EXPECT_EQ(keys->Find("keys"), nullptr); // not an object
    // A lone surrogate becomes the replacement character.
    EXPECT_EQ(QmsJsonValue::Parse("\"\\udc00x\"").text, "\xEF\xBF\xBDx");
    EXPECT_EQ(QmsJsonValue::Parse("7").number, 7.0);

    EXPECT_THROW(QmsJsonNumber(*doc.Find("name"), "\"name\""), QmsFailure);
    EXPECT_THROW(QmsJsonNumbers(*keys, 2, "keys"), QmsFailure);
}

TEST(QmsJson, MalformedTextIsRefusedWithItsPlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "bad JSON at byte 0: unexpected end"},
        {"   ", "bad JSON at byte 3: unexpected end"},
        {"[1,]", "bad JSON at byte 3: expected a value"},
        {"[1 2]", "bad JSON at byte 3: expected ']'"},
        {"[1", "bad JSON at byte 2: unexpected end, expected ']'"},
        {"{\"a\" 1}", "bad JSON at byte 5: expected ':'"},
        {"{\"a\":1,}", "bad JSON at byte 7: expected a string"},
        {"{a:1}", "bad JSON at byte 1: expected a string"},
        {"{\"a\":}", "bad JSON at byte 5: expected a value"},
        {"{\"a\":1,\"a\":2}", "bad JSON at byte 7: duplicate member \"a\""},
        {"01", "bad JSON at byte 1: unexpected text after the end"},
        {"1.", "bad JSON at byte 2: expected digits after the decimal point"},
        {".5", "bad JSON at byte 0: expected a value"},
        {"+1", "bad JSON at byte 0: expected a value"},
        {"-", "bad JSON at byte 0: expected a value"},
        {"1e", "bad JSON at byte 2: expected digits in the exponent"},
        {"1e+", "bad JSON at byte 3: expected digits in the exponent"},
        {"NaN", "bad JSON at byte 0: expected a value"},
        {"Infinity", "bad JSON at byte 0: expected a value"},
        {"-1e999", "bad JSON at byte 0: number out of range"},
        {"0x10", "bad JSON at byte 1: unexpected text after the end"},
        {"tru", "bad JSON at byte 0: expected a value"},
        {"[true1]", "bad JSON at byte 5: expected ']'"},
        {"\"abc", "bad JSON at byte 4: unterminated string"},
        {"\"a\\", "bad JSON at byte 3: unterminated string"},
        {"\"a\\q\"", "bad JSON at byte 3: unknown escape"},
        {"\"a\nb\"", "bad JSON at byte 2: control character in a string"},
        {"\"\\u12G4\"", "bad JSON at byte 5: bad \\u escape"},
        {"\"\\u12", "bad JSON at byte 5: unterminated string"},
        {"[1]x", "bad JSON at byte 3: unexpected text after the end"},
        {"\xEF\xBB\xBF[]", "bad JSON at byte 0: expected a value"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(FailureOf(text), message) << text;

    // 64 levels are read, 65 are refused without exhausting the stack.
    EXPECT_EQ(FailureOf(std::string(65, '[') + std::string(65, ']')), "(accepted)");
    EXPECT_EQ(FailureOf(std::string(66, '[') + std::string(66, ']')),
              "bad JSON at byte 65: nested too deeply");
    EXPECT_NE(FailureOf(std::string(100000, '[')).find("nested too deeply"), std::string::npos);
}

// Damaged descriptions are refused or read, never anything else.
TEST(QmsJson, RandomDamageOnlyEverFails) {
    const std::string good =
        "{\"kind\": \"spline\", \"keys\": [[0, 1.5], {\"x\": 10, \"y\": -2e1, "
        "\"in\": [8, 3], \"out\": [12, -4]}], \"name\": \"a\\u00e9\\n\", \"on\": [true, false, null]}";
    ASSERT_EQ(FailureOf(good), "(accepted)");
    std::mt19937 rng(11);
    const std::string alphabet = "{}[],:\"\\-+.eE0123456789 tfnu";
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = good;
        for (int i = 1 + int(rng() % 3); i > 0; --i) {
            const size_t at = rng() % text.size();
            switch (rng() % 3) {
            case 0:
                text[at] = alphabet[rng() % alphabet.size()];
                break;
            case 1:
                text.erase(at, 1);
                break;
            default:
                text.insert(at, 1, char(rng()));
                break;
            }
        }
        const std::string result = FailureOf(text);
        if (result != "(accepted)") {
            ++refused;
            EXPECT_EQ(result.rfind("bad JSON at byte ", 0), 0u) << text;
        }
    }
    EXPECT_GT(refused, 1000);
}

} // namespace
