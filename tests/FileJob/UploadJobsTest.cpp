#include "UploadJobsTest.h"

#include <algorithm>

namespace orlo::test {

namespace fs = std::filesystem;

std::wstring UploadJobsTest::copyOf(const std::string& name, const std::string& content)
{
    std::wstring copy;
    EXPECT_TRUE(CopyFileToTempPath(localFile(name, content), "p-1", L"", copy));
    return copy;
}

std::vector<std::string> UploadJobsTest::copies(const std::string& projectId) const
{
    std::vector<std::string> found;
    const fs::path root = jobsFolder() / fs::u8path(projectId);
    if (!fs::exists(root))
        return found;
    for (const auto& folder : fs::directory_iterator(root)) {
        if (!folder.is_directory())
            continue;
        std::vector<std::string> files = filesBelow(folder.path());
        if (files.empty())
            found.emplace_back("*/");
        for (const std::string& file : files)
            found.push_back("*/" + file);
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace orlo::test
