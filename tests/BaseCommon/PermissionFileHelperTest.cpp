#include "support/FileProcess.h"
#include "support/Patterns.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <BaseCommon/Platform.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace orlo::utils;
using orlo::test::FitsPattern;
using orlo::test::readFile;
using orlo::test::writeFile;
using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

class PermissionFile : public testing::Test
{
protected:
    PermissionFile() : m_root(m_local) {}

    fs::path tokenFolder() const { return m_local.path("AppData/Veltrin/PermissionToken"); }
    fs::path tokenFile() const { return tokenFolder() / "DatasetTokens.json"; }

    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(tokenFolder()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    void putTokenFile(const std::string& content) const
    {
        fs::create_directories(tokenFolder());
        writeFile(tokenFile(), content);
    }

    orlo::test::TempFolder m_local;
    orlo::test::LocalRoot m_root;
    PermissionFileHelper& m_helper = *PermissionFileHelper::GetInstance();
};

std::string longToken(int number)
{
    return "token-" + std::to_string(number) + "-" + std::string(20000, 't');
}

int numberOf(const std::string& token)
{
    return token.compare(0, 6, "token-") == 0 ? std::atoi(token.c_str() + 6) : -1;
}

} // namespace

TEST_F(PermissionFile, KeepsOneTokenForEachPairOfUserAndDataset)
{
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-2", "b"));
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-2", "ds-1", "c"));
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "d"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "d");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-2"), "b");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-2", "ds-1"), "c");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-2", "ds-2"), "");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("ds-1", "user-1"), "");
}

TEST_F(PermissionFile, KeepsIdsAndTokensByteForByte)
{
    const std::string token = "要\"\\\n\xF0\x9F\x94\x91 {\"a\":1}";
    EXPECT_TRUE(m_helper.WriteTokenToFile("用户", "", token));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("用户", ""), token);
}

TEST_F(PermissionFile, RefusesAnEmptyTokenAndWhatIsNoUtf8)
{
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds-1", ""));
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds-1", "\xFF"));
    EXPECT_FALSE(m_helper.WriteTokenToFile("user\xFF", "ds-1", "a"));
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds\xFF", "a"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
}

TEST_F(PermissionFile, ReleaseForgetsThePairOnly)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-2", "b"));
    EXPECT_TRUE(m_helper.ReleasePermission("user-1", "ds-1"));
    EXPECT_FALSE(m_helper.ReleasePermission("user-1", "ds-1"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-2"), "b");
}

TEST_F(PermissionFile, LooksForTheFileWithoutMakingItsFolder)
{
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
    EXPECT_FALSE(m_helper.ReleasePermission("user-1", "ds-1"));
    EXPECT_FALSE(fs::exists(tokenFolder()));
    EXPECT_EQ(makePath(PermissionFileHelper::TokenFolder()), tokenFolder());
    EXPECT_FALSE(fs::exists(tokenFolder()));
}

TEST_F(PermissionFile, IsReadableByItsOwnerAlone)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    EXPECT_THAT(names(), ElementsAre("DatasetTokens.json", "DatasetTokens.lock"));
    EXPECT_EQ(fs::status(tokenFile()).permissions(), fs::perms(0600));
}

TEST_F(PermissionFile, HasAFormatThatLaterVersionsCanRead)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    EXPECT_THAT(readFile(tokenFile()),
                FitsPattern(R"(\{"version":1,"revision":"[-0-9a-f]{36}","tokens":\[\{"user":"user-1","dataset":"ds-1","token":"a"\}\]\})"));
    putTokenFile(R"({"tokens":[{"token":"b","user":"user-2","dataset":"ds-2","since":5}],"version":1,"more":{}})");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-2", "ds-2"), "b");
}

TEST_F(PermissionFile, SeesWhatOthersHaveWritten)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "mine"));
    const std::string before = readFile(tokenFile());
    for (int i = 0; i < 20; ++i) {
        orlo::test::FileProcess(m_local).ask("tokens user-1"); // "0" to "39"
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "39"), "user-139");
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "mine");
        putTokenFile(before);
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "39"), "") << "as it was before";
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "mine");
    }
    putTokenFile(R"({"version":1,"tokens":[{"user":"user-1","dataset":"ds-1","token":"a"}]})");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "a");
    putTokenFile(R"({"version":1,"tokens":[{"user":"user-1","dataset":"ds-1","token":"b"}]})");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "b") << "of the same size, without a revision";
    fs::remove(tokenFile());
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-2", "c"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "") << "it doesn't come back";
}

TEST_F(PermissionFile, WhatCannotBeWrittenIsNotRememberedEither)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    fs::remove(tokenFile());
    fs::create_directories(tokenFile() / "x"); // no file can come in its place
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds-1", "b"));
    fs::remove_all(tokenFile());
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
}

TEST_F(PermissionFile, ManyEntriesComeAndGoWithoutDisturbingTheOthers)
{
    std::map<std::pair<std::string, std::string>, std::string> expected;
    unsigned random = 7;
    for (int step = 0; step < 400; ++step) {
        random = random * 1664525 + 1013904223;
        const std::string user = std::string("u\"\\,{用") + std::to_string(random >> 8 & 1);
        const std::string dataset = "d]}" + std::to_string(random >> 16 & 7);
        if ((random >> 24 & 3) == 0) {
            EXPECT_EQ(m_helper.ReleasePermission(user, dataset), expected.erase({user, dataset}) == 1);
        }
        else {
            const std::string token = "\"},{\"user\":\"" + std::to_string(random);
            EXPECT_TRUE(m_helper.WriteTokenToFile(user, dataset, token));
            expected[{user, dataset}] = token;
        }
        if (step % 40 == 39) // as another process would read it
            putTokenFile(readFile(tokenFile()).replace(1, 12, "\"version\" :1,"));
        for (const auto& [holder, token] : expected)
            ASSERT_EQ(m_helper.GetDatasetTokenFromFile(holder.first, holder.second), token) << step;
    }
    EXPECT_GT(expected.size(), 8u);
}

TEST_F(PermissionFile, ABrokenFileIsSetAsideAndANewOneBegun)
{
    for (const std::string& broken :
         {std::string(), std::string("{\"version\":1,\"tok"), std::string("[]"), std::string("null"), std::string("\0\0\0", 3),
          std::string("\xFF\xFE"), std::string(R"({"version":2,"tokens":[]})"), std::string(R"({"version":"1","tokens":[]})"),
          std::string(R"({"version":1,"tokens":{}})"), std::string(1000000, '[')}) {
        putTokenFile(broken);
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
        EXPECT_FALSE(fs::exists(tokenFile()));
        EXPECT_TRUE(readFile(tokenFolder() / "DatasetTokens.broken") == broken);
        EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "a");
    }
}

TEST_F(PermissionFile, ABrokenFileDoesNotHinderAWrite)
{
    putTokenFile("garbage");
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "a");
    EXPECT_EQ(readFile(tokenFolder() / "DatasetTokens.broken"), "garbage");
}

TEST_F(PermissionFile, ABrokenEntryDoesNotCostTheOthers)
{
    putTokenFile(
        R"({"version":1,"tokens":[{"user":"user-1"},7,null,{"user":1,"dataset":"ds-1","token":"x"},{"user":"user-1","dataset":"ds-1","token":"a"}]})");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "a");
}

TEST_F(PermissionFile, ATokenThatCannotBeWrittenIsToldSo)
{
    fs::create_directories(tokenFile());
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
    EXPECT_FALSE(m_helper.ReleasePermission("user-1", "ds-1"));
}

TEST_F(PermissionFile, WithoutItsLockTheFileIsReadAndNotChanged)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "a"));
    fs::remove(tokenFolder() / "DatasetTokens.lock");
    fs::create_directory(tokenFolder() / "DatasetTokens.lock"); // can't be opened as a file
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "a");
    EXPECT_FALSE(m_helper.WriteTokenToFile("user-1", "ds-1", "b"));
    EXPECT_FALSE(m_helper.ReleasePermission("user-1", "ds-1"));
    putTokenFile("garbage");
    EXPECT_EQ(m_helper.GetDatasetTokenFromFile("user-1", "ds-1"), "");
    EXPECT_EQ(readFile(tokenFile()), "garbage");
}

TEST_F(PermissionFile, ThreadsMayWriteAtOnce)
{
    orlo::test::inThreads(4, [this](int user) {
        for (int dataset = 0; dataset < 10; ++dataset)
            EXPECT_TRUE(m_helper.WriteTokenToFile(std::to_string(user), std::to_string(dataset), "t"));
    });
    for (int user = 0; user < 4; ++user) {
        for (int dataset = 0; dataset < 10; ++dataset)
            EXPECT_EQ(m_helper.GetDatasetTokenFromFile(std::to_string(user), std::to_string(dataset)), "t");
    }
}

TEST_F(PermissionFile, TwoProcessesMayWriteAtOnce)
{
    constexpr int datasets = 40;
    orlo::test::FileProcess first(m_local);
    orlo::test::FileProcess second(m_local);
    first.tell("tokens a");
    second.tell("tokens b");
    EXPECT_EQ(first.readLine(), "yes");
    EXPECT_EQ(second.readLine(), "yes");
    for (int i = 0; i < datasets; ++i) {
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("a", std::to_string(i)), "a" + std::to_string(i));
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("b", std::to_string(i)), "b" + std::to_string(i));
    }
}

TEST_F(PermissionFile, AKillAtAnyInstantLosesNothingThatWasWritten)
{
    ASSERT_TRUE(m_helper.WriteTokenToFile("other", "ds-1", "kept"));
    int last = 0;
    for (int round = 0; round < 30; ++round) {
        orlo::test::FileProcess child(m_local);
        child.tell("pour-tokens " + std::to_string(last + 1));
        std::string told;
        for (int seen = 0; seen <= round % 4; ++seen)
            told = child.readLine();
        // Lets the child come a different way into its next write each time.
        for (volatile int spin = 0; spin < round * 20000; spin = spin + 1) {
        }
        child.kill();
        ASSERT_EQ(child.wait(), orlo::test::ChildProcess::killed);
        ASSERT_FALSE(told.empty());

        const std::string token = m_helper.GetDatasetTokenFromFile("user-1", "ds-1");
        last = numberOf(token);
        EXPECT_GE(last, std::stoi(told));
        EXPECT_TRUE(token == longToken(last));
        EXPECT_EQ(m_helper.GetDatasetTokenFromFile("other", "ds-1"), "kept");
    }
    EXPECT_TRUE(m_helper.WriteTokenToFile("user-1", "ds-1", "after"));
    EXPECT_THAT(names(), ElementsAre("DatasetTokens.json", "DatasetTokens.lock"));
}
