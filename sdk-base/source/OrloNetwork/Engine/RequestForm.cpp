#include "RequestForm.h"

#include <BaseCommon/NativeText.h>

#include <cpprest/uri_builder.h>

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

namespace orlo::http {

namespace {

std::string utf8(const utility::string_t& text)
{
    return utils::fromNativeToUtf8(text);
}

web::uri addressOf(const web::http::http_request& request)
{
    web::uri whole = request.absolute_uri();
    if (whole.user_info().empty() && whole.fragment().empty())
        return whole;
    return web::uri_builder(whole).set_user_info(utility::string_t()).set_fragment(utility::string_t()).to_uri();
}

std::string placeOf(const web::uri& address, bool isSecure)
{
    const int port = address.port() > 0 ? address.port() : isSecure ? 443 : 80;
    return utf8(address.host()) + ":" + std::to_string(port);
}

curl_off_t sizeOfBody(const web::http::http_request& request)
{
    if (!request.body().is_valid())
        return RequestForm::none;
    if (!request.headers().has(web::http::header_names::content_length))
        return RequestForm::unknown;
    const utility::size64_t size = request.headers().content_length();
    if (size > static_cast<utility::size64_t>(std::numeric_limits<curl_off_t>::max()))
        throw std::length_error("the body of a request is too large");
    return static_cast<curl_off_t>(size);
}

bool isOneOf(const utility::string_t& name, const utility::string_t& one, const utility::string_t& other)
{
    return name == one || name == other;
}

} // namespace

RequestForm::RequestForm(const web::http::http_request& request) : method(utf8(request.method())), bodySize(sizeOfBody(request))
{
    const web::uri uri = addressOf(request);
    address = utf8(uri.to_string());
    place = placeOf(uri, isSecure());
    for (const auto& [name, value] : request.headers()) {
        // libcurl says itself how long the body is.
        if (isOneOf(name, web::http::header_names::content_length, web::http::header_names::transfer_encoding))
            continue;
        const std::string text = utf8(value);
        add(text.empty() ? utf8(name) + ";" : utf8(name) + ": " + text);
    }
    // What libcurl would add of its own accord.
    for (const char* name : {"Accept", "Expect", "Content-Type"}) {
        if (!request.headers().has(utils::toNative(std::string(name))))
            add(std::string(name) + ":");
    }
}

bool RequestForm::isSecure() const
{
    return address.compare(0, 6, "https:") == 0;
}

void RequestForm::add(const std::string& line)
{
    // libcurl sends what it is given, so that a line break would forge a header.
    if (line.find_first_of(std::string("\r\n\0", 3)) != std::string::npos)
        throw std::invalid_argument("a header holds a line break");
    curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
    if (!longer)
        throw std::bad_alloc();
    static_cast<void>(headers.release());
    headers.reset(longer);
}

void RequestForm::applyTo(CURL* easy) const
{
    curl::set(easy, CURLOPT_URL, address);
    curl::set(easy, CURLOPT_PATH_AS_IS, 1L);
    curl::setPointer(easy, CURLOPT_HTTPHEADER, headers.get());
    if (hasBody()) {
        curl::set(easy, CURLOPT_UPLOAD, 1L);
        curl::setSize(easy, CURLOPT_INFILESIZE_LARGE, bodySize);
    }
    else if (method == "HEAD") {
        curl::set(easy, CURLOPT_NOBODY, 1L);
    }
    else if (method == "POST" || method == "PUT") {
        curl::set(easy, CURLOPT_POST, 1L); // an empty one says that it is empty
        curl::setSize(easy, CURLOPT_POSTFIELDSIZE_LARGE, 0);
    }
    else {
        curl::set(easy, CURLOPT_HTTPGET, 1L);
    }
    if (method != "HEAD" || hasBody())
        curl::set(easy, CURLOPT_CUSTOMREQUEST, method);
}

} // namespace orlo::http
