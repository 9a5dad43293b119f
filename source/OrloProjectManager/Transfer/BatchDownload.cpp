#include "BatchDownload.h"

#include "../NetworkProject/Call/FieldReaders.h"
#include "../NetworkProject/Call/FieldText.h"
#include "../NetworkProject/Transfer/StreamWeb.h"
#include "../NetworkProject/Transfer/TransferWeb.h"
#include "CachePlace.h"
#include "TransferChain.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

#include <algorithm>
#include <set>

namespace orlo {

namespace {

constexpr std::size_t width = 6;
constexpr const wchar_t* leavesTheCache = L"invalid seed which leaves the cache folder";

/// Batches whose future stays pending. They are kept for good, so that no broken promise surfaces; but those that a host cancels.
struct StalledBatches
{
    static StalledBatches& instance()
    {
        static StalledBatches& batches = utils::neverDestroyed(new StalledBatches);
        return batches;
    }

    void keep(const std::shared_ptr<DownloadBatchFilesHandler>& batch)
    {
        const std::lock_guard lock(mutex);
        all.insert(batch);
    }
    void drop(const std::shared_ptr<DownloadBatchFilesHandler>& batch)
    {
        const std::lock_guard lock(mutex);
        all.erase(batch);
    }

    std::mutex mutex;
    std::set<std::shared_ptr<DownloadBatchFilesHandler>> all;
};

std::string normalised(std::string path)
{
    utils::NormailizeFilePath(path);
    return path;
}

std::vector<std::string> normalised(std::vector<std::string> paths)
{
    for (std::string& path : paths)
        utils::NormailizeFilePath(path);
    return paths;
}

} // namespace

DownloadBatchFilesHandler::DownloadBatchFilesHandler(std::shared_ptr<TransferOutcome> outcome, std::string folder, std::string datasetId,
                                                     std::shared_ptr<OrloCallbackContext> callerContext, EmptyBatch emptyBatch)
    : m_folder(std::move(folder)),
      m_datasetId(std::move(datasetId)),
      m_outcome(std::move(outcome)),
      m_callerContext(std::move(callerContext)),
      m_emptyBatch(emptyBatch)
{}

void DownloadBatchFilesHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                                            std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (status == 200 && stepKey == "AcquireBatchDownloadAuthority") {
        takeEntries(body);
        startFirst(*context);
    }
    else if (status == 200 && stepKey == "GetFileByStreamMode") {
        finishOne(*context);
    }
    if (context->propagate)
        return;
    bool succeeded = false;
    {
        const std::lock_guard lock(m_mutex);
        succeeded = status == 200 && m_authorityAcquired && m_finished == m_total && !m_badSeed;
    }
    finish(status, body, error, succeeded);
}

void DownloadBatchFilesHandler::takeEntries(const std::wstring& body)
{
    const web::json::value answer = jsonOrNull(body);
    const web::json::value* const data = memberOf(answer, L"data");
    if (!data || !data->is_array())
        return;
    for (const web::json::value& element : data->as_array())
        m_entries.push_back(
            {utils::toWstring(fieldText(element, L"datasetFilePath")), utils::toWstring(fieldText(element, L"datasetFilePathWithSAS"))});
    const std::lock_guard lock(m_mutex);
    m_authorityAcquired = true;
    m_total = m_entries.size();
}

void DownloadBatchFilesHandler::startFirst(OrloCallbackContext& context)
{
    if (m_entries.empty())
        return stall(context);
    const std::size_t count = std::min(m_entries.size(), width);
    {
        // All of them are taken at once: a stream that ends while they start goes on behind them.
        const std::lock_guard lock(m_mutex);
        m_next = count;
    }
    for (std::size_t i = 0; i < count; ++i)
        start(m_entries[i], context);
}

void DownloadBatchFilesHandler::finishOne(OrloCallbackContext& context)
{
    bool isLast = false;
    {
        const std::lock_guard lock(m_mutex);
        isLast = ++m_finished == m_total;
    }
    if (isLast)
        context.propagate = false;
    else
        startNext(context);
}

void DownloadBatchFilesHandler::startNext(OrloCallbackContext& context)
{
    std::size_t index = 0;
    {
        const std::lock_guard lock(m_mutex);
        index = m_next++;
    }
    if (index < m_entries.size())
        start(m_entries[index], context);
}

void DownloadBatchFilesHandler::start(const Entry& entry, OrloCallbackContext& context)
{
    if (entry.datasetFilePath.find(L'/') == std::wstring::npos)
        return refuseEntry(context, L"invalid seed which has no '/'");
    std::wstring target;
    if (!findPlaceOfEntry(utils::getLocalFileCachePath(), m_datasetId, m_folder, entry.datasetFilePath, target))
        return refuseEntry(context, leavesTheCache);
    stream(entry, target, context.propagate);
}

void DownloadBatchFilesHandler::refuseEntry(OrloCallbackContext& context, const wchar_t* words)
{
    context.propagate = false;
    {
        const std::lock_guard lock(m_mutex);
        m_badSeed = true;
    }
    log::error(words);
}

void DownloadBatchFilesHandler::stream(const Entry& entry, const std::wstring& target, bool propagate)
{
    const auto context = std::make_shared<ChainContext>(shared_from_this(), propagate);
    ErrorCode& error = context->error;
    http::launchWithRetry(context, error, [&entry, target, context, &error] {
        OrloWebService::GetFileByStreamModeAsync(error, entry.datasetFilePathWithSAS, target, context);
    });
}

void DownloadBatchFilesHandler::stall(OrloCallbackContext& context)
{
    if (m_emptyBatch == EmptyBatch::fails) {
        const std::lock_guard lock(m_mutex);
        m_authorityAcquired = false;
        context.propagate = false;
        return;
    }
    log::warning(L"the platform named no file for a batch download; its future stays pending");
    StalledBatches::instance().keep(shared_from_this());
    m_outcome->settleWhenCancelled([weak = weak_from_this()] {
        if (const auto batch = weak.lock())
            StalledBatches::instance().drop(batch);
    });
}

void DownloadBatchFilesHandler::finish(int status, const std::wstring& body, ErrorCode& error, bool succeeded)
{
    constexpr const char* onComplete = "DownloadBatchFilesHandler::on_complete";
    try {
        if (!succeeded && m_outcome->isCancelled())
            error = cancelledError();
        tellCaller(succeeded ? 200 : status, succeeded ? std::wstring() : isCancelled(error) ? error.GetErrorMessage() : body, error);
    }
    catch (...) {
        return m_outcome->failAsCaught(ORLO_HERE(onComplete));
    }
    if (!succeeded)
        log::error(L"failed to batch download files");
    m_outcome->settle(succeeded ? PromiseData(true, 200, L"success to batch download files") : PromiseData(false, status, body), error,
                      ORLO_HERE(onComplete));
}

void DownloadBatchFilesHandler::tellCaller(int status, const std::wstring& body, ErrorCode& error) const
{
    if (m_callerContext && m_callerContext->handler)
        m_callerContext->handler->on_complete(status, body, "BatchDownloadAction", m_callerContext, error);
}

std::future<PromiseData> downloadBatch(ErrorCode& error, const std::string& folder, const std::string& datasetId,
                                       const std::vector<std::string>& seeds, std::shared_ptr<OrloCallbackContext> callerContext,
                                       EmptyBatch emptyBatch)
{
    return startTransfer(ORLO_HERE("orlo::HttpClient::downloadBatchFiles"), error, [=](const auto& outcome) {
        if (seeds.empty()) {
            log::error(L"empty seed passed into worker_download_batch_files");
            return outcome->refuse(L"no download seed");
        }
        if (utils::holdsNul(utils::toWstring(datasetId)) || utils::holdsNul(utils::toWstring(folder))) {
            log::error(leavesTheCache);
            return outcome->refuse(leavesTheCache);
        }
        const auto batch = std::make_shared<DownloadBatchFilesHandler>(outcome, normalised(folder), datasetId, callerContext, emptyBatch);
        startChain(batch, [datasetId, asked = normalised(seeds)](ErrorCode& chainError, const auto& context) {
            OrloWebService::AcquireBatchDownloadAuthorityAsync(chainError, datasetId, asked, context);
        });
    });
}

namespace HttpClient {

std::future<PromiseData> downloadBatchFiles(ErrorCode& error, const std::string& folder, const std::string& datasetId,
                                            const std::vector<std::string>& seeds, std::shared_ptr<OrloCallbackContext> callerContext)
{
    return downloadBatch(error, folder, datasetId, seeds, std::move(callerContext), EmptyBatch::pends);
}

} // namespace HttpClient

} // namespace orlo
