#pragma once

#include "FirstSchema.h"
#include "JobsTest.h"

#include <BaseCommon/LocalFolders.h>

#include <filesystem>
#include <string>
#include <vector>

namespace orlo::test {

/// A database of two hundred jobs, which a test damages.
class DamagedJobs : public JobsTest
{
protected:
    static constexpr std::size_t pageSize = 4096;

    DamagedJobs() { std::filesystem::create_directories(jobsFolder()); }

    std::filesystem::path aside(int number = 1) const { return jobsFolder() / ("jobs.db.damaged-" + std::to_string(number)); }
    std::filesystem::path logFile() const { return jobsFolder() / "jobs.db-wal"; }

    /// Jobs from one number to another, with JSON of about 500 bytes.
    static std::string insertion(int first, int last)
    {
        return "WITH RECURSIVE counted(n) AS (SELECT " + std::to_string(first) + " UNION ALL SELECT n + 1 FROM counted WHERE n < " +
               std::to_string(last) + R"sql(),
named(n, id) AS (SELECT n, printf('%08x-5f0e-4b8e-9d3e-%012d', n * 2654435761 % 4294967296, n) FROM counted)
INSERT INTO job (id, typeKey, json, createTime, jobType, account)
SELECT id, 'test job', printf('{"jobId":"%s","createTime":%d,"name":"job %d %.*c"}', id, n, n, 400, 'x'), n, 2, 'account-' || n % 3
FROM named;)sql";
    }
    void fill(int jobs = 200) const
    {
        sqlRun(database(), secondSchema);
        sqlRun(database(), insertion(1, jobs));
    }

    /// The rows, each as a text that holds all of it.
    static Names wholeRows(const std::filesystem::path& file)
    {
        return sqlTexts(file, "SELECT id || '|' || typeKey || '|' || json || '|' || createTime || '|' || jobType || '|' || account "
                              "FROM job ORDER BY rank");
    }
    Names wholeRows() const { return wholeRows(database()); }

    /// Opens the database, and changes nothing in it.
    static bool opens() { return TestJob("never saved").remove(); }

    /// Of these rows the ones whose JSON stands outside of a range of the file, or in its log only.
    static Names rowsOutside(const Names& all, const std::string& bytes, std::size_t begin, std::size_t end)
    {
        Names rows;
        for (const std::string& row : all) {
            const std::size_t json = row.find('{');
            const std::size_t at = bytes.find(row.substr(json, row.find('}') + 1 - json));
            if (at < begin || at >= end)
                rows.push_back(row);
        }
        return rows;
    }

    /// Between two saves the connection stays open; it goes with the place.
    void closeDatabase() const
    {
        const TempFolder elsewhere;
        utils::setLocalRoot(elsewhere.wide());
        EXPECT_TRUE(opens());
        utils::setLocalRoot(folder.wide());
    }

    /// The lines of a salvage, and of nothing else.
    void expectLines(const std::wstring& reason, std::size_t read, const std::wstring& rest) const
    {
        EXPECT_THAT(log.lines(), testing::ElementsAre(L"E [ORLOSDK]the job database is damaged: " + reason + L"; it was set aside as " +
                                                          folder.wide("Jobs/jobs.db.damaged-1"),
                                                      L"E [ORLOSDK]jobs read from the damaged database: " + std::to_wstring(read) + rest));
    }

    void forgetDamage()
    {
        std::filesystem::remove_all(jobsFolder());
        std::filesystem::create_directories(jobsFolder());
        log.clear();
    }
};

} // namespace orlo::test
