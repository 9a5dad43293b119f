#include "ConfigWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "ConfigTexts.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloLogging/Log.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* configPath = L"/config/scope/{scope}/{scopeEntityId}/type/{configType}";

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

std::wstring configPathOf(const std::wstring& scope, const std::wstring& projectId, ConfigType type)
{
    std::wstring path = configPath;
    utils::strReplace(path, L"{scope}", scope);
    utils::strReplace(path, L"{scopeEntityId}", projectId);
    utils::strReplace(path, L"{configType}", configTypeTexts().textOf(type));
    return path;
}

std::wstring projectConfigPathOf(const std::wstring& projectId, ConfigType type)
{
    return configPathOf(configScopeTexts().textOf(ConfigScope::Project), projectId, type);
}

std::wstring spaceConfigPathOf(const std::wstring& projectId)
{
    return projectConfigPathOf(projectId, ConfigType::SpaceConfig);
}

WebCall oneVersion(const wchar_t* name, const std::wstring& projectId, ConfigType type, int version)
{
    return WebCall(name, service::project, methods::GET, projectConfigPathOf(projectId, type) + L"?version=" + utils::toWstring(version));
}

bool readVersions(const wchar_t* name, ErrorCode& error, std::vector<int>& out, const std::wstring& projectId, ConfigType type)
{
    WebCall call(name, service::project, methods::GET, projectConfigPathOf(projectId, type) + L"/versions");
    WebAnswer answer = call.send(error);
    if (!answer.ok())
        return false;
    readField(answer.body(), out);
    return true;
}

} // namespace

bool AddDefaultSpaceConfig(ErrorCode& error, const std::wstring& projectId)
{
    if (projectId.empty()) {
        log::error(L"AddDefaultSpaceConfig()未正常执行：projectId为空");
        return refuse(error, error::badInput, L"projectId is empty");
    }
    WebCall call(L"OrloWebService::AddDefaultSpaceConfig", service::project, methods::POST, spaceConfigPathOf(projectId));
    return call.body(checkedJson(defaultSpaceDocument())).send(error).ok();
}

bool UpdateSpaceConfig(ErrorCode& error, const std::wstring& configText, const std::wstring& projectId)
{
    if (configText.empty()) {
        log::error(L"UpdateSpaceConfig()未正常执行：spSpaceConfig为空");
        return false;
    }
    if (projectId.empty()) {
        log::error(L"UpdateSpaceConfig()未正常执行：projectId为空");
        return false;
    }
    WebCall call(L"OrloWebService::UpdateSpaceConfig", service::project, methods::POST, spaceConfigPathOf(projectId));
    return call.body(checkedJson(configText)).send(error).ok();
}

bool UpdateProjectConfig(ErrorCode& error, const std::wstring& configContent, const std::wstring& projectId, ConfigType type)
{
    if (configContent.empty()) {
        log::error(L"UpdateProjectConfig未正常执行：configContent为空");
        return false;
    }
    if (projectId.empty()) {
        log::error(L"UpdateProjectConfig未正常执行：projectId为空");
        return false;
    }
    WebCall call(L"OrloWebService::UpdateProjectConfig", service::project, methods::POST, configPathOf(L"Project", projectId, type));
    return call.body(checkedJson(configContent)).failsSilently().send(error).ok();
}

bool GetSpaceConfig(ErrorCode& error, web::json::value& out, const std::wstring& projectId, int version)
{
    WebAnswer answer = oneVersion(L"Project::GetSpaceConfig", projectId, ConfigType::SpaceConfig, version).send(error);
    if (!answer.ok())
        return false;
    out = answer.body();
    return true;
}

bool GetSpaceConfigVersions(ErrorCode& error, std::vector<int>& out, const std::wstring& projectId)
{
    return readVersions(L"Project::GetSpaceConfigVersions", error, out, projectId, ConfigType::SpaceConfig);
}

bool GetAxisGridConfig(ErrorCode& error, std::string& out, const std::wstring& projectId, int version)
{
    WebAnswer answer = oneVersion(L"Project::GetAxisGridConfig", projectId, ConfigType::GridConfig, version).send(error);
    if (!answer.ok())
        return false;
    out = answer.text();
    return true;
}

bool GetAxisGridConfigVersions(ErrorCode& error, std::vector<int>& out, const std::wstring& projectId)
{
    return readVersions(L"Project::GetAxisGridConfigVersions", error, out, projectId, ConfigType::GridConfig);
}

} // namespace orlo::OrloWebService
