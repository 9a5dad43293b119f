#pragma once

#include <string>

namespace orlo::platform {

class OpenFile;

/// The sum of a file's bytes, 16 of them.
std::string md5Of(const OpenFile& file);

std::string toBase64(const std::string& bytes);

} // namespace orlo::platform
