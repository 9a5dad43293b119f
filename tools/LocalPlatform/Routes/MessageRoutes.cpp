#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

void requireType(const std::string& type)
{
    if (type != "SYSTEM" && type != "BUSINESS")
        throw Refusal(400, "unknown message type: " + type);
}

void requireStatus(const std::string& status)
{
    if (status != "READ" && status != "UNREAD")
        throw Refusal(400, "unknown message status: " + status);
}

Answer messagesOfCaller(const Call& call, World& world)
{
    const std::string status = call.query("status");
    if (!status.empty())
        requireStatus(status);
    return enveloped(world.tables.rows(
        "SELECT messageId, title, content, projectId, datasetId, messageType, messageStatus, resourceId, resourceType, "
        "senderId, senderAction, sendTime FROM message WHERE receiver IN (?1, ?2) AND (?3 = '' OR messageStatus = ?3) AND (?4 = '' OR "
        "projectId = ?4) AND (?5 = '' OR datasetId = ?5) ORDER BY message.messageId",
        call.caller.accountId, call.caller.userId, status, call.query("projectId"), call.query("datasetId")));
}

Answer markMessage(const Call& call, World& world)
{
    requireType(call.place("type"));
    requireStatus(call.place("status"));
    if (world.tables.run("UPDATE message SET messageStatus = ? WHERE messageId = ? AND messageType = ? AND receiver IN (?, ?)",
                         call.place("status"), call.numberPlace("messageId"), call.place("type"), call.caller.accountId,
                         call.caller.userId) == 0)
        throw Refusal(404, "no such message: " + call.place("messageId"));
    return done();
}

Answer addMessageCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    MessageSeed message;
    message.receiver = body.filledText("receiver");
    message.title = body.filledText("title");
    message.content = body.textOr("content", {});
    message.projectId = body.textOr("projectId", {});
    message.datasetId = body.textOr("datasetId", {});
    message.messageType = body.textOr("messageType", message.messageType);
    return idAnswer(std::to_string(addMessage(world, message)));
}

} // namespace

int addMessage(World& world, const MessageSeed& message)
{
    requireType(message.messageType);
    world.tables.run("INSERT INTO message (receiver, title, content, projectId, datasetId, messageType, messageStatus, resourceId, "
                     "resourceType, senderId, senderAction, sendTime) VALUES (?, ?, ?, ?, ?, ?, 'UNREAD', ?, ?, ?, ?, ?)",
                     message.receiver, message.title, message.content, message.projectId, message.datasetId, message.messageType,
                     message.resourceId, message.resourceType, message.senderId, message.senderAction, world.clock.text());
    return static_cast<int>(world.tables.lastRowId());
}

void addMessageRoutes(Router& router)
{
    router.add("GET", "/messages", messagesOfCaller);
    router.add("PUT", "/messages/{type}/{messageId}/mark/{status}", markMessage);
    router.addControl("POST", "messages", addMessageCall);
}

} // namespace orlo::platform
