#include "support/FileProcess.h"
#include "support/TempFolder.h"

#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <memory>

using namespace orlo::utils;

namespace {

class Platform : public testing::Test
{
protected:
    std::wstring lockPath() const { return m_folder.wide("锁.lock"); }

    orlo::test::TempFolder m_folder;
};

} // namespace

TEST_F(Platform, ALockHasOneHolder)
{
    FileLock first;
    FileLock second;
    EXPECT_TRUE(first.acquire(lockPath(), 0));
    EXPECT_TRUE(first.isHeld());
    EXPECT_FALSE(second.acquire(lockPath(), 20));
    EXPECT_FALSE(second.isHeld());
    first.release();
    EXPECT_FALSE(first.isHeld());
    EXPECT_TRUE(second.acquire(lockPath(), 0));
}

TEST_F(Platform, ALockIsGivenBackAtTheEndOfItsHolder)
{
    {
        FileLock first;
        ASSERT_TRUE(first.acquire(lockPath(), 0));
    }
    FileLock second;
    EXPECT_TRUE(second.acquire(lockPath(), 0));
}

TEST_F(Platform, ALockMayBeTakenAgainByItsHolder)
{
    FileLock lock;
    EXPECT_TRUE(lock.acquire(lockPath(), 0));
    EXPECT_TRUE(lock.acquire(lockPath(), 0));
}

TEST_F(Platform, ALockOfAKilledProcessIsFree)
{
    orlo::test::FileProcess child(m_folder);
    ASSERT_EQ(child.ask("lock " + orlo::utils::toString(lockPath())), "yes");
    FileLock lock;
    EXPECT_FALSE(lock.acquire(lockPath(), 0));
    child.kill();
    EXPECT_TRUE(lock.acquire(lockPath(), 0));
}

TEST_F(Platform, ALockInAFolderThatIsNotThereIsRefused)
{
    FileLock lock;
    EXPECT_FALSE(lock.acquire(m_folder.wide("none/lock"), 60000));
    EXPECT_FALSE(lock.isHeld());
}

TEST_F(Platform, ANewFileNeverReplacesOne)
{
    EXPECT_TRUE(writeNewFile(m_folder.wide("file"), "first", false));
    EXPECT_FALSE(writeNewFile(m_folder.wide("file"), "second", false));
    EXPECT_EQ(orlo::test::readFile(m_folder.path("file")), "first");
}

TEST_F(Platform, FlushingTellsWhatIsNotThere)
{
    orlo::test::writeFile(m_folder.path("file"), "x");
    EXPECT_TRUE(flushFile(m_folder.wide("file")));
    EXPECT_FALSE(flushFile(m_folder.wide("none")));
    EXPECT_TRUE(flushFolder(m_folder.wide()));
    EXPECT_FALSE(flushFolder(m_folder.wide("none")));
}

TEST_F(Platform, HidingTellsWhatIsNotThere)
{
    EXPECT_TRUE(setHiddenAttribute(m_folder.wide()));
    EXPECT_FALSE(setHiddenAttribute(m_folder.wide("none")));
}

TEST_F(Platform, OnlyALibraryCanBeKeptLoaded)
{
    EXPECT_TRUE(keepLoaded(reinterpret_cast<const void*>(&currentProcessId)));
    const auto onHeap = std::make_unique<int>();
    EXPECT_FALSE(keepLoaded(onHeap.get()));
    EXPECT_FALSE(keepLoaded(nullptr));
}

TEST_F(Platform, TheProcessIdIsTheSystems)
{
    EXPECT_EQ(currentProcessId(), static_cast<unsigned long>(::getpid()));
}

namespace {

std::filesystem::perms modeOf(const std::filesystem::path& file)
{
    return std::filesystem::status(file).permissions();
}

constexpr auto ownersAlone = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;

} // namespace

TEST_F(Platform, APrivateFileIsMadeWhereThereIsNone)
{
    EXPECT_TRUE(makeFilePrivate(m_folder.wide("log")));
    EXPECT_EQ(modeOf(m_folder.path("log")), ownersAlone);
    EXPECT_EQ(orlo::test::readFile(m_folder.path("log")), "");
}

TEST_F(Platform, AFileThatOthersMayReadIsTightenedAndKeepsWhatItHolds)
{
    orlo::test::writeFile(m_folder.path("log"), "lines");
    std::filesystem::permissions(m_folder.path("log"), std::filesystem::perms(0664));
    EXPECT_TRUE(makeFilePrivate(m_folder.wide("log")));
    EXPECT_EQ(modeOf(m_folder.path("log")), ownersAlone);
    EXPECT_EQ(orlo::test::readFile(m_folder.path("log")), "lines");
}

TEST_F(Platform, WhatIsNoFileIsNotMadePrivate)
{
    const auto before = modeOf("/dev/full");
    EXPECT_TRUE(makeFilePrivate(L"/dev/full"));
    EXPECT_EQ(modeOf("/dev/full"), before);
    EXPECT_FALSE(makeFilePrivate(m_folder.wide("")));
    const orlo::test::UsualPermissions permissions;
    ASSERT_TRUE(orlo::test::makeNamedPipe(m_folder.path("pipe")));
    EXPECT_FALSE(makeFilePrivate(m_folder.wide("pipe"))) << "and nobody waits for its reader";
    EXPECT_EQ(modeOf(m_folder.path("pipe")), std::filesystem::perms(0644));
}
