#include "support/FileProcess.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>

#include <gmock/gmock.h>

#include <memory>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using namespace orlo::utils;
using std::chrono::hours;
using testing::IsEmpty;
using testing::SizeIs;

class LivingProcesses : public testing::Test
{
protected:
    std::vector<fs::path> marks() const
    {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(processes()))
            found.push_back(entry.path());
        return found;
    }
    fs::path processes() const { return m_folder.path("Processes"); }

    TempFolder m_folder;
    LocalRoot m_root{m_folder};
};

TEST_F(LivingProcesses, theBeginningIsWhenItWasToldFirst)
{
    const fs::file_time_type before = writtenNow(m_folder.path("before"));
    EXPECT_TRUE(tellThatProcessLives());
    const auto start = startOfOldestProcess();
    const fs::file_time_type after = writtenNow(m_folder.path("after"));
    ASSERT_TRUE(start);
    EXPECT_LT(before, *start);
    EXPECT_GT(after, *start);
    EXPECT_TRUE(tellThatProcessLives());
    EXPECT_EQ(startOfOldestProcess(), start);
    EXPECT_THAT(marks(), SizeIs(1));
}

TEST_F(LivingProcesses, whoAsksTellsThatItLives)
{
    EXPECT_TRUE(startOfOldestProcess());
    EXPECT_THAT(marks(), SizeIs(1));
}

TEST_F(LivingProcesses, theFirstOfThoseThatLiveCounts)
{
    const LivingProcess first(m_folder);
    const auto started = fs::last_write_time(marks().at(0));
    writtenNow(m_folder.path("between"));
    const LivingProcess second(m_folder);
    EXPECT_EQ(startOfOldestProcess(), started);
    EXPECT_THAT(marks(), SizeIs(3));
}

TEST_F(LivingProcesses, aKilledOneCountsNoMoreAndItsMarkGoes)
{
    LivingProcess first(m_folder);
    writtenNow(m_folder.path("between"));
    LivingProcess second(m_folder);
    const auto started = startOfOldestProcess();
    ASSERT_TRUE(started);
    first.kill();
    EXPECT_GT(*startOfOldestProcess(), *started);
    EXPECT_THAT(marks(), SizeIs(2));
    second.kill();
    EXPECT_GT(*startOfOldestProcess(), *started);
    EXPECT_THAT(marks(), SizeIs(1));
}

TEST_F(LivingProcesses, everyRootHasItsOwn)
{
    const LivingProcess here(m_folder);
    const TempFolder other;
    setLocalRoot(other.wide());
    writtenNow(other.path("now"));
    const auto start = startOfOldestProcess();
    EXPECT_THAT(marks(), SizeIs(1));
    setLocalRoot(m_folder.wide());
    EXPECT_LT(*startOfOldestProcess(), *start);
    EXPECT_THAT(marks(), SizeIs(2));
}

TEST_F(LivingProcesses, whatIsNoMarkIsLeftAlone)
{
    fs::create_directories(processes() / "folder");
    const char* const guid = "8d78b598-f02a-40ad-9984-17126a4d3b38";
    for (const char* name : {"a.alive", ".alive", "8d78b598-f02a-40ad-9984-17126a4d3b38", "8d78b598-f02a-40ad-9984-17126a4d3b3.alive"}) {
        writeFile(processes() / name, "x");
        fs::last_write_time(processes() / name, fs::file_time_type::clock::now() - hours(1));
    }
    writeFile(m_folder.path("victim"), "x");
    fs::create_symlink(m_folder.path("victim"), processes() / (std::string(guid) + ".alive"));
    const auto start = startOfOldestProcess();
    ASSERT_TRUE(start);
    EXPECT_THAT(marks(), SizeIs(7));
    EXPECT_TRUE(fs::exists(m_folder.path("victim")));
}

TEST_F(LivingProcesses, aBeginningInTheFutureTellsNothing)
{
    ASSERT_TRUE(tellThatProcessLives());
    fs::last_write_time(marks().at(0), fs::file_time_type::clock::now() + hours(1));
    EXPECT_FALSE(startOfOldestProcess());
}

TEST_F(LivingProcesses, whereNothingCanBeToldNothingIsKnown)
{
    writeFile(processes(), "a file in place of the folder");
    EXPECT_FALSE(tellThatProcessLives());
    EXPECT_FALSE(startOfOldestProcess());
    EXPECT_EQ(readFile(processes()), "a file in place of the folder");
}

TEST_F(LivingProcesses, aMarkThatWasRemovedIsMadeAgain)
{
    ASSERT_TRUE(tellThatProcessLives());
    fs::remove_all(processes());
    EXPECT_TRUE(tellThatProcessLives());
    EXPECT_THAT(marks(), SizeIs(1));
}

TEST_F(LivingProcesses, manyThreadsMakeOneMark)
{
    inThreads(8, [] { EXPECT_TRUE(tellThatProcessLives() && startOfOldestProcess()); });
    EXPECT_THAT(marks(), SizeIs(1));
}

TEST_F(LivingProcesses, processesThatComeWhileOthersLookAroundAreAllSeen)
{
    LivingProcess looking(m_folder);
    looking.tell("look-around");
    std::vector<std::unique_ptr<LivingProcess>> children;
    for (int i = 0; i < 20; ++i)
        children.push_back(std::make_unique<LivingProcess>(m_folder));
    EXPECT_THAT(marks(), SizeIs(21));
    looking.kill();
    EXPECT_TRUE(startOfOldestProcess());
    EXPECT_THAT(marks(), SizeIs(21));
    children.clear();
    EXPECT_TRUE(startOfOldestProcess());
    EXPECT_THAT(marks(), SizeIs(1));
}

} // namespace
} // namespace orlo::test
