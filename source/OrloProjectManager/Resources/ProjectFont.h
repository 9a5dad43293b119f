#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Resources/IProjectFont.h>

namespace orlo {

class ProjectFont final : public IProjectFont
{
public:
    explicit ProjectFont(http::ORLOHTTPPayloadFontInfo record);

    std::wstring GetId() const override { return m_record.id; }
    std::wstring GetName() const override { return m_record.name; }
    std::wstring GetFontDownloadUri(ErrorCode& error) override;
    std::wstring GetFontDownloadUri() override { return GetFontDownloadUri(DroppedError()); }
    std::wstring GetProjectId() const override { return m_record.projectId; }
    std::wstring GetFileType() const override { return m_record.fileType; }
    std::wstring GetFontFrom() const override { return m_record.fontFrom; }
    std::wstring GetCreateTime() const override { return m_record.createTime; }
    std::wstring GetUploader() const override { return m_record.uploader; }
    std::int64_t GetResourceBytes() const override { return m_resourceBytes; }

private:
    http::ORLOHTTPPayloadFontInfo m_record;
    std::int64_t m_resourceBytes;
};

} // namespace orlo
