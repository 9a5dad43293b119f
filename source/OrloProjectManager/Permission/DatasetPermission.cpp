#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Permission/DatasetPermissionWeb.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/Permission/IDatasetPermission.h>

#include <stdexcept>

namespace orlo {

namespace {

using utils::PermissionFileHelper;

std::string resultText(int code, const std::wstring& message)
{
    JsonWrapper json;
    json.Add("code", code);
    json.Add("msg", utils::toString(message));
    return json.ToString();
}

std::string reasonOf(const DatasetPermissionFailure& failure)
{
    return resultText(failure.code, failure.message);
}

std::string successText()
{
    return resultText(10000, L"success");
}

/// The line with which the question for a permission ends.
std::wstring ending(const std::wstring& permission)
{
    return L"[IDataset::GetDatasetPermission] End - EDatasetPermission::" + permission;
}

/// The folder is hidden where it is made here; one that is there stays as it is.
bool makeTokenFolder()
{
    const std::wstring folder = PermissionFileHelper::TokenFolder();
    if (utils::hasDirectory(folder))
        return true;
    if (!utils::createDirectoryRecursively(folder))
        return false;
    utils::setHiddenAttribute(folder);
    return true;
}

std::string idOf(const UserSession& session)
{
    return utils::toString(session.GetId());
}

/// One question for a permission, from asking the platform to what its answers come to.
class PermissionQuestion
{
public:
    PermissionQuestion(const std::string& datasetId, std::string& resultJson, ErrorCode& error)
        : m_datasetId(datasetId), m_result(resultJson), m_error(error)
    {}

    EDatasetPermission askToWrite(const std::string& userId)
    {
        PermissionFileHelper& tokens = *PermissionFileHelper::GetInstance();
        std::string token = tokens.GetDatasetTokenFromFile(userId, m_datasetId);
        log::info(token.empty() ? L"[IDataset::GetDatasetPermission] local file has no record dataset token"
                                : L"[IDataset::GetDatasetPermission] local file has record dataset token");
        log::info(L"[IDataset::GetDatasetPermission] begin ask for read write permission");
        int monitor = 0;
        DatasetPermissionFailure refusal;
        if (!retried(&OrloWebService::ApplyForWriteDataset, m_error, refusal, token, monitor, m_datasetId))
            return withoutWriting(refusal);
        DatasetPermissionFailure unacknowledged;
        if (!acknowledge(token, unacknowledged))
            return withoutAcknowledgement(unacknowledged, L"[IDataset::GetDatasetPermission] error dataset token ack fail");
        if (token.empty() || monitor == 0) {
            log::warning(L"[IDataset::GetDatasetPermission] error token or tokenType is empty");
            return withoutWriting(refusal);
        }
        // Intended: a token that can't be kept is good all the same; the platform alone knows it then.
        log::info(tokens.WriteTokenToFile(userId, m_datasetId, token)
                      ? L"[IDataset::GetDatasetPermission] record token to local file success"
                      : L"[IDataset::GetDatasetPermission] error record token to local file fail");
        m_result = successText();
        return granted(monitor);
    }

    bool askToReadAlone()
    {
        DatasetPermissionFailure refusal;
        std::string token;
        if (!applyToRead(token, refusal)) {
            m_result = reasonOf(refusal);
            log::error(L"[IDataset::ApplyDatasetReadPermission] End - EDatasetPermission::FORBID");
            return false;
        }
        if (!acknowledge(token, refusal)) {
            withoutAcknowledgement(refusal, readTokenUnacknowledged);
            return false;
        }
        m_result = successText();
        log::info(L"[IDataset::ApplyDatasetReadPermission] End - EDatasetPermission::READ_ONLY");
        return true;
    }

private:
    static constexpr const wchar_t* readTokenUnacknowledged = L"[IDataset::GetDatasetPermission] dataset readtoken ack fail";

    /// Whether the last attempt failed without an answer, or with one that nobody can read. What the platform says leaves 0, or less.
    bool isUnanswered() const { return m_error.GetValue() > 0; }

    bool applyToRead(std::string& token, DatasetPermissionFailure& refusal)
    {
        return retried(&OrloWebService::ApplyForReadDataset, m_error, refusal, token, m_datasetId);
    }
    bool acknowledge(const std::string& token, DatasetPermissionFailure& refusal)
    {
        return retried(&OrloWebService::ObtainPermissionTokenAck, m_error, refusal, m_datasetId, token);
    }

    static EDatasetPermission granted(int monitor)
    {
        switch (monitor) {
        case 2:
            log::info(ending(L"READ_WRITE"));
            return EDatasetPermission::READ_WRITE;
        case 3:
            log::info(ending(L"SOFT_WRITE"));
            return EDatasetPermission::SOFT_WRITE;
        default:
            log::info(ending(L"UNKNOWN"));
            return EDatasetPermission::UNKNOWN;
        }
    }

    EDatasetPermission withoutWriting(const DatasetPermissionFailure& refusal)
    {
        if (isUnanswered()) {
            m_result = reasonOf(refusal);
            log::warning(ending(L"READ_ONLY"));
            return EDatasetPermission::READ_ONLY;
        }
        if (refusal.code == -1) {
            m_result = reasonOf(refusal);
            log::warning(ending(L"UNKNOWN"));
            return EDatasetPermission::UNKNOWN;
        }
        return askToRead(refusal);
    }

    EDatasetPermission askToRead(const DatasetPermissionFailure& writeRefusal)
    {
        log::info(L"[IDataset::GetDatasetPermission] begin ask for read only permission");
        DatasetPermissionFailure refusal;
        std::string token;
        if (!applyToRead(token, refusal))
            return withoutReading(refusal);
        DatasetPermissionFailure unacknowledged;
        if (!acknowledge(token, unacknowledged))
            return withoutAcknowledgement(unacknowledged, readTokenUnacknowledged);
        m_result = reasonOf(writeRefusal);
        log::info(ending(L"READ_ONLY"));
        return EDatasetPermission::READ_ONLY;
    }

    EDatasetPermission withoutReading(const DatasetPermissionFailure& refusal)
    {
        m_result = reasonOf(refusal);
        log::error(ending(isUnanswered() ? L"READ_ONLY" : L"FORBID"));
        return isUnanswered() ? EDatasetPermission::READ_ONLY : EDatasetPermission::FORBID;
    }

    /// Intended: the line says UNKNOWN, whatever the result.
    EDatasetPermission withoutAcknowledgement(const DatasetPermissionFailure& unacknowledged, const wchar_t* words)
    {
        m_result = reasonOf(unacknowledged);
        log::info(words);
        log::warning(ending(L"UNKNOWN"));
        return isUnanswered() ? EDatasetPermission::READ_ONLY : EDatasetPermission::UNKNOWN;
    }

    const std::string& m_datasetId;
    std::string& m_result;
    ErrorCode& m_error;
};

} // namespace

EDatasetPermission IDatasetPermission::GetDatasetPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error)
{
    EDatasetPermission permission = EDatasetPermission::UNKNOWN;
    const CallSite site = ORLO_HERE("orlo::IDatasetPermission::GetDatasetPermission");
    CallFrame(site).run(error, [&] {
        log::info(L"[IDataset::GetDatasetPermission] Begin - " + utils::toWstring(datasetId));
        if (!makeTokenFolder()) {
            log::error(L"[IDataset::GetDatasetPermission] 创建保存dataset token信息文件夹失败");
            return;
        }
        const auto session = UserSession::GetInstance();
        if (!session) {
            log::errorAt(site, L"[IDataset::GetDatasetPermission] 获取UserSession 失败");
            return;
        }
        permission = PermissionQuestion(datasetId, resultJson, error).askToWrite(idOf(*session));
    });
    return permission;
}

bool IDatasetPermission::AskForReadPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IDatasetPermission::AskForReadPermission")).run(error, [&] {
        return PermissionQuestion(datasetId, resultJson, error).askToReadAlone();
    });
}

bool IDatasetPermission::ReleaseDatasetPermission(const std::string& datasetId, std::string& resultJson, ErrorCode& error, bool)
{
    const CallSite site = ORLO_HERE("orlo::IDatasetPermission::ReleaseDatasetPermission");
    return CallFrame(site).run(error, [&] {
        log::info(L"[IDataset::ReleaseDatasetPermission] Begin - " + utils::toWstring(datasetId));
        // Intended: these two lines name the other operation.
        const auto session = UserSession::GetInstance();
        if (!session) {
            log::errorAt(site, L"[IDataset::GetDatasetPermission] 获取UserSession 失败");
            return false;
        }
        PermissionFileHelper* const tokens = PermissionFileHelper::GetInstance();
        if (!tokens) {
            log::errorAt(site, L"[IDataset::GetDatasetPermission] 获取PermissionFileHelper 失败");
            return false;
        }
        const std::string userId = idOf(*session);
        const std::string token = tokens->GetDatasetTokenFromFile(userId, datasetId);
        if (token.empty()) {
            resultJson = resultText(-1, L"local file have no record permission token");
            log::error(L"[IDataset::ReleaseDatasetPermission] End - release permission token failed, no record token in local file");
            return false;
        }
        DatasetPermissionFailure refusal;
        if (!retried(&OrloWebService::ReleaseDatasetPermissionMonitor, error, refusal, token)) {
            resultJson = reasonOf(refusal);
            log::error(L"[IDataset::ReleaseDatasetPermission] End - release permission failed");
            return false;
        }
        log::info(L"[IDataset::ReleaseDatasetPermission] - release permission token succeed");
        log::info(tokens->ReleasePermission(userId, datasetId)
                      ? L"[IDataset::ReleaseDatasetPermission] - delete permission token file succeed"
                      : L"[IDataset::ReleaseDatasetPermission] - delete permission token file fail");
        resultJson = successText();
        log::info(L"[IDataset::ReleaseDatasetPermission] End - release permission succeed");
        return true;
    });
}

bool IDatasetPermission::ReleaseDatasetPermissionForce(const std::wstring& datasetId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IDatasetPermission::ReleaseDatasetPermissionForce")).run(error, [&] {
        const auto holder = fetched(&OrloWebService::GetDatasetEditToken, error, datasetId);
        return holder && retried(&OrloWebService::ReleaseDatasetPermissionMonitorForce, error, holder->token);
    });
}

bool IDatasetPermission::IsEditTokenValid(const std::wstring& datasetId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IDatasetPermission::IsEditTokenValid")).run(error, [&] {
        const auto holder = fetched(&OrloWebService::GetDatasetEditToken, error, datasetId);
        if (!holder)
            return false;
        const auto session = UserSession::GetInstance();
        if (!session)
            throw std::invalid_argument("nobody is signed in");
        const std::string own = PermissionFileHelper::GetInstance()->GetDatasetTokenFromFile(idOf(*session), utils::toString(datasetId));
        return utils::toString(holder->token) == own;
    });
}

} // namespace orlo
