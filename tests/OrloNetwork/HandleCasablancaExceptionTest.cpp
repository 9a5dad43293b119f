#include "ChainProbe.h"
#include "support/LogCapture.h"

#include <OrloNetwork/WebRequest.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace orlo::test {
namespace {

using http::HandleCasablancaException;

class HandleCasablancaExceptionTest : public testing::Test
{
protected:
    template <class Exception>
    void fail(const Exception& exception)
    {
        HandleCasablancaException(pplx::task_from_exception<void>(exception), context, "PutFile", error);
    }

    Heard onlyCall() const
    {
        const auto heard = handler->heard.all();
        EXPECT_EQ(heard.size(), 1U);
        return heard.empty() ? Heard() : heard.front();
    }

    int codeOfError() const
    {
        const auto http = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
        return http ? http->GetCode() : -1;
    }

    LogCapture log;
    ErrorCode error;
    std::shared_ptr<PlainHandler> handler = std::make_shared<PlainHandler>();
    std::shared_ptr<OrloCallbackContext> context = std::make_shared<OrloCallbackContext>(handler, true);
};

TEST_F(HandleCasablancaExceptionTest, leavesASuccessAlone)
{
    HandleCasablancaException(pplx::task_from_result(), context, "PutFile", error);
    EXPECT_EQ(handler->heard.count(), 0U);
    EXPECT_TRUE(context->propagate);
    EXPECT_TRUE(error.isClear());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(HandleCasablancaExceptionTest, reportsATransportFailureWithItsCode)
{
    fail(web::http::http_exception(std::error_code(104, std::generic_category()), "Failed to read HTTP status line"));
    const Heard heard = onlyCall();
    EXPECT_EQ(heard.status, 5555);
    EXPECT_EQ(heard.body, L"Failed to read HTTP status line");
    EXPECT_EQ(heard.stepKey, "PutFile");
    EXPECT_FALSE(heard.asBytes);
    EXPECT_EQ(error.GetValue(), 0xE8000002LL);
    EXPECT_EQ(error.GetErrorMessage(), L"Failed to read HTTP status line");
    EXPECT_EQ(codeOfError(), 104);
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"E@orlo::http::HandleCasablancaException PutFile - exception caught: "
                                                      L"message[Failed to read HTTP status line]"}));
}

TEST_F(HandleCasablancaExceptionTest, reportsAnyOtherException)
{
    fail(std::runtime_error("disk full\r"));
    EXPECT_EQ(onlyCall().status, 5555);
    EXPECT_EQ(onlyCall().body, L"disk full");
    EXPECT_EQ(codeOfError(), 5555);
}

TEST_F(HandleCasablancaExceptionTest, reportsWhatIsNoException)
{
    fail(42);
    EXPECT_EQ(onlyCall().status, 5555);
    EXPECT_EQ(onlyCall().body, L"unknown exception");
    EXPECT_EQ(codeOfError(), 5556);
}

TEST_F(HandleCasablancaExceptionTest, clearsThePropagationFlagBeforeTheHandlerIsCalled)
{
    fail(std::runtime_error("failed"));
    EXPECT_FALSE(onlyCall().propagate);
    EXPECT_FALSE(context->propagate);
}

TEST_F(HandleCasablancaExceptionTest, callsThePlainFormOfAFileHandler)
{
    const auto file = std::make_shared<FileHandler>();
    context->handler = file;
    fail(std::runtime_error("failed"));
    ASSERT_EQ(file->heard.count(), 1U);
    EXPECT_FALSE(file->heard.all()[0].asBytes);
}

TEST_F(HandleCasablancaExceptionTest, anAddressReachesNoHandlerNoErrorAndNoLog)
{
    fail(std::runtime_error("no way to \"https://store.example/x?sig=secret\" today"));
    EXPECT_EQ(onlyCall().body, L"no way to \"<address>");
    EXPECT_EQ(error.GetErrorMessage(), L"no way to \"<address>");
    EXPECT_FALSE(log.holds(L"secret"));
    EXPECT_FALSE(log.holds(L"store.example"));
}

TEST_F(HandleCasablancaExceptionTest, anAddressThatIsNoUriIsNotToldInParts)
{
    for (const char* address : {"https://store.example/a b?sig=secret", "store.example/\"x\"?sig=secret"}) {
        handler = std::make_shared<PlainHandler>();
        context->handler = handler;
        try {
            static_cast<void>(web::uri(utility::conversions::to_string_t(address)));
            ADD_FAILURE() << address;
        }
        catch (const web::uri_exception& e) {
            fail(e);
        }
        EXPECT_EQ(onlyCall().body, L"the address is not a valid URI");
    }
    EXPECT_FALSE(log.holds(L"secret"));
}

TEST_F(HandleCasablancaExceptionTest, withoutAContextTheErrorIsAssignedAllTheSame)
{
    context = nullptr;
    fail(std::runtime_error("failed"));
    EXPECT_EQ(error.GetErrorMessage(), L"failed");
}

TEST_F(HandleCasablancaExceptionTest, aContextWithoutAHandlerLosesItsFlagOnly)
{
    context->handler = nullptr;
    fail(std::runtime_error("failed"));
    EXPECT_FALSE(context->propagate);
    EXPECT_EQ(error.GetErrorMessage(), L"failed");
}

TEST_F(HandleCasablancaExceptionTest, aHandlerThatThrowsStopsThere)
{
    handler->then = [] { throw std::runtime_error("handler"); };
    fail(std::runtime_error("failed"));
    EXPECT_EQ(handler->heard.count(), 1U);
    EXPECT_TRUE(log.has(L"E@orlo::http::HandleCasablancaException the handler of a failed request threw an exception"));
}

TEST_F(HandleCasablancaExceptionTest, takesTheFailureOutOfAChainOfContinuations)
{
    pplx::task<void> last;
    {
        last = pplx::create_task([] {
                   throw web::http::http_exception(std::error_code(113, std::generic_category()), "refused");
               }).then([this](const pplx::task<void>& task) { HandleCasablancaException(task, context, "GetFile", error); });
    }
    EXPECT_NO_THROW(last.get());
    EXPECT_EQ(onlyCall().stepKey, "GetFile");
    EXPECT_EQ(codeOfError(), 113);
}

} // namespace
} // namespace orlo::test
