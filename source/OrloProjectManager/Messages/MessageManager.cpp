#include "MessageManager.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Messages/MessageWeb.h"
#include "Message.h"

#include <BaseCommon/NeverDestroyed.h>

#include <utility>

namespace orlo {

namespace {

using Messages = IMessageManager::Messages;

bool addMessage(http::ORLOHTTPMessage record, Messages& out)
{
    EMessageStatus status = EMessageStatus::ALL;
    EMessageType type = EMessageType::SYSTEM;
    if (!readMessageStatus(record.messageStatus, status) || !readMessageType(record.messageType, type)) {
        log::error(L"[MessageManager::CreateMessageByRequestResult] translate message type faile");
        return false;
    }
    out[type].push_back(std::make_shared<Message>(std::move(record), type, status));
    return true;
}

/// Empty ids are no filter.
bool fetchMessages(const CallSite& site, EMessageStatus status, const std::wstring& projectId, const std::wstring& datasetId, Messages& out,
                   ErrorCode& error)
{
    return CallFrame(site).run(error, [&] {
        const Messages before = std::exchange(out, {}); // one of these may hold the id
        auto records = fetched(&OrloWebService::GetMessages, error, textOf(status), projectId, datasetId);
        if (!records) {
            log::error(L"fail to get messages");
            return false;
        }
        for (http::ORLOHTTPMessage& record : *records) {
            if (!addMessage(std::move(record), out))
                return false;
        }
        return true;
    });
}

} // namespace

IMessageManager::IMessageManager() = default;
IMessageManager::~IMessageManager() = default;

IMessageManager* IMessageManager::Get()
{
    static auto& manager = utils::neverDestroyed(new MessageManager);
    return &manager;
}

bool MessageManager::GetMessages(EMessageStatus status, Messages& out, ErrorCode& error)
{
    return fetchMessages(ORLO_HERE("orlo::MessageManager::GetMessages"), status, {}, {}, out, error);
}

bool MessageManager::GetMessagesInProject(EMessageStatus status, const std::wstring& projectId, Messages& out, ErrorCode& error)
{
    if (projectId.empty()) {
        log::info(L"[MessageManager::GetMessagesInProject] projectId is empty");
        return false;
    }
    return fetchMessages(ORLO_HERE("orlo::MessageManager::GetMessages"), status, projectId, {}, out, error);
}

bool MessageManager::GetMessagesInDataset(EMessageStatus status, const std::wstring& datasetId, Messages& out, ErrorCode& error)
{
    if (datasetId.empty()) {
        // Intended: the words are those of the other operation.
        log::info(L"[MessageManager::GetMessagesInProject] datasetId is empty");
        return false;
    }
    return fetchMessages(ORLO_HERE("orlo::MessageManager::GetMessages"), status, {}, datasetId, out, error);
}

bool MessageManager::MarkMessageByGivenStatus(int messageId, EMessageType type, EMessageStatus status, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::MessageManager::MarkMessageByGivenStatus")).run(error, [&] {
        if (retried(&OrloWebService::MarkMessage, error, messageId, textOf(type), textOf(status)))
            return true;
        log::error(L"[MessageManager::MarkMessageStatus]fail to mark message status");
        return false;
    });
}

bool MessageManager::MarkMessageRead(int messageId, EMessageType type, ErrorCode& error)
{
    return MarkMessageByGivenStatus(messageId, type, EMessageStatus::READ, error);
}

} // namespace orlo
