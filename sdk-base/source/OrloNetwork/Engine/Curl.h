#pragma once

// libcurl's handles with their ends, and its options with their failures.

#include <chrono>
// cpprestsdk makes macros of two words that libcurl asks clang about.
#pragma push_macro("dllimport")
#pragma push_macro("dllexport")
#undef dllimport
#undef dllexport
#include <curl/curl.h>
#pragma pop_macro("dllexport")
#pragma pop_macro("dllimport")
#include <memory>
#include <optional>
#include <string>

namespace orlo::http::curl {

struct EasyEnd
{
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiEnd
{
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct ListEnd
{
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using Easy = std::unique_ptr<CURL, EasyEnd>;
using Multi = std::unique_ptr<CURLM, MultiEnd>;
using List = std::unique_ptr<curl_slist, ListEnd>;

/// Each throws std::runtime_error where libcurl gives none.
Easy makeEasy();
Multi makeMulti();
/// Makes libcurl ready, once in the process.
void makeReady();

/// Sets an option. Throws std::runtime_error where libcurl refuses it.
void set(CURL* easy, CURLoption option, long value);
void set(CURL* easy, CURLoption option, const std::string& value); ///< libcurl keeps a copy
void setSize(CURL* easy, CURLoption option, curl_off_t value);
template <class Pointer>
void setPointer(CURL* easy, CURLoption option, Pointer pointer);
void require(CURLcode code);
void require(CURLMcode code);

long numberOf(CURL* easy, CURLINFO info);
curl_off_t timeOf(CURL* easy, CURLINFO info);

struct Ended
{
    CURL* easy = nullptr;
    std::optional<CURLcode> code; ///< none: none has ended
};

/// One whose transfer has ended since it was asked last.
Ended endedOn(CURLM* multi);
/// A transfer on a handle that is attached as long as this lives.
class Ride
{
public:
    /// Throws std::runtime_error where libcurl refuses, as `step` does.
    Ride(CURLM* multi, CURL* easy);
    ~Ride();
    Ride(const Ride&) = delete;
    Ride& operator=(const Ride&) = delete;

    /// Returns: how it ended; none while it goes on.
    std::optional<CURLcode> step();

private:
    CURLM* m_multi;
    CURL* m_easy;
};

/// Waits until a connection of the handle has something, the time has come, or somebody wakes it; a second at the most.
void waitUntil(CURLM* multi, std::chrono::steady_clock::time_point when);

template <class Pointer>
void setPointer(CURL* easy, CURLoption option, Pointer pointer)
{
    require(curl_easy_setopt(easy, option, pointer));
}

} // namespace orlo::http::curl
