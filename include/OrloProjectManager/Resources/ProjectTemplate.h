#pragma once

#include <OrloProjectManager/Export.h>

#include <string>
#include <vector>

namespace orlo {

/// A whole project that a user keeps as a starting point for others.
struct ProjectTemplate
{
    std::wstring id;
    std::wstring templateName;
    std::wstring srcProjectId; ///< the project that was kept
};

namespace http {

/// A project template, as the platform sends it.
struct ORLOHTTPPayloadTemplate
{
    std::wstring id;
    std::wstring templateName;
    std::wstring srcProjectId;
};

} // namespace http

namespace HttpClient {

// Why one of these failed is in the log alone. Threads: any; each blocks its caller.

/// Keeps a project as a template of the signed-in user's.
/// srcProjectId, templateName: not empty, or nothing is sent. A retry after a lost answer may make a second template.
/// Returns: the new template's id; empty on failure.   Requests: one, retried.
ORLO_PROJECT_API std::wstring createTemplate(const std::wstring& srcProjectId, const std::wstring& templateName);
/// Returns: what the platform says of it.   Requests: one, retried.
ORLO_PROJECT_API bool deleteTemplate(const std::wstring& templateId);
/// Appends the signed-in user's templates, in the platform's order.
/// Returns: false, with the list as it was, on failure.   Requests: one, retried.
ORLO_PROJECT_API bool getProjectTemplatesOfUser(std::vector<ProjectTemplate>& out);

} // namespace HttpClient
} // namespace orlo
