// The message formatter, the name rule, UTF conversions and unique identifiers.

#include "core/UT_Format.h"
#include "core/UT_NameRules.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <gtest/gtest.h>

TEST(Format, PositionalAndSequentialArguments) {
    EXPECT_EQ(UT_Fmt(u"Unable to rename %1$S to %2$S ", UT_WString(u"a"), UT_WString(u"b")),
              u"Unable to rename a to b ");
    EXPECT_EQ(UT_Fmt(u"%2$S before %1$S", UT_WString(u"x"), UT_WString(u"y")), u"y before x");
    EXPECT_EQ(UT_Fmt(u"%S [%d%%]", UT_WString(u"Progress"), UT_Num(42)), u"Progress [42%]");
    EXPECT_EQ(UT_Fmt(u"res%x.dll", UT_Num(0x409)), u"res409.dll");
    EXPECT_EQ(UT_Fmt(u"Pen %1$d and %s", UT_Num(3), std::string("narrow")), u"Pen 3 and narrow");
    EXPECT_EQ(UT_Fmt(u"Scene-%03d", UT_Num(7)), u"Scene-007");
    EXPECT_EQ(UT_Fmt(u"Scene-%03d", UT_Num(1000)), u"Scene-1000");
    // Specifiers without an argument stay as written.
    EXPECT_EQ(UT_Fmt(u"%3$S and %q"), u"%3$S and %q");
}

TEST(NameRule, RefusesWhatCannotBeAFileName) {
    EXPECT_EQ(UT_CheckName(u""), UT_NameProblem::kEmpty);
    EXPECT_EQ(UT_CheckName(UT_WString(261, u'a')), UT_NameProblem::kTooLong);
    EXPECT_EQ(UT_CheckName(UT_WString(260, u'a')), UT_NameProblem::kNone);
    for (char16_t c : std::u16string_view(u"\\/:*?\"<>|.\n\x01"))
        EXPECT_EQ(UT_CheckName(UT_WString(u"ab") + c), UT_NameProblem::kForbiddenCharacter) << int(c);
    EXPECT_TRUE(UT_IsValidName(u"Walk cycle 2 (final)"));
}

TEST(Utf, RoundTripAndReplacement) {
    const std::string text = "caf\xC3\xA9 \xF0\x9F\x98\x80";
    EXPECT_EQ(UT_FromUtf8(text), u"caf\u00e9 \U0001F600");
    EXPECT_EQ(UT_ToUtf8(UT_FromUtf8(text)), text);
    EXPECT_EQ(UT_FromUtf8("\xC3"), u"\uFFFD");
    EXPECT_EQ(UT_FromUtf8("a\x80z"), u"a\uFFFDz");
    EXPECT_EQ(UT_ToUtf8(u"\xD800x"), "\xEF\xBF\xBDx");
    EXPECT_EQ(UT_Trim(u" \t name \r\n"), u"name");
}

TEST(UniqueId, BitLayoutOfTimeAndCounter) {
    // month 12, day 31, hour 23, minute 59, second 59, ms 999, counter 0xABCDE
    const UT_UniqueId id = UT_UniqueId::Compose({12, 31, 23, 59, 59, 999}, 0xFABCDE);
    uint64_t v = 12;
    v = (v << 5) | 31;
    v = (v << 4) | 23; // the hour's fifth bit overlaps the day field: part of the format
    v = (v << 6) | 59;
    v = (v << 6) | 59;
    v = (v << 10) | 999;
    v = (v << 20) | 0xABCDE;
    EXPECT_EQ(id.Value(), v);
    EXPECT_EQ(UT_UniqueId::Compose({1, 1, 0, 0, 0, 0}, 0).Value(), (((1ull << 5) | 1) << 46));

    UT_UniqueId::SetClock([] { return UT_UniqueId::Time{3, 4, 5, 6, 7, 8}; });
    UT_UniqueId::ResetCounter(41);
    const UT_UniqueId first = UT_UniqueId::Generate();
    const UT_UniqueId second = UT_UniqueId::Generate();
    UT_UniqueId::SetClock(nullptr);
    EXPECT_EQ(second.Value(), first.Value() + 1);
    EXPECT_EQ(first, UT_UniqueId::Compose({3, 4, 5, 6, 7, 8}, 41));
}
