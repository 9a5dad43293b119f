#include "FolderReaders.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo::OrloPayloadProcessor {

using http::ORLOHTTPPayloadFolder;

const RecordTable<ORLOHTTPPayloadFolder>& folderFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadFolder>{
        {L"id", &ORLOHTTPPayloadFolder::id},
        {L"name", &ORLOHTTPPayloadFolder::name},
        {L"folderType", &ORLOHTTPPayloadFolder::folderType},
        {L"parentId", &ORLOHTTPPayloadFolder::parentId},
        {L"projectId", &ORLOHTTPPayloadFolder::projectId},
        {L"teamId", &ORLOHTTPPayloadFolder::teamId},
    });
    return table;
}

} // namespace orlo::OrloPayloadProcessor
