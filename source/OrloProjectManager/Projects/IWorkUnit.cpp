#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/VersionWeb.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Projects/IWorkUnit.h>

namespace orlo {

bool IWorkUnit::MarkPublish(const std::string& datasetId, int version, const std::wstring& description, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IWorkUnit::MarkPublish")).run(error, [&] {
        return retried(&OrloWebService::MarkPublish, error, datasetId, utils::toWstring(version), description);
    });
}

} // namespace orlo
