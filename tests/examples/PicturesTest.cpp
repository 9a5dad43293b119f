#include "Design/CallerTree.h"
#include "Xml.h"

#include <gmock/gmock.h>

#include <AuthoringSession/Arc.h>
#include <AuthoringSession/GridPicture.h>
#include <AuthoringSession/SpacesPicture.h>
#include <AuthoringSession/Svg.h>
#include <cmath>
#include <sstream>

// The pictures that the sample draws: the circle of an arc, the order of storeys, and what becomes of them in SVG.
namespace session {

void PrintTo(const Spot& spot, std::ostream* out)
{
    *out << "(" << spot.x << ", " << spot.y << ")";
}

} // namespace session

namespace orlo::test {
namespace {

using session::Arc;
using session::arcThrough;
using session::gridPicture;
using session::heightOf;
using session::spacesPicture;
using session::Spot;
using session::storeysFromBelow;
using session::SvgPicture;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const double pi = std::acos(-1.0);

MATCHER_P2(IsNear, x, y, "")
{
    return std::abs(arg.x - x) < 1e-6 && std::abs(arg.y - y) < 1e-6;
}

MATCHER(IsWellFormed, "")
{
    const XmlReading reading(arg);
    *result_listener << reading.fault();
    return reading.fault().empty();
}

void expectArc(const std::optional<Arc>& arc, const Spot& centre, double radius, double from, double sweep)
{
    ASSERT_TRUE(arc.has_value());
    EXPECT_THAT(arc->centre, IsNear(centre.x, centre.y));
    EXPECT_NEAR(radius, arc->radius, 1e-6);
    EXPECT_NEAR(from, arc->from, 1e-9);
    EXPECT_NEAR(sweep, arc->sweep, 1e-9);
}

TEST(ArcThroughThreePoints, turnsTheWayThatTheMiddleTells)
{
    expectArc(arcThrough({1, 0}, {0, 1}, {-1, 0}), {0, 0}, 1, 0, pi);
    expectArc(arcThrough({1, 0}, {0, -1}, {-1, 0}), {0, 0}, 1, 0, -pi);
    expectArc(arcThrough({-1, 0}, {0, 1}, {1, 0}), {0, 0}, 1, pi, -pi);
}

TEST(ArcThroughThreePoints, maybeMoreThanHalfACircle)
{
    expectArc(arcThrough({1, 0}, {-1, 0}, {0, -1}), {0, 0}, 1, 0, 1.5 * pi);
    expectArc(arcThrough({1, 0}, {-1, 0}, {0, 1}), {0, 0}, 1, 0, -1.5 * pi);
}

TEST(ArcThroughThreePoints, liesWhereABuildingLies)
{
    const double diagonal = 12000 * std::sqrt(0.5);
    expectArc(arcThrough({87600, 64800}, {75600 + diagonal, 64800 + diagonal}, {75600, 76800}), {75600, 64800}, 12000, 0, pi / 2);
}

TEST(ArcThroughThreePoints, beginsAndEndsAtItsPointsAndPassesTheMiddle)
{
    const std::vector<Spot> points = {{0, 0}, {8400, 100}, {-300, 7200}, {1e6, 1e6}, {5, -3}, {-8400, -20}};
    int count = 0;
    for (const Spot& start : points)
        for (const Spot& middle : points)
            for (const Spot& end : points) {
                const std::optional<Arc> arc = arcThrough(start, middle, end);
                if (!arc)
                    continue;
                ++count;
                const double slack = 1e-6 * arc->radius;
                EXPECT_LT(length(arc->at(arc->from) - start), slack);
                EXPECT_LT(length(arc->at(arc->to()) - end), slack);
                EXPECT_NEAR(arc->radius, length(middle - arc->centre), slack);
                // Where the middle stands on the circle, seen from the start in the arc's sense, it is before the end.
                const Spot way = middle - arc->centre;
                const double sense = arc->sweep < 0 ? -1 : 1;
                const double turn = std::fmod(sense * (std::atan2(way.y, way.x) - arc->from) + 4 * pi, 2 * pi);
                EXPECT_LT(turn, std::abs(arc->sweep));
            }
    EXPECT_EQ(6 * 5 * 4, count);
}

TEST(ArcThroughThreePoints, isNoneForPointsOnOneLine)
{
    EXPECT_FALSE(arcThrough({0, 0}, {1000, 1000}, {2000, 2000}));
    EXPECT_FALSE(arcThrough({0, 0}, {3000, 3000}, {2000, 2000})) << "the middle beyond the end";
    EXPECT_FALSE(arcThrough({0, 0}, {1000, 1e-7}, {2000, 0})) << "but for the last digits";
    EXPECT_FALSE(arcThrough({1, 2}, {1, 2}, {3, 4}));
    EXPECT_FALSE(arcThrough({1, 2}, {3, 4}, {1, 2}));
    EXPECT_FALSE(arcThrough({1, 2}, {1, 2}, {1, 2}));
    EXPECT_FALSE(arcThrough({0, 0}, {std::nan(""), 1}, {2, 0}));
}

TEST(ArcThroughThreePoints, takesAFlatOneThatIsNoLine)
{
    const std::optional<Arc> arc = arcThrough({-1000, 0}, {0, 1}, {1000, 0});
    ASSERT_TRUE(arc.has_value());
    EXPECT_THAT(arc->radius, DoubleNear(500000.5, 1e-3));
}

TEST(AnArc, runsOnAlongItsCircle)
{
    const Arc arc = Arc{{10, 0}, 1000, 0, pi / 2}.extended(1000 * pi / 6, 1000 * pi / 4);
    EXPECT_NEAR(-pi / 6, arc.from, 1e-9);
    EXPECT_NEAR(pi / 2 + pi / 4, arc.to(), 1e-9);
    const Arc other = Arc{{10, 0}, 1000, 0, -pi / 2}.extended(1000 * pi / 6, 0);
    EXPECT_NEAR(pi / 6, other.from, 1e-9);
    EXPECT_NEAR(-pi / 2, other.to(), 1e-9);
    EXPECT_THAT(other.direction(0), IsNear(0, -1));
}

TEST(AnArc, neverMeetsItself)
{
    for (const double sweep : {1.0, -1.0, 6.0, -6.2}) {
        const double extended = Arc{{0, 0}, 10, 0, sweep}.extended(1e9, 1e9).sweep;
        EXPECT_GT(std::abs(extended), std::abs(sweep));
        EXPECT_LT(std::abs(extended), 2 * pi);
        EXPECT_EQ(sweep < 0, extended < 0);
    }
}

TEST(XmlText, escapesWhatXmlReadsOtherwise)
{
    EXPECT_EQ("&lt;轴 1&gt; &amp; &quot;A&quot; &apos;B&apos;", session::xmlText(L"<轴 1> & \"A\" 'B'"));
    EXPECT_EQ("a\xEF\xBF\xBD\xEF\xBF\xBD\tb", session::xmlText(std::wstring(L"a\x01\0\tb", 5)));
}

TEST(SvgPictures, drawUpwards)
{
    SvgPicture picture;
    picture.line({0, 0}, {5, 10}, "axis");
    picture.block({1, 2}, {4, 8}, "block");
    const XmlReading reading(picture.document(L"up"));
    EXPECT_EQ("", reading.fault());
    EXPECT_THAT(reading.values("path", "d"), ElementsAre("M 0.00 0.00 L 5.00 -10.00"));
    EXPECT_THAT(reading.values("rect", "y"), ElementsAre("-8.00"));
    EXPECT_THAT(reading.values("rect", "height"), ElementsAre("6.00"));
    EXPECT_THAT(reading.texts("title"), ElementsAre("up"));
}

TEST(SvgPictures, tellWhichOfTheArcsIsMeant)
{
    SvgPicture picture;
    picture.arc({{0, 0}, 10, 0, pi / 2}, "axis");
    picture.arc({{0, 0}, 10, 0, -pi / 2}, "axis");
    picture.arc({{0, 0}, 10, 0, 1.5 * pi}, "axis");
    picture.arc({{0, 0}, 10, 0, -1.5 * pi}, "axis");
    EXPECT_THAT(XmlReading(picture.document(L"")).values("path", "d"),
                ElementsAre("M 10.00 0.00 A 10.00 10.00 0 0 0 0.00 -10.00", "M 10.00 0.00 A 10.00 10.00 0 0 1 0.00 10.00",
                            "M 10.00 0.00 A 10.00 10.00 0 1 0 0.00 10.00", "M 10.00 0.00 A 10.00 10.00 0 1 1 0.00 -10.00"));
}

TEST(SvgPictures, haveRoomForTheBulgeOfAnArc)
{
    SvgPicture picture;
    picture.arc({{0, 0}, 1000, pi / 6, pi / 6 * 4}, "axis");
    const std::vector<std::string> boxes = XmlReading(picture.document(L"")).values("svg", "viewBox");
    ASSERT_THAT(boxes, SizeIs(1));
    std::istringstream box(boxes[0]);
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    box >> left >> top >> width >> height;
    EXPECT_LT(top, -1000);
    EXPECT_GT(top + height, -500);
    EXPECT_LT(left, -1000 * std::cos(pi / 6));
    EXPECT_GT(left + width, 1000 * std::cos(pi / 6));
}

TEST(SvgPictures, mayBeEmpty)
{
    EXPECT_THAT(SvgPicture().document(L"<nothing>"), IsWellFormed());
}

class GridPictures : public testing::Test
{
protected:
    std::shared_ptr<IAxisLine> addLine(const std::wstring& name, const Point3d& start, const Point3d& end)
    {
        const auto line = IAxisLine::Create();
        line->SetName(name);
        line->SetStartPt(start);
        line->SetEndPt(end);
        grid->AddCurve(line);
        return line;
    }
    std::shared_ptr<IAxisArc> addArc(const std::wstring& name, const Point3d& start, const Point3d& middle, const Point3d& end)
    {
        const auto arc = IAxisArc::Create();
        arc->SetName(name);
        arc->SetStartPt(start);
        arc->SetMiddlePt(middle);
        arc->SetEndPt(end);
        grid->AddCurve(arc);
        return arc;
    }
    XmlReading drawn() const
    {
        const std::string document = gridPicture(*grid);
        EXPECT_THAT(document, IsWellFormed());
        EXPECT_THAT(document, Not(HasSubstr("nan")));
        return XmlReading(document);
    }

    std::shared_ptr<IAxisGrid> grid = IAxisGrid::Create();
};

TEST_F(GridPictures, drawALineWithItsExtensionsAndTheBubblesBehindThem)
{
    const auto line = addLine(L"1", {0, 0, 0}, {0, 10000, 3600});
    line->SetStartExt(1000);
    line->SetEndExt(2000);
    line->SetDiameter(800);
    const XmlReading picture = drawn();
    EXPECT_THAT(picture.values("path", "d"), ElementsAre("M 0.00 10.00 L 0.00 -120.00"));
    EXPECT_THAT(picture.values("circle", "cy"), ElementsAre("14.00", "-124.00"));
    EXPECT_THAT(picture.values("circle", "r"), ElementsAre("4.00", "4.00"));
}

TEST_F(GridPictures, showABubbleWhereItsTagIsVisible)
{
    addLine(L"1", {0, 0, 0}, {0, 10000, 0})->SetStartTagVis(false);
    const auto hidden = addLine(L"2", {5000, 0, 0}, {5000, 10000, 0});
    hidden->SetStartTagVis(false);
    hidden->SetEndTagVis(false);
    const XmlReading picture = drawn();
    EXPECT_THAT(picture.values("circle", "cy"), ElementsAre("-145.00"));
    EXPECT_THAT(picture.texts("text"), ElementsAre("1", HasSubstr("version 0")));
    EXPECT_THAT(picture.values("path", "d"), SizeIs(2));
}

TEST_F(GridPictures, drawAnArcThroughItsPoints)
{
    const auto arc = addArc(L"R1", {10000, 0, 0}, {0, 10000, 0}, {-10000, 0, 0});
    arc->SetStartExt(0);
    arc->SetEndExt(0);
    const XmlReading picture = drawn();
    EXPECT_THAT(picture.values("path", "d"), ElementsAre(testing::StartsWith("M 100.00 0.00 A 100.00 100.00 0 ")));
    EXPECT_THAT(picture.values("circle", "cx"), ElementsAre("100.00", "-100.00"));
    EXPECT_THAT(picture.values("circle", "cy"), ElementsAre("15.00", "15.00")) << "onward, by half a diameter";
}

TEST_F(GridPictures, drawAnArcThatIsNoneAsALine)
{
    addArc(L"R1", {0, 0, 0}, {5000, 0, 0}, {10000, 0, 0});
    EXPECT_THAT(drawn().values("path", "d"), ElementsAre("M -30.00 0.00 L 130.00 0.00"));
}

TEST_F(GridPictures, takeAxesWithoutALengthAndWithoutADiameter)
{
    addLine(L"1", {7000, 0, 0}, {7000, 0, 0})->SetDiameter(0);
    addArc(L"R1", {}, {}, {});
    EXPECT_THAT(drawn().values("circle", "r"), ElementsAre("15.00", "15.00", "15.00", "15.00"));
}

TEST_F(GridPictures, keepNamesWhateverTheyHold)
{
    addLine(L"</svg>&\"1\"", {0, 0, 0}, {0, 10000, 0});
    EXPECT_THAT(drawn().texts("text"), ElementsAre("</svg>&\"1\"", "</svg>&\"1\"", HasSubstr("axis grid")));
}

TEST_F(GridPictures, mayBeEmpty)
{
    EXPECT_THAT(drawn().values("path", "d"), IsEmpty());
}

TEST(ALevel, tellsItsHeight)
{
    EXPECT_EQ(3.6, heightOf(L"3.600"));
    EXPECT_EQ(3.6, heightOf(L"+3.600"));
    EXPECT_EQ(-4.2, heightOf(L"-4.200"));
    EXPECT_EQ(-4.2, heightOf(L"−4.200"));
    EXPECT_EQ(0.0, heightOf(L"±0.000"));
    EXPECT_EQ(12.0, heightOf(L" 12 m"));
    EXPECT_EQ(std::nullopt, heightOf(L""));
    EXPECT_EQ(std::nullopt, heightOf(L"屋面"));
}

class SpacePictures : public testing::Test
{
protected:
    CallerNode& add(CallerNode& parent, const std::wstring& name, SpaceType type, const std::wstring& level = L"")
    {
        CallerNode& node = tree.addChild(parent, name, type);
        node.name = name;
        node.architectureLevel = level;
        return node;
    }
    CallerNode& addSite()
    {
        CallerNode& site = tree.addRoot(L"site", SpaceType::Site);
        site.name = L"site";
        return site;
    }

    CallerTree tree;
};

std::vector<std::wstring> namesOf(const std::vector<std::shared_ptr<ISpaceConfigItem>>& spaces)
{
    std::vector<std::wstring> names;
    for (const auto& space : spaces)
        names.push_back(space->GetName());
    return names;
}

TEST_F(SpacePictures, stackStoreysByTheirLevel)
{
    CallerNode& region = addSite();
    add(region, L"3F", SpaceType::Floor, L"7.200");
    add(region, L"B2", SpaceType::Floor, L"-8.400");
    add(region, L"roof", SpaceType::Floor, L"屋面");
    add(region, L"10F", SpaceType::Floor, L"34.500");
    add(region, L"wing", SpaceType::Region, L"-99");
    add(region, L"1F", SpaceType::Floor, L"±0.000");
    add(region, L"B1", SpaceType::Floor, L"-4.200");
    add(region, L"hall", SpaceType::Floor, L"0");
    EXPECT_THAT(namesOf(storeysFromBelow(region.subSpaces)), ElementsAre(L"B2", L"B1", L"1F", L"hall", L"3F", L"10F", L"roof"));
}

TEST_F(SpacePictures, standOnTheGround)
{
    CallerNode& building = add(addSite(), L"building", SpaceType::Building);
    add(building, L"1F", SpaceType::Floor, L"0.000");
    add(building, L"B1", SpaceType::Floor, L"-4.200");
    add(building, L"2F", SpaceType::Floor, L"3.600");
    const XmlReading picture(spacesPicture(tree));
    EXPECT_EQ("", picture.fault());
    EXPECT_THAT(picture.values("rect", "class"), ElementsAre("block", "block", "basement", "storey", "storey"));
    EXPECT_THAT(picture.values("rect", "y"), ElementsAre(testing::_, testing::_, "0.00", "-40.00", "-80.00"));
    EXPECT_THAT(picture.texts("text"), ElementsAre("site", "building", "B1  -4.200", "1F  0.000", "2F  3.600", HasSubstr("in metres")));
}

TEST_F(SpacePictures, setBuildingsSideBySideInTheirSite)
{
    CallerNode& site = addSite();
    CallerNode& low = add(site, L"low", SpaceType::Building);
    add(low, L"1F", SpaceType::Floor, L"0.000");
    CallerNode& high = add(site, L"<high> & a name that needs far more room than a storey does", SpaceType::Building);
    add(high, L"1F", SpaceType::Floor, L"0.000");
    add(high, L"2F", SpaceType::Floor, L"3.600");
    const XmlReading picture(spacesPicture(tree));
    EXPECT_EQ("", picture.fault());
    std::vector<double> left;
    for (const std::string& x : picture.values("rect", "x"))
        left.push_back(std::stod(x));
    std::vector<double> width;
    for (const std::string& wide : picture.values("rect", "width"))
        width.push_back(std::stod(wide));
    ASSERT_THAT(left, SizeIs(6)); // site, low, 1F, high, 1F, 2F
    const auto isInside = [&](std::size_t inner, std::size_t outer) {
        return left[inner] > left[outer] && left[inner] + width[inner] < left[outer] + width[outer];
    };
    EXPECT_TRUE(isInside(1, 0));
    EXPECT_TRUE(isInside(2, 1));
    EXPECT_TRUE(isInside(3, 0));
    EXPECT_TRUE(isInside(4, 3));
    EXPECT_GT(left[3], left[1] + width[1]);
    EXPECT_THAT(picture.texts("text"), testing::Contains("<high> & a name that needs far more room than a storey does"));
}

TEST_F(SpacePictures, mayBeEmpty)
{
    EXPECT_THAT(spacesPicture(tree), IsWellFormed());
}

// What these tests look at pictures with.
TEST(XmlReadings, findWhatIsNotWellFormed)
{
    for (const char* document :
         {"<a/>", "<a><b c=\"1\" d=\"&lt;\"/>x &amp; y</a>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a></a>\n"})
        EXPECT_THAT(document, IsWellFormed());
    for (const char* document : {"", "a", "<a>", "</a>", "<a></b>", "<a><b></a></b>", "<a/><b/>", "<a b=1/>", "<a b=\"1\" b=\"2\"/>",
                                 "<a b=\"<\"/>", "<a>&</a>", "<a>&nbsp;</a>", "<a>\x01</a>", "<a>\xFF</a>", "<a b=\"1/>", "<a"})
        EXPECT_THAT(document, Not(IsWellFormed()));
}

} // namespace
} // namespace orlo::test
