#include "support/FileProcess.h"
#include "support/TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/StrayFiles.h>
#include <BaseCommon/Text.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using namespace orlo::utils;

constexpr const char* guid = "8d78b598-f02a-40ad-9984-17126a4d3b38";

class StrayFiles : public testing::Test
{
protected:
    StrayFiles()
    {
        for (const char* folder : {"Files/ds-1/blocks", "Temp", "Templates"})
            fs::create_directories(at(folder));
    }

    fs::path at(const std::string& name) const { return m_folder.path(name); }
    fs::path make(const std::string& name, const std::string& content = "x") const
    {
        writeFile(at(name), content);
        return at(name);
    }
    fs::path makeOld(const std::string& name) const
    {
        fs::last_write_time(make(name), fs::file_time_type::clock::now() - std::chrono::hours(1));
        return at(name);
    }

    TempFolder m_folder;
    LocalRoot m_root{m_folder};
};

TEST_F(StrayFiles, whatDeadProcessesLeftIsRemoved)
{
    makeOld(std::string("Temp/") + guid);
    makeOld(std::string("Temp/.~") + guid);
    makeOld(std::string("Files/.~") + guid);
    makeOld(std::string("Files/ds-1/blocks/.~") + guid);
    makeOld(std::string("Templates/.~") + guid);
    EXPECT_EQ(removeStrayTransfers(), 5U);
    EXPECT_TRUE(fs::is_empty(at("Temp")));
    EXPECT_TRUE(fs::is_empty(at("Templates")));
    EXPECT_TRUE(fs::is_empty(at("Files/ds-1/blocks")));
    EXPECT_EQ(removeStrayTransfers(), 0U);
}

TEST_F(StrayFiles, whatThisProcessMadeStays)
{
    ASSERT_TRUE(tellThatProcessLives());
    std::wstring path;
    ASSERT_TRUE(GenerateNewFile(path));
    ASSERT_TRUE(writeFileAtomically(path, "mine"));
    EXPECT_EQ(removeStrayTransfers(), 0U);
    EXPECT_TRUE(hasFile(path));
}

TEST_F(StrayFiles, whatALivingProcessMadeStaysUntilThatIsGone)
{
    const fs::path file = at(std::string("Temp/") + guid);
    LivingProcess child(m_folder);
    ASSERT_EQ(child.ask("write " + file.u8string()), "yes");
    writtenNow(at("now"));
    EXPECT_EQ(removeStrayTransfers(), 0U);
    EXPECT_TRUE(fs::exists(file));
    child.kill();
    EXPECT_EQ(removeStrayTransfers(), 1U);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(StrayFiles, namesOfOthersStay)
{
    for (const char* name : {"Temp/plan.dwg", "Temp/8d78b598-f02a-40ad-9984-17126a4d3b38.dwg", "Temp/.~lock.plan#", "Temp/.~",
                             "Temp/8d78b598", "Files/ds-1/blocks/8d78b598-f02a-40ad-9984-17126a4d3b38", "Files/ds-1/.~lock.plan#",
                             "Templates/8d78b598-f02a-40ad-9984-17126a4d3b38", "Templates/t-1-77.dwt", "Temp/\xFF\xFE"})
        makeOld(name);
    fs::create_directories(at(std::string("Temp/") + guid));
    fs::last_write_time(at(std::string("Temp/") + guid), fs::file_time_type::clock::now() - std::chrono::hours(1));
    makeOld(std::string("Temp/") + guid + "/" + guid);
    EXPECT_EQ(removeStrayTransfers(), 0U);
    EXPECT_TRUE(fs::exists(at(std::string("Temp/") + guid + "/" + guid)));
    EXPECT_TRUE(fs::exists(at("Temp/plan.dwg")));
}

TEST_F(StrayFiles, linksAreNeitherFollowedNorRemoved)
{
    const TempFolder outside;
    const fs::path victim = outside.path(std::string(".~") + guid);
    writeFile(victim, "mine");
    fs::last_write_time(victim, fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::create_symlink(victim, at(std::string("Temp/") + guid));
    fs::create_symlink(victim, at(std::string("Files/.~") + guid));
    fs::create_directory_symlink(outside.path(), at("Files/ds-2"));
    EXPECT_EQ(removeStrayTransfers(), 0U);
    EXPECT_EQ(readFile(victim), "mine");
    EXPECT_TRUE(fs::is_symlink(at(std::string("Temp/") + guid)));
}

TEST_F(StrayFiles, whereTheLivingCanNotBeKnownNothingIsRemoved)
{
    makeOld(std::string("Temp/") + guid);
    writeFile(at("Processes"), "a file in place of the folder");
    EXPECT_EQ(removeStrayTransfers(), 0U);
    EXPECT_TRUE(fs::exists(at(std::string("Temp/") + guid)));
}

TEST_F(StrayFiles, ofVeryManyOnlyTenThousandAreLookedAt)
{
    for (int i = 0; i < 10100; ++i)
        make("Temp/" + toString(generateGuid()), "");
    writtenNow(at("now"));
    EXPECT_EQ(removeStrayTransfers(), 10000U);
    EXPECT_EQ(removeStrayTransfers(), 100U);
}

} // namespace
} // namespace orlo::test
