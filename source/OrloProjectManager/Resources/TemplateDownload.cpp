#include "TemplateDownload.h"

#include "../Frame/Retried.h"
#include "../NetworkProject/Resources/TemplateWeb.h"
#include "../NetworkProject/Transfer/StreamWeb.h"
#include "../Transfer/CachePlace.h"
#include "../Transfer/WaitingTransfer.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo {

namespace {

constexpr const char* templateWorker = "orlo::worker_download_template_file";

PromiseData broughtTemplate(const std::wstring& path)
{
    return {true, 200, path};
}

PromiseData noTemplate(const std::wstring& words)
{
    return {false, 400, words};
}

PromiseData failedTemplate(const CallSite& site, const std::wstring& words)
{
    log::errorAt(site, words);
    return noTemplate(words);
}

/// The file of a name in the folder of templates; `bring` fetches it if it isn't there. The name is made of the platform's words.
template <class Bring>
PromiseData throughTemplatesFolder(const std::wstring& name, const std::wstring& type, const Bring& bring)
{
    const std::wstring folder = utils::getTemplatesPath();
    const std::wstring path = folder + L"/" + name + L"." + utils::LowerString(type);
    if (!utils::isPlaceInside(folder, path))
        return failedTemplate(ORLO_HERE(templateWorker), L"invalid template which leaves the templates folder");
    return isCached(folder, path) ? broughtTemplate(path) : bring(path);
}

PromiseData fromPublicLibrary(const DatasetSampleFile& sample, ErrorCode& error)
{
    const auto resource = fetched(&OrloWebService::GetTemplateResource, error, sample.templateId);
    if (!resource)
        return failedTemplate(ORLO_HERE(templateWorker), error.GetErrorMessage());
    return throughTemplatesFolder(sample.templateId + L"-" + resource->id, sample.type, [&](const std::wstring& path) {
        const auto url = fetched(&OrloWebService::GetTemplateResourceUrl, error, resource->id, sample.templateId);
        return url && retried(&OrloWebService::DownloadFileFromUrl, error, *url, path)
                   ? broughtTemplate(path)
                   : failedTemplate(ORLO_HERE(templateWorker), error.GetErrorMessage());
    });
}

PromiseData fromLibraryOfProject(const DatasetSampleFile& sample, ErrorCode& error)
{
    if (sample.uri.empty())
        return failedTemplate(ORLO_HERE(templateWorker), L"样板文件的uri为空");
    return throughTemplatesFolder(sample.uri, sample.type, [&](const std::wstring& path) {
        return IFileManager::DownloadFileByArkiv(sample.uri, path, error).get().success
                   ? broughtTemplate(path)
                   : failedTemplate(ORLO_HERE(templateWorker), L"样板文件从Arkiv下载失败");
    });
}

PromiseData bringTemplate(const std::wstring& datasetId, const std::wstring& projectId, ErrorCode& error)
{
    const auto sample = fetched(&OrloWebService::GetDatasetSampleFile, error, datasetId, projectId);
    if (!sample)
        return failedTemplate(ORLO_HERE(templateWorker), error.GetErrorMessage());
    // Intended: neither this nor the last failure is logged.
    if (sample->id.empty())
        return noTemplate(L"工作单元没有配置样本。");
    if (sample->samplePlateFrom == L"From_Common")
        return fromPublicLibrary(*sample, error);
    if (sample->samplePlateFrom == L"From_Customize")
        return fromLibraryOfProject(*sample, error);
    return noTemplate(L"样板来源异常：既不是公共库又不是项目库。");
}

} // namespace

std::future<PromiseData> downloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId, ErrorCode& error)
{
    return startTransfer(ORLO_HERE("orlo::TemplateManager::DownloadTemplateFile"), error, [datasetId, projectId](const auto& outcome) {
        settleByWaiting(*outcome, ORLO_HERE(templateWorker), [&](ErrorCode& own) { return bringTemplate(datasetId, projectId, own); });
    });
}

} // namespace orlo
