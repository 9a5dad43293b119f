#pragma once

#include <string>

namespace session {

/// Writes each call of the library into a file that trace viewers of browsers and of Perfetto open: one bar for each request, from its
/// making to the end of its answer. Throws std::runtime_error if the file can't be made.
void traceInto(const std::string& path);

} // namespace session
