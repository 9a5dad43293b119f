#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Messages/IMessage.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// Notifications for the signed-in user. A fetch gives all of them at once, by type, in the platform's order, in place of what the map
/// held; one that can't be understood ends it with false, and those before it stay in the map. An id may be that of one of the map's own
/// messages.
/// The form without an ErrorCode does the same and drops the reason of a failure.
/// Errors: 0xE8000002 transport or exception; a negative value for an error status; what can't be understood is in the log only.
/// Requests: one each, retried.   Threads: any; blocks the caller.
class ORLO_PROJECT_API IMessageManager
{
public:
    using Messages = std::map<EMessageType, std::vector<std::shared_ptr<IMessage>>>;

    IMessageManager();
    IMessageManager(const IMessageManager&) = delete;
    IMessageManager& operator=(const IMessageManager&) = delete;

    /// The one of this process; the library owns it.
    static IMessageManager* Get();

    virtual bool GetMessages(EMessageStatus status, Messages& out, ErrorCode& error) = 0;
    virtual bool GetMessages(EMessageStatus status, Messages& out) = 0;
    /// False, with the map as it was and nothing sent, for an empty id; the next three likewise.
    virtual bool GetMessagesInProject(EMessageStatus status, const std::wstring& projectId, Messages& out, ErrorCode& error) = 0;
    virtual bool GetMessagesInProject(EMessageStatus status, const std::wstring& projectId, Messages& out) = 0;
    virtual bool GetMessagesInDataset(EMessageStatus status, const std::wstring& datasetId, Messages& out, ErrorCode& error) = 0;
    virtual bool GetMessagesInDataset(EMessageStatus status, const std::wstring& datasetId, Messages& out) = 0;
    virtual bool MarkMessageRead(int messageId, EMessageType type, ErrorCode& error) = 0;
    virtual bool MarkMessageRead(int messageId, EMessageType type) = 0;

    virtual ~IMessageManager();
};

} // namespace orlo
