#include "support/TransferTestSupport.h"

#include <BaseCommon/Callbacks.h>

#include <mutex>
#include <stdexcept>

namespace orlo::test {
namespace {

struct Told
{
    int status;
    std::wstring body;
    std::string stepKey;
    OrloCallbackContext* context;
    long long error;
};

/// A caller's own handler.
class Listener : public IOrloCallback
{
public:
    void on_complete(int status, const std::wstring& body, const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context,
                     ErrorCode& error) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_told.push_back({status, body, stepKey, context.get(), error.GetValue()});
        }
        if (throwsException)
            throw std::runtime_error("the listener's own failure");
        if (throwsNumber)
            throw 7;
    }
    std::vector<Told> told() const
    {
        const std::lock_guard lock(m_mutex);
        return m_told;
    }

    bool throwsException = false;
    bool throwsNumber = false;

private:
    mutable std::mutex m_mutex;
    std::vector<Told> m_told;
};

class BatchCallerTest : public TransferTest
{
protected:
    std::future<PromiseData> start() { return HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {"blocks/a"}, context); }

    void expectTold(int status, const std::wstring& body)
    {
        const std::vector<Told> told = listener->told();
        ASSERT_EQ(told.size(), 1U);
        EXPECT_EQ(told[0].status, status);
        EXPECT_EQ(told[0].body, body);
        EXPECT_EQ(told[0].stepKey, "BatchDownloadAction");
        EXPECT_EQ(told[0].context, context.get());
    }

    void oneFile(int status)
    {
        expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}});
        Reply reply = fileReply("x");
        reply.status = status;
        store.expect("GET", "/a").reply(reply);
    }

    const std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    const std::shared_ptr<OrloCallbackContext> context = std::make_shared<OrloCallbackContext>(listener);
};

TEST_F(BatchCallerTest, isToldOfASuccessBeforeTheFutureIsReady)
{
    oneFile(200);
    EXPECT_TRUE(outcomeOf(start()).success);
    expectTold(200, L"");
}

TEST_F(BatchCallerTest, isToldOfAFailure)
{
    oneFile(404);
    EXPECT_FALSE(outcomeOf(start()).success);
    expectTold(404, L"");
    EXPECT_EQ(listener->told()[0].error, errorStatusValue);
}

TEST_F(BatchCallerTest, isToldOfARefusedAuthority)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reply(403, "no");
    EXPECT_FALSE(outcomeOf(start()).success);
    expectTold(403, L"");
}

TEST_F(BatchCallerTest, isToldOfATransportFailure)
{
    platform.expect("POST", "/datasets/ds-1/blockFiles/readSAS").anyBody().reset();
    const PromiseData outcome = outcomeOf(start());
    EXPECT_EQ(outcome.status, 5555);
    expectTold(5555, outcome.message);
}

TEST_F(BatchCallerTest, isToldOfAnEmptyDataset)
{
    outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "", {"blocks/a"}, context));
    expectTold(400, L"dataset id is empty");
}

TEST_F(BatchCallerTest, isNotToldWhenThereIsNoSeed)
{
    outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "ds-1", {}, context));
    EXPECT_EQ(listener->told().size(), 0U);
}

TEST_F(BatchCallerTest, isToldOnceForEachLostFile)
{
    expectBatch(R"(["blocks/a"])", {{"blocks/a", atStore("/a")}, {"blocks/b", atStore("/b")}, {"blocks/c", atStore("/c")}});
    store.anyOrder();
    for (const char* name : {"/a", "/b", "/c"})
        store.expect("GET", name).reply(404, "");
    EXPECT_FALSE(outcomeOf(start()).success);
    EXPECT_TRUE(waitUntil([&] { return listener->told().size() == 3; }));
}

TEST_F(BatchCallerTest, aContextWithoutAHandlerIsNoTrouble)
{
    oneFile(200);
    context->handler = nullptr;
    EXPECT_TRUE(outcomeOf(start()).success);
}

TEST_F(BatchCallerTest, anExceptionOfTheHandlerFailsTheBatchAndIsLogged)
{
    listener->throwsException = true;
    oneFile(200);
    expectOutcome(outcomeOf(start()), false, 5555, L"the listener's own failure");
    expectTold(200, L"");
    EXPECT_EQ(log.count(L"E@DownloadBatchFilesHandler::on_complete [END_SET_FALSE_TO_PROMISE]the listener's own failure"), 1U);
    EXPECT_EQ(readFile(cached("ds-1", "blocks/a")), "x");
}

TEST_F(BatchCallerTest, anythingElseThatTheHandlerThrowsFailsTheBatchToo)
{
    listener->throwsNumber = true;
    oneFile(404);
    expectOutcome(outcomeOf(start()), false, 5555, L"unknown exception");
    expectTold(404, L"");
}

TEST_F(BatchCallerTest, anExceptionAboutAnEmptyDatasetStaysInside)
{
    listener->throwsException = true;
    expectOutcome(outcomeOf(HttpClient::downloadBatchFiles(error, "blocks", "", {"blocks/a"}, context)), false, 5555,
                  L"the listener's own failure");
    expectTold(400, L"dataset id is empty");
}

TEST_F(BatchCallerTest, theCallersContextIsLetGoAtTheEnd)
{
    oneFile(200);
    EXPECT_TRUE(outcomeOf(start()).success);
    EXPECT_TRUE(waitUntil([&] { return context.use_count() == 1; }));
}

} // namespace
} // namespace orlo::test
