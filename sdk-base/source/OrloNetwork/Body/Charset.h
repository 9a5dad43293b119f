#pragma once

#include <cpprest/details/basic_types.h>

#include <string>
#include <string_view>

// The charset of an answer, with the names that cpprestsdk knows and two that are often written instead: "utf8" and "latin1".
namespace orlo::http {

enum class Charset { utf8, latin1, utf16, utf16LittleEnd, utf16BigEnd, unknown };

/// The one that a content type names; UTF-8, which JSON is written in, where it names none.
Charset charsetOf(const utility::string_t& contentType);

enum class Decoding { done, invalid, unknownCharset };

/// The bytes in UTF-8. What isn't valid in UTF-16 becomes U+FFFD, bytes that aren't in UTF-8 stay as they are.
Decoding toUtf8(Charset charset, std::string_view bytes, std::string& utf8);

} // namespace orlo::http
