#include "UploadJobsTest.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class JobCopy : public UploadJobsTest
{
protected:
    std::wstring make(const std::string& projectId, const std::wstring& fileName = {})
    {
        std::wstring copy;
        EXPECT_TRUE(CopyFileToTempPath(file, projectId, fileName, copy));
        return copy;
    }
    void expectRefusal(const std::string& projectId, const std::wstring& fileName, const Lines& expected)
    {
        SCOPED_TRACE(projectId + " " + utils::toString(fileName));
        log.clear();
        std::wstring copy = L"untouched";
        EXPECT_FALSE(CopyFileToTempPath(file, projectId, fileName, copy));
        EXPECT_EQ(copy, L"untouched");
        EXPECT_EQ(log.lines(), expected);
        EXPECT_EQ(filesBelow(host.folder().path()), filesBefore);
    }

    const Lines noFolder{L"E@orlo::CopyFileToTempPath 创建文件路径失败"};
    const std::wstring file = localFile("图 一.dwg", "bytes");
    std::vector<std::string> filesBefore = filesBelow(host.folder().path());
};

TEST_F(JobCopy, standsAloneInAFolderOfItsOwnBelowTheProject)
{
    const fs::path copy = fs::u8path(utils::toString(make("项 1")));
    EXPECT_EQ(copy.filename().u8string(), "图 一.dwg");
    EXPECT_EQ(copy.parent_path().parent_path(), jobsFolder() / fs::u8path("项 1"));
    const std::string folder = copy.parent_path().filename().u8string();
    EXPECT_TRUE(uuid::IsValidGUID(folder)) << folder;
    EXPECT_EQ(folder.at(14), '4');
    EXPECT_THAT(copies("项 1"), ElementsAre("*/图 一.dwg"));
    EXPECT_EQ(readFile(copy), "bytes");
}

TEST_F(JobCopy, takesAnotherNameWhereOneIsGiven)
{
    make("p-1", L"新.dwg");
    EXPECT_THAT(copies(), ElementsAre("*/新.dwg"));
}

TEST_F(JobCopy, everyCopyHasAFolderOfItsOwn)
{
    EXPECT_NE(make("p-1"), make("p-1"));
    EXPECT_THAT(copies(), ElementsAre("*/图 一.dwg", "*/图 一.dwg"));
}

TEST_F(JobCopy, withoutAProjectStandsBelowTheRoot)
{
    const fs::path copy = fs::u8path(utils::toString(make("")));
    EXPECT_EQ(copy.parent_path().parent_path(), jobsFolder());
    deleteJobCopy(fromUtf8(copy));
    EXPECT_FALSE(fs::exists(copy.parent_path()));
}

TEST_F(JobCopy, aProjectThatLeadsAwayGetsNoFolder)
{
    for (const char* project : {"..", "../x", "../../x", "a/../..", ".", "/", "\\", "..\\x", "./"})
        expectRefusal(project, L"", noFolder);
    EXPECT_FALSE(fs::exists(host.folder().path("x")));
}

TEST_F(JobCopy, aProjectInAFolderThatIsMissingGetsNoFolder)
{
    expectRefusal("a/b", L"", noFolder);
}

TEST_F(JobCopy, aProjectNamedAsTheDatabaseDoesNotTakeItsPlace)
{
    for (const char* project : {"jobs.db", "JOBS.DB", "jobs.db-wal", "jobs.db.running", "jobs.db.damaged-1"})
        expectRefusal(project, L"", noFolder);
}

TEST_F(JobCopy, aProjectWhoseNameIsTooLongGetsNoFolder)
{
    expectRefusal(std::string(300, 'p'), L"", noFolder);
}

TEST_F(JobCopy, aNameThatLeadsOutOfTheFolderIsRefused)
{
    for (const wchar_t* name : {L"..", L".", L"../a.dwg", L"/etc/passwd", L"a/b.dwg", L"a\\b.dwg", L"..\\..\\a.dwg"})
        expectRefusal("p-1", name, {});
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(JobCopy, aNulIsRefusedWhereverItStands)
{
    const std::wstring victim = localFile("victim", "untouched");
    filesBefore = filesBelow(host.folder().path());
    const std::wstring nul(1, L'\0');
    for (const std::string& project : {std::string("\0", 1), std::string("p\0/x", 4), std::string("../Local/victim\0/../../Jobs/p", 30)})
        expectRefusal(project, L"", noFolder);
    for (const std::wstring& name : {nul, L"a" + nul, L"../../../Local/victim" + nul + L"/../../../Jobs/p-1/x", nul + L"a"})
        expectRefusal("p-1", name, {});
    EXPECT_THAT(copies(), IsEmpty());
    std::wstring copy;
    EXPECT_FALSE(CopyFileToTempPath(file + nul, "p-1", L"a", copy));
    EXPECT_EQ(readFile(fs::u8path(utils::toString(victim))), "untouched");
}

TEST_F(JobCopy, aProjectsFolderThatIsALinkOutOfTheCopiesIsRefused)
{
    const TempFolder outside;
    fs::create_directories(jobsFolder());
    fs::create_directory_symlink(outside.path(), jobsFolder() / "p-1");
    fs::create_directory_symlink(outside.path("none"), jobsFolder() / "p-2");
    for (const char* project : {"p-1", "p-1/deep", "p-2", "x/../p-1"})
        expectRefusal(project, L"", noFolder);
    EXPECT_TRUE(fs::is_empty(outside.path()));
}

TEST_F(JobCopy, theCopiesMayLieBehindALink)
{
    const TempFolder elsewhere;
    fs::create_directory_symlink(elsewhere.path(), jobsFolder());
    const std::wstring copy = make("p-1");
    EXPECT_EQ(filesBelow(elsewhere.path()).size(), 1U);
    deleteJobCopy(copy);
    EXPECT_EQ(filesBelow(elsewhere.path()).size(), 0U);
}

TEST_F(JobCopy, whatALinkLeadsToIsNeverDeleted)
{
    const TempFolder outside;
    writeFile(outside.path("thesis.dwg"), "mine");
    fs::create_directories(jobsFolder() / "p-1");
    fs::create_directory_symlink(outside.path(), jobsFolder() / "p-1/folder");
    deleteJobCopy(fromUtf8(jobsFolder() / "p-1/folder/thesis.dwg"));
    EXPECT_EQ(readFile(outside.path("thesis.dwg")), "mine");
    EXPECT_TRUE(fs::is_symlink(jobsFolder() / "p-1/folder"));
}

TEST_F(JobCopy, ofWhatIsNoFileIsRefusedAndLeavesNothing)
{
    std::wstring copy;
    for (const std::wstring& source : {std::wstring(), std::wstring(L"/no/such/file"), host.folder().wide()})
        EXPECT_FALSE(CopyFileToTempPath(source, "p-1", L"a", copy));
    EXPECT_FALSE(CopyFileToTempPath(file, "p-1", std::wstring(300, L'n'), copy));
    EXPECT_THAT(copies(), IsEmpty());
    EXPECT_EQ(filesBelow(host.folder().path()), filesBefore);
}

TEST_F(JobCopy, isRefusedWhereTheFolderCannotBeMade)
{
    fs::create_directories(jobsFolder());
    writeFile(jobsFolder() / "p-1", "a file is in the way");
    std::wstring copy;
    EXPECT_FALSE(CopyFileToTempPath(file, "p-1", L"", copy));
    EXPECT_EQ(log.lines(), noFolder);
}

TEST_F(JobCopy, doesNotCareWhatBecomesOfTheFile)
{
    const std::wstring copy = make("p-1");
    writeFile(fs::u8path(utils::toString(file)), "changed");
    EXPECT_EQ(readFile(fs::u8path(utils::toString(copy))), "bytes");
    fs::remove(fs::u8path(utils::toString(file)));
    EXPECT_EQ(readFile(fs::u8path(utils::toString(copy))), "bytes");
}

TEST_F(JobCopy, goesWithItsFolder)
{
    const std::wstring copy = make("p-1");
    deleteJobCopy(copy);
    EXPECT_THAT(copies(), IsEmpty());
    deleteJobCopy(copy); // once more harms nobody
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(JobCopy, leavesAFolderThatHoldsSomethingElse)
{
    const std::wstring copy = make("p-1");
    const fs::path folder = fs::u8path(utils::toString(copy)).parent_path();
    fs::create_directories(folder / "inner");
    deleteJobCopy(copy);
    EXPECT_TRUE(fs::exists(folder / "inner"));
    EXPECT_THAT(copies(), ElementsAre("*/"));
}

TEST_F(JobCopy, nothingThatIsNoCopyIsEverDeleted)
{
    make("p-1");
    writeFile(jobsFolder() / "jobs.db", "rows");
    writeFile(host.folder().path("Jobs-of-mine"), "mine");
    const std::vector<std::string> before = filesBelow(host.folder().path());
    const std::wstring jobs = fromUtf8(jobsFolder());
    const std::wstring nul(1, L'\0');
    for (const std::wstring& path :
         {file + nul + L"/../../Jobs/p-1/u/x", jobs + L"/jobs.db" + nul + L"/x/y", jobs + L"/p-1/u" + nul, file, std::wstring(),
          std::wstring(L"/"), std::wstring(L"."), jobs, jobs + L"/jobs.db", jobs + L"/p-1/../jobs.db", jobs + L"/../Jobs-of-mine",
          jobs + L"-of-mine", jobs + L"/p-1/../../Local/图 一.dwg", jobs + L"/p-1", std::wstring(L"图 一.dwg")})
        deleteJobCopy(path);
    EXPECT_EQ(filesBelow(host.folder().path()), before);
}

} // namespace
} // namespace orlo::test
