#pragma once

#include <OrloProjectManager/Design/IAxisGrid.h>

#include <string>

namespace session {

/// The grid in plan, as an SVG document: axes with their extensions, and bubbles at those ends where they are shown. Elbows aren't drawn.
std::string gridPicture(const orlo::IAxisGrid& grid);

} // namespace session
