#include "RequestProbe.h"

#include <BaseCommon/NativeText.h>

namespace orlo::test {

web::http::http_response get(const std::wstring& url, ErrorCode& error)
{
    return get(url, error, {});
}

web::http::http_response get(const std::wstring& url, ErrorCode& error, web::http::client::http_client_config config)
{
    const auto client = OrloWebService::CreateClient(url, config);
    const web::uri path(utils::toNative(std::string("/thing")));
    const auto request = OrloWebService::CreateRequest(web::http::methods::GET, path, web::json::value::null());
    return OrloWebService::ExecuteRequest(*client, request, error);
}

web::http::http_response answerOf(unsigned short status, const std::string& body, const std::string& contentType)
{
    web::http::http_response response(status);
    response.set_body(std::string(body), contentType);
    return response;
}

} // namespace orlo::test
