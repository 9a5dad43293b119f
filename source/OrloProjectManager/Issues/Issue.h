#pragma once

#include <OrloProjectManager/Issues/IIssue.h>

#include <string>
#include <utility>
#include <vector>

namespace orlo {

class Issue final : public IIssue
{
public:
    Issue() = default;
    /// As the platform sends it.
    explicit Issue(http::ORLOHTTPIssue record);

    int GetId() const override { return id; }
    std::wstring GetTeamId() const override { return teamId; }
    void SetTeamId(const std::wstring& value) override { teamId = value; }
    std::wstring GetTeamName() const override { return teamName; }
    std::wstring GetUserId() const override { return userId; }
    void SetUserId(const std::wstring& value) override { userId = value; }
    std::wstring GetUserName() const override { return userName; }
    std::wstring GetTitle() const override { return title; }
    void SetTitle(const std::wstring& value) override { title = value; }
    std::wstring GetDescription() const override { return description; }
    void SetDescription(const std::wstring& value) override { description = value; }
    std::wstring GetFile() const override { return file; }
    void SetFile(const std::wstring& value) override { file = value; }
    std::wstring GetCamera() const override { return camera; }
    void SetCamera(const std::wstring& value) override { camera = value; }
    std::wstring GetMarkCoordinate() const override { return markCoordinate; }
    void SetMarkCoordinate(const std::wstring& value) override { markCoordinate = value; }
    std::wstring GetCreationTime() const override { return creationTime; }
    std::wstring GetUpdateTime() const override { return updateTime; }
    EORLOIssueType GetType() const override { return type; }
    void SetType(EORLOIssueType value) override { type = value; }
    EORLOIssueStatus GetStatus() const override { return status; }
    void SetStatus(EORLOIssueStatus value) override { status = value; }
    std::wstring GetElementId() const override { return elementId; }
    void SetElementId(const std::wstring& value) override { elementId = value; }
    std::wstring GetElementName() const override { return elementName; }
    void SetElementName(const std::wstring& value) override { elementName = value; }
    const std::vector<IssuedDataSet>& GetDatasets() const override { return datasets; }
    void SetDatasets(const std::vector<IssuedDataSet>& value) override { datasets = value; }

private:
    int id = 0;
    std::wstring teamId;
    std::wstring teamName;
    std::wstring userId;
    std::wstring userName;
    std::wstring title;
    std::wstring description;
    std::wstring file;
    std::wstring camera;
    std::wstring markCoordinate;
    std::wstring creationTime;
    std::wstring updateTime;
    EORLOIssueType type = EORLOIssueType::Comments;
    EORLOIssueStatus status = EORLOIssueStatus::Open;
    std::wstring elementId;
    std::wstring elementName;
    std::vector<IssuedDataSet> datasets;
    std::wstring datasetId; ///< that on which it was raised
};

} // namespace orlo
