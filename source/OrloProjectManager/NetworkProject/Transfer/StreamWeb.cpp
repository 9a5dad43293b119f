#include "StreamWeb.h"

#include "../Call/AsyncCall.h"
#include "../Call/Refusal.h"
#include "FileBody.h"
#include "GzipPayload.h"
#include "LocalFiles.h"
#include "ReceivedFile.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/TimeCostingHelper.h>
#include <OrloNetwork/Body/JsonText.h>
#include <OrloNetwork/Body/SinkBuffer.h>
#include <OrloNetwork/Body/TempFile.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/RequestNote.h>
#include <OrloNetwork/WebRequest.h>

#include <cpprest/rawptrstream.h>

#include <mutex>
#include <optional>

namespace orlo::OrloWebService {

using http::SinkBuffer;
using web::http::http_response;

namespace {

// One label for all transfers of a kind: parallel ones overwrite each other's clock in the log, which is accepted.
constexpr const char* putLabel = "{70F6DC40-AE5E-4168-AE5C-A6C7B5001777}";
constexpr const char* getLabel = "{52182BD1-774E-4DB7-8DE2-CC12526FFDC3}";
constexpr const char* streamLabel = "{8D78B598-F02A-40AD-9984-17126A4D3B38}";

void beginTransfer(const wchar_t* words, const char* label)
{
    log::info(words);
    TimeCostingHelper::instance()->begin(label);
}

/// The L and the quotation marks stand in the line, as they always have.
void endTransfer(const std::wstring& words, const char* label)
{
    TimeCostingHelper::instance()->end(label);
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(TimeCostingHelper::instance()->getDelta(label));
    log::info(L"L\"" + words + L"\" --- time costing:" + utils::toWstring(static_cast<long long>(taken.count())) + L" ms.");
}

/// Signed addresses go out as they stand, but for blanks, which no address may hold.
/// name: of the web function.
Exchange signedExchange(const std::wstring& name, const web::http::method& method, std::wstring address, Traffic traffic = Traffic::files)
{
    utils::strReplace(address, L" ", L"%20");
    web::http::client::http_client_config config;
    config.set_timeout(secondsAsTimeout(timeoutOfFirstUse()));
    const auto request = std::make_shared<web::http::http_request>(method);
    // Empty on purpose, and set before any body: a signed address takes no content type, and the body would bring one.
    request->headers().add(web::http::header_names::content_type, utility::string_t());
    const auto note = http::noteRequest(name);
    return {CreateClient(address, config, traffic, note), request, note};
}

/// Sends the bytes from where they are, and keeps their owner for as long as anything may read them.
void setBody(web::http::http_request& request, const Payload& payload)
{
    using concurrency::streams::rawptr_buffer;
    const rawptr_buffer<std::uint8_t> raw(payload.bytes, payload.size);
    const auto& base = raw.get_base();
    const std::shared_ptr<concurrency::streams::details::basic_streambuf<std::uint8_t>> kept(base.get(),
                                                                                             [base, owner = payload.owner](auto*) {});
    request.set_body(concurrency::streams::istream(concurrency::streams::streambuf<std::uint8_t>(kept)), payload.size, utility::string_t());
}

/// Logs a status that is not 200.
bool okOrLogged(const http_response& response, const wchar_t* words)
{
    if (response.status_code() == web::http::status_codes::OK)
        return true;
    log::error(words + std::to_wstring(response.status_code()));
    return false;
}

/// The same, and stops the chain.
bool okOrStopped(const Step& step, const http_response& response, const wchar_t* words)
{
    const bool ok = okOrLogged(response, words);
    if (!ok)
        step.stop();
    return ok;
}

/// The answer to an upload as JSON text; empty for one that is no JSON, since the store may answer anything.
std::wstring jsonOrNothing(const std::string& body)
{
    try {
        return body.empty() || !utils::isValidUtf8(body) ? std::wstring() : utils::fromNative(http::parseJson(body).serialize());
    }
    catch (const std::exception&) { // half a surrogate pair is told by another type than the rest
        return {};
    }
}

bool prepare(const std::string& content, const Context& context, bool gzip, Payload& payload, const Step& step)
{
    if (!gzip) {
        payload = {reinterpret_cast<const std::uint8_t*>(content.data()), content.size(), context};
        return true;
    }
    if (const wchar_t* const complaint = gzipped(content, payload)) {
        log::error(complaint);
        step.complete(5555, complaint);
        return false;
    }
    log::info(L"infoId:" + utils::toWstring(uuid::newUUIDV4()) + L" - gzipPayloadSize:" + std::to_wstring(payload.size));
    return true;
}

std::string textOf(const std::vector<unsigned char>& bytes)
{
    return {bytes.begin(), bytes.end()};
}

bool looksCompressed(const std::vector<unsigned char>& bytes)
{
    return bytes.size() >= 3 && bytes[0] == 0x1F && bytes[1] == 0x8B;
}

/// One wide character for each byte.
std::wstring widened(const std::vector<unsigned char>& bytes)
{
    std::wstring wide;
    wide.reserve(bytes.size());
    utils::expectFilling(wide.data(), wide.capacity() * sizeof(wchar_t));
    wide.resize(bytes.size());
    std::copy(bytes.begin(), bytes.end(), wide.begin());
    return wide;
}

void fileArrived(const Step& step, const Arrival& arrival, ReceivedFile& file)
{
    const http_response& response = arrival.response;
    const int status = response.status_code();
    file.end();
    const std::vector<unsigned char>& bytes = file.head();
    noteStatus(*step.error, arrival, status < 400 ? std::string() : textOf(bytes));
    if (!okOrStopped(step, response, L"OrloWebService::GetFileAsync - code:")) {
        step.complete(status, step.error->GetErrorMessage(), {});
    }
    else if (looksCompressed(bytes)) {
        log::error(L"[OrloWebService::GetFileAsync] It is a gzip stream but response does not have required headers");
        step.stop();
        step.complete(500, L"a_gzip_stream_extracted", {});
    }
    else {
        step.complete(status, widened(bytes), bytes);
    }
    endTransfer(L"END TO GetFileAsync.", getLabel);
}

/// Where the bytes of a stream go: all of them to a temporary file, and the first of them to memory too, for the words of
/// an answer that turns out to be an error.
struct StreamTarget
{
    explicit StreamTarget(std::wstring wholeFile) : target(std::move(wholeFile)) { file.emplace(temporaryName()); }

    void receive(const std::uint8_t* bytes, std::size_t count)
    {
        const std::lock_guard lock(mutex);
        if (!file)
            return;
        constexpr std::size_t enoughForWords = std::size_t{64} << 10;
        if (head.size() < enoughForWords)
            head.append(reinterpret_cast<const char*>(bytes), std::min(count, enoughForWords - head.size()));
        file->write(bytes, count);
    }

    /// As that of a ReceivedFile.
    void discard() noexcept
    {
        const std::lock_guard lock(mutex);
        file.reset();
    }

    bool moveToPlace()
    {
        file->close();
        utils::createDirectoryRecursively(FilePath(target).GetDirectoryName());
        if (file->moveTo(target))
            return true;
        log::error(L"Failed to move file to \"" + target + L"\"");
        return false;
    }

    static std::wstring temporaryName()
    {
        prepareLocalFiles();
        return utils::getTempPath() + L"/" + utils::generateGuid();
    }

    std::wstring target;
    std::optional<http::TempFile> file;
    std::string head;
    std::mutex mutex;
};

void streamArrived(const Step& step, const Arrival& arrival, StreamTarget& stream)
{
    const http_response& response = arrival.response;
    noteStatus(*step.error, arrival, stream.head);
    if (!okOrStopped(step, response, L"OrloWebService::GetFileByStreamModeAsync - code:"))
        stream.discard();
    else if (!stream.moveToPlace())
        step.stop();
    step.complete(response.status_code(), std::wstring());
    endTransfer(L"END TO GetFileByStreamModeAsync.", streamLabel);
}

constexpr const wchar_t* badAddress = L"the address is not a valid URI";

/// name: of the web function. Throws on a transport failure, and web::uri_exception for an address that is none.
Arrival getAndWait(const std::wstring& name, ErrorCode& error, const std::wstring& url, const concurrency::streams::ostream& sink)
{
    const Exchange made = signedExchange(name, methods::GET, url);
    made.request->set_response_stream(sink);
    LogRequest(*made.client, *made.request);
    const http_response response = SendAndWait(*made.client, *made.request, made.note.get());
    LogResponse(response, *made.request, error);
    return {response, made};
}

/// In lower-case hexadecimal digits; empty for a text that isn't the Base64 of 16 bytes.
std::string md5OfBase64(const utility::string_t& text)
{
    constexpr std::size_t bytesOfMd5 = 16;
    constexpr const char* digits = "0123456789abcdef";
    try {
        const std::vector<unsigned char> sum = utility::conversions::from_base64(text);
        std::string all;
        for (const unsigned char byte : sum)
            all.append({digits[byte >> 4], digits[byte & 15]});
        return sum.size() == bytesOfMd5 ? all : std::string();
    }
    catch (const std::exception&) {
        return {};
    }
}

std::string toldMd5(const http_response& response)
{
    utility::string_t sum;
    response.headers().match(web::http::header_names::content_md5, sum);
    return response.headers().has(web::http::header_names::content_encoding) ? std::string() : md5OfBase64(sum);
}

/// giveBody: what throws fails the attempt. confirm: the same, when the store has taken all.
void put(const Step& step, const std::string& url, std::function<void(web::http::http_request&)> giveBody, std::function<void()> confirm)
{
    const auto prepare = [url, giveBody = std::move(giveBody)] {
        const Exchange made = signedExchange(L"OrloWebService::PutFileAsync", methods::PUT, utils::toWstring(url));
        giveBody(*made.request);
        return made;
    };
    const auto answer = std::make_shared<std::string>();
    const auto receive = [answer](const std::uint8_t* bytes, std::size_t count) {
        answer->append(reinterpret_cast<const char*>(bytes), std::min(count, largestAnswer - answer->size()));
    };
    exchange(step, prepare, SinkBuffer::stream(receive, SinkBuffer::Place::inPlace),
             [step, answer, confirm = std::move(confirm)](const Arrival& arrival) {
                 const http_response& response = arrival.response;
                 noteStatus(*step.error, arrival, *answer);
                 const bool ok = okOrStopped(step, response, L"OrloWebService::PutFileAsync - code:");
                 if (ok)
                     confirm();
                 step.complete(response.status_code(), ok ? jsonOrNothing(*answer) : step.error->GetErrorMessage());
                 endTransfer(L"END TO PutFile.", putLabel);
             });
}

} // namespace

bool PutFileAsync(ErrorCode& error, const std::string& url, const std::string& content, const Context& context, bool gzip)
{
    const Step step{"PutFile", context, &error};
    beginTransfer(L"BEGIN TO PutFileAsync.", putLabel);
    Payload payload;
    if (!prepare(content, context, gzip, payload, step))
        return false;
    const auto giveBody = [payload, gzip](web::http::http_request& request) {
        if (gzip)
            request.headers().add(web::http::header_names::content_encoding, utils::toNative(std::string("gzip")));
        setBody(request, payload);
    };
    put(step, url, giveBody, [] {});
    return true;
}

void PutFileAsync(ErrorCode& error, const std::string& url, const std::shared_ptr<const FileBody>& file, const Context& context)
{
    beginTransfer(L"BEGIN TO PutFileAsync.", putLabel);
    const auto giveBody = [file](web::http::http_request& request) {
        file->requireUnchanged();
        request.set_body(file->stream(), file->size(), utility::string_t());
    };
    put({"PutFile", context, &error}, url, giveBody, [file] { file->requireUnchanged(); });
}

void GetFileAsync(ErrorCode& error, const std::wstring& url, const Context& context)
{
    GetFileAsync(error, url, context, std::make_shared<ReceivedFile>(std::wstring()));
}

void GetFileAsync(ErrorCode& error, const std::wstring& url, const Context& context, const std::shared_ptr<ReceivedFile>& file)
{
    const Step step{"GetFile", context, &error};
    beginTransfer(L"BEGIN TO GetFileAsync.", getLabel);
    const auto get = [url] {
        const Exchange made = signedExchange(L"OrloWebService::GetFileAsync", methods::GET, url);
        made.request->headers().add(web::http::header_names::accept_encoding, utils::toNative(std::string("gzip")));
        return made;
    };
    const auto sink = SinkBuffer::stream([file](const std::uint8_t* bytes, std::size_t count) { file->receive(bytes, count); },
                                         SinkBuffer::Place::apart, [file](const http_response& response) { file->begin(response); });
    exchange(
        step, get, sink, [step, file](const Arrival& arrival) { fileArrived(step, arrival, *file); }, [file] { file->discard(); });
}

void GetFileByStreamModeAsync(ErrorCode& error, const std::wstring& url, const std::wstring& target, const Context& context)
{
    const Step step{"GetFileByStreamMode", context, &error};
    beginTransfer(L"BEGIN TO GetFileByStreamModeAsync.", streamLabel);
    const auto stream = std::make_shared<StreamTarget>(target);
    const auto receive = [stream](const std::uint8_t* bytes, std::size_t count) { stream->receive(bytes, count); };
    exchange(
        step, [url] { return signedExchange(L"OrloWebService::GetFileByStreamModeAsync", methods::GET, url, Traffic::filesOfBatch); },
        SinkBuffer::stream(receive), [step, stream](const Arrival& arrival) { streamArrived(step, arrival, *stream); },
        [stream] { stream->discard(); });
}

bool DownloadFileFromUrl(ErrorCode& error, const std::wstring& url, const std::wstring& target)
try {
    const http::Operation operation;
    const auto stream = std::make_shared<StreamTarget>(target);
    const auto receive = [stream](const std::uint8_t* bytes, std::size_t count) { stream->receive(bytes, count); };
    const Arrival arrival =
        getAndWait(L"OrloWebService::DownloadFileFromUrl", error, url, SinkBuffer::stream(receive, SinkBuffer::Place::inPlace));
    noteStatus(error, arrival, stream->head);
    if (!okOrLogged(arrival.response, L"OrloWebService::DownloadFileFromUrl - code:"))
        return false;
    if (stream->moveToPlace())
        return true;
    return refuse(error, error::exception, L"the file can't be moved to its place");
}
catch (const web::uri_exception&) { // its text is the address, signature and all
    return refuse(error, error::badInput, badAddress);
}

bool GetFileFromUrl(ErrorCode& error, std::string& md5, const std::wstring& url, const std::wstring& place)
try {
    const http::Operation operation;
    const auto file = std::make_shared<ReceivedFile>(place);
    const auto receive = [file](const std::uint8_t* bytes, std::size_t count) { file->receive(bytes, count); };
    const auto begin = [file](const http_response& response) { file->begin(response); };
    const Arrival arrival =
        getAndWait(L"OrloWebService::GetFileFromUrl", error, url, SinkBuffer::stream(receive, SinkBuffer::Place::inPlace, begin));
    file->end();
    noteStatus(error, arrival, arrival.response.status_code() < 400 ? std::string() : textOf(file->head()));
    if (!okOrLogged(arrival.response, L"OrloWebService::GetFileFromUrl - code:"))
        return false;
    md5 = toldMd5(arrival.response);
    if (file->isLarge() ? file->moveToPlace() : utils::writeFileAtomically(place, textOf(file->head())))
        return true;
    return refuse(error, error::exception, L"the file can't be written");
}
catch (const web::uri_exception&) {
    return refuse(error, error::badInput, badAddress);
}

} // namespace orlo::OrloWebService
