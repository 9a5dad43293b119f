#include "IssueManager.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Call/Refusal.h"
#include "../NetworkProject/Issues/IssueReaders.h"
#include "../NetworkProject/Issues/IssueWeb.h"
#include "../NetworkProject/Projects/VersionWeb.h"
#include "Issue.h"

#include <BaseCommon/NeverDestroyed.h>

#include <stdexcept>
#include <utility>

namespace orlo {

namespace {

bool toIssues(const web::json::value& json, IIssueManager::Issues& issues)
{
    http::ORLOHTTPQueryIssueAck ack;
    if (!OrloPayloadProcessor::readIssues(json, ack))
        return false;
    issues.reserve(ack.issues.size());
    for (http::ORLOHTTPIssue& record : ack.issues)
        issues.push_back(std::make_shared<Issue>(std::move(record)));
    return true;
}

using Change = bool (*)(ErrorCode&, const std::wstring&, int, const std::wstring&);

bool change(const CallSite& site, Change webFunction, const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return CallFrame(site).run(error, [&] { return retried(webFunction, error, userId, issueId, memo); });
}

} // namespace

IIssueManager::IIssueManager() = default;
IIssueManager::~IIssueManager() = default;

IIssueManager* IIssueManager::Get()
{
    static auto& manager = utils::neverDestroyed(new IssueManager);
    return &manager;
}

bool IssueManager::GetIssueListByDatasetId(const std::string& datasetId, Issues& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IssueManager::GetIssueListByDatasetId")).runDirect(error, [&] {
        if (datasetId.empty())
            return false;
        const Issues before = std::exchange(out, {}); // one of these may hold the id
        web::json::value json;
        return OrloWebService::GetIssuesListByDataSetId(error, json, datasetId, 1) && toIssues(json, out);
    });
}

bool IssueManager::GetIssueListByTeamId(const std::string& teamId, Issues& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IssueManager::GetIssueListByTeamId")).run(error, [&] {
        const Issues before = std::exchange(out, {}); // one of these may hold the id
        const auto json = fetched(&OrloWebService::GetIssuesListByTeamId, error, teamId, 1, false);
        return json && toIssues(*json, out);
    });
}

bool IssueManager::PostIssue(const std::shared_ptr<IIssue>& issue, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IssueManager::PostIssue")).runDirect(error, [&] {
        if (!issue)
            throw std::invalid_argument("there is no issue");
        if (issue->GetTeamId().empty() || issue->GetUserId().empty() || issue->GetTitle().empty() || issue->GetDescription().empty())
            return refuse(error, error::badInput, L"PostIssue：参数输入有误!");
        std::vector<int> versionIds;
        for (const IssuedDataSet& dataset : issue->GetDatasets()) {
            const auto version =
                fetched(&OrloWebService::GetDatasetVersionByMvd, error, dataset.datasetId, dataset.version, std::wstring(L"base"));
            if (!version)
                return false;
            versionIds.push_back(version->id);
        }
        return OrloWebService::PostIssue(error, *issue, versionIds);
    });
}

bool IssueManager::SolveIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return change(ORLO_HERE("orlo::IssueManager::SolveIssue"), &OrloWebService::SolveIssue, userId, issueId, memo, error);
}

bool IssueManager::CloseIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return change(ORLO_HERE("orlo::IssueManager::CloseIssue"), &OrloWebService::CloseIssue, userId, issueId, memo, error);
}

bool IssueManager::SubmitIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return change(ORLO_HERE("orlo::IssueManager::SubmitIssue"), &OrloWebService::SubmitIssue, userId, issueId, memo, error);
}

bool IssueManager::ReopenIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return change(ORLO_HERE("orlo::IssueManager::ReopenIssue"), &OrloWebService::ReopenIssue, userId, issueId, memo, error);
}

bool IssueManager::DealIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error)
{
    return change(ORLO_HERE("orlo::IssueManager::DealIssue"), &OrloWebService::DealIssue, userId, issueId, memo, error);
}

} // namespace orlo
