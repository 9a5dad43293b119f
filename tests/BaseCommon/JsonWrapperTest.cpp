#include <BaseCommon/JsonWrapper.h>

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <climits>
#include <cmath>
#include <limits>

using orlo::JsonWrapper;

namespace {

JsonWrapper parsed(const std::string& text)
{
    JsonWrapper document;
    EXPECT_TRUE(document.Parse(text)) << text;
    return document;
}

std::string nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

} // namespace

TEST(JsonWrapper, WritesMembersInTheOrderOfAdding)
{
    JsonWrapper document;
    EXPECT_TRUE(document.Add("z", std::string("text")));
    EXPECT_TRUE(document.Add("a", 1));
    EXPECT_TRUE(document.Add("m", 2.5));
    EXPECT_TRUE(document.Add("b", 9007199254740993LL));
    EXPECT_TRUE(document.AddBool("y", true));
    EXPECT_TRUE(document.AddEmptySubArray("c"));
    EXPECT_TRUE(document.AddEmptySubObject("d"));
    EXPECT_TRUE(document.Add("l", "literal"));
    EXPECT_EQ(document.ToString(), R"({"z":"text","a":1,"m":2.5,"b":9007199254740993,"y":true,"c":[],"d":{},"l":"literal"})");
}

TEST(JsonWrapper, KeepsTheOrderOfAParsedDocument)
{
    EXPECT_EQ(parsed(R"( { "b" : 1 , "a" : [ 1 , { "z" : null , "c" : "x" } ] } )").ToString(), R"({"b":1,"a":[1,{"z":null,"c":"x"}]})");
}

TEST(JsonWrapper, AddingANameAgainReplacesItInItsPlace)
{
    JsonWrapper document = parsed(R"({"a":1,"b":2})");
    EXPECT_TRUE(document.Add("a", "new"));
    EXPECT_EQ(document.ToString(), R"({"a":"new","b":2})");
}

TEST(JsonWrapper, ANewDocumentIsNull)
{
    const JsonWrapper document;
    EXPECT_EQ(document.ToString(), "null");
    EXPECT_FALSE(document.IsArray());
    EXPECT_EQ(document.GetArraySize(), 0);
    EXPECT_NE(document.GetAllocator(), nullptr);
}

TEST(JsonWrapper, TheFirstAddDecidesWhatANullBecomes)
{
    JsonWrapper array;
    EXPECT_TRUE(array.Add(parsed("1")));
    EXPECT_TRUE(array.Add(parsed("\"two\"")));
    EXPECT_EQ(array.ToString(), R"([1,"two"])");
    EXPECT_FALSE(array.Add("key", 1));
    JsonWrapper object;
    EXPECT_TRUE(object.Add("key", 1));
    EXPECT_FALSE(object.Add(parsed("1")));
    EXPECT_EQ(object.ToString(), R"({"key":1})");
}

TEST(JsonWrapper, AddToAScalarIsRefused)
{
    JsonWrapper number = parsed("7");
    EXPECT_FALSE(number.Add("a", 1));
    EXPECT_FALSE(number.Add("a", "text"));
    EXPECT_FALSE(number.Add("a", parsed("1")));
    EXPECT_FALSE(number.Add(parsed("1")));
    EXPECT_FALSE(number.AddBool("a", true));
    EXPECT_FALSE(number.AddEmptySubArray("a"));
    EXPECT_FALSE(number.AddEmptySubObject("a"));
    EXPECT_EQ(number.ToString(), "7");
}

TEST(JsonWrapper, DoublesThatJsonCannotHoldAreRefused)
{
    JsonWrapper document;
    EXPECT_FALSE(document.Add("a", std::nan("")));
    EXPECT_FALSE(document.Add("a", std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(document.Add("a", -std::numeric_limits<double>::infinity()));
    EXPECT_EQ(document.ToString(), "null");
}

TEST(JsonWrapper, DoublesComeBackExactly)
{
    for (const double value : {0.1, -0.0, 1.0 / 3, 3000.0, 5e-324, 1.7976931348623157e308, 123456789.123456789}) {
        JsonWrapper document;
        EXPECT_TRUE(document.Add("v", value));
        double read = 7;
        EXPECT_TRUE(parsed(document.ToString()).Get("v", read));
        EXPECT_EQ(read, value);
        EXPECT_EQ(std::signbit(read), std::signbit(value));
    }
}

TEST(JsonWrapper, ReadsEachTypeAsItself)
{
    const JsonWrapper document = parsed(R"({"i":-5,"l":9223372036854775807,"d":1.5,"s":"文字😀","b":true,"o":{"x":1},"n":null})");
    int number = 0;
    long long large = 0;
    double fraction = 0;
    std::string text;
    bool flag = false;
    JsonWrapper object;
    EXPECT_TRUE(document.Get("i", number));
    EXPECT_EQ(number, -5);
    EXPECT_TRUE(document.Get("l", large));
    EXPECT_EQ(large, LLONG_MAX);
    EXPECT_TRUE(document.Get("i", large));
    EXPECT_EQ(large, -5);
    EXPECT_TRUE(document.Get("d", fraction));
    EXPECT_EQ(fraction, 1.5);
    EXPECT_TRUE(document.Get("i", fraction));
    EXPECT_EQ(fraction, -5.0);
    EXPECT_TRUE(document.Get("s", text));
    EXPECT_EQ(text, "文字😀");
    EXPECT_TRUE(document.GetBool("b", flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(document.Get("o", object));
    EXPECT_EQ(object.ToString(), R"({"x":1})");
    EXPECT_TRUE(document.Get("n", object));
    EXPECT_EQ(object.ToString(), "null");
}

TEST(JsonWrapper, AMissingMemberOrAnotherTypeLeavesTheValueAlone)
{
    const JsonWrapper document = parsed(R"({"d":1.5,"s":"5","l":2147483648,"u":9223372036854775808,"n":null,"a":[]})");
    int number = 1;
    long long large = 2;
    double fraction = 3;
    std::string text = "four";
    bool flag = true;
    JsonWrapper object = parsed("5");
    for (const char* key : {"d", "s", "l", "u", "n", "a", "none"})
        EXPECT_FALSE(document.Get(key, number)) << key;
    for (const char* key : {"d", "s", "u", "n", "a", "none"})
        EXPECT_FALSE(document.Get(key, large)) << key;
    for (const char* key : {"s", "n", "a", "none"})
        EXPECT_FALSE(document.Get(key, fraction)) << key;
    for (const char* key : {"d", "l", "n", "a", "none"})
        EXPECT_FALSE(document.Get(key, text)) << key;
    for (const char* key : {"d", "s", "n", "a", "none"})
        EXPECT_FALSE(document.GetBool(key, flag)) << key;
    EXPECT_FALSE(document.Get("none", object));
    EXPECT_FALSE(document.GetValueAsString("none", text));
    EXPECT_EQ(number, 1);
    EXPECT_EQ(large, 2);
    EXPECT_EQ(fraction, 3);
    EXPECT_EQ(text, "four");
    EXPECT_TRUE(flag);
    EXPECT_EQ(object.ToString(), "5");
}

TEST(JsonWrapper, ReadsAnyMemberAsText)
{
    const JsonWrapper document = parsed(R"({"s":"a\"b","i":12,"d":1.5,"b":false,"n":null,"o":{"x":[1,"y"]}})");
    const std::pair<const char*, const char*> rows[] = {{"s", "a\"b"},  {"i", "12"},   {"d", "1.5"},
                                                        {"b", "false"}, {"n", "null"}, {"o", R"({"x":[1,"y"]})"}};
    for (const auto& [key, expected] : rows) {
        std::string text;
        EXPECT_TRUE(document.GetValueAsString(key, text)) << key;
        EXPECT_EQ(text, expected);
    }
}

TEST(JsonWrapper, WalksArrays)
{
    const JsonWrapper document = parsed(R"({"list":[{"id":"a"},{"id":"b"}]})");
    const JsonWrapper list = document["list"];
    EXPECT_TRUE(list.IsArray());
    ASSERT_EQ(list.GetArraySize(), 2);
    JsonWrapper element;
    std::string id;
    EXPECT_TRUE(list.Get(1, element));
    EXPECT_TRUE(element.Get("id", id));
    EXPECT_EQ(id, "b");
    EXPECT_FALSE(list.Get(2, element));
    EXPECT_FALSE(list.Get(-1, element));
    EXPECT_FALSE(list.Get(INT_MIN, element));
    EXPECT_FALSE(document.Get(0, element));
    EXPECT_EQ(element.ToString(), R"({"id":"b"})");
    EXPECT_EQ(document.GetArraySize(), 0);
}

TEST(JsonWrapper, TellsItsMembers)
{
    const JsonWrapper document = parsed(R"({"a":null,"":1})");
    EXPECT_TRUE(document.HasMember("a"));
    EXPECT_TRUE(document.HasMember(""));
    EXPECT_FALSE(document.HasMember("b"));
    EXPECT_FALSE(parsed("[1]").HasMember("a"));
    EXPECT_FALSE(parsed("null").HasMember("a"));
}

TEST(JsonWrapper, AMissingMemberIsAWrapperOfNothing)
{
    JsonWrapper document = parsed(R"({"a":{}})");
    JsonWrapper nothing = document["none"]["deeper"];
    EXPECT_EQ(nothing.ToString(), "null");
    EXPECT_EQ(nothing.GetAllocator(), nullptr);
    EXPECT_FALSE(nothing.IsArray());
    EXPECT_FALSE(nothing.HasMember("a"));
    EXPECT_FALSE(nothing.Add("a", 1));
    EXPECT_FALSE(nothing.Add("a", "text"));
    EXPECT_FALSE(nothing.Add("a", document));
    EXPECT_FALSE(nothing.Add(document));
    EXPECT_FALSE(nothing.AddEmptySubArray("a"));
    EXPECT_FALSE(nothing.Parse("1"));
    EXPECT_TRUE(document.Add("copy", nothing));
    EXPECT_EQ(document.ToString(), R"({"a":{},"copy":null})");
    EXPECT_EQ(parsed("[]")["a"].ToString(), "null");
    EXPECT_FALSE(JsonWrapper(nullptr).Parse("1"));
}

TEST(JsonWrapper, MembersAreChangedInPlace)
{
    JsonWrapper document;
    document.AddEmptySubObject("data");
    JsonWrapper data = document["data"];
    EXPECT_TRUE(data.AddEmptySubArray("lines"));
    JsonWrapper lines = data["lines"];
    JsonWrapper line(document.GetAllocator(), rapidjson::kObjectType);
    EXPECT_TRUE(line.Add("id", "1"));
    EXPECT_TRUE(lines.Add(line));
    EXPECT_EQ(document.ToString(), R"({"data":{"lines":[{"id":"1"}]}})");
}

TEST(JsonWrapper, AWrapperStaysGoodWhileTheDocumentGrowsAroundIt)
{
    JsonWrapper document;
    document.AddEmptySubArray("lines");
    JsonWrapper lines = document["lines"];
    for (int i = 0; i < 100; ++i)
        document.Add("key" + std::to_string(i), i);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(lines.Add(parsed(std::to_string(i))));
    JsonWrapper first;
    EXPECT_TRUE(lines.Get(0, first));
    EXPECT_EQ(document["lines"].GetArraySize(), 100);
    EXPECT_EQ(first.ToString(), "0");
}

TEST(JsonWrapper, AWrapperKeepsItsDocumentAlive)
{
    JsonWrapper member;
    {
        const JsonWrapper document = parsed(R"({"a":{"b":"still here"}})");
        member = document["a"];
    }
    EXPECT_EQ(member.ToString(), R"({"b":"still here"})");
}

TEST(JsonWrapper, AWrapperOfWhatIsGoneIsNothing)
{
    JsonWrapper document = parsed(R"({"a":{"b":[1,2,3]}})");
    JsonWrapper list = document["a"]["b"];
    EXPECT_TRUE(document.Add("a", 1));
    EXPECT_EQ(list.ToString(), "null");
    EXPECT_FALSE(list.Add(parsed("4")));
    EXPECT_TRUE(document.Parse("[]"));
    EXPECT_EQ(list.GetArraySize(), 0);
}

TEST(JsonWrapper, AnAddedWrapperIsCopied)
{
    JsonWrapper document;
    JsonWrapper point(document.GetAllocator(), rapidjson::kObjectType);
    point.Add("x", 1);
    EXPECT_TRUE(document.Add("first", point));
    point.Add("x", 2);
    EXPECT_TRUE(document.Add("second", point));
    EXPECT_EQ(document.ToString(), R"({"first":{"x":1},"second":{"x":2}})");
}

TEST(JsonWrapper, AnRvalueOfTheSameMemoryIsMovedIn)
{
    JsonWrapper document;
    JsonWrapper point(document.GetAllocator(), rapidjson::kObjectType);
    point.Add("x", 1);
    JsonWrapper view = point["x"];
    EXPECT_TRUE(document.Add("point", std::move(point)));
    EXPECT_EQ(document.ToString(), R"({"point":{"x":1}})");
    EXPECT_EQ(view.ToString(), "null");
}

TEST(JsonWrapper, ARefusedRvalueKeepsItsValue)
{
    JsonWrapper document = parsed("[]");
    JsonWrapper point(document.GetAllocator(), rapidjson::kObjectType);
    point.Add("x", 1);
    EXPECT_FALSE(document.Add("point", std::move(point)));
    EXPECT_EQ(point.ToString(), R"({"x":1})"); // NOLINT(bugprone-use-after-move)
}

TEST(JsonWrapper, AnRvalueOfAnotherDocumentIsCopiedWithItsText)
{
    JsonWrapper document;
    {
        JsonWrapper other = parsed(R"({"name":"a text that is too long to be kept inside of a value"})");
        EXPECT_TRUE(document.Add("other", std::move(other)));
    }
    EXPECT_EQ(document.ToString(), R"({"other":{"name":"a text that is too long to be kept inside of a value"}})");
}

TEST(JsonWrapper, AMemberGivenAsRvalueStaysInItsDocument)
{
    JsonWrapper document = parsed(R"({"a":{"x":1}})");
    EXPECT_TRUE(document.Add("b", document["a"]));
    EXPECT_EQ(document.ToString(), R"({"a":{"x":1},"b":{"x":1}})");
}

TEST(JsonWrapper, ADocumentAddedToItselfIsCopied)
{
    JsonWrapper document = parsed(R"({"a":{}})");
    EXPECT_TRUE(document["a"].Add("whole", document));
    EXPECT_EQ(document.ToString(), R"({"a":{"whole":{"a":{}}}})");
    EXPECT_TRUE(document.Add("again", std::move(document)));
    EXPECT_EQ(document.ToString(), // NOLINT(bugprone-use-after-move)
              R"({"a":{"whole":{"a":{}}},"again":{"a":{"whole":{"a":{}}}}})");
}

TEST(JsonWrapper, WrapsTheCallersDocument)
{
    rapidjson::Document document;
    JsonWrapper wrapper(&document);
    EXPECT_TRUE(wrapper.Add("a", 1));
    ASSERT_TRUE(document.IsObject());
    EXPECT_EQ(document["a"].GetInt(), 1);
    EXPECT_EQ(wrapper.GetAllocator(), &document.GetAllocator());
    EXPECT_TRUE(wrapper.Parse("[true]"));
    EXPECT_TRUE(document[0].GetBool());
}

TEST(JsonWrapper, WritesANumberOfTheCallersThatJsonCannotHoldAsNull)
{
    rapidjson::Document document;
    document.SetDouble(std::nan(""));
    EXPECT_EQ(JsonWrapper(&document).ToString(), "null");
}

TEST(JsonWrapper, AValueMadeWithoutMemoryHasItsOwn)
{
    JsonWrapper value(nullptr, rapidjson::kArrayType);
    EXPECT_TRUE(value.Add(parsed("1")));
    EXPECT_EQ(value.ToString(), "[1]");
}

TEST(JsonWrapper, AMemberCanBeParsed)
{
    JsonWrapper document = parsed(R"({"a":1,"b":2})");
    JsonWrapper member = document["a"];
    EXPECT_TRUE(member.Parse(R"(["parsed"])"));
    EXPECT_EQ(document.ToString(), R"({"a":["parsed"],"b":2})");
}

TEST(JsonWrapper, RefusesWhatIsNoJsonAndKeepsItsValue)
{
    JsonWrapper document = parsed(R"({"kept":true})");
    for (const char* text :
         {"",          " ",           "{",      "}",       "[1,]",  "{\"a\":}", "{'a':1}",  "nul",          "truefalse",       "{} {}",
          "[1] x",     "01",          "1.",     "-",       "+1",    ".5",       "NaN",      "Infinity",     "1e999",           "\"\\x\"",
          "\"\\u12\"", "\"\\ud800\"", "\"\n\"", "// c\n1", "[1 2]", "\xFF",     "\"\xFF\"", "\"\xC0\xAF\"", "\"\xED\xA0\x80\""})
        EXPECT_FALSE(document.Parse(text)) << text;
    EXPECT_FALSE(document.Parse(std::string("{}\0{}", 5)));
    EXPECT_FALSE(document.Parse(std::string("{}\0", 3)));
    EXPECT_EQ(document.ToString(), R"({"kept":true})");
}

TEST(JsonWrapper, ParsesScalars)
{
    for (const char* text : {"null", "true", "false", "0", "-1", "18446744073709551615", "\"\"", "[]", "{}"})
        EXPECT_EQ(parsed(text).ToString(), text);
}

TEST(JsonWrapper, EscapesWhatJsonWantsEscaped)
{
    JsonWrapper document;
    EXPECT_TRUE(document.Add("k\"\\", std::string("\"\\/\b\f\n\r\t\x01\0€😀", 17)));
    EXPECT_EQ(document.ToString(), "{\"k\\\"\\\\\":\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u0000€😀\"}");
    std::string read;
    EXPECT_TRUE(parsed(document.ToString()).Get("k\"\\", read));
    EXPECT_EQ(read, std::string("\"\\/\b\f\n\r\t\x01\0€😀", 17));
}

TEST(JsonWrapper, TextThatIsNoUtf8IsRepairedSoThatItCanBeReadAgain)
{
    JsonWrapper document;
    EXPECT_TRUE(document.Add("key\xFF", "a\xC0z"));
    EXPECT_EQ(document.ToString(), "{\"key\xEF\xBF\xBD\":\"a\xEF\xBF\xBDz\"}");
    EXPECT_TRUE(parsed(document.ToString()).HasMember("key\xFF"));
    EXPECT_TRUE(document.Add("key\xFF", 1));
    EXPECT_EQ(document.ToString(), "{\"key\xEF\xBF\xBD\":1}");
}

TEST(JsonWrapper, ALoneLowSurrogateIsReadAsReplacements)
{
    EXPECT_EQ(parsed(R"(["\udc00"])").ToString(), "[\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"]");
    EXPECT_EQ(parsed(R"(["\ud83d\ude00"])").ToString(), "[\"\xF0\x9F\x98\x80\"]");
}

TEST(JsonWrapper, NestingUpToAThousandIsReadAndWritten)
{
    const std::string text = nested(1000);
    JsonWrapper document = parsed(text);
    EXPECT_EQ(document.ToString(), text);
    JsonWrapper copy;
    EXPECT_TRUE(copy.Add(document));
    EXPECT_EQ(copy.ToString(), "[" + text + "]");
}

TEST(JsonWrapper, DeeperNestingIsRefused)
{
    JsonWrapper document;
    EXPECT_FALSE(document.Parse(nested(1001)));
    EXPECT_FALSE(document.Parse(nested(1000000)));
    EXPECT_FALSE(document.Parse(std::string(1000000, '[')));
    std::string objects;
    for (int i = 0; i < 100000; ++i)
        objects += "{\"a\":";
    EXPECT_FALSE(document.Parse(objects));
    EXPECT_EQ(document.ToString(), "null");
}

TEST(JsonWrapper, SiblingsDoNotCountAsNesting)
{
    std::string text = "[[]";
    for (int i = 0; i < 5000; ++i)
        text += ",[{}]";
    EXPECT_EQ(parsed(text + "]").GetArraySize(), 5001);
}

TEST(JsonWrapper, ADocumentBuiltToAnyDepthIsWrittenAndCopied)
{
    constexpr int depth = 200000;
    JsonWrapper document;
    JsonWrapper inner(document.GetAllocator(), rapidjson::kArrayType);
    for (int i = 1; i < depth; ++i) {
        JsonWrapper outer(document.GetAllocator(), rapidjson::kArrayType);
        ASSERT_TRUE(outer.Add(std::move(inner)));
        inner = std::move(outer);
    }
    EXPECT_TRUE(inner.ToString() == nested(depth));
    JsonWrapper copy;
    EXPECT_TRUE(copy.Add(inner));
    EXPECT_EQ(copy.ToString().size(), 2U * (depth + 1));
}

TEST(JsonWrapper, CopiesOfAWrapperSeeTheSameDocument)
{
    JsonWrapper document;
    JsonWrapper other = document;
    EXPECT_TRUE(other.Add("a", 1));
    EXPECT_EQ(document.ToString(), R"({"a":1})");
    const JsonWrapper moved = std::move(other);
    EXPECT_EQ(moved.ToString(), R"({"a":1})");
    EXPECT_EQ(other.ToString(), "null"); // NOLINT(bugprone-use-after-move)
}

TEST(JsonWrapper, APlaceStaysGoodWhileItsDocumentGrows)
{
    JsonWrapper document = parsed(R"({"list":[{"x":1},{"x":2}]})");
    const JsonWrapper list = document["list"];
    JsonWrapper second;
    ASSERT_TRUE(list.Get(1, second));
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(document.Add("member" + std::to_string(i), i));
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(document["list"].Add(JsonWrapper(document.GetAllocator(), rapidjson::kObjectType)));
    int x = 0;
    EXPECT_TRUE(second.Get("x", x));
    EXPECT_EQ(x, 2);
    EXPECT_EQ(list.GetArraySize(), 202);
    EXPECT_TRUE(document.Add("list", "replaced"));
    EXPECT_EQ(list.ToString(), "\"replaced\"");
    EXPECT_FALSE(second.Get("x", x)) << "there is no list any more";
}

TEST(JsonWrapper, APlaceInWhatWasMovedAwayIsNothing)
{
    JsonWrapper document;
    JsonWrapper value(document.GetAllocator(), rapidjson::kObjectType);
    ASSERT_TRUE(value.Add("x", 1));
    ASSERT_TRUE(value.AddEmptySubObject("inner"));
    JsonWrapper inner = value["inner"];
    ASSERT_TRUE(document.Add("value", std::move(value)));
    EXPECT_EQ(inner.ToString(), "null");
    EXPECT_FALSE(inner.Add("y", 2));
    EXPECT_EQ(document.ToString(), R"({"value":{"x":1,"inner":{}}})");
}

TEST(JsonWrapper, APlaceInTheCallersDocumentSeesWhatTheCallerChanges)
{
    rapidjson::Document callers;
    callers.SetObject();
    JsonWrapper wrapper(&callers);
    ASSERT_TRUE(wrapper.AddEmptySubObject("a"));
    const JsonWrapper place = wrapper["a"];
    for (int i = 0; i < 200; ++i) {
        rapidjson::Value name(std::to_string(i).c_str(), callers.GetAllocator());
        callers.AddMember(name, i, callers.GetAllocator());
    }
    callers["a"].SetInt(7);
    EXPECT_EQ(place.ToString(), "7");
}

TEST(JsonWrapper, ACopyOutlivesTheDocumentItWasParsedIn)
{
    JsonWrapper copy;
    {
        const JsonWrapper document =
            parsed(R"({"a key that is longer than a pointer":"a text that is longer, too, with an escape \n in it"})");
        ASSERT_TRUE(copy.Add("member", document));
        ASSERT_TRUE(copy.Add(R"(text)", document["a key that is longer than a pointer"]));
    }
    EXPECT_EQ(copy.ToString(), R"({"member":{"a key that is longer than a pointer":"a text that is longer, too, with an escape \n in it"},)"
                               R"("text":"a text that is longer, too, with an escape \n in it"})");
}

TEST(JsonWrapper, ParsingAgainInTheSamePlaceLeavesTheRestAlone)
{
    JsonWrapper document = parsed(R"({"a":{"text":"the first of them, long"},"b":"stays as it is, long"})");
    JsonWrapper a = document["a"];
    const JsonWrapper b = document["b"];
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(a.Parse("{\"text\":\"number " + std::to_string(i) + ", which is long as well\"}"));
    EXPECT_FALSE(a.Parse("{\"text\":\"cut off"));
    EXPECT_EQ(b.ToString(), "\"stays as it is, long\"");
    EXPECT_EQ(document.ToString(), R"({"a":{"text":"number 19, which is long as well"},"b":"stays as it is, long"})");
}

TEST(JsonWrapper, ControlCharactersAreRefusedInTextsAndEscapedWhereverTheyStand)
{
    for (char control = 1; control < 0x20; ++control) {
        for (std::size_t place = 0; place < 40; ++place) {
            std::string text(40, 'x');
            text[place] = control;
            JsonWrapper read;
            EXPECT_FALSE(read.Parse("[\"" + text + "\"]")) << int{control} << " at " << place;
            JsonWrapper written;
            ASSERT_TRUE(written.Add("text", text));
            ASSERT_TRUE(read.Parse(written.ToString())) << written.ToString();
            std::string again;
            EXPECT_TRUE(read.Get("text", again));
            EXPECT_EQ(again, text);
        }
    }
}
