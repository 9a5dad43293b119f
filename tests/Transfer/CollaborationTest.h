#pragma once

#include "support/RequestFailures.h"
#include "support/TransferTestSupport.h"

#include <OrloProjectManager/Transfer/CollaborationFileManager.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace orlo::test {

using FilePtr = std::shared_ptr<ICollaborationFile>;

inline constexpr const wchar_t* noDatasetWords = L"E [ORLOSDK]CollaborationFileManager::UploadFile OrloWebService::CreateDataSet error.";
inline constexpr const wchar_t* noVersionWords = L"E [ORLOSDK]CollaborationFileManager::UploadFile OrloWebService::CreateVersion error.";
inline constexpr const wchar_t* noUploadWords = L"E [ORLOSDK]CollaborationFileManager::UploadFileByArkiv 上传文件失败";

void expectFile(const FilePtr& file, const std::string& id, std::int32_t version, std::int64_t length);

/// One request of a chain that goes through the retry loop, and what surrounds it.
struct Step
{
    std::string method;
    std::string target;
    std::string body;
    std::wstring words;             ///< logged at the end when the request fails
    std::function<void()> prepare;  ///< expects what is sent before it
    std::function<FilePtr()> chain; ///< the whole operation
};

/// A host whose platform keeps the files too, so that the order of all requests is one script. Three retries, no pause.
class CollaborationTest : public TransferTest
{
protected:
    CollaborationFileManager& manager() const;

    Expectation& expectAuthority(const std::string& fileName = "plan.dwg");
    Expectation& expectAuthorityByArkiv(const std::string& fileName = "plan.dwg");
    Expectation& expectPut(const std::string& bytes = "bytes");
    /// The whole upload of "plan.dwg", which ends at the remote path "r/plan.dwg".
    void expectUpload();
    /// The same by Arkiv; `told` is what the store tells about the file.
    void expectUploadByArkiv(const std::string& told = R"({"fileId":"file-7","versionIndex":2,"length":5})");
    /// The dataset of "plan.dwg" in the folder "f-1", which gets the id "d-9".
    void expectDataset();

    std::string goodAuthority() const { return authority("r/plan.dwg", platform.url() + "/store/1?sig=abc"); }
    std::string goodAuthorityByArkiv() const { return R"({"code":10000,"data":)" + goodAuthority() + "}"; }

    /// As for any request that is retried. Nothing is sent after it.
    void expectFailuresOf(const Step& step);

    /// The log's warnings and errors; what the transfers tell of their progress is left out.
    Lines problems() const;

    const std::wstring file = localFile("plan.dwg", "bytes");
    const RetryLimit threeRetries{3};
};

} // namespace orlo::test
