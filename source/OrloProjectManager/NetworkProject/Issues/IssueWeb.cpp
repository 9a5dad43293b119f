#include "IssueWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "IssueReaders.h"

#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* issuesOfDatasetsPath = L"/issue/detail/bydatasetids";
constexpr const wchar_t* issuesOfTeamPath = L"/issue/detail/{teamId}/byteamid";
constexpr const wchar_t* newIssuePath = L"/issue";
constexpr const wchar_t* solvePath = L"/issue/solve";
constexpr const wchar_t* closePath = L"/issue/close";
constexpr const wchar_t* submitPath = L"/issue/submit";
constexpr const wchar_t* reopenPath = L"/issue/reopen";
constexpr const wchar_t* dealPath = L"/issue/deal";

constexpr int largestPage = 100;
constexpr int succeeded = 0;

/// Both lists, which fail in the same words.
bool readList(ErrorCode& error, web::json::value& out, WebCall call)
{
    WebAnswer answer = call.failureWords(L"OrloWebService::GetIssuesListByDataSetId - code:").send(error);
    if (!answer.ok())
        return false;
    out = answer.body();
    int code = -1;
    readMember(out, L"code", code);
    return code == succeeded;
}

bool changeState(ErrorCode& error, const wchar_t* path, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    // Intended: the words name no issue, and the error one change for all five.
    WebCall call(L"OrloWebService::CreateMessage", service::project, methods::POST, path);
    call.body(JsonBody().add(L"userId", userId).add(L"issueId", issueId).add(L"memo", memo).done());
    WebAnswer answer = call.send(error);
    int code = -1;
    if (!answer.ok() || !readMember(answer.body(), L"code", code))
        return false;
    if (code == succeeded)
        return true;
    std::wstring reason;
    readMember(answer.body(), L"msg", reason);
    error.Assign(error::badInput, makeGenericError(L"SolveIssue", reason));
    return false;
}

web::json::value bodyOf(const IIssue& issue, const std::vector<int>& versionIds)
{
    std::vector<web::json::value> datasets;
    for (std::size_t i = 0; i < versionIds.size(); ++i)
        datasets.push_back(JsonBody()
                               .add(L"isCurrent", web::json::value::boolean(issue.GetDatasets().at(i).isCurrent))
                               .add(L"versionId", versionIds[i])
                               .done());
    return JsonBody()
        .add(L"teamId", issue.GetTeamId())
        .add(L"userId", issue.GetUserId())
        .add(L"title", issue.GetTitle())
        .add(L"description", issue.GetDescription())
        .add(L"elementId", issue.GetElementId())
        .add(L"elementName", issue.GetElementName())
        .add(L"file", issue.GetFile())
        .add(L"memo", textOf(issue.GetStatus()))
        .add(L"markCoordinate", issue.GetMarkCoordinate())
        .add(L"camera", issue.GetCamera())
        .add(L"issueDatasets", web::json::value::array(std::move(datasets)))
        .done();
}

} // namespace

bool GetIssuesListByDataSetId(ErrorCode& error, web::json::value& out, const std::string& datasetId, int page)
{
    if (datasetId.empty() || page < 0 || page > largestPage)
        return refuse(error, error::badInput, L"dsId is empty or page < 0 or page > 100");
    WebCall call(L"OrloWebService::GetIssuesListByDataSetId", service::project, methods::POST, issuesOfDatasetsPath);
    call.query(L"page", std::to_wstring(page)).body(web::json::value::array({jsonText(datasetId)}));
    return readList(error, out, call);
}

bool GetIssuesListByTeamId(ErrorCode& error, web::json::value& out, const std::string& teamId, int page, bool skipCloudify)
{
    if (teamId.empty() || page < 0) {
        error.Assign(error::badInput, makeGenericError(L"GetIssuesListByTeamId", L"参数错误"));
        return false;
    }
    WebCall call(L"OrloWebService::GetIssuesListByTeamId", service::project, methods::GET, issuesOfTeamPath);
    call.place(L"{teamId}", teamId).query(L"page", std::to_wstring(page)).query(L"skipCloudify", skipCloudify ? L"1" : L"0");
    return readList(error, out, call);
}

bool PostIssue(ErrorCode& error, const IIssue& issue, const std::vector<int>& versionIds)
{
    WebCall call(L"OrloWebService::PostIssue", service::project, methods::PUT, newIssuePath);
    WebAnswer answer = call.body(bodyOf(issue, versionIds)).send(error);
    if (!answer.ok())
        return false;
    // Intended: an answer that can't be read is a success, here alone.
    try {
        http::ORLOHTTPGenericResponse response;
        return !OrloPayloadProcessor::ParseORLOHTTPGenericResponse(answer.body(), response) || response.code == succeeded;
    }
    catch (const std::exception&) {
        return true;
    }
}

bool SolveIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    return changeState(error, solvePath, userId, issueId, memo);
}

bool CloseIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    return changeState(error, closePath, userId, issueId, memo);
}

bool SubmitIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    return changeState(error, submitPath, userId, issueId, memo);
}

bool ReopenIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    return changeState(error, reopenPath, userId, issueId, memo);
}

bool DealIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo)
{
    return changeState(error, dealPath, userId, issueId, memo);
}

} // namespace orlo::OrloWebService
