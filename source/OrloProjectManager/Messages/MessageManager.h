#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Messages/IMessageManager.h>

namespace orlo {

class MessageManager final : public IMessageManager
{
public:
    bool GetMessages(EMessageStatus status, Messages& out, ErrorCode& error) override;
    bool GetMessages(EMessageStatus status, Messages& out) override { return GetMessages(status, out, DroppedError()); }
    bool GetMessagesInProject(EMessageStatus status, const std::wstring& projectId, Messages& out, ErrorCode& error) override;
    bool GetMessagesInProject(EMessageStatus status, const std::wstring& projectId, Messages& out) override
    {
        return GetMessagesInProject(status, projectId, out, DroppedError());
    }
    bool GetMessagesInDataset(EMessageStatus status, const std::wstring& datasetId, Messages& out, ErrorCode& error) override;
    bool GetMessagesInDataset(EMessageStatus status, const std::wstring& datasetId, Messages& out) override
    {
        return GetMessagesInDataset(status, datasetId, out, DroppedError());
    }
    bool MarkMessageRead(int messageId, EMessageType type, ErrorCode& error) override;
    bool MarkMessageRead(int messageId, EMessageType type) override { return MarkMessageRead(messageId, type, DroppedError()); }

    virtual bool MarkMessageByGivenStatus(int messageId, EMessageType type, EMessageStatus status, ErrorCode& error);
};

} // namespace orlo
