#pragma once

#include <OrloProjectManager/Issues/IIssue.h>

#include <cpprest/json.h>

#include <string>

namespace orlo {

EORLOIssueType issueTypeOf(const std::wstring& text);
EORLOIssueStatus issueStatusOf(const std::wstring& text);
std::wstring textOf(EORLOIssueStatus status);

namespace OrloPayloadProcessor {

/// Returns: false for a value that is no object. Without a list of issues there is none.
bool readIssues(const web::json::value& json, http::ORLOHTTPQueryIssueAck& ack);

} // namespace OrloPayloadProcessor
} // namespace orlo
