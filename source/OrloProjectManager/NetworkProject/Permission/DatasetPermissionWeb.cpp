#include "DatasetPermissionWeb.h"

#include "../Call/FieldReaders.h"
#include "../Call/Refusal.h"
#include "../Call/WebCall.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/Redaction.h>
#include <OrloLogging/SecretGuard.h>
#include <OrloNetwork/Body/JsonText.h>

namespace orlo {

namespace {

constexpr const wchar_t* applyToWritePath = L"/v3/dataset/{dataSetId}/xmonitor/apply";
constexpr const wchar_t* applyToReadPath = L"/dataset/{dsId}/smonitor/apply";
constexpr const wchar_t* acknowledgementPath = L"/dataset/{dataSetId}/monitor/ack";
constexpr const wchar_t* releasePath = L"/dataset/monitor/{token}/release";
constexpr const wchar_t* holdersPath = L"/dataset/xmonitor/list";

const RecordTable<DatasetEditToken>& editTokenFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<DatasetEditToken>{
        {L"dsId", &DatasetEditToken::dsId},
        {L"monitor", &DatasetEditToken::monitor},
        {L"token", &DatasetEditToken::token},
    });
    return table;
}

std::wstring textOf(const web::json::value& value)
{
    return utils::fromNative(value.serialize());
}

/// Text with an answer in it, for an ErrorCode: that may be shown, and sent on.
std::wstring withoutTokens(const std::wstring& text)
{
    return redact(text, SecretGuard::secrets());
}

DatasetPermissionFailure failureOf(const ErrorCode& error)
{
    return OrloPayloadProcessor::CreateDatasetPermissionByString(error.GetErrorMessage());
}

/// Whether the answer has the mark of success; tells what it has in place of it.
bool isMarked(WebAnswer& answer, DatasetPermissionFailure& failure)
{
    if (answer.succeeded())
        return true;
    // Intended: a refused right to read says so in the words of the release.
    log::error(L"OrloWebService::ReleaseDatasetPermissionMonitor: response code is 200 but has no mark 10000");
    failure = OrloPayloadProcessor::CreateDatasetPermissionByString(textOf(answer.body()));
    return false;
}

bool extractToken(const web::json::value& data, int codeOfFailure, std::string& token, int& monitor, DatasetPermissionFailure& failure)
{
    if (OrloPayloadProcessor::ExtractTokenByJson(data, token, monitor))
        return true;
    failure = {codeOfFailure, {}, L"ExtractTokenByJson error"};
    return false;
}

WebCall releaseCall(const wchar_t* name, const std::wstring& token, const wchar_t* force)
{
    WebCall call(name, service::project, methods::PUT, releasePath);
    call.placePermission(L"{token}", token).query(L"force", force).withTimeoutOfFirstUse();
    return call;
}

} // namespace

DatasetPermissionFailure OrloPayloadProcessor::CreateDatasetPermissionByString(const std::wstring& reply)
{
    DatasetPermissionFailure failure;
    failure.message = reply;
    web::json::value json;
    try {
        json = http::parseJson(utils::toString(reply));
    }
    catch (const std::exception&) {
        log::error(L"[CreateDatasetPermissionByString] : Failed extract message to json");
        return failure;
    }
    if (!readMember(json, L"code", failure.code)) {
        log::error(L"[CreateDatasetPermissionByString] : have no define error code");
        return failure;
    }
    failure.message.clear();
    readMember(json, L"msg", failure.message);
    return failure;
}

bool OrloPayloadProcessor::ExtractTokenByJson(const web::json::value& value, std::string& token, int& monitor)
{
    const bool hasToken = readMember(value, L"token", token);
    const bool hasMonitor = readMember(value, L"monitor", monitor);
    if (hasToken)
        SecretGuard::protectPermission(utils::toWstring(token));
    return hasToken && hasMonitor;
}

bool OrloWebService::ApplyForWriteDataset(ErrorCode& error, DatasetPermissionFailure& failure, std::string& token, int& monitor,
                                          const std::string& datasetId)
{
    WebCall call(L"OrloWebService::ApplyForWriteDataset", service::project, methods::POST, applyToWritePath);
    call.place(L"{dataSetId}", datasetId).queryPermissionUnlessEmpty(L"token", utils::toWstring(token)).query(L"ack", L"1");
    WebAnswer answer = call.withTimeoutOfFirstUse().send(error);
    if (!answer.ok()) {
        failure = failureOf(error);
        return false;
    }
    return extractToken(answer.dataOfSuccess(), -1, token, monitor, failure);
}

bool OrloWebService::ApplyForReadDataset(ErrorCode& error, DatasetPermissionFailure& failure, std::string& token,
                                         const std::string& datasetId)
{
    WebCall call(L"OrloWebService::ApplyForReadDataset", service::project, methods::POST, applyToReadPath);
    WebAnswer answer = call.place(L"{dsId}", datasetId).query(L"ack", L"1").withTimeoutOfFirstUse().send(error);
    if (!answer.ok()) {
        failure = failureOf(error);
        return false;
    }
    int monitor = 0;
    return isMarked(answer, failure) && extractToken(answer.data(), 10000, token, monitor, failure);
}

bool OrloWebService::ObtainPermissionTokenAck(ErrorCode& error, DatasetPermissionFailure& failure, const std::string& datasetId,
                                              const std::string& token)
{
    WebCall call(L"OrloWebService::ObtainPermissionTokenAck", service::project, methods::PUT, acknowledgementPath);
    call.place(L"{dataSetId}", datasetId).queryPermissionUnlessEmpty(L"token", utils::toWstring(token));
    if (call.withTimeoutOfFirstUse().send(error).ok())
        return true;
    failure = failureOf(error);
    return false;
}

bool OrloWebService::ReleaseDatasetPermissionMonitor(ErrorCode& error, DatasetPermissionFailure& failure, const std::string& token)
{
    WebAnswer answer = releaseCall(L"OrloWebService::ReleaseDatasetPermissionMonitor", utils::toWstring(token), L"false").send(error);
    if (answer.ok())
        return isMarked(answer, failure);
    failure = failureOf(error);
    return false;
}

bool OrloWebService::ReleaseDatasetPermissionMonitorForce(ErrorCode& error, const std::wstring& token)
{
    WebCall call = releaseCall(L"OrloWebService::ReleaseDatasetPermissionMonitorForce", token, L"true");
    WebAnswer answer = call.failsWithMessage(L"error message is: ").send(error);
    if (!answer.ok())
        return false;
    if (answer.succeeded())
        return true;
    const std::wstring text =
        L"OrloWebService::ReleaseDatasetPermissionMonitorForce: response code is 200 but has no mark 10000" + textOf(answer.body());
    log::error(text);
    return refuse(error, error::exception, withoutTokens(text));
}

bool OrloWebService::GetDatasetEditToken(ErrorCode& error, DatasetEditToken& out, const std::wstring& datasetId)
{
    WebCall call(L"OrloWebService::GetDatasetEditToken", service::project, methods::POST, holdersPath);
    WebAnswer answer = call.body(web::json::value::array({jsonText(datasetId)})).withTimeoutOfFirstUse().send(error);
    if (!answer.ok())
        return false;
    const web::json::value& holders = answer.dataOfSuccess();
    if (!holders.is_array() || holders.size() != 1) {
        const std::wstring text = L"OrloWebService::GetDatasetEditToken - response is not normal: " + textOf(holders);
        log::error(text);
        return refuse(error, error::exception, withoutTokens(text));
    }
    editTokenFields().read(holders.at(0), out);
    SecretGuard::protectPermission(out.token);
    return true;
}

} // namespace orlo
