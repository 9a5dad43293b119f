#include "Answer.h"

#include "../Store/Json.h"

#include <cstdint>

namespace orlo::platform {

Answer enveloped(const std::string& data)
{
    return bare(json::Object().number("code", 10000).text("message", "OK").raw("data", data).str());
}

Answer done()
{
    return enveloped("null");
}

Answer idAnswer(const std::string& id)
{
    return enveloped(json::Object().text("id", id).str());
}

Answer bare(std::string text)
{
    return {200, std::move(text)};
}

Answer refused(int status, const std::string& message)
{
    return {status, json::Object().number("code", std::int64_t{status} * 100).text("message", message).raw("data", "null").str()};
}

} // namespace orlo::platform
