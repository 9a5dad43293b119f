#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Teams/ICollaborationSharedRecord.h>

namespace orlo {

class CollaborationSharedRecord final : public ICollaborationSharedRecord
{
public:
    CollaborationSharedRecord(std::wstring recordId, CollaborationShareStatus recordStatus, std::wstring recordName,
                              std::wstring sharingTeam, std::wstring receivingTeam);

    std::vector<CollaborationSharedDatasetInfo> GetSharedDataSets(ErrorCode& error) override;
    std::vector<CollaborationSharedDatasetInfo> GetSharedDataSets() override { return GetSharedDataSets(DroppedError()); }
    CollaborationShareStatus GetStatus() const override { return status; }
    std::wstring GetName() const override { return name; }
    std::wstring GetShareId() const override { return shareId; }

private:
    const std::wstring id;
    const std::wstring name;
    const CollaborationShareStatus status;
    const std::wstring shareId;
    [[maybe_unused]] const std::wstring consumedId; ///< nobody asks for it yet
};

/// From the text of a record's status; Temporary for a text that isn't known.
CollaborationShareStatus shareStatusOf(const std::wstring& text);

} // namespace orlo
