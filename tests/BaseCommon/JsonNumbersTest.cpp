#include <BaseCommon/JsonWrapper.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

using orlo::JsonWrapper;

namespace {

std::string hexOf(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%a", number);
    return text;
}

std::string decimalOf(double number, int digits)
{
    char text[400];
    std::snprintf(text, sizeof text, "%.*e", digits, number);
    return text;
}

/// The number as the wrapper reads it, in hexadecimal digits, which tell each bit.
std::string readBits(const std::string& number)
{
    JsonWrapper document;
    double read = 0;
    if (!document.Parse("{\"v\":" + number + "}") || !document.Get("v", read))
        return "refused";
    return hexOf(read);
}

std::string written(const std::string& text)
{
    JsonWrapper document;
    return document.Parse(text) ? document.ToString() : "refused";
}

double ofBits(std::uint64_t bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// A text in JSON's grammar, of any magnitude that a double has, and beyond its least.
std::string randomNumber(std::mt19937_64& random)
{
    const auto upTo = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
    const auto digits = [&](unsigned count) {
        std::string text;
        while (count-- > 0)
            text += static_cast<char>('0' + upTo(9));
        return text;
    };
    std::string text = upTo(1) != 0 ? "-" : "";
    text += upTo(3) == 0 ? "0" : static_cast<char>('1' + upTo(8)) + digits(upTo(24));
    if (upTo(3) != 0)
        text += "." + std::string(upTo(7) == 0 ? upTo(400) : 0, '0') + digits(1 + upTo(40));
    if (upTo(2) != 0)
        text += std::string(upTo(1) != 0 ? "e" : "E") + (upTo(2) != 0 ? "-" : "+") + std::to_string(upTo(280));
    return text;
}

} // namespace

TEST(JsonNumbers, TextsThatTheFullPrecisionOfTheParserBreaksOnAreReadAsTheyStand)
{
    EXPECT_EQ(written("[1.11111111111111111111E-335]"), "[0.0]");
    EXPECT_EQ(written("[-1.11111111111111111111E-335]"), "[-0.0]");
    EXPECT_EQ(written("[0e67]"), "[0.0]");
    for (const char* exponent : {"-9223372036854775807", "-9223372036854775808", "-9223372036854775809"}) { // at the end of its own range
        EXPECT_EQ(written("[-0.0467E" + std::string(exponent) + "]"), "[-0.0]") << exponent;
        EXPECT_EQ(written("[467E" + std::string(exponent) + "]"), "[0.0]") << exponent;
    }
    for (const char* exponent : {"9223372036854775807", "9223372036854775808"})
        EXPECT_EQ(readBits("0.0467E" + std::string(exponent)), "refused") << exponent;
    EXPECT_EQ(written("[0.00e67,0E-67,-0e67]"), "[0.0,0.0,-0.0]");
    EXPECT_EQ(written("[1.11111111111111111e-2147483639]"), "[0.0]");
    EXPECT_EQ(written("[1e-99999999999999999999999999]"), "[0.0]");
    EXPECT_EQ(written("[5e-324,2.2250738585072011e-308]"), "[5e-324,2.225073858507201e-308]");
}

TEST(JsonNumbers, IntegersKeepTheirTypeUpToItsLimits)
{
    for (const char* text : {"0", "-1", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296",
                             "9223372036854775807", "9223372036854775808", "-9223372036854775808", "18446744073709551615"})
        EXPECT_EQ(written(text), text);
    EXPECT_EQ(written("18446744073709551616"), "18446744073709551616.0");
    EXPECT_EQ(written("-9223372036854775809"), "-9223372036854775808.0");
    EXPECT_EQ(written("-0"), "0");
    EXPECT_EQ(written("-0.0"), "-0.0");
    EXPECT_EQ(written("[1.0,1e0,10E-1]"), "[1.0,1.0,1.0]");
}

TEST(JsonNumbers, ADoubleIsNoInteger)
{
    JsonWrapper document;
    ASSERT_TRUE(document.Parse(R"({"d":3.0,"e":1e3,"big":18446744073709551616})"));
    int number = 7;
    long long large = 7;
    for (const char* key : {"d", "e", "big"}) {
        EXPECT_FALSE(document.Get(key, number)) << key;
        EXPECT_FALSE(document.Get(key, large)) << key;
    }
}

TEST(JsonNumbers, WhatTheGrammarDoesNotKnowIsRefused)
{
    for (const char* text : {"01",    "-01",   "00",   "1.",   "-1.",      ".5",   "-.5", "+1",  "1e",    "1e+", "1E-", "1.e5", "-",  "--1",
                             "1.5.5", "1e5.5", "0x10", "1e5x", "Infinity", "-inf", "nan", "1,5", "1_000", "1d",  "1f",  "0e",   "1 2"})
        EXPECT_EQ(written(text), "refused") << text;
}

TEST(JsonNumbers, WhatIsBeyondTheLargestDoubleIsRefused)
{
    for (const std::string& text :
         {std::string("1e999"), std::string("-1e999"), std::string("1.7976931348623159e308"), std::string("-1.7976931348623159e308"),
          std::string("0.17976931348623159e309"), std::string("1e99999999999999999999"), std::string(400, '9'), std::string(1000000, '9')})
        EXPECT_EQ(written(text), "refused") << text.substr(0, 30);
    EXPECT_EQ(readBits("1.7976931348623158e308"), "0x1.fffffffffffffp+1023");
    EXPECT_EQ(readBits("-0.17976931348623157e309"), "-0x1.fffffffffffffp+1023");
}

TEST(JsonNumbers, WhatIsBelowTheLeastDoubleIsZero)
{
    const std::string zeros(1000000, '0');
    EXPECT_EQ(written("0." + zeros + "1"), "0.0");
    EXPECT_EQ(written("-0." + zeros + "1"), "-0.0");
    EXPECT_EQ(written("0." + zeros + "1e600000"), "0.0");
    EXPECT_EQ(written("0." + zeros + "1e1000001"), "1.0");
    EXPECT_EQ(written("123.5" + zeros + "e-400"), "0.0");
    EXPECT_EQ(readBits("2.4703282292062327e-324"), "0x0p+0");
    EXPECT_EQ(readBits("2.4703282292062328e-324"), "0x0.0000000000001p-1022");
}

TEST(JsonNumbers, AMillionDigitsAreReadToTheLast)
{
    const std::string zeros(1000000, '0');
    // 2^53 + 1 lies halfway between two doubles and goes to the even one, unless a digit, however far behind, says otherwise.
    EXPECT_EQ(readBits("9007199254740993." + zeros), "0x1p+53");
    EXPECT_EQ(readBits("9007199254740993." + zeros + "1"), "0x1.0000000000001p+53");
}

TEST(JsonNumbers, AnyNumberIsReadToTheLastBit)
{
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 50000; ++i) {
        const std::string text = randomNumber(random);
        const bool isMinusNothing = text == "-0"; // an integer, which has one zero only
        ASSERT_EQ(readBits(text), hexOf(isMinusNothing ? 0.0 : std::strtod(text.c_str(), nullptr))) << text;
    }
}

TEST(JsonNumbers, NumbersHalfwayBetweenTwoDoublesAreRoundedToEven)
{
    if (LDBL_MANT_DIG <= DBL_MANT_DIG)
        GTEST_SKIP() << "the middle between two doubles needs a longer type";
    std::mt19937_64 random(19700101);
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t bits = random() % 0x7FE0000000000000U;
        // All digits of a double, and of the middle between it and the next where that is exact in a longer type.
        const long double middle = (static_cast<long double>(ofBits(bits)) + static_cast<long double>(ofBits(bits + 1))) / 2;
        char digits[1200];
        std::snprintf(digits, sizeof digits, "%.800Le", middle);
        const std::string exponent = std::strchr(digits, 'e');
        const std::string halfway(digits, std::strlen(digits) - exponent.size());
        for (const std::string& text : {halfway + exponent, halfway + "1" + exponent, halfway + std::string(300, '0') + "1" + exponent})
            ASSERT_EQ(readBits(text), hexOf(std::strtod(text.c_str(), nullptr))) << text;
        ASSERT_EQ(readBits(halfway + "1" + exponent), hexOf(ofBits(bits + 1)));
    }
}

TEST(JsonNumbers, AnyDoubleThatIsWrittenComesBack)
{
    std::mt19937_64 random(42);
    for (int i = 0; i < 50000; ++i) {
        const double number = ofBits(i % 4 == 0 ? random() & 0x800FFFFFFFFFFFFFU : random());
        JsonWrapper document;
        if (!document.Add("v", number)) {
            EXPECT_FALSE(std::isfinite(number));
            continue;
        }
        JsonWrapper again;
        double read = 0;
        ASSERT_TRUE(again.Parse(document.ToString())) << document.ToString();
        ASSERT_TRUE(again.Get("v", read));
        ASSERT_EQ(hexOf(read), hexOf(number)) << document.ToString();
        ASSERT_EQ(again.ToString(), document.ToString());
        ASSERT_EQ(readBits(decimalOf(number, 16)), hexOf(number));
    }
}

TEST(JsonNumbers, ATextThatEndsWithinACharacterIsRefused)
{
    for (const char* tail : {"\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\xE6", "\xE6\x96", "\xC3", "\xFF", "\x80"}) {
        for (const char* head : {"", "[1]", "[1] ", "\"a text that is kept on the heap", "{\"a key that is kept on the heap",
                                 "[\"escaped\\u00e9 and kept on the heap", "[1.5, -7, 12345678901234567890"}) {
            const std::string text = std::string(head) + tail;
            EXPECT_EQ(written(std::string(text.begin(), text.end())), "refused");
        }
    }
}
