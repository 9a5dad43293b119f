#include "TransportCode.h"

#include <cpprest/http_msg.h>

namespace orlo::http {

std::optional<int> transportCodeOfCaught()
{
    try {
        throw;
    }
    catch (const web::http::http_exception& failure) {
        return failure.error_code().value();
    }
    catch (...) {
        return std::nullopt;
    }
}

} // namespace orlo::http
