#include "GridPicture.h"

#include "Svg.h"

#include <algorithm>

namespace session {

using namespace orlo;

namespace {

/// Where an axis ends, and which way it would run on.
struct AxisEnd
{
    Spot spot;
    Spot onward; ///< of the length 1, or 0 for an axis that is but a point
};

struct AxisEnds
{
    AxisEnd start;
    AxisEnd end;
};

Spot inPlan(const Point3d& point)
{
    return {point.x, point.y};
}

AxisEnds drawStraight(SvgPicture& picture, const IAxisCurve& axis, const Spot& from, const Spot& to)
{
    const double far = length(to - from);
    const Spot along = far > 0.0 ? (to - from) * (1.0 / far) : Spot{};
    const Spot start = from - along * axis.GetStartExt();
    const Spot end = to + along * axis.GetEndExt();
    picture.line(start, end, "axis");
    return {{start, along * -1.0}, {end, along}};
}

AxisEnds drawCurved(SvgPicture& picture, const IAxisArc& axis)
{
    const Spot from = inPlan(axis.GetStartPt());
    const Spot to = inPlan(axis.GetEndPt());
    const std::optional<Arc> through = arcThrough(from, inPlan(axis.GetMiddlePt()), to);
    if (!through)
        return drawStraight(picture, axis, from, to);
    const Arc arc = through->extended(axis.GetStartExt(), axis.GetEndExt());
    picture.arc(arc, "axis");
    return {{arc.at(arc.from), arc.direction(arc.from) * -1.0}, {arc.at(arc.to()), arc.direction(arc.to())}};
}

AxisEnds drawAxis(SvgPicture& picture, const IAxisCurve& axis)
{
    if (const auto* const arc = dynamic_cast<const IAxisArc*>(&axis))
        return drawCurved(picture, *arc);
    const auto& line = dynamic_cast<const IAxisLine&>(axis);
    return drawStraight(picture, line, inPlan(line.GetStartPt()), inPlan(line.GetEndPt()));
}

void drawBubble(SvgPicture& picture, const IAxisCurve& axis, const AxisEnd& end)
{
    constexpr double usualDiameter = 3000.0; // for axes that tell none
    const double diameter = axis.GetDiameter() > 0.0 ? axis.GetDiameter() : usualDiameter;
    const Spot centre = end.spot + end.onward * (0.5 * diameter);
    picture.circle(centre, 0.5 * diameter, "bubble");
    const double letters = static_cast<double>(std::max<std::size_t>(axis.GetName().size(), 2));
    picture.text(centre, diameter / letters, axis.GetName());
}

} // namespace

std::string gridPicture(const IAxisGrid& grid)
{
    SvgPicture picture;
    const std::vector<IAxisCurve*> axes = grid.GetCurves();
    std::vector<AxisEnds> ends;
    for (const IAxisCurve* const axis : axes)
        ends.push_back(drawAxis(picture, *axis));
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->GetStartTagVis())
            drawBubble(picture, *axes[i], ends[i].start);
        if (axes[i]->GetEndTagVis())
            drawBubble(picture, *axes[i], ends[i].end);
    }
    return picture.document(L"轴网: the axis grid, version " + std::to_wstring(grid.GetVersion()) + L", in millimetres");
}

} // namespace session
