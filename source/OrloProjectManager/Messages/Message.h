#pragma once

#include "../NetworkProject/Messages/MessageReaders.h"

#include <OrloProjectManager/Messages/IMessage.h>

namespace orlo {

class Message final : public IMessage
{
public:
    Message(http::ORLOHTTPMessage record, EMessageType type, EMessageStatus status);

    int GetMessageId() const override { return m_record.messageId; }
    const std::wstring& GetTitle() const override { return m_record.title; }
    const std::wstring& GetContent() const override { return m_record.content; }
    const std::wstring& GetProjectId() const override { return m_record.projectId; }
    const std::wstring& GetDatasetId() const override { return m_record.datasetId; }
    EMessageType GetMessageType() const override { return m_type; }
    EMessageStatus GetMessageStatus() const override { return m_status; }
    const std::wstring& GetResourceId() const override { return m_record.resourceId; }
    const std::wstring& GetResourceType() const override { return m_record.resourceType; }
    const std::wstring& GetSenderId() const override { return m_record.senderId; }
    const std::wstring& GetSenderAction() const override { return m_record.senderAction; }
    const std::wstring& GetSendTime() const override { return m_record.sendTime; }

private:
    const http::ORLOHTTPMessage m_record;
    const EMessageType m_type;
    const EMessageStatus m_status;
};

} // namespace orlo
