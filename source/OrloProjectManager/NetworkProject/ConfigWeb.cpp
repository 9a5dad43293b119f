#include "ConfigWeb.h"

#include "../CallFrame.h"
#include "WebCall.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

namespace orlo::OrloWebService {

namespace {

/// The document in the order of its own keys, with a new id for each of its four nodes.
std::wstring defaultSpaceDocument()
{
    const auto newId = [] { return utils::toWstring(uuid::newUUIDV4()); };
    return LR"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SpaceConfig","data":[{"id":")" + newId() +
           LR"(","spaceName":"未命名场地","spaceType":"Site","spaceDescription":"","subSpaces":[{"id":")" + newId() +
           LR"(","spaceName":"未命名楼栋","spaceType":"Building","spaceDescription":"","subSpaces":[{"id":")" + newId() +
           LR"(","spaceName":"未命名区域","spaceType":"Region","spaceDescription":"","subSpaces":[{"id":")" + newId() +
           LR"(","spaceName":"建筑未命名楼层","spaceType":"Floor","spaceDescription":"","attachValues":{"ArchitectureLevel":"0.000",)"
           LR"("StructureLevel":"-0.050"}}]}]}]}]})";
}

/// The text itself is sent, since cpprestsdk would sort its keys; parsing it first refuses what is no JSON.
std::wstring checkedJson(std::wstring text)
{
    web::json::value::parse(utils::toNative(text));
    return text;
}

} // namespace

bool AddDefaultSpaceConfig(ErrorCode& error, const std::wstring& projectId)
{
    if (projectId.empty()) {
        log::error(L"AddDefaultSpaceConfig()未正常执行：projectId为空");
        return refuse(error, error::badInput, L"projectId is empty");
    }
    WebCall call(L"OrloWebService::AddDefaultSpaceConfig", service::project, methods::POST,
                 L"/config/scope/Project/" + projectId + L"/type/SpaceConfig");
    return call.body(checkedJson(defaultSpaceDocument())).send(error).ok();
}

} // namespace orlo::OrloWebService
