#include "support/ChildProcess.h"
#include "support/Sql.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <LocalPlatform/LocalPlatform.h>
#include <algorithm>
#include <filesystem>
#include <map>

// A session of the sample is killed in the middle of its uploads; the next one on the same folder finishes them.
namespace orlo::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr int killed = ChildProcess::killed;
constexpr const char* leftovers = "What an earlier session left";

class CrashedSession : public testing::Test
{
protected:
    RunResult session() const { return runProgram({AUTHORING_SESSION, "--data", m_folder.path().u8string()}); }
    RunResult crashingSession() const { return runProgram({AUTHORING_SESSION, "--data", m_folder.path().u8string(), "--crash"}); }

    /// The files of the jobs that are saved.
    std::vector<std::string> rows() const
    {
        return sqlTexts(m_folder.path("host/Jobs/jobs.db"), "SELECT json_extract(json, '$.cloudifyFile.fileName') FROM job");
    }

    /// The private copies of the jobs; every one must be as its drawing.
    std::vector<std::string> copies() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.path("host/Jobs"))) {
            const std::string name = entry.path().filename().u8string();
            if (!entry.is_regular_file() || name.find("jobs.db") == 0)
                continue;
            EXPECT_TRUE(readFile(entry.path()) == drawing(name)) << name;
            names.push_back(name);
        }
        return names;
    }

    /// How often the platform has each file that came through a job; every one must be as its drawing.
    std::map<std::string, int> onThePlatform() const
    {
        platform::Options options;
        options.dataFolder = m_folder.path("platform").u8string();
        const platform::LocalPlatform platform(options);
        std::map<std::string, int> counts;
        for (const platform::StoredFile& file : platform.ask(platform::storedFiles)) {
            if (file.fileId.empty() || file.fileName == "施工图.dwt") // the template isn't one of the drawings
                continue;
            EXPECT_TRUE(platform.ask(platform::contentOf, file.remotePath) == drawing(file.fileName)) << file.fileName;
            ++counts[file.fileName];
        }
        return counts;
    }

    /// The datasets with a version in the first project, which is that of the crash.
    std::vector<std::string> datasetsOfTheFirstProject() const
    {
        return sqlTexts(m_folder.path("platform/platform.db"), "SELECT name FROM dataset JOIN version ON version.dataSetId = dataset.id "
                                                               "WHERE projectId = (SELECT id FROM project ORDER BY rank LIMIT 1)");
    }

private:
    std::string drawing(const std::string& name) const { return readFile(m_folder.path("drawings") / std::filesystem::u8path(name)); }

    TempFolder m_folder;
};

TEST_F(CrashedSession, LeavesARowAndACopyOfEveryFileThatWasAcceptedAndNotUploaded)
{
    const RunResult crash = crashingSession();
    EXPECT_EQ(killed, crash.exitCode);
    EXPECT_THAT(crash.output, AllOf(HasSubstr("Handed over 立面图.dwg\n   立面图.dwg has been uploaded.\n"),
                                    HasSubstr("Handed over structure.ifc\n   Handed over schedule.xlsx\n"), Not(HasSubstr("Signed out."))));
    EXPECT_THAT(rows(), UnorderedElementsAre("structure.ifc", "schedule.xlsx"));
    EXPECT_THAT(copies(), UnorderedElementsAre("structure.ifc", "schedule.xlsx"));
    EXPECT_THAT(onThePlatform(), ElementsAre(Pair("立面图.dwg", 1)));
}

TEST_F(CrashedSession, IsFinishedByTheNextOneBeforeAnythingElse)
{
    ASSERT_EQ(killed, crashingSession().exitCode);
    const RunResult next = session();
    EXPECT_EQ(0, next.exitCode);
    EXPECT_THAT(next.output,
                AllOf(HasSubstr("\n2. What an earlier session left\n"), HasSubstr("Still to be uploaded: structure.ifc\n"),
                      HasSubstr("Still to be uploaded: schedule.xlsx\n"), HasSubstr("Nothing is left now.\n"), HasSubstr("Signed out.\n")));
    const std::string earlier = next.output.substr(0, next.output.find("\n3. "));
    EXPECT_THAT(earlier, AllOf(HasSubstr("structure.ifc has been uploaded.\n"), HasSubstr("schedule.xlsx has been uploaded.\n")));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
    // Once of the session that crashed, once of its own.
    EXPECT_THAT(onThePlatform(), UnorderedElementsAre(Pair("立面图.dwg", 2), Pair("structure.ifc", 2), Pair("schedule.xlsx", 2)));
    EXPECT_THAT(datasetsOfTheFirstProject(), UnorderedElementsAre("一层平面图.dwg", "立面图.dwg", "structure.ifc", "schedule.xlsx"));
}

TEST_F(CrashedSession, MayBeFollowedByAnotherCrash)
{
    ASSERT_EQ(killed, crashingSession().exitCode);
    const RunResult second = crashingSession();
    EXPECT_EQ(killed, second.exitCode);
    EXPECT_THAT(second.output, HasSubstr("Nothing is left now.\n"));
    EXPECT_THAT(rows(), UnorderedElementsAre("structure.ifc", "schedule.xlsx"));
    EXPECT_EQ(0, session().exitCode);
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
    EXPECT_THAT(onThePlatform(), UnorderedElementsAre(Pair("立面图.dwg", 3), Pair("structure.ifc", 3), Pair("schedule.xlsx", 3)));
}

TEST_F(CrashedSession, IsNotToldOfAfterAGoodEnd)
{
    const RunResult first = session();
    EXPECT_EQ(0, first.exitCode);
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
    const RunResult second = session();
    EXPECT_EQ(0, second.exitCode);
    EXPECT_THAT(first.output, Not(HasSubstr(leftovers)));
    EXPECT_THAT(second.output, AllOf(Not(HasSubstr(leftovers)), HasSubstr("All my projects, 4 of them:\n")));
}

} // namespace
} // namespace orlo::test
