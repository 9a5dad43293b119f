#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/NetworkProject/Projects/SpecialtyWeb.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* listTarget = "/projects/p-1/specialties";

class SpecialtiesWireTest : public ProjectObjectTest
{
protected:
    using Ids = std::map<int, std::wstring>;

    Ids found() const
    {
        Ids ids;
        for (const auto& [type, id] : out)
            ids[static_cast<int>(type)] = id;
        return ids;
    }

    std::map<SpecialtyType, std::wstring> out;
};

TEST_F(SpecialtiesWireTest, givesTheIdOfEveryType)
{
    server.expect("GET", listTarget)
        .reply(200, R"({"code":10000,"data":[{"id":"s-4","type":"ZEB"},{"id":"s-1","type":"ZOK"},{"id":"s-3","type":"ZUTA"},)"
                    R"({"id":"s-2","type":"ZIM"},{"id":"s-0","type":"Unknown","name":"n","projectId":"p-1","description":"d"}]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
    EXPECT_EQ(found(), (Ids{{0, L"s-0"}, {1, L"s-1"}, {2, L"s-2"}, {3, L"s-3"}, {4, L"s-4"}}));
    expectQuiet();
}

TEST_F(SpecialtiesWireTest, ofTwoRecordsOfATypeTheLaterOneWins)
{
    server.expect("GET", listTarget)
        .reply(200, R"({"code":10000,"data":[{"id":"first","type":"ZOK"},{"id":"x","type":"ZIM"},{"id":"later","type":"ZOK"}]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
    EXPECT_EQ(found(), (Ids{{1, L"later"}, {2, L"x"}}));
}

TEST_F(SpecialtiesWireTest, anUnknownTypeCountsAsZero)
{
    for (const char* record : {R"({"id":"odd","type":"zok"})", R"({"id":"odd","type":""})", R"({"id":"odd"})", R"({"id":"odd","type":1})",
                               R"({"id":"odd","type":"ZOK "})"}) {
        out.clear();
        server.expect("GET", listTarget).reply(200, R"({"code":10000,"data":[{"id":"s-0","type":"Unknown"},)" + std::string(record) + "]}");
        EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
        EXPECT_EQ(found(), (Ids{{0, L"odd"}})) << record;
    }
}

TEST_F(SpecialtiesWireTest, keepsWhatTheMapHeldUnderOtherTypes)
{
    out = {{SpecialtyType::ZEB, L"kept"}, {SpecialtyType::ZOK, L"old"}};
    server.expect("GET", listTarget).reply(200, R"({"code":10000,"data":[{"id":"new","type":"ZOK"},{"type":"ZIM"}]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
    EXPECT_EQ(found(), (Ids{{1, L"new"}, {2, L""}, {4, L"kept"}}));
}

TEST_F(SpecialtiesWireTest, theShortFormGivesTheSame)
{
    server.expect("GET", listTarget).reply(200, R"({"code":10000,"data":[{"id":"s-1","type":"ZOK"}]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out));
    EXPECT_EQ(found(), (Ids{{1, L"s-1"}}));
    server.expect("GET", listTarget).reply(404);
    EXPECT_FALSE(project->GetSpecialtyTypes(out));
}

TEST_F(SpecialtiesWireTest, anAnswerWithoutTheMarkIsLoggedWithItsBody)
{
    const std::pair<const char*, const wchar_t*> rows[] = {
        {R"({"code":7,"data":[{"id":"s-1","type":"ZOK"}]})", LR"({"code":7,"data":[{"id":"s-1","type":"ZOK"}]})"},
        {R"({"code":"10000","data":[]})", LR"({"code":"10000","data":[]})"},
        {R"({"data":[]})", LR"({"data":[]})"},
        {"[]", L"[]"},
        {"", L"null"},
    };
    for (const auto& [body, logged] : rows) {
        log.clear();
        server.expect("GET", listTarget).reply(200, body);
        EXPECT_FALSE(project->GetSpecialtyTypes(out, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(),
                  (Lines{L"E [ORLOSDK]OrloWebService::GetSpecialtiesInProject - response is not normal: " + std::wstring(logged),
                         L"E [ORLOSDK]fail to get specialties of project."}));
    }
    EXPECT_TRUE(out.empty());
}

TEST_F(SpecialtiesWireTest, aGoodEnvelopeWithoutAnArrayFails)
{
    for (const char* body : {R"({"code":10000})", R"({"code":10000,"data":null})", R"({"code":10000,"data":{"id":"s-1","type":"ZOK"}})"}) {
        log.clear();
        server.expect("GET", listTarget).reply(200, body);
        EXPECT_FALSE(project->GetSpecialtyTypes(out, error)) << body;
        expectClear(error);
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]fail to get specialties of project."});
    }
}

TEST_F(SpecialtiesWireTest, anEmptyArrayIsASuccess)
{
    server.expect("GET", listTarget).reply(200, R"({"code":10000,"data":[]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
    EXPECT_TRUE(out.empty());
}

TEST_F(SpecialtiesWireTest, theListingFailsAsEveryRequestingOperationDoes)
{
    RequestingOperation operation{"GET", listTarget, "", L"OrloWebService::GetSpecialtiesInProject - code:",
                                  [&](ErrorCode& ec) { return project->GetSpecialtyTypes(out, ec); }};
    operation.afterwards = L"E [ORLOSDK]fail to get specialties of project.";
    expectFailuresOf(operation, server, log);
    EXPECT_TRUE(out.empty());
}

TEST_F(SpecialtiesWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", listTarget).reply(200, R"({"code":10000,"data":[]})");
    EXPECT_TRUE(project->GetSpecialtyTypes(out, error));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetSpecialtyTypes 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

TEST_F(SpecialtiesWireTest, createsASpecialtyOfEveryType)
{
    const std::pair<int, const char*> types[] = {{1, "ZOK"},     {2, "ZIM"},     {3, "ZUTA"},    {4, "ZEB"},
                                                 {0, "Unknown"}, {9, "Unknown"}, {-1, "Unknown"}};
    for (const auto& [type, text] : types) {
        server.expect("POST", "/specialties")
            .header("Content-Type", "application/json")
            .body(R"({"projectId":"p-1","type":")" + std::string(text) + R"(","name":"结构"})")
            .reply(200, R"({"code":10000,"data":{"id":"s-9","type":"ZOK"}})");
        EXPECT_EQ(project->CreateSpecialty(static_cast<SpecialtyType>(type), L"结构", error), L"s-9");
    }
    expectQuiet();
}

TEST_F(SpecialtiesWireTest, aSpecialtyMayBeCreatedWithoutAName)
{
    server.expect("POST", "/specialties").body(R"({"projectId":"p-1","type":"ZIM","name":""})").reply(200, R"({"data":{"id":"s-9"}})");
    EXPECT_EQ(project->CreateSpecialty(SpecialtyType::ZIM, L"", error), L"s-9");
}

TEST_F(SpecialtiesWireTest, theNewIdIsReadFromTheDataWhateverTheCode)
{
    const std::pair<const char*, const wchar_t*> rows[] = {
        {R"({"data":{"id":"s-9"}})", L"s-9"},
        {R"({"code":4,"data":{"id":"s-9"}})", L"s-9"},
        {R"({"code":10000,"data":{"id":9}})", L""},
        {R"({"code":10000,"data":"s-9"})", L""},
        {R"({"code":10000,"data":{}})", L""},
        {R"({"code":10000,"id":"s-9"})", L""},
        {R"([{"id":"s-9"}])", L""},
        {"", L""},
    };
    for (const auto& [body, id] : rows) {
        server.expect("POST", "/specialties").anyBody().reply(200, body);
        EXPECT_EQ(project->CreateSpecialty(SpecialtyType::ZOK, L"n", error), id) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpecialtiesWireTest, aProjectWithoutAnIdGetsNoSpecialty)
{
    EXPECT_EQ(projectOf(L"")->CreateSpecialty(SpecialtyType::ZOK, L"n", error), L"");
    expectGenericError(error, 3892314113, L"GenericError", L"参数输入有误!");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpecialtiesWireTest, aTypeWithoutATextIsRefused)
{
    EXPECT_EQ(OrloWebService::CreateSpecialty(error, L"p-1", L"", L"n"), L"");
    expectGenericError(error, 3892314113, L"GenericError", L"参数输入有误!");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(SpecialtiesWireTest, theCreationFailsAsEveryRequestingOperationDoesAndLogsNoStatus)
{
    expectFailuresOf({"POST", "/specialties", R"({"projectId":"p-1","type":"ZEB","name":"n"})", L"",
                      [&](ErrorCode& ec) { return !project->CreateSpecialty(SpecialtyType::ZEB, L"n", ec).empty(); }},
                     server, log);
}

TEST_F(SpecialtiesWireTest, anEarlierErrorIsLoggedAndWipedByTheCreationToo)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("POST", "/specialties").anyBody().reply(200, R"({"data":{"id":"s-9"}})");
    EXPECT_EQ(project->CreateSpecialty(SpecialtyType::ZEB, L"n", error), L"s-9");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::CreateSpecialty 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
