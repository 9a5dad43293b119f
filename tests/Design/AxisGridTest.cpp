#include "HostCurve.h"
#include "support/LogCapture.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Design/AxisGrid.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

using GridLines = std::vector<std::wstring>; // of the log

constexpr double gridInfinity = std::numeric_limits<double>::infinity();
constexpr double gridNaN = std::numeric_limits<double>::quiet_NaN();

std::shared_ptr<IAxisLine> lineOf(const std::wstring& id)
{
    auto line = IAxisLine::Create();
    line->SetId(id);
    return line;
}

std::shared_ptr<IAxisArc> arcOf(const std::wstring& id)
{
    auto arc = IAxisArc::Create();
    arc->SetId(id);
    return arc;
}

std::vector<std::wstring> idsOf(const IAxisGrid& axisGrid)
{
    std::vector<std::wstring> ids;
    for (IAxisCurve* curve : axisGrid.GetCurves())
        ids.push_back(curve->GetId());
    return ids;
}

JsonWrapper gridJson(const std::string& text)
{
    JsonWrapper json;
    EXPECT_TRUE(json.Parse(text)) << text;
    return json;
}

/// As it is added to a document, which is the same as what is stored.
std::string gridText(IAxisGrid& axisGrid)
{
    JsonWrapper out;
    EXPECT_TRUE(axisGrid.SerializeToJson(out));
    EXPECT_EQ(axisGridDocument(axisGrid), out.ToString());
    return out.ToString();
}

/// The id in the "data" of a written document.
std::string writtenId(const std::string& document)
{
    std::string id;
    EXPECT_TRUE(gridJson(document)["data"].Get("id", id)) << document;
    return id;
}

TEST(AxisGrid, startsEmpty)
{
    const auto axisGrid = IAxisGrid::Create();
    ASSERT_NE(axisGrid, nullptr);
    EXPECT_TRUE(axisGrid->GetCurves().empty());
    EXPECT_EQ(axisGrid->GetVersion(), 0);
    EXPECT_EQ(axisGrid->GetId(), "");
    EXPECT_NE(IAxisGrid::Create(), axisGrid);
}

TEST(AxisGrid, hasTheVersionAndTheIdThatItWasReadWith)
{
    const AxisGrid axisGrid(-7, "g");
    EXPECT_EQ(axisGrid.GetVersion(), -7);
    EXPECT_EQ(axisGrid.GetId(), "g");
}

TEST(AxisGridCurves, areFoundByTheirIds)
{
    const auto axisGrid = IAxisGrid::Create();
    const auto line = lineOf(L"轴 1");
    const auto arc = arcOf(L"2");
    axisGrid->AddCurve(line);
    axisGrid->AddCurve(arc);
    EXPECT_EQ(axisGrid->GetCurve(L"轴 1"), static_cast<IAxisCurve*>(line.get()));
    EXPECT_EQ(axisGrid->GetCurve(L"2"), static_cast<IAxisCurve*>(arc.get()));
    EXPECT_EQ(axisGrid->GetCurve(L""), nullptr);
    EXPECT_EQ(axisGrid->GetCurve(L"1"), nullptr);
}

TEST(AxisGridCurves, nullIsNotAdded)
{
    const auto axisGrid = IAxisGrid::Create();
    axisGrid->AddCurve(nullptr);
    axisGrid->AddCurve(std::shared_ptr<IAxisLine>());
    EXPECT_TRUE(axisGrid->GetCurves().empty());
}

TEST(AxisGridCurves, oneWithoutAnIdGetsOneWhenAdded)
{
    const auto axisGrid = IAxisGrid::Create();
    axisGrid->AddCurve(IAxisLine::Create());
    axisGrid->AddCurve(IAxisArc::Create());
    const auto ids = idsOf(*axisGrid);
    ASSERT_EQ(ids.size(), 2u);
    for (const std::wstring& id : ids) {
        EXPECT_EQ(id.size(), 36u);
        ASSERT_NE(axisGrid->GetCurve(id), nullptr);
        EXPECT_EQ(axisGrid->GetCurve(id)->GetId(), id);
    }
}

TEST(AxisGridCurves, theLaterOfTwoWithOneIdReplacesTheOther)
{
    const auto axisGrid = IAxisGrid::Create();
    auto first = lineOf(L"a");
    const std::weak_ptr<IAxisLine> watched = first;
    axisGrid->AddCurve(std::move(first));
    EXPECT_FALSE(watched.expired());
    const auto second = arcOf(L"a");
    axisGrid->AddCurve(second);
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(axisGrid->GetCurves(), std::vector<IAxisCurve*>{second.get()});
}

TEST(AxisGridCurves, oneThatIsAddedAgainIsThereOnce)
{
    const auto axisGrid = IAxisGrid::Create();
    const auto line = lineOf(L"a");
    axisGrid->AddCurve(line);
    axisGrid->AddCurve(line);
    EXPECT_EQ(axisGrid->GetCurves(), std::vector<IAxisCurve*>{line.get()});
}

TEST(AxisGridCurves, areListedInTheOrderOfTheirIds)
{
    const auto axisGrid = IAxisGrid::Create();
    for (const wchar_t* id : {L"轴", L"b", L"10", L"B", L"a", L"2", L"ab", L" "})
        axisGrid->AddCurve(lineOf(id));
    EXPECT_EQ(idsOf(*axisGrid), (std::vector<std::wstring>{L" ", L"10", L"2", L"B", L"a", L"ab", L"b", L"轴"}));
}

TEST(AxisGridCurves, liveAsLongAsTheyAreInTheGrid)
{
    const auto axisGrid = IAxisGrid::Create();
    auto line = lineOf(L"a");
    const std::weak_ptr<IAxisLine> watched = line;
    axisGrid->AddCurve(std::move(line));
    axisGrid->GetCurve(L"a")->SetName(L"still there");
    EXPECT_EQ(axisGrid->GetCurves()[0]->GetName(), L"still there");
    axisGrid->RemoveCurve(L"a");
    EXPECT_TRUE(watched.expired());
}

TEST(AxisGridCurves, areRemovedByTheirIds)
{
    const auto axisGrid = IAxisGrid::Create();
    axisGrid->AddCurve(lineOf(L"a"));
    axisGrid->AddCurve(lineOf(L"b"));
    axisGrid->RemoveCurve(L"c");
    axisGrid->RemoveCurve(L"");
    EXPECT_EQ(idsOf(*axisGrid), (std::vector<std::wstring>{L"a", L"b"}));
    axisGrid->RemoveCurve(L"a");
    EXPECT_EQ(idsOf(*axisGrid), std::vector<std::wstring>{L"b"});
    axisGrid->RemoveCurve(L"a");
    EXPECT_EQ(axisGrid->GetCurve(L"a"), nullptr);
    EXPECT_EQ(idsOf(*axisGrid), std::vector<std::wstring>{L"b"});
}

TEST(AxisGridCurves, stayUnderTheIdWithWhichTheyWereAdded)
{
    const auto axisGrid = IAxisGrid::Create();
    const auto line = lineOf(L"a");
    axisGrid->AddCurve(line);
    line->SetId(L"b");
    EXPECT_EQ(axisGrid->GetCurve(L"a"), static_cast<IAxisCurve*>(line.get()));
    EXPECT_EQ(axisGrid->GetCurve(L"b"), nullptr);
}

/// A grid with two lines, "a" and "b".
class AxisGridDistance : public testing::Test
{
protected:
    AxisGridDistance()
    {
        axisGrid->AddCurve(a);
        axisGrid->AddCurve(b);
    }

    static void place(IAxisLine& line, const Point3d& start, const Point3d& end, const Point3d& dir)
    {
        line.SetStartPt(start);
        line.SetEndPt(end);
        line.SetDir(dir);
    }

    /// Lines along x whose distance is exactly 7.
    void placeSevenApart()
    {
        place(*a, {0, 0, 0}, {8, 0, 0}, {1, 0, 0});
        place(*b, {-8, 7, 0}, {0, 7, 0}, {1, 0, 0});
    }

    double distance() const { return axisGrid->GetDistance(L"a", L"b"); }

    std::shared_ptr<IAxisGrid> axisGrid = IAxisGrid::Create();
    std::shared_ptr<IAxisLine> a = lineOf(L"a");
    std::shared_ptr<IAxisLine> b = lineOf(L"b");
};

TEST_F(AxisGridDistance, ofLinesThatRunAlongOneAnotherIsThatInPlanWhateverTheirHeight)
{
    for (const double z : {0.0, 3000.0, -1e6}) {
        place(*a, {0, 0, 0}, {10000, 0, 0}, {1, 0, 0});
        place(*b, {500, 6000, z}, {9000, 6000, z}, {1, 0, 0});
        EXPECT_NEAR(distance(), 6000, 1e-6) << z;
        EXPECT_NEAR(axisGrid->GetDistance(L"b", L"a"), 6000, 1e-6) << z;
    }
}

TEST_F(AxisGridDistance, ofLinesInAnyDirection)
{
    for (int degrees = 0; degrees < 360; degrees += 7) {
        const double turn = degrees * 0.017453292519943295;
        const Point3d along{std::cos(turn), std::sin(turn), 0};
        const Point3d start{1000 - along.y * 6000, -2000 + along.x * 6000, 50};
        place(*a, {1000, -2000, 0}, {1000 + along.x * 5000, -2000 + along.y * 5000, 0}, along);
        place(*b, start, {start.x + along.x * 3000, start.y + along.y * 3000, 50}, along);
        EXPECT_NEAR(distance(), 6000, 1e-6) << degrees;
    }
}

TEST_F(AxisGridDistance, ofLinesThatRunOppositeWaysIsTheSame)
{
    placeSevenApart();
    EXPECT_EQ(distance(), 7.0);
    b->SetDir({-1, 0, 0});
    EXPECT_EQ(distance(), 7.0);
    a->SetDir({-1, 0, 0});
    EXPECT_EQ(distance(), 7.0);
}

TEST_F(AxisGridDistance, takesTheDirectionsThatTheLinesHold)
{
    // The points would make them cross.
    place(*a, {0, 0, 0}, {8, 0, 0}, {0, 0, 1});
    place(*b, {0, 1, 0}, {0, 7, 0}, {0, 0, 1});
    EXPECT_EQ(distance(), 7.0);
    // And these would be parallel.
    placeSevenApart();
    b->SetDir({0, 1, 0});
    EXPECT_EQ(distance(), 0.0);
}

TEST_F(AxisGridDistance, normalizesTheDirectionsAndLeavesThoseOfTheLines)
{
    placeSevenApart();
    a->SetDir({500, 0, 0});
    b->SetDir({-0.001, 0, 0});
    EXPECT_EQ(distance(), 7.0);
    EXPECT_EQ(a->GetDir().x, 500.0);
    EXPECT_EQ(b->GetDir().x, -0.001);
}

TEST_F(AxisGridDistance, allowsACosineThatIsAMillionthOffOne)
{
    placeSevenApart();
    const auto distanceAtCosine = [this](double cosine) {
        b->SetDir({cosine, std::sqrt(1 - cosine * cosine), 0});
        return distance();
    };
    for (const double sign : {1.0, -1.0}) {
        EXPECT_EQ(distanceAtCosine(sign * (1 - 0.9999e-6)), 7.0) << sign;
        EXPECT_EQ(distanceAtCosine(sign * (1 - 1.0001e-6)), 0.0) << sign;
        EXPECT_EQ(distanceAtCosine(sign * 0.9), 0.0) << sign;
    }
}

TEST_F(AxisGridDistance, ofALineWithoutADirectionIsZero)
{
    placeSevenApart();
    a->SetDir({});
    EXPECT_EQ(distance(), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"b", L"a"), 0.0);
    b->SetDir({});
    EXPECT_EQ(distance(), 0.0);
}

TEST_F(AxisGridDistance, heightsCountForWhatIsParallel)
{
    placeSevenApart();
    b->SetDir({1, 0, 1});
    EXPECT_EQ(distance(), 0.0);
    a->SetDir({1, 0, 1});
    EXPECT_EQ(distance(), 7.0);
}

TEST_F(AxisGridDistance, heightsDoNotCountForTheDistance)
{
    place(*a, {0, 0, -50}, {8, 0, 1000}, {1, 0, 0});
    place(*b, {-8, 7, 12345}, {0, 7, 300}, {1, 0, 0});
    EXPECT_EQ(distance(), 7.0);
}

TEST_F(AxisGridDistance, isTakenFromTheStartOfTheFirstToTheEndOfTheSecond)
{
    place(*a, {0, 0, 0}, {8, 0, 0}, {1, 0, 0});
    place(*b, {0, 1, 0}, {0, 7, 0}, {1, 0, 0});
    EXPECT_EQ(distance(), 7.0);
    // From {0, 1} to {8, 0}, of which the direction of b in plan is that of y.
    EXPECT_NEAR(axisGrid->GetDistance(L"b", L"a"), 8, 1e-12);
}

TEST_F(AxisGridDistance, ofUprightLinesIsThatOfTheirPoints)
{
    place(*a, {1, 1, 0}, {1, 1, 3000}, {0, 0, 1});
    place(*b, {4, 5, 0}, {4, 5, 9000}, {0, 0, -1});
    EXPECT_EQ(distance(), 5.0);
}

TEST_F(AxisGridDistance, ofALineWithItselfIsZeroOrNaN)
{
    place(*a, {100, 200, 0}, {10100, 200, 0}, {1, 0, 0});
    EXPECT_EQ(axisGrid->GetDistance(L"a", L"a"), 0.0);
    place(*a, {100, 200, 7}, {100, -300, 7}, {0, -1, 0});
    EXPECT_EQ(axisGrid->GetDistance(L"a", L"a"), 0.0);
    // The rounding of 1 / length lets the difference of the squares fall below 0.
    place(*a, {0, 0, 0}, {2, 3, 0}, {2, 3, 0});
    EXPECT_TRUE(std::isnan(axisGrid->GetDistance(L"a", L"a")));
}

TEST_F(AxisGridDistance, ofALineWithItselfIsNoMoreThanTheErrorOfTheArithmetic)
{
    for (int degrees = 0; degrees < 360; ++degrees) {
        const double turn = degrees * 0.017453292519943295;
        const Point3d along{std::cos(turn), std::sin(turn), 0};
        place(*a, {0, 0, 0}, {along.x * 10000, along.y * 10000, 0}, along);
        const double result = axisGrid->GetDistance(L"a", L"a");
        EXPECT_TRUE(std::isnan(result) || (result >= 0 && result < 1e-3)) << degrees << ' ' << result;
    }
}

TEST_F(AxisGridDistance, ofAnArcIsZero)
{
    placeSevenApart();
    const auto arc = arcOf(L"arc");
    arc->SetEndPt({1, 0, 0});
    axisGrid->AddCurve(arc);
    EXPECT_EQ(axisGrid->GetDistance(L"a", L"arc"), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"arc", L"a"), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"arc", L"arc"), 0.0);
}

TEST_F(AxisGridDistance, ofACurveThatOnlyCallsItselfALineIsZero)
{
    placeSevenApart();
    axisGrid->AddCurve(std::make_shared<HostCurve>(CurveType::Line, L"host", [](JsonWrapper&) { return true; }));
    EXPECT_EQ(axisGrid->GetDistance(L"a", L"host"), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"host", L"a"), 0.0);
}

TEST_F(AxisGridDistance, ofAnUnknownIdIsZero)
{
    placeSevenApart();
    EXPECT_EQ(axisGrid->GetDistance(L"a", L"c"), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"c", L"b"), 0.0);
    EXPECT_EQ(axisGrid->GetDistance(L"", L""), 0.0);
    EXPECT_EQ(IAxisGrid::Create()->GetDistance(L"a", L"b"), 0.0);
}

TEST_F(AxisGridDistance, ofADirectionThatIsNaNIsNotRefused)
{
    // It is not above the tolerance.
    placeSevenApart();
    b->SetDir({gridNaN, 0, 0});
    EXPECT_EQ(distance(), 7.0);
    b->SetDir({gridInfinity, 0, 0});
    EXPECT_EQ(distance(), 7.0);
}

TEST_F(AxisGridDistance, ofPointsBeyondAllMeasureIsNotFiniteEither)
{
    for (const double value : {gridNaN, gridInfinity, -gridInfinity, 1e300}) {
        placeSevenApart();
        b->SetEndPt({value, value, 0});
        EXPECT_FALSE(std::isfinite(distance())) << value;
        placeSevenApart();
        a->SetStartPt({value, value, 0});
        EXPECT_FALSE(std::isfinite(distance())) << value;
    }
}

TEST_F(AxisGridDistance, isFoundOfLoadedLines)
{
    AxisGrid loaded;
    ASSERT_TRUE(loaded.LoadLinesAndArcs(
        gridJson(R"({"axis":{"lines":[{"id":"a","name":"","curve":{"startPt":{"x":0,"y":0,"z":0},"endPt":{"x":0,"y":512,"z":0}}},)"
                 R"({"id":"b","name":"","curve":{"startPt":{"x":64,"y":512,"z":9},"endPt":{"x":64,"y":0,"z":9}}}]}})")));
    EXPECT_EQ(loaded.GetDistance(L"a", L"b"), 64.0);
}

TEST(AxisGridText, ofAnEmptyGridHasBothArrays)
{
    AxisGrid axisGrid(7, "g-1");
    EXPECT_EQ(gridText(axisGrid),
              R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[],"arcs":[]},"id":"g-1"}})");
}

TEST(AxisGridText, holdsLinesAndArcsEachInTheOrderOfTheirIds)
{
    AxisGrid axisGrid(7, "g-1");
    const auto second = lineOf(L"2");
    second->SetName(L"B");
    second->SetEndPt({0, 4, 0});
    axisGrid.AddCurve(second);
    const auto arc = arcOf(L"0");
    arc->SetStartTagVis(false);
    arc->SetMiddlePt({7, 8, 9});
    axisGrid.AddCurve(arc);
    const auto first = lineOf(L"1");
    first->SetName(L"A");
    first->SetStartPt({2, 0, 0});
    axisGrid.AddCurve(first);
    EXPECT_EQ(gridText(axisGrid),
              R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[)"
              R"({"curveType":"axisLine","id":"1","name":"A","startTagVis":true,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
              R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":3000.0,"min":0.0,"max":0.0,)"
              R"("len":2.0,"dir":{"x":-1.0,"y":0.0,"z":0.0},)"
              R"("curve":{"startPt":{"x":2.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":0.0,"z":0.0}}},)"
              R"({"curveType":"axisLine","id":"2","name":"B","startTagVis":true,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
              R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":3000.0,"min":0.0,"max":0.0,)"
              R"("len":4.0,"dir":{"x":0.0,"y":1.0,"z":0.0},)"
              R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":4.0,"z":0.0}}}],"arcs":[)"
              R"({"curveType":"axisArc","id":"0","name":"","startTagVis":false,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
              R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":3000.0,"min":0.0,"max":0.0,)"
              R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":0.0,"z":0.0},"middlePt":{"x":7.0,"y":8.0,"z":9.0}}}]},)"
              R"("id":"g-1"}})");
}

TEST(AxisGridText, makesAnIdOnceAndKeepsIt)
{
    const auto axisGrid = IAxisGrid::Create();
    const std::string first = gridText(*axisGrid);
    const std::string id = writtenId(first);
    EXPECT_EQ(id.size(), 36u);
    EXPECT_EQ(axisGrid->GetId(), id);
    EXPECT_EQ(gridText(*axisGrid), first);
    const auto other = IAxisGrid::Create();
    EXPECT_NE(writtenId(gridText(*other)), id);
}

TEST(AxisGridText, isWrittenInTheOrderOfTheKeysThatTheCurvesWereAddedUnder)
{
    AxisGrid axisGrid(0, "g");
    const auto line = lineOf(L"a");
    axisGrid.AddCurve(line);
    axisGrid.AddCurve(lineOf(L"b"));
    line->SetId(L"z");
    const std::string text = gridText(axisGrid);
    EXPECT_LT(text.find(R"("id":"z")"), text.find(R"("id":"b")"));
    EXPECT_NE(text.find(R"("id":"b")"), std::string::npos);
}

TEST(AxisGridText, curvesOfAThirdTypeAreDropped)
{
    const auto write = [](JsonWrapper& out) { return out.Add("host", 1); };
    AxisGrid axisGrid(0, "g");
    axisGrid.AddCurve(std::make_shared<HostCurve>(static_cast<CurveType>(3), L"3", write));
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::None, L"0", write));
    EXPECT_EQ(gridText(axisGrid),
              R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[],"arcs":[]},"id":"g"}})");
    EXPECT_EQ(axisGrid.GetCurves().size(), 2u);
}

TEST(AxisGridText, theTypeThatACurveTellsDecidesWhereItStands)
{
    AxisGrid axisGrid(0, "g");
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::Arc, L"1", [](JsonWrapper& out) { return out.Add("host", "arc"); }));
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::Line, L"2", [](JsonWrapper& out) { return out.Add("host", "line"); }));
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::Line, L"3", [](JsonWrapper&) { return true; }));
    EXPECT_EQ(gridText(axisGrid), R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":)"
                                  R"({"lines":[{"host":"line"},{}],"arcs":[{"host":"arc"}]},"id":"g"}})");
}

TEST(AxisGridText, ofAHostsCurveThatCannotBeWrittenIsNotWhole)
{
    for (const CurveType type : {CurveType::Line, CurveType::Arc}) {
        AxisGrid axisGrid(0, "g");
        axisGrid.AddCurve(std::make_shared<HostCurve>(type, L"1", [](JsonWrapper&) { return false; }));
        JsonWrapper out;
        EXPECT_FALSE(axisGrid.SerializeToJson(out));
        EXPECT_EQ(axisGridDocument(axisGrid), std::nullopt);
    }
}

TEST(AxisGridText, aHostsCurveMayHoldAnyJson)
{
    const std::string own = R"({"a":{"b":[1,2.5,null,true,"轴\"",{}],"c":[]},"d":-0.0})";
    AxisGrid axisGrid(0, "g");
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::Line, L"1", [&own](JsonWrapper& out) { return out.Parse(own); }));
    axisGrid.AddCurve(std::make_shared<HostCurve>(CurveType::Arc, L"2", [](JsonWrapper& out) { return out.Parse("[7]"); }));
    EXPECT_EQ(gridText(axisGrid), R"({"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig","data":{"axis":{"lines":[)" + own +
                                      R"(],"arcs":[[7]]},"id":"g"}})");
}

TEST(AxisGridText, isAddedToWhatIsThere)
{
    AxisGrid axisGrid(0, "g");
    JsonWrapper out = gridJson(R"({"mine":true})");
    EXPECT_TRUE(axisGrid.SerializeToJson(out));
    EXPECT_EQ(out.ToString(), R"({"mine":true,"appKey":"BIM-MODEL","schemaVersion":3,"schemaKey":"GridConfig",)"
                              R"("data":{"axis":{"lines":[],"arcs":[]},"id":"g"}})");
}

TEST(AxisGridText, ofACurveThatCannotBeWrittenIsNotWhole)
{
    AxisGrid axisGrid(0, "g");
    const auto line = lineOf(L"a");
    line->SetMin(gridNaN);
    axisGrid.AddCurve(line);
    axisGrid.AddCurve(arcOf(L"b"));
    JsonWrapper out;
    EXPECT_FALSE(axisGrid.SerializeToJson(out));
    EXPECT_EQ(out["data"]["axis"]["lines"].GetArraySize(), 1);
    EXPECT_EQ(out["data"]["axis"]["arcs"].GetArraySize(), 1);
    EXPECT_EQ(axisGridDocument(axisGrid), std::nullopt);
    line->SetMin(0);
    EXPECT_NE(gridText(axisGrid), "");
}

/// Reads "data" of schema version 3 into a grid, watching the log.
class AxisGridLoad : public testing::Test
{
protected:
    void loads(const std::string& data, bool isWhole, const GridLines& lines)
    {
        log.clear();
        EXPECT_EQ(axisGrid.LoadLinesAndArcs(gridJson(data)), isWhole) << data;
        EXPECT_EQ(log.lines(), lines) << data;
    }

    const std::wstring notAnArray = L"E [ORLOSDK]Invalid axis config data: json lines is not an array!";
    const std::wstring badLine = L"E [ORLOSDK]load axis line error!";
    const std::wstring badArc = L"E [ORLOSDK]load axis arc error!";
    AxisGrid axisGrid{7, "g-1"};
    LogCapture log;
};

constexpr const char* goodLine = R"({"curveType":"axisLine","id":"l","name":"","curve":{"startPt":{},"endPt":{}}})";
constexpr const char* goodArc = R"({"curveType":"axisArc","id":"a","name":""})";

TEST_F(AxisGridLoad, addsTheLinesAndArcs)
{
    loads(std::string(R"({"id":"inner","axis":{"arcs":[)") + goodArc + R"(],"lines":[)" + goodLine + "]}}", true, {});
    EXPECT_EQ(idsOf(axisGrid), (std::vector<std::wstring>{L"a", L"l"}));
    EXPECT_EQ(axisGrid.GetCurve(L"a")->GetCurveType(), CurveType::Arc);
    EXPECT_EQ(axisGrid.GetCurve(L"l")->GetCurveType(), CurveType::Line);
    EXPECT_EQ(axisGrid.GetId(), "g-1") << "the id in the data is not read";
    EXPECT_EQ(axisGrid.GetVersion(), 7);
}

TEST_F(AxisGridLoad, keepsTheCurvesThatAreThereAlready)
{
    const auto before = lineOf(L"before");
    axisGrid.AddCurve(before);
    axisGrid.AddCurve(lineOf(L"l"));
    loads(std::string(R"({"axis":{"lines":[)") + goodLine + "]}}", true, {});
    EXPECT_EQ(idsOf(axisGrid), (std::vector<std::wstring>{L"before", L"l"}));
    EXPECT_FALSE(axisGrid.GetCurve(L"l")->GetStartTagVis()) << "the loaded one replaced the other";
}

TEST_F(AxisGridLoad, eachArrayMayBeMissing)
{
    for (const char* data : {R"({"axis":{}})", R"({"axis":{"lines":[]}})", R"({"axis":{"arcs":[]}})", "{}", R"({"axis":null})",
                             R"({"axis":7})", R"({"axis":[]})", "null", "[]", "7"})
        loads(data, true, {});
    loads(std::string(R"({"axis":{"arcs":[)") + goodArc + "]}}", true, {});
    EXPECT_EQ(idsOf(axisGrid), std::vector<std::wstring>{L"a"});
}

TEST_F(AxisGridLoad, linesThatAreNoArrayAreToldAndTheArcsAreRead)
{
    for (const char* lines : {"{}", "null", "7", "\"[]\"", "true"}) {
        axisGrid.RemoveCurve(L"a");
        loads(std::string(R"({"axis":{"lines":)") + lines + R"(,"arcs":[)" + goodArc + "]}}", false, {notAnArray});
        EXPECT_NE(axisGrid.GetCurve(L"a"), nullptr) << lines;
    }
}

TEST_F(AxisGridLoad, arcsThatAreNoArrayAreToldInTheSameWords)
{
    for (const char* arcs : {"{}", "null", "7", "\"[]\"", "true"}) {
        axisGrid.RemoveCurve(L"l");
        loads(std::string(R"({"axis":{"arcs":)") + arcs + R"(,"lines":[)" + goodLine + "]}}", false, {notAnArray});
        EXPECT_NE(axisGrid.GetCurve(L"l"), nullptr) << arcs;
    }
    loads(R"({"axis":{"arcs":1,"lines":2}})", false, {notAnArray, notAnArray});
}

TEST_F(AxisGridLoad, theKindOfACurveIsThatOfItsTypeInWhicheverArrayItStands)
{
    loads(std::string(R"({"axis":{"lines":[)") + goodArc + R"(],"arcs":[)" + goodLine + "]}}", true, {});
    EXPECT_EQ(axisGrid.GetCurve(L"a")->GetCurveType(), CurveType::Arc);
    EXPECT_EQ(axisGrid.GetCurve(L"l")->GetCurveType(), CurveType::Line);
    JsonWrapper out;
    EXPECT_TRUE(axisGrid.SerializeToJson(out));
    EXPECT_NE(out["data"]["axis"]["lines"].ToString().find(R"("id":"l")"), std::string::npos);
    EXPECT_NE(out["data"]["axis"]["arcs"].ToString().find(R"("id":"a")"), std::string::npos);
}

TEST_F(AxisGridLoad, anUnknownTypeIsToldAndAddsNothing)
{
    const std::string unknown = R"({"curveType":"axisSpline","id":"u","name":"","curve":{"startPt":{},"endPt":{}}})";
    loads(R"({"axis":{"lines":[)" + unknown + "," + goodLine + "]}}", false, {badLine});
    EXPECT_EQ(idsOf(axisGrid), std::vector<std::wstring>{L"l"});
    loads(R"({"axis":{"arcs":[)" + unknown + "," + unknown + "]}}", false, {badArc, badArc});
    EXPECT_EQ(idsOf(axisGrid), std::vector<std::wstring>{L"l"});
}

TEST_F(AxisGridLoad, aLineWithoutACurveIsToldAndStandsInTheGrid)
{
    loads(R"({"axis":{"lines":[{"id":"half","name":"A","startTagVis":true,"diameter":800}]}})", false, {badLine});
    ASSERT_NE(axisGrid.GetCurve(L"half"), nullptr);
    EXPECT_EQ(axisGrid.GetCurve(L"half")->GetName(), L"A");
    EXPECT_TRUE(axisGrid.GetCurve(L"half")->GetStartTagVis());
    EXPECT_FALSE(axisGrid.GetCurve(L"half")->GetEndTagVis());
    EXPECT_EQ(axisGrid.GetCurve(L"half")->GetDiameter(), 800.0);
}

TEST_F(AxisGridLoad, aCurveWithoutANameStandsInTheGridWithTheDefaultsOfANewOne)
{
    loads(R"({"axis":{"arcs":[{"curveType":"axisArc","id":"half","startTagVis":false,"diameter":800}]}})", false, {badArc});
    ASSERT_NE(axisGrid.GetCurve(L"half"), nullptr);
    EXPECT_EQ(axisGrid.GetCurve(L"half")->GetCurveType(), CurveType::Arc);
    EXPECT_TRUE(axisGrid.GetCurve(L"half")->GetStartTagVis());
    EXPECT_EQ(axisGrid.GetCurve(L"half")->GetDiameter(), 3000.0);
}

TEST_F(AxisGridLoad, aCurveWithoutAnIdStandsInTheGridUnderANewOne)
{
    loads(R"({"axis":{"lines":[{"name":"A"}],"arcs":[{"curveType":"axisArc","name":"B"}]}})", false, {badLine, badArc});
    const auto curves = axisGrid.GetCurves();
    ASSERT_EQ(curves.size(), 2u);
    for (IAxisCurve* curve : curves) {
        EXPECT_EQ(curve->GetId().size(), 36u);
        EXPECT_EQ(curve->GetName(), L"");
    }
}

TEST_F(AxisGridLoad, anElementThatIsNoObjectCountsAsALineWithoutAnything)
{
    loads(R"({"axis":{"lines":[7,null,"x",[],{}]}})", false, GridLines(5, badLine));
    ASSERT_EQ(axisGrid.GetCurves().size(), 5u);
    for (const IAxisCurve* curve : axisGrid.GetCurves())
        EXPECT_EQ(curve->GetCurveType(), CurveType::Line);
}

TEST_F(AxisGridLoad, readsOnBehindEachCurveThatFails)
{
    loads(std::string(R"({"axis":{"lines":[{"curveType":""},)") + goodLine + R"(,{"id":"h"}],"arcs":[{"curveType":"x"},)" + goodArc + "]}}",
          false, {badLine, badLine, badArc});
    EXPECT_EQ(idsOf(axisGrid), (std::vector<std::wstring>{L"a", L"h", L"l"}));
}

TEST_F(AxisGridLoad, theLaterOfTwoWithOneIdWins)
{
    loads(R"({"axis":{"lines":[{"id":"x","name":"1","curve":{"startPt":{},"endPt":{}}},)"
          R"({"id":"x","name":"2","curve":{"startPt":{},"endPt":{}}}],"arcs":[{"curveType":"axisArc","id":"y","name":"3"}]}})",
          true, {});
    EXPECT_EQ(idsOf(axisGrid), (std::vector<std::wstring>{L"x", L"y"}));
    EXPECT_EQ(axisGrid.GetCurve(L"x")->GetName(), L"2");
    loads(R"({"axis":{"lines":[{"id":"y","name":"4"}]}})", false, {badLine});
    EXPECT_EQ(axisGrid.GetCurve(L"y")->GetName(), L"4") << "one that failed replaces too";
    EXPECT_EQ(axisGrid.GetCurve(L"y")->GetCurveType(), CurveType::Line);
}

TEST_F(AxisGridLoad, stopsWhereTheGridIsFull)
{
    const auto line = IAxisLine::Create();
    for (int i = 0; i < 499999; ++i) { // the same one, which is enough to fill it
        line->SetId(std::to_wstring(1000000 + i));
        axisGrid.AddCurve(line);
    }
    EXPECT_FALSE(axisGrid.isFull());
    const std::string arcs = R"([{"curveType":"axisArc","id":"last","name":""},{"curveType":"axisArc","id":"too many","name":""}])";
    loads(R"({"axis":{"lines":[{"curveType":"axisArc","id":"1000000","name":""}],"arcs":[]}})", true, {}); // replaces one
    loads(R"({"axis":{"lines":[],"arcs":)" + arcs + "}}", false, {});
    EXPECT_TRUE(axisGrid.isFull());
    EXPECT_NE(axisGrid.GetCurve(L"last"), nullptr);
    EXPECT_EQ(axisGrid.GetCurve(L"too many"), nullptr);
}

} // namespace
} // namespace orlo::test
