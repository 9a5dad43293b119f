#include "support/TempFolder.h"

#include <OrloNetwork/Body/TempFile.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace orlo::test {
namespace {

class TempFileTest : public testing::Test
{
protected:
    bool isThere(const char* name) const { return std::filesystem::exists(folder.path(name)); }

    const TempFolder folder;
};

TEST_F(TempFileTest, makesNothingUntilItIsWritten)
{
    http::TempFile file(folder.wide("t"));
    EXPECT_FALSE(isThere("t"));
    file.write("abc", 3);
    EXPECT_TRUE(isThere("t"));
}

TEST_F(TempFileTest, goesWithItsOwner)
{
    {
        http::TempFile file(folder.wide("t"));
        file.write("abc", 3);
        file.close();
        EXPECT_TRUE(isThere("t"));
    }
    EXPECT_FALSE(isThere("t"));
}

TEST_F(TempFileTest, movesWhatWasWrittenToItsPlace)
{
    writeFile(folder.path("目标"), "an older and longer content");
    {
        http::TempFile file(folder.wide("t"));
        file.write("abc", 3);
        file.write("", 0);
        file.write("def", 3);
        file.close();
        EXPECT_TRUE(file.moveTo(folder.wide("目标")));
    }
    EXPECT_EQ(readFile(folder.path("目标")), "abcdef");
    EXPECT_FALSE(isThere("t"));
}

TEST_F(TempFileTest, aFileWithoutContentIsAFileToo)
{
    http::TempFile file(folder.wide("t"));
    file.close();
    EXPECT_TRUE(file.moveTo(folder.wide("target")));
    EXPECT_EQ(std::filesystem::file_size(folder.path("target")), 0U);
}

TEST_F(TempFileTest, staysUnderItsTemporaryNameWhenTheMoveFails)
{
    std::filesystem::create_directory(folder.path("target"));
    {
        http::TempFile file(folder.wide("t"));
        file.write("abc", 3);
        file.close();
        EXPECT_FALSE(file.moveTo(folder.wide("target")));
    }
    EXPECT_EQ(readFile(folder.path("t")), "abc");
    EXPECT_EQ(filesBelow(folder.path()), std::vector<std::string>{"t"});
}

TEST_F(TempFileTest, throwsWhereNoFileCanBeMade)
{
    http::TempFile file(folder.wide("missing/t"));
    EXPECT_THROW(file.write("abc", 3), std::runtime_error);
    EXPECT_THROW(file.close(), std::runtime_error);
}

TEST_F(TempFileTest, throwsOnADeviceThatIsFull)
{
    std::filesystem::create_symlink("/dev/full", folder.path("t"));
    {
        http::TempFile file(folder.wide("t"));
        EXPECT_THROW(file.write("abc", 3), std::runtime_error);
        EXPECT_THROW(file.write("abc", 3), std::runtime_error);
    }
    EXPECT_FALSE(isThere("t"));
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

} // namespace
} // namespace orlo::test
