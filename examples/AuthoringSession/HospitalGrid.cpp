#include "HospitalGrid.h"

#include <cmath>

namespace session {

using namespace orlo;

namespace {

constexpr double betweenNumbers = 8400.0;
constexpr double betweenLetters = 7200.0;
constexpr int axesEachWay = 10;
constexpr double right = (axesEachWay - 1) * betweenNumbers;
constexpr double top = (axesEachWay - 1) * betweenLetters;
constexpr double roof = 7200.0;

void addStraight(IAxisGrid& grid, const std::wstring& name, const Point3d& start, const Point3d& end)
{
    const auto axis = IAxisLine::Create();
    axis->SetName(name);
    axis->SetStartPt(start);
    axis->SetEndPt(end);
    axis->SetVerticalMax(roof);
    grid.AddCurve(axis);
}

/// A quarter of a circle around the corner of 10 and K.
void addRound(IAxisGrid& grid, const std::wstring& name, double radius)
{
    const double diagonal = radius * std::sqrt(0.5);
    const auto axis = IAxisArc::Create();
    axis->SetName(name);
    axis->SetStartPt({right + radius, top, 0.0});
    axis->SetMiddlePt({right + diagonal, top + diagonal, 0.0});
    axis->SetEndPt({right, top + radius, 0.0});
    axis->SetEndTagVis(false);
    axis->SetVerticalMax(roof);
    grid.AddCurve(axis);
}

} // namespace

std::shared_ptr<IAxisGrid> hospitalGrid()
{
    const std::wstring letters = L"ABCDEFGHJK";
    auto grid = IAxisGrid::Create();
    for (int i = 0; i < axesEachWay; ++i) {
        const double x = i * betweenNumbers;
        const double y = i * betweenLetters;
        addStraight(*grid, std::to_wstring(i + 1), {x, 0.0, 0.0}, {x, top, 0.0});
        addStraight(*grid, letters.substr(i, 1), {0.0, y, 0.0}, {right, y, 0.0});
    }
    addRound(*grid, L"R1", 12000.0);
    addRound(*grid, L"R2", 20400.0);
    return grid;
}

IAxisCurve* axisNamed(const IAxisGrid& grid, const std::wstring& name)
{
    for (IAxisCurve* const axis : grid.GetCurves()) {
        if (axis->GetName() == name)
            return axis;
    }
    return nullptr;
}

} // namespace session
