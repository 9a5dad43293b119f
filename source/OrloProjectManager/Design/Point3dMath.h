#pragma once

#include <OrloProjectManager/Design/Point3d.h>

namespace orlo {

Point3d operator-(const Point3d& a, const Point3d& b);
bool isFinite(const Point3d& point);

} // namespace orlo
