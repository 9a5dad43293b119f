#pragma once

#include <OrloProjectManager/Export.h>

namespace orlo {

class JsonWrapper;

/// A point, or the vector from the origin to it. Lengths are in the unit of the authoring application.
struct ORLO_PROJECT_API Point3d
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    double dot(const Point3d& other) const;
    double length() const;
    /// Makes the length 1. Without a tolerance: any length above 0 will do; a point of the length 0 stays as it is. The squares of the
    /// coordinates have to fit a double: with one of 1e200 the point becomes 0, and one of 1e-300 has the length 0.
    void normalize();

    /// Adds "x", "y" and "z". A coordinate that is no finite number can't be told in JSON and is left out.
    /// Returns: true.
    bool SerializeToJson(JsonWrapper& out) const;
    /// Returns: false at the first coordinate that is missing or no number; those before it are read, those behind it stay as they are.
    bool DeserializeFromJson(const JsonWrapper& in);
};

/// A point in plan.
struct ORLO_PROJECT_API IPoint2d
{
    double x = 0.0;
    double y = 0.0;
};

} // namespace orlo
