#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Teams/ShareWeb.h"

#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>

#include <utility>

namespace orlo {

ShareRecord::ShareRecord(std::wstring id, std::wstring shareId, std::wstring consumedId, std::wstring name, std::wstring status)
    : m_id(std::move(id)),
      m_shareId(std::move(shareId)),
      m_consumedId(std::move(consumedId)),
      m_name(std::move(name)),
      m_status(std::move(status))
{}

ShareContents::ShareContents(std::wstring id, std::wstring name, std::vector<int> versions)
    : m_id(std::move(id)), m_name(std::move(name)), m_versions(std::move(versions))
{}

std::vector<std::shared_ptr<ShareRecord>> HttpClient::getShareRecordByTeamId(const std::wstring& teamId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getShareRecordByTeamId")).run(error, [&] {
        std::vector<std::shared_ptr<ShareRecord>> records;
        if (auto sent = fetched(&OrloWebService::getShareRecordByTeamId, error, teamId)) {
            for (auto& record : *sent)
                records.push_back(std::make_shared<ShareRecord>(std::move(record.id), std::move(record.shareId),
                                                                std::move(record.consumedId), std::move(record.name),
                                                                std::move(record.status)));
        }
        return records;
    });
}

std::vector<std::shared_ptr<ShareContents>> HttpClient::getShareContentById(const std::wstring& recordId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getShareContentById")).run(error, [&] {
        std::vector<std::shared_ptr<ShareContents>> contents;
        if (auto sent = fetched(&OrloWebService::getShareContentById, error, recordId)) {
            for (auto& shared : *sent)
                contents.push_back(
                    std::make_shared<ShareContents>(std::move(shared.id), std::move(shared.name), std::move(shared.versions)));
        }
        return contents;
    });
}

std::vector<std::wstring> HttpClient::getResourceId(const std::wstring& visitor, ORLOSubjectType visitorType, ORLOResourceType resourceType,
                                                    ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getResourceId")).run(error, [&] {
        std::vector<std::wstring> ids;
        if (!retried(&OrloWebService::getResourceId, error, ids, visitor, visitorType, resourceType))
            log::error(L"HttpClient::getResourceId OrloWebService::getResourceId error");
        return ids;
    });
}

} // namespace orlo
