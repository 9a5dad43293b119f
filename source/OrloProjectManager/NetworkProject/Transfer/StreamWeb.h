#pragma once

#include <cpprest/http_msg.h>

#include <memory>
#include <string>

namespace orlo {

class ErrorCode;
class FileBody;
class OrloCallbackContext;
class ReceivedFile;

/// The steps of the transfers that talk to a signed address: no token goes there, and of the address no part but the path is
/// ever logged. The answer reaches the context's handler under the step's key; a status that is not 200 clears the context's
/// propagation flag first.
namespace OrloWebService {

using Context = std::shared_ptr<OrloCallbackContext>;

/// `content` must live as long as the context. False, with the handler told, if the content can't be compressed.
bool PutFileAsync(ErrorCode& error, const std::string& url, const std::string& content, const Context& context, bool gzip);
/// The same from an open file, piece by piece. One that is written to meanwhile fails the step.
void PutFileAsync(ErrorCode& error, const std::string& url, const std::shared_ptr<const FileBody>& file, const Context& context);
/// Brings a file into memory; a compressed answer is inflated.
void GetFileAsync(ErrorCode& error, const std::wstring& url, const Context& context);
/// The same for a file of any size: of a large one the handler is given the head only, and `file` holds it all.
void GetFileAsync(ErrorCode& error, const std::wstring& url, const Context& context, const std::shared_ptr<ReceivedFile>& file);
/// Streams a file to disk, through a temporary file that is moved to the target when it is whole.
void GetFileByStreamModeAsync(ErrorCode& error, const std::wstring& url, const std::wstring& target, const Context& context);

/// The same without a chain, for callers that wait: a web function for SendNormalRequestWithRetry. Throws on a transport
/// failure.   Returns: whether the whole file is in its place; without that, the target is as it was.
bool DownloadFileFromUrl(ErrorCode& error, const std::wstring& url, const std::wstring& target);
/// The same for a file that is to be looked at before it gets its name, of any size; a compressed answer is inflated. It lies at the place
/// then, which is of the caller's making.
/// md5: what the store tells of the bytes (Content-MD5), in lower-case hexadecimal digits. Empty where it tells nothing, or something that
/// is no such sum, and where the answer came compressed, since it belongs to what was sent then.
bool GetFileFromUrl(ErrorCode& error, std::string& md5, const std::wstring& url, const std::wstring& place);

using CompressorMaker = std::unique_ptr<web::http::compression::compress_provider> (*)();
/// For tests: what makes the gzip compressors. Null brings cpprestsdk's own back.
void setCompressorMaker(CompressorMaker maker);

} // namespace OrloWebService
} // namespace orlo
