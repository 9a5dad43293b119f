#include "support/LogCapture.h"

#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/AxisGrid.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace orlo::test {
namespace {

using DocumentLines = std::vector<std::wstring>; // of the log

constexpr const wchar_t* notAvailable = L"I [ORLOSDK]Invalid axis axisGridPtr response data: axis not available";
constexpr const wchar_t* noVersion = L"E [ORLOSDK]Invalid axis axisGridPtr response data: no version";
constexpr const wchar_t* noConfigValue = L"E [ORLOSDK]Invalid axis axisGridPtr response data: no config value";
constexpr const wchar_t* configParseError = L"E [ORLOSDK]Invalid axis axisGridPtr response data: config parse error";
constexpr const wchar_t* noSchemaVersion = L"E [ORLOSDK]Invalid axis axisGridPtr config data: no schema version";
constexpr const wchar_t* noData = L"E [ORLOSDK]Invalid axis axisGridPtr config data: no data";
constexpr const wchar_t* noArrX = L"E [ORLOSDK]Invalid axis axisGridPtr config data: arrX is not array";
constexpr const wchar_t* noArrY = L"E [ORLOSDK]Invalid axis axisGridPtr config data: arrY is not array";
constexpr const wchar_t* noArray = L"E [ORLOSDK]Invalid axis config data: json array is not an array!";
constexpr const wchar_t* noLines = L"E [ORLOSDK]Invalid axis config data: json lines is not an array!";
constexpr const wchar_t* unknownSchema = L"E [ORLOSDK]Invalid axis axisGridPtr config data: schema version isn't support";
constexpr const wchar_t* badCurveLine = L"E [ORLOSDK]load axis curve error!";
constexpr const wchar_t* badLineLine = L"E [ORLOSDK]load axis line error!";
constexpr const wchar_t* badArcLine = L"E [ORLOSDK]load axis arc error!";

// The grids of a small plan in each of the schema versions.

constexpr const char* plan1 = R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"GridConfig","data":{
  "arrX":[
    {"name":"group 1","arr":[
      {"id":"x1","name":"1","startTagVis":true,"endTagVis":false,"ext":500,"startElbowLength":1,"endElbowLength":2,"verticalMin":-3,
       "verticalMax":4,"diameter":800,"min":5,"max":6,"len":1,"dir":{"x":1,"y":0,"z":0},
       "curve":{"startPt":{"x":0,"y":0,"z":0},"endPt":{"x":0,"y":2048,"z":0}}},
      {"curveType":"axisLine","id":"x2","name":"2","ext":500,"startExt":700,
       "curve":{"startPt":{"x":6000,"y":0,"z":10},"endPt":{"x":6000,"y":-1024,"z":10}}}]},
    {"arr":[]},
    {"arr":[
      {"curveType":"axisArc","id":"x3","name":"弧","endTagVis":true,
       "curve":{"startPt":{"x":1,"y":2,"z":3},"endPt":{"x":4,"y":5,"z":6},"middlePt":{"x":7,"y":8,"z":9}}}]}],
  "arrY":[
    {"arr":[
      {"id":"y1","name":"A","curve":{"startPt":{"x":0,"y":0,"z":0},"endPt":{"x":512,"y":0,"z":0}}}]}]}})";

constexpr const char* plan2 = R"({"appKey":"BIM-MODEL","schemaVersion":2,"schemaKey":"GridConfig","data":{"id":"inner","arr":[
  {"id":"x1","name":"1","startTagVis":true,"endTagVis":false,"ext":500,"startElbowLength":1,"endElbowLength":2,"verticalMin":-3,
   "verticalMax":4,"diameter":800,"min":5,"max":6,"curve":{"startPt":{"x":0,"y":0,"z":0},"endPt":{"x":0,"y":2048,"z":0}}},
  {"curveType":"axisArc","id":"x3","name":"弧","endTagVis":true,
   "curve":{"startPt":{"x":1,"y":2,"z":3},"endPt":{"x":4,"y":5,"z":6},"middlePt":{"x":7,"y":8,"z":9}}},
  {"curveType":"axisLine","id":"x2","name":"2","ext":500,"startExt":700,
   "curve":{"startPt":{"x":6000,"y":0,"z":10},"endPt":{"x":6000,"y":-1024,"z":10}}},
  {"id":"y1","name":"A","curve":{"startPt":{"x":0,"y":0,"z":0},"endPt":{"x":512,"y":0,"z":0}}}]}})";

// As it is written, byte for byte.
constexpr const char* plan3 =
    R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[)"
    R"({"curveType":"axisLine","id":"x1","name":"1","startTagVis":true,"endTagVis":false,"startExt":500.0,"endExt":500.0,)"
    R"("startElbowLength":1.0,"endElbowLength":2.0,"verticalMin":-3.0,"verticalMax":4.0,"diameter":800.0,"min":5.0,"max":6.0,)"
    R"("len":2048.0,"dir":{"x":0.0,"y":1.0,"z":0.0},)"
    R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":2048.0,"z":0.0}}},)"
    R"({"curveType":"axisLine","id":"x2","name":"2","startTagVis":false,"endTagVis":false,"startExt":700.0,"endExt":500.0,)"
    R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":0.0,"min":0.0,"max":0.0,)"
    R"("len":1024.0,"dir":{"x":0.0,"y":-1.0,"z":0.0},)"
    R"("curve":{"startPt":{"x":6000.0,"y":0.0,"z":10.0},"endPt":{"x":6000.0,"y":-1024.0,"z":10.0}}},)"
    R"({"curveType":"axisLine","id":"y1","name":"A","startTagVis":false,"endTagVis":false,"startExt":3000.0,"endExt":3000.0,)"
    R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":0.0,"min":0.0,"max":0.0,)"
    R"("len":512.0,"dir":{"x":1.0,"y":0.0,"z":0.0},)"
    R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":512.0,"y":0.0,"z":0.0}}}],"arcs":[)"
    R"({"curveType":"axisArc","id":"x3","name":"弧","startTagVis":false,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
    R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":0.0,"min":0.0,"max":0.0,)"
    R"("curve":{"startPt":{"x":1.0,"y":2.0,"z":3.0},"endPt":{"x":4.0,"y":5.0,"z":6.0},"middlePt":{"x":7.0,"y":8.0,"z":9.0}}}]},)"
    R"("id":"g-1"}})";

/// The platform's answer around the text of a document.
std::string answerAround(const std::string& document, int version = 7, const std::string& id = "g-1")
{
    JsonWrapper answer;
    answer.Add("version", version);
    answer.Add("configValue", document);
    answer.Add("id", id);
    return answer.ToString();
}

std::string documentAround(int schemaVersion, const std::string& data)
{
    return R"({"appKey":"BIM-MODEL","schemaVersion":)" + std::to_string(schemaVersion) + R"(,"schemaKey":"GridConfig","data":)" + data +
           "}";
}

std::vector<std::wstring> curveIds(const IAxisGrid& axisGrid)
{
    std::vector<std::wstring> ids;
    for (IAxisCurve* curve : axisGrid.GetCurves())
        ids.push_back(curve->GetId());
    return ids;
}

class AxisGridDocument : public testing::Test
{
protected:
    /// Parses the answer, expecting the lines of the log.
    std::shared_ptr<IAxisGrid> parsed(const std::string& answer, const DocumentLines& lines)
    {
        log.clear();
        auto axisGrid = parseAxisGrid(answer);
        EXPECT_EQ(log.lines(), lines) << answer.substr(0, 400);
        return axisGrid;
    }

    void expectNone(const std::string& answer, const DocumentLines& lines)
    {
        EXPECT_EQ(parsed(answer, lines), nullptr) << answer.substr(0, 400);
    }

    /// The grid that the data gives, which is there whatever the log tells.
    std::shared_ptr<IAxisGrid> withData(int schemaVersion, const std::string& data, const DocumentLines& lines)
    {
        auto axisGrid = parsed(answerAround(documentAround(schemaVersion, data)), lines);
        EXPECT_NE(axisGrid, nullptr) << data;
        return axisGrid ? axisGrid : IAxisGrid::Create();
    }

    LogCapture log;
};

TEST_F(AxisGridDocument, allThreeSchemaVersionsGiveTheSameCurves)
{
    for (const char* document : {plan1, plan2, plan3}) {
        const auto axisGrid = parsed(answerAround(document), {});
        ASSERT_NE(axisGrid, nullptr) << document;
        EXPECT_EQ(curveIds(*axisGrid), (std::vector<std::wstring>{L"x1", L"x2", L"x3", L"y1"}));
        EXPECT_EQ(axisGridDocument(*axisGrid), plan3);
    }
}

TEST_F(AxisGridDocument, anAnswerIsReadWithItsVersionAndId)
{
    const auto axisGrid = parsed(
        R"({ "scopeEntityId" : "p-1", "version" : 12, "id" : "outer", "configValue" : "{\"schemaVersion\":3,\"data\":{\"id\":\"inner\",)"
        R"(\"axis\":{\"lines\":[{\"id\":\"l\",\"name\":\"\\\"A\\\"\",\"curve\":{\"startPt\":{\"x\":1.5},\"endPt\":{}}}]}}}" } )",
        {});
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetVersion(), 12);
    EXPECT_EQ(axisGrid->GetId(), "outer");
    ASSERT_EQ(curveIds(*axisGrid), std::vector<std::wstring>{L"l"});
    EXPECT_EQ(axisGrid->GetCurve(L"l")->GetName(), L"\"A\"");
    const auto* line = dynamic_cast<const IAxisLine*>(axisGrid->GetCurve(L"l"));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->GetStartPt().x, 1.5);
    EXPECT_EQ(line->GetDir().x, -1.0);
}

TEST_F(AxisGridDocument, anAnswerThatIsNoJsonIsToldAsInformation)
{
    for (const std::string answer : {"", " ", "{", "<html>", "{}x", R"({"version":1,})", "{'version':1}", "\xFF",
                                     "{\"version\":\"\xC3\x28\"}", R"({"version":1e999})"})
        expectNone(answer, {notAvailable});
    expectNone(std::string("{}\0", 3), {notAvailable});
}

TEST_F(AxisGridDocument, anAnswerWithoutAVersionIsNone)
{
    for (const char* answer : {"{}", R"({"configValue":"{}"})", R"({"id":"g"})", R"({"Version":1,"configValue":"{}"})", "[]", "null", "7",
                               "\"text\"", R"([{"version":1}])"})
        expectNone(answer, {noVersion});
}

TEST_F(AxisGridDocument, anAnswerWithoutAConfigValueIsNone)
{
    for (const char* answer : {R"({"version":1})", R"({"version":null,"id":"g"})", R"({"version":1,"ConfigValue":"{}"})"})
        expectNone(answer, {noConfigValue});
}

TEST_F(AxisGridDocument, aConfigValueThatIsNoJsonIsNone)
{
    for (const char* document : {"", " ", "{", "<html>", "{}x", R"({"schemaVersion":3,"data":{},})", R"({"schemaVersion":3,"data":1e999})"})
        expectNone(answerAround(document), {configParseError});
}

TEST_F(AxisGridDocument, aConfigValueThatIsNoTextIsNone)
{
    for (const char* value : {"7", "null", "true", "[]", "{}", R"({"schemaVersion":3,"data":{}})"})
        expectNone(std::string(R"({"version":1,"configValue":)") + value + "}", {configParseError});
}

TEST_F(AxisGridDocument, withoutASchemaVersionIsNone)
{
    for (const char* document : {"{}", R"({"data":{}})", R"({"schemaversion":3,"data":{}})", "[]", "7", "null", "\"text\""})
        expectNone(answerAround(document), {noSchemaVersion});
}

TEST_F(AxisGridDocument, withoutDataIsNone)
{
    // The version is looked at later, so one that isn't known makes no difference.
    for (const char* document : {R"({"schemaVersion":3})", R"({"schemaVersion":9})", R"({"schemaVersion":"x","Data":{}})"})
        expectNone(answerAround(document), {noData});
}

TEST_F(AxisGridDocument, ofAnotherSchemaVersionIsNone)
{
    for (const int version : {0, 4, -1, 30, 2147483647})
        expectNone(answerAround(documentAround(version, R"({"arr":[],"arrX":[],"arrY":[],"axis":{}})")), {unknownSchema});
}

TEST_F(AxisGridDocument, aSchemaVersionThatIsNoIntegerIsUnknown)
{
    for (const char* version : {"\"3\"", "null", "true", "3.5", "[3]", "{}", "2147483648", "4294967299"})
        expectNone(answerAround(std::string(R"({"schemaVersion":)") + version + R"(,"data":{"axis":{}}})"), {unknownSchema});
}

TEST_F(AxisGridDocument, aVersionThatIsNoIntegerReadsAsZero)
{
    for (const char* version : {"\"3\"", "null", "true", "3.5", "[3]", "{}", "2147483648"}) {
        const auto axisGrid = parsed(std::string(R"({"configValue":"{\"schemaVersion\":3,\"data\":{}}","version":)") + version + "}", {});
        ASSERT_NE(axisGrid, nullptr) << version;
        EXPECT_EQ(axisGrid->GetVersion(), 0) << version;
    }
}

TEST_F(AxisGridDocument, aVersionHasTheWholeRangeOfItsType)
{
    for (const int version : {0, -1, 2147483647, -2147483647 - 1}) {
        const auto axisGrid = parsed(answerAround(documentAround(3, "{}"), version), {});
        ASSERT_NE(axisGrid, nullptr) << version;
        EXPECT_EQ(axisGrid->GetVersion(), version);
    }
}

TEST_F(AxisGridDocument, theIdOfTheAnswerIsReadAsTextWhateverItIs)
{
    const std::vector<std::pair<std::string, std::string>> ids{
        {R"("g")", "g"},     {R"("")", ""},    {"7", "7"}, {"null", "null"}, {"true", "true"}, {"2.5", "2.5"}, {R"({"a":1})", "{\"a\":1}"},
        {"[1, 2]", "[1,2]"}, {R"("轴")", "轴"}};
    for (const auto& [stored, expected] : ids) {
        const auto axisGrid = parsed(
            R"({"version":1,"configValue":"{\"schemaVersion\":3,\"data\":{\"id\":\"inner\"},\"id\":\"document\"}","id":)" + stored + "}",
            {});
        ASSERT_NE(axisGrid, nullptr) << stored;
        EXPECT_EQ(axisGrid->GetId(), expected);
    }
}

TEST_F(AxisGridDocument, withoutAnIdInTheAnswerTheGridHasNone)
{
    const auto axisGrid =
        parsed(R"({"version":1,"configValue":"{\"schemaVersion\":3,\"data\":{\"id\":\"inner\"},\"id\":\"document\"}"})", {});
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetId(), "");
    const auto document = axisGridDocument(*axisGrid);
    ASSERT_TRUE(document.has_value());
    EXPECT_EQ(axisGrid->GetId().size(), 36u);
    EXPECT_NE(document->find("\"id\":\"" + axisGrid->GetId() + "\""), std::string::npos);
}

TEST_F(AxisGridDocument, otherMembersAndTheirOrderDoNotMatter)
{
    const auto axisGrid =
        parsed(R"({"id":"g","more":[1],"configValue":"{\"data\":{\"arr\":[],\"x\":1},\"schemaVersion\":2}","version":5})", {});
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetVersion(), 5);
    EXPECT_TRUE(axisGrid->GetCurves().empty());
}

TEST_F(AxisGridDocument, schema1WithoutArrXIsNone)
{
    for (const char* data :
         {"{}", R"({"arrY":[]})", R"({"arrX":{},"arrY":[]})", R"({"arrX":null,"arrY":7})", R"({"arrX":"[]","arrY":[]})", "[]", "null", "7"})
        expectNone(answerAround(documentAround(1, data)), {noArrX});
}

TEST_F(AxisGridDocument, schema1WithoutArrYIsNoneThoughArrXIsRead)
{
    for (const char* data : {R"({"arrX":[]})", R"({"arrX":[],"arrY":{}})", R"({"arrX":[{"arr":[{"id":"a","name":""}]}],"arrY":null})"})
        expectNone(answerAround(documentAround(1, data)), {noArrY});
}

TEST_F(AxisGridDocument, schema1TellsNothingOfItsCurves)
{
    const auto axisGrid =
        withData(1,
                 R"({"arrX":[{"arr":[{"curveType":"spline","id":"s"},{"id":"half","name":"h"},{"id":"nameless"},{"name":"n"},7]}],)"
                 R"("arrY":[{"arr":[{"curveType":"axisArc","id":"arc","name":""}]}]})",
                 {});
    EXPECT_EQ(axisGrid->GetCurves().size(), 5u);
    EXPECT_EQ(axisGrid->GetCurve(L"s"), nullptr);
    ASSERT_NE(axisGrid->GetCurve(L"half"), nullptr);
    EXPECT_EQ(axisGrid->GetCurve(L"half")->GetName(), L"h");
    EXPECT_FALSE(axisGrid->GetCurve(L"half")->GetStartTagVis());
    ASSERT_NE(axisGrid->GetCurve(L"nameless"), nullptr);
    EXPECT_TRUE(axisGrid->GetCurve(L"nameless")->GetStartTagVis());
    EXPECT_NE(axisGrid->GetCurve(L"arc"), nullptr);
}

TEST_F(AxisGridDocument, schema1GroupsWithoutCurvesAreEmpty)
{
    const auto axisGrid = withData(1,
                                   R"({"arrX":[{},{"arr":null},{"arr":{}},{"arr":7},7,null,"x",[{"id":"deeper","name":""}],{"arr":[]}],)"
                                   R"("arrY":[{"arr":[{"id":"a","name":""}]}]})",
                                   {});
    EXPECT_EQ(curveIds(*axisGrid), std::vector<std::wstring>{L"a"});
}

TEST_F(AxisGridDocument, schema1ReadsArrXFirst)
{
    const auto axisGrid = withData(
        1, R"({"arrY":[{"arr":[{"id":"a","name":"Y"}]}],"arrX":[{"arr":[{"id":"a","name":"X"}]},{"arr":[{"id":"b","name":"X2"}]}]})", {});
    ASSERT_EQ(curveIds(*axisGrid), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_EQ(axisGrid->GetCurve(L"a")->GetName(), L"Y") << "the later of two with one id wins";
}

TEST_F(AxisGridDocument, schema2WithoutAnArrayIsAGridWithoutCurves)
{
    for (const char* data : {"{}", R"({"arr":{}})", R"({"arr":null})", R"({"arr":"[]"})", R"({"axis":{"lines":[]}})", "[]", "null", "7"})
        EXPECT_TRUE(withData(2, data, {noArray})->GetCurves().empty()) << data;
}

TEST_F(AxisGridDocument, schema2TellsEachCurveThatFailsAndReadsOn)
{
    const auto axisGrid = withData(2,
                                   R"({"arr":[{"curveType":"spline","id":"s","name":""},{"id":"half","name":"h"},7,)"
                                   R"({"curveType":"axisArc","id":"arc","name":""},{"curveType":"axisArc","id":"nameless"}]})",
                                   DocumentLines(4, badCurveLine));
    EXPECT_EQ(axisGrid->GetCurves().size(), 4u);
    EXPECT_EQ(axisGrid->GetCurve(L"s"), nullptr);
    EXPECT_NE(axisGrid->GetCurve(L"half"), nullptr);
    EXPECT_NE(axisGrid->GetCurve(L"arc"), nullptr);
    EXPECT_NE(axisGrid->GetCurve(L"nameless"), nullptr);
}

TEST_F(AxisGridDocument, schema2TheLaterOfTwoWithOneIdWins)
{
    const auto axisGrid = withData(2,
                                   R"({"arr":[{"curveType":"axisArc","id":"a","name":"1"},)"
                                   R"({"id":"a","name":"2","curve":{"startPt":{},"endPt":{}}}]})",
                                   {});
    ASSERT_EQ(curveIds(*axisGrid), std::vector<std::wstring>{L"a"});
    EXPECT_EQ(axisGrid->GetCurve(L"a")->GetName(), L"2");
    EXPECT_EQ(axisGrid->GetCurve(L"a")->GetCurveType(), CurveType::Line);
}

TEST_F(AxisGridDocument, schema3MayLackEverything)
{
    for (const char* data : {"{}", R"({"axis":{}})", R"({"axis":null})", R"({"axis":[]})", "null", "7", "[]", R"({"arr":[{"id":"a"}]})"})
        EXPECT_TRUE(withData(3, data, {})->GetCurves().empty()) << data;
}

TEST_F(AxisGridDocument, schema3WithoutArraysIsAGridWithWhatCouldBeRead)
{
    EXPECT_TRUE(withData(3, R"({"axis":{"lines":{},"arcs":7}})", {noLines, noLines})->GetCurves().empty());
    EXPECT_EQ(curveIds(*withData(3, R"({"axis":{"lines":null,"arcs":[{"curveType":"axisArc","id":"a","name":""}]}})", {noLines})),
              std::vector<std::wstring>{L"a"});
}

TEST_F(AxisGridDocument, schema3TellsEachCurveThatFailsAndReadsOn)
{
    const auto axisGrid = withData(
        3,
        R"({"axis":{"arcs":[{"curveType":"axisArc","id":"nameless"},{"id":"lineOfArcs","name":"","curve":{"startPt":{},"endPt":{}}}],)"
        R"("lines":[{"id":"half","name":"h"},{"curveType":"axisArc","id":"arc","name":""},{"curveType":"","id":"s","name":""}]}})",
        {badLineLine, badLineLine, badArcLine});
    EXPECT_EQ(curveIds(*axisGrid), (std::vector<std::wstring>{L"arc", L"half", L"lineOfArcs", L"nameless"}));
    EXPECT_EQ(axisGrid->GetCurve(L"arc")->GetCurveType(), CurveType::Arc);
    EXPECT_EQ(axisGrid->GetCurve(L"lineOfArcs")->GetCurveType(), CurveType::Line);
}

TEST_F(AxisGridDocument, aCurveThatBreaksOffHalfWayHoldsWhatItGot)
{
    const auto axisGrid =
        withData(3, R"({"axis":{"lines":[{"id":"half","name":"A","startTagVis":true,"ext":5,"curve":{"startPt":{"x":1,"y":2,"z":3}}}]}})",
                 {badLineLine});
    const auto* line = dynamic_cast<const IAxisLine*>(axisGrid->GetCurve(L"half"));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->GetName(), L"A");
    EXPECT_TRUE(line->GetStartTagVis());
    EXPECT_FALSE(line->GetEndTagVis());
    EXPECT_EQ(line->GetEndExt(), 5.0);
    EXPECT_EQ(line->GetStartPt().z, 3.0);
    EXPECT_EQ(line->GetEndPt().z, 0.0);
    EXPECT_EQ(line->GetDir().x, 0.0);
    // It is written like any other: its direction is that of its points.
    const auto document = axisGridDocument(*axisGrid);
    ASSERT_TRUE(document.has_value());
    EXPECT_NE(document->find(R"("curve":{"startPt":{"x":1.0,"y":2.0,"z":3.0},"endPt":{"x":0.0,"y":0.0,"z":0.0}})"), std::string::npos);
}

TEST_F(AxisGridDocument, aLineInArcsIsWrittenBackInLines)
{
    const auto axisGrid =
        withData(3, R"({"axis":{"arcs":[{"curveType":"axisLine","id":"l","name":"","curve":{"startPt":{},"endPt":{}}}]}})", {});
    const auto document = axisGridDocument(*axisGrid);
    ASSERT_TRUE(document.has_value());
    EXPECT_NE(document->find(R"("axis":{"lines":[{"curveType":"axisLine","id":"l",)"), std::string::npos) << *document;
    EXPECT_NE(document->find(R"("arcs":[])"), std::string::npos) << *document;
}

TEST_F(AxisGridDocument, whatIsNestedTooDeeplyIsNoJson)
{
    for (const char* brackets : {"[]", "{\"a\":}"}) {
        const std::string text = brackets;
        const std::string opening = text.substr(0, text.size() - 1);
        for (const std::size_t depth : {1001u, 100000u}) {
            std::string deep;
            for (std::size_t i = 0; i < depth; ++i)
                deep += opening;
            deep += "null" + std::string(depth, text.back());
            expectNone(deep, {notAvailable});
            expectNone(R"({"version":1,"configValue":"{}","more":)" + deep + "}", {notAvailable});
            expectNone(answerAround(deep), {configParseError});
            expectNone(answerAround(documentAround(3, deep)), {configParseError});
            expectNone(answerAround(documentAround(2, R"({"arr":[{"id":"a","name":"n","curve":)" + deep + "}]}")), {configParseError});
        }
    }
    expectNone(std::string(100000, '['), {notAvailable});
    expectNone(answerAround(std::string(100000, '{')), {configParseError});
}

TEST_F(AxisGridDocument, whatIsNestedDeeplyButNotTooDeeplyIsRead)
{
    const std::string deep = std::string(900, '[') + std::string(900, ']');
    const auto axisGrid =
        withData(2, R"({"arr":[{"id":"a","name":"n","curve":{"startPt":)" + deep + R"(,"endPt":{}}},)" + deep + "]}", {badCurveLine});
    EXPECT_EQ(axisGrid->GetCurves().size(), 2u);
    EXPECT_NE(axisGrid->GetCurve(L"a"), nullptr);
}

TEST_F(AxisGridDocument, anAnswerThatIsCutOffAnywhereIsNone)
{
    for (const char* document : {plan1, plan2, plan3}) {
        const std::string answer = answerAround(document);
        for (std::size_t size = 0; size < answer.size(); ++size) {
            log.clear();
            ASSERT_EQ(parseAxisGrid(answer.substr(0, size)), nullptr) << answer.substr(0, size);
            ASSERT_EQ(log.lines(), DocumentLines{notAvailable}) << answer.substr(0, size);
        }
    }
}

TEST_F(AxisGridDocument, aDocumentThatIsCutOffAnywhereIsNone)
{
    for (const std::string document : {plan1, plan2, plan3})
        for (std::size_t size = 0; size < document.size(); ++size) {
            log.clear();
            // Where the cut is within a character, the wrapper writes the replacement character.
            ASSERT_EQ(parseAxisGrid(answerAround(document.substr(0, size))), nullptr) << document.substr(0, size);
            ASSERT_EQ(log.lines(), DocumentLines{configParseError}) << document.substr(0, size);
        }
}

TEST_F(AxisGridDocument, aDocumentWithAnyByteReplacedIsNoneOrAGridAndTellsOnlyKnownLines)
{
    const DocumentLines known{configParseError, noSchemaVersion, noData,       noArrX,      noArrY,    noArray,
                              noLines,          unknownSchema,   badCurveLine, badLineLine, badArcLine};
    std::size_t grids = 0;
    std::size_t none = 0;
    for (const std::string document : {plan1, plan2, plan3})
        for (std::size_t at = 0; at < document.size(); ++at)
            for (const char byte : {'"', '0', ']'}) {
                std::string changed = document;
                changed[at] = byte;
                log.clear();
                const auto axisGrid = parseAxisGrid(answerAround(changed));
                ++(axisGrid ? grids : none);
                const auto lines = log.lines();
                ASSERT_TRUE(axisGrid || lines.size() == 1) << changed;
                for (const std::wstring& line : lines)
                    ASSERT_NE(std::find(known.begin(), known.end(), line), known.end()) << changed;
                if (axisGrid) {
                    ASSERT_LE(axisGrid->GetCurves().size(), 4u) << changed;
                    ASSERT_TRUE(axisGridDocument(*axisGrid).has_value()) << changed;
                }
            }
    EXPECT_GT(grids, 1000u);
    EXPECT_GT(none, 1000u);
}

/// An array of so many elements that are no objects, each of which counts as a curve.
std::string zeros(std::size_t count)
{
    std::string text = "[0";
    text.reserve(2 * count + 2);
    for (std::size_t i = 1; i < count; ++i)
        text += ",0";
    return text + "]";
}

TEST_F(AxisGridDocument, tooManyCurvesAreNoGrid)
{
    // This schema version tells nothing of each, which would take as long again.
    expectNone(answerAround(documentAround(1, R"({"arrX":[{"arr":)" + zeros(200000) + R"(},{"arr":)" + zeros(200000) +
                                                  R"(}],"arrY":[{"arr":)" + zeros(100000) + "}]}")),
               {configParseError});
}

TEST_F(AxisGridDocument, manyCurvesAreAGrid)
{
    const auto axisGrid = withData(
        1, R"({"arrX":[{"arr":)" + zeros(20000) + R"(},{"arr":)" + zeros(20000) + R"(}],"arrY":[{"arr":)" + zeros(10000) + "}]}", {});
    EXPECT_EQ(axisGrid->GetCurves().size(), 50000u);
}

TEST_F(AxisGridDocument, elementsThatAreNoCurvesAreToldOneByOne)
{
    EXPECT_EQ(withData(2, R"({"arr":)" + zeros(5000) + "}", DocumentLines(5000, badCurveLine))->GetCurves().size(), 5000u);
}

TEST_F(AxisGridDocument, manyCurvesOfOneIdAreOne)
{
    std::string arr = "[";
    for (std::size_t i = 0; i < 20000; ++i)
        arr += R"({"curveType":"axisArc","id":"a","name":")" + std::to_string(i) + "\"},";
    const auto axisGrid = withData(2, R"({"arr":)" + arr + R"({"curveType":"axisArc","id":"b","name":""}]})", {});
    ASSERT_EQ(curveIds(*axisGrid), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_EQ(axisGrid->GetCurve(L"a")->GetName(), L"19999");
}

TEST_F(AxisGridDocument, ofAGridThatCannotBeWrittenWholeIsNone)
{
    AxisGrid axisGrid(0, "g");
    const auto line = IAxisLine::Create();
    axisGrid.AddCurve(line);
    EXPECT_TRUE(axisGridDocument(axisGrid).has_value());
    line->SetEndPt({0, 0, std::numeric_limits<double>::quiet_NaN()});
    EXPECT_EQ(axisGridDocument(axisGrid), std::nullopt);
    axisGrid.RemoveCurve(line->GetId());
    EXPECT_TRUE(axisGridDocument(axisGrid).has_value());
}

} // namespace
} // namespace orlo::test
