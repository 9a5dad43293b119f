#pragma once

#include "FileUpload.h"

namespace orlo {

/// Hears the two steps of a module's upload: the signing of an address, and the sending of the bytes.
class UploadModuleHandler final : public IOrloCallback
{
public:
    UploadModuleHandler(std::shared_ptr<TransferOutcome> outcome, UploadContent content);

    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;

private:
    void takeSignature(const std::wstring& body);
    std::wstring result() const;

    bool m_signed = false;
    bool m_put = false;
    /// Held for the whole chain, so that a repeated step can send it again.
    const UploadContent m_content;
    std::string m_fileKey;
    std::string m_url;
    std::wstring m_result;
    const std::shared_ptr<TransferOutcome> m_outcome;
};

} // namespace orlo
