#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Issues/IIssue.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// Issues on the platform. Lists show the platform's first page, in its order, in place of what the list held. An id may be one that the
/// list's own issues hold.
/// The form without an ErrorCode does the same and drops the reason of a failure.
/// Errors: 0xE8000001 bad input, or a change that the platform refuses, in its words; 0xE8000002 transport or exception; a negative value
/// for an error status.   Threads: any; blocks the caller.
class ORLO_PROJECT_API IIssueManager
{
public:
    using Issues = std::vector<std::shared_ptr<IIssue>>;

    IIssueManager();
    IIssueManager(const IIssueManager&) = delete;
    IIssueManager& operator=(const IIssueManager&) = delete;

    /// The one of this process; the library owns it.
    static IIssueManager* Get();

    /// False, with the list as it was and a clear ErrorCode, for an empty id.   Requests: one.
    virtual bool GetIssueListByDatasetId(const std::string& datasetId, Issues& out, ErrorCode& error) = 0;
    virtual bool GetIssueListByDatasetId(const std::string& datasetId, Issues& out) = 0;
    /// Empties the list first, for an empty id too.   Requests: one, retried.
    virtual bool GetIssueListByTeamId(const std::string& teamId, Issues& out, ErrorCode& error) = 0;
    /// Sends a new issue. It needs a team, a user, a title and a description; its type isn't sent.
    /// Requests: one for each of its datasets, retried, and one. An answer with status 200 that can't be read is a success.
    virtual bool PostIssue(const std::shared_ptr<IIssue>& issue, ErrorCode& error) = 0;
    virtual bool PostIssue(const std::shared_ptr<IIssue>& issue) = 0;
    // Changes of an issue's state, with the reason.   Requests: one each, retried.
    virtual bool SolveIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) = 0;
    virtual bool CloseIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) = 0;
    virtual bool SubmitIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) = 0;
    virtual bool ReopenIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) = 0;
    virtual bool DealIssue(const std::wstring& userId, int issueId, const std::wstring& memo, ErrorCode& error) = 0;

    virtual ~IIssueManager();
};

} // namespace orlo
