#include "FolderTrees.h"
#include "support/SmallStack.h"

#include <OrloProjectManager/Projects/Folder.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>

#include <gtest/gtest.h>

#include <thread>

namespace orlo::test {
namespace {

int typeOf(const std::wstring& text)
{
    return Folder(L"f-1", L"n", text, L"t-1").GetFolderType();
}

std::shared_ptr<Folder> folderOf(const std::wstring& id, const std::wstring& type = {})
{
    return std::make_shared<Folder>(id, L"", type, L"");
}

/// A chain of folders, each in the one before it; the last one has the id "last".
struct Chain
{
    explicit Chain(int length) : first(folderOf(L"first"))
    {
        std::shared_ptr<Folder> last = first;
        for (int i = 1; i < length; ++i) {
            const auto next = folderOf(i + 1 == length ? L"last" : L"between");
            last->addChild(next);
            last = next;
        }
    }

    std::shared_ptr<Folder> first;
};

TEST(FolderTest, hasTheFieldsThatItWasMadeWith)
{
    const Folder folder(L"f-1", L"模型", L"Published", L"t-1");
    EXPECT_EQ(folder.GetId(), L"f-1");
    EXPECT_EQ(folder.GetName(), L"模型");
    EXPECT_EQ(folder.GetFolderType(), 2);
    EXPECT_TRUE(folder.GetSubFolders().empty());
    EXPECT_TRUE(folder.GetDatasets().empty());
}

TEST(FolderTest, everyTypeHasItsNumber)
{
    EXPECT_EQ(typeOf(L"Process"), 1);
    EXPECT_EQ(typeOf(L"Published"), 2);
    EXPECT_EQ(typeOf(L"ProjectShare"), 3);
    EXPECT_EQ(typeOf(L"OtherFiles"), 4);
    EXPECT_EQ(typeOf(L"TeamRelated"), 5);
}

TEST(FolderTest, anUnknownTypeIsZeroTheFirstTimeAndTheSecond)
{
    for (const wchar_t* text : {L"Archive", L"", L"process", L"PUBLISHED", L"Process ", L"归档"}) {
        EXPECT_EQ(typeOf(text), 0) << text;
        EXPECT_EQ(typeOf(text), 0) << text;
    }
    EXPECT_EQ(typeOf(L"Process"), 1);
}

TEST(FolderTest, typesAreLookedUpFromSeveralThreadsAtOnce)
{
    int sums[4] = {};
    std::vector<std::thread> threads;
    for (int& sum : sums)
        threads.emplace_back([&sum] {
            for (int i = 0; i < 200; ++i)
                sum += typeOf(L"unknown " + std::to_wstring(i)) + typeOf(L"TeamRelated");
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const int sum : sums)
        EXPECT_EQ(sum, 1000);
}

TEST(FolderTest, theTeamIsMadeOnceAndCarriesTheId)
{
    const Folder folder(L"f-1", L"n", L"Process", L"t-1");
    ASSERT_NE(folder.GetTeam(), nullptr);
    EXPECT_EQ(folder.GetTeam()->GetTeamId(), L"t-1");
    EXPECT_EQ(folder.GetTeam(), folder.GetTeam());
}

TEST(FolderTest, aFolderOfNoTeamHasATeamWithoutAnId)
{
    ASSERT_NE(folderOf(L"f-1")->GetTeam(), nullptr);
    EXPECT_EQ(folderOf(L"f-1")->GetTeam()->GetTeamId(), L"");
}

TEST(FolderTest, bothFormsGiveTheChildrenInOrder)
{
    Folder folder(L"f-1", L"n", L"Process", L"t-1");
    const auto first = folderOf(L"a");
    const auto second = folderOf(L"b");
    folder.addChild(first);
    folder.addChild(second);
    ICollaborationFolder& face = folder;
    const ICollaborationFolder& constantFace = folder;
    EXPECT_EQ(face.GetSubFolders(), (std::vector<ICollaborationFolder*>{first.get(), second.get()}));
    EXPECT_EQ(constantFace.GetSubFolders(), (std::vector<ICollaborationFolder*>{first.get(), second.get()}));
}

TEST(FolderTest, theListsThatItHandsOutAreCopies)
{
    Folder folder(L"f-1", L"n", L"Process", L"t-1");
    folder.addChild(folderOf(L"a"));
    folder.addDatasets({std::make_shared<DatasetInfo>()});
    folder.GetSubFolders().clear();
    auto datasets = folder.GetDatasets();
    datasets.clear();
    EXPECT_EQ(folder.GetSubFolders().size(), 1u);
    EXPECT_EQ(folder.GetDatasets().size(), 1u);
    EXPECT_EQ(folder.GetDatasets()[0], folder.GetDatasets()[0]) << "the records are shared";
}

TEST(FolderTest, aChildThatTheHostHoldsOutlivesItsParentWithAllThatIsBelowIt)
{
    auto top = folderOf(L"top");
    auto held = folderOf(L"held");
    auto below = folderOf(L"below");
    const std::weak_ptr<Folder> deepest = below;
    below->addChild(folderOf(L"deepest"));
    held->addChild(std::move(below));
    top->addChild(held);
    top.reset();
    EXPECT_EQ(drawn(Folders{held}), L"held{below{deepest}}");
    held.reset();
    EXPECT_TRUE(deepest.expired());
}

TEST(FolderTest, aTreeGoesWithItsLastOwner)
{
    auto top = folderOf(L"top");
    const auto left = folderOf(L"left");
    left->addChild(folderOf(L"a"));
    std::vector<std::weak_ptr<ICollaborationFolder>> all;
    for (const wchar_t* id : {L"a", L"b", L"c"}) {
        const auto child = folderOf(id);
        child->addChild(folderOf(L"leaf"));
        top->addChild(child);
        all.emplace_back(child);
    }
    top->addChild(left);
    top.reset();
    for (const auto& child : all)
        EXPECT_TRUE(child.expired());
    EXPECT_EQ(drawn(Folders{left}), L"left{a}");
}

TEST(FolderTest, anAbsentChildDoesNoHarm)
{
    auto top = folderOf(L"top");
    top->addChild(nullptr);
    top->addChild(folderOf(L"a"));
    EXPECT_EQ(drawn(Folders{top}), L"top{null a}");
    const auto isA = [](const ICollaborationFolder& folder) { return folder.GetId() == L"a"; };
    EXPECT_EQ(findFolder({nullptr, top.get()}, isA), top->GetSubFolders()[1]);
}

TEST(FolderTest, aChainOfAnyLengthIsSearchedAndDestroyedOnASmallStack)
{
    onSmallStack([] {
        Chain chain(200000);
        const auto isLast = [](const ICollaborationFolder& folder) { return folder.GetId() == L"last"; };
        const ICollaborationFolder* const found = findFolder({chain.first.get()}, isLast);
        ASSERT_NE(found, nullptr);
        EXPECT_TRUE(found->GetSubFolders().empty());
    });
}

TEST(FolderTest, theRestOfAChainThatTheHostHoldsInTheMiddleIsDestroyedOnASmallStackToo)
{
    onSmallStack([] {
        Chain upper(50000);
        const auto isLast = [](const ICollaborationFolder& folder) { return folder.GetId() == L"last"; };
        auto middle = Chain(50000).first;
        static_cast<Folder*>(findFolder({upper.first.get()}, isLast))->addChild(middle);
        upper.first.reset();
        EXPECT_EQ(middle->GetSubFolders().size(), 1u);
        const std::weak_ptr<Folder> watched = middle;
        middle.reset();
        EXPECT_TRUE(watched.expired());
    });
}

TEST(FolderTest, aSearchVisitsANodeBeforeItsChildrenAndStopsAtTheFirstThatFits)
{
    const auto a = folderOf(L"a");
    const auto b = folderOf(L"b");
    const auto c = folderOf(L"c");
    b->addChild(folderOf(L"b1"));
    a->addChild(b);
    a->addChild(c);
    const auto e = folderOf(L"e");
    std::wstring visited;
    const auto visit = [&](const ICollaborationFolder& folder) {
        visited += folder.GetId() + L" ";
        return folder.GetId() == L"e";
    };
    EXPECT_EQ(findFolder({a.get(), e.get(), folderOf(L"f").get()}, visit), e.get());
    EXPECT_EQ(visited, L"a b b1 c e ");
    EXPECT_EQ(findFolder({}, visit), nullptr);
}

} // namespace
} // namespace orlo::test
