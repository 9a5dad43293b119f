#include "ComponentWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* familyFilePath = L"/structural/project/{projectId}/suite/{familyId}/{familyVersion}";

/// A text as one segment of a path, whatever it holds.
std::wstring segment(const std::wstring& text)
{
    return utils::fromNative(web::uri::encode_data_string(utils::toNative(text)));
}

} // namespace

std::wstring GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                              const std::wstring& familyVersion)
{
    if (projectId.empty() || familyId.empty() || familyVersion.empty()) {
        refuse(error, error::badInput, L"projectId or familyId or familyVersion is empty");
        return {};
    }
    WebCall call(L"OrloWebService::GetFamilyFileUrl", service::structure, methods::GET, familyFilePath);
    call.place(L"{projectId}", segment(projectId)).place(L"{familyId}", segment(familyId));
    const WebAnswer answer = call.place(L"{familyVersion}", segment(familyVersion)).send(error);
    if (!answer.ok())
        return {};
    JsonWrapper body;
    std::string url;
    if (!body.Parse(answer.text()))
        log::error(L"OrloWebService::GetFamilyFileUrl, response parse error.");
    else if (!body.Get("data", url))
        log::error(L"OrloWebService::GetFamilyFileUrl, response does not have data field.");
    return utils::toWstring(url);
}

} // namespace orlo::OrloWebService
