#include "Curl.h"

#include <algorithm>
#include <stdexcept>

namespace orlo::http::curl {

void makeReady()
{
    // For the threads of libcurl older than 7.84 no two may come here at once, which a static sees to.
    static const CURLcode made = curl_global_init(CURL_GLOBAL_DEFAULT);
    require(made);
}

Easy makeEasy()
{
    makeReady();
    Easy easy(curl_easy_init());
    if (!easy)
        throw std::runtime_error("libcurl gives no handle");
    return easy;
}

Multi makeMulti()
{
    makeReady();
    Multi multi(curl_multi_init());
    if (!multi)
        throw std::runtime_error("libcurl gives no handle");
    return multi;
}

void require(CURLcode code)
{
    if (code != CURLE_OK)
        throw std::runtime_error(std::string("libcurl refuses an option: ") + curl_easy_strerror(code));
}

void require(CURLMcode code)
{
    if (code != CURLM_OK)
        throw std::runtime_error(std::string("libcurl fails: ") + curl_multi_strerror(code));
}

void set(CURL* easy, CURLoption option, long value)
{
    require(curl_easy_setopt(easy, option, value));
}

void set(CURL* easy, CURLoption option, const std::string& value)
{
    require(curl_easy_setopt(easy, option, value.c_str()));
}

void setSize(CURL* easy, CURLoption option, curl_off_t value)
{
    require(curl_easy_setopt(easy, option, value));
}

long numberOf(CURL* easy, CURLINFO info)
{
    long value = 0;
    curl_easy_getinfo(easy, info, &value);
    return value;
}

curl_off_t timeOf(CURL* easy, CURLINFO info)
{
    curl_off_t value = 0;
    curl_easy_getinfo(easy, info, &value);
    return value;
}

Ended endedOn(CURLM* multi)
{
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi, &left)) {
        if (message->msg == CURLMSG_DONE)
            return {message->easy_handle, message->data.result};
    }
    return {};
}

Ride::Ride(CURLM* multi, CURL* easy) : m_multi(multi), m_easy(easy)
{
    require(curl_multi_add_handle(m_multi, m_easy));
}

Ride::~Ride()
{
    curl_multi_remove_handle(m_multi, m_easy);
}

std::optional<CURLcode> Ride::step()
{
    int running = 0;
    require(curl_multi_perform(m_multi, &running));
    return endedOn(m_multi).code;
}

void waitUntil(CURLM* multi, std::chrono::steady_clock::time_point when)
{
    using std::chrono::milliseconds;
    constexpr milliseconds longest{1000};
    const auto left = std::chrono::ceil<milliseconds>(when - std::chrono::steady_clock::now());
    curl_multi_poll(multi, nullptr, 0, static_cast<int>(std::clamp(left, milliseconds(0), longest).count()), nullptr);
}

} // namespace orlo::http::curl
