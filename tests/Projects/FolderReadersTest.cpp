#include <OrloProjectManager/NetworkProject/Projects/FolderReaders.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using http::ORLOHTTPPayloadFolder;

ORLOHTTPPayloadFolder folderOf(const char* json)
{
    ORLOHTTPPayloadFolder record;
    OrloPayloadProcessor::folderFields().read(web::json::value::parse(json), record);
    return record;
}

TEST(FolderReaders, readEveryFieldOfAFolder)
{
    const ORLOHTTPPayloadFolder record =
        folderOf(R"({"teamId":"t","projectId":"p","parentId":"q","folderType":"Process","name":"模型","id":"f","extra":{"id":"x"}})");
    EXPECT_EQ(record.id, L"f");
    EXPECT_EQ(record.name, L"模型");
    EXPECT_EQ(record.folderType, L"Process");
    EXPECT_EQ(record.parentId, L"q");
    EXPECT_EQ(record.projectId, L"p");
    EXPECT_EQ(record.teamId, L"t");
}

TEST(FolderReaders, aFieldOfAnotherTypeKeepsItsDefault)
{
    const ORLOHTTPPayloadFolder record =
        folderOf(R"({"id":1,"name":null,"folderType":["Process"],"parentId":{},"projectId":true,"teamId":1.5})");
    EXPECT_EQ(record.id + record.name + record.folderType + record.parentId + record.projectId + record.teamId, L"");
    EXPECT_EQ(folderOf("[]").id, L"");
    EXPECT_EQ(folderOf("null").id, L"");
}

} // namespace
} // namespace orlo::test
