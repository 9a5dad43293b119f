#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/NetworkProject/Call/FieldText.h>

#include <gtest/gtest.h>

namespace orlo {
namespace {

std::string textOf(const std::string& json, const wchar_t* key)
{
    return fieldText(web::json::value::parse(utils::toNative(json)), key);
}

TEST(FieldTextTest, givesAStringAsUtf8)
{
    EXPECT_EQ(textOf(R"({"fileUrlWithSAS":"文\u6587\"\\"})", L"fileUrlWithSAS"), "文文\"\\");
}

TEST(FieldTextTest, givesNothingForAMissingField)
{
    EXPECT_EQ(textOf("{}", L"fileUrlWithSAS"), "");
    EXPECT_EQ(textOf(R"({"FileUrlWithSAS":"x"})", L"fileUrlWithSAS"), "");
    for (const char* json : {"[]", "null", "7", R"("fileUrlWithSAS")"})
        EXPECT_EQ(textOf(json, L"fileUrlWithSAS"), "") << json;
}

TEST(FieldTextTest, givesNothingForAFieldThatIsNoText)
{
    for (const char* value : {"7", "true", "null", R"({"a":1})", "[1]"})
        EXPECT_EQ(textOf(std::string(R"({"file_key":)") + value + "}", L"file_key"), "") << value;
}

TEST(FieldTextTest, givesTheJsonOfTheSevenStructuredKeys)
{
    for (const wchar_t* key : {L"Properties", L"Representations", L"Shapes", L"mesh", L"geometry", L"standardCodeIndex", L"Matrix"}) {
        const std::string name = utils::toString(std::wstring(key));
        EXPECT_EQ(textOf("{\"" + name + R"(":{"a":[1,"文"]}})", key), R"({"a":[1,"文"]})");
        EXPECT_EQ(textOf("{\"" + name + R"(":[1, 2]})", key), "[1,2]");
        EXPECT_EQ(textOf("{\"" + name + R"(":"text"})", key), "text");
        for (const char* value : {"7", "false", "null"})
            EXPECT_EQ(textOf("{\"" + name + "\":" + value + "}", key), "") << name << value;
    }
}

TEST(FieldTextTest, knowsTheStructuredKeysExactly)
{
    EXPECT_EQ(textOf(R"({"properties":[1]})", L"properties"), "");
    EXPECT_EQ(textOf(R"({"Mesh":[1]})", L"Mesh"), "");
}

TEST(FieldTextTest, halfASurrogatePairBecomesReplacements)
{
    EXPECT_EQ(textOf(R"({"id":"\udc00"})", L"id"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(textOf(R"({"Properties":["\udc00"]})", L"Properties"), "[\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"]");
}

} // namespace
} // namespace orlo
