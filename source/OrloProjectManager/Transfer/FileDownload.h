#pragma once

#include "TransferChain.h"

#include <string>

namespace orlo {

class ReceivedFile;

/// Hears the two steps of a single download: the authority, which gives a signed address, and the file.
class DownloadFileHandler final : public IOrloFileCallback
{
public:
    DownloadFileHandler(std::shared_ptr<TransferOutcome> outcome, std::wstring localPath);

    /// What a request without an answer reaches.
    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override;
    void on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data, const std::string& stepKey,
                     std::shared_ptr<OrloCallbackContext> context, ErrorCode& error) override;

private:
    void takeAddress(const std::wstring& body, const std::string& stepKey);
    void getFile(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error);
    bool write(const std::vector<unsigned char>& data);

    bool m_authorityAcquired = false;
    bool m_fetched = false;
    bool m_written = false;
    std::wstring m_localPath;
    std::wstring m_address;
    std::shared_ptr<ReceivedFile> m_received; ///< by the attempt that ended last
    const std::shared_ptr<TransferOutcome> m_outcome;
};

} // namespace orlo
