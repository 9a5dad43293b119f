#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/NetworkProject/Design/ConfigTexts.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

constexpr double curveInfinity = std::numeric_limits<double>::infinity();
constexpr double curveNaN = std::numeric_limits<double>::quiet_NaN();

/// What is as good for lines as for arcs.   kind: the text of "curveType".
void forBothKinds(const std::function<void(IAxisCurve&, const std::string& kind)>& check)
{
    {
        SCOPED_TRACE("a line");
        check(*IAxisLine::Create(), "axisLine");
    }
    {
        SCOPED_TRACE("an arc");
        check(*IAxisArc::Create(), "axisArc");
    }
}

JsonWrapper curveJson(const std::string& text)
{
    JsonWrapper json;
    EXPECT_TRUE(json.Parse(text)) << text;
    return json;
}

/// A stored curve that can be read as either kind, with more members.
std::string storedCurve(const std::string& kind, const std::string& more = {})
{
    return R"({"curveType":")" + kind + R"(","id":"i","name":"n","curve":{"startPt":{},"endPt":{}})" + (more.empty() ? "" : "," + more) +
           "}";
}

bool loads(IAxisCurve& curve, const std::string& text)
{
    return curve.DeserializeFromJson(curveJson(text));
}

std::string curveText(IAxisCurve& curve)
{
    JsonWrapper out;
    EXPECT_TRUE(curve.SerializeToJson(out));
    return out.ToString();
}

void expectCoordinates(const Point3d& point, double x, double y, double z)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
    EXPECT_EQ(point.z, z);
}

bool isLowerCaseGuid(const std::wstring& text)
{
    const std::wstring form = L"xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool isHyphen = text[i] == L'-';
        if (isHyphen != (form[i] == L'-') || (!isHyphen && std::wstring(L"0123456789abcdef").find(text[i]) == std::wstring::npos))
            return false;
    }
    return true;
}

/// One of the lengths and heights of a curve.
struct CurveNumber
{
    std::string key;
    double (IAxisCurve::*get)() const;
    void (IAxisCurve::*set)(double);
    double whenMade;
    double whenNotStored;
};

const std::vector<CurveNumber>& curveNumbers()
{
    static const std::vector<CurveNumber> numbers{
        {"startExt", &IAxisCurve::GetStartExt, &IAxisCurve::SetStartExt, 3000, 3000},
        {"endExt", &IAxisCurve::GetEndExt, &IAxisCurve::SetEndExt, 3000, 3000},
        {"startElbowLength", &IAxisCurve::GetStartElbowLength, &IAxisCurve::SetStartElbowLength, 0, 0},
        {"endElbowLength", &IAxisCurve::GetEndElbowLength, &IAxisCurve::SetEndElbowLength, 0, 0},
        {"verticalMin", &IAxisCurve::GetVerticalMin, &IAxisCurve::SetVerticalMin, 0, 0},
        {"verticalMax", &IAxisCurve::GetVerticalMax, &IAxisCurve::SetVerticalMax, 0, 0},
        {"diameter", &IAxisCurve::GetDiameter, &IAxisCurve::SetDiameter, 3000, 0},
        {"min", &IAxisCurve::GetMin, &IAxisCurve::SetMin, 0, 0},
        {"max", &IAxisCurve::GetMax, &IAxisCurve::SetMax, 0, 0},
    };
    return numbers;
}

/// Gives every shared field a value that no curve starts with.
void fill(IAxisCurve& curve)
{
    curve.SetId(L"old id");
    curve.SetName(L"old name");
    curve.SetStartTagVis(false);
    curve.SetEndTagVis(false);
    double value = 11;
    for (const CurveNumber& number : curveNumbers())
        (curve.*number.set)(value++);
}

void expectFilled(IAxisCurve& curve)
{
    EXPECT_FALSE(curve.GetStartTagVis());
    EXPECT_FALSE(curve.GetEndTagVis());
    double value = 11;
    for (const CurveNumber& number : curveNumbers())
        EXPECT_EQ((curve.*number.get)(), value++) << number.key;
}

TEST(CurveTypes, haveTheNumbersThatHostsStore)
{
    EXPECT_EQ(static_cast<int>(CurveType::None), 0);
    EXPECT_EQ(static_cast<int>(CurveType::Line), 1);
    EXPECT_EQ(static_cast<int>(CurveType::Arc), 2);
    EXPECT_EQ(sizeof(CurveType), 1u);
}

TEST(CurveTypes, haveTextsInBothDirections)
{
    EXPECT_EQ(curveTypeTexts().textOf(CurveType::Line), L"axisLine");
    EXPECT_EQ(curveTypeTexts().textOf(CurveType::Arc), L"axisArc");
    EXPECT_EQ(curveTypeTexts().valueOf(L"axisLine"), CurveType::Line);
    EXPECT_EQ(curveTypeTexts().valueOf(L"axisArc"), CurveType::Arc);
}

TEST(CurveTypes, outsideTheTableAreAnEmptyTextAndNone)
{
    EXPECT_EQ(curveTypeTexts().textOf(CurveType::None), L"");
    EXPECT_EQ(curveTypeTexts().textOf(static_cast<CurveType>(3)), L"");
    for (const wchar_t* text : {L"", L"axisline", L"AxisArc", L"axisLine ", L"line", L"1"})
        EXPECT_EQ(curveTypeTexts().valueOf(text), CurveType::None) << text;
}

TEST(AxisCurve, isMadeWithTheValuesOfANewAxis)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        EXPECT_EQ(curve.GetName(), L"");
        EXPECT_TRUE(curve.GetStartTagVis());
        EXPECT_TRUE(curve.GetEndTagVis());
        for (const CurveNumber& number : curveNumbers())
            EXPECT_EQ((curve.*number.get)(), number.whenMade) << number.key;
    });
}

TEST(AxisCurve, isMadeWithPointsAtZero)
{
    const auto line = IAxisLine::Create();
    expectCoordinates(line->GetStartPt(), 0, 0, 0);
    expectCoordinates(line->GetEndPt(), 0, 0, 0);
    expectCoordinates(line->GetDir(), 0, 0, 0);
    const auto arc = IAxisArc::Create();
    expectCoordinates(arc->GetStartPt(), 0, 0, 0);
    expectCoordinates(arc->GetEndPt(), 0, 0, 0);
    expectCoordinates(arc->GetMiddlePt(), 0, 0, 0);
}

TEST(AxisCurve, hasOtherValuesWhereAStoredOneDoesNotTellThem)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        ASSERT_TRUE(loads(curve, storedCurve(kind)));
        EXPECT_EQ(curve.GetId(), L"i");
        EXPECT_EQ(curve.GetName(), L"n");
        EXPECT_FALSE(curve.GetStartTagVis());
        EXPECT_FALSE(curve.GetEndTagVis());
        for (const CurveNumber& number : curveNumbers())
            EXPECT_EQ((curve.*number.get)(), number.whenNotStored) << number.key;
    });
}

TEST(AxisCurve, losesWhatItHeldWhenAStoredOneDoesNotTellIt)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        fill(curve);
        curve.SetStartTagVis(true);
        curve.SetEndTagVis(true);
        ASSERT_TRUE(loads(curve, storedCurve(kind)));
        EXPECT_EQ(curve.GetId(), L"i");
        EXPECT_EQ(curve.GetName(), L"n");
        EXPECT_FALSE(curve.GetStartTagVis());
        EXPECT_FALSE(curve.GetEndTagVis());
        for (const CurveNumber& number : curveNumbers())
            EXPECT_EQ((curve.*number.get)(), number.whenNotStored) << number.key;
    });
}

TEST(AxisCurve, readsEachStoredNumberIntoItsOwnField)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        for (const CurveNumber& stored : curveNumbers()) {
            ASSERT_TRUE(loads(curve, storedCurve(kind, "\"" + stored.key + "\":-12.25")));
            for (const CurveNumber& number : curveNumbers())
                EXPECT_EQ((curve.*number.get)(), number.key == stored.key ? -12.25 : number.whenNotStored)
                    << number.key << " with " << stored.key;
        }
    });
}

TEST(AxisCurve, readsEachStoredFlagIntoItsOwnField)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        ASSERT_TRUE(loads(curve, storedCurve(kind, R"("startTagVis":true,"endTagVis":false)")));
        EXPECT_TRUE(curve.GetStartTagVis());
        EXPECT_FALSE(curve.GetEndTagVis());
        ASSERT_TRUE(loads(curve, storedCurve(kind, R"("endTagVis":true)")));
        EXPECT_FALSE(curve.GetStartTagVis());
        EXPECT_TRUE(curve.GetEndTagVis());
    });
}

TEST(AxisCurve, everySetterSetsItsOwnField)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        fill(curve);
        expectFilled(curve);
        EXPECT_EQ(curve.GetId(), L"old id");
        EXPECT_EQ(curve.GetName(), L"old name");
        curve.SetStartTagVis(true);
        EXPECT_TRUE(curve.GetStartTagVis());
        EXPECT_FALSE(curve.GetEndTagVis());
        curve.SetStartTagVis(false);
        curve.SetEndTagVis(true);
        EXPECT_FALSE(curve.GetStartTagVis());
        EXPECT_TRUE(curve.GetEndTagVis());
    });
}

TEST(AxisCurve, everySetterOfAPointSetsItsOwnPoint)
{
    const auto line = IAxisLine::Create();
    line->SetStartPt({1, 2, 3});
    line->SetEndPt({4, 5, 6});
    line->SetDir({7, 8, 9});
    expectCoordinates(line->GetStartPt(), 1, 2, 3);
    expectCoordinates(line->GetEndPt(), 4, 5, 6);
    expectCoordinates(line->GetDir(), 7, 8, 9);
    const auto arc = IAxisArc::Create();
    arc->SetStartPt({1, 2, 3});
    arc->SetEndPt({4, 5, 6});
    arc->SetMiddlePt({7, 8, 9});
    expectCoordinates(arc->GetStartPt(), 1, 2, 3);
    expectCoordinates(arc->GetEndPt(), 4, 5, 6);
    expectCoordinates(arc->GetMiddlePt(), 7, 8, 9);
}

TEST(AxisCurve, aSetterMayBeGivenTheFieldItself)
{
    const std::wstring longName(1000, L'轴');
    forBothKinds([&](IAxisCurve& curve, const std::string&) {
        curve.SetName(longName);
        curve.SetName(curve.GetName());
        EXPECT_EQ(curve.GetName(), longName);
        curve.SetId(longName);
        curve.SetId(curve.GetId());
        EXPECT_EQ(curve.GetId(), longName);
    });
    const auto line = IAxisLine::Create();
    line->SetStartPt({1, 2, 3});
    line->SetStartPt(line->GetStartPt());
    expectCoordinates(line->GetStartPt(), 1, 2, 3);
    line->SetDir(line->GetStartPt());
    expectCoordinates(line->GetDir(), 1, 2, 3);
}

TEST(AxisCurve, theNameIsHandedOutByReference)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        const std::wstring& name = curve.GetName();
        curve.SetName(L"later");
        EXPECT_EQ(name, L"later");
    });
}

TEST(AxisCurve, getIdMakesAGuidOnce)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        const std::wstring id = curve.GetId();
        EXPECT_TRUE(isLowerCaseGuid(id)) << utils::toString(id);
        EXPECT_EQ(curve.GetId(), id);
        EXPECT_NE(IAxisLine::Create()->GetId(), id);
        EXPECT_NE(curveText(curve).find("\"curveType\":\"" + kind + "\",\"id\":\"" + utils::toString(id) + "\","), std::string::npos);
        curve.SetId(L"");
        EXPECT_TRUE(isLowerCaseGuid(curve.GetId()));
        EXPECT_NE(curve.GetId(), id);
    });
}

TEST(AxisCurve, getIdLeavesAnIdThatIsThere)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        curve.SetId(L" ");
        EXPECT_EQ(curve.GetId(), L" ");
    });
}

TEST(AxisCurve, writingMakesNoId)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        EXPECT_EQ(curveText(curve).rfind(R"({"curveType":")" + kind + R"(","id":"","name":"",)", 0), 0u);
        EXPECT_EQ(curveText(curve).rfind(R"({"curveType":")" + kind + R"(","id":"","name":"",)", 0), 0u);
        EXPECT_TRUE(isLowerCaseGuid(curve.GetId()));
    });
}

TEST(AxisCurve, knowsItsKind)
{
    const auto line = IAxisLine::Create();
    const auto arc = IAxisArc::Create();
    EXPECT_EQ(static_cast<const IAxisCurve&>(*line).GetCurveType(), CurveType::Line);
    EXPECT_EQ(static_cast<const IAxisCurve&>(*arc).GetCurveType(), CurveType::Arc);
    EXPECT_EQ(line->IAxisLine::GetCurveType(), CurveType::Line);
    EXPECT_EQ(arc->IAxisArc::GetCurveType(), CurveType::Arc);
}

TEST(AxisCurve, isReachedFromTheSharedBaseByADynamicCast)
{
    const auto line = IAxisLine::Create();
    const auto arc = IAxisArc::Create();
    const std::shared_ptr<IAxisCurve> lineCurve = line;
    const std::shared_ptr<IAxisCurve> arcCurve = arc;
    EXPECT_EQ(dynamic_cast<IAxisLine*>(lineCurve.get()), line.get());
    EXPECT_EQ(dynamic_cast<IAxisArc*>(lineCurve.get()), nullptr);
    EXPECT_EQ(dynamic_cast<IAxisArc*>(arcCurve.get()), arc.get());
    EXPECT_EQ(dynamic_cast<IAxisLine*>(arcCurve.get()), nullptr);
    EXPECT_EQ(std::dynamic_pointer_cast<IAxisLine>(lineCurve), line);
}

TEST(AxisCurve, createMakesANewOneEachTime)
{
    EXPECT_NE(IAxisLine::Create(), IAxisLine::Create());
    EXPECT_NE(IAxisArc::Create(), IAxisArc::Create());
}

TEST(AxisLine, getExtIsTheExtensionAtTheStart)
{
    const auto line = IAxisLine::Create();
    EXPECT_EQ(line->GetExt(), 3000.0);
    line->SetStartExt(1.5);
    line->SetEndExt(2.5);
    EXPECT_EQ(line->GetExt(), 1.5);
    ASSERT_TRUE(loads(*line, storedCurve("axisLine", R"("ext":500,"startExt":700)")));
    EXPECT_EQ(line->GetExt(), 700.0);
}

TEST(AxisLine, isWrittenWithItsMembersInOrder)
{
    const auto line = IAxisLine::Create();
    line->SetId(L"l-1");
    line->SetName(L"轴 A\"");
    line->SetEndTagVis(false);
    line->SetStartExt(100.5);
    line->SetEndExt(200);
    line->SetStartElbowLength(1.25);
    line->SetEndElbowLength(2.5);
    line->SetVerticalMin(-3);
    line->SetVerticalMax(42);
    line->SetDiameter(800);
    line->SetMin(-7.5);
    line->SetMax(7.75);
    line->SetStartPt({1, 2, 3});
    line->SetEndPt({1, 2, -509});
    line->SetDir({9, 9, 9});
    EXPECT_EQ(
        curveText(*line),
        R"({"curveType":"axisLine","id":"l-1","name":"轴 A\"","startTagVis":true,"endTagVis":false,"startExt":100.5,"endExt":200.0,)"
        R"("startElbowLength":1.25,"endElbowLength":2.5,"verticalMin":-3.0,"verticalMax":42.0,"diameter":800.0,"min":-7.5,"max":7.75,)"
        R"("len":512.0,"dir":{"x":0.0,"y":0.0,"z":-1.0},)"
        R"("curve":{"startPt":{"x":1.0,"y":2.0,"z":3.0},"endPt":{"x":1.0,"y":2.0,"z":-509.0}}})");
    expectCoordinates(line->GetDir(), 9, 9, 9);
}

TEST(AxisArc, isWrittenWithItsMembersInOrder)
{
    const auto arc = IAxisArc::Create();
    arc->SetId(L"a-1");
    arc->SetName(L"弧 1");
    arc->SetStartTagVis(false);
    arc->SetStartExt(100.5);
    arc->SetEndExt(200);
    arc->SetStartElbowLength(1.25);
    arc->SetEndElbowLength(2.5);
    arc->SetVerticalMin(-3);
    arc->SetVerticalMax(42);
    arc->SetDiameter(800);
    arc->SetMin(-7.5);
    arc->SetMax(7.75);
    arc->SetStartPt({1, 2, 3});
    arc->SetEndPt({4, 5, 6});
    arc->SetMiddlePt({7, 8, 9});
    EXPECT_EQ(
        curveText(*arc),
        R"({"curveType":"axisArc","id":"a-1","name":"弧 1","startTagVis":false,"endTagVis":true,"startExt":100.5,"endExt":200.0,)"
        R"("startElbowLength":1.25,"endElbowLength":2.5,"verticalMin":-3.0,"verticalMax":42.0,"diameter":800.0,"min":-7.5,"max":7.75,)"
        R"("curve":{"startPt":{"x":1.0,"y":2.0,"z":3.0},"endPt":{"x":4.0,"y":5.0,"z":6.0},"middlePt":{"x":7.0,"y":8.0,"z":9.0}}})");
}

TEST(AxisLine, aNewOneIsWrittenWithItsDefaults)
{
    EXPECT_EQ(curveText(*IAxisLine::Create()),
              R"({"curveType":"axisLine","id":"","name":"","startTagVis":true,"endTagVis":true,"startExt":3000.0,"endExt":3000.0,)"
              R"("startElbowLength":0.0,"endElbowLength":0.0,"verticalMin":0.0,"verticalMax":0.0,"diameter":3000.0,"min":0.0,"max":0.0,)"
              R"("len":0.0,"dir":{"x":0.0,"y":0.0,"z":0.0},)"
              R"("curve":{"startPt":{"x":0.0,"y":0.0,"z":0.0},"endPt":{"x":0.0,"y":0.0,"z":0.0}}})");
}

TEST(AxisCurve, isAddedToTheMembersThatAreThere)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        JsonWrapper out;
        out.Add("mine", 1);
        EXPECT_TRUE(curve.SerializeToJson(out));
        EXPECT_EQ(out.ToString().rfind(R"({"mine":1,"curveType":")" + kind + "\"", 0), 0u);
    });
}

TEST(AxisCurve, textsThatAreNoUnicodeAreWrittenWithTheReplacementCharacter)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        curve.SetId(std::wstring(1, static_cast<wchar_t>(0xD800)));
        curve.SetName(std::wstring(L"a\0b", 3));
        EXPECT_EQ(curveText(curve).rfind(R"({"curveType":")" + kind + "\",\"id\":\"\xEF\xBF\xBD\",\"name\":\"a\\u0000b\",", 0), 0u)
            << curveText(curve);
    });
}

TEST(AxisLine, lengthAndDirectionAreThoseOfThePointsWhateverWasLoadedOrSet)
{
    const auto line = IAxisLine::Create();
    ASSERT_TRUE(loads(*line, R"({"id":"i","name":"n","len":77,"dir":{"x":5,"y":6,"z":7},)"
                             R"("curve":{"startPt":{"x":0,"y":1,"z":0},"endPt":{"x":0,"y":-3,"z":0}}})"));
    expectCoordinates(line->GetDir(), 0, -1, 0);
    EXPECT_NE(curveText(*line).find(R"("len":4.0,"dir":{"x":0.0,"y":-1.0,"z":0.0})"), std::string::npos);
    line->SetDir({5, 6, 7});
    line->SetEndPt({0, 9, 0});
    expectCoordinates(line->GetDir(), 5, 6, 7);
    EXPECT_NE(curveText(*line).find(R"("len":8.0,"dir":{"x":0.0,"y":1.0,"z":0.0})"), std::string::npos);
    expectCoordinates(line->GetDir(), 5, 6, 7);
}

TEST(AxisLine, theSettersOfThePointsLeaveTheDirection)
{
    const auto line = IAxisLine::Create();
    line->SetStartPt({1, 0, 0});
    line->SetEndPt({5, 0, 0});
    expectCoordinates(line->GetDir(), 0, 0, 0);
}

TEST(AxisLine, theDirectionIsMadeWithTheReciprocalOfTheLength)
{
    const auto line = IAxisLine::Create();
    ASSERT_TRUE(loads(*line, R"({"id":"i","name":"n","curve":{"startPt":{"x":10,"y":20,"z":30},"endPt":{"x":13,"y":24,"z":30}}})"));
    expectCoordinates(line->GetDir(), 0.6000000000000001, 0.8, 0);
}

TEST(AxisLine, ofNoLengthHasNoDirectionAndLoads)
{
    const auto line = IAxisLine::Create();
    line->SetDir({1, 2, 3});
    ASSERT_TRUE(loads(*line, R"({"id":"i","name":"n","curve":{"startPt":{"x":1,"y":2,"z":3},"endPt":{"x":1,"y":2,"z":3}}})"));
    expectCoordinates(line->GetDir(), 0, 0, 0);
    EXPECT_NE(curveText(*line).find(R"("len":0.0,"dir":{"x":0.0,"y":0.0,"z":0.0})"), std::string::npos);
}

TEST(AxisCurve, startExtAndEndExtFallBackToExt)
{
    const auto expectExt = [](const std::string& more, double start, double end) {
        forBothKinds([&](IAxisCurve& curve, const std::string& kind) {
            ASSERT_TRUE(loads(curve, storedCurve(kind, more))) << more;
            EXPECT_EQ(curve.GetStartExt(), start) << more;
            EXPECT_EQ(curve.GetEndExt(), end) << more;
        });
    };
    expectExt("", 3000, 3000);
    expectExt(R"("ext":500)", 500, 500);
    expectExt(R"("ext":500,"startExt":700)", 700, 500);
    expectExt(R"("endExt":700,"ext":500)", 500, 700);
    expectExt(R"("endExt":700)", 3000, 700);
    expectExt(R"("startExt":0,"endExt":-1,"ext":500)", 0, -1);
    expectExt(R"("ext":"500")", 3000, 3000);
    expectExt(R"("ext":500,"startExt":"700","endExt":null)", 500, 500);
}

TEST(AxisCurve, aCurveTypeThatIsMissingMeansALine)
{
    const std::string stored = R"({"id":"i","name":"n","curve":{"startPt":{},"endPt":{}}})";
    EXPECT_TRUE(loads(*IAxisLine::Create(), stored));
    EXPECT_FALSE(loads(*IAxisArc::Create(), stored));
}

TEST(AxisCurve, aCurveTypeThatIsNoTextCountsAsMissing)
{
    for (const char* type : {"2", "null", "true", "[\"axisArc\"]", "{}"}) {
        const std::string stored = std::string(R"({"curveType":)") + type + R"(,"id":"i","name":"n","curve":{"startPt":{},"endPt":{}}})";
        EXPECT_TRUE(loads(*IAxisLine::Create(), stored)) << type;
        EXPECT_FALSE(loads(*IAxisArc::Create(), stored)) << type;
    }
}

TEST(AxisCurve, ofAnotherTypeIsNotReadAtAll)
{
    forBothKinds([](IAxisCurve& curve, const std::string& own) {
        for (const std::string type : {"axisLine", "axisArc", "axisline", "AXISARC", "line", "", "1", "axisLine "}) {
            if (type == own)
                continue;
            fill(curve);
            EXPECT_FALSE(loads(curve, storedCurve(type, R"("startTagVis":true,"min":1)"))) << type;
            EXPECT_EQ(curve.GetId(), L"old id") << type;
            EXPECT_EQ(curve.GetName(), L"old name") << type;
            expectFilled(curve);
        }
    });
}

TEST(AxisCurve, withoutAnIdIsNotRead)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        for (const char* id : {"", R"("id":7,)", R"("id":null,)", R"("id":["i"],)"}) {
            fill(curve);
            EXPECT_FALSE(loads(curve, R"({"curveType":")" + kind + "\"," + id + R"("name":"n","startTagVis":true,"min":1})")) << id;
            EXPECT_EQ(curve.GetId(), L"old id") << id;
            EXPECT_EQ(curve.GetName(), L"old name") << id;
            expectFilled(curve);
        }
    });
}

TEST(AxisCurve, withoutANameHasItsIdAndNothingElse)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        for (const char* name : {"", R"("name":7,)", R"("name":null,)", R"("name":{},)"}) {
            fill(curve);
            EXPECT_FALSE(loads(curve, R"({"curveType":")" + kind + "\"," + name + R"("id":"new","startTagVis":true,"min":1})")) << name;
            EXPECT_EQ(curve.GetId(), L"new") << name;
            EXPECT_EQ(curve.GetName(), L"old name") << name;
            expectFilled(curve);
        }
    });
}

TEST(AxisCurve, anEmptyIdIsOne)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        curve.SetId(L"old id");
        EXPECT_TRUE(loads(curve, R"({"curveType":")" + kind + R"(","id":"","name":"","curve":{"startPt":{},"endPt":{}}})"));
        EXPECT_TRUE(isLowerCaseGuid(curve.GetId()));
        EXPECT_EQ(curve.GetName(), L"");
    });
}

TEST(AxisCurve, readsTextsAsUtf8)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        EXPECT_TRUE(loads(curve, R"({"curveType":")" + kind + R"(","id":"标","name":"\u8f74 🏗","curve":{"startPt":{},"endPt":{}}})"));
        EXPECT_EQ(curve.GetId(), L"标");
        EXPECT_EQ(curve.GetName(), L"轴 🏗");
    });
}

TEST(AxisCurve, aStoredValueOfAnotherTypeCountsAsMissing)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        for (const char* value : {"\"5\"", "null", "true", "[5]", "{}"})
            for (const CurveNumber& stored : curveNumbers()) {
                fill(curve);
                ASSERT_TRUE(loads(curve, storedCurve(kind, "\"" + stored.key + "\":" + value)));
                EXPECT_EQ((curve.*stored.get)(), stored.whenNotStored) << stored.key << value;
            }
        for (const char* value : {"\"true\"", "null", "1", "[true]", "{}"}) {
            curve.SetStartTagVis(true);
            curve.SetEndTagVis(true);
            ASSERT_TRUE(loads(curve, storedCurve(kind, std::string(R"("startTagVis":)") + value + R"(,"endTagVis":)" + value)));
            EXPECT_FALSE(curve.GetStartTagVis()) << value;
            EXPECT_FALSE(curve.GetEndTagVis()) << value;
        }
    });
}

TEST(AxisCurve, anIntegerIsReadAsANumberToo)
{
    forBothKinds([](IAxisCurve& curve, const std::string& kind) {
        ASSERT_TRUE(loads(curve, storedCurve(kind, R"("startExt":700,"diameter":9007199254740992,"min":-2)")));
        EXPECT_EQ(curve.GetStartExt(), 700.0);
        EXPECT_EQ(curve.GetDiameter(), 9007199254740992.0);
        EXPECT_EQ(curve.GetMin(), -2.0);
    });
}

TEST(AxisCurve, whatIsNoObjectIsNoCurve)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        for (const char* text : {"null", "7", "\"axisArc\"", "[]", "[{}]", "{}"})
            EXPECT_FALSE(loads(curve, text)) << text;
    });
}

/// Reads the text into a line that goes from {1, 2, 3} to {4, 5, 6} and has the direction {7, 8, 9}.
std::shared_ptr<IAxisLine> lineRead(const std::string& curveMember, bool isWhole)
{
    auto line = IAxisLine::Create();
    line->SetStartPt({1, 2, 3});
    line->SetEndPt({4, 5, 6});
    line->SetDir({7, 8, 9});
    EXPECT_EQ(loads(*line, R"({"id":"i","name":"n","min":5)" + curveMember + "}"), isWhole) << curveMember;
    EXPECT_EQ(line->GetMin(), 5.0) << "what all curves have is read first: " << curveMember;
    return line;
}

TEST(AxisLine, withoutItsPointsIsNotWhole)
{
    for (const char* member : {"", R"(,"curve":{})", R"(,"curve":{"endPt":{"x":10,"y":20,"z":30}})", R"(,"curve":7)", R"(,"curve":null)",
                               R"(,"curve":"text")", R"(,"curve":[{}])"}) {
        const auto line = lineRead(member, false);
        expectCoordinates(line->GetStartPt(), 1, 2, 3);
        expectCoordinates(line->GetEndPt(), 4, 5, 6);
        expectCoordinates(line->GetDir(), 7, 8, 9);
    }
}

TEST(AxisLine, withoutItsEndHasItsStart)
{
    const auto line = lineRead(R"(,"curve":{"startPt":{"x":10,"y":20,"z":30}})", false);
    expectCoordinates(line->GetStartPt(), 10, 20, 30);
    expectCoordinates(line->GetEndPt(), 4, 5, 6);
    expectCoordinates(line->GetDir(), 7, 8, 9);
}

TEST(AxisLine, aCoordinateThatIsMissingStaysAndTheLineIsWhole)
{
    const auto line = lineRead(R"(,"curve":{"startPt":{"x":4,"z":30},"endPt":{"x":4,"y":10}})", true);
    expectCoordinates(line->GetStartPt(), 4, 2, 3);
    expectCoordinates(line->GetEndPt(), 4, 10, 6);
    EXPECT_DOUBLE_EQ(line->GetDir().length(), 1.0);
    EXPECT_EQ(line->GetDir().x, 0.0);
}

TEST(AxisLine, aPointThatIsNoObjectIsThereAndTellsNothing)
{
    for (const char* point : {"7", "null", "\"1,2,3\"", "[1,2,3]", "true"}) {
        const auto line = lineRead(std::string(R"(,"curve":{"startPt":)") + point + R"(,"endPt":{"x":1,"y":2,"z":-1}})", true);
        expectCoordinates(line->GetStartPt(), 1, 2, 3);
        expectCoordinates(line->GetEndPt(), 1, 2, -1);
        expectCoordinates(line->GetDir(), 0, 0, -1);
    }
}

/// Reads the text into an arc with the points {1, 2, 3}, {4, 5, 6} and {7, 8, 9}. An arc is always whole.
std::shared_ptr<IAxisArc> arcRead(const std::string& curveMember)
{
    auto arc = IAxisArc::Create();
    arc->SetStartPt({1, 2, 3});
    arc->SetEndPt({4, 5, 6});
    arc->SetMiddlePt({7, 8, 9});
    EXPECT_TRUE(loads(*arc, R"({"curveType":"axisArc","id":"i","name":"n")" + curveMember + "}")) << curveMember;
    return arc;
}

TEST(AxisArc, readsItsThreePoints)
{
    const auto arc =
        arcRead(R"(,"curve":{"middlePt":{"x":70,"y":80,"z":90},"startPt":{"x":10,"y":20,"z":30},"endPt":{"x":40,"y":50,"z":60}})");
    expectCoordinates(arc->GetStartPt(), 10, 20, 30);
    expectCoordinates(arc->GetEndPt(), 40, 50, 60);
    expectCoordinates(arc->GetMiddlePt(), 70, 80, 90);
}

TEST(AxisArc, withoutACurveKeepsItsPoints)
{
    for (const char* member : {"", R"(,"curve":{})", R"(,"curve":7)", R"(,"curve":null)", R"(,"curve":[1])",
                               R"(,"curve":{"startPt":7,"endPt":null,"middlePt":[1,2,3]})"}) {
        const auto arc = arcRead(member);
        expectCoordinates(arc->GetStartPt(), 1, 2, 3);
        expectCoordinates(arc->GetEndPt(), 4, 5, 6);
        expectCoordinates(arc->GetMiddlePt(), 7, 8, 9);
    }
}

TEST(AxisArc, readsThePointsThatAreThere)
{
    const auto start = arcRead(R"(,"curve":{"startPt":{"x":10,"y":20,"z":30}})");
    expectCoordinates(start->GetStartPt(), 10, 20, 30);
    expectCoordinates(start->GetEndPt(), 4, 5, 6);
    expectCoordinates(start->GetMiddlePt(), 7, 8, 9);
    const auto end = arcRead(R"(,"curve":{"endPt":{"x":10,"y":20,"z":30}})");
    expectCoordinates(end->GetStartPt(), 1, 2, 3);
    expectCoordinates(end->GetEndPt(), 10, 20, 30);
    expectCoordinates(end->GetMiddlePt(), 7, 8, 9);
    const auto middle = arcRead(R"(,"curve":{"middlePt":{"x":10,"y":20}})");
    expectCoordinates(middle->GetStartPt(), 1, 2, 3);
    expectCoordinates(middle->GetEndPt(), 4, 5, 6);
    expectCoordinates(middle->GetMiddlePt(), 10, 20, 9);
}

TEST(AxisArc, isNotReadPastAMissingName)
{
    const auto arc = IAxisArc::Create();
    EXPECT_FALSE(loads(*arc, R"({"curveType":"axisArc","id":"i","curve":{"startPt":{"x":10,"y":20,"z":30}}})"));
    expectCoordinates(arc->GetStartPt(), 0, 0, 0);
}

TEST(AxisCurve, aNumberThatIsNotFiniteCannotBeWritten)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        for (const CurveNumber& number : curveNumbers()) {
            const double before = (curve.*number.get)();
            for (const double value : {curveNaN, curveInfinity, -curveInfinity}) {
                (curve.*number.set)(value);
                JsonWrapper out;
                EXPECT_FALSE(curve.SerializeToJson(out)) << number.key;
                EXPECT_FALSE(out.HasMember(number.key)) << number.key;
                EXPECT_TRUE(out.HasMember("curve")) << "the rest is there";
                EXPECT_TRUE(JsonWrapper().Parse(out.ToString())) << number.key;
            }
            (curve.*number.set)(before);
            EXPECT_NE(curveText(curve), "");
        }
    });
}

TEST(AxisCurve, aPointThatIsNotFiniteCannotBeWritten)
{
    for (const double value : {curveNaN, curveInfinity, -curveInfinity})
        for (const Point3d& point : {Point3d{value, 0, 0}, Point3d{0, value, 0}, Point3d{0, 0, value}}) {
            JsonWrapper out;
            const auto startOfLine = IAxisLine::Create();
            startOfLine->SetStartPt(point);
            EXPECT_FALSE(startOfLine->SerializeToJson(out));
            const auto endOfLine = IAxisLine::Create();
            endOfLine->SetEndPt(point);
            EXPECT_FALSE(endOfLine->SerializeToJson(out));
            const auto startOfArc = IAxisArc::Create();
            startOfArc->SetStartPt(point);
            EXPECT_FALSE(startOfArc->SerializeToJson(out));
            const auto endOfArc = IAxisArc::Create();
            endOfArc->SetEndPt(point);
            EXPECT_FALSE(endOfArc->SerializeToJson(out));
            const auto middleOfArc = IAxisArc::Create();
            middleOfArc->SetMiddlePt(point);
            EXPECT_FALSE(middleOfArc->SerializeToJson(out));
            EXPECT_TRUE(JsonWrapper().Parse(out.ToString())) << out.ToString();
        }
}

TEST(AxisLine, aDirectionThatIsNotFiniteIsNotWrittenAnyway)
{
    const auto line = IAxisLine::Create();
    line->SetDir({curveNaN, curveInfinity, -curveInfinity});
    EXPECT_EQ(curveText(*line), curveText(*IAxisLine::Create()));
}

TEST(AxisLine, aLengthBeyondTheLargestDoubleIsLeftOutAndThePointsComeBack)
{
    const auto line = IAxisLine::Create();
    line->SetStartPt({-1e308, 0, 0});
    line->SetEndPt({1e308, 1, 0});
    const std::string text = curveText(*line);
    EXPECT_EQ(text.find("\"len\""), std::string::npos);
    const auto again = IAxisLine::Create();
    ASSERT_TRUE(loads(*again, text));
    expectCoordinates(again->GetStartPt(), -1e308, 0, 0);
    expectCoordinates(again->GetEndPt(), 1e308, 1, 0);
}

TEST(AxisCurve, aNewOneThatIsReadFromItsOwnTextStaysWhatItWas)
{
    forBothKinds([](IAxisCurve& curve, const std::string&) {
        const std::string text = curveText(curve);
        ASSERT_TRUE(loads(curve, text));
        EXPECT_EQ(curveText(curve), text);
    });
}

} // namespace
} // namespace orlo::test
