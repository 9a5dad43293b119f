#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orlo::test {

/// The first column of all rows, as text.
std::vector<std::string> sqlTexts(const std::filesystem::path& database, const std::string& query);
/// Runs statements; the file is made if there is none.
void sqlRun(const std::filesystem::path& database, const std::string& statements);

} // namespace orlo::test
