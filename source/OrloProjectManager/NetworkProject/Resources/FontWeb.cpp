#include "FontWeb.h"

#include "../Call/FieldReaders.h"
#include "../Call/WebCall.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo::OrloWebService {

using http::ORLOHTTPPayloadFontInfo;
using http::ORLOHTTPPayloadFontInfoAck;
using http::ORLOHTTPPayloadFontUriAck;

namespace {

constexpr const wchar_t* fontsOfProjectPath = L"/style-family/font/project/list/{projectId}";
constexpr const wchar_t* fontDownloadPath = L"/style-family/font/project/download/uri";

const RecordTable<ORLOHTTPPayloadFontInfo>& fontFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadFontInfo>{
        {L"id", &ORLOHTTPPayloadFontInfo::id},
        {L"name", &ORLOHTTPPayloadFontInfo::name},
        {L"projectId", &ORLOHTTPPayloadFontInfo::projectId},
        {L"fileType", &ORLOHTTPPayloadFontInfo::fileType},
        {L"fontFrom", &ORLOHTTPPayloadFontInfo::fontFrom},
        {L"createTime", &ORLOHTTPPayloadFontInfo::createTime},
        {L"uploader", &ORLOHTTPPayloadFontInfo::uploader},
        {L"resourceBytes", &ORLOHTTPPayloadFontInfo::resourceBytes},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadFontInfoAck>& fontsAckFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadFontInfoAck>{
        {L"code", &ORLOHTTPPayloadFontInfoAck::code},
        {L"msg", &ORLOHTTPPayloadFontInfoAck::msg},
        {L"data", [](const web::json::value& data, ORLOHTTPPayloadFontInfoAck& ack) { fontFields().readList(data, ack.fonts); }},
    });
    return table;
}

const RecordTable<ORLOHTTPPayloadFontUriAck>& fontUriAckFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPPayloadFontUriAck>{
        {L"code", &ORLOHTTPPayloadFontUriAck::code},
        {L"msg", &ORLOHTTPPayloadFontUriAck::msg},
        {L"data",
         [](const web::json::value& data, ORLOHTTPPayloadFontUriAck& ack) { readMember(data, L"fileUrlWithSAS", ack.fileUrlWithSAS); }},
    });
    return table;
}

template <class Ack>
bool readAck(WebAnswer answer, const RecordTable<Ack>& fields, Ack& out)
{
    if (!answer.ok() || !answer.body().is_object())
        return false;
    fields.read(answer.body(), out);
    return true;
}

} // namespace

bool GetProjectFonts(ErrorCode& error, ORLOHTTPPayloadFontInfoAck& out, const std::wstring& projectId)
{
    WebCall call(L"OrloWebService::GetProjectFonts", service::structure, methods::GET, fontsOfProjectPath);
    return readAck(call.place(L"{projectId}", projectId).failsSilently().send(error), fontsAckFields(), out);
}

bool GetFontDownloadUri(ErrorCode& error, ORLOHTTPPayloadFontUriAck& out, const std::wstring& fontId, const std::wstring& projectId)
{
    WebCall call(L"OrloWebService::GetFontDownloadUri", service::structure, methods::GET, fontDownloadPath);
    call.query(L"fontId", fontId).query(L"projectId", projectId);
    return readAck(call.failsSilently().send(error), fontUriAckFields(), out);
}

} // namespace orlo::OrloWebService
