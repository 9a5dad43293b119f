#include "ProjectFont.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Resources/FontWeb.h"
#include "../Projects/Project.h"

#include <BaseCommon/Text.h>

namespace orlo {

IProjectFont::IProjectFont() = default;
IProjectFont::~IProjectFont() = default;

ProjectFont::ProjectFont(http::ORLOHTTPPayloadFontInfo record)
    : m_record(std::move(record)), m_resourceBytes(utils::toInt64(m_record.resourceBytes))
{}

std::wstring ProjectFont::GetFontDownloadUri(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectFont::GetFontDownloadUri")).run(error, [&] {
        if (m_record.id.empty() || m_record.projectId.empty())
            return std::wstring();
        const auto ack = fetched(&OrloWebService::GetFontDownloadUri, error, m_record.id, m_record.projectId);
        if (!ack)
            return std::wstring();
        log::info(L"ProjectFont::GetFontDownloadUri success");
        return ack->fileUrlWithSAS;
    });
}

bool Project::GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetProjectFonts")).run(error, [&] {
        out.clear();
        auto ack = fetched(&OrloWebService::GetProjectFonts, error, m_id);
        if (!ack)
            return false;
        for (http::ORLOHTTPPayloadFontInfo& record : ack->fonts)
            out.push_back(std::make_shared<ProjectFont>(std::move(record)));
        return true;
    });
}

} // namespace orlo
