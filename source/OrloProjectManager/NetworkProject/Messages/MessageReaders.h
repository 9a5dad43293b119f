#pragma once

#include <OrloProjectManager/Messages/IMessage.h>

#include <cpprest/json.h>

#include <string>
#include <vector>

namespace orlo {

namespace http {

/// A message, as the platform sends it.
struct ORLOHTTPMessage
{
    int messageId = 0;
    std::wstring title;
    std::wstring content;
    std::wstring projectId;
    std::wstring datasetId;
    std::wstring messageType;
    std::wstring messageStatus;
    std::wstring resourceId;
    std::wstring resourceType;
    std::wstring senderId;
    std::wstring senderAction;
    std::wstring sendTime;
};

} // namespace http

/// Empty for a value without a text.
std::wstring textOf(EMessageType type);
std::wstring textOf(EMessageStatus status);
/// Returns: false for a text that is none of a type.
bool readMessageType(const std::wstring& text, EMessageType& type);
/// Returns: false for a text that is no state of a message; "ALL" is none.
bool readMessageStatus(const std::wstring& text, EMessageStatus& status);

namespace OrloPayloadProcessor {

/// The list under "data"; without one the log says so, and nothing is read.
void CreateHttpMessagesByJson(const web::json::value& json, std::vector<http::ORLOHTTPMessage>& out);

/// The second form of the service's answers; an empty record where it says that it is empty. Throws where a key is missing.
http::ORLOHTTPPayloadMessage readPayloadMessage(const web::json::value& json);

} // namespace OrloPayloadProcessor
} // namespace orlo
