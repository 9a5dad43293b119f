#pragma once

#include <cpprest/json.h>

#include <string>

namespace orlo {

/// A field of a JSON object as UTF-8 text. A missing field, and a value that is no string, give an empty text; but the few
/// keys that hold structure give an array or an object as its JSON.
std::string fieldText(const web::json::value& object, const wchar_t* key);

} // namespace orlo
