#include "Message.h"

#include <utility>

namespace orlo {

IMessage::IMessage() = default;
IMessage::~IMessage() = default;

std::shared_ptr<IMessage> IMessage::CreateMessage(int messageId, const std::wstring& title, const std::wstring& content,
                                                  const std::wstring& projectId, const std::wstring& datasetId, EMessageType messageType,
                                                  EMessageStatus messageStatus, const std::wstring& resourceId,
                                                  const std::wstring& resourceType, const std::wstring& senderId,
                                                  const std::wstring& senderAction, const std::wstring& sendTime)
{
    http::ORLOHTTPMessage record;
    record.messageId = messageId;
    record.title = title;
    record.content = content;
    record.projectId = projectId;
    record.datasetId = datasetId;
    record.resourceId = resourceId;
    record.resourceType = resourceType;
    record.senderId = senderId;
    record.senderAction = senderAction;
    record.sendTime = sendTime;
    return std::make_shared<Message>(std::move(record), messageType, messageStatus);
}

Message::Message(http::ORLOHTTPMessage record, EMessageType type, EMessageStatus status)
    : m_record(std::move(record)), m_type(type), m_status(status)
{}

} // namespace orlo
