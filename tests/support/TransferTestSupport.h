#pragma once

#include "Bytes.h"
#include "Waiting.h"
#include "WireTest.h"

#include <OrloProjectManager/Transfer/HttpClient.h>

#include <future>
#include <string>
#include <vector>

namespace orlo::test {

/// The value of a future that must become ready; a default one, with a failure, if it doesn't.
PromiseData outcomeOf(std::future<PromiseData>& future);
PromiseData outcomeOf(std::future<PromiseData>&& future);

void expectOutcome(const PromiseData& outcome, bool success, int status, const std::wstring& message);

/// An answer with the bytes of a file.
Reply fileReply(const std::string& bytes, const std::string& encoding = {});

/// One entry of a batch authority's answer.
struct BatchEntry
{
    std::string datasetFilePath;
    std::string datasetFilePathWithSAS;
};
std::string batchReply(const std::vector<BatchEntry>& entries);

/// A host with the platform at one server and the files at another; no retries.
class TransferTest : public testing::Test
{
protected:
    void TearDown() override;

    /// Makes a file of the user's.
    std::wstring localFile(const std::string& name, const std::string& content) const;
    /// Where a download of the user's goes.
    std::filesystem::path localPath(const std::string& name) const { return host.folder().path("Local") / name; }
    std::wstring wideLocalPath(const std::string& name) const;
    /// A file in the local cache of a dataset.
    std::filesystem::path cached(const std::string& dataset, const std::string& path) const;
    std::vector<std::string> temporaryFiles() const;

    std::string atStore(const std::string& pathAndQuery) const { return store.url() + pathAndQuery; }
    std::string authority(const std::string& remotePath, const std::string& address) const;

    /// Lets the platform answer the batch authority of "ds-1" for the seeds with the entries.
    void expectBatch(const std::string& seedsBody, const std::vector<BatchEntry>& entries);

    ScriptedServer platform;
    ScriptedServer store;
    HostSetup host{platform.url()};
    RetryLimit retries{0};
    LogCapture log;
    ErrorCode error;
};

} // namespace orlo::test
