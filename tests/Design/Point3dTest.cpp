#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/Point3d.h>
#include <OrloProjectManager/Design/Point3dMath.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace orlo::test {
namespace {

constexpr double pointInfinity = std::numeric_limits<double>::infinity();
constexpr double pointNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double leastDouble = std::numeric_limits<double>::denorm_min();

void expectPoint(const Point3d& point, double x, double y, double z)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
    EXPECT_EQ(point.z, z);
}

Point3d normalized(Point3d point)
{
    point.normalize();
    return point;
}

std::string pointText(const Point3d& point)
{
    JsonWrapper out;
    EXPECT_TRUE(point.SerializeToJson(out));
    return out.ToString();
}

/// Reads the text into a point that holds 7, 8 and 9.
Point3d pointRead(const std::string& text, bool isWhole)
{
    JsonWrapper in;
    EXPECT_TRUE(in.Parse(text)) << text;
    Point3d point{7, 8, 9};
    EXPECT_EQ(point.DeserializeFromJson(in), isWhole) << text;
    return point;
}

TEST(Point3d, startsAsZero)
{
    expectPoint(Point3d(), 0, 0, 0);
    EXPECT_FALSE(std::signbit(Point3d().x) || std::signbit(Point3d().y) || std::signbit(Point3d().z));
}

TEST(Point3d, isCopiedMemberByMember)
{
    static_assert(std::is_trivially_copyable_v<Point3d>);
    static_assert(sizeof(Point3d) == 3 * sizeof(double));
    const Point3d point{1, 2, 3};
    const Point3d copy = point; // NOLINT(performance-unnecessary-copy-initialization)
    Point3d assigned;
    assigned = point;
    expectPoint(copy, 1, 2, 3);
    expectPoint(assigned, 1, 2, 3);
}

TEST(Point2d, startsAsZeroAndIsCopiedAndMoved)
{
    IPoint2d point;
    EXPECT_EQ(point.x, 0.0);
    EXPECT_EQ(point.y, 0.0);
    IPoint2d other;
    other.x = 1;
    other.y = 2;
    point = other;
    EXPECT_EQ(point.x, 1.0);
    EXPECT_EQ(point.y, 2.0);
    other.y = 3;
    point = std::move(other); // NOLINT(performance-move-const-arg): a host may
    EXPECT_EQ(point.x, 1.0);
    EXPECT_EQ(point.y, 3.0);
}

TEST(Point3dDot, sumsTheProducts)
{
    EXPECT_EQ((Point3d{1, 2, 3}.dot({4, -5, 6})), 12.0);
    EXPECT_EQ((Point3d{1, 0, 0}.dot({0, 1, 0})), 0.0);
    EXPECT_EQ((Point3d{}.dot({4, 5, 6})), 0.0);
}

TEST(Point3dDot, addsXAndYFirst)
{
    // At 1e16 the next double is 2 away, so a 1 that is added to it is lost.
    EXPECT_EQ((Point3d{1e16, -1e16, 1}.dot({1, 1, 1})), 1.0);
    EXPECT_EQ((Point3d{1, 1e16, -1e16}.dot({1, 1, 1})), 0.0);
    EXPECT_EQ((Point3d{1e16, 1, -1e16}.dot({1, 1, 1})), 0.0);
}

TEST(Point3dDot, carriesNaNAndInfinities)
{
    EXPECT_TRUE(std::isnan(Point3d{pointNaN, 1, 1}.dot({1, 1, 1})));
    EXPECT_TRUE(std::isnan(Point3d{pointInfinity, 0, 0}.dot({0, 1, 1})));
    EXPECT_TRUE(std::isnan(Point3d{pointInfinity, -pointInfinity, 0}.dot({1, 1, 1})));
    EXPECT_EQ((Point3d{0, 0, pointInfinity}.dot({1, 1, -1})), -pointInfinity);
}

TEST(Point3dLength, isTheRootOfTheSquares)
{
    EXPECT_EQ((Point3d{3, 4, 0}.length()), 5.0);
    EXPECT_EQ((Point3d{-2, 3, -6}.length()), 7.0);
    EXPECT_EQ((Point3d{0, 0, -0.5}.length()), 0.5);
    EXPECT_EQ(Point3d().length(), 0.0);
}

TEST(Point3dLength, addsXAndYFirst)
{
    // Any other order of the three squares gives the double above each of these.
    EXPECT_EQ((Point3d{7.3, 4.7, 3.1}.length()), 0x1.270210b950c79p+3);
    EXPECT_EQ((Point3d{3.9, 1.7, 5.0}.length()), 0x1.a429ed5407846p+2);
    EXPECT_EQ((Point3d{3.8, 3.5, 2.1}.length()), 0x1.64e943f9187e1p+2);
}

TEST(Point3dLength, followsTheFormulaWhereTheSquaresLeaveTheRange)
{
    EXPECT_EQ((Point3d{1e200, 0, 0}.length()), pointInfinity);
    EXPECT_EQ((Point3d{1e-300, 1e-300, 1e-300}.length()), 0.0);
    EXPECT_EQ((Point3d{-pointInfinity, 0, 0}.length()), pointInfinity);
    EXPECT_TRUE(std::isnan(Point3d{0, pointNaN, pointInfinity}.length()));
}

TEST(Point3dNormalize, multipliesByTheReciprocal)
{
    // 3 * (1 / 5), which isn't the double nearest to 0.6 as 3 / 5 is.
    expectPoint(normalized({3, 4, 0}), 0.6000000000000001, 0.8, 0);
    expectPoint(normalized({0, 0, -8}), 0, 0, -1);
    expectPoint(normalized({0, 1024, 0}), 0, 1, 0);
}

TEST(Point3dNormalize, leavesTheZeroPoint)
{
    expectPoint(normalized({0, 0, 0}), 0, 0, 0);
    const Point3d negative = normalized({-0.0, 0, -0.0});
    expectPoint(negative, 0, 0, 0);
    EXPECT_TRUE(std::signbit(negative.x));
    EXPECT_FALSE(std::signbit(negative.y));
    EXPECT_TRUE(std::signbit(negative.z));
}

TEST(Point3dNormalize, hasNoToleranceAboveZero)
{
    expectPoint(normalized({0x1p-500, 0, 0}), 1, 0, 0);
    // The square of 2^-537 is the least double there is.
    expectPoint(normalized({0, -0x1p-537, 0}), 0, -1, 0);
    const Point3d tiny = normalized({0, 3e-150, 4e-150});
    EXPECT_DOUBLE_EQ(tiny.y, 0.6);
    EXPECT_DOUBLE_EQ(tiny.z, 0.8);
}

TEST(Point3dNormalize, leavesAPointWhoseLengthComesOutAsZero)
{
    expectPoint(normalized({0x1p-538, 0, 0}), 0x1p-538, 0, 0);
    expectPoint(normalized({1e-300, 0, 0}), 1e-300, 0, 0);
    expectPoint(normalized({leastDouble, -leastDouble, leastDouble}), leastDouble, -leastDouble, leastDouble);
}

TEST(Point3dNormalize, leavesAPointWithNaN)
{
    const Point3d point = normalized({1, pointNaN, 3});
    EXPECT_EQ(point.x, 1.0);
    EXPECT_TRUE(std::isnan(point.y));
    EXPECT_EQ(point.z, 3.0);
}

TEST(Point3dNormalize, ofAnInfiniteLengthGivesZerosAndNaN)
{
    const Point3d infinite = normalized({pointInfinity, 2, -3});
    EXPECT_TRUE(std::isnan(infinite.x));
    EXPECT_EQ(infinite.y, 0.0);
    EXPECT_EQ(infinite.z, 0.0);
    EXPECT_TRUE(std::signbit(infinite.z));
    expectPoint(normalized({1e200, -1e200, 1}), 0, 0, 0); // the squares are too large, the coordinates aren't
}

TEST(Point3dDifference, isTakenCoordinateByCoordinate)
{
    expectPoint(Point3d{5, 7, 9} - Point3d{1, 10, 0.5}, 4, -3, 8.5);
}

TEST(Point3dSerialize, addsTheCoordinatesInOrderAsDoubles)
{
    EXPECT_EQ(pointText({1.5, -2, 3000}), R"({"x":1.5,"y":-2.0,"z":3000.0})");
    EXPECT_EQ(pointText({-0.0, 0.25, 1234567.5}), R"({"x":-0.0,"y":0.25,"z":1234567.5})");
}

TEST(Point3dSerialize, addsToWhatIsThere)
{
    JsonWrapper out;
    out.Add("a", 1);
    EXPECT_TRUE((Point3d{1, 2, 3}.SerializeToJson(out)));
    EXPECT_EQ(out.ToString(), R"({"a":1,"x":1.0,"y":2.0,"z":3.0})");
}

TEST(Point3dSerialize, leavesOutWhatIsNotFiniteAndIsTrueNevertheless)
{
    EXPECT_EQ(pointText({pointNaN, 2, 3}), R"({"y":2.0,"z":3.0})");
    EXPECT_EQ(pointText({1, pointInfinity, 3}), R"({"x":1.0,"z":3.0})");
    EXPECT_EQ(pointText({1, 2, -pointInfinity}), R"({"x":1.0,"y":2.0})");
}

TEST(Point3dDeserialize, readsTheThreeCoordinates)
{
    expectPoint(pointRead(R"({"z":-3,"more":null,"y":2.5,"x":1e-3})", true), 0.001, 2.5, -3);
}

TEST(Point3dDeserialize, stopsAtTheFirstCoordinateThatIsMissing)
{
    expectPoint(pointRead(R"({"y":2,"z":3})", false), 7, 8, 9);
    expectPoint(pointRead(R"({"x":1,"z":3})", false), 1, 8, 9);
    expectPoint(pointRead(R"({"x":1,"y":2})", false), 1, 2, 9);
    expectPoint(pointRead(R"({"X":1,"Y":2,"Z":3})", false), 7, 8, 9);
}

TEST(Point3dDeserialize, aCoordinateThatIsNoNumberCountsAsMissing)
{
    for (const char* value : {"\"2\"", "null", "true", "[2]", "{}"})
        expectPoint(pointRead(std::string(R"({"x":1,"y":)") + value + R"(,"z":3})", false), 1, 8, 9);
}

TEST(Point3dDeserialize, readsNothingFromWhatIsNoObject)
{
    for (const char* text : {"null", "7", "[1,2,3]", "\"x\"", "{}"})
        expectPoint(pointRead(text, false), 7, 8, 9);
}

} // namespace
} // namespace orlo::test
