#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

using namespace orlo::utils;
using testing::ElementsAre;

namespace {

// Broken sequences with the reading that the Unicode standard recommends: one U+FFFD for each maximal subpart.
struct BrokenText
{
    std::string bytes;
    std::wstring reading;
};

const BrokenText brokenTexts[] = {
    {"a\xFFz", L"a\uFFFDz"},
    {"\x80", L"\uFFFD"},
    {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
    {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
    {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
    {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64", L"a\uFFFD\uFFFD\uFFFDb\uFFFDc\uFFFD\uFFFDd"},
    {"\xE4\xB8", L"\uFFFD"},
    {"\xF0\x9F\x98", L"\uFFFD"},
    {"\xC3", L"\uFFFD"},
};

std::wstring everyCodePoint()
{
    std::wstring text;
    for (unsigned long value = 0; value <= 0x10FFFF; ++value) {
        if (value < 0xD800 || value > 0xDFFF)
            text += static_cast<wchar_t>(value);
    }
    return text;
}

} // namespace

TEST(Text, WidensAndNarrowsChineseAndEmoji)
{
    EXPECT_EQ(toWstring(std::string("\xE7\xBB\x93\xE6\x9E\x84 \xF0\x9F\x98\x80")), L"结构 \U0001F600");
    EXPECT_EQ(toString(L"结构 \U0001F600"), "\xE7\xBB\x93\xE6\x9E\x84 \xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8ToUnicode("\xE7\xBB\x93"), L"结");
    EXPECT_EQ(UnicodeToUtf8(L"结"), "\xE7\xBB\x93");
}

TEST(Text, EmptyTextStaysEmpty)
{
    EXPECT_EQ(toWstring(std::string()), L"");
    EXPECT_EQ(toString(std::wstring()), "");
    EXPECT_TRUE(isValidUtf8(""));
}

TEST(Text, NulInsideSurvives)
{
    EXPECT_EQ(toWstring(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(toString(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Text, EveryCodePointComesBack)
{
    const std::wstring text = everyCodePoint();
    const std::string utf8 = toString(text);
    EXPECT_EQ(utf8.size(), 0x80U + 2 * 0x780U + 3 * (0x10000U - 0x800U - 0x800U) + 4 * 0x100000U);
    EXPECT_TRUE(isValidUtf8(utf8));
    EXPECT_TRUE(toWstring(utf8) == text);
}

TEST(Text, BrokenUtf8BecomesOneReplacementForEachMaximalSubpart)
{
    for (const BrokenText& broken : brokenTexts) {
        EXPECT_EQ(toWstring(broken.bytes), broken.reading) << testing::PrintToString(broken.bytes);
        EXPECT_FALSE(isValidUtf8(broken.bytes)) << testing::PrintToString(broken.bytes);
    }
}

TEST(Text, LoneSurrogatesAndValuesBeyondUnicodeBecomeReplacements)
{
    EXPECT_EQ(toString(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'b'}), "a\xEF\xBF\xBD"
                                                                                "b");
    EXPECT_EQ(toString(std::wstring{static_cast<wchar_t>(0xDFFF)}), "\xEF\xBF\xBD");
    if constexpr (sizeof(wchar_t) == 4) {
        EXPECT_EQ(toString(std::wstring{static_cast<wchar_t>(0x110000)}), "\xEF\xBF\xBD");
        EXPECT_EQ(toString(std::wstring{static_cast<wchar_t>(0xFFFFFFFF)}), "\xEF\xBF\xBD");
    }
}

TEST(Text, ValidityAgreesWithTheRoundTrip)
{
    const char thirds[] = {'\0', 'a', '\x7F', '\x80', '\x9F', '\xA0', '\xBF', '\xC0', '\xFF'};
    for (int lead = 0; lead < 256; ++lead) {
        for (int second = 0; second < 256; ++second) {
            for (const char third : thirds) {
                const std::string bytes{static_cast<char>(lead), static_cast<char>(second), third, '\x80'};
                ASSERT_EQ(isValidUtf8(bytes), toString(toWstring(bytes)) == bytes) << lead << ' ' << second << ' ' << int(third);
            }
        }
    }
}

TEST(Text, FindsABrokenByteAtAnyPlaceOfALongText)
{
    for (std::size_t place = 0; place < 40; ++place) {
        std::string bytes(40, 'x');
        EXPECT_TRUE(isValidUtf8(bytes));
        bytes[place] = '\xFF';
        EXPECT_FALSE(isValidUtf8(bytes)) << place;
        std::wstring reading(40, L'x');
        reading[place] = L'\uFFFD';
        EXPECT_EQ(toWstring(bytes), reading) << place;
    }
}

TEST(Text, NumbersBecomeDecimalDigits)
{
    EXPECT_EQ(toWstring(0), L"0");
    EXPECT_EQ(toWstring(-42), L"-42");
    EXPECT_EQ(toWstring(INT_MIN), L"-2147483648");
    EXPECT_EQ(toWstring(4294967295U), L"4294967295");
    EXPECT_EQ(toWstring(LLONG_MIN), L"-9223372036854775808");
    EXPECT_EQ(toWstring(LLONG_MAX), L"9223372036854775807");
}

TEST(Text, OneTrailingCarriageReturnIsDropped)
{
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("failed\r"), L"failed");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("failed\r\n"), L"failed");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("failed\r\r"), L"failed\r");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("fai\rled"), L"fai\rled");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("失败"), L"失败");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn("\r"), L"");
    EXPECT_EQ(toWstringTrimTrailingCarriageReturn(""), L"");
}

TEST(Text, ParsesTheNumberAtTheHead)
{
    EXPECT_EQ(toInt(L"42"), 42);
    EXPECT_EQ(toInt(L" \t-42"), -42);
    EXPECT_EQ(toInt(L"+7"), 7);
    EXPECT_EQ(toInt(L"12abc"), 12);
    EXPECT_EQ(toInt(L"0x10"), 0);
    EXPECT_EQ(toInt64(L"9007199254740993"), 9007199254740993);
}

TEST(Text, WhatIsNoNumberIsZero)
{
    for (const wchar_t* text : {L"", L" ", L"-", L"+", L"--1", L"abc", L"一", L"\uFF11", L"- 1"}) {
        EXPECT_EQ(toInt(text), 0) << toString(text);
        EXPECT_EQ(toInt64(text), 0) << toString(text);
    }
}

TEST(Text, NumbersOutOfRangeAreClamped)
{
    EXPECT_EQ(toInt(L"2147483647"), INT_MAX);
    EXPECT_EQ(toInt(L"2147483648"), INT_MAX);
    EXPECT_EQ(toInt(L"-2147483648"), INT_MIN);
    EXPECT_EQ(toInt(L"-2147483649"), INT_MIN);
    EXPECT_EQ(toInt(L"99999999999999999999999"), INT_MAX);
    EXPECT_EQ(toInt64(L"9223372036854775807"), LLONG_MAX);
    EXPECT_EQ(toInt64(L"9223372036854775808"), LLONG_MAX);
    EXPECT_EQ(toInt64(L"-9223372036854775807"), -LLONG_MAX);
    EXPECT_EQ(toInt64(L"-9223372036854775808"), LLONG_MIN);
    EXPECT_EQ(toInt64(L"-9223372036854775809"), LLONG_MIN);
    EXPECT_EQ(toInt64(std::wstring(1000, L'9')), LLONG_MAX);
}

TEST(Text, ReplacesEveryOccurrenceWithoutSearchingItsOwnWork)
{
    std::wstring text = L"/a/{id}/b/{id}";
    EXPECT_TRUE(strReplace(text, L"{id}", L"{id}{id}"));
    EXPECT_EQ(text, L"/a/{id}{id}/b/{id}{id}");
    text = L"aaa";
    EXPECT_TRUE(strReplace(text, L"aa", L"a"));
    EXPECT_EQ(text, L"aa");
    text = L"{p}";
    EXPECT_TRUE(strReplace(text, L"{p}", L""));
    EXPECT_EQ(text, L"");
}

TEST(Text, ReplacingNothingSaysSo)
{
    std::wstring text = L"/a/{id}";
    EXPECT_FALSE(strReplace(text, L"{other}", L"x"));
    EXPECT_FALSE(strReplace(text, L"", L"x"));
    EXPECT_EQ(text, L"/a/{id}");
}

TEST(Text, ReplacesWithTheTextItself)
{
    std::wstring text = L"ab";
    EXPECT_TRUE(strReplace(text, L"b", text));
    EXPECT_EQ(text, L"aab");
}

TEST(Text, LowersTheLettersOfAscii)
{
    EXPECT_EQ(LowerString(L"STRUCTURE-Ä结Z9"), L"structure-Ä结z9");
    EXPECT_EQ(LowerString(L""), L"");
}

TEST(Text, SplitsIntoOnePieceMoreThanSeparators)
{
    std::vector<std::string> pieces{"old"};
    SplitString(pieces, "a,,b,", ",");
    EXPECT_THAT(pieces, ElementsAre("a", "", "b", ""));
    SplitString(pieces, "a::b", "::");
    EXPECT_THAT(pieces, ElementsAre("a", "b"));
    SplitString(pieces, "a b", "");
    EXPECT_THAT(pieces, ElementsAre("a b"));
    SplitString(pieces, "", ",");
    EXPECT_THAT(pieces, ElementsAre(""));
}

TEST(Text, SplitsAPieceOfItsOwnResult)
{
    std::vector<std::string> pieces{"a,b"};
    SplitString(pieces, pieces[0], ",");
    EXPECT_THAT(pieces, ElementsAre("a", "b"));
}

TEST(NativeText, GoesBothWaysFromWideAndFromUtf8)
{
    const NativeString native = toNative(std::wstring(L"结构\U0001F600"));
    EXPECT_EQ(native, toNative(std::string("\xE7\xBB\x93\xE6\x9E\x84\xF0\x9F\x98\x80")));
    EXPECT_EQ(fromNative(native), L"结构\U0001F600");
    EXPECT_EQ(fromNativeToUtf8(native), "\xE7\xBB\x93\xE6\x9E\x84\xF0\x9F\x98\x80");
}

TEST(NativeText, GivesTheArgumentItselfWhereTheTypesAgree)
{
    const NativeString native = toNative(std::wstring(L"path"));
    EXPECT_EQ(static_cast<const void*>(&toNative(native)), static_cast<const void*>(&native));
}
