#pragma once

#include <cpprest/json.h>

#include <string>

namespace orlo {

class ErrorCode;

/// Why the platform refused a right to a dataset.
struct DatasetPermissionFailure
{
    int code = -1; ///< -1 too where the platform didn't say, or wasn't reached
    std::string data;
    std::wstring message;
};

/// Who may write a dataset.
struct DatasetEditToken
{
    std::wstring dsId;
    int monitor = -1;
    std::wstring token;
};

namespace OrloPayloadProcessor {

/// Reads the "code" and "msg" of a reply; one that isn't JSON, or has no code, is the message as a whole. Never throws for its input.
DatasetPermissionFailure CreateDatasetPermissionByString(const std::wstring& reply);

/// True if both are there, in their own types. One that isn't is left alone.
bool ExtractTokenByJson(const web::json::value& value, std::string& token, int& monitor);

} // namespace OrloPayloadProcessor

// Each fills its failure record where it returns false for an answer; a failure of the transport throws, and leaves the record alone.
namespace OrloWebService {

/// token: the one that the user holds, or empty; becomes the one that is granted.   monitor: the kind of that.
bool ApplyForWriteDataset(ErrorCode& error, DatasetPermissionFailure& failure, std::string& token, int& monitor,
                          const std::string& datasetId);
bool ApplyForReadDataset(ErrorCode& error, DatasetPermissionFailure& failure, std::string& token, const std::string& datasetId);
/// Only an acknowledged token is good.
bool ObtainPermissionTokenAck(ErrorCode& error, DatasetPermissionFailure& failure, const std::string& datasetId, const std::string& token);
bool ReleaseDatasetPermissionMonitor(ErrorCode& error, DatasetPermissionFailure& failure, const std::string& token);
bool ReleaseDatasetPermissionMonitorForce(ErrorCode& error, const std::wstring& token);
bool GetDatasetEditToken(ErrorCode& error, DatasetEditToken& out, const std::wstring& datasetId);

} // namespace OrloWebService
} // namespace orlo
