#pragma once

#include "Gateway.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/PlatformHost.h"
#include "support/Sql.h"
#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace orlo::test {

/// Hosts in processes of their own that hand files over to jobs, one after the other, with one local root. The platform lives in this
/// process and outlives them all.
class UploadJobHosts : public testing::Test
{
protected:
    UploadJobHosts() { std::filesystem::create_directories(m_root.path("Local")); }

    std::vector<std::string> process() const { return {UPLOAD_JOB_PROCESS, m_root.path().string(), gateway.url()}; }

    /// Returns: the path of a file of the user's.
    std::string localFile(const std::string& name, const std::string& bytes) const
    {
        writeFile(m_root.path("Local/" + name), bytes);
        return m_root.path("Local/" + name).string();
    }
    std::vector<std::string> rows() const { return sqlTexts(m_root.path("Jobs/jobs.db"), "SELECT json FROM job"); }
    /// The folders of copies.
    std::size_t copies() const
    {
        const std::filesystem::path folder = m_root.path("Jobs/p-1");
        return std::filesystem::exists(folder) ? static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                                                        std::filesystem::directory_iterator()))
                                               : 0;
    }
    /// The names of the copies that the rows name and that are there.
    std::vector<std::string> copiesOfRows() const
    {
        std::vector<std::string> names;
        for (const std::string& path :
             sqlTexts(m_root.path("Jobs/jobs.db"), "SELECT json_extract(json, '$.cloudifyFile.localFilePath') FROM job")) {
            if (std::filesystem::is_regular_file(std::filesystem::u8path(path)))
                names.push_back(std::filesystem::u8path(path).filename().u8string());
        }
        return names;
    }

    /// Another host does what was left.   isQuiet: and logs no error.
    void finish(bool isQuiet = true)
    {
        gateway.watch(nullptr);
        ChildProcess next(process());
        ASSERT_EQ(next.ask("start"), "yes");
        ASSERT_TRUE(waitUntil([&] { return next.ask("idle") == "yes"; }, std::chrono::seconds(100)));
        ASSERT_EQ(next.ask("stop"), "yes");
        const std::string errors = next.ask("error");
        if (isQuiet) {
            EXPECT_EQ(errors, "-");
        }
        EXPECT_THAT(rows(), testing::IsEmpty());
        EXPECT_THAT(sqlTexts(m_root.path("Jobs/jobs.db"), "PRAGMA integrity_check"), testing::ElementsAre("ok"));
    }

    LogCapture log; // keeps the output free of what this process asks the platform in vain
    PlatformHost place;
    Gateway gateway{place.platform.url()};

private:
    TempFolder m_root;
};

} // namespace orlo::test
