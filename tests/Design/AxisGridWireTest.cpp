#include "HostCurve.h"
#include "HostGrid.h"
#include "support/ProjectObjectTest.h"

#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/IAxisGrid.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

constexpr const char* storedGrids = "/config/scope/Project/p-1/type/GridConfig";
constexpr const char* gridVersions = "/config/scope/Project/p-1/type/GridConfig/versions";
constexpr const char* lastGrid = "/config/scope/Project/p-1/type/GridConfig?version=-1";
constexpr const char* grid3 = "/config/scope/Project/p-1/type/GridConfig?version=3";
constexpr const char* grid4 = "/config/scope/Project/p-1/type/GridConfig?version=4";

constexpr const char* answerOfGrid3 =
    R"({ "version":3, "id":"g-3", "configValue":"{\"appKey\":\"BIM-MODEL\",\"schemaVersion\":3,\"schemaKey\":\"GridConfig\",)"
    R"(\"data\":{\"axis\":{\"arcs\":[{\"curveType\":\"axisArc\",\"id\":\"a\",\"name\":\"弧\"}]},\"id\":\"inner\"}}" })";
constexpr const char* documentOfGrid3 =
    R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[],"arcs":[)"
    R"({"curveType":"axisArc","id":"a","name":"弧","startTagVis":false,"endTagVis":false,"startExt":3000.0,"endExt":3000.0,)"
    R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":0.0,"min":0.0,"max":0.0,)"
    R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":0.0,"z":0.0},"middlePt":{"x":0.0,"y":0.0,"z":0.0}}}]},)"
    R"("id":"g-3"}})";
constexpr const char* answerOfGrid4 = R"({"version":4,"id":"g-4","configValue":"{\"schemaVersion\":3,\"data\":{}}"})";
constexpr const char* documentOfGrid4 =
    R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[],"arcs":[]},"id":"g-4"}})";

constexpr const wchar_t* gridCode = L"Project::GetAxisGridConfig - code:";
constexpr const wchar_t* gridVersionsCode = L"Project::GetAxisGridConfigVersions - code:";

class AxisGridWireTest : public ProjectObjectTest
{
protected:
    /// Lets the project read version 3, which it then remembers.
    IAxisGrid* rememberGrid3()
    {
        server.expect("GET", grid3).reply(200, answerOfGrid3);
        IAxisGrid* const axisGrid = project->GetAxisGridConfig(3, error);
        EXPECT_NE(axisGrid, nullptr);
        server.verify();
        return axisGrid;
    }

    /// The project remembers version 3, so that nothing is sent for it.
    void expectRemembersGrid3()
    {
        const std::size_t before = server.requestCount();
        const IAxisGrid* const axisGrid = project->GetAxisGridConfig(3, error);
        ASSERT_NE(axisGrid, nullptr);
        EXPECT_EQ(axisGrid->GetVersion(), 3);
        EXPECT_EQ(server.requestCount(), before);
    }

    /// The project remembers nothing: the last version isn't looked for in the list.
    void expectRemembersNothing()
    {
        server.expect("GET", lastGrid).reply(404);
        EXPECT_EQ(project->GetAxisGridConfig(-1), nullptr);
        server.verify();
    }

    /// The text that the other form hands over; "failed" where it fails.
    std::string textOf(int version)
    {
        std::string text = "before";
        return project->GetAxisGridConfig(version, text, error) ? text : "failed";
    }

    void expectFrameCaught(const std::wstring& operation, const std::wstring& words)
    {
        expectHttpError(error, exceptionValue, L"HttpError", words, 5555);
        EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::" + operation + L" [END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                     words + L"]"});
    }
};

std::shared_ptr<IAxisGrid> gridWith(std::shared_ptr<IAxisCurve> curve)
{
    auto axisGrid = IAxisGrid::Create();
    axisGrid->AddCurve(std::move(curve));
    return axisGrid;
}

/// A host's curve that throws where it is to be written.
template <class Thrown>
std::shared_ptr<IAxisCurve> throwing(const Thrown& thrown)
{
    return std::make_shared<HostCurve>(CurveType::Line, L"host", [thrown](JsonWrapper&) -> bool { throw thrown; });
}

// Reading

TEST_F(AxisGridWireTest, readsOneVersionAsAnObject)
{
    server.expect("GET", grid3).reply(200, answerOfGrid3);
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(3, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetVersion(), 3);
    EXPECT_EQ(axisGrid->GetId(), "g-3");
    ASSERT_EQ(axisGrid->GetCurves().size(), 1u);
    EXPECT_EQ(axisGrid->GetCurves()[0]->GetName(), L"弧");
    expectQuiet();
}

TEST_F(AxisGridWireTest, theShortFormGivesTheSame)
{
    server.expect("GET", grid3).reply(200, answerOfGrid3);
    server.expect("GET", grid4).reply(404, "gone");
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(3);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetId(), "g-3");
    EXPECT_EQ(project->GetAxisGridConfig(3), axisGrid);
    EXPECT_EQ(project->GetAxisGridConfig(4), nullptr);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::GetAxisGridConfig - code:404"});
}

TEST_F(AxisGridWireTest, theTextIsTheAnswerUnchanged)
{
    for (const char* body :
         {answerOfGrid3, R"( { "version" : 3 , "more" : [ 1.50 , "\u5c42" ] } )", "{}", "null", "", "<html>", "{\"a\""}) {
        server.expect("GET", grid3).reply(200, body);
        EXPECT_EQ(textOf(3), body);
        expectQuiet();
    }
}

TEST_F(AxisGridWireTest, theVersionGoesOutInDecimalWithItsSign)
{
    for (const int version : {-1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const std::string target = std::string(storedGrids) + "?version=" + std::to_string(version);
        server.expect("GET", target).times(2).reply(200, R"({"version":77,"configValue":"{\"schemaVersion\":3,\"data\":{}}"})");
        EXPECT_NE(textOf(version), "failed");
        const auto another = projectOf(L"p-1");
        const IAxisGrid* const axisGrid = another->GetAxisGridConfig(version, error);
        ASSERT_NE(axisGrid, nullptr);
        EXPECT_EQ(axisGrid->GetVersion(), 77) << "the version that was answered, not the one that was asked for";
    }
    expectQuiet();
}

TEST_F(AxisGridWireTest, anotherProjectHasAnotherAddress)
{
    server.expect("GET", "/config/scope/Project/3f2504e0-4f89-41d3-9a0c-0305e82c3301/type/GridConfig?version=3").reply(200, answerOfGrid3);
    EXPECT_NE(projectOf(L"3f2504e0-4f89-41d3-9a0c-0305e82c3301")->GetAxisGridConfig(3, error), nullptr);
}

TEST_F(AxisGridWireTest, anIdThatFitsNoAddressIsAnExceptionAndSendsNothing)
{
    EXPECT_EQ(projectOf(L"p 1")->GetAxisGridConfig(3, error), nullptr);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    error.Clear();
    EXPECT_TRUE(projectOf(L"项目")->GetAxisGridConfigVersions(error).empty());
    EXPECT_EQ(error.GetValue(), exceptionValue);
    error.Clear();
    EXPECT_FALSE(projectOf(L"p 1")->UpdateAxisGrid(IAxisGrid::Create().get(), error));
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, theObjectFailsAsEveryRetriedOperationDoes)
{
    RequestingOperation read{"GET", grid3, "", gridCode, [&](ErrorCode& ec) { return project->GetAxisGridConfig(3, ec) != nullptr; }};
    read.goodAnswer = answerOfGrid3;
    read.readsJson = false; // it is read as text, and parsed behind the retry loop
    expectFailuresOf(read, server, log);
    expectSuccessAtLast(read, server, log);
}

TEST_F(AxisGridWireTest, theTextFailsAsEveryRetriedOperationDoes)
{
    std::string text = "before";
    RequestingOperation read{"GET", grid3, "", gridCode, [&](ErrorCode& ec) { return project->GetAxisGridConfig(3, text, ec); }};
    read.goodAnswer = answerOfGrid3;
    read.readsJson = false;
    expectFailuresOf(read, server, log);
    EXPECT_EQ(text, "before");
    expectSuccessAtLast(read, server, log);
    EXPECT_EQ(text, answerOfGrid3);
}

TEST_F(AxisGridWireTest, anAnswerThatCannotBeReadIsNoGridAndNoError)
{
    const std::vector<std::pair<const char*, const wchar_t*>> answers{
        {"<html>", L"I [ORLOSDK]Invalid axis axisGridPtr response data: axis not available"},
        {"", L"I [ORLOSDK]Invalid axis axisGridPtr response data: axis not available"},
        {"{}", L"E [ORLOSDK]Invalid axis axisGridPtr response data: no version"},
        {R"({"version":3})", L"E [ORLOSDK]Invalid axis axisGridPtr response data: no config value"},
        {R"({"version":3,"configValue":"{"})", L"E [ORLOSDK]Invalid axis axisGridPtr response data: config parse error"},
        {R"({"version":3,"configValue":"{}"})", L"E [ORLOSDK]Invalid axis axisGridPtr config data: no schema version"},
        {R"({"version":3,"configValue":"{\"schemaVersion\":3}"})", L"E [ORLOSDK]Invalid axis axisGridPtr config data: no data"},
        {R"({"version":3,"configValue":"{\"schemaVersion\":4,\"data\":{}}"})",
         L"E [ORLOSDK]Invalid axis axisGridPtr config data: schema version isn't support"}};
    for (const auto& [body, line] : answers) {
        log.clear();
        server.expect("GET", grid3).reply(200, body);
        EXPECT_EQ(project->GetAxisGridConfig(3, error), nullptr) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{line}) << body;
    }
}

TEST_F(AxisGridWireTest, aGridWithCurvesThatCannotBeReadIsThere)
{
    server.expect("GET", grid3).reply(200, R"({"version":3,"configValue":"{\"schemaVersion\":2,\"data\":{\"arr\":[{\"id\":\"half\"}]}}"})");
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(3, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_NE(axisGrid->GetCurve(L"half"), nullptr);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]load axis curve error!"});
    EXPECT_EQ(project->GetAxisGridConfig(3, error), axisGrid);
}

TEST_F(AxisGridWireTest, anErrorOnEntryIsLoggedAndWiped)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", grid3).reply(200, answerOfGrid3);
    EXPECT_NE(project->GetAxisGridConfig(3, error), nullptr);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetAxisGridConfig 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(AxisGridWireTest, theTextLogsAnErrorOnEntryWhereItFetches)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", grid3).reply(200, answerOfGrid3);
    EXPECT_EQ(textOf(3), answerOfGrid3);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetAxisGridConfig 传入的ErrorCode，已有错误存在:earlier"});
}

// What the project remembers

TEST_F(AxisGridWireTest, theSameVersionIsNotFetchedAgain)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    EXPECT_EQ(project->GetAxisGridConfig(3, error), axisGrid);
    EXPECT_EQ(project->GetAxisGridConfig(3), axisGrid);
    EXPECT_EQ(server.requestCount(), 1u);
    expectQuiet();
}

TEST_F(AxisGridWireTest, theTextOfTheSameVersionIsTheInnerDocument)
{
    rememberGrid3();
    EXPECT_EQ(textOf(3), documentOfGrid3);
    EXPECT_EQ(server.requestCount(), 1u);
    expectQuiet();
}

TEST_F(AxisGridWireTest, theTextOfTheSameVersionTellsWhatTheHostChanged)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    axisGrid->RemoveCurve(L"a");
    EXPECT_EQ(textOf(3), R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig",)"
                         R"("data":{"axis":{"lines":[],"arcs":[]},"id":"g-3"}})");
}

TEST_F(AxisGridWireTest, theTextOfAGridWithoutAnIdMakesOneThatStays)
{
    server.expect("GET", grid3).reply(200, R"({"version":3,"configValue":"{\"schemaVersion\":3,\"data\":{}}"})");
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(3, error);
    ASSERT_NE(axisGrid, nullptr);
    const std::string text = textOf(3);
    EXPECT_EQ(axisGrid->GetId().size(), 36u);
    EXPECT_NE(text.find("\"id\":\"" + axisGrid->GetId() + "\""), std::string::npos);
    EXPECT_EQ(textOf(3), text);
}

TEST_F(AxisGridWireTest, theLastVersionGoesOutAsItIsWhereNothingIsRemembered)
{
    server.expect("GET", lastGrid).times(2).reply(200, answerOfGrid3);
    EXPECT_EQ(textOf(-1), answerOfGrid3);
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetVersion(), 3);
    expectRemembersGrid3();
    expectQuiet();
}

TEST_F(AxisGridWireTest, theLastVersionIsLookedForAndNothingElseIsSentWhereItIsTheRememberedOne)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    server.expect("GET", gridVersions).times(3).reply(200, "[5,4,3]"); // the last in the list, not the greatest
    EXPECT_EQ(project->GetAxisGridConfig(-1, error), axisGrid);
    EXPECT_EQ(project->GetAxisGridConfig(-1), axisGrid);
    EXPECT_EQ(textOf(-1), documentOfGrid3);
    EXPECT_EQ(server.requestCount(), 4u);
    expectQuiet();
}

TEST_F(AxisGridWireTest, anotherLastVersionIsFetchedAndRemembered)
{
    rememberGrid3();
    server.expect("GET", gridVersions).reply(200, "[1,3,4]");
    server.expect("GET", grid4).reply(200, answerOfGrid4);
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetId(), "g-4");
    EXPECT_EQ(project->GetAxisGridConfig(4, error), axisGrid);
    EXPECT_EQ(server.requestCount(), 3u);
    expectQuiet();
}

TEST_F(AxisGridWireTest, theTextOfAnotherLastVersionIsFetchedAndNotRemembered)
{
    rememberGrid3();
    server.expect("GET", gridVersions).reply(200, "[1,3,4]");
    server.expect("GET", grid4).reply(200, answerOfGrid4);
    EXPECT_EQ(textOf(-1), answerOfGrid4);
    expectRemembersGrid3();
    expectQuiet();
}

TEST_F(AxisGridWireTest, anotherVersionReplacesTheRememberedOne)
{
    rememberGrid3();
    server.expect("GET", grid4).reply(200, answerOfGrid4);
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(4, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetId(), "g-4");
    EXPECT_EQ(textOf(4), documentOfGrid4);
    server.verify();
    rememberGrid3(); // is fetched again
    EXPECT_EQ(server.requestCount(), 3u);
}

TEST_F(AxisGridWireTest, theVersionThatWasAnsweredIsTheRememberedOne)
{
    server.expect("GET", grid4).times(2).reply(200, answerOfGrid3);
    EXPECT_NE(project->GetAxisGridConfig(4, error), nullptr);
    expectRemembersGrid3();
    EXPECT_NE(project->GetAxisGridConfig(4, error), nullptr);
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(AxisGridWireTest, aFailedFetchDropsTheRememberedGrid)
{
    rememberGrid3();
    server.expect("GET", grid4).reply(404);
    EXPECT_EQ(project->GetAxisGridConfig(4, error), nullptr);
    server.verify();
    expectRemembersNothing();
}

TEST_F(AxisGridWireTest, anAnswerThatCannotBeReadDropsTheRememberedGrid)
{
    rememberGrid3();
    server.expect("GET", grid4).reply(200, R"({"version":4})");
    EXPECT_EQ(project->GetAxisGridConfig(4, error), nullptr);
    server.verify();
    expectRemembersNothing();
}

TEST_F(AxisGridWireTest, aBrokenTransportDropsTheRememberedGrid)
{
    rememberGrid3();
    const RetryLimit once(1);
    server.expect("GET", grid4).times(2).reset();
    EXPECT_EQ(project->GetAxisGridConfig(4, error), nullptr);
    server.verify();
    expectRemembersNothing();
}

TEST_F(AxisGridWireTest, theTextIsNeverRemembered)
{
    server.expect("GET", grid3).times(2).reply(200, answerOfGrid3);
    EXPECT_EQ(textOf(3), answerOfGrid3);
    EXPECT_EQ(textOf(3), answerOfGrid3);
    server.verify();
    expectRemembersNothing();
}

TEST_F(AxisGridWireTest, aTextThatIsFetchedOrFailsLeavesTheRememberedGrid)
{
    rememberGrid3();
    server.expect("GET", grid4).reply(200, answerOfGrid4);
    EXPECT_EQ(textOf(4), answerOfGrid4);
    server.expect("GET", grid4).reply(404);
    EXPECT_EQ(textOf(4), "failed");
    error.Clear();
    expectRemembersGrid3();
}

TEST_F(AxisGridWireTest, anUpdateLeavesTheRememberedGrid)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    server.expect("POST", storedGrids).body(documentOfGrid3).reply(200, R"({"version":4})");
    EXPECT_TRUE(project->UpdateAxisGrid(axisGrid, error));
    server.verify();
    EXPECT_EQ(axisGrid->GetVersion(), 3);
    expectRemembersGrid3();
    // That it is no longer the last one shows in the list.
    server.expect("GET", gridVersions).reply(200, "[3,4]");
    server.expect("GET", grid4).reply(200, answerOfGrid4);
    const IAxisGrid* const last = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->GetVersion(), 4);
    expectQuiet();
}

TEST_F(AxisGridWireTest, everyProjectObjectRemembersItsOwn)
{
    rememberGrid3();
    server.expect("GET", grid3).reply(200, answerOfGrid3);
    const auto another = projectOf(L"p-1");
    EXPECT_NE(another->GetAxisGridConfig(3, error), nullptr);
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(AxisGridWireTest, anEmptyListOfVersionsAsksThePlatformForTheLast)
{
    for (const char* body : {"[]", "{}", "null"}) {
        rememberGrid3();
        server.expect("GET", gridVersions).reply(200, body);
        server.expect("GET", lastGrid).reply(200, answerOfGrid4);
        EXPECT_EQ(textOf(-1), answerOfGrid4) << body;
        server.expect("GET", gridVersions).reply(200, body);
        server.expect("GET", lastGrid).reply(200, answerOfGrid4);
        const IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
        ASSERT_NE(axisGrid, nullptr) << body;
        EXPECT_EQ(axisGrid->GetVersion(), 4) << body;
        expectQuiet();
    }
}

TEST_F(AxisGridWireTest, aFailedListOfVersionsAsksThePlatformForTheLast)
{
    rememberGrid3();
    server.expect("GET", gridVersions).reply(404, "gone");
    server.expect("GET", lastGrid).reply(200, answerOfGrid4);
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_EQ(axisGrid->GetVersion(), 4);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::GetAxisGridConfigVersions - code:404"});
}

TEST_F(AxisGridWireTest, aRememberedGridThatCannotBeWrittenHasNoText)
{
    rememberGrid3()->GetCurve(L"a")->SetMin(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(textOf(3), "failed");
    EXPECT_EQ(server.requestCount(), 1u);
}

TEST_F(AxisGridWireTest, whatAHostsCurveThrowsDoesNotLeaveTheText)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    axisGrid->AddCurve(throwing(std::runtime_error("a host's own words")));
    EXPECT_NO_THROW(EXPECT_EQ(textOf(3), "failed"));
    axisGrid->AddCurve(throwing(7));
    EXPECT_NO_THROW(EXPECT_EQ(textOf(3), "failed"));
    axisGrid->RemoveCurve(L"host");
    EXPECT_EQ(textOf(3), documentOfGrid3);
}

// Writing

TEST_F(AxisGridWireTest, sendsTheDocumentOfAGrid)
{
    server.expect("GET", lastGrid).reply(200, R"({"version":1,"id":"g-1","configValue":"{\"schemaVersion\":3,\"data\":{}}"})");
    IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(axisGrid, nullptr);
    const auto line = IAxisLine::Create();
    line->SetId(L"l-1");
    line->SetName(L"轴 🏗\"");
    line->SetStartPt({1, 2, -0.0});
    line->SetEndPt({1, 4, 0});
    axisGrid->AddCurve(line);
    server.expect("POST", storedGrids)
        .header("Content-Type", "application/json; charset=utf-8")
        .body(
            R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[)"
            R"({"curveType":"axisLine","id":"l-1","name":"轴 🏗\"","startTagVis":true,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
            R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":3000.0,"min":0.0,"max":0.0,)"
            R"("len":2.0,"dir":{"x":0.0,"y":1.0,"z":0.0},)"
            R"("curve":{"startPt":{"x":1.0,"y":2.0,"z":-0.0},"endPt":{"x":1.0,"y":4.0,"z":0.0}}}],"arcs":[]},"id":"g-1"}})")
        .reply(200, "<html>", "text/html");
    EXPECT_TRUE(project->UpdateAxisGrid(axisGrid, error));
    expectQuiet();
}

TEST_F(AxisGridWireTest, aNewGridIsSentWithAnIdThatItKeeps)
{
    const auto axisGrid = IAxisGrid::Create();
    server.expect("POST", storedGrids).times(2).anyBody().reply(200);
    EXPECT_TRUE(project->UpdateAxisGrid(axisGrid.get(), error));
    EXPECT_TRUE(project->UpdateAxisGrid(axisGrid.get()));
    EXPECT_EQ(axisGrid->GetId().size(), 36u);
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].body, R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig",)"
                                R"("data":{"axis":{"lines":[],"arcs":[]},"id":")" +
                                    axisGrid->GetId() + R"("}})");
    EXPECT_EQ(requests[1].body, requests[0].body);
    expectQuiet();
}

TEST_F(AxisGridWireTest, everyFiniteNumberIsSent)
{
    for (const double number : {std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::denorm_min(), 1e-310,
                                std::numeric_limits<double>::min(), std::numeric_limits<double>::max(), -1e300, 1e22, 0.1}) {
        const auto arc = IAxisArc::Create();
        arc->SetMin(number);
        arc->SetMiddlePt({number, 0, 0});
        server.expect("POST", storedGrids).anyBody().reply(200);
        EXPECT_TRUE(project->UpdateAxisGrid(gridWith(arc).get(), error)) << number;
        server.verify();
    }
    expectQuiet();
}

TEST_F(AxisGridWireTest, theUpdateFailsInSilenceAsEveryRetriedOperationDoes)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    RequestingOperation update{"POST", storedGrids, documentOfGrid3, L"",
                               [&](ErrorCode& ec) { return project->UpdateAxisGrid(axisGrid, ec); }};
    update.readsJson = false;
    expectFailuresOf(update, server, log);
    expectSuccessAtLast(update, server, log);
}

TEST_F(AxisGridWireTest, theShortFormOfTheUpdateGivesTheSame)
{
    const auto axisGrid = IAxisGrid::Create();
    server.expect("POST", storedGrids).anyBody().reply(200);
    server.expect("POST", storedGrids).anyBody().reply(404);
    EXPECT_TRUE(project->UpdateAxisGrid(axisGrid.get()));
    EXPECT_FALSE(project->UpdateAxisGrid(axisGrid.get()));
    EXPECT_FALSE(project->UpdateAxisGrid(nullptr));
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(AxisGridWireTest, noGridIsAnExceptionAndSendsNothing)
{
    EXPECT_FALSE(project->UpdateAxisGrid(nullptr, error));
    EXPECT_NE(error.GetErrorMessage(), L"");
    expectFrameCaught(L"UpdateAxisGrid", error.GetErrorMessage());
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, aGridWithANumberThatIsNotFiniteIsAnExceptionAndSendsNothing)
{
    for (const double number : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const auto line = IAxisLine::Create();
        line->SetEndPt({0, number, 0});
        log.clear();
        error.Clear();
        EXPECT_FALSE(project->UpdateAxisGrid(gridWith(line).get(), error)) << number;
        EXPECT_NE(error.GetErrorMessage(), L"");
        expectFrameCaught(L"UpdateAxisGrid", error.GetErrorMessage());
    }
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, theWordsTellWhatIsWrongWithTheGrid)
{
    const auto line = IAxisLine::Create();
    line->SetMax(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(project->UpdateAxisGrid(gridWith(line).get(), error));
    expectFrameCaught(L"UpdateAxisGrid", L"the axis grid holds a number that is not finite");
    log.clear();
    error.Clear();
    const auto hosts = std::make_shared<HostCurve>(CurveType::Line, L"host", [](JsonWrapper&) { return false; });
    EXPECT_FALSE(project->UpdateAxisGrid(gridWith(hosts).get(), error));
    expectFrameCaught(L"UpdateAxisGrid", L"the axis grid couldn't be written whole");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, aHostsGridGoesOutAsItWritesItself)
{
    HostGrid axisGrid([](JsonWrapper& out) { return out.Add("of", "a host's own \xE8\xBD\xB4"); });
    server.expect("POST", storedGrids).body(R"({"of":"a host's own 轴"})").reply(200);
    EXPECT_TRUE(project->UpdateAxisGrid(&axisGrid, error));
    expectQuiet();
}

TEST_F(AxisGridWireTest, aHostsGridThatSaysItIsNotWhole)
{
    HostGrid axisGrid([](JsonWrapper& out) { return out.Add("of", "a host's own") && false; });
    EXPECT_FALSE(project->UpdateAxisGrid(&axisGrid, error));
    expectFrameCaught(L"UpdateAxisGrid", L"the axis grid couldn't be written whole");
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, whatAHostsCurveThrowsDoesNotLeaveTheUpdate)
{
    EXPECT_NO_THROW(EXPECT_FALSE(project->UpdateAxisGrid(gridWith(throwing(std::runtime_error("a host's own words"))).get(), error)));
    expectFrameCaught(L"UpdateAxisGrid", L"a host's own words");
    log.clear();
    error.Clear();
    EXPECT_NO_THROW(EXPECT_FALSE(project->UpdateAxisGrid(gridWith(throwing(7)).get(), error)));
    expectHttpError(error, exceptionValue, L"HttpError", L"unknown exception", 5556);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::UpdateAxisGrid [END_API_IMPLEMENTATION]unknown exception occurred"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, anUpdateOfAProjectWithoutAnIdIsRefused)
{
    EXPECT_FALSE(projectOf(L"")->UpdateAxisGrid(IAxisGrid::Create().get(), error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]UpdateProjectConfig未正常执行：projectId为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(AxisGridWireTest, anErrorOnEntryOfTheUpdateIsLoggedAndWiped)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", storedGrids).anyBody().reply(200);
    EXPECT_TRUE(project->UpdateAxisGrid(IAxisGrid::Create().get(), error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::UpdateAxisGrid 传入的ErrorCode，已有错误存在:earlier"});
}

// Versions

TEST_F(AxisGridWireTest, versionsComeInTheOrderOfTheServer)
{
    server.expect("GET", gridVersions).reply(200, "[3,1,2,-2147483648,2147483647,1]");
    EXPECT_EQ(project->GetAxisGridConfigVersions(error),
              (std::vector<int>{3, 1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 1}));
    expectQuiet();
}

TEST_F(AxisGridWireTest, theShortFormOfTheVersionsGivesTheSame)
{
    server.expect("GET", gridVersions).reply(200, "[2,1]");
    server.expect("GET", gridVersions).reply(404);
    EXPECT_EQ(project->GetAxisGridConfigVersions(), (std::vector<int>{2, 1}));
    EXPECT_TRUE(project->GetAxisGridConfigVersions().empty());
}

TEST_F(AxisGridWireTest, versionsThatAreNoIntegersAreLeftOut)
{
    server.expect("GET", gridVersions).reply(200, R"([1,"2",null,{},[4],true,5])");
    EXPECT_EQ(project->GetAxisGridConfigVersions(error), (std::vector<int>{1, 5}));
    expectClear(error);
}

TEST_F(AxisGridWireTest, anAnswerToTheVersionsThatIsNoArrayIsEmpty)
{
    for (const char* body : {"[]", "{}", R"({"code":10000,"data":[1]})", "7", "null", ""}) {
        server.expect("GET", gridVersions).reply(200, body);
        EXPECT_TRUE(project->GetAxisGridConfigVersions(error).empty()) << body;
    }
    expectQuiet();
}

TEST_F(AxisGridWireTest, theVersionsFailAsEveryRetriedOperationDoes)
{
    RequestingOperation listing{"GET", gridVersions, "", gridVersionsCode,
                                [&](ErrorCode& ec) { return project->GetAxisGridConfigVersions(ec) == std::vector<int>{1}; }};
    listing.goodAnswer = "[1]";
    expectFailuresOf(listing, server, log);
    expectSuccessAtLast(listing, server, log);
}

TEST_F(AxisGridWireTest, aFailedListOfVersionsLeavesNoErrorWhereTheTextIsThere)
{
    rememberGrid3();
    server.expect("GET", gridVersions).reply(404, "gone");
    server.expect("GET", lastGrid).reply(200, answerOfGrid4);
    EXPECT_EQ(textOf(-1), answerOfGrid4);
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]Project::GetAxisGridConfigVersions - code:404"});
}

TEST_F(AxisGridWireTest, aFailedListOfVersionsIsNotTheErrorOfWhatIsRemembered)
{
    // The platform may have called it -1, and then it is the one that is asked for.
    server.expect("GET", lastGrid).reply(200, R"({"version":-1,"id":"g","configValue":"{\"schemaVersion\":3,\"data\":{}}"})");
    const IAxisGrid* const axisGrid = project->GetAxisGridConfig(-1, error);
    ASSERT_NE(axisGrid, nullptr);
    server.expect("GET", gridVersions).reply(404, "gone");
    EXPECT_EQ(project->GetAxisGridConfig(-1, error), axisGrid);
    expectClear(error);
}

TEST_F(AxisGridWireTest, theListOfVersionsIsAskedForWithoutTheCallersError)
{
    IAxisGrid* const axisGrid = rememberGrid3();
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", gridVersions).reply(200, "[3]");
    EXPECT_EQ(project->GetAxisGridConfig(-1, error), axisGrid);
    expectGenericError(error, badInputValue, L"GenericError", L"earlier");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetAxisGridConfig 传入的ErrorCode，已有错误存在:earlier"});
}

} // namespace
} // namespace orlo::test
