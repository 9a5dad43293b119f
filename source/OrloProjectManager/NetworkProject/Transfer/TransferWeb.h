#pragma once

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class OrloCallbackContext;

/// The steps of the transfers that ask the platform for a signed address. The answer reaches the context's handler under
/// the step's key; a status that is not 200 clears the context's propagation flag first.
namespace OrloWebService {

using Context = std::shared_ptr<OrloCallbackContext>;

void AcquireUploadAuthorityAsync(ErrorCode& error, const std::wstring& fileName, const std::wstring& filePath, const Context& context);
void AcquireUploadAuthorityByArkivAsync(ErrorCode& error, const std::wstring& fileName, const std::wstring& filePath,
                                        const std::wstring& targetFolderId, const Context& context);
void AcquireDownloadAuthorityAsync(ErrorCode& error, const std::wstring& remotePath, const Context& context);
void AcquireDownloadAuthorityByArkivAsync(ErrorCode& error, const std::wstring& fileId, int version, const Context& context);

/// The same for callers that wait. address: empty where the platform tells none.
bool GetDownloadAddress(ErrorCode& error, std::wstring& address, const std::wstring& remotePath);
bool GetDocumentDownloadAddress(ErrorCode& error, std::wstring& address, const std::wstring& fileId, int version);

/// What a module's file is asked for with, and where the module stands.
struct ModuleFileRequest
{
    std::wstring body;
    std::wstring resourceType;
    std::wstring spaceType;
    std::wstring spaceTypeParameter;
};
void AcquireDownloadAuthorityAsyncForModuleFile(ErrorCode& error, const ModuleFileRequest& request, const Context& context);

/// A file that is to become a module's, and where it is to stand.
struct ModuleUploadRequest
{
    std::wstring spaceType;
    std::wstring spaceTypeParameter;
    std::wstring resourceType;
    std::wstring fileName;
    std::wstring md5;
};
/// False, with the handler told, if any of these is empty.
bool SignModuleUploadUrlAsync(ErrorCode& error, const ModuleUploadRequest& request, const Context& context);

/// False, with the handler told, if there is nothing to ask for.
bool AcquireBatchDownloadAuthorityAsync(ErrorCode& error, const std::string& datasetId, const std::vector<std::string>& seeds,
                                        const Context& context);

} // namespace OrloWebService
} // namespace orlo
