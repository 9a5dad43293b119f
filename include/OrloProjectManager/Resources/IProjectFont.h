#pragma once

#include <OrloProjectManager/Export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A font of a project.
class ORLO_PROJECT_API IProjectFont
{
public:
    IProjectFont();
    virtual ~IProjectFont();

    IProjectFont(const IProjectFont&) = delete;
    IProjectFont& operator=(const IProjectFont&) = delete;

    virtual std::wstring GetId() const = 0;
    virtual std::wstring GetName() const = 0;
    /// A signed address for the font's file, asked for anew at each call.
    /// Returns: empty on failure, and for a font without an id or a project, which sends nothing.
    /// Errors: 0xE8000002 transport or exception; a negative value for an error status.
    /// Requests: one, retried.   Threads: any; blocks the caller.
    virtual std::wstring GetFontDownloadUri(ErrorCode& error) = 0;
    virtual std::wstring GetFontDownloadUri() = 0;
    virtual std::wstring GetProjectId() const = 0;
    virtual std::wstring GetFileType() const = 0;
    virtual std::wstring GetFontFrom() const = 0;
    virtual std::wstring GetCreateTime() const = 0;
    virtual std::wstring GetUploader() const = 0;
    /// Bytes.
    virtual std::int64_t GetResourceBytes() const = 0;
};

namespace http {

/// A font, as the platform sends it.
struct ORLOHTTPPayloadFontInfo
{
    std::wstring id;
    std::wstring name;
    std::wstring projectId;
    std::wstring fileType;
    std::wstring fontFrom;
    std::wstring createTime;
    std::wstring uploader;
    std::wstring resourceBytes; ///< a decimal number
};

struct ORLOHTTPPayloadFontInfoAck
{
    int code = 0;
    std::wstring msg;
    std::vector<ORLOHTTPPayloadFontInfo> fonts;
};

struct ORLOHTTPPayloadFontUriAck
{
    int code = 0;
    std::wstring msg;
    std::wstring fileUrlWithSAS;
};

} // namespace http
} // namespace orlo
