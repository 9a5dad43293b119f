#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>

#include <gtest/gtest.h>

#include <limits>

using orlo::JsonWrapper;
using orlo::JsonWriter;

TEST(JsonWriter, AnEmptyObjectIsOneToo)
{
    JsonWriter writer;
    EXPECT_EQ(writer.Done(), "{}");
}

TEST(JsonWriter, MembersStandInTheOrderInWhichTheyCome)
{
    JsonWriter writer;
    writer.Add("z", 1);
    writer.Add("a", "text");
    writer.AddBool("yes", true);
    writer.AddBool("no", false);
    EXPECT_TRUE(writer.Add("double", 0.1));
    writer.Add("z", std::numeric_limits<int>::min());
    EXPECT_EQ(writer.Done(), R"({"z":1,"a":"text","yes":true,"no":false,"double":0.1,"z":-2147483648})");
}

TEST(JsonWriter, ObjectsAndArraysNest)
{
    JsonWriter writer;
    writer.StartObject("object");
    writer.StartArray("empty");
    writer.EndArray();
    writer.StartArray("array");
    writer.StartObject();
    writer.Add("x", 1);
    writer.EndObject();
    writer.StartObject();
    writer.EndObject();
    writer.EndArray();
    writer.EndObject();
    writer.Add("behind", 2);
    EXPECT_EQ(writer.Done(), R"({"object":{"empty":[],"array":[{"x":1},{}]},"behind":2})");
}

TEST(JsonWriter, ValuesOfAWrapperAreElements)
{
    JsonWrapper object;
    object.Add("name", "轴\"1\"");
    JsonWriter writer;
    writer.StartArray("list");
    writer.Add(object);
    writer.Add(object["nothing"]);
    writer.Add(object);
    writer.EndArray();
    EXPECT_EQ(writer.Done(), R"({"list":[{"name":"轴\"1\""},null,{"name":"轴\"1\""}]})");
}

TEST(JsonWriter, TextsAreEscapedAndMendedInKeysToo)
{
    JsonWriter writer;
    writer.Add("\"\n", std::string("\\\x01\x7f\0z", 5));
    writer.Add("\xff", "\xed\xa0\x80");
    JsonWrapper read;
    std::string text;
    const std::string written = writer.Done();
    ASSERT_TRUE(read.Parse(written)) << written;
    ASSERT_TRUE(read.Get("\"\n", text));
    EXPECT_EQ(text, std::string("\\\x01\x7f\0z", 5));
    ASSERT_TRUE(read.Get("\xEF\xBF\xBD", text)) << written;
    EXPECT_EQ(text, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(JsonWriter, ANumberThatIsNotFiniteIsLeftOut)
{
    JsonWriter writer;
    EXPECT_FALSE(writer.Add("a", std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(writer.Add("b", -std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(writer.Add("c", std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(writer.Add("d", -0.0));
    EXPECT_EQ(writer.Done(), R"({"d":-0.0})");
}

TEST(JsonWriter, WritesAsAWrapperDoes)
{
    const double numbers[] = {0.1, 1e300, 5e-324, 1.7976931348623157e308, 123456789.0, 1e21, 1e-7, -2.5};
    JsonWriter writer;
    JsonWrapper wrapper;
    int i = 0;
    for (const double number : numbers) {
        writer.Add("n" + std::to_string(i), number);
        wrapper.Add("n" + std::to_string(i++), number);
    }
    EXPECT_EQ(writer.Done(), wrapper.ToString());
}
