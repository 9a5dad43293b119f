#pragma once

#include <string>

namespace orlo {

class ErrorCode;

/// An uploaded file, and what it is to be as a module. The category and the type of application are passed on as they are, empty or not.
struct NewModule
{
    std::wstring applicationType;
    std::wstring categoryId;
    std::wstring resourceType;
    std::wstring fileKey;
    std::wstring md5;
    std::wstring name;
    std::wstring url;
};

/// The web functions of the module service. What an address is made of may not be empty, nor a name or a sum.
namespace OrloWebService {

/// out: the member "data" of the answer, as JSON text.
bool GetModuleCategories(ErrorCode& error, std::wstring& out, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                         const std::wstring& resourceType, const std::wstring& categoryTreeType);
/// Of a refusal the ErrorCode holds the service's word.
bool IsModuleCanUpload(ErrorCode& error, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                       const std::wstring& applicationType, const std::wstring& md5, const std::wstring& name,
                       const std::wstring& categoryId, const std::wstring& resourceType, const std::wstring& targetModuleUid);
/// resource: "<id>&<version>", of a refusal too; as it was where the service tells of no module.
bool AddModuleToProject(ErrorCode& error, std::string& resource, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                        const NewModule& module);

} // namespace OrloWebService
} // namespace orlo
