#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/DatasetReaders.h"
#include "../NetworkProject/Projects/DatasetWeb.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "Project.h"

namespace orlo {

using http::ORLOHTTPPayloadDataset;

namespace {

ORLOHTTPPayloadDataset workunit(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                const std::wstring& ownerId)
{
    ORLOHTTPPayloadDataset dataset;
    dataset.name = name;
    dataset.teamId = teamId;
    dataset.specialtyId = specialtyId;
    dataset.ownerId = ownerId;
    dataset.type = L"workunit";
    return dataset;
}

DatasetInfo createDataset(const ORLOHTTPPayloadDataset& wanted, ErrorCode& error)
{
    if (const auto created = fetched(&OrloWebService::CreateDataSet, error, wanted))
        return toDatasetInfo(*created);
    log::error(L"fail to create dataset!");
    return {};
}

} // namespace

bool Project::GetDatasetBySatatus(DatasetStatus status, std::vector<DatasetInfo>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetDatasetBySatatus")).run(error, [&] {
        if (!datasetStatusTexts().knows(status))
            return false;
        const auto records = fetched(&OrloWebService::GetDatasetByStatus, error, m_id, datasetStatusTexts().textOf(status));
        if (!records)
            return false;
        for (const ORLOHTTPPayloadDataset& record : *records)
            out.push_back(toDatasetInfo(record));
        return true;
    });
}

DatasetInfo Project::CreateDataset(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                   const std::wstring& ownerId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::CreateDataset")).run(error, [&] {
        return createDataset(workunit(name, teamId, specialtyId, ownerId), error);
    });
}

DatasetInfo Project::CreateDatasetById(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                       const std::wstring& ownerId, const std::string& datasetId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::CreateDatasetById")).run(error, [&] {
        ORLOHTTPPayloadDataset wanted = workunit(name, teamId, specialtyId, ownerId);
        wanted.id = datasetId;
        return createDataset(wanted, error);
    });
}

} // namespace orlo
