#include "Body/JsonText.h"
#include "NetworkCommon.h"
#include "WebRequest.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

namespace orlo {

namespace {

utility::string_t key(const char* name)
{
    return utils::toNative(std::string(name));
}

} // namespace

namespace OrloPayloadProcessor {

bool ParseORLOHTTPGenericResponse(const web::json::value& value, http::ORLOHTTPGenericResponse& response)
{
    // Only what fits: cut to 32 bits, another number could read as the mark of success.
    if (!value.has_integer_field(key("code")) || !value.at(key("code")).as_number().is_int32())
        return false;
    response.code = value.at(key("code")).as_integer();
    if (value.has_field(key("data")))
        response.data = value.at(key("data"));
    if (value.has_string_field(key("message")))
        response.message = utils::fromNative(value.at(key("message")).as_string());
    return true;
}

} // namespace OrloPayloadProcessor

namespace http {

void ParseErrorBody(HttpMessage& message, const std::wstring& body)
{
    try {
        const web::json::value envelope = parseJson(utils::toString(body));
        ORLOHTTPGenericResponse response;
        if (OrloPayloadProcessor::ParseORLOHTTPGenericResponse(envelope, response)) {
            message.code = response.code;
            message.message = response.message;
        }
        else if (envelope.has_string_field(key("message"))) { // words are worth telling without a code, too
            message.message = utils::fromNative(envelope.at(key("message")).as_string());
        }
    }
    catch (const std::exception&) { // a body that is no JSON says nothing that could be read
    }
}

} // namespace http

} // namespace orlo
