#pragma once

#include <OrloProjectManager/Resources/IProjectFont.h>

namespace orlo::OrloWebService {

bool GetProjectFonts(ErrorCode& error, http::ORLOHTTPPayloadFontInfoAck& out, const std::wstring& projectId);
bool GetFontDownloadUri(ErrorCode& error, http::ORLOHTTPPayloadFontUriAck& out, const std::wstring& fontId, const std::wstring& projectId);

} // namespace orlo::OrloWebService
