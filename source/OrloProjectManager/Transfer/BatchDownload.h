#pragma once

#include "TransferChain.h"

#include <string>
#include <vector>

namespace orlo {

/// What becomes of a batch whose authority names no file at all.
enum class EmptyBatch {
    pends, ///< its future never becomes ready, which callers of the batch itself are promised
    fails  ///< for a caller that waits without a bound
};

/// Hears the steps of a batch: the authority, which names the files with their signed addresses, and then the end of each
/// stream. Six streams at a time are under way, and each that ends starts the next.
class DownloadBatchFilesHandler final : public IOrloCallback, public std::enable_shared_from_this<DownloadBatchFilesHandler>
{
public:
    /// folder: below the dataset's cache folder, normalised.
    DownloadBatchFilesHandler(std::shared_ptr<TransferOutcome> outcome, std::string folder, std::string datasetId,
                              std::shared_ptr<OrloCallbackContext> callerContext, EmptyBatch emptyBatch);

    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;

private:
    struct Entry
    {
        std::wstring datasetFilePath;
        std::wstring datasetFilePathWithSAS;
    };

    void takeEntries(const std::wstring& body);
    void startFirst(OrloCallbackContext& context);
    void finishOne(OrloCallbackContext& context);
    void startNext(OrloCallbackContext& context);
    void start(const Entry& entry, OrloCallbackContext& context);
    void refuseEntry(OrloCallbackContext& context, const wchar_t* words);
    void stream(const Entry& entry, const std::wstring& target, bool propagate);
    void stall(OrloCallbackContext& context);
    void finish(int status, const std::wstring& body, ErrorCode& error, bool succeeded);
    void tellCaller(int status, const std::wstring& body, ErrorCode& error) const;

    std::mutex m_mutex; ///< guards the three counts and the flags
    std::size_t m_total = 0;
    std::size_t m_next = 0;
    std::size_t m_finished = 0;
    bool m_authorityAcquired = false;
    bool m_badSeed = false;
    const std::string m_folder;
    const std::string m_datasetId;
    std::vector<Entry> m_entries; ///< does not change once the first stream runs
    const std::shared_ptr<TransferOutcome> m_outcome;
    const std::shared_ptr<OrloCallbackContext> m_callerContext;
    const EmptyBatch m_emptyBatch;
};

std::future<PromiseData> downloadBatch(ErrorCode& error, const std::string& folder, const std::string& datasetId,
                                       const std::vector<std::string>& seeds, std::shared_ptr<OrloCallbackContext> callerContext,
                                       EmptyBatch emptyBatch);

} // namespace orlo
