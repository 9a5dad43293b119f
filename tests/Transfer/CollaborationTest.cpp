#include "CollaborationTest.h"

#include <algorithm>
#include <iterator>

namespace orlo::test {

namespace {

constexpr const wchar_t* caughtWords =
    L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic exception caught: message[";

/// What the retry loop logs around the attempts of a request that fails for good.
Lines repeatedThrice(const Lines& attempt)
{
    Lines all = attempt;
    for (const wchar_t* count : {L"1", L"2", L"3"}) {
        all.push_back(L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[" + std::wstring(count) + L"]");
        all.insert(all.end(), attempt.begin(), attempt.end());
    }
    all.push_back(L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded");
    return all;
}

} // namespace

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

void CollaborationTest::runFailing(const Step& step, unsigned requests, const std::function<void(Expectation&)>& answer)
{
    log.clear();
    error.Clear();
    step.prepare();
    answer(platform.expect(step.method, step.target).body(step.body).times(requests));
    EXPECT_EQ(step.chain(), nullptr);
    platform.verify();
}

void CollaborationTest::fails(const Step& step, unsigned requests, const std::function<void(Expectation&)>& answer, const Lines& attempt)
{
    runFailing(step, requests, answer);
    Lines expected = requests == 1 ? attempt : repeatedThrice(attempt);
    expected.push_back(step.words);
    EXPECT_EQ(problems(), expected);
}

void CollaborationTest::expectFailuresOf(const Step& step)
{
    fails(step, 1, [](Expectation& expected) { expected.reply(404, "没有"); }, {});
    expectHttpError(error, errorStatusValue, L"HttpError", L"没有", 404);
    fails(step, 4, [](Expectation& expected) { expected.reply(503, "busy"); }, {});
    expectHttpError(error, errorStatusValue, L"HttpError", L"busy", 503);
    fails(step, 1, [](Expectation& expected) { expected.reply(201, R"({"code":10000,"data":{"id":"d-9"}})"); }, {});
    expectClear(error);
    fails(
        step, 4, [](Expectation& expected) { expected.reset(); }, Lines{caughtWords + resetBy(platform.url()) + L"]"});
    expectHttpError(error, exceptionValue, L"generic exception", resetBy(platform.url()), 104);
    // The words about the body are those of the JSON library.
    runFailing(step, 1, [](Expectation& expected) { expected.reply(200, "<html>"); });
    const std::wstring words = error.GetErrorMessage();
    EXPECT_NE(words, L"");
    EXPECT_EQ(problems(), (Lines{caughtWords + words + L"]", step.words}));
    expectHttpError(error, exceptionValue, L"generic exception", words, 5555);
}

} // namespace orlo::test
