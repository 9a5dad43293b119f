#pragma once

#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace http {

/// A share record, as the platform sends it.
struct ORLOHTTPPayloadShareRecord
{
    std::wstring id;
    std::wstring shareId;
    std::wstring consumedId;
    std::wstring name;
    std::wstring status;
};

/// What was shared of one dataset.
struct ORLOHTTPPayloadShareContents
{
    std::wstring id;
    std::wstring name;
    std::vector<int> versions;
};

} // namespace http

// True for every answer with status 200, whatever its code.
namespace OrloWebService {

/// The records of what a team has received.
bool getShareRecordByTeamId(ErrorCode& error, std::vector<http::ORLOHTTPPayloadShareRecord>& out, const std::wstring& teamId);
bool getShareContentById(ErrorCode& error, std::vector<http::ORLOHTTPPayloadShareContents>& out, const std::wstring& recordId);
/// The ids of the resources of one type that a visitor may see, in place of what the list held.
bool getResourceId(ErrorCode& error, std::vector<std::wstring>& out, const std::wstring& visitor, ORLOSubjectType visitorType,
                   ORLOResourceType resourceType);

} // namespace OrloWebService
} // namespace orlo
