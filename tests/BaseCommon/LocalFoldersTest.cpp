#include "support/TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <set>
#include <thread>

using namespace orlo;
using namespace orlo::utils;

namespace fs = std::filesystem;

namespace {

// Sets an environment variable, or takes it away, for the length of a test.
class Environment
{
public:
    Environment(const char* name, const std::optional<std::string>& value) : m_name(name)
    {
        if (const char* before = std::getenv(name))
            m_before = before;
        set(value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { set(m_before); }

private:
    void set(const std::optional<std::string>& value) const
    {
        if (value)
            ::setenv(m_name, value->c_str(), 1);
        else
            ::unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

class LocalFolders : public testing::Test
{
protected:
    void TearDown() override { setLocalRoot(L""); }

    orlo::test::TempFolder m_folder;
};

std::set<std::wstring> allFolders()
{
    return {getTempPath(), getLocalAppDataPath(), getLocalDbCachePath(), getLocalFileCachePath(), getTemplatesPath(), getLogPath()};
}

} // namespace

TEST_F(LocalFolders, AllLieBelowTheLocalRootAndAreMade)
{
    setLocalRoot(m_folder.wide("根 \xF0\x9F\x8F\x97"));
    const std::set<std::wstring> folders = allFolders();
    EXPECT_EQ(folders.size(), 6U);
    for (const std::wstring& folder : folders) {
        EXPECT_TRUE(isPathInside(m_folder.wide("根 \xF0\x9F\x8F\x97"), folder));
        EXPECT_TRUE(hasDirectory(folder));
    }
}

TEST_F(LocalFolders, AreMadeAgainWhenSomebodyRemovedThem)
{
    setLocalRoot(m_folder.wide());
    fs::remove_all(makePath(getTemplatesPath()));
    EXPECT_TRUE(hasDirectory(getTemplatesPath()));
}

TEST_F(LocalFolders, FollowARootThatIsSetAnew)
{
    setLocalRoot(m_folder.wide("one"));
    EXPECT_TRUE(isPathInside(m_folder.wide("one"), getTempPath()));
    setLocalRoot(m_folder.wide("two"));
    EXPECT_TRUE(isPathInside(m_folder.wide("two"), getTempPath()));
}

TEST_F(LocalFolders, CarryNoSeparatorAtTheEnd)
{
    setLocalRoot(m_folder.wide() + L"//");
    EXPECT_EQ(FilePath(getLogPath()).GetDirectoryName(), m_folder.wide());
    for (const std::wstring& folder : allFolders())
        EXPECT_NE(folder.back(), L'/');
}

TEST_F(LocalFolders, ARelativeRootDoesNotFollowTheWorkingFolder)
{
    const fs::path before = fs::current_path();
    fs::create_directory(m_folder.path("elsewhere"));
    fs::current_path(m_folder.path());
    setLocalRoot(L"root");
    fs::current_path(m_folder.path("elsewhere"));
    const std::wstring folder = getTempPath();
    fs::current_path(before);
    EXPECT_TRUE(isPathInside(fromPath(fs::canonical(m_folder.path("root"))), fromPath(fs::canonical(makePath(folder)))));
}

TEST_F(LocalFolders, WithoutARootLieInTheUsersPlaces)
{
    const Environment data("XDG_DATA_HOME", m_folder.path("data").string());
    const Environment cache("XDG_CACHE_HOME", m_folder.path("cache").string() + "/");
    const Environment state("XDG_STATE_HOME", m_folder.path("state").string());
    EXPECT_EQ(getLocalAppDataPath(), m_folder.wide("data"));
    EXPECT_EQ(getLocalDbCachePath(), m_folder.wide("data/Orlo/Jobs"));
    EXPECT_EQ(getLocalFileCachePath(), m_folder.wide("cache/Orlo/Files"));
    EXPECT_EQ(getTemplatesPath(), m_folder.wide("cache/Orlo/Templates"));
    EXPECT_EQ(getTempPath(), m_folder.wide("cache/Orlo/Temp"));
    EXPECT_EQ(getLogPath(), m_folder.wide("state/Orlo/Logs"));
    for (const std::wstring& folder : allFolders())
        EXPECT_TRUE(hasDirectory(folder));
}

TEST_F(LocalFolders, WithoutThoseVariablesLieBelowTheHome)
{
    const Environment home("HOME", m_folder.path().string());
    const Environment data("XDG_DATA_HOME", std::nullopt);
    const Environment cache("XDG_CACHE_HOME", "relative/is/ignored");
    const Environment state("XDG_STATE_HOME", "");
    EXPECT_EQ(getLocalAppDataPath(), m_folder.wide(".local/share"));
    EXPECT_EQ(getLocalFileCachePath(), m_folder.wide(".cache/Orlo/Files"));
    EXPECT_EQ(getLogPath(), m_folder.wide(".local/state/Orlo/Logs"));
}

TEST_F(LocalFolders, AnEmptyRootBringsTheUsersPlacesBack)
{
    const Environment data("XDG_DATA_HOME", m_folder.path("data").string());
    setLocalRoot(m_folder.wide("root"));
    EXPECT_NE(getLocalAppDataPath(), m_folder.wide("data"));
    setLocalRoot(L"");
    EXPECT_EQ(getLocalAppDataPath(), m_folder.wide("data"));
}

TEST_F(LocalFolders, ARootThatCannotBeMadeStillGivesPaths)
{
    orlo::test::writeFile(m_folder.path("file"), "x");
    setLocalRoot(m_folder.wide("file"));
    EXPECT_EQ(FilePath(getTempPath()).GetDirectoryName(), m_folder.wide("file"));
    EXPECT_FALSE(hasDirectory(getTempPath()));
}

TEST_F(LocalFolders, MayBeAskedForWhileTheRootIsReplaced)
{
    const std::wstring one = m_folder.wide("one");
    const std::wstring two = m_folder.wide("two");
    setLocalRoot(one);
    std::thread setter([&] {
        for (int i = 0; i < 500; ++i)
            setLocalRoot(i % 2 == 0 ? two : one);
    });
    for (int i = 0; i < 500; ++i) {
        const std::wstring folder = getLogPath();
        EXPECT_TRUE(isPathInside(one, folder) || isPathInside(two, folder));
    }
    setter.join();
}
