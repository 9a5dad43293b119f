#include "ShareWeb.h"

#include "../Call/TextTable.h"
#include "../Call/WebCall.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

using http::ORLOHTTPPayloadShareContents;
using http::ORLOHTTPPayloadShareRecord;

namespace {

constexpr const wchar_t* shareRecordsPath = L"/share/records";
constexpr const wchar_t* shareContentsPath = L"/share/contents";
constexpr const wchar_t* resourcesOfVisitorPath = L"/permission/query";

const RecordTable<ORLOHTTPPayloadShareRecord>& shareRecordFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadShareRecord>{
        {L"id", &ORLOHTTPPayloadShareRecord::id},
        {L"shareId", &ORLOHTTPPayloadShareRecord::shareId},
        {L"consumedId", &ORLOHTTPPayloadShareRecord::consumedId},
        {L"name", &ORLOHTTPPayloadShareRecord::name},
        {L"status", &ORLOHTTPPayloadShareRecord::status},
    });
    return table;
}

void readSharedDataset(const web::json::value& dataset, ORLOHTTPPayloadShareContents& contents)
{
    readMember(dataset, L"id", contents.id);
    readMember(dataset, L"name", contents.name);
}

void readSharedVersions(const web::json::value& versions, ORLOHTTPPayloadShareContents& contents)
{
    if (!versions.is_array())
        return;
    for (const web::json::value& shared : versions.as_array()) {
        if (int version = 0; readMember(shared, L"version", version))
            contents.versions.push_back(version);
    }
}

const RecordTable<ORLOHTTPPayloadShareContents>& shareContentsFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadShareContents>{
        {L"dataSet", readSharedDataset},
        {L"versions", readSharedVersions},
    });
    return table;
}

std::wstring textOf(ORLOSubjectType type)
{
    static const auto& table = utils::neverDestroyed(new const TextTable<ORLOSubjectType>(
        {{ORLOSubjectType::Team, L"Team"}, {ORLOSubjectType::Personal, L"Personal"}, {ORLOSubjectType::Role, L"Role"}},
        ORLOSubjectType::Team));
    return table.textOf(type);
}

std::wstring textOf(ORLOResourceType type)
{
    static const auto& table = utils::neverDestroyed(new const TextTable<ORLOResourceType>({{ORLOResourceType::Folder, L"Folder"},
                                                                                            {ORLOResourceType::DataSet, L"DataSet"},
                                                                                            {ORLOResourceType::Version, L"Version"},
                                                                                            {ORLOResourceType::Project, L"Project"}},
                                                                                           ORLOResourceType::Folder));
    return table.textOf(type);
}

WebAnswer sendAboutShares(ErrorCode& error, const std::wstring& name, const wchar_t* path, web::json::value body)
{
    WebCall call(name, service::project, methods::POST, path);
    return call.untaggedFailureWords(name + L" - code:").body(std::move(body)).send(error);
}

} // namespace

bool OrloWebService::getShareRecordByTeamId(ErrorCode& error, std::vector<ORLOHTTPPayloadShareRecord>& out, const std::wstring& teamId)
{
    // A team is asked for as the one that received.
    WebAnswer answer =
        sendAboutShares(error, L"OrloWebService::getShareRecordByTeamId", shareRecordsPath, JsonBody().add(L"consumedId", teamId).done());
    if (!answer.ok())
        return false;
    shareRecordFields().readList(answer.data(), out);
    return true;
}

bool OrloWebService::getShareContentById(ErrorCode& error, std::vector<ORLOHTTPPayloadShareContents>& out, const std::wstring& recordId)
{
    WebAnswer answer =
        sendAboutShares(error, L"OrloWebService::getShareContentById", shareContentsPath, web::json::value::array({jsonText(recordId)}));
    if (!answer.ok())
        return false;
    shareContentsFields().readList(answer.data(), out);
    return true;
}

bool OrloWebService::getResourceId(ErrorCode& error, std::vector<std::wstring>& out, const std::wstring& visitor,
                                   ORLOSubjectType visitorType, ORLOResourceType resourceType)
{
    WebAnswer answer = sendAboutShares(error, L"OrloWebService::getResourceId", resourcesOfVisitorPath,
                                       JsonBody().add(L"visitor", visitor).add(L"visitorType", textOf(visitorType)).done());
    if (!answer.ok())
        return false;
    std::vector<std::wstring> ids;
    if (answer.data().is_array()) {
        for (const web::json::value& resource : answer.data().as_array()) {
            std::wstring type;
            std::wstring id;
            if (readMember(resource, L"resourceType", type) && type == textOf(resourceType) && readMember(resource, L"resourceId", id))
                ids.push_back(std::move(id));
        }
    }
    out = std::move(ids);
    return true;
}

} // namespace orlo
