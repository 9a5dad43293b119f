#pragma once

#include <OrloProjectManager/Export.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

enum class EORLOIssueType : int { Comments = 0, CollisionDetection = 1 };
enum class EORLOIssueStatus : int { Open = 0, Closed = 1, Resolved = 2 };

/// A version of a dataset that an issue concerns.
struct IssuedDataSet
{
    bool isCurrent = false; ///< The dataset on which the issue was raised.
    std::string datasetId;
    std::wstring datasetName;
    int version = 0;
};

/// The values of an issue: a note on a model, raised inside a team. It has no link to the platform: what is set here is sent by
/// `IIssueManager::PostIssue`, and what others change is seen in the next list.
/// Threads: one at a time.
class ORLO_PROJECT_API IIssue
{
public:
    IIssue();
    IIssue(const IIssue&) = delete;
    IIssue& operator=(const IIssue&) = delete;

    /// A new issue: open, with the id 0.   Requests: none.
    [[nodiscard]] static std::shared_ptr<IIssue> Create(const std::wstring& teamId, const std::wstring& userId, const std::wstring& title,
                                                        const std::wstring& description, const std::vector<IssuedDataSet>& datasets,
                                                        EORLOIssueType type);

    /// 0 for one that this process made: posting tells no id, the next list does.
    virtual int GetId() const = 0;
    virtual std::wstring GetTeamId() const = 0;
    virtual void SetTeamId(const std::wstring& teamId) = 0;
    virtual std::wstring GetTeamName() const = 0;
    virtual std::wstring GetUserId() const = 0;
    virtual void SetUserId(const std::wstring& userId) = 0;
    virtual std::wstring GetUserName() const = 0;
    virtual std::wstring GetTitle() const = 0;
    virtual void SetTitle(const std::wstring& title) = 0;
    virtual std::wstring GetDescription() const = 0;
    virtual void SetDescription(const std::wstring& description) = 0;
    virtual std::wstring GetFile() const = 0;
    virtual void SetFile(const std::wstring& file) = 0;
    virtual std::wstring GetCamera() const = 0;
    virtual void SetCamera(const std::wstring& camera) = 0;
    virtual std::wstring GetMarkCoordinate() const = 0;
    virtual void SetMarkCoordinate(const std::wstring& markCoordinate) = 0;
    virtual std::wstring GetCreationTime() const = 0;
    virtual std::wstring GetUpdateTime() const = 0;
    virtual EORLOIssueType GetType() const = 0;
    virtual void SetType(EORLOIssueType type) = 0;
    virtual EORLOIssueStatus GetStatus() const = 0;
    virtual void SetStatus(EORLOIssueStatus status) = 0;
    virtual std::wstring GetElementId() const = 0;
    virtual void SetElementId(const std::wstring& elementId) = 0;
    virtual std::wstring GetElementName() const = 0;
    virtual void SetElementName(const std::wstring& elementName) = 0;
    /// Valid as long as the issue lives and its datasets are not set.
    virtual const std::vector<IssuedDataSet>& GetDatasets() const = 0;
    virtual void SetDatasets(const std::vector<IssuedDataSet>& datasets) = 0;

    virtual ~IIssue();
};

namespace http {

/// A dataset of an issue, as the platform sends it.
struct ORLOHTTPIssueRelationDataset
{
    bool isCurrent = false;
    std::wstring datasetId;
    std::wstring datasetName;
    std::wstring teamId;
    std::wstring teamName;
    std::wstring displayVersion;
    int version = -1;
    bool deleted = false;
};

/// An issue, as the platform sends it.
struct ORLOHTTPIssue
{
    std::wstring camera;
    std::wstring creationTime;
    std::wstring datasetId;
    std::wstring description;
    std::wstring elementId;
    std::wstring elementName;
    std::wstring file;
    int id = -1;
    std::wstring markCoordinate;
    std::wstring memo; ///< the text of its status
    std::wstring teamId;
    std::wstring teamName;
    std::wstring title;
    std::wstring updateTime;
    std::wstring userId;
    std::wstring userName;
    std::wstring type;
    std::vector<ORLOHTTPIssueRelationDataset> issueDatasets;
};

/// The answer to a question for issues.
struct ORLOHTTPQueryIssueAck
{
    int code = -1;
    std::wstring msg;
    std::vector<ORLOHTTPIssue> issues;
};

} // namespace http
} // namespace orlo
