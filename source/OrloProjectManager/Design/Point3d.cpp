#include "Point3dMath.h"

#include <BaseCommon/JsonWrapper.h>
#include <OrloProjectManager/Design/Point3d.h>

#include <cmath>

namespace orlo {

namespace {

const std::string xKey = "x";
const std::string yKey = "y";
const std::string zKey = "z";

} // namespace

double Point3d::dot(const Point3d& other) const
{
    return (y * other.y + x * other.x) + z * other.z;
}

double Point3d::length() const
{
    return std::sqrt((x * x + y * y) + z * z);
}

void Point3d::normalize()
{
    const double present = length();
    if (!(present > 0.0))
        return;
    const double factor = 1.0 / present;
    x *= factor;
    y *= factor;
    z *= factor;
}

bool Point3d::SerializeToJson(JsonWrapper& out) const
{
    out.Add(xKey, x);
    out.Add(yKey, y);
    out.Add(zKey, z);
    return true;
}

bool Point3d::DeserializeFromJson(const JsonWrapper& in)
{
    return in.Get(xKey, x) && in.Get(yKey, y) && in.Get(zKey, z);
}

Point3d operator-(const Point3d& a, const Point3d& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

bool isFinite(const Point3d& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

} // namespace orlo
