#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Resources/TemplateWeb.h"

#include <OrloProjectManager/Resources/ProjectTemplate.h>

#include <utility>

namespace orlo {

std::wstring HttpClient::createTemplate(const std::wstring& srcProjectId, const std::wstring& templateName)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::createTemplate")).runAlone([&](ErrorCode& error) {
        return retried(&OrloWebService::CreateTemplate, error, srcProjectId, templateName);
    });
}

bool HttpClient::deleteTemplate(const std::wstring& templateId)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::deleteTemplate")).runAlone([&](ErrorCode& error) {
        return retried(&OrloWebService::DeleteTemplate, error, templateId);
    });
}

bool HttpClient::getProjectTemplatesOfUser(std::vector<ProjectTemplate>& out)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getProjectTemplatesOfUser")).runAlone([&](ErrorCode& error) {
        auto records = fetched(&OrloWebService::GetProjectTemplatesOfUser, error);
        if (!records)
            return false;
        out.reserve(out.size() + records->size());
        for (http::ORLOHTTPPayloadTemplate& record : *records)
            out.push_back({std::move(record.id), std::move(record.templateName), std::move(record.srcProjectId)});
        return true;
    });
}

} // namespace orlo
