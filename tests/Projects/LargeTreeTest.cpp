#include "PlainPlatform.h"
#include "support/SmallStack.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/Project.h>

#include <gtest/gtest.h>

#include <set>

namespace orlo::test {
namespace {

std::string number(int i)
{
    return "f-" + std::to_string(i);
}

std::string record(int i, int parent, const char* type)
{
    return R"({"id":")" + number(i) + R"(","parentId":")" + (parent < 0 ? "" : number(parent)) + R"(","folderType":")" + type +
           R"(","teamId":"t-1"})";
}

/// Folder 0 is the root; each of the others lies in one that is before it.
template <class ParentOf>
std::string listingOf(int count, ParentOf parentOf)
{
    std::string all = "[" + record(0, -1, "TeamRelated");
    for (int i = 1; i < count; ++i)
        all += "," + record(i, parentOf(i), i + 1 == count ? "Published" : "Process");
    return all + "]";
}

/// How many folders a tree has; every one of them is visited.
std::size_t sizeOf(const std::vector<std::shared_ptr<ICollaborationFolder>>& roots)
{
    std::vector<ICollaborationFolder*> all;
    for (const auto& root : roots)
        all.push_back(root.get());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto children = all[i]->GetSubFolders();
        all.insert(all.end(), children.begin(), children.end());
    }
    return all.size();
}

std::shared_ptr<ICollaborationProject> projectOne()
{
    return std::make_shared<Project>(L"p-1", L"", L"", L"", ProjectStatus::Ongoing, ProjectGridType::TypeOne, 0);
}

TEST(LargeTree, aThousandFoldersTakeOneRequestAndOneForEachFolder)
{
    PlainPlatform platform(listingOf(1000, [](int i) { return (i - 1) / 3; }));
    const HostSetup host(platform.url());
    ErrorCode error;
    EXPECT_EQ(sizeOf(projectOne()->GetFolders(error)), 1000u);
    expectClear(error);

    const std::vector<std::string> sent = platform.requests();
    ASSERT_EQ(sent.size(), 1001u);
    EXPECT_EQ(sent[0], "GET /folder/byproject?projectId=p-1");
    EXPECT_EQ(sent[1], "GET /dataset/byfolder?folderId=f-0");
    EXPECT_EQ(sent[2], "GET /dataset/byfolder?folderId=f-1");
    EXPECT_EQ(sent[3], "GET /dataset/byfolder?folderId=f-4");
    EXPECT_EQ(sent[4], "GET /dataset/byfolder?folderId=f-13");
    EXPECT_EQ(std::set<std::string>(sent.begin(), sent.end()).size(), 1001u);
}

TEST(LargeTree, aChainOfTenThousandFoldersIsBuiltSearchedAndDestroyedOnASmallStack)
{
    PlainPlatform platform(listingOf(10000, [](int i) { return i - 1; }));
    const HostSetup host(platform.url());
    onSmallStack([] {
        auto project = projectOne();
        const ICollaborationFolder* const deepest = project->GetTeamFolder(L"t-1", 2);
        ASSERT_NE(deepest, nullptr);
        EXPECT_EQ(deepest->GetId(), L"f-9999");
        project.reset();
    });
    EXPECT_EQ(platform.requests().size(), 10001u);
}

} // namespace
} // namespace orlo::test
