#pragma once

#include "TransferChain.h"

#include <optional>
#include <string>

namespace orlo {

class FileBody;

/// What is sent: bytes in memory, or a large file from where it lies.
struct UploadContent
{
    std::string bytes;
    bool gzip = false;
    std::shared_ptr<const FileBody> file; ///< null: the bytes
};

/// Reads what is to be sent.   Returns: none where the file is refused; the outcome stands then.
std::optional<UploadContent> contentOrRefusal(TransferOutcome& outcome, const std::wstring& path, bool gzip);

/// The last step of an upload. The content and the signed address must live as long as the context.
void putContent(const UploadContent& content, const std::string& address, const std::shared_ptr<OrloCallbackContext>& context,
                ErrorCode& error);

/// Hears the two steps of an upload: the authority, which gives a signed address, and the sending of the bytes.
class UploadFileHandler final : public IOrloCallback
{
public:
    UploadFileHandler(std::shared_ptr<TransferOutcome> outcome, UploadContent content);

    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;

private:
    void takeAuthority(const std::wstring& body);

    bool m_authorityAcquired = false;
    bool m_putDone = false;
    /// Held for the whole chain, so that a repeated step can send it again.
    const UploadContent m_content;
    std::string m_uploadAddress;
    std::wstring m_remotePath;
    std::wstring m_result;
    const std::shared_ptr<TransferOutcome> m_outcome;
};

/// What the future carries after an upload: the path in the store, with what the store told about the file where it did.
std::wstring uploadResult(const std::wstring& remotePath, const std::wstring& answer);

} // namespace orlo
