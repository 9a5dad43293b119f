#pragma once

#include <OrloProjectManager/Design/Point3d.h>

namespace orlo {

Point3d operator-(const Point3d& a, const Point3d& b);
/// Adds "x", "y" and "z" to a document or a text.
template <class Out>
void addCoordinates(Out& out, const Point3d& point);

bool isFinite(const Point3d& point);

} // namespace orlo
