#include "Issue.h"

#include "../NetworkProject/Issues/IssueReaders.h"

#include <BaseCommon/Text.h>

namespace orlo {

IIssue::IIssue() = default;
IIssue::~IIssue() = default;

std::shared_ptr<IIssue> IIssue::Create(const std::wstring& teamId, const std::wstring& userId, const std::wstring& title,
                                       const std::wstring& description, const std::vector<IssuedDataSet>& datasets, EORLOIssueType type)
{
    auto issue = std::make_shared<Issue>();
    issue->SetTeamId(teamId);
    issue->SetUserId(userId);
    issue->SetTitle(title);
    issue->SetDescription(description);
    issue->SetDatasets(datasets);
    issue->SetType(type);
    return issue;
}

Issue::Issue(http::ORLOHTTPIssue record)
    : id(record.id),
      teamId(std::move(record.teamId)),
      teamName(std::move(record.teamName)),
      userId(std::move(record.userId)),
      userName(std::move(record.userName)),
      title(std::move(record.title)),
      description(std::move(record.description)),
      file(std::move(record.file)),
      camera(std::move(record.camera)),
      markCoordinate(std::move(record.markCoordinate)),
      creationTime(std::move(record.creationTime)),
      updateTime(std::move(record.updateTime)),
      type(issueTypeOf(record.type)),
      status(issueStatusOf(record.memo)),
      elementId(std::move(record.elementId)),
      elementName(std::move(record.elementName)),
      datasetId(std::move(record.datasetId))
{
    datasets.reserve(record.issueDatasets.size());
    for (http::ORLOHTTPIssueRelationDataset& dataset : record.issueDatasets)
        datasets.push_back({dataset.isCurrent, utils::toString(dataset.datasetId), std::move(dataset.datasetName), dataset.version});
}

} // namespace orlo
