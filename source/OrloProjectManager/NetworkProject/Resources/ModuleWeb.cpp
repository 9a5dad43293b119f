#include "ModuleWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"

#include <BaseCommon/NativeText.h>

namespace orlo::OrloWebService {

namespace {

constexpr const wchar_t* categoriesPath =
    L"/{spaceType}/{spaceTypeParameter}/types/{resourceType}/category_tree_types/{categoryTreeType}/categories";
constexpr const wchar_t* moduleCheckPath = L"/{spaceType}/{spaceTypeParameter}/types/module/vmd_file";
constexpr const wchar_t* newModulesPath = L"/{spaceType}/{spaceTypeParameter}/types/module/vmd_files";

constexpr const wchar_t* emptyParameter = L"param is empty";

WebCall callOfSpace(const wchar_t* name, const web::http::method& method, const wchar_t* path, const std::wstring& spaceType,
                    const std::wstring& spaceTypeParameter)
{
    return WebCall(name, service::module, method, path).place(L"{spaceType}", spaceType).place(L"{spaceTypeParameter}", spaceTypeParameter);
}

bool notNormal(WebAnswer& answer, const std::wstring& name)
{
    answer.complain(name + L" - response is not normal: ");
    return false;
}

/// The service won't have it.   word: its reason.
bool refused(ErrorCode& error, const std::wstring& word)
{
    error.Assign(error::exception, makeHttpError(L"Invalid argument", word, 400, 0));
    return false;
}

/// What the service says of a module that was handed over.
struct ModuleReceipt
{
    bool success = false;
    std::wstring errorCode;
    std::string resourceId;
    int resourceVersion = 0;
};

ModuleReceipt readReceipt(const web::json::value& json)
{
    ModuleReceipt receipt;
    readMember(json, L"success", receipt.success);
    readMember(json, L"error_code", receipt.errorCode);
    readMember(json, L"resource_id", receipt.resourceId);
    readMember(json, L"resource_version", receipt.resourceVersion);
    return receipt;
}

web::json::value bodyOf(const NewModule& module)
{
    const web::json::value file = JsonBody()
                                      .add(L"application_type", module.applicationType)
                                      .add(L"category_id", module.categoryId)
                                      .add(L"resource_type", module.resourceType)
                                      .add(L"access_ctl", L"private_ctl")
                                      .add(L"file_key", module.fileKey)
                                      .add(L"enforce", web::json::value::boolean(true))
                                      .add(L"md5", module.md5)
                                      .add(L"name", module.name)
                                      .add(L"url", module.url)
                                      .done();
    return JsonBody().add(L"vmd_files", web::json::value::array({file})).done();
}

} // namespace

bool GetModuleCategories(ErrorCode& error, std::wstring& out, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                         const std::wstring& resourceType, const std::wstring& categoryTreeType)
{
    if (isAnyEmpty(spaceType, spaceTypeParameter, resourceType, categoryTreeType))
        return refuse(error, error::emptyParameter, emptyParameter);
    constexpr const wchar_t* name = L"OrloWebService::GetModuleCategories";
    WebCall call = callOfSpace(name, methods::GET, categoriesPath, spaceType, spaceTypeParameter);
    WebAnswer answer = call.place(L"{resourceType}", resourceType).place(L"{categoryTreeType}", categoryTreeType).send(error);
    if (!answer.ok())
        return false;
    if (!answer.findData())
        return notNormal(answer, name);
    out = utils::fromNative(answer.data().serialize());
    return true;
}

bool IsModuleCanUpload(ErrorCode& error, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                       const std::wstring& applicationType, const std::wstring& md5, const std::wstring& name,
                       const std::wstring& categoryId, const std::wstring& resourceType, const std::wstring& targetModuleUid)
{
    if (isAnyEmpty(spaceType, spaceTypeParameter, md5, name, resourceType))
        return refuse(error, error::emptyParameter, emptyParameter);
    constexpr const wchar_t* operation = L"OrloWebService::IsModuleCanUpload";
    WebCall call = callOfSpace(operation, methods::POST, moduleCheckPath, spaceType, spaceTypeParameter);
    call.body(JsonBody()
                  .add(L"application_type", applicationType)
                  .add(L"md5", md5)
                  .add(L"name", name)
                  .add(L"category_id", categoryId)
                  .add(L"resource_type", resourceType)
                  .add(L"target_module_uid", targetModuleUid)
                  .done());
    WebAnswer answer = call.send(error);
    if (!answer.ok())
        return false;
    const web::json::value* const verdict = firstOfData(answer.body());
    std::wstring word;
    if (!verdict || !readMember(*verdict, L"error_code", word))
        return notNormal(answer, operation);
    return word == L"none" || refused(error, word);
}

bool AddModuleToProject(ErrorCode& error, std::string& resource, const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                        const NewModule& module)
{
    if (isAnyEmpty(spaceType, spaceTypeParameter, module.resourceType, module.fileKey, module.md5, module.name, module.url))
        return refuse(error, error::emptyParameter, emptyParameter);
    // Intended: the log knows it by the name of the categories.
    constexpr const wchar_t* name = L"OrloWebService::GetModuleCategories";
    WebCall call = callOfSpace(name, methods::POST, newModulesPath, spaceType, spaceTypeParameter);
    WebAnswer answer = call.body(bodyOf(module)).send(error);
    if (!answer.ok())
        return false;
    if (!answer.data().is_array())
        return notNormal(answer, name);
    const web::json::value* const first = firstOfData(answer.body());
    if (!first)
        return true;
    const ModuleReceipt receipt = readReceipt(*first);
    resource = receipt.resourceId + "&" + std::to_string(receipt.resourceVersion);
    return receipt.success || refused(error, receipt.errorCode);
}

} // namespace orlo::OrloWebService
