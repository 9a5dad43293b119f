#include "IssueReaders.h"

#include "../Call/FieldReaders.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

using http::ORLOHTTPIssue;
using http::ORLOHTTPIssueRelationDataset;

namespace {

void readIsCurrent(const web::json::value& json, ORLOHTTPIssueRelationDataset& dataset)
{
    int number = 0;
    dataset.isCurrent = readField(json, number) && number == 1;
}

const RecordTable<ORLOHTTPIssueRelationDataset>& issueDatasetFields()
{
    using Dataset = ORLOHTTPIssueRelationDataset;
    static const auto& table = utils::neverDestroyed(new const RecordTable<Dataset>{
        {L"isCurrent", readIsCurrent},
        {L"datasetId", &Dataset::datasetId},
        {L"datasetName", &Dataset::datasetName},
        {L"teamId", &Dataset::teamId},
        {L"teamName", &Dataset::teamName},
        {L"displayVersion", &Dataset::displayVersion},
        {L"version", &Dataset::version},
        {L"deleted", &Dataset::deleted},
    });
    return table;
}

/// The dataset on which the issue was raised is that of the issue; the last one, if there are several.
void readDatasets(const web::json::value& json, ORLOHTTPIssue& issue)
{
    issueDatasetFields().readList(json, issue.issueDatasets);
    for (const ORLOHTTPIssueRelationDataset& dataset : issue.issueDatasets) {
        if (dataset.isCurrent)
            issue.datasetId = dataset.datasetId;
    }
}

const RecordTable<ORLOHTTPIssue>& issueFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPIssue>{
        {L"camera", &ORLOHTTPIssue::camera},
        {L"creationTime", &ORLOHTTPIssue::creationTime},
        {L"datasetId", &ORLOHTTPIssue::datasetId},
        {L"description", &ORLOHTTPIssue::description},
        {L"elementId", &ORLOHTTPIssue::elementId},
        {L"elementName", &ORLOHTTPIssue::elementName},
        {L"file", &ORLOHTTPIssue::file},
        {L"id", &ORLOHTTPIssue::id},
        {L"markCoordinate", &ORLOHTTPIssue::markCoordinate},
        {L"memo", &ORLOHTTPIssue::memo},
        {L"teamId", &ORLOHTTPIssue::teamId},
        {L"teamName", &ORLOHTTPIssue::teamName},
        {L"title", &ORLOHTTPIssue::title},
        {L"updateTime", &ORLOHTTPIssue::updateTime},
        {L"userId", &ORLOHTTPIssue::userId},
        {L"userName", &ORLOHTTPIssue::userName},
        {L"type", &ORLOHTTPIssue::type},
        {L"issueDatasets", readDatasets},
    });
    return table;
}

} // namespace

EORLOIssueType issueTypeOf(const std::wstring& text)
{
    return text == L"CollisionDetection" || text == L"碰撞检测" ? EORLOIssueType::CollisionDetection : EORLOIssueType::Comments;
}

EORLOIssueStatus issueStatusOf(const std::wstring& text)
{
    if (text == L"Closed" || text == L"已关闭")
        return EORLOIssueStatus::Closed;
    if (text == L"Resolved" || text == L"已解决")
        return EORLOIssueStatus::Resolved;
    return EORLOIssueStatus::Open;
}

std::wstring textOf(EORLOIssueStatus status)
{
    switch (status) {
    case EORLOIssueStatus::Closed:
        return L"Closed";
    case EORLOIssueStatus::Resolved:
        return L"Resolved";
    default:
        return L"Open";
    }
}

bool OrloPayloadProcessor::readIssues(const web::json::value& json, http::ORLOHTTPQueryIssueAck& ack)
{
    if (!json.is_object())
        return false;
    readMember(json, L"code", ack.code);
    readMember(json, L"msg", ack.msg);
    if (const web::json::value* const issues = memberOf(json, L"data"))
        issueFields().readList(*issues, ack.issues);
    return true;
}

} // namespace orlo
