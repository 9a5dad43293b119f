#include "FolderTrees.h"
#include "support/ProjectObjectTest.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

// What a platform out of order may say of its folders. Each record joins a tree at most once, and every call ends.
class BrokenFolderAnswersTest : public ProjectObjectTest
{
protected:
    void answer(const std::string& folders, const std::vector<std::string>& inTree)
    {
        server.expect("GET", "/folder/byproject?projectId=p-1").reply(200, folders);
        expectDatasets(inTree);
    }
    void answerBelowRoot(const std::string& root, const std::string& folders, const std::vector<std::string>& inTree)
    {
        server.expect("GET", "/projects/p-1/rootfolder").reply(200, R"({"data":)" + root + "}");
        server.expect("GET", "/folders/root/subfolders?recursive=true").reply(200, folders);
        expectDatasets(inTree);
    }
    std::wstring belowRoot()
    {
        Folders out;
        EXPECT_TRUE(project->GetProjectFolders(out, error));
        return drawn(out);
    }

private:
    void expectDatasets(const std::vector<std::string>& folders)
    {
        for (const std::string& folder : folders)
            server.expect("GET", "/dataset/byfolder?folderId=" + folder).reply(200, "[]");
    }
};

TEST_F(BrokenFolderAnswersTest, aRecordWhoseParentIsUnknownNeverJoinsTheTree)
{
    answer(R"([{"id":"r"},{"id":"a","parentId":"nobody"},{"id":"b","parentId":"a"},{"id":"c","parentId":"r"}])", {"r", "c"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r{c}");
    expectClear(error);
}

TEST_F(BrokenFolderAnswersTest, aFolderThatIsItsOwnParentNeverJoinsTheTree)
{
    answer(R"([{"id":"r"},{"id":"s","parentId":"s"}])", {"r"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r");
}

TEST_F(BrokenFolderAnswersTest, aCircleOfFoldersNeverJoinsTheTree)
{
    answer(R"([{"id":"a","parentId":"c"},{"id":"b","parentId":"a"},{"id":"c","parentId":"b"},{"id":"r"}])", {"r"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r");
}

TEST_F(BrokenFolderAnswersTest, aCircleThatHangsBelowARootEndsWhereItCloses)
{
    // "a" is there twice, once below the root and once below its own grandchild.
    answer(R"([{"id":"r"},{"id":"a","parentId":"r"},{"id":"b","parentId":"a"},{"id":"a","parentId":"b"}])", {"r", "a", "b", "a"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r{a{b{a}}}");
    EXPECT_EQ(server.requestCount(), 5u);
}

TEST_F(BrokenFolderAnswersTest, aRootThatReturnsBelowItselfEndsThere)
{
    answer(R"([{"id":"r"},{"id":"r","parentId":"r"},{"id":"a","parentId":"r"}])", {"r", "r", "a"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r{r a}");
}

TEST_F(BrokenFolderAnswersTest, ofRootsWithOneIdTheFirstGetsTheChildren)
{
    answer(R"([{"id":"r"},{"id":"r"},{"id":"a","parentId":"r"}])", {"r", "a", "r"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r{a} r");
}

TEST_F(BrokenFolderAnswersTest, ofChildrenWithOneIdTheFirstGetsTheGrandchildren)
{
    answer(R"([{"id":"r"},{"id":"a","parentId":"r"},{"id":"a","parentId":"r"},{"id":"x","parentId":"a"},{"id":"y","parentId":"a"}])",
           {"r", "a", "x", "y", "a"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r{a{x y} a}");
}

TEST_F(BrokenFolderAnswersTest, aRootWithoutAnIdDoesNotHoldTheOtherRoots)
{
    answer(R"([{"id":"","parentId":""},{"id":"a"},{"name":"no id"}])", {"", "a", ""});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"- a -");
}

TEST_F(BrokenFolderAnswersTest, elementsThatAreNoRecordsAreRootsWithoutAnything)
{
    answer(R"([7,null,"a",[{"id":"b"}],{"id":"c"}])", {"", "", "", "", "c"});
    EXPECT_EQ(drawn(project->GetFolders(error)), L"- - - - c");
}

TEST_F(BrokenFolderAnswersTest, theProjectsRootMayReturnBelowItselfOnceOnly)
{
    answerBelowRoot(R"({"id":"root"})", R"([{"id":"a","parentId":"root"},{"id":"root","parentId":"a"},{"id":"b","parentId":"root"}])",
                    {"root", "a", "root", "b"});
    EXPECT_EQ(belowRoot(), L"root{a{root} b}");
}

TEST_F(BrokenFolderAnswersTest, theProjectsRootMayBeItsOwnParent)
{
    answerBelowRoot(R"({"id":"root","parentId":"root"})", R"([{"id":"root","parentId":"root"},{"id":"a","parentId":"root"}])",
                    {"root", "root", "a"});
    EXPECT_EQ(belowRoot(), L"root{root a}");
}

TEST_F(BrokenFolderAnswersTest, belowTheProjectsRootUnknownParentsAndCirclesAreLeftOut)
{
    answerBelowRoot(R"({"id":"root"})",
                    R"([{"id":"a","parentId":"b"},{"id":"b","parentId":"a"},{"id":"c","parentId":"nobody"},{"id":"d","parentId":""},)"
                    R"({"id":"e","parentId":"root"}])",
                    {"root", "e"});
    EXPECT_EQ(belowRoot(), L"root{e}");
}

TEST_F(BrokenFolderAnswersTest, aFolderWithoutAnIdHoldsTheRecordsWithoutAParentOnceOnly)
{
    answerBelowRoot(R"({"id":"root"})",
                    R"([{"id":"","parentId":"root"},{"id":"","parentId":"root"},{"id":"x","parentId":""},{"id":"y","parentId":"x"}])",
                    {"root", "", "x", "y", ""});
    EXPECT_EQ(belowRoot(), L"root{-{x{y}} -}");
}

} // namespace
} // namespace orlo::test
