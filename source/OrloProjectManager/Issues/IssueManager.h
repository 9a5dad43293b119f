#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Issues/IIssueManager.h>

namespace orlo {

class IssueManager final : public IIssueManager
{
public:
    bool GetIssueListByDatasetId(const std::string& datasetId, Issues& out, ErrorCode& error) override;
    bool GetIssueListByDatasetId(const std::string& datasetId, Issues& out) override
    {
        return GetIssueListByDatasetId(datasetId, out, DroppedError());
    }
    bool GetIssueListByTeamId(const std::string& teamId, Issues& out, ErrorCode& error) override;
    bool PostIssue(const std::shared_ptr<IIssue>& issue, ErrorCode& error) override;
    bool PostIssue(const std::shared_ptr<IIssue>& issue) override { return PostIssue(issue, DroppedError()); }
    bool SolveIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) override;
    bool CloseIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) override;
    bool SubmitIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) override;
    bool ReopenIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) override;
    bool DealIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) override;
};

} // namespace orlo
