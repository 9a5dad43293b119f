#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloNetwork/WebRequest.h>

#include <string>

namespace orlo::test {

/// Sends "GET /thing" to a server and waits for the answer.
web::http::http_response get(const std::wstring& url, ErrorCode& error);
web::http::http_response get(const std::wstring& url, ErrorCode& error, web::http::client::http_client_config config);

/// An answer as ExecuteRequest returns it.
web::http::http_response answerOf(unsigned short status, const std::string& body, const std::string& contentType = "application/json");

} // namespace orlo::test
