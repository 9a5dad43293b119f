#include "MessageReaders.h"

#include "../Call/FieldReaders.h"
#include "../Call/TextTable.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

namespace orlo {

using http::ORLOHTTPMessage;
using http::ORLOHTTPPayloadMessage;
using http::ORLOHTTPPayloadMessageContent;

namespace {

const RecordTable<ORLOHTTPMessage>& messageFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<ORLOHTTPMessage>{
        {L"messageId", &ORLOHTTPMessage::messageId},
        {L"title", &ORLOHTTPMessage::title},
        {L"content", &ORLOHTTPMessage::content},
        {L"projectId", &ORLOHTTPMessage::projectId},
        {L"datasetId", &ORLOHTTPMessage::datasetId},
        {L"messageType", &ORLOHTTPMessage::messageType},
        {L"messageStatus", &ORLOHTTPMessage::messageStatus},
        {L"resourceId", &ORLOHTTPMessage::resourceId},
        {L"resourceType", &ORLOHTTPMessage::resourceType},
        {L"senderId", &ORLOHTTPMessage::senderId},
        {L"senderAction", &ORLOHTTPMessage::senderAction},
        {L"sendTime", &ORLOHTTPMessage::sendTime},
    });
    return table;
}

const TextTable<EMessageType>& messageTypeTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<EMessageType>(
        {{EMessageType::SYSTEM, L"SYSTEM"}, {EMessageType::BUSINESS, L"BUSINESS"}}, EMessageType::SYSTEM));
    return table;
}

const TextTable<EMessageStatus>& messageStatusTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<EMessageStatus>(
        {{EMessageStatus::ALL, L"ALL"}, {EMessageStatus::READ, L"READ"}, {EMessageStatus::UNREAD, L"UNREAD"}}, EMessageStatus::ALL));
    return table;
}

const web::json::value& required(const web::json::value& object, const wchar_t* key)
{
    return object.at(utils::toNative(std::wstring(key)));
}

std::wstring requiredText(const web::json::value& object, const wchar_t* key)
{
    const web::json::value& value = required(object, key);
    return value.is_null() ? std::wstring() : utils::fromNative(value.as_string());
}

/// A number, or the text of one.
std::int64_t requiredTimestamp(const web::json::value& object, const wchar_t* key)
{
    const web::json::value& value = required(object, key);
    return utils::toInt64(utils::fromNative(value.is_string() ? value.as_string() : value.serialize()));
}

ORLOHTTPPayloadMessageContent contentOf(const web::json::value& json)
{
    ORLOHTTPPayloadMessageContent content;
    content.content = requiredText(json, L"content");
    readMember(json, L"producerType", content.producerType);
    readMember(json, L"consumerType", content.consumerType);
    content.hasRead = required(json, L"hasRead").as_bool();
    content.deleted = required(json, L"deleted").as_bool();
    content.createTimestamp = requiredTimestamp(json, L"createTimestamp");
    content.updateTimestamp = requiredTimestamp(json, L"updateTimestamp");
    return content;
}

} // namespace

std::wstring textOf(EMessageType type)
{
    return messageTypeTexts().textOf(type);
}

std::wstring textOf(EMessageStatus status)
{
    return messageStatusTexts().textOf(status);
}

bool readMessageType(const std::wstring& text, EMessageType& type)
{
    type = messageTypeTexts().valueOf(text);
    return textOf(type) == text;
}

bool readMessageStatus(const std::wstring& text, EMessageStatus& status)
{
    status = messageStatusTexts().valueOf(text);
    return status != EMessageStatus::ALL;
}

void OrloPayloadProcessor::CreateHttpMessagesByJson(const web::json::value& json, std::vector<ORLOHTTPMessage>& out)
{
    const web::json::value* const messages = memberOf(json, L"data");
    if (!messages || !messageFields().readList(*messages, out))
        log::error(L"[OrloPayloadProcessor::CreateHttpMessagesByJson] get error data structure");
}

ORLOHTTPPayloadMessage OrloPayloadProcessor::readPayloadMessage(const web::json::value& json)
{
    ORLOHTTPPayloadMessage message;
    if (required(json, L"empty").as_bool())
        return message;
    message.producerSourceId = requiredText(json, L"producerSourceId");
    message.producerType = requiredText(json, L"producerType");
    message.consumerId = requiredText(json, L"consumerId");
    message.consumerType = requiredText(json, L"consumerType");
    for (const web::json::value& content : required(json, L"contents").as_array())
        message.contents.push_back(contentOf(content));
    return message;
}

} // namespace orlo
