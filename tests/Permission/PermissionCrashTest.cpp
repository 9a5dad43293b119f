#include "PermissionPlatform.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/PermissionFileHelper.h>

#include <gtest/gtest.h>

#include <functional>
#include <set>

// A host is killed at each of its calls of the system while it takes or gives back the right to write.
namespace orlo::test {
namespace {

class PermissionCrash : public testing::Test
{
protected:
    PermissionPlatform platform;

    /// The token that "wang" has kept; the file is whole, and nobody had to set one aside.
    static std::string kept(const TempFolder& root)
    {
        const LocalRoot here(root);
        const std::wstring folder = utils::PermissionFileHelper::TokenFolder();
        EXPECT_FALSE(utils::hasFile(FilePath::Combine(folder, L"DatasetTokens.broken")));
        return utils::PermissionFileHelper::GetInstance()->GetDatasetTokenFromFile("wang", "d-1");
    }

    void expectNextQuestionEndsWell(const TempFolder& root, unsigned call)
    {
        PermissionProcess next(platform, root, "wang");
        EXPECT_EQ(next.ask("ask d-1"), mayWrite) << "killed at call " << call;
        EXPECT_EQ(next.ask("valid d-1"), "yes") << "killed at call " << call;
        EXPECT_EQ(next.ask("release d-1"), R"(yes {"code":10000,"msg":"success"})") << "killed at call " << call;
    }

    /// Kills at the first call, the second, and so on, until the command comes to its end.
    /// prepare: what stands before, in another process.   isWhole: whether what is kept may be so, from what was before.
    void killAtEachCallOf(const std::string& command, const std::function<void(PermissionProcess&)>& prepare,
                          const std::function<void(const std::string& before, const std::string& after)>& expectWhole)
    {
        unsigned call = 0;
        for (bool isKilled = true; isKilled;) {
            const TempFolder root;
            {
                PermissionProcess before(platform, root, "wang");
                prepare(before);
            }
            const std::string before = kept(root);
            PermissionProcess host(platform, root, "wang");
            EXPECT_EQ(host.ask("die-at " + std::to_string(++call)), "yes");
            isKilled = host.ask(command).empty();
            if (isKilled) {
                EXPECT_EQ(host.wait(), ChildProcess::killed);
            }
            expectWhole(before, kept(root));
            expectNextQuestionEndsWell(root, call);
        }
        EXPECT_GT(call, 8u) << "there were sends, receives, and calls for the file";
        RecordProperty("calls", static_cast<int>(call));
    }
};

TEST_F(PermissionCrash, whileTheFirstTokenIsTakenLeavesNoneOrAWholeOne)
{
    std::set<bool> seen;
    killAtEachCallOf(
        "ask d-1", [](PermissionProcess&) {},
        [&](const std::string& before, const std::string& after) {
            EXPECT_EQ(before, "");
            EXPECT_TRUE(after.empty() || after.size() == 36) << after;
            seen.insert(after.empty());
        });
    EXPECT_EQ(seen.size(), 2u) << "some kills came before the token was kept, some afterwards";
}

TEST_F(PermissionCrash, whileATokenIsRenewedLeavesTheOldOrTheNewOne)
{
    std::set<bool> seen;
    killAtEachCallOf(
        "ask d-1", [](PermissionProcess& host) { EXPECT_EQ(host.ask("ask d-1"), mayWrite); },
        [&](const std::string& before, const std::string& after) {
            EXPECT_EQ(before.size(), 36u);
            EXPECT_EQ(after.size(), 36u) << after;
            seen.insert(before == after);
        });
    EXPECT_EQ(seen.size(), 2u);
}

TEST_F(PermissionCrash, whileATokenIsGivenBackLeavesItOrNone)
{
    std::set<bool> seen;
    killAtEachCallOf(
        "release d-1", [](PermissionProcess& host) { EXPECT_EQ(host.ask("ask d-1"), mayWrite); },
        [&](const std::string& before, const std::string& after) {
            EXPECT_EQ(before.size(), 36u);
            EXPECT_TRUE(after.empty() || after == before) << after;
            seen.insert(after.empty());
        });
    EXPECT_EQ(seen.size(), 2u);
}

} // namespace
} // namespace orlo::test
