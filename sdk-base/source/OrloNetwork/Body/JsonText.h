#pragma once

#include <OrloNetwork/Export.h>

#include <cpprest/json.h>

#include <string>

namespace orlo::http {

/// Reads a JSON text in UTF-8. Throws json_exception as cpprestsdk does, and for a text that would become a hundred times its size in
/// memory: one of more than eight million values, or of more objects and arrays than two millions, or than a quarter of a million and
/// one more for every sixteen bytes.
ORLO_NETWORK_API web::json::value parseJson(const std::string& utf8);

} // namespace orlo::http
