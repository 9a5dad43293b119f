#include <OrloNetwork/Body/JsonText.h>

#include <gtest/gtest.h>

#include <string>

namespace orlo::test {
namespace {

std::string repeated(const std::string& one, std::size_t count)
{
    std::string text = "[";
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : ",") + one;
    return text + "]";
}

std::string complaintAbout(const std::string& text)
{
    try {
        http::parseJson(text);
        return "none";
    }
    catch (const web::json::json_exception& e) {
        return e.what();
    }
}

constexpr const char* tooMany = "the answer holds too many values";

TEST(JsonTextTest, readsWhatAnAnswerHolds)
{
    const web::json::value value = http::parseJson(R"({"name":"塔","parts":[1,2.5,"a,b",{}]})");
    EXPECT_EQ(value.at("name").as_string(), "塔");
    EXPECT_EQ(value.at("parts").size(), 4U);
}

TEST(JsonTextTest, refusesMegabytesOfEmptyObjectsBeforeAnyIsMade)
{
    EXPECT_EQ(complaintAbout(repeated("{}", 3000000)), tooMany);
    EXPECT_EQ(complaintAbout(repeated("[]", 3000000)), tooMany);
}

TEST(JsonTextTest, readsAHundredThousandRecordsWithTenMembersEach)
{
    std::string record = R"({"id":"5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10","members":[)";
    for (int i = 0; i < 10; ++i)
        record += std::string(i == 0 ? "" : ",") + R"({"accountId":"account-1","role":"owner"})";
    EXPECT_EQ(complaintAbout(repeated(record + "]}", 100000)), "none");
}

TEST(JsonTextTest, readsAMillionNumbersAndRefusesNineMillions)
{
    EXPECT_EQ(complaintAbout(repeated("1", 1000000)), "none");
    EXPECT_EQ(complaintAbout(repeated("1", 9000000)), tooMany);
}

TEST(JsonTextTest, countsNothingWithinTexts)
{
    const std::string text =
        repeated(R"("a quote \", brackets [{[{[{[{ and commas ,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,")", 300000);
    EXPECT_EQ(complaintAbout(text), "none");
}

TEST(JsonTextTest, leavesWhatIsNoJsonToTheReader)
{
    for (const char* text : {"", "{", "\"", "\"\\", "[1,", "<html>"}) {
        EXPECT_NE(complaintAbout(text), "none") << text;
        EXPECT_NE(complaintAbout(text), tooMany) << text;
    }
}

} // namespace
} // namespace orlo::test
