#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Design/BuildingItemWeb.h"
#include "../Projects/Project.h"

#include <utility>

namespace orlo {

namespace {

/// An operation of one request, which ends with words of its own where it fails.
template <class... Parameters, class... Arguments>
bool oneRequest(const CallSite& site, ErrorCode& error, const wchar_t* failure, bool (*webFunction)(ErrorCode&, Parameters...),
                Arguments&&... arguments)
{
    return CallFrame(site).run(error, [&] {
        const bool done = retried(webFunction, error, arguments...);
        if (!done)
            log::error(failure);
        return done;
    });
}

/// Runs the form with an ErrorCode and hands over the platform's words about it, whatever the result.
template <class Write>
bool toldInWords(http::HttpMessage& message, const Write& write)
{
    ErrorCode error;
    const bool done = write(error);
    http::ParseErrorBody(message, error.GetErrorMessage());
    return done;
}

} // namespace

bool Project::GetLatestBuildingItems(std::vector<ProjectItemConfig>& items, int& revision, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetLatestBuildingItems")).run(error, [&] {
        items.clear();
        revision = -1;
        int latest = -1;
        auto found = fetched(&OrloWebService::GetLatestConfigByProjectIdAndOwnerId, error, &latest, m_id, m_id, ConfigType::SubItem);
        if (!found || latest < 0) {
            log::warning(L"Failed to get latest building items.");
            return false;
        }
        items = std::move(*found);
        revision = latest;
        return true;
    });
}

bool Project::GetBuildingItems(std::vector<ProjectItemConfig>& items, int revision, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::GetBuildingItems"), error, L"Project::GetBuildingItems error!",
                      &OrloWebService::GetBuildingItems, items, m_id, revision);
}

bool Project::AddBuildingItem(std::wstring& subItemId, int revision, const std::wstring& content, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::AddBuildingItem"), error, L"Project::AddBuildingItem error!",
                      &OrloWebService::AddBuildingItem, subItemId, m_id, revision, content);
}

bool Project::AddBuildingItem(http::HttpMessage& message, std::wstring& subItemId, int revision, const std::wstring& content)
{
    return toldInWords(message, [&](ErrorCode& error) { return AddBuildingItem(subItemId, revision, content, error); });
}

bool Project::UpdateBuildingItem(int revision, const std::wstring& subItemId, const std::wstring& content, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::UpdateBuildingItem"), error, L"Project::UpdateBuildingItem error!",
                      &OrloWebService::UpdateBuildingItem, m_id, revision, subItemId, content);
}

bool Project::UpdateBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId, const std::wstring& content)
{
    return toldInWords(message, [&](ErrorCode& error) { return UpdateBuildingItem(revision, subItemId, content, error); });
}

bool Project::DeleteBuildingItem(int revision, const std::wstring& subItemId, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::DeleteBuildingItem"), error, L"Project::DeleteBuildingItem error!",
                      &OrloWebService::DeleteBuildingItem, m_id, revision, subItemId);
}

bool Project::DeleteBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId)
{
    return toldInWords(message, [&](ErrorCode& error) { return DeleteBuildingItem(revision, subItemId, error); });
}

bool Project::AssociateDatasetAndBuildingItem(const std::wstring& datasetId, const std::wstring& subItemId, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::AssociateDatasetAndBuildingItem"), error,
                      L"Project::AssociateDatasetAndBuildingItem error!", &OrloWebService::AssociateDatasetAndBuildingItem, m_id, datasetId,
                      subItemId);
}

bool Project::GetBuildingItemIdsByDatasetId(std::vector<std::wstring>& ids, const std::wstring& datasetId, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::GetBuildingItemIdsByDatasetId"), error, L"Project::GetBuildingItemIdsByDatasetId error!",
                      &OrloWebService::GetBuildingItemIdsByDatasetId, ids, m_id, datasetId);
}

bool Project::GetDatasetIdsByBuildingItemId(std::vector<std::wstring>& ids, const std::wstring& subItemId, ErrorCode& error)
{
    // Intended: the words are those of the operation above.
    return oneRequest(ORLO_HERE("orlo::Project::GetDatasetIdsByBuildingItemId"), error, L"Project::GetBuildingItemIdsByDatasetId error!",
                      &OrloWebService::GetDatasetIdsByBuildingItemId, ids, m_id, subItemId);
}

bool Project::GetLatestProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetLatestProjectItemConfig")).run(error, [&] {
        if (type == ConfigType::SubItem) {
            if (retried(&OrloWebService::GetLatestBuildingItem, error, config, m_id, subItemId))
                return true;
            log::warning(L"Failed to get latest building item.");
            return false;
        }
        int revision = -1;
        auto found = fetched(&OrloWebService::GetLatestConfigByProjectIdAndOwnerId, error, &revision, subItemId, m_id, type);
        if (!found || found->size() != 1) {
            log::warning(L"Failed to get latest configurations.");
            return false;
        }
        config = std::move(found->front());
        return true;
    });
}

bool Project::GetProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, int version, ErrorCode& error)
{
    const CallSite site = ORLO_HERE("orlo::Project::GetProjectItemConfig");
    if (type == ConfigType::SubItem)
        return oneRequest(site, error, L"Project::GetBuildingItem error!", &OrloWebService::GetBuildingItem, config, m_id, subItemId,
                          version);
    return oneRequest(site, error, L"Project::GetProjectItemConfig error!", &OrloWebService::GetProjectItemConfig, config, m_id, subItemId,
                      type, version);
}

bool Project::CreateProjectItemConfig(const std::wstring& subItemId, ConfigType type, const std::wstring& content, ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::CreateProjectItemConfig"), error, L"Project::CreateProjectItemConfig error!",
                      &OrloWebService::CreateProjectItemConfig, m_id, subItemId, type, content);
}

bool Project::CreateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type,
                                      const std::wstring& content)
{
    return toldInWords(message, [&](ErrorCode& error) { return CreateProjectItemConfig(subItemId, type, content, error); });
}

bool Project::UpdateProjectItemConfig(const std::wstring& subItemId, ConfigType type, int version, const std::wstring& content,
                                      ErrorCode& error)
{
    return oneRequest(ORLO_HERE("orlo::Project::UpdateProjectItemConfig"), error, L"Project::UpdateProjectItemConfig error!",
                      &OrloWebService::UpdateProjectItemConfig, m_id, subItemId, type, version, content);
}

bool Project::UpdateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type, int version,
                                      const std::wstring& content)
{
    return toldInWords(message, [&](ErrorCode& error) { return UpdateProjectItemConfig(subItemId, type, version, content, error); });
}

} // namespace orlo
