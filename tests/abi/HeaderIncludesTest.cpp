#include "support/Patterns.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orlo::test {
namespace {

const std::filesystem::path root = std::filesystem::u8path(ORLO_SOURCE_ROOT);

std::vector<std::string> includesOf(const std::filesystem::path& header)
{
    static const std::string directive = "#include ";
    std::vector<std::string> names;
    std::istringstream text(readFile(header));
    for (std::string line; std::getline(text, line);) {
        if (line.rfind(directive, 0) != 0)
            continue;
        const std::size_t begin = directive.size() + 1; // behind the bracket or quote
        names.push_back(line.substr(begin, line.find_first_of(">\"", begin) - begin));
    }
    return names;
}

std::vector<std::filesystem::path> faceHeaders()
{
    std::vector<std::filesystem::path> headers;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "include")) {
        if (entry.path().extension() == ".h")
            headers.push_back(entry.path());
    }
    return headers;
}

bool isStandard(const std::string& name)
{
    return name.find_first_of("/.") == std::string::npos;
}

TEST(FaceHeaders, includeEachOtherTheBaseLibraryAndTheStandardLibraryAlone)
{
    const auto headers = faceHeaders();
    EXPECT_GE(headers.size(), 10u);
    for (const auto& header : headers) {
        for (const std::string& name : includesOf(header))
            EXPECT_TRUE(isStandard(name) || startsWith(name, "OrloProjectManager/") || startsWith(name, "BaseCommon/"))
                << header << ' ' << name;
    }
}

TEST(FaceHeaders, reachNoHeaderOfAThirdParty)
{
    std::set<std::string> seen;
    std::vector<std::string> waiting{"OrloProjectManager/OrloProjectManager.h"};
    while (!waiting.empty()) {
        const std::string name = waiting.back();
        waiting.pop_back();
        if (isStandard(name) || !seen.insert(name).second)
            continue;
        const auto inFace = root / "include" / name;
        const auto inSupport = root / "sdk-base/source" / name;
        ASSERT_TRUE(std::filesystem::exists(inFace) || std::filesystem::exists(inSupport)) << name << " belongs to nobody here";
        for (const std::string& next : includesOf(std::filesystem::exists(inFace) ? inFace : inSupport))
            waiting.push_back(next);
    }
    EXPECT_GT(seen.size(), 10u);
}

TEST(FaceHeaders, areAllReachedFromTheUmbrella)
{
    std::set<std::string> umbrella;
    for (const std::string& name : includesOf(root / "include/OrloProjectManager/OrloProjectManager.h"))
        umbrella.insert(name);
    for (const auto& header : faceHeaders()) {
        const std::string name = header.lexically_relative(root / "include").generic_u8string();
        if (name != "OrloProjectManager/OrloProjectManager.h") {
            EXPECT_EQ(umbrella.count(name), 1u) << name;
        }
    }
}

} // namespace
} // namespace orlo::test
