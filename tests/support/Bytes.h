#pragma once

#include <cstddef>
#include <string>

namespace orlo::test {

/// Bytes that no compressor makes smaller; the same ones every time.
std::string incompressible(std::size_t size);
/// Bytes of all values.
std::string patterned(std::size_t size);

std::string gzipOf(const std::string& content);
/// Fails the test for bytes that are no whole gzip stream.
std::string gunzip(const std::string& compressed);

} // namespace orlo::test
