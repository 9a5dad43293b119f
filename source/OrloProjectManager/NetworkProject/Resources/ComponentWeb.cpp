#include "ComponentWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "ComponentReaders.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/JsonWriter.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>
#include <OrloNetwork/WebRequest.h>

#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* categoryCodesPath = L"/structural/project/{projectId}/suite/major/categories";
constexpr const wchar_t* categoryTreePath = L"/structural/project/{projectId}/suite/category";
constexpr const wchar_t* renewableTreePath = L"/structural/project/{projectId}/renewable/suites/categories";
constexpr const wchar_t* componentSearchPath = L"/structural/project/suites/search";
constexpr const wchar_t* renewableSearchPath = L"/structural/project/{projectId}/suites/check4update";
constexpr const wchar_t* changedComponentsPath = L"/structural/project/{projectId}/components/changed";
constexpr const wchar_t* componentDetailPath = L"/structural/project/{projectId}/suite/{suiteId}/{version}/info";
constexpr const wchar_t* componentExistsPath = L"/structural/project/{projectId}/subject/suite/{id}/exist";
constexpr const wchar_t* familyTypePath = L"/structural/project/{projectId}/suite/{suiteId}/{version}/family/info";
constexpr const wchar_t* familyTypesPath = L"/structural/project/{projectId}/suite/{suiteId}/family_types";
constexpr const wchar_t* cutlinesPath = L"/structural/project/{projectId}/suite/{suiteId}/placeholder";
constexpr const wchar_t* componentFilePath = L"/structural/project/{projectId}/suite/{suiteId}/{version}";
constexpr const wchar_t* componentXmlPath = L"/structural/project/{projectId}/suite/{suiteId}/detail/xml";
constexpr const wchar_t* componentPath = L"/structural/project/{projectId}/suite/{suiteId}";
constexpr const wchar_t* upgradePath = L"/structural/project/{projectId}/suite/{suiteId}/upgrade";
constexpr const wchar_t* componentUploadPath = L"/structural/v2/project/{projectId}/suite/upload";
constexpr const wchar_t* addComponentsPath = L"/structural/project/{projectId}/suite/local";
constexpr const wchar_t* familyFilePath = L"/structural/project/{projectId}/suite/{familyId}/{familyVersion}";

using JsonType = web::json::value::value_type;

/// A call of the component library, whose answer is judged by the type of its "data".
class LibraryCall : public WebCall
{
public:
    LibraryCall(const wchar_t* name, const web::http::method& method, const wchar_t* path)
        : WebCall(name, service::structure, method, path), m_name(name)
    {}

    LibraryCall(const wchar_t* name, const web::http::method& method, const wchar_t* path, const std::wstring& projectId)
        : LibraryCall(name, method, path)
    {
        place(L"{projectId}", projectId);
    }

    LibraryCall(const wchar_t* name, const web::http::method& method, const wchar_t* path, const std::wstring& projectId,
                const std::wstring& suiteId)
        : LibraryCall(name, method, path, projectId)
    {
        place(L"{suiteId}", suiteId);
    }

    /// read: takes the "data", and tells whether it holds what is needed.
    template <class Read>
    bool fetch(ErrorCode& error, JsonType type, const Read& read) const
    {
        WebAnswer answer = send(error);
        if (!answer.ok())
            return false;
        if (answer.data().type() == type && read(answer.data()))
            return true;
        answer.complain(m_name + L" - response is not normal: ");
        return false;
    }

    template <class Record>
    bool fetchList(ErrorCode& error, std::vector<Record>& out, bool (*read)(const web::json::value&, std::vector<Record>&)) const
    {
        return fetch(error, JsonType::Array, [&](const web::json::value& data) { return read(data, out); });
    }

    bool fetchComponent(ErrorCode& error, Component& out, Component (*read)(const web::json::value&)) const
    {
        return fetch(error, JsonType::Object, [&](const web::json::value& data) {
            out = read(data);
            return true;
        });
    }

    bool fetchAsText(ErrorCode& error, std::wstring& out) const
    {
        return fetch(error, JsonType::Object, [&](const web::json::value& data) {
            out = utils::fromNative(data.serialize());
            return true;
        });
    }

    template <class Field>
    bool fetchField(ErrorCode& error, JsonType type, Field& out) const
    {
        return fetch(error, type, [&](const web::json::value& data) { return readField(data, out); });
    }

private:
    std::wstring m_name;
};

constexpr int majorOfUnknown = -1;

/// The number of a specialty in this service. Intended: Unknown is a number too, and what isn't listed counts as ZIM.
int majorOf(SpecialtyType specialty)
{
    switch (specialty) {
    case SpecialtyType::Unknown:
        return majorOfUnknown;
    case SpecialtyType::ZOK:
        return 1;
    case SpecialtyType::ZUTA:
        return 2;
    default:
        return 0;
    }
}

web::json::value jsonOfHeld(const std::vector<ComponentInfo>& held)
{
    std::vector<web::json::value> elements;
    elements.reserve(held.size());
    for (const ComponentInfo& component : held)
        elements.push_back(JsonBody().add(L"id", web::json::value::number(component.id)).add(L"version", component.version).done());
    return web::json::value::array(std::move(elements));
}

/// An argument that the operation needs is missing.
bool refuseInput(ErrorCode& error, const std::wstring& operation)
{
    const std::wstring words = operation + L"：参数输入有误!";
    log::error(words);
    return refuse(error, error::badInput, words);
}

/// "2024.1" of "2024.1.3": all of it where there is no more.
std::string firstTwoParts(const std::string& version)
{
    const std::size_t first = version.find('.');
    return first == std::string::npos ? version : version.substr(0, version.find('.', first + 1));
}

using NarrowPair = std::pair<std::string, std::string>;

/// Rows the other way round, in their order. Of several with one public id the first gives the place and the last the id: what is written
/// of them names each once.
std::vector<NarrowPair> byPublicId(const std::map<std::wstring, std::wstring>& ids)
{
    std::vector<NarrowPair> rows;
    std::unordered_map<std::string, std::size_t> places;
    rows.reserve(ids.size());
    for (const auto& [id, publicId] : ids) {
        const auto [known, isNew] = places.try_emplace(utils::toString(publicId), rows.size());
        if (isNew)
            rows.emplace_back(known->first, std::string());
        rows[known->second].second = utils::toString(id);
    }
    return rows;
}

/// A text as one segment of a path, whatever it holds.
std::wstring segment(const std::wstring& text)
{
    return utils::fromNative(web::uri::encode_data_string(utils::toNative(text)));
}

} // namespace

bool GetCategoryCodes(ErrorCode& error, std::vector<std::wstring>& codes, const std::wstring& projectId, SpecialtyType specialty)
{
    LibraryCall call(L"OrloWebService::GetCategoryCodes", methods::GET, categoryCodesPath, projectId);
    call.query(L"major", std::to_wstring(majorOf(specialty)));
    return call.fetch(error, JsonType::Array, [&](const web::json::value& data) {
        std::vector<std::wstring> read;
        readField(data, read);
        codes.insert(codes.end(), std::make_move_iterator(read.begin()), std::make_move_iterator(read.end()));
        return true;
    });
}

bool GetCategoryTree(ErrorCode& error, std::vector<Category>& categories, const std::wstring& projectId,
                     const std::vector<std::wstring>& categoryCodes, const std::wstring& keyword, const std::wstring& softwareVersion)
{
    LibraryCall call(L"OrloWebService::GetCategoryTree", methods::POST, categoryTreePath, projectId);
    call.body(JsonBody()
                  .add(L"categoryCodes", jsonTexts(categoryCodes))
                  .add(L"keyword", keyword)
                  .add(L"softwareVersion", softwareVersion)
                  .done());
    return call.fetchList(error, categories, readCategories);
}

bool GetCategoryTreeCanBeUpdated(ErrorCode& error, std::vector<Category>& categories, const std::wstring& projectId,
                                 SpecialtyType specialty, const std::vector<ComponentInfo>& held, const std::wstring& keyword)
{
    LibraryCall call(L"OrloWebService::GetCategoryTreeCanBeUpdated", methods::POST, renewableTreePath, projectId);
    call.body(JsonBody()
                  .add(L"keyword", keyword)
                  .add(L"major", majorOf(specialty))
                  .add(L"projectComponentRequestBeans", jsonOfHeld(held))
                  .done());
    return call.fetchList(error, categories, readCategories);
}

bool SearchComponents(ErrorCode& error, std::vector<Component>& components, int& totalCount, const std::wstring& projectId,
                      const SearchCriteria& criteria)
{
    LibraryCall call(L"OrloWebService::SearchComponents", methods::POST, componentSearchPath);
    // Intended: the project stands here and not in the path.
    call.body(JsonBody()
                  .add(L"categoryCodes", jsonTexts(criteria.categoryCodes))
                  .add(L"keyword", criteria.keyword)
                  .add(L"page", criteria.page)
                  .add(L"pageSize", criteria.pageSize)
                  .add(L"projectId", projectId)
                  .done());
    return call.fetch(error, JsonType::Object, [&](const web::json::value& data) {
        if (const web::json::value* const list = memberOf(data, L"list"))
            readFoundComponents(*list, components);
        readMember(data, L"totalCount", totalCount);
        return true;
    });
}

bool SearchComponentsCanBeUpdated(ErrorCode& error, std::vector<Component>& components, const std::wstring& projectId,
                                  const std::vector<ComponentInfo>& held, const std::wstring& categoryCode, const std::wstring& keyword,
                                  SpecialtyType specialty)
{
    LibraryCall call(L"OrloWebService::SearchComponentsCanBeUpdated", methods::POST, renewableSearchPath, projectId);
    if (!categoryCode.empty())
        call.query(L"category_code", categoryCode);
    if (!keyword.empty())
        call.query(L"keyword", keyword);
    call.query(L"major", std::to_wstring(majorOf(specialty))).body(jsonOfHeld(held));
    return call.fetchList(error, components, readRenewableComponents);
}

bool GetComponentsChanged(ErrorCode& error, std::vector<Component>& components, const std::wstring& projectId, SpecialtyType specialty,
                          long long time)
{
    // Intended: only here is a specialty needed.
    const int major = majorOf(specialty);
    if (projectId.empty() || major == majorOfUnknown)
        return refuseInput(error, L"GetComponentsChanged");
    LibraryCall call(L"OrloWebService::GetComponentsChanged", methods::GET, changedComponentsPath, projectId);
    call.query(L"major", std::to_wstring(major)).query(L"time", std::to_wstring(time));
    return call.fetch(error, JsonType::Object, [&](const web::json::value& data) {
        const web::json::value* const changed = memberOf(data, L"updateComponents");
        return changed && readChangedComponents(*changed, components);
    });
}

bool GetDetailInfoOfComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& suiteId,
                              int version)
{
    LibraryCall call(L"OrloWebService::GetDetailInfoOfComponent", methods::GET, componentDetailPath, projectId, suiteId);
    call.place(L"{version}", version);
    return call.fetchComponent(error, component, readDetailedComponent);
}

bool IsComponentExist(ErrorCode& error, bool& exists, const std::wstring& projectId, const std::wstring& id)
{
    if (isAnyEmpty(projectId, id))
        return refuseInput(error, L"IsComponentExist");
    LibraryCall call(L"OrloWebService::IsComponentExist", methods::GET, componentExistsPath, projectId);
    call.place(L"{id}", id);
    return call.fetch(error, JsonType::Object, [&](const web::json::value& data) { return readMember(data, L"exist", exists); });
}

bool GetFamilyTypeInfoOfComponent(ErrorCode& error, std::wstring& info, const std::wstring& projectId, const std::wstring& suiteId,
                                  int version, const std::wstring& name)
{
    if (isAnyEmpty(projectId, suiteId, name))
        return refuseInput(error, L"GetFamilyTypeInfoOfComponent");
    LibraryCall call(L"OrloWebService::GetFamilyTypeInfoOfComponent", methods::GET, familyTypePath, projectId, suiteId);
    call.place(L"{version}", version).query(L"name", name);
    return call.fetchAsText(error, info);
}

bool GetAllFamilyTypeInfosOfComponent(ErrorCode& error, std::wstring& info, const std::wstring& projectId, const std::wstring& suiteId,
                                      int version)
{
    if (isAnyEmpty(projectId, suiteId))
        return refuseInput(error, L"GetAllFamilyTypeInfosOfComponent");
    LibraryCall call(L"OrloWebService::GetAllFamilyTypeInfosOfComponent", methods::GET, familyTypesPath, projectId, suiteId);
    call.query(L"version", std::to_wstring(version));
    return call.fetchAsText(error, info);
}

bool GetCutlineOfComponent(ErrorCode& error, std::vector<Cutline>& cutlines, const std::wstring& projectId, const std::wstring& suiteId,
                           int version)
{
    if (isAnyEmpty(projectId, suiteId))
        return refuseInput(error, L"GetCutlineOfComponent");
    LibraryCall call(L"OrloWebService::GetCutlineOfComponent", methods::GET, cutlinesPath, projectId, suiteId);
    call.query(L"version", std::to_wstring(version));
    return call.fetchList(error, cutlines, readCutlines);
}

bool GetDownloadUrlOfComponent(ErrorCode& error, std::wstring& url, const std::wstring& projectId, const std::wstring& suiteId, int version)
{
    if (isAnyEmpty(projectId, suiteId))
        return refuseInput(error, L"GetDownloadUrlOfComponent");
    LibraryCall call(L"OrloWebService::GetDownloadUrlOfComponent", methods::GET, componentFilePath, projectId, suiteId);
    call.place(L"{version}", version);
    return call.fetchField(error, JsonType::String, url);
}

bool GetXmlInfoOfComponent(ErrorCode& error, std::wstring& xml, const std::wstring& projectId, const std::wstring& suiteId, int version)
{
    if (isAnyEmpty(projectId, suiteId))
        return refuseInput(error, L"GetXmlInfoOfComponent");
    LibraryCall call(L"OrloWebService::GetXmlInfoOfComponent", methods::GET, componentXmlPath, projectId, suiteId);
    const WebAnswer answer = call.query(L"version", std::to_wstring(version)).send(error);
    if (!answer.ok())
        return false;
    xml = utils::toWstring(answer.text());
    return true;
}

bool DeleteComponent(ErrorCode& error, bool& deleted, const std::wstring& projectId, const std::wstring& suiteId)
{
    if (isAnyEmpty(projectId, suiteId))
        return refuseInput(error, L"DeleteComponent");
    // Intended: the platform deletes on a GET.
    LibraryCall call(L"OrloWebService::DeleteComponent", methods::GET, componentPath, projectId, suiteId);
    call.onAConnectionOfItsOwn();
    return call.fetchField(error, JsonType::Boolean, deleted);
}

bool UpgradeComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& suiteId,
                      const std::wstring& body)
{
    if (isAnyEmpty(projectId, suiteId, body))
        return refuseInput(error, L"UpgradeComponent");
    LibraryCall call(L"OrloWebService::UpgradeComponent", methods::PUT, upgradePath, projectId, suiteId);
    call.body(body);
    return call.fetchComponent(error, component, readUpgradedComponent);
}

bool UploadComponent(ErrorCode& error, Component& component, const std::wstring& projectId, const std::wstring& body)
{
    if (isAnyEmpty(projectId, body))
        return refuseInput(error, L"UploadComponent");
    LibraryCall call(L"OrloWebService::UploadComponent", methods::POST, componentUploadPath, projectId);
    call.body(body);
    return call.fetchComponent(error, component, readUploadedComponent);
}

bool AddComponentsWithIds(ErrorCode& error, const std::wstring& projectId, const std::map<std::wstring, std::wstring>& ids)
{
    JsonWriter body;
    body.Add("softwareVersion", firstTwoParts(utils::toString(OrloWebServiceUtils::GetAppVersion())));
    body.StartObject("publicComponentIdToProjectComponentIdMap");
    for (const auto& [publicId, id] : byPublicId(ids))
        body.Add(publicId, id);
    body.EndObject();
    WebCall call(L"Project::AddComponentsWithIds", service::structure, methods::POST, addComponentsPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).body(utils::toWstring(body.Done())).send(error);
    std::wstring code;
    return answer.ok() && readMember(answer.body(), L"code", code) && code == L"success";
}

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
