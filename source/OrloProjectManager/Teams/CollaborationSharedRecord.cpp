#include "CollaborationSharedRecord.h"

#include "../Frame/CallFrame.h"
#include "../NetworkProject/Call/TextTable.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

ICollaborationSharedRecord::ICollaborationSharedRecord() = default;
ICollaborationSharedRecord::~ICollaborationSharedRecord() = default;

CollaborationSharedRecord::CollaborationSharedRecord(std::wstring recordId, CollaborationShareStatus recordStatus, std::wstring recordName,
                                                     std::wstring sharingTeam, std::wstring receivingTeam)
    : id(std::move(recordId)),
      name(std::move(recordName)),
      status(recordStatus),
      shareId(std::move(sharingTeam)),
      consumedId(std::move(receivingTeam))
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
