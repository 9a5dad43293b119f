#include "../Frame/CallFrame.h"
#include "../NetworkProject/Projects/VersionWeb.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/Projects/IWorkUnit.h>

namespace orlo {

bool IWorkUnit::MarkPublish(const std::string& datasetId, int version, const std::wstring& description, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IWorkUnit::MarkPublish")).run(error, [&] {
        return http::SendNormalRequestWithRetry(&OrloWebService::MarkPublish, false, error, datasetId, utils::toWstring(version),
                                                description);
    });
}

} // namespace orlo
