#pragma once

#include <OrloNetwork/Export.h>

#include <cstddef>
#include <vector>

namespace orlo::http {

/// Inflates a gzip or zlib stream, all members of it. cpprestsdk's own switch for this can lose the tail of a body without a
/// word, and has no bound. Throws std::runtime_error for a stream that is broken, cut short, or larger than `limit` inflated.
ORLO_NETWORK_API std::vector<unsigned char> inflateAll(const std::vector<unsigned char>& compressed, std::size_t limit);

} // namespace orlo::http
