#include <OrloProjectManager/NetworkProject/Call/FieldReaders.h>

#include <gtest/gtest.h>

#include <limits>

namespace orlo::test {
namespace {

web::json::value json(const std::string& text)
{
    return web::json::value::parse(utils::toNative(text));
}

/// Reads the JSON text into a field that holds `before`.
template <class Field>
Field readOver(Field before, const std::string& text)
{
    readField(json(text), before);
    return before;
}

TEST(FieldReaders, aWideTextTakesAStringAlone)
{
    EXPECT_EQ(readOver<std::wstring>(L"kept", R"("名称 \u00e9 \ud83d\ude00")"), L"名称 é \U0001F600");
    EXPECT_EQ(readOver<std::wstring>(L"kept", R"("")"), L"");
    for (const char* other : {"7", "1.5", "true", "null", "[\"a\"]", "{\"a\":\"b\"}"})
        EXPECT_EQ(readOver<std::wstring>(L"kept", other), L"kept") << other;
}

TEST(FieldReaders, aNarrowTextIsUtf8)
{
    EXPECT_EQ(readOver<std::string>("kept", R"("名称")"), "\xE5\x90\x8D\xE7\xA7\xB0");
    EXPECT_EQ(readOver<std::string>("kept", "7"), "kept");
}

TEST(FieldReaders, halfASurrogatePairBecomesReplacements)
{
    EXPECT_EQ(readOver<std::string>("kept", R"("a\udc00b")"), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
                                                              "b");
    EXPECT_EQ(readOver<std::wstring>(L"kept", R"("a\udfff")"), L"a\xFFFD\xFFFD\xFFFD");
}

TEST(FieldReaders, aTextMayHoldANulCharacter)
{
    EXPECT_EQ(readOver<std::wstring>(L"", "\"a\\u0000b\""), std::wstring(L"a\0b", 3));
}

TEST(FieldReaders, aBooleanTakesABooleanAlone)
{
    EXPECT_TRUE(readOver(false, "true"));
    EXPECT_FALSE(readOver(true, "false"));
    for (const char* other : {"0", "1", "\"true\"", "null", "[]"})
        EXPECT_TRUE(readOver(true, other)) << other;
}

TEST(FieldReaders, a32BitIntegerTakesIntegersThatFit)
{
    EXPECT_EQ(readOver(5, "2147483647"), 2147483647);
    EXPECT_EQ(readOver(5, "-2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(readOver(5, "0"), 0);
    for (const char* other : {"2147483648", "-2147483649", "18446744073709551615", "1.0", "1e3", "\"7\"", "true", "null", "[]", "{}"})
        EXPECT_EQ(readOver(5, other), 5) << other;
}

TEST(FieldReaders, a64BitNumberTakesAnIntegerAsItIs)
{
    EXPECT_EQ(readOver<std::int64_t>(5, "9007199254740993"), 9007199254740993);
    EXPECT_EQ(readOver<std::int64_t>(5, "9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(readOver<std::int64_t>(5, "-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(FieldReaders, a64BitNumberCutsTheFractionOfADouble)
{
    EXPECT_EQ(readOver<std::int64_t>(5, "3.99"), 3);
    EXPECT_EQ(readOver<std::int64_t>(5, "-3.99"), -3);
    EXPECT_EQ(readOver<std::int64_t>(5, "1e3"), 1000);
}

TEST(FieldReaders, a64BitNumberOutOfRangeBecomesTheNearestLimit)
{
    EXPECT_EQ(readOver<std::int64_t>(5, "18446744073709551615"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readOver<std::int64_t>(5, "1e300"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readOver<std::int64_t>(5, "-1e300"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(readOver<std::int64_t>(5, "1e999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readOver<std::int64_t>(5, "9223372036854775808.0"), std::numeric_limits<std::int64_t>::max());
}

TEST(FieldReaders, a64BitNumberLeavesOtherTypesAlone)
{
    for (const char* other : {"\"7\"", "true", "null", "[]", "{}"})
        EXPECT_EQ(readOver<std::int64_t>(0, other), 0) << other;
}

TEST(FieldReaders, aFieldForIntegersAloneRefusesDoubles)
{
    std::int64_t field = 5;
    EXPECT_FALSE(readInteger(json("1.0"), field));
    EXPECT_FALSE(readInteger(json("\"7\""), field));
    EXPECT_EQ(field, 5);
    EXPECT_TRUE(readInteger(json("7000000000"), field));
    EXPECT_EQ(field, 7000000000);
}

TEST(FieldReaders, aDoubleTakesAnyNumber)
{
    EXPECT_EQ(readOver(0.5, "2.25"), 2.25);
    EXPECT_EQ(readOver(0.5, "7"), 7.0);
    EXPECT_EQ(readOver(0.5, "\"7\""), 0.5);
}

TEST(FieldReaders, aListOfTextsLeavesOtherElementsOut)
{
    const std::vector<std::wstring> kept{L"kept"};
    EXPECT_EQ(readOver(kept, R"(["a",7,null,"乙",["b"],""])"), (std::vector<std::wstring>{L"a", L"乙", L""}));
    EXPECT_EQ(readOver(kept, "[]"), std::vector<std::wstring>{});
    EXPECT_EQ(readOver(kept, "{}"), kept);
    EXPECT_EQ(readOver(kept, "\"a\""), kept);
}

TEST(FieldReaders, aListOfIntegersLeavesOtherElementsOut)
{
    EXPECT_EQ(readOver(std::vector<int>{5}, "[1,2.5,\"3\",4,3000000000]"), (std::vector<int>{1, 4}));
}

TEST(FieldReaders, aMemberIsFoundInAnObjectAlone)
{
    const web::json::value object = json(R"({"a":null,"b":7})");
    ASSERT_NE(memberOf(object, L"a"), nullptr);
    EXPECT_TRUE(memberOf(object, L"a")->is_null());
    EXPECT_EQ(memberOf(object, L"c"), nullptr);
    for (const char* other : {"[]", "7", "\"a\"", "null", "true"})
        EXPECT_EQ(memberOf(json(other), L"a"), nullptr) << other;
}

TEST(FieldReaders, readingAMemberTellsWhetherItWasThereAndFitted)
{
    const web::json::value object = json(R"({"text":"t","number":7})");
    std::wstring text = L"kept";
    EXPECT_FALSE(readMember(object, L"number", text));
    EXPECT_FALSE(readMember(object, L"missing", text));
    EXPECT_EQ(text, L"kept");
    EXPECT_TRUE(readMember(object, L"text", text));
    EXPECT_EQ(text, L"t");
}

struct Sample
{
    std::wstring name = L"default";
    int count = 3;
    std::wstring odd;
};

const RecordTable<Sample>& sampleFields()
{
    static const RecordTable<Sample> table{
        {L"name", &Sample::name},
        {L"count", &Sample::count},
        {L"odd", [](const web::json::value& value, Sample& sample) { sample.odd = value.is_null() ? L"null" : L"other"; }},
    };
    return table;
}

TEST(RecordTable, readsTheKeysItKnowsAndNoOthers)
{
    Sample sample;
    sampleFields().read(json(R"({"extra":{"deep":[1]},"count":4,"name":"n","odd":null,"Name":"x"})"), sample);
    EXPECT_EQ(sample.name, L"n");
    EXPECT_EQ(sample.count, 4);
    EXPECT_EQ(sample.odd, L"null");
}

TEST(RecordTable, keepsTheDefaultForAMissingKeyAndForAnotherType)
{
    Sample sample;
    sampleFields().read(json(R"({"count":"4","name":7})"), sample);
    sampleFields().read(json("[]"), sample);
    sampleFields().read(json("null"), sample);
    EXPECT_EQ(sample.name, L"default");
    EXPECT_EQ(sample.count, 3);
    EXPECT_EQ(sample.odd, L"");
}

TEST(RecordTable, appendsOneRecordForEachElementInOrder)
{
    std::vector<Sample> list(1);
    EXPECT_TRUE(sampleFields().readList(json(R"([{"name":"a"},7,{"name":"b"},null])"), list));
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list[1].name, L"a");
    EXPECT_EQ(list[2].name, L"default");
    EXPECT_EQ(list[3].name, L"b");
    EXPECT_EQ(list[4].name, L"default");
}

TEST(RecordTable, aValueThatIsNoArrayLeavesTheListAlone)
{
    std::vector<Sample> list(1);
    for (const char* other : {"{}", "7", "\"a\"", "null", "true"})
        EXPECT_FALSE(sampleFields().readList(json(other), list)) << other;
    EXPECT_EQ(list.size(), 1u);
}

} // namespace
} // namespace orlo::test
