#include "CollaborationTest.h"

#include <algorithm>
#include <iterator>

namespace orlo::test {

void expectFile(const FilePtr& file, const std::string& id, std::int32_t version, std::int64_t length)
{
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->GetId(), id);
    EXPECT_EQ(file->GetVersion(), version);
    EXPECT_EQ(file->GetLength(), length);
}

CollaborationFileManager& CollaborationTest::manager() const
{
    return dynamic_cast<CollaborationFileManager&>(*ICollaborationFileManager::Get());
}

Expectation& CollaborationTest::expectAuthority(const std::string& fileName)
{
    return platform.expect("PUT", "/file/new?fileName=" + fileName + "&filepath=/account-1");
}

Expectation& CollaborationTest::expectAuthorityByArkiv(const std::string& fileName)
{
    return platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=" + fileName + "&filepath=/account-1&targetFolderId=f-1");
}

Expectation& CollaborationTest::expectPut(const std::string& bytes)
{
    return platform.expect("PUT", "/store/1?sig=abc").body(bytes);
}

void CollaborationTest::expectUpload()
{
    expectAuthority().reply(200, goodAuthority());
    expectPut().reply(200, "", "");
}

void CollaborationTest::expectUploadByArkiv(const std::string& told)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(200, R"({"code":10000,"data":)" + told + "}");
}

void CollaborationTest::expectDataset()
{
    platform.expect("POST", "/v2/dataSets")
        .header("Content-Type", "application/json")
        .body(R"({"name":"plan.dwg","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":"dwg"})")
        .reply(200, R"({"code":10000,"data":{"id":"d-9","folderId":"f-1","name":"plan.dwg","type":"dwg"}})");
}

Lines CollaborationTest::problems() const
{
    Lines kept;
    const Lines all = log.lines();
    std::copy_if(all.begin(), all.end(), std::back_inserter(kept), [](const std::wstring& line) { return line.front() != L'I'; });
    return kept;
}

void CollaborationTest::expectFailuresOf(const Step& step)
{
    const auto succeeds = [&](ErrorCode& told) {
        error.Clear();
        const bool isThere = step.chain() != nullptr;
        told = error;
        return isThere;
    };
    RequestingOperation operation{step.method, step.target, step.body, L"", succeeds, step.prepare, step.words};
    operation.goodAnswer = R"({"code":10000,"data":{"id":"d-9"}})";
    operation.tellsProgress = true;
    test::expectFailuresOf(operation, platform, log);
}

} // namespace orlo::test
