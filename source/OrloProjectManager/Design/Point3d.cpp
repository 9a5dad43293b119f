#include "Point3dMath.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>
#include <BaseCommon/NeverDestroyed.h>
#include <OrloProjectManager/Design/Point3d.h>

#include <cmath>
#include <string>

namespace orlo {

namespace {

struct CoordinateKeys
{
    const std::string x = "x";
    const std::string y = "y";
    const std::string z = "z";
};

const CoordinateKeys& coordinateKeys()
{
    static const auto& keys = utils::neverDestroyed(new const CoordinateKeys);
    return keys;
}

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
    const CoordinateKeys& keys = coordinateKeys();
    out.Add(keys.x, point.x);
    out.Add(keys.y, point.y);
    out.Add(keys.z, point.z);
}

template void addCoordinates(JsonWrapper& out, const Point3d& point);
template void addCoordinates(JsonWriter& out, const Point3d& point);

bool Point3d::DeserializeFromJson(const JsonWrapper& in)
{
    const CoordinateKeys& keys = coordinateKeys();
    return in.Get(keys.x, x) && in.Get(keys.y, y) && in.Get(keys.z, z);
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
