#include "support/LogCapture.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Design/AxisGrid.h>
#include <OrloProjectManager/Design/Point3dMath.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

std::uint64_t bitsOf(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

double doubleOf(std::uint64_t bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// Random grids, the same ones for the same seed.
class RandomGrid
{
public:
    explicit RandomGrid(std::uint64_t seed) : m_random(seed) {}

    unsigned upTo(unsigned most) { return static_cast<unsigned>(m_random() % (most + 1)); }
    bool oneIn(unsigned count) { return upTo(count - 1) == 0; }

    /// Of any magnitude, or one that drawings have.
    double number()
    {
        switch (upTo(5)) {
        case 0:
            return oneIn(2) ? -0.0 : 0.0;
        case 1: // without an exponent: a denormal
            return doubleOf(m_random() & 0x800FFFFFFFFFFFFF);
        case 2:
            return static_cast<double>(upTo(20000)) - 10000;
        case 3:
            return oneIn(2) ? std::numeric_limits<double>::max() : -std::numeric_limits<double>::min();
        default:
            return anyFinite();
        }
    }

    Point3d point()
    {
        Point3d made;
        made.x = number();
        made.y = number();
        made.z = oneIn(2) ? 0.0 : number();
        return made;
    }

    std::wstring text()
    {
        static const std::vector<std::wstring> pieces{L"A", L"1", L"轴", L"\"", L"\\", L"\n", L"/", L"é", L"🏗", L" ", L"\x7F", L"\x01"};
        std::wstring made;
        for (unsigned left = upTo(12); left > 0; --left)
            made += pieces[upTo(static_cast<unsigned>(pieces.size() - 1))];
        return made;
    }

    std::shared_ptr<IAxisCurve> curve(const std::wstring& id)
    {
        if (oneIn(2)) {
            auto line = IAxisLine::Create();
            line->SetStartPt(point());
            line->SetEndPt(oneIn(8) ? line->GetStartPt() : point());
            line->SetDir(point());
            return shared(line, id);
        }
        auto arc = IAxisArc::Create();
        arc->SetStartPt(point());
        arc->SetEndPt(point());
        arc->SetMiddlePt(point());
        return shared(arc, id);
    }

    std::shared_ptr<AxisGrid> grid()
    {
        auto made = std::make_shared<AxisGrid>(static_cast<int>(m_random()), utils::toString(L"g" + text()));
        for (unsigned left = upTo(6); left > 0; --left)
            made->AddCurve(curve(L"c" + text()));
        return made;
    }

private:
    double anyFinite()
    {
        for (;;) {
            const double made = doubleOf(m_random());
            if (std::isfinite(made))
                return made;
        }
    }

    std::shared_ptr<IAxisCurve> shared(const std::shared_ptr<IAxisCurve>& curve, const std::wstring& id)
    {
        curve->SetId(id);
        curve->SetName(text());
        curve->SetStartTagVis(oneIn(2));
        curve->SetEndTagVis(oneIn(2));
        curve->SetStartExt(number());
        curve->SetEndExt(oneIn(3) ? curve->GetStartExt() : number());
        curve->SetStartElbowLength(number());
        curve->SetEndElbowLength(number());
        curve->SetVerticalMin(number());
        curve->SetVerticalMax(number());
        curve->SetDiameter(number());
        curve->SetMin(number());
        curve->SetMax(number());
        return curve;
    }

    std::mt19937_64 m_random;
};

/// Each number of a curve, in one order.
std::vector<double> numbersOf(const IAxisCurve& curve)
{
    std::vector<double> numbers{curve.GetStartExt(),       curve.GetEndExt(),      curve.GetStartElbowLength(),
                                curve.GetEndElbowLength(), curve.GetVerticalMin(), curve.GetVerticalMax(),
                                curve.GetDiameter(),       curve.GetMin(),         curve.GetMax()};
    const auto add = [&numbers](const Point3d& point) { numbers.insert(numbers.end(), {point.x, point.y, point.z}); };
    if (const auto* line = dynamic_cast<const IAxisLine*>(&curve)) {
        add(line->GetStartPt());
        add(line->GetEndPt());
    }
    if (const auto* arc = dynamic_cast<const IAxisArc*>(&curve)) {
        add(arc->GetStartPt());
        add(arc->GetEndPt());
        add(arc->GetMiddlePt());
    }
    return numbers;
}

void expectSameBits(const std::vector<double>& read, const std::vector<double>& written)
{
    ASSERT_EQ(read.size(), written.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        EXPECT_EQ(bitsOf(read[i]), bitsOf(written[i])) << i << ": " << read[i] << " for " << written[i];
}

/// A loaded line has the direction of its points, whatever it was given before.
void expectOwnDirection(const IAxisLine& line)
{
    Point3d direction = line.GetEndPt() - line.GetStartPt();
    direction.normalize();
    const Point3d& loaded = line.GetDir();
    for (const auto& [read, expected] :
         {std::pair(loaded.x, direction.x), std::pair(loaded.y, direction.y), std::pair(loaded.z, direction.z)})
        EXPECT_TRUE(bitsOf(read) == bitsOf(expected) || (std::isnan(read) && std::isnan(expected))) << read << " for " << expected;
}

void expectSameCurve(IAxisCurve& read, IAxisCurve& written)
{
    EXPECT_EQ(read.GetCurveType(), written.GetCurveType());
    EXPECT_EQ(read.GetId(), written.GetId());
    EXPECT_EQ(read.GetName(), written.GetName());
    EXPECT_EQ(read.GetStartTagVis(), written.GetStartTagVis());
    EXPECT_EQ(read.GetEndTagVis(), written.GetEndTagVis());
    expectSameBits(numbersOf(read), numbersOf(written));
    if (const auto* line = dynamic_cast<const IAxisLine*>(&read))
        expectOwnDirection(*line);
}

void expectSameCurves(const IAxisGrid& read, const IAxisGrid& written)
{
    const auto readCurves = read.GetCurves();
    const auto writtenCurves = written.GetCurves();
    ASSERT_EQ(readCurves.size(), writtenCurves.size());
    for (std::size_t i = 0; i < readCurves.size(); ++i)
        expectSameCurve(*readCurves[i], *writtenCurves[i]);
}

std::string storedAnswer(const IAxisGrid& axisGrid, const std::string& document)
{
    JsonWrapper answer;
    answer.Add("version", axisGrid.GetVersion());
    answer.Add("id", axisGrid.GetId());
    answer.Add("configValue", document);
    return answer.ToString();
}

// The texts of older schemas are put together here, so that they don't come from what reads them.

std::string jsonNumber(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.16e", number);
    return text;
}

std::string jsonString(const std::wstring& text)
{
    std::string made = "\"";
    for (const char byte : utils::toString(text)) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        const bool isPlain = static_cast<unsigned char>(byte) >= 0x20 && byte != '"' && byte != '\\';
        made += isPlain ? std::string(1, byte) : escaped;
    }
    return made + "\"";
}

std::string jsonPoint(const Point3d& point)
{
    return R"({"x":)" + jsonNumber(point.x) + R"(,"y":)" + jsonNumber(point.y) + R"(,"z":)" + jsonNumber(point.z) + "}";
}

/// A curve as older writers stored it: what reads the same where it is missing may be missing.
class OldCurveText
{
public:
    OldCurveText(IAxisCurve& curve, RandomGrid& random) : m_curve(curve), m_random(random) {}

    std::string text()
    {
        const bool isLine = m_curve.GetCurveType() == CurveType::Line;
        m_text = R"({"id":)" + jsonString(m_curve.GetId()) + R"(,"name":)" + jsonString(m_curve.GetName());
        if (!isLine || m_random.oneIn(2))
            m_text += isLine ? R"(,"curveType":"axisLine")" : R"(,"curveType":"axisArc")";
        addFlag("startTagVis", m_curve.GetStartTagVis());
        addFlag("endTagVis", m_curve.GetEndTagVis());
        addExtensions();
        addLength("startElbowLength", m_curve.GetStartElbowLength());
        addLength("endElbowLength", m_curve.GetEndElbowLength());
        addLength("verticalMin", m_curve.GetVerticalMin());
        addLength("verticalMax", m_curve.GetVerticalMax());
        addLength("diameter", m_curve.GetDiameter());
        addLength("min", m_curve.GetMin());
        addLength("max", m_curve.GetMax());
        addPoints();
        return m_text + "}";
    }

private:
    void add(const std::string& key, const std::string& json) { m_text += ",\"" + key + "\":" + json; }

    void addFlag(const std::string& key, bool flag)
    {
        if (flag || m_random.oneIn(2))
            add(key, flag ? "true" : "false");
    }

    void addLength(const std::string& key, double length)
    {
        if (bitsOf(length) != 0 || m_random.oneIn(2))
            add(key, jsonNumber(length));
    }

    void addExtensions()
    {
        const double start = m_curve.GetStartExt();
        const double end = m_curve.GetEndExt();
        switch (m_random.upTo(2)) {
        case 0:
            add("startExt", jsonNumber(start));
            add("endExt", jsonNumber(end));
            break;
        case 1: // one length for both ends, unless they differ
            if (bitsOf(start) != bitsOf(end))
                add("endExt", jsonNumber(end));
            add("ext", jsonNumber(start));
            break;
        default:
            add("ext", jsonNumber(end));
            add("startExt", jsonNumber(start));
        }
    }

    void addPoints()
    {
        if (const auto* line = dynamic_cast<const IAxisLine*>(&m_curve))
            add("curve", R"({"endPt":)" + jsonPoint(line->GetEndPt()) + R"(,"startPt":)" + jsonPoint(line->GetStartPt()) + "}");
        if (const auto* arc = dynamic_cast<const IAxisArc*>(&m_curve))
            add("curve", R"({"middlePt":)" + jsonPoint(arc->GetMiddlePt()) + R"(,"startPt":)" + jsonPoint(arc->GetStartPt()) +
                             R"(,"endPt":)" + jsonPoint(arc->GetEndPt()) + "}");
    }

    IAxisCurve& m_curve;
    RandomGrid& m_random;
    std::string m_text;
};

std::string joined(const std::vector<std::string>& elements)
{
    std::string text;
    for (const std::string& element : elements)
        text += (text.empty() ? "" : ",") + element;
    return "[" + text + "]";
}

std::string schema2Of(const IAxisGrid& axisGrid, RandomGrid& random)
{
    std::vector<std::string> curves;
    for (IAxisCurve* curve : axisGrid.GetCurves())
        curves.push_back(OldCurveText(*curve, random).text());
    return R"({"schemaVersion":2,"data":{"arr":)" + joined(curves) + "}}";
}

/// The curves in groups of any size, some of them along y.
std::string schema1Of(const IAxisGrid& axisGrid, RandomGrid& random)
{
    std::vector<std::string> along[2];
    std::vector<std::string> group;
    const auto close = [&] {
        along[random.upTo(1)].push_back(R"({"arr":)" + joined(group) + "}");
        group.clear();
    };
    for (IAxisCurve* curve : axisGrid.GetCurves()) {
        group.push_back(OldCurveText(*curve, random).text());
        if (random.oneIn(2))
            close();
    }
    close();
    return R"({"data":{"arrY":)" + joined(along[1]) + R"(,"arrX":)" + joined(along[0]) + R"(},"schemaVersion":1})";
}

class AxisGridProperty : public testing::Test
{
protected:
    /// Calls the check with many random grids, each under a seed of its own, until one fails.
    template <class Check>
    void forGrids(std::uint64_t firstSeed, unsigned count, Check check)
    {
        for (std::uint64_t seed = firstSeed; seed < firstSeed + count && !HasFailure(); ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            RandomGrid random(seed);
            check(random);
        }
        EXPECT_EQ(log.lines(), std::vector<std::wstring>{});
    }

    LogCapture log;
};

TEST_F(AxisGridProperty, whatIsWrittenIsReadBackToTheLastBit)
{
    std::size_t curves = 0;
    forGrids(1000, 3000, [&](RandomGrid& random) {
        const auto written = random.grid();
        const auto document = axisGridDocument(*written);
        ASSERT_TRUE(document.has_value());
        const auto read = parseAxisGrid(storedAnswer(*written, *document));
        ASSERT_NE(read, nullptr) << *document;
        EXPECT_EQ(read->GetVersion(), written->GetVersion());
        EXPECT_EQ(read->GetId(), written->GetId());
        expectSameCurves(*read, *written);
        EXPECT_EQ(axisGridDocument(*read), document);
        JsonWrapper added;
        EXPECT_TRUE(read->SerializeToJson(added));
        EXPECT_EQ(added.ToString(), document);
        curves += read->GetCurves().size();
    });
    EXPECT_GT(curves, 5000u);
}

TEST_F(AxisGridProperty, olderSchemasGiveTheSameCurvesInTheNewestOne)
{
    forGrids(20000, 2000, [](RandomGrid& random) {
        const auto told = random.grid();
        const auto newest = axisGridDocument(*told);
        ASSERT_TRUE(newest.has_value());
        for (const std::string& document : {schema1Of(*told, random), schema2Of(*told, random)}) {
            const auto read = parseAxisGrid(storedAnswer(*told, document));
            ASSERT_NE(read, nullptr) << document;
            expectSameCurves(*read, *told);
            EXPECT_EQ(axisGridDocument(*read), newest) << document;
        }
    });
}

TEST_F(AxisGridProperty, whatIsWrittenSaysOfEachCurveAllThatItHolds)
{
    // Changing any one number of a grid changes its text, and each change another way.
    forGrids(50000, 200, [](RandomGrid& random) {
        AxisGrid axisGrid(1, "g");
        axisGrid.AddCurve(random.curve(L"c"));
        IAxisCurve& curve = *axisGrid.GetCurves()[0];
        std::set<std::string> texts{*axisGridDocument(axisGrid)};
        std::size_t changes = 0;
        const auto changed = [&](double (IAxisCurve::*get)() const, void (IAxisCurve::*set)(double)) {
            const double before = (curve.*get)();
            (curve.*set)(before == 0.0 ? 1.0 : -before);
            texts.insert(*axisGridDocument(axisGrid));
            (curve.*set)(before);
            ++changes;
        };
        changed(&IAxisCurve::GetStartExt, &IAxisCurve::SetStartExt);
        changed(&IAxisCurve::GetEndExt, &IAxisCurve::SetEndExt);
        changed(&IAxisCurve::GetStartElbowLength, &IAxisCurve::SetStartElbowLength);
        changed(&IAxisCurve::GetEndElbowLength, &IAxisCurve::SetEndElbowLength);
        changed(&IAxisCurve::GetVerticalMin, &IAxisCurve::SetVerticalMin);
        changed(&IAxisCurve::GetVerticalMax, &IAxisCurve::SetVerticalMax);
        changed(&IAxisCurve::GetDiameter, &IAxisCurve::SetDiameter);
        changed(&IAxisCurve::GetMin, &IAxisCurve::SetMin);
        changed(&IAxisCurve::GetMax, &IAxisCurve::SetMax);
        EXPECT_EQ(texts.size(), changes + 1);
    });
}

TEST_F(AxisGridProperty, theDistanceIsNeverNegativeAndNeverFails)
{
    forGrids(70000, 1000, [](RandomGrid& random) {
        const auto written = random.grid();
        const auto read = parseAxisGrid(storedAnswer(*written, *axisGridDocument(*written)));
        ASSERT_NE(read, nullptr);
        for (const auto& axisGrid : {std::static_pointer_cast<IAxisGrid>(written), read})
            for (IAxisCurve* from : axisGrid->GetCurves())
                for (IAxisCurve* to : axisGrid->GetCurves())
                    EXPECT_FALSE(axisGrid->GetDistance(from->GetId(), to->GetId()) < 0.0);
    });
}

} // namespace
} // namespace orlo::test
