#pragma once

#include "Curl.h"

#include <BaseCommon/RequestError.h>

#include <cpprest/http_msg.h>

#include <exception>
#include <memory>
#include <string>

namespace orlo::http {

/// How far a transfer came.
enum class Stage { looksUp, connects, handshakes, sends, awaitsAnswer, receives };

/// What is known of a transfer that failed.
struct Failure
{
    CURLcode code = CURLE_OK;
    Stage stage = Stage::looksUp;
    long systemError = 0; ///< errno of the failed call of the system, 0 where none failed
    long verifyResult = 0;
    bool isChunked = false;
    bool isThroughProxy = false;
    std::string place; ///< host and port
    std::string words; ///< libcurl's own
};

/// What a failed transfer throws. Number 0: an answer that can't be read, which is not worth another attempt.
web::http::http_exception transportFailure(int number, const std::string& text);

/// What it is called for a host.
NetworkFailure kindOf(const Failure& failure);
NetworkFailure kindOfTimeOut(Stage stage);

/// The number that cpprestsdk gives for such a failure, which the retry rule goes by, and words that say what failed,
/// with whom and why. They hold no path, no query and no credential.
/// about: the request; null where nothing is known of it.
std::exception_ptr exceptionOf(Failure failure, const std::shared_ptr<RequestDetails>& about);

/// The transfer made no headway, or not enough, in the time that it had.
std::exception_ptr timedOut(Stage stage, const std::string& place, const char* why, const std::shared_ptr<RequestDetails>& about);
std::exception_ptr cancelled();

} // namespace orlo::http
