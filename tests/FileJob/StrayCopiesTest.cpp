#include "UploadJobsTest.h"
#include "support/FileProcess.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Uuid.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>

#include <algorithm>

// What becomes of copies that no job names when a process takes the jobs over.
namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* guid = "8d78b598-f02a-40ad-9984-17126a4d3b38";
constexpr const char* otherGuid = "52182bd1-774e-4db7-8de2-cc12526ffdc3";

class StrayCopies : public UploadJobsTest
{
protected:
    /// The database has held a job before.
    StrayCopies()
    {
        UploadFileJobEntity job;
        job.save();
        job.remove();
    }
    void TearDown() override
    {
        IJobManager::Stop();
        UploadJobsTest::TearDown();
    }

    /// A process takes the jobs over, and leaves again.
    void start()
    {
        log.clear();
        ASSERT_TRUE(IJobManager::Start({}));
        ASSERT_TRUE(IJobManager::Stop());
    }
    void expectRemoved(const std::string& count)
    {
        start();
        EXPECT_EQ(log.lines(), Lines{L"I [ORLOSDK]private copies that no job names were removed: " + utils::toWstring(count)});
    }
    void expectUntouched()
    {
        const std::vector<std::string> before = all();
        start();
        EXPECT_EQ(all(), before);
        EXPECT_EQ(log.count(L"I [ORLOSDK]private copies that no job names were removed: 1"), 0U);
    }

    fs::path makeOld(const std::string& name) const
    {
        fs::create_directories((jobsFolder() / name).parent_path());
        writeFile(jobsFolder() / name, "x");
        age((jobsFolder() / name).parent_path());
        return jobsFolder() / name;
    }
    /// As though a process that is gone had written it and what it holds.
    static void age(const fs::path& folder)
    {
        const auto then = fs::file_time_type::clock::now() - std::chrono::hours(1);
        for (const auto& entry : fs::directory_iterator(folder))
            if (!entry.is_symlink())
                fs::last_write_time(entry.path(), then);
        fs::last_write_time(folder, then);
    }
    /// A row of a type that this library doesn't know.
    void addRow(const std::string& id, const std::string& json) const
    {
        sqlRun(jobsFolder() / "jobs.db",
               "INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('" + id + "', 'unknown', '" + json + "', 0, 2)");
    }
    std::vector<std::string> all() const
    {
        std::vector<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(jobsFolder()))
            if (entry.path().filename().u8string().rfind("jobs.db", 0) != 0)
                found.push_back(entry.path().lexically_relative(jobsFolder()).u8string());
        std::sort(found.begin(), found.end());
        return found;
    }
    static std::string in(const std::string& folder, const std::string& name) { return folder + "/" + name; }
};

TEST_F(StrayCopies, areRemovedWithTheirFolders)
{
    makeOld(in(std::string("p-1/") + guid, "图 一.dwg"));
    makeOld(in(std::string("p-2/") + otherGuid, ".~8d78b598-f02a-40ad-9984-17126a4d3b38"));
    expectRemoved("2");
    EXPECT_THAT(all(), ElementsAre("p-1", "p-2"));
}

TEST_F(StrayCopies, emptyFoldersOfCopiesGoToo)
{
    fs::create_directories(jobsFolder() / "p-1" / guid);
    age(jobsFolder() / "p-1");
    expectRemoved("1");
    EXPECT_THAT(all(), ElementsAre("p-1"));
}

TEST_F(StrayCopies, areFoundWhateverTheProjectIsCalled)
{
    makeOld(in(guid, "a"));                                      // no project
    makeOld(in(std::string(otherGuid) + "/" + guid, "a"));       // one that is named as a copy
    makeOld(in(std::string("one/two/three/") + otherGuid, "a")); // one of several folders
    makeOld(in(std::string("项目/") + guid, "a"));
    expectRemoved("4");
    EXPECT_THAT(all(), ElementsAre(otherGuid, "one", "one/two", "one/two/three", "项目"));
}

TEST_F(StrayCopies, whatThisProcessMadeStays)
{
    copyOf("plan.dwg", "bytes");
    expectUntouched();
    EXPECT_THAT(copies(), ElementsAre("*/plan.dwg"));
}

TEST_F(StrayCopies, aYoungFileInAnOldFolderStays)
{
    const fs::path file = makeOld(in(std::string("p-1/") + guid, "a"));
    fs::last_write_time(file, fs::file_time_type::clock::now() + std::chrono::hours(1));
    expectUntouched();
}

TEST_F(StrayCopies, whatALivingProcessMadeStaysUntilThatIsGone)
{
    const TempFolder root;
    fs::create_directories(root.path("Jobs"));
    fs::copy(jobsFolder(), root.path("Jobs"));
    utils::setLocalRoot(root.wide()); // this process has told nobody yet that it lives here
    const fs::path folder = root.path("Jobs/p-1") / guid;
    LivingProcess child(root);
    ASSERT_EQ(child.ask("write " + (folder / "a").u8string()), "yes");
    writtenNow(root.path("now"));
    start();
    EXPECT_TRUE(fs::exists(folder / "a"));
    child.kill();
    start();
    EXPECT_FALSE(fs::exists(folder));
    utils::setLocalRoot(host.folder().wide());
}

TEST_F(StrayCopies, aCopyThatARowNamesStaysWhateverTheRowsTypeIs)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    makeOld(in(std::string("p-1/") + otherGuid, "a"));
    addRow("j-1", R"({"jobId":"j-1","someday":{"deep":["-/Jobs/p-1/8D78B598-F02A-40AD-9984-17126a4d3b38/a"]}})");
    start();
    EXPECT_THAT(all(), ElementsAre("p-1", in("p-1", guid), in(in("p-1", guid), "a")));
    EXPECT_TRUE(log.has(L"I [ORLOSDK]private copies that no job names were removed: 1"));
}

TEST_F(StrayCopies, ofTenThousandRowsEachKeepsItsCopy)
{
    constexpr int many = 10000;
    std::string statements = "BEGIN;";
    for (int i = 0; i < many; ++i) {
        const std::string name = uuid::newUUIDV4();
        fs::create_directories(jobsFolder() / "p-1" / name);
        writeFile(jobsFolder() / "p-1" / name / "a", "");
        statements += "INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('j" + std::to_string(i) +
                      R"(', 'unknown', '{"path":"p-1/)" + name + R"(/a"}', 0, 2);)";
    }
    sqlRun(jobsFolder() / "jobs.db", statements + "COMMIT;");
    for (const auto& folder : fs::directory_iterator(jobsFolder() / "p-1"))
        age(folder.path());
    makeOld(in(std::string("p-1/") + guid, "a"));
    start();
    EXPECT_FALSE(fs::exists(jobsFolder() / "p-1" / guid));
    EXPECT_THAT(copies(), SizeIs(many));
    EXPECT_TRUE(log.has(L"I [ORLOSDK]private copies that no job names were removed: 1"));
}

TEST_F(StrayCopies, whatIsNoCopyStays)
{
    makeOld("p-1/notes.txt");
    makeOld("p-1/folder/plan.dwg");
    makeOld("p-1/8d78b598-f02a-50ad-9984-17126a4d3b38/a");  // not of version 4
    makeOld("p-1/8D78B598-F02A-40AD-9984-17126A4D3B38/a");  // not as we write them
    makeOld("p-1/8d78b598-f02a-40ad-9984-17126a4d3b38x/a"); // no UUID
    makeOld(in(std::string("p-1/") + guid, "a"));
    makeOld(in(std::string("p-1/") + guid, "b")); // a copy is alone
    makeOld(in(std::string("p-1/") + otherGuid, "a"));
    fs::create_directories(jobsFolder() / "p-1" / otherGuid / "folder");
    age(jobsFolder() / "p-1" / otherGuid);
    expectUntouched();
}

TEST_F(StrayCopies, linksAreNeitherFollowedNorRemoved)
{
    const TempFolder outside;
    fs::create_directories(outside.path(guid));
    writeFile(outside.path(guid) / "a", "mine");
    age(outside.path(guid));
    fs::create_directories(jobsFolder() / "p-1" / otherGuid);
    fs::create_directory_symlink(outside.path(), jobsFolder() / "p-2");
    fs::create_directory_symlink(outside.path(guid), jobsFolder() / "p-1" / guid);
    fs::create_symlink(outside.path(guid) / "a", jobsFolder() / "p-1" / otherGuid / "a");
    age(jobsFolder() / "p-1" / otherGuid);
    expectUntouched();
    EXPECT_EQ(readFile(outside.path(guid) / "a"), "mine");
}

TEST_F(StrayCopies, besideADatabaseThatWasSetAsideAllStayAndTheLogSaysSo)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    writeFile(jobsFolder() / "jobs.db.damaged-1", "rows");
    expectUntouched();
    EXPECT_EQ(log.lines(), Lines{L"W [ORLOSDK]private copies that no job names stay, since a database that was lost may name them: " +
                                 fromUtf8(jobsFolder())});
    fs::remove(jobsFolder() / "jobs.db.damaged-1");
    expectRemoved("1");
}

TEST_F(StrayCopies, ofADamagedDatabaseAllStay)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    for (const char* name : {"jobs.db-wal", "jobs.db-shm"})
        fs::remove(jobsFolder() / name);
    writeFile(jobsFolder() / "jobs.db", std::string(8192, 'x'));
    expectUntouched();
    EXPECT_EQ(log.count(L"W [ORLOSDK]private copies that no job names stay, since a database that was lost may name them: " +
                        fromUtf8(jobsFolder())),
              1U);
}

TEST_F(StrayCopies, ofADatabaseThatIsNewOrEmptyAllStay)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    for (const bool isEmpty : {false, true}) {
        for (const char* name : {"jobs.db", "jobs.db-wal", "jobs.db-shm"})
            fs::remove(jobsFolder() / name);
        if (isEmpty)
            writeFile(jobsFolder() / "jobs.db", "");
        expectUntouched();
        EXPECT_EQ(log.count(L"W [ORLOSDK]private copies that no job names stay, since a database that was lost may name them: " +
                            fromUtf8(jobsFolder())),
                  1U);
    }
}

TEST_F(StrayCopies, whereTheLivingCanNotBeKnownAllStay)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    fs::remove_all(host.folder().path("Processes"));
    writeFile(host.folder().path("Processes"), "a file in place of the folder");
    expectUntouched();
}

TEST_F(StrayCopies, anotherProcessesJobsAreLeftAlone)
{
    makeOld(in(std::string("p-1/") + guid, "a"));
    utils::FileLock running;
    ASSERT_TRUE(running.acquire(fromUtf8(jobsFolder() / "jobs.db.running"), 0));
    expectUntouched();
    running.release();
    expectRemoved("1");
}

} // namespace
} // namespace orlo::test
