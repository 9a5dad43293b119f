#pragma once

#include "MessageReaders.h"

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// True for every answer with status 200. status: "ALL" for no filter. Empty ids are no filter either.
bool GetMessages(ErrorCode& error, std::vector<http::ORLOHTTPMessage>& out, const std::wstring& status, const std::wstring& projectId,
                 const std::wstring& datasetId);
bool MarkMessage(ErrorCode& error, int messageId, const std::wstring& type, const std::wstring& status);

} // namespace OrloWebService
} // namespace orlo
