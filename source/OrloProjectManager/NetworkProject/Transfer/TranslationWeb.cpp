#include "TranslationWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* translationPath = L"/v1/upload";

} // namespace

bool TriggerSightlineTranslateWorkerByUploadJob(ErrorCode& error, const std::string& dsId, int dsVersion, const std::wstring& toType)
{
    if (dsId.empty() && dsVersion < 0)
        return refuse(error, error::badInput, L"dsId is empty or dsVersion < 0");
    WebCall call(L"OrloWebService::TriggerSightlineTranslateWorkerByUploadJob", service::slproxy, methods::POST, translationPath);
    call.body(JsonBody().add(L"dataSetId", dsId).add(L"versionId", dsVersion).add(L"toType", toType).done());
    return call.send(error).ok();
}

} // namespace orlo::OrloWebService
