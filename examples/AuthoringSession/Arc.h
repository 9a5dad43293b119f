#pragma once

#include <optional>

namespace session {

/// A point of a picture, or the way from one to another. x goes right, y goes up.
struct Spot
{
    double x = 0.0;
    double y = 0.0;
};

Spot operator+(const Spot& a, const Spot& b);
Spot operator-(const Spot& a, const Spot& b);
Spot operator*(const Spot& a, double factor);
double length(const Spot& way);

/// A piece of a circle. Angles are in radians and grow counter-clockwise, as `sweep` does where it is above 0.
struct Arc
{
    Spot centre;
    double radius = 0.0;
    double from = 0.0;
    double sweep = 0.0;

    double to() const { return from + sweep; }
    Spot at(double angle) const;
    /// The direction in which the arc runs at an angle, of the length 1.
    Spot direction(double angle) const;
    /// The arc with a length of its circle more at each end, as far as the circle has room.
    Arc extended(double atStart, double atEnd) const;
};

/// The arc from start to end by way of middle. None for points on one line, through which no circle goes.
std::optional<Arc> arcThrough(const Spot& start, const Spot& middle, const Spot& end);

} // namespace session
