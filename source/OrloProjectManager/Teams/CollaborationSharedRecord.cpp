#include "CollaborationSharedRecord.h"

#include "../Frame/CallFrame.h"
#include "../NetworkProject/Call/TextTable.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

ICollaborationSharedRecord::ICollaborationSharedRecord() = default;
ICollaborationSharedRecord::~ICollaborationSharedRecord() = default;

CollaborationSharedRecord::CollaborationSharedRecord(std::wstring id, CollaborationShareStatus status, std::wstring name,
                                                     std::wstring shareId, std::wstring consumedId)
    : id(std::move(id)), name(std::move(name)), status(status), shareId(std::move(shareId)), consumedId(std::move(consumedId))
{}

std::vector<CollaborationSharedDatasetInfo> CollaborationSharedRecord::GetSharedDataSets(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationSharedRecord::GetSharedDataSets")).run(error, [&] {
        std::vector<CollaborationSharedDatasetInfo> datasets;
        for (const auto& contents : HttpClient::getShareContentById(id, error))
            datasets.push_back({contents->getId(), contents->getName(), contents->getVersions()});
        return datasets;
    });
}

CollaborationShareStatus shareStatusOf(const std::wstring& text)
{
    using Status = CollaborationShareStatus;
    static const auto& table = utils::neverDestroyed(new const TextTable<Status>(
        {{Status::Temporary, L"Temporary"}, {Status::Shared, L"Shared"}, {Status::Consumed, L"Consumed"}}, Status::Temporary));
    return table.valueOf(text);
}

} // namespace orlo
