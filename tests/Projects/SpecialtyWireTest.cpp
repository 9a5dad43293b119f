#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

// The manager remembers specialties for the life of the process, so that each test has ids of its own.
class SpecialtyWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();

    int typeOf(const std::wstring& id) { return static_cast<int>(manager.GetSpecialtyTypeById(id, error)); }
};

TEST_F(SpecialtyWireTest, readsTheTypeOfEachSpecialty)
{
    server.expect("GET", "/specialties/type-0").reply(200, R"({"data":{"id":"type-0","type":"Unknown"}})");
    server.expect("GET", "/specialties/type-1").reply(200, R"({"code":10000,"data":{"id":"type-1","name":"ZEB","type":"ZOK"}})");
    server.expect("GET", "/specialties/type-2").reply(200, R"({"code":4,"data":{"type":"ZIM"}})");
    server.expect("GET", "/specialties/type-3").reply(200, R"({"data":{"type":"ZUTA"}})");
    server.expect("GET", "/specialties/type-4").reply(200, R"({"data":{"type":"ZEB"}})");
    EXPECT_EQ(typeOf(L"type-0"), 0);
    EXPECT_EQ(typeOf(L"type-1"), 1);
    EXPECT_EQ(typeOf(L"type-2"), 2);
    EXPECT_EQ(typeOf(L"type-3"), 3);
    EXPECT_EQ(typeOf(L"type-4"), 4);
    expectQuiet();
}

TEST_F(SpecialtyWireTest, remembersEveryTypeForGood)
{
    server.expect("GET", "/specialties/kept-1").reply(200, R"({"data":{"type":"ZIM"}})");
    server.expect("GET", "/specialties/kept-2").reply(200, R"({"data":{"type":"ZEB"}})");
    EXPECT_EQ(typeOf(L"kept-1"), 2);
    EXPECT_EQ(typeOf(L"kept-2"), 4);
    EXPECT_EQ(typeOf(L"kept-1"), 2);
    EXPECT_EQ(static_cast<int>(manager.GetSpecialtyTypeById(L"kept-2")), 4);
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(SpecialtyWireTest, aTypeThatIsNotInTheListIsUnknownAndRemembered)
{
    server.expect("GET", "/specialties/odd-1").reply(200, R"({"data":{"type":"zok"}})");
    server.expect("GET", "/specialties/odd-2").reply(200, R"({"data":{"type":1}})");
    server.expect("GET", "/specialties/odd-3").reply(200, R"({"data":null})");
    for (const wchar_t* id : {L"odd-1", L"odd-2", L"odd-3", L"odd-1", L"odd-2", L"odd-3"})
        EXPECT_EQ(typeOf(id), 0) << id;
    expectClear(error);
}

TEST_F(SpecialtyWireTest, aFailedLookupSticksForTheLifeOfTheProcess)
{
    server.expect("GET", "/specialties/failed").reply(500, "busy");
    EXPECT_EQ(typeOf(L"failed"), 0);
    expectHttpError(error, -402653182, L"HttpError", L"busy", 500);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetSpecialty - code:500"});
    EXPECT_EQ(server.requestCount(), 1u) << "the request is not retried";
    ErrorCode second;
    EXPECT_EQ(static_cast<int>(manager.GetSpecialtyTypeById(L"failed", second)), 0);
    expectClear(second);
}

TEST_F(SpecialtyWireTest, anAnswerWithoutDataIsUnknownInSilence)
{
    server.expect("GET", "/specialties/no-data").reply(200, R"({"code":10000,"type":"ZOK"})");
    EXPECT_EQ(typeOf(L"no-data"), 0);
    expectQuiet();
}

TEST_F(SpecialtyWireTest, aTransportFailureKeepsItsCodeAndSticksToo)
{
    server.expect("GET", "/specialties/reset").reset();
    EXPECT_EQ(typeOf(L"reset"), 0);
    expectHttpError(error, 3892314114, L"generic exception", resetBy(server.url()), resetCode);
    EXPECT_EQ(log.lines(), Lines{});
    error.Clear();
    EXPECT_EQ(typeOf(L"reset"), 0);
    expectClear(error);
}

TEST_F(SpecialtyWireTest, anEarlierErrorIsLoggedByBothFramesOfALookup)
{
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", "/specialties/framed").reply(200, R"({"data":{"type":"ZIM"}})");
    EXPECT_EQ(typeOf(L"framed"), 2);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ProjectManager::GetSpecialtyTypeById 传入的ErrorCode，已有错误存在:earlier",
                                  L"E@orlo::ProjectManager::GetSpecialtyType 传入的ErrorCode，已有错误存在:earlier"}));
    expectGenericError(error, 3892314113, L"GenericError", L"earlier");
}

} // namespace
} // namespace orlo::test
