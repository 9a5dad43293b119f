#pragma once

#include <OrloProjectManager/Export.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

enum class CollaborationShareStatus : int { Temporary = 0, Shared = 1, Consumed = 2 };

/// A dataset that was shared, with the numbers of the versions.
struct CollaborationSharedDatasetInfo
{
    std::wstring id;
    std::wstring name;
    std::vector<int> versions;
};

/// What one team has shared with another. The record's own fields never change; what was shared is asked for each time.
/// The form without an ErrorCode does the same and drops the reason of a failure.
class ORLO_PROJECT_API ICollaborationSharedRecord
{
public:
    ICollaborationSharedRecord();
    virtual ~ICollaborationSharedRecord();

    ICollaborationSharedRecord(const ICollaborationSharedRecord&) = delete;
    ICollaborationSharedRecord& operator=(const ICollaborationSharedRecord&) = delete;

    /// Returns: empty on failure.
    /// Errors: 0xE8000002 transport or exception; a negative value for an error status.   Requests: one, retried.   Threads: any; blocks
    /// the caller.
    virtual std::vector<CollaborationSharedDatasetInfo> GetSharedDataSets(ErrorCode& error) = 0;
    virtual std::vector<CollaborationSharedDatasetInfo> GetSharedDataSets() = 0;
    /// Temporary too where the platform's word isn't known.
    virtual CollaborationShareStatus GetStatus() const = 0;
    virtual std::wstring GetName() const = 0;
    /// The team that shared.
    virtual std::wstring GetShareId() const = 0;
};

/// A share record as the platform tells it; the status is its text.
class ORLO_PROJECT_API ShareRecord
{
public:
    ShareRecord(std::wstring id, std::wstring shareId, std::wstring consumedId, std::wstring name, std::wstring status);

    const std::wstring& getId() const { return m_id; }
    /// The team that shared.
    const std::wstring& getShareId() const { return m_shareId; }
    /// The team that received.
    const std::wstring& getConsumedId() const { return m_consumedId; }
    const std::wstring& getName() const { return m_name; }
    const std::wstring& getStatus() const { return m_status; }

private:
    std::wstring m_id;
    std::wstring m_shareId;
    std::wstring m_consumedId;
    std::wstring m_name;
    std::wstring m_status;
};

/// A dataset of a share record, with the numbers of the versions that were shared.
class ORLO_PROJECT_API ShareContents
{
public:
    ShareContents(std::wstring id, std::wstring name, std::vector<int> versions);

    const std::wstring& getId() const { return m_id; }
    const std::wstring& getName() const { return m_name; }
    const std::vector<int>& getVersions() const { return m_versions; }

private:
    std::wstring m_id;
    std::wstring m_name;
    std::vector<int> m_versions;
};

enum class ORLOSubjectType : int { Team = 0, Personal = 1, Role = 2 };
enum class ORLOResourceType : int { Folder = 0, DataSet = 1, Version = 2, Project = 3 };

namespace HttpClient {

// Returns: an empty list on failure.   Errors: 0xE8000002 transport or exception; a negative value for an error status.
// Requests: one each, retried.   Threads: any; each blocks its caller.

/// What a team has received.
ORLO_PROJECT_API std::vector<std::shared_ptr<ShareRecord>> getShareRecordByTeamId(const std::wstring& teamId, ErrorCode& error);
ORLO_PROJECT_API std::vector<std::shared_ptr<ShareContents>> getShareContentById(const std::wstring& recordId, ErrorCode& error);
/// The ids of the resources of one type that a team, a person or a role may see.
ORLO_PROJECT_API std::vector<std::wstring> getResourceId(const std::wstring& visitor, ORLOSubjectType visitorType,
                                                         ORLOResourceType resourceType, ErrorCode& error);

} // namespace HttpClient
} // namespace orlo
