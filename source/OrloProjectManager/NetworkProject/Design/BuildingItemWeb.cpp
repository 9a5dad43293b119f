#include "BuildingItemWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "ConfigTexts.h"
#include "ItemDocument.h"

#include <BaseCommon/NeverDestroyed.h>

#include <iterator>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* newItemPath = L"/v2/{projectId}/sub_item/{revision}";
constexpr const wchar_t* changedItemPath = L"/v2/{projectId}/sub_item/{subItemId}/{revision}";
constexpr const wchar_t* itemsPath = L"/v2/{projectId}/sub_item/revision/{revision}";
constexpr const wchar_t* itemVersionPath = L"/v2/{projectId}/sub_item/{subItemId}/version/{version}";
constexpr const wchar_t* latestItemPath = L"/v2/{projectId}/sub_item/{subItemId}/latest";
constexpr const wchar_t* latestOfBinderPath = L"/v2/{projectId}/config/binder/{bindId}/type/{configType}/latest";
constexpr const wchar_t* itemConfigVersionPath = L"/v2/{projectId}/config/{subItemId}/{configType}/version/{version}";
constexpr const wchar_t* newItemConfigPath = L"/v2/{projectId}/sub_item/{subItemId}/config/type/{configType}";
constexpr const wchar_t* changedItemConfigPath = L"/v2/{projectId}/config/subItem/{subItemId}/type/{configType}/version/{version}";
constexpr const wchar_t* bindPath = L"/design/config/data/bind";
constexpr const wchar_t* boundToDatasetPath = L"/design/config/data/by/design";
constexpr const wchar_t* boundToItemPath = L"/design/config/data/by/cfg";

WebCall callOfProject(const wchar_t* name, const web::http::method& method, const wchar_t* path, const std::wstring& projectId)
{
    return WebCall(name, service::project, method, path).place(L"{projectId}", projectId);
}

/// Sends the call with the content in its wrapper; none where there is nothing to send.
std::optional<WebAnswer> sendDocument(ErrorCode& error, WebCall& call, ConfigType type, const std::wstring& content)
{
    const auto document = itemDocument(type, content);
    if (document)
        return call.body(*document).send(error);
    refuse(error, error::badInput, L"the content can't be read as JSON");
    return std::nullopt;
}

bool storeDocument(ErrorCode& error, WebCall& call, ConfigType type, const std::wstring& content)
{
    const auto answer = sendDocument(error, call, type, content);
    return answer && answer->ok();
}

const RecordTable<ProjectItemConfig>& itemConfigFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ProjectItemConfig>{
        {L"version", &ProjectItemConfig::version},
        {L"configValue", &ProjectItemConfig::configValue},
        {L"birthTime", &ProjectItemConfig::birthTime},
        {L"creationTime", &ProjectItemConfig::creationTime},
    });
    return table;
}

ProjectItemConfig readConfig(const web::json::value& json, ConfigType type)
{
    ProjectItemConfig config;
    config.type = type;
    readMember(json, type == ConfigType::SubItem ? L"id" : L"scopeEntityId", config.id);
    itemConfigFields().read(json, config);
    return config;
}

bool fetchConfig(ErrorCode& error, ProjectItemConfig& out, const WebCall& call, ConfigType type)
{
    WebAnswer answer = call.send(error);
    if (!answer.ok() || !answer.data().is_object())
        return false;
    out = readConfig(answer.data(), type);
    return true;
}

/// What is told of a single item isn't asked for its id.
bool fetchItem(ErrorCode& error, ProjectItemConfig& out, WebCall& call, const std::wstring& subItemId)
{
    ProjectItemConfig item;
    if (!fetchConfig(error, item, call.place(L"{subItemId}", subItemId), ConfigType::SubItem))
        return false;
    item.id = subItemId;
    out = std::move(item);
    return true;
}

/// Appends what `read` makes of the elements of an array "data".
template <class Element, class Read>
bool fetchList(ErrorCode& error, std::vector<Element>& out, const WebCall& call, const Read& read)
{
    WebAnswer answer = call.send(error);
    if (!answer.ok() || !answer.data().is_array())
        return false;
    std::vector<Element> elements;
    for (const web::json::value& element : answer.data().as_array())
        read(element, elements);
    out.insert(out.end(), std::make_move_iterator(elements.begin()), std::make_move_iterator(elements.end()));
    return true;
}

std::wstring itemTypeText()
{
    return configTypeTexts().textOf(ConfigType::SubItem);
}

WebCall callOfBinding(const wchar_t* name, const wchar_t* path, const wchar_t* key, const std::wstring& id, const std::wstring& projectId)
{
    return WebCall(name, service::project, methods::GET, path).query(key, id).query(L"projectId", projectId).query(L"type", itemTypeText());
}

} // namespace

bool AddBuildingItem(ErrorCode& error, std::wstring& subItemId, const std::wstring& projectId, int revision, const std::wstring& content)
{
    WebCall call = callOfProject(L"Project::AddBuildingItem", methods::POST, newItemPath, projectId);
    auto answer = sendDocument(error, call.place(L"{revision}", revision), ConfigType::SubItem, content);
    return answer && answer->ok() && readMember(answer->data(), L"id", subItemId);
}

bool UpdateBuildingItem(ErrorCode& error, const std::wstring& projectId, int revision, const std::wstring& subItemId,
                        const std::wstring& content)
{
    WebCall call = callOfProject(L"Project::UpdateBuildingItem", methods::PUT, changedItemPath, projectId);
    return storeDocument(error, call.place(L"{subItemId}", subItemId).place(L"{revision}", revision), ConfigType::SubItem, content);
}

bool DeleteBuildingItem(ErrorCode& error, const std::wstring& projectId, int revision, const std::wstring& subItemId)
{
    WebCall call = callOfProject(L"Project::DeleteBuildingItem", methods::DEL, changedItemPath, projectId);
    return call.place(L"{subItemId}", subItemId).place(L"{revision}", revision).send(error).ok();
}

bool GetBuildingItems(ErrorCode& error, std::vector<ProjectItemConfig>& items, const std::wstring& projectId, int revision)
{
    WebCall call = callOfProject(L"Project::GetBuildingItems", methods::GET, itemsPath, projectId);
    return fetchList(error, items, call.place(L"{revision}", revision),
                     [](const web::json::value& json, auto& read) { read.push_back(readConfig(json, ConfigType::SubItem)); });
}

bool GetBuildingItem(ErrorCode& error, ProjectItemConfig& item, const std::wstring& projectId, const std::wstring& subItemId, int version)
{
    WebCall call = callOfProject(L"Project::GetBuildingItem", methods::GET, itemVersionPath, projectId);
    return fetchItem(error, item, call.place(L"{version}", version), subItemId);
}

bool GetLatestBuildingItem(ErrorCode& error, ProjectItemConfig& item, const std::wstring& projectId, const std::wstring& subItemId)
{
    WebCall call = callOfProject(L"Project::GetLatestBuildingItem", methods::GET, latestItemPath, projectId);
    return fetchItem(error, item, call, subItemId);
}

bool GetLatestConfigByProjectIdAndOwnerId(ErrorCode& error, std::vector<ProjectItemConfig>& items, int* revision,
                                          const std::wstring& bindId, const std::wstring& projectId, ConfigType type)
{
    *revision = -1;
    WebCall call = callOfProject(L"Project::GetLatestConfigByProjectIdAndOwnerId", methods::GET, latestOfBinderPath, projectId);
    call.place(L"{bindId}", bindId).place(L"{configType}", configTypeTexts().textOf(type));
    bool isEmpty = true;
    const bool done = fetchList(error, items, call, [&](const web::json::value& json, auto& read) {
        isEmpty = false;
        read.push_back(readConfig(json, type));
        readMember(json, L"revision", *revision);
    });
    if (done && isEmpty)
        *revision = 0;
    return done;
}

bool GetProjectItemConfig(ErrorCode& error, ProjectItemConfig& config, const std::wstring& projectId, const std::wstring& subItemId,
                          ConfigType type, int version)
{
    WebCall call = callOfProject(L"Project::GetProjectItemConfig", methods::GET, itemConfigVersionPath, projectId);
    call.place(L"{subItemId}", subItemId).place(L"{configType}", configTypeTexts().textOf(type)).place(L"{version}", version);
    return fetchConfig(error, config, call, type);
}

bool CreateProjectItemConfig(ErrorCode& error, const std::wstring& projectId, const std::wstring& subItemId, ConfigType type,
                             const std::wstring& content)
{
    WebCall call = callOfProject(L"Project::CreateProjectItemConfig", methods::POST, newItemConfigPath, projectId);
    call.place(L"{subItemId}", subItemId).place(L"{configType}", configTypeTexts().textOf(type));
    return storeDocument(error, call, type, content);
}

bool UpdateProjectItemConfig(ErrorCode& error, const std::wstring& projectId, const std::wstring& subItemId, ConfigType type, int version,
                             const std::wstring& content)
{
    if (type < ConfigType::ItemElevationSet)
        return refuse(error, error::badInput, L"UpdateProjectItemConfig::参数输入有误");
    WebCall call = callOfProject(L"Project::UpdateProjectItemConfig", methods::PUT, changedItemConfigPath, projectId);
    call.place(L"{subItemId}", subItemId).place(L"{configType}", configTypeTexts().textOf(type)).place(L"{version}", version);
    return storeDocument(error, call, type, content);
}

bool AssociateDatasetAndBuildingItem(ErrorCode& error, const std::wstring& projectId, const std::wstring& datasetId,
                                     const std::wstring& subItemId)
{
    WebCall call(L"Project::AssociateDatasetAndBuildingItem", service::project, methods::POST, bindPath);
    call.body(JsonBody()
                  .add(L"configType", itemTypeText())
                  .add(L"cfgId", subItemId)
                  .add(L"dataId", datasetId)
                  .add(L"projectId", projectId)
                  .done());
    return call.send(error).ok();
}

bool GetBuildingItemIdsByDatasetId(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& projectId,
                                   const std::wstring& datasetId)
{
    const WebCall call = callOfBinding(L"Project::GetBuildingItemIdsByDatasetId", boundToDatasetPath, L"dataId", datasetId, projectId);
    return fetchList(error, ids, call, [](const web::json::value& json, auto& read) {
        if (std::int64_t id = 0; readMember(json, L"cfgId", id))
            read.push_back(std::to_wstring(id));
    });
}

bool GetDatasetIdsByBuildingItemId(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& projectId,
                                   const std::wstring& subItemId)
{
    const WebCall call = callOfBinding(L"Project::GetDatasetIdsByBuildingItemId", boundToItemPath, L"cfgId", subItemId, projectId);
    return fetchList(error, ids, call, [](const web::json::value& json, auto& read) {
        if (std::wstring id; readMember(json, L"dataId", id))
            read.push_back(std::move(id));
    });
}

} // namespace orlo::OrloWebService
