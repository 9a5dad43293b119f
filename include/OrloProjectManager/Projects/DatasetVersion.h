#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orlo::http {

/// A version of a dataset, as the platform sends it.
struct ORLOHTTPPayloadDatasetVersion
{
    int id = 0;
    int version = 0;
    std::string dataSetId;
    std::wstring dataSetSourceFile;
    std::wstring displayVersion;
    std::wstring creationTime;
    std::wstring status;
    std::wstring versionStatus; ///< stays empty, whatever the platform sends
    std::string verify;
    std::string verifyStatus;
    std::string metaInfo;
    std::string viewingInfo;
    std::string rawData;
    std::string rawDataFile;
    std::string refInfoFile;
    std::shared_ptr<std::string> refInfo; ///< null where the platform sends no text
    int suiteCount = 0;
    std::int64_t size = 0; ///< bytes
};

} // namespace orlo::http
