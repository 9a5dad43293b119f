#pragma once

#include <OrloProjectManager/Design/IAxisGrid.h>

#include <memory>
#include <string>

namespace session {

/// The axes of the hospital, in millimetres: 1 to 10 from left to right, A to K from the bottom up, without the I, which reads as a 1. R1
/// and R2 go round the wing at the corner of 10 and K.
std::shared_ptr<orlo::IAxisGrid> hospitalGrid();

/// The axis of that name; null if there is none.
orlo::IAxisCurve* axisNamed(const orlo::IAxisGrid& grid, const std::wstring& name);

} // namespace session
