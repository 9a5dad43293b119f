#include "Point3dMath.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>
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
    addCoordinates(out, *this);
    return true;
}

template <class Out>
void addCoordinates(Out& out, const Point3d& point)
{
    out.Add(xKey, point.x);
    out.Add(yKey, point.y);
    out.Add(zKey, point.z);
}

template void addCoordinates(JsonWrapper& out, const Point3d& point);
template void addCoordinates(JsonWriter& out, const Point3d& point);

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
