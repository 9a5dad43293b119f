#include <OrloProjectManager/Messages/IMessage.h>
#include <OrloProjectManager/NetworkProject/Messages/MessageReaders.h>

#include <gtest/gtest.h>

// A message by itself, and the second form of the service's answers.
namespace orlo::test {
namespace {

using OrloPayloadProcessor::readPayloadMessage;

web::json::value jsonOf(const char* text)
{
    return web::json::value::parse(text);
}

TEST(Message, keepsWhatItWasMadeWith)
{
    const auto message =
        IMessage::CreateMessage(7, L"t", L"c", L"p", L"d", EMessageType::BUSINESS, EMessageStatus::UNREAD, L"r", L"rt", L"s", L"sa", L"st");
    EXPECT_EQ(message->GetMessageId(), 7);
    EXPECT_EQ(message->GetTitle() + L"|" + message->GetContent() + L"|" + message->GetProjectId() + L"|" + message->GetDatasetId() + L"|" +
                  message->GetResourceId() + L"|" + message->GetResourceType() + L"|" + message->GetSenderId() + L"|" +
                  message->GetSenderAction() + L"|" + message->GetSendTime(),
              L"t|c|p|d|r|rt|s|sa|st");
    EXPECT_EQ(message->GetMessageType(), EMessageType::BUSINESS);
    EXPECT_EQ(message->GetMessageStatus(), EMessageStatus::UNREAD);
}

TEST(PayloadMessage, readsItsFieldsAndContents)
{
    const http::ORLOHTTPPayloadMessage message = readPayloadMessage(
        jsonOf(R"({"empty":false,"producerSourceId":"ps","producerType":null,"consumerId":"ci","consumerType":"ct","contents":[)"
               R"({"content":"c","producerType":"p","consumerType":null,"hasRead":true,"deleted":false,"createTimestamp":1700000000123,)"
               R"("updateTimestamp":"1700000000456"}]})"));
    EXPECT_EQ(message.producerSourceId, L"ps");
    EXPECT_EQ(message.producerType, L"");
    EXPECT_EQ(message.consumerId, L"ci");
    EXPECT_EQ(message.consumerType, L"ct");
    ASSERT_EQ(message.contents.size(), 1u);
    EXPECT_EQ(message.contents[0].content, L"c");
    EXPECT_EQ(message.contents[0].producerType, L"p");
    EXPECT_EQ(message.contents[0].consumerType, L"");
    EXPECT_TRUE(message.contents[0].hasRead);
    EXPECT_FALSE(message.contents[0].deleted);
    EXPECT_EQ(message.contents[0].createTimestamp, 1700000000123);
    EXPECT_EQ(message.contents[0].updateTimestamp, 1700000000456) << "a text is taken too";
}

TEST(PayloadMessage, readsATimeAsTheDecimalNumberAtItsHead)
{
    const auto timeOf = [](const std::string& value) {
        return readPayloadMessage(jsonOf((R"({"empty":false,"producerSourceId":"","producerType":"","consumerId":"","consumerType":"",)"
                                          R"("contents":[{"content":"","hasRead":false,"deleted":true,"createTimestamp":0,)"
                                          R"("updateTimestamp":)" +
                                          value + "}]}")
                                             .c_str()))
            .contents.at(0)
            .updateTimestamp;
    };
    EXPECT_EQ(timeOf("-5"), -5);
    EXPECT_EQ(timeOf(R"("12 and more")"), 12);
    EXPECT_EQ(timeOf(R"("soon")"), 0);
    EXPECT_EQ(timeOf("null"), 0);
    EXPECT_EQ(timeOf("{}"), 0);
}

TEST(PayloadMessage, thatSaysItIsEmptyIsNotReadOn)
{
    EXPECT_EQ(readPayloadMessage(jsonOf(R"({"empty":true,"producerSourceId":7})")).producerSourceId, L"");
}

TEST(PayloadMessage, withoutAKeyThatItNeedsIsAnException)
{
    for (const char* text : {"{}", R"({"empty":false})", R"({"empty":"no"})",
                             R"({"empty":false,"producerSourceId":"ps","producerType":"p","consumerId":"ci","consumerType":"ct"})",
                             R"({"empty":false,"producerSourceId":"ps","producerType":"p","consumerId":"ci","consumerType":"ct",)"
                             R"("contents":[{}]})"})
        EXPECT_THROW(readPayloadMessage(jsonOf(text)), web::json::json_exception) << text;
}

} // namespace
} // namespace orlo::test
