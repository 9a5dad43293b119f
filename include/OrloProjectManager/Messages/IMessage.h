#pragma once

#include <OrloProjectManager/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

enum class EMessageType : int { SYSTEM = 0, BUSINESS = 1 };
/// ALL is a filter, and never the state of a message.
enum class EMessageStatus : int { ALL = 0, READ = 1, UNREAD = 2 };

/// One notification for the signed-in user. Never changes; the references are good as long as it lives.   Threads: any.
class ORLO_PROJECT_API IMessage
{
public:
    IMessage();
    IMessage(const IMessage&) = delete;
    IMessage& operator=(const IMessage&) = delete;

    [[nodiscard]] static std::shared_ptr<IMessage> CreateMessage(int messageId, const std::wstring& title, const std::wstring& content,
                                                                 const std::wstring& projectId, const std::wstring& datasetId,
                                                                 EMessageType messageType, EMessageStatus messageStatus,
                                                                 const std::wstring& resourceId, const std::wstring& resourceType,
                                                                 const std::wstring& senderId, const std::wstring& senderAction,
                                                                 const std::wstring& sendTime);

    virtual int GetMessageId() const = 0;
    virtual const std::wstring& GetTitle() const = 0;
    virtual const std::wstring& GetContent() const = 0;
    virtual const std::wstring& GetProjectId() const = 0;
    virtual const std::wstring& GetDatasetId() const = 0;
    virtual EMessageType GetMessageType() const = 0;
    virtual EMessageStatus GetMessageStatus() const = 0;
    virtual const std::wstring& GetResourceId() const = 0;
    virtual const std::wstring& GetResourceType() const = 0;
    virtual const std::wstring& GetSenderId() const = 0;
    virtual const std::wstring& GetSenderAction() const = 0;
    virtual const std::wstring& GetSendTime() const = 0;

    virtual ~IMessage();
};

namespace http {

/// What a second form of the message service's answers holds.
struct ORLOHTTPPayloadMessageContent
{
    std::wstring content;
    std::wstring producerType;
    std::wstring consumerType;
    bool hasRead = false;
    bool deleted = false;
    std::int64_t createTimestamp = 0;
    std::int64_t updateTimestamp = 0;
};

/// A second form of the message service's answers. No operation asks for it.
struct ORLOHTTPPayloadMessage
{
    std::wstring producerSourceId;
    std::wstring producerType;
    std::wstring consumerId;
    std::wstring consumerType;
    std::vector<ORLOHTTPPayloadMessageContent> contents;
};

} // namespace http
} // namespace orlo
