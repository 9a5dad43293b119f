#pragma once

#include "Story.h"

#include <string>

namespace session {

/// The content of a drawing of some size, as bytes that no two seeds share.
std::string drawingBytes(std::size_t size, unsigned seed);

/// Makes a file of the user's and gives its path.
std::wstring makeFile(Story& story, const std::wstring& folder, const std::wstring& name, const std::string& bytes);

bool hasBytes(const std::wstring& path, const std::string& bytes);

} // namespace session
