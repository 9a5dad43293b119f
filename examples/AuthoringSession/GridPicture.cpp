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

// Drawn 1:100, as plans are; some viewers don't take texts of the real size.
double drawn(double millimetres)
{
    return 0.01 * millimetres;
}

Spot drawn(const Point3d& point)
{
    return {drawn(point.x), drawn(point.y)};
}

AxisEnds drawStraight(SvgPicture& picture, const IAxisCurve& axis, const Spot& from, const Spot& to)
{
    const double far = length(to - from);
    const Spot along = far > 0.0 ? (to - from) * (1.0 / far) : Spot{};
    const Spot start = from - along * drawn(axis.GetStartExt());
    const Spot end = to + along * drawn(axis.GetEndExt());
    picture.line(start, end, "axis");
    return {{start, along * -1.0}, {end, along}};
}

AxisEnds drawCurved(SvgPicture& picture, const IAxisArc& axis)
{
    const Spot from = drawn(axis.GetStartPt());
    const Spot to = drawn(axis.GetEndPt());
    const std::optional<Arc> through = arcThrough(from, drawn(axis.GetMiddlePt()), to);
    if (!through)
        return drawStraight(picture, axis, from, to);
    const Arc arc = through->extended(drawn(axis.GetStartExt()), drawn(axis.GetEndExt()));
    picture.arc(arc, "axis");
    return {{arc.at(arc.from), arc.direction(arc.from) * -1.0}, {arc.at(arc.to()), arc.direction(arc.to())}};
}

AxisEnds drawAxis(SvgPicture& picture, const IAxisCurve& axis)
{
    if (const auto* const arc = dynamic_cast<const IAxisArc*>(&axis))
        return drawCurved(picture, *arc);
    const auto& line = dynamic_cast<const IAxisLine&>(axis);
    return drawStraight(picture, line, drawn(line.GetStartPt()), drawn(line.GetEndPt()));
}

void drawBubble(SvgPicture& picture, const IAxisCurve& axis, const AxisEnd& end)
{
    constexpr double usualDiameter = 3000.0; // for axes that tell none
    const double diameter = drawn(axis.GetDiameter() > 0.0 ? axis.GetDiameter() : usualDiameter);
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
    return picture.document(L"轴网: the axis grid, version " + std::to_wstring(grid.GetVersion()) + L"; 1 unit is 100 mm");
}

} // namespace session
