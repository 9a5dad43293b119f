#pragma once

#include <OrloNetwork/Export.h>

#include <optional>

namespace orlo::http {

/// The number of the transport failure that is being handled; none where the exception is another one.
ORLO_NETWORK_API std::optional<int> transportCodeOfCaught();

} // namespace orlo::http
