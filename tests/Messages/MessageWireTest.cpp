#include "support/RequestFailures.h"
#include "support/VirtualSlot.h"
#include "support/WireTest.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Messages/IMessageManager.h>
#include <OrloProjectManager/Messages/MessageManager.h>

#include <gmock/gmock.h>

// Messages fetched by type, and marked as read.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* unread = "/messages?status=UNREAD";
constexpr const char* markRead = "/messages/BUSINESS/7/mark/READ";
constexpr const char* threeMessages =
    R"({"code":1,"data":[{"messageId":1,"title":"升级","messageType":"SYSTEM","messageStatus":"READ"},)"
    R"({"messageId":2,"title":"t","content":"c","projectId":"p","datasetId":"d","messageType":"BUSINESS","messageStatus":"UNREAD",)"
    R"("resourceId":"r","resourceType":"rt","senderId":"s","senderAction":"sa","sendTime":"st"},)"
    R"({"messageId":"3","title":4,"messageType":"BUSINESS","messageStatus":"READ"}]})";

class MessageWireTest : public WireTest
{
protected:
    IMessageManager& manager = *IMessageManager::Get();
    IMessageManager::Messages out{{EMessageType::SYSTEM, {nullptr}}};

    bool fetch(EMessageStatus status = EMessageStatus::UNREAD) { return manager.GetMessages(status, out, error); }
};

TEST_F(MessageWireTest, areFetchedByTypeInTheOrderOfTheAnswer)
{
    server.expect("GET", unread).times(2).reply(200, threeMessages);
    EXPECT_TRUE(fetch());
    ASSERT_EQ(out.size(), 2u);
    ASSERT_EQ(out[EMessageType::SYSTEM].size(), 1u);
    EXPECT_EQ(out[EMessageType::SYSTEM][0]->GetMessageId(), 1);
    EXPECT_EQ(out[EMessageType::SYSTEM][0]->GetTitle(), L"升级");
    EXPECT_EQ(out[EMessageType::SYSTEM][0]->GetMessageStatus(), EMessageStatus::READ);
    ASSERT_EQ(out[EMessageType::BUSINESS].size(), 2u);
    const IMessage& full = *out[EMessageType::BUSINESS][0];
    EXPECT_EQ(full.GetMessageId(), 2);
    EXPECT_EQ(full.GetTitle() + L"|" + full.GetContent() + L"|" + full.GetProjectId() + L"|" + full.GetDatasetId() + L"|" +
                  full.GetResourceId() + L"|" + full.GetResourceType() + L"|" + full.GetSenderId() + L"|" + full.GetSenderAction() + L"|" +
                  full.GetSendTime(),
              L"t|c|p|d|r|rt|s|sa|st");
    EXPECT_EQ(full.GetMessageType(), EMessageType::BUSINESS);
    EXPECT_EQ(full.GetMessageStatus(), EMessageStatus::UNREAD);
    EXPECT_EQ(out[EMessageType::BUSINESS][1]->GetMessageId(), 0) << "of another type";
    EXPECT_EQ(out[EMessageType::BUSINESS][1]->GetTitle(), L"");
    EXPECT_TRUE(manager.GetMessages(EMessageStatus::UNREAD, out));
    expectQuiet();
}

TEST_F(MessageWireTest, areFilteredByStatusProjectAndDataset)
{
    const char* const none = R"({"data":[]})";
    server.expect("GET", "/messages").reply(200, none);
    EXPECT_TRUE(fetch(EMessageStatus::ALL));
    EXPECT_THAT(out, IsEmpty());
    server.expect("GET", "/messages?status=READ").reply(200, none);
    EXPECT_TRUE(fetch(EMessageStatus::READ));
    server.expect("GET", "/messages?status=").reply(200, none);
    EXPECT_TRUE(fetch(static_cast<EMessageStatus>(9)));
    server.expect("GET", "/messages?status=UNREAD&projectId=p%201").times(2).reply(200, none);
    EXPECT_TRUE(manager.GetMessagesInProject(EMessageStatus::UNREAD, L"p 1", out, error));
    EXPECT_TRUE(manager.GetMessagesInProject(EMessageStatus::UNREAD, L"p 1", out));
    server.expect("GET", "/messages?datasetId=d-1").times(2).reply(200, none);
    EXPECT_TRUE(manager.GetMessagesInDataset(EMessageStatus::ALL, L"d-1", out, error));
    EXPECT_TRUE(manager.GetMessagesInDataset(EMessageStatus::ALL, L"d-1", out));
    expectQuiet();
}

TEST_F(MessageWireTest, areAskedForByAnIdThatOneOfTheMapsOwnMessagesHolds)
{
    const std::wstring project = L"a project with an id that is too long for a text without memory of its own";
    const std::wstring dataset = L"a dataset with an id that is too long for a text without memory of its own";
    const auto fill = [&] {
        out = {{EMessageType::BUSINESS,
                {IMessage::CreateMessage(7, L"", L"", project, dataset, EMessageType::BUSINESS, EMessageStatus::READ, L"", L"", L"", L"",
                                         L"")}}};
    };
    const char* const ofProject = "/messages?projectId=a%20project%20with%20an%20id%20that%20is%20too%20long%20for%20a%20text%20without%20"
                                  "memory%20of%20its%20own";
    const char* const ofDataset = "/messages?datasetId=a%20dataset%20with%20an%20id%20that%20is%20too%20long%20for%20a%20text%20without%20"
                                  "memory%20of%20its%20own";
    fill();
    server.expect("GET", ofProject).reply(503);
    server.expect("GET", ofProject).reply(200, R"({"data":[]})");
    EXPECT_TRUE(manager.GetMessagesInProject(EMessageStatus::ALL, out[EMessageType::BUSINESS][0]->GetProjectId(), out, error));
    EXPECT_THAT(out, IsEmpty());
    fill();
    server.expect("GET", ofDataset).reply(404);
    EXPECT_FALSE(manager.GetMessagesInDataset(EMessageStatus::ALL, out[EMessageType::BUSINESS][0]->GetDatasetId(), out, error));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(MessageWireTest, lieOnTheMessageService)
{
    host.change([](OrloConfig& config) {
        for (auto& [key, url] : config.serviceUrls) {
            if (key != L"message")
                url = L"http://127.0.0.1:1";
        }
    });
    server.expect("GET", unread).reply(200, R"({"data":[]})");
    EXPECT_TRUE(fetch());
    server.expect("PUT", markRead).reply(200, R"({"code":10000})");
    EXPECT_TRUE(manager.MarkMessageRead(7, EMessageType::BUSINESS, error));
    expectQuiet();
}

TEST_F(MessageWireTest, anEarlierErrorIsLoggedUnderTheNameOfTheOperationAndWiped)
{
    server.expect("GET", "/messages?projectId=p").reply(200, R"({"data":[]})");
    server.expect("PUT", markRead).reply(200, R"({"code":10000})");
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    EXPECT_TRUE(manager.GetMessagesInProject(EMessageStatus::ALL, L"p", out, error));
    expectClear(error);
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    EXPECT_TRUE(manager.MarkMessageRead(7, EMessageType::BUSINESS, error));
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::MessageManager::GetMessages 传入的ErrorCode，已有错误存在:earlier",
                                         L"E@orlo::MessageManager::MarkMessageByGivenStatus 传入的ErrorCode，已有错误存在:earlier"));
}

TEST_F(MessageWireTest, withoutAProjectOrADatasetAreNotAskedFor)
{
    EXPECT_FALSE(manager.GetMessagesInProject(EMessageStatus::ALL, L"", out, error));
    EXPECT_FALSE(manager.GetMessagesInDataset(EMessageStatus::ALL, L"", out, error));
    EXPECT_FALSE(manager.GetMessagesInProject(EMessageStatus::ALL, L"", out));
    EXPECT_FALSE(manager.GetMessagesInDataset(EMessageStatus::ALL, L"", out));
    EXPECT_EQ(out.size(), 1u) << "the map stays";
    EXPECT_EQ(server.requestCount(), 0u);
    expectClear(error);
    const std::wstring noProject = L"I [ORLOSDK][MessageManager::GetMessagesInProject] projectId is empty";
    const std::wstring noDataset = L"I [ORLOSDK][MessageManager::GetMessagesInProject] datasetId is empty";
    EXPECT_THAT(log.lines(), ElementsAre(noProject, noDataset, noProject, noDataset));
}

TEST_F(MessageWireTest, aFieldThatDoesNotFitKeepsItsDefault)
{
    server.expect("GET", unread)
        .reply(200, R"({"data":[{"messageId":4294967303,"title":null,"content":{"a":[]},"projectId":7,"datasetId":[],"resourceId":true,)"
                    R"("resourceType":1.5,"senderId":{},"senderAction":null,"sendTime":1700000000123,"messageType":"SYSTEM",)"
                    R"("messageStatus":"READ"}]})");
    EXPECT_TRUE(fetch());
    ASSERT_EQ(out[EMessageType::SYSTEM].size(), 1u);
    const IMessage& message = *out[EMessageType::SYSTEM][0];
    EXPECT_EQ(message.GetMessageId(), 0) << "beyond 32 bits";
    EXPECT_EQ(message.GetTitle() + message.GetContent() + message.GetProjectId() + message.GetDatasetId() + message.GetResourceId() +
                  message.GetResourceType() + message.GetSenderId() + message.GetSenderAction() + message.GetSendTime(),
              L"");
}

TEST_F(MessageWireTest, anAnswerWithoutAListIsASuccessAndOneLine)
{
    for (const char* body : {R"({"code":10000})", R"({"data":{}})", R"({"data":null})", "[]", "7"}) {
        log.clear();
        server.expect("GET", unread).reply(200, body);
        EXPECT_TRUE(fetch()) << body;
        EXPECT_THAT(out, IsEmpty());
        EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK][OrloPayloadProcessor::CreateHttpMessagesByJson] get error data structure"));
    }
    expectClear(error);
}

TEST_F(MessageWireTest, oneThatCannotBeUnderstoodEndsTheFetchAndThoseBeforeItStay)
{
    for (const char* odd :
         {R"({"messageType":"SYSTEM","messageStatus":"ALL"})", R"({"messageType":"SYSTEM","messageStatus":"read"})",
          R"({"messageType":"SYSTEM"})", R"({"messageType":"OTHER","messageStatus":"READ"})", R"({"messageStatus":"READ"})",
          R"({"messageType":0,"messageStatus":"READ"})", R"({"messageType":"SYSTEM","messageStatus":1})", "null", "7"}) {
        log.clear();
        server.expect("GET", unread)
            .reply(200, R"({"data":[{"messageType":"SYSTEM","messageStatus":"READ"},)" + std::string(odd) +
                            R"(,{"messageType":"SYSTEM","messageStatus":"READ"}]})");
        EXPECT_FALSE(fetch()) << odd;
        EXPECT_EQ(out[EMessageType::SYSTEM].size(), 1u) << odd;
        EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK][MessageManager::CreateMessageByRequestResult] translate message type faile"));
    }
    expectClear(error);
}

TEST_F(MessageWireTest, theFetchFailsAsEveryRequestingOperationDoesWithoutTheTag)
{
    RequestingOperation fetched{"GET", unread, "", L"OrloWebService::GetMessages - code:",
                                [&](ErrorCode& ec) { return manager.GetMessages(EMessageStatus::UNREAD, out, ec); }};
    fetched.isTagged = false;
    fetched.afterwards = L"E [ORLOSDK]fail to get messages";
    expectFailuresOf(fetched, server, log);
}

TEST_F(MessageWireTest, areMarkedAsRead)
{
    server.expect("PUT", markRead).times(2).reply(200, R"({"code":10000})");
    EXPECT_TRUE(manager.MarkMessageRead(7, EMessageType::BUSINESS, error));
    EXPECT_TRUE(manager.MarkMessageRead(7, EMessageType::BUSINESS));
    server.expect("PUT", "/messages/SYSTEM/-1/mark/READ").reply(200, R"({"code":10000})");
    EXPECT_TRUE(manager.MarkMessageRead(-1, EMessageType::SYSTEM, error));
    expectQuiet();
}

TEST_F(MessageWireTest, aMarkThatIsNotTakenIsToldWithoutTheTag)
{
    server.expect("PUT", markRead).reply(200, R"({"code":10001,"message":"no"})");
    EXPECT_FALSE(manager.MarkMessageRead(7, EMessageType::BUSINESS, error));
    expectClear(error);
    EXPECT_THAT(log.lines(), ElementsAre(L"E OrloWebService::GetMessages - response is not normal: {\"code\":10001,\"message\":\"no\"}",
                                         L"E [ORLOSDK][MessageManager::MarkMessageStatus]fail to mark message status"));
    for (const char* body : {R"({"code":"10000"})", "{}", "[10000]", "10000", "null"}) {
        log.clear();
        server.expect("PUT", markRead).reply(200, body);
        EXPECT_FALSE(manager.MarkMessageRead(7, EMessageType::BUSINESS, error)) << body;
        expectClear(error);
        EXPECT_THAT(log.lines(), ElementsAre(L"E OrloWebService::GetMessages - response is not normal: " + utils::toWstring(body),
                                             L"E [ORLOSDK][MessageManager::MarkMessageStatus]fail to mark message status"));
    }
}

TEST_F(MessageWireTest, areMarkedWithAnyStatusByTheManagerItself)
{
    MessageManager itself;
    server.expect("PUT", "/messages/SYSTEM/7/mark/UNREAD").reply(200, R"({"code":10000})");
    EXPECT_TRUE(itself.MarkMessageByGivenStatus(7, EMessageType::SYSTEM, EMessageStatus::UNREAD, error));
    server.expect("PUT", "/messages//7/mark/").reply(200, R"({"code":10000})");
    EXPECT_TRUE(itself.MarkMessageByGivenStatus(7, static_cast<EMessageType>(9), static_cast<EMessageStatus>(9), error));
    expectQuiet();
    EXPECT_EQ(virtualSlot(&MessageManager::MarkMessageByGivenStatus), 10u) << "behind the destructor of the interface";
}

TEST_F(MessageWireTest, theMarkFailsAsEveryRequestingOperationDoesInTheWordsOfTheFetch)
{
    RequestingOperation mark{"PUT", markRead, "", L"OrloWebService::GetMessages - code:",
                             [&](ErrorCode& ec) { return manager.MarkMessageRead(7, EMessageType::BUSINESS, ec); }};
    mark.isTagged = false;
    mark.afterwards = L"E [ORLOSDK][MessageManager::MarkMessageStatus]fail to mark message status";
    expectFailuresOf(mark, server, log);
}

} // namespace
} // namespace orlo::test
