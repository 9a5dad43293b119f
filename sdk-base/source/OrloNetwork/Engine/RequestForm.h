#pragma once

#include "Curl.h"

#include <cpprest/http_msg.h>

#include <string>

namespace orlo::http {

/// A request of cpprestsdk as libcurl is to send it: the same bytes on the wire as cpprestsdk's own.
struct RequestForm
{
    explicit RequestForm(const web::http::http_request& request);

    /// Tells the handle. The form must live as long as the handle's transfer.
    void applyTo(CURL* easy) const;

    bool isSecure() const;
    bool hasBody() const { return bodySize != none; }

    static constexpr curl_off_t none = -2;
    static constexpr curl_off_t unknown = -1; ///< goes in chunks

    std::string address; ///< without user and fragment, which go on no wire
    std::string place;   ///< host and port, for words about a failure
    std::string method;
    curl_off_t bodySize = none;
    curl::List headers;

private:
    void add(const std::string& line);
};

} // namespace orlo::http
