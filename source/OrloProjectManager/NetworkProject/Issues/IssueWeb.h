#pragma once

#include <OrloProjectManager/Issues/IIssue.h>

#include <cpprest/json.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

// The issue service marks success with the code 0.
namespace OrloWebService {

/// The whole body, with or without success. page: 100 at the most.
bool GetIssuesListByDataSetId(ErrorCode& error, web::json::value& out, const std::string& datasetId, int page);
bool GetIssuesListByTeamId(ErrorCode& error, web::json::value& out, const std::string& teamId, int page, bool skipCloudify);
/// versionIds: those of the issue's datasets, in order.
bool PostIssue(ErrorCode& error, const IIssue& issue, const std::vector<int>& versionIds);
bool SolveIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo);
bool CloseIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo);
bool SubmitIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo);
bool ReopenIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo);
bool DealIssue(ErrorCode& error, const std::wstring& userId, int issueId, const std::wstring& memo);

} // namespace OrloWebService
} // namespace orlo
