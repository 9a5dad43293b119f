#include "Failure.h"

#include "../RequestNote.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>

#include <algorithm>
#include <initializer_list>

namespace orlo::http {

namespace {

constexpr const char* resolving = "Error resolving address";
constexpr const char* connecting = "Failed to connect to any resolved endpoint";
constexpr const char* handshaking = "Error in SSL handshake";
constexpr const char* writing = "Failed to write request body";
constexpr const char* readingHead = "Failed to read HTTP status line";
constexpr const char* readingBody = "Failed to read response body";
constexpr const char* readingChunk = "Retrieving message chunk header";
constexpr const char* badHead = "Invalid HTTP status line";

// As numbers: cpprestsdk's are those of Linux, whatever the system.
constexpr int unreadable = 0;
constexpr int hostNotFound = 1;
constexpr int endOfFile = 2;
constexpr int inputOutput = 5;
constexpr int aborted = 103;
constexpr int tooLate = 110;
constexpr int unreachable = 113;
constexpr int operationCancelled = 125;

const char* phraseOf(Stage stage)
{
    switch (stage) {
    case Stage::looksUp:
    case Stage::connects:
    case Stage::handshakes:
        return connecting;
    case Stage::sends:
        return writing;
    case Stage::awaitsAnswer:
        return readingHead;
    case Stage::receives:
        break;
    }
    return readingBody;
}

std::exception_ptr exceptionWith(int number, const std::string& text, const std::shared_ptr<RequestDetails>& about)
{
    if (about)
        return std::make_exception_ptr(TransportError(transportFailure(number, text), about));
    return std::make_exception_ptr(transportFailure(number, text));
}

bool holds(const std::string& text, const char* words)
{
    return text.find(words) != std::string::npos;
}

/// OpenSSL tells of the certificate with a number, of the name and of a side without TLS in words.
NetworkFailure kindOfHandshake(const Failure& failure)
{
    constexpr long notYetValid = 9;
    constexpr long expired = 10;
    if (failure.verifyResult == notYetValid || failure.verifyResult == expired || holds(failure.words, "certificate has expired"))
        return NetworkFailure::certificateExpired;
    if (holds(failure.words, "does not match target") || holds(failure.words, "matches target host name"))
        return NetworkFailure::wrongHostName;
    for (const char* const words : {"wrong version number", "packet length too long", "http request", "unknown protocol"}) {
        if (holds(failure.words, words))
            return NetworkFailure::noTls;
    }
    if (failure.verifyResult != 0 || failure.code == CURLE_PEER_FAILED_VERIFICATION)
        return NetworkFailure::certificateNotTrusted;
    return NetworkFailure::tlsFailed;
}

NetworkFailure kindOfBreak(const Failure& failure)
{
    if (failure.isThroughProxy && failure.stage < Stage::sends && holds(failure.words, "CONNECT"))
        return NetworkFailure::proxyRefused;
    return failure.stage == Stage::receives ? NetworkFailure::answerCutShort : NetworkFailure::connectionLost;
}

void tellOf(RequestDetails& about, NetworkFailure failure, const std::string& words)
{
    about.failure = failure;
    about.words = utils::toWstring(words);
}

std::string sentence(const std::string& phrase, const std::string& place, const std::string& why)
{
    return phrase + " (" + place + (why.empty() ? ")" : ": " + why + ")");
}

bool isOneOf(CURLcode code, std::initializer_list<CURLcode> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool isOfHandshake(CURLcode code)
{
    return isOneOf(code, {CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_ENGINE_NOTFOUND, CURLE_SSL_ENGINE_SETFAILED,
                          CURLE_SSL_CERTPROBLEM, CURLE_SSL_CIPHER, CURLE_SSL_ENGINE_INITFAILED, CURLE_SSL_CACERT_BADFILE,
                          CURLE_SSL_CRL_BADFILE, CURLE_SSL_ISSUER_ERROR, CURLE_SSL_PINNEDPUBKEYNOTMATCH, CURLE_SSL_INVALIDCERTSTATUS});
}

int numberOfBreak(const Failure& failure)
{
    return failure.systemError > 0 ? static_cast<int>(failure.systemError) : inputOutput;
}

/// A handle keeps the error of an earlier call of the system, one of its former transfer even. Where the last one failed, libcurl's words
/// tell it; but for connecting, which ends with that call.
bool isOfThisTransfer(const Failure& failure)
{
    return failure.code == CURLE_COULDNT_CONNECT ||
           failure.words.find(std::generic_category().message(static_cast<int>(failure.systemError))) != std::string::npos;
}

struct Told
{
    int number;
    const char* phrase;
};

Told telling(const Failure& failure)
{
    if (isOfHandshake(failure.code))
        return {failure.verifyResult != 0 ? static_cast<int>(failure.verifyResult) : static_cast<int>(failure.code), handshaking};
    switch (failure.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return {hostNotFound, resolving};
    case CURLE_COULDNT_CONNECT:
        return {unreachable, connecting};
    case CURLE_OPERATION_TIMEDOUT:
        return {tooLate, phraseOf(failure.stage)};
    case CURLE_GOT_NOTHING:
        return {aborted, readingHead};
    case CURLE_PARTIAL_FILE:
        return {endOfFile, failure.isChunked ? readingChunk : readingBody};
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return {unreadable, badHead};
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        // A proxy that refuses the way to the host leaves no error of the system.
        if (failure.systemError == 0 && failure.stage < Stage::sends)
            return {unreadable, connecting};
        if (failure.systemError == 0 && failure.stage == Stage::receives)
            return {unreadable, readingBody};
        return {numberOfBreak(failure), phraseOf(failure.stage)};
    default:
        return {unreadable, phraseOf(failure.stage)};
    }
}

} // namespace

web::http::http_exception transportFailure(int number, const std::string& text)
{
    return {std::error_code(number, std::generic_category()), utils::toNative(text)};
}

NetworkFailure kindOf(const Failure& failure)
{
    if (isOfHandshake(failure.code))
        return kindOfHandshake(failure);
    switch (failure.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return NetworkFailure::hostNotFound;
    case CURLE_COULDNT_RESOLVE_PROXY:
        return NetworkFailure::proxyNotFound;
    case CURLE_COULDNT_CONNECT:
        return NetworkFailure::notConnected;
    case CURLE_OPERATION_TIMEDOUT:
        return kindOfTimeOut(failure.stage);
    case CURLE_PROXY:
        return NetworkFailure::proxyRefused;
    case CURLE_GOT_NOTHING:
        return NetworkFailure::connectionLost;
    case CURLE_PARTIAL_FILE:
        return NetworkFailure::answerCutShort;
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        return kindOfBreak(failure);
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return NetworkFailure::answerUnreadable;
    default:
        return NetworkFailure::other;
    }
}

NetworkFailure kindOfTimeOut(Stage stage)
{
    switch (stage) {
    case Stage::looksUp:
    case Stage::connects:
    case Stage::handshakes:
        return NetworkFailure::timeoutConnecting;
    case Stage::sends:
        return NetworkFailure::timeoutSending;
    case Stage::awaitsAnswer:
        return NetworkFailure::timeoutWaiting;
    case Stage::receives:
        break;
    }
    return NetworkFailure::timeoutReceiving;
}

std::exception_ptr exceptionOf(Failure failure, const std::shared_ptr<RequestDetails>& about)
{
    if (!isOfThisTransfer(failure))
        failure.systemError = 0;
    const Told told = telling(failure);
    // The system's words are shorter than libcurl's, and the same each time.
    const bool isOfSystem = failure.systemError > 0 && isOneOf(failure.code, {CURLE_COULDNT_CONNECT, CURLE_SEND_ERROR, CURLE_RECV_ERROR});
    const std::string why = isOfSystem ? std::generic_category().message(static_cast<int>(failure.systemError)) : failure.words;
    if (about)
        tellOf(*about, kindOf(failure), why);
    return exceptionWith(told.number, sentence(told.phrase, failure.place, why), about);
}

std::exception_ptr timedOut(Stage stage, const std::string& place, const char* why, const std::shared_ptr<RequestDetails>& about)
{
    if (about)
        tellOf(*about, kindOfTimeOut(stage), why);
    return exceptionWith(tooLate, sentence(phraseOf(stage), place, why), about);
}

std::exception_ptr cancelled()
{
    return exceptionWith(operationCancelled, "Operation canceled", nullptr);
}

} // namespace orlo::http
