#include "Arc.h"

#include <algorithm>
#include <cmath>

namespace session {

namespace {

const double fullTurn = 2.0 * std::acos(-1.0);

/// The sine of an angle below which its legs count as one line.
constexpr double flat = 1e-9;

double cross(const Spot& a, const Spot& b)
{
    return a.x * b.y - a.y * b.x;
}

double angleOf(const Spot& way)
{
    return std::atan2(way.y, way.x);
}

/// The turn from one angle to another, counter-clockwise: from 0 to less than a full one.
double turn(double from, double to)
{
    const double rest = std::fmod(to - from, fullTurn);
    return rest < 0.0 ? rest + fullTurn : rest;
}

} // namespace

Spot operator+(const Spot& a, const Spot& b)
{
    return {a.x + b.x, a.y + b.y};
}

Spot operator-(const Spot& a, const Spot& b)
{
    return {a.x - b.x, a.y - b.y};
}

Spot operator*(const Spot& a, double factor)
{
    return {a.x * factor, a.y * factor};
}

double length(const Spot& way)
{
    return std::hypot(way.x, way.y);
}

Spot Arc::at(double angle) const
{
    return centre + Spot{std::cos(angle), std::sin(angle)} * radius;
}

Spot Arc::direction(double angle) const
{
    return Spot{-std::sin(angle), std::cos(angle)} * (sweep < 0.0 ? -1.0 : 1.0);
}

Arc Arc::extended(double atStart, double atEnd) const
{
    // A gap is left, so that the ends never meet.
    const double room = 0.45 * (fullTurn - std::abs(sweep));
    const double sense = sweep < 0.0 ? -1.0 : 1.0;
    const double before = std::min(atStart / radius, room);
    const double behind = std::min(atEnd / radius, room);
    return {centre, radius, from - sense * before, sweep + sense * (before + behind)};
}

std::optional<Arc> arcThrough(const Spot& start, const Spot& middle, const Spot& end)
{
    // The centre lies where the perpendicular bisectors of both chords from the start meet.
    const Spot m = middle - start;
    const Spot e = end - start;
    const double area = cross(m, e);
    if (!(std::abs(area) > flat * length(m) * length(e)))
        return std::nullopt;
    const double mm = m.x * m.x + m.y * m.y;
    const double ee = e.x * e.x + e.y * e.y;
    const Spot toCentre = Spot{e.y * mm - m.y * ee, m.x * ee - e.x * mm} * (0.5 / area);

    Arc arc;
    arc.centre = start + toCentre;
    arc.radius = length(toCentre);
    arc.from = angleOf(start - arc.centre);
    const double toEnd = turn(arc.from, angleOf(end - arc.centre));
    const double toMiddle = turn(arc.from, angleOf(middle - arc.centre));
    arc.sweep = toMiddle < toEnd ? toEnd : toEnd - fullTurn;
    return arc;
}

} // namespace session
