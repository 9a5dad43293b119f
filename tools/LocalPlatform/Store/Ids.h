#pragma once

#include <cstddef>
#include <string>

namespace orlo::platform {

/// A random UUID (version 4) in lower case.
std::string newId();
/// Bytes from the operating system's generator.
std::string randomBytes(std::size_t count);
std::string toHex(const std::string& bytes);
/// The bytes of a hexadecimal text, empty if it is none.
std::string fromHex(const std::string& hex);

} // namespace orlo::platform
