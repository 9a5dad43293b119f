#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Resources/IProjectComponentLibrary.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

// What is read of one component.
namespace orlo::test {
namespace {

using Library = IProjectComponentLibrary;
using Texts = std::vector<std::wstring>;

constexpr const char* detailTarget = "/structural/project/p-1/suite/7/3/info";
constexpr const char* existsTarget = "/structural/project/p-1/subject/suite/7/exist";
constexpr const char* familyTypeTarget = "/structural/project/p-1/suite/7/3/family/info?name=t";
constexpr const char* familyTypesTarget = "/structural/project/p-1/suite/7/family_types?version=3";
constexpr const char* cutlinesTarget = "/structural/project/p-1/suite/7/placeholder?version=3";
constexpr const char* fileTarget = "/structural/project/p-1/suite/7/3";
constexpr const char* xmlTarget = "/structural/project/p-1/suite/7/detail/xml?version=3";

const std::wstring sizeMissing = L"E [ORLOSDK]size is empty, maybe response json not normal.";

/// An operation that reads something of the component "7" in version 3.
struct ReadingOperation
{
    std::wstring name;
    std::string target;
    std::string goodAnswer;
    std::vector<std::string> unusable; ///< bodies that lack what is needed
    std::function<bool(ErrorCode&)> read;
    bool isJson = true;
};

class ComponentReadWireTest : public WireTest
{
protected:
    ComponentReadWireTest()
    {
        component.id = L"before";
        component.familyTypeNames = {L"before"};
        component.thumbnails = {{L"before", {L"before"}}};
    }

    bool readDetail() { return Library::GetDetailInfoOfComponent(L"p-1", L"7", 3, component, error); }

    std::vector<ReadingOperation> operations()
    {
        const std::vector<std::string> withoutObject{R"({"data":[]})", R"({"data":"{}"})", R"({"data":true})"};
        const std::vector<std::string> withoutArray{R"({"data":{}})", R"({"data":"[]"})", R"({"data":true})"};
        return {
            {L"GetDetailInfoOfComponent", detailTarget, R"({"data":{"id":"7"}})", withoutObject,
             [&](ErrorCode& ec) { return Library::GetDetailInfoOfComponent(L"p-1", L"7", 3, component, ec); }},
            {L"IsComponentExist",
             existsTarget,
             R"({"data":{"exist":true}})",
             {R"({"data":[]})", R"({"data":true})", R"({"data":{}})", R"({"data":{"exist":"true"}})", R"({"data":{"exist":null}})",
              R"({"exist":true})"},
             [&](ErrorCode& ec) { return Library::IsComponentExist(L"p-1", L"7", exists, ec); }},
            {L"GetFamilyTypeInfoOfComponent", familyTypeTarget, R"({"data":{"a":1}})", withoutObject,
             [&](ErrorCode& ec) { return Library::GetFamilyTypeInfoOfComponent(L"p-1", L"7", 3, L"t", text, ec); }},
            {L"GetAllFamilyTypeInfosOfComponent", familyTypesTarget, R"({"data":{"a":1}})", withoutObject,
             [&](ErrorCode& ec) { return Library::GetAllFamilyTypeInfosOfComponent(L"p-1", L"7", 3, text, ec); }},
            {L"GetCutlineOfComponent", cutlinesTarget, R"({"data":[{"id":1}]})", withoutArray,
             [&](ErrorCode& ec) { return Library::GetCutlineOfComponent(L"p-1", L"7", 3, cutlines, ec); }},
            {L"GetDownloadUrlOfComponent",
             fileTarget,
             R"({"data":"url"})",
             {R"({"data":[]})", R"({"data":{}})", R"({"data":true})"},
             [&](ErrorCode& ec) { return Library::GetDownloadUrlOfComponent(L"p-1", L"7", 3, text, ec); }},
            {L"GetXmlInfoOfComponent",
             xmlTarget,
             "<a/>",
             {},
             [&](ErrorCode& ec) { return Library::GetXmlInfoOfComponent(L"p-1", L"7", 3, text, ec); },
             false},
        };
    }

    void expectBefore() const
    {
        EXPECT_EQ(component.id, L"before");
        EXPECT_EQ(component.familyTypeNames, Texts{L"before"});
        EXPECT_EQ(component.thumbnails.count(L"before"), 1u);
        EXPECT_FALSE(exists);
        EXPECT_EQ(text, L"before");
        EXPECT_EQ(cutlines.size(), 1u);
    }

    /// The operation sends nothing for want of an argument.
    template <class Call>
    void expectRefused(const std::wstring& name, const Call& call)
    {
        log.clear();
        error.Clear();
        EXPECT_FALSE(call());
        expectGenericError(error, badInputValue, L"GenericError", name + L"：参数输入有误!");
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]" + name + L"：参数输入有误!"});
        EXPECT_EQ(server.connectionCount(), 0u);
    }

    Component component;
    std::vector<Cutline> cutlines = std::vector<Cutline>(1);
    std::wstring text = L"before";
    bool exists = false;
};

// All details

TEST_F(ComponentReadWireTest, aComponentIsReadWithAllItsFields)
{
    server.expect("GET", detailTarget)
        .reply(200,
               R"({"data":{"id":"7","publicComponentId":"70","version":3,"name":"柱","source":1,"categoryId":5,"categoryCode":"0101",)"
               R"("status":"NORMAL","familyTypeNames":["400","六百",7,null],"thumbnail":"t","updateStatus":"NEWEST","thumbnailSizes":[)"
               R"({"size":"512","thumbnails":["a","b",7]},{"size":"128","thumbnails":["c"]},{"size":"64"}]}})");
    EXPECT_TRUE(readDetail());
    EXPECT_EQ(component.id, L"7");
    EXPECT_EQ(component.publicComponentId, L"70");
    EXPECT_EQ(component.version, 3);
    EXPECT_EQ(component.name, L"柱");
    EXPECT_EQ(component.source, 1);
    EXPECT_EQ(component.categoryId, 5);
    EXPECT_EQ(component.categoryCode, L"0101");
    EXPECT_EQ(component.status, L"NORMAL");
    EXPECT_EQ(component.familyTypeNames, (Texts{L"400", L"六百"}));
    EXPECT_EQ(component.thumbnail, L"t");
    EXPECT_EQ(component.updateStatus, L"NEWEST");
    EXPECT_EQ(component.thumbnails, (std::map<std::wstring, Texts>{{L"128", {L"c"}}, {L"512", {L"a", L"b"}}, {L"64", {}}}));
    expectQuiet();
}

TEST_F(ComponentReadWireTest, thumbnailsWithoutASizeAreToldAndLeftOut)
{
    server.expect("GET", detailTarget)
        .reply(200, R"({"data":{"id":"7","thumbnailSizes":[{"size":"","thumbnails":["a"]},{"thumbnails":["b"]},{"size":128},7,null,)"
                    R"({"size":"128","thumbnails":["c"]}],"name":"柱"}})");
    EXPECT_TRUE(readDetail());
    EXPECT_EQ(component.thumbnails, (std::map<std::wstring, Texts>{{L"128", {L"c"}}}));
    EXPECT_EQ(component.id + component.name, L"7柱") << "the rest is read";
    expectClear(error);
    EXPECT_EQ(log.lines(), (Lines{sizeMissing, sizeMissing, sizeMissing, sizeMissing, sizeMissing}));
}

TEST_F(ComponentReadWireTest, ofTwoRowsOfOneSizeTheLastStands)
{
    server.expect("GET", detailTarget)
        .reply(200, R"({"data":{"thumbnailSizes":[{"size":"128","thumbnails":["a","b"]},{"size":"128","thumbnails":["c"]}]}})");
    EXPECT_TRUE(readDetail());
    EXPECT_EQ(component.thumbnails, (std::map<std::wstring, Texts>{{L"128", {L"c"}}}));
    expectQuiet();
}

TEST_F(ComponentReadWireTest, fieldsOfAComponentOfAnotherTypeKeepTheirDefaults)
{
    server.expect("GET", detailTarget)
        .reply(200, R"({"data":{"id":7,"publicComponentId":null,"version":"3","name":[],"source":4294967296,"categoryId":1.5,)"
                    R"("categoryCode":{},"status":true,"familyTypeNames":"x","thumbnail":7,"updateStatus":null,"thumbnailSizes":{}}})");
    EXPECT_TRUE(readDetail());
    EXPECT_EQ(component.id + component.publicComponentId + component.name + component.categoryCode + component.status +
                  component.thumbnail + component.updateStatus,
              L"");
    EXPECT_EQ(component.version, -1);
    EXPECT_EQ(component.source, -1);
    EXPECT_EQ(component.categoryId, -1);
    EXPECT_TRUE(component.familyTypeNames.empty()) << "nothing is left of what stood there";
    EXPECT_TRUE(component.thumbnails.empty());
    expectQuiet();
}

TEST_F(ComponentReadWireTest, theDetailsNeedNoArgument)
{
    // Intended: here nothing is refused, so the platform is asked with what there is.
    server.expect("GET", "/structural/project//suite//-1/info").reply(404, "none");
    EXPECT_FALSE(Library::GetDetailInfoOfComponent(L"", L"", -1, component, error));
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetDetailInfoOfComponent - code:404"});
}

TEST_F(ComponentReadWireTest, theVersionGoesOutInDecimalWithItsSign)
{
    const int most = std::numeric_limits<int>::max();
    const int least = std::numeric_limits<int>::min();
    server.expect("GET", "/structural/project/p-1/suite/7/2147483647").reply(200, R"({"data":""})");
    EXPECT_TRUE(Library::GetDownloadUrlOfComponent(L"p-1", L"7", most, text, error));
    server.expect("GET", "/structural/project/p-1/suite/7/family_types?version=-2147483648").reply(200, R"({"data":{}})");
    EXPECT_TRUE(Library::GetAllFamilyTypeInfosOfComponent(L"p-1", L"7", least, text, error));
    expectQuiet();
}

// Single answers

TEST_F(ComponentReadWireTest, aComponentExistsOrNot)
{
    server.expect("GET", existsTarget).reply(200, R"({"data":{"exist":true}})");
    EXPECT_TRUE(Library::IsComponentExist(L"p-1", L"7", exists, error));
    EXPECT_TRUE(exists);
    server.expect("GET", existsTarget).reply(200, R"({"data":{"exist":false}})");
    EXPECT_TRUE(Library::IsComponentExist(L"p-1", L"7", exists, error));
    EXPECT_FALSE(exists);
    expectQuiet();
}

TEST_F(ComponentReadWireTest, familyTypesAreHandedOverAsText)
{
    server.expect("GET", "/structural/project/p-1/suite/7/3/family/info?name=400%20x%20%E5%85%AD")
        .reply(200, R"({"data": { "a" : [1, 2.5, null, true], "b" : "柱" } })");
    EXPECT_TRUE(Library::GetFamilyTypeInfoOfComponent(L"p-1", L"7", 3, L"400 x 六", text, error));
    EXPECT_EQ(text, LR"({"a":[1,2.5,null,true],"b":"柱"})");
    server.expect("GET", familyTypesTarget).reply(200, R"({"data":{}})");
    EXPECT_TRUE(Library::GetAllFamilyTypeInfosOfComponent(L"p-1", L"7", 3, text, error));
    EXPECT_EQ(text, L"{}");
    expectQuiet();
}

TEST_F(ComponentReadWireTest, cutlinesHaveNumbersForIds)
{
    server.expect("GET", cutlinesTarget)
        .reply(200, R"({"data":[{"id":9007199254740993,"name":"平面","thumbnail":"t","placeholderType":"PLAN"},)"
                    R"({"id":"8","name":7,"thumbnail":null,"placeholderType":[]},null,{"id":2.9}]})");
    EXPECT_TRUE(Library::GetCutlineOfComponent(L"p-1", L"7", 3, cutlines, error));
    ASSERT_EQ(cutlines.size(), 5u);
    EXPECT_EQ(cutlines[1].id, 9007199254740993);
    EXPECT_EQ(cutlines[1].name, L"平面");
    EXPECT_EQ(cutlines[1].thumbnail, L"t");
    EXPECT_EQ(cutlines[1].placeholderType, L"PLAN");
    for (const std::size_t empty : {2u, 3u}) {
        EXPECT_EQ(cutlines[empty].id, 0);
        EXPECT_EQ(cutlines[empty].name + cutlines[empty].thumbnail + cutlines[empty].placeholderType, L"");
    }
    EXPECT_EQ(cutlines[4].id, 2);
    expectQuiet();
}

TEST_F(ComponentReadWireTest, theAddressOfTheFileIsAText)
{
    server.expect("GET", fileTarget).reply(200, R"({"data":"https://store/a?sig=1"})");
    EXPECT_TRUE(Library::GetDownloadUrlOfComponent(L"p-1", L"7", 3, text, error));
    EXPECT_EQ(text, L"https://store/a?sig=1");
    expectQuiet();
}

TEST_F(ComponentReadWireTest, theXmlIsTheWholeBodyWhateverItIs)
{
    for (const auto& [body, type] :
         {std::pair("<柱 a=\"1\"/>\n", "application/xml"), std::pair("", "text/plain"), std::pair("{\"data\":null}", "application/json")}) {
        server.expect("GET", xmlTarget).reply(200, body, type);
        EXPECT_TRUE(Library::GetXmlInfoOfComponent(L"p-1", L"7", 3, text, error));
        EXPECT_EQ(text, body == std::string("<柱 a=\"1\"/>\n") ? L"<柱 a=\"1\"/>\n" : std::wstring(body, body + std::string(body).size()));
    }
    expectQuiet();
}

TEST_F(ComponentReadWireTest, theFrameCatchesAnIdThatFitsIntoNoPath)
{
    EXPECT_FALSE(Library::GetDownloadUrlOfComponent(L"p-1", std::wstring(1, L'\0'), 3, text, error));
    expectHttpError(error, exceptionValue, L"generic exception", L"a path can't hold a NUL", 5555);
    EXPECT_EQ(server.connectionCount(), 0u);
    EXPECT_EQ(text, L"before");
}

// Failures

TEST_F(ComponentReadWireTest, aReadWithoutItsArgumentsIsRefused)
{
    for (const auto& [projectId, suiteId] : {std::pair(L"", L"7"), std::pair(L"p-1", L""), std::pair(L"", L"")}) {
        const std::wstring p = projectId;
        const std::wstring s = suiteId;
        expectRefused(L"IsComponentExist", [&] { return Library::IsComponentExist(p, s, exists, error); });
        expectRefused(L"GetFamilyTypeInfoOfComponent", [&] { return Library::GetFamilyTypeInfoOfComponent(p, s, 3, L"t", text, error); });
        expectRefused(L"GetAllFamilyTypeInfosOfComponent", [&] { return Library::GetAllFamilyTypeInfosOfComponent(p, s, 3, text, error); });
        expectRefused(L"GetCutlineOfComponent", [&] { return Library::GetCutlineOfComponent(p, s, 3, cutlines, error); });
        expectRefused(L"GetDownloadUrlOfComponent", [&] { return Library::GetDownloadUrlOfComponent(p, s, 3, text, error); });
        expectRefused(L"GetXmlInfoOfComponent", [&] { return Library::GetXmlInfoOfComponent(p, s, 3, text, error); });
    }
    expectRefused(L"GetFamilyTypeInfoOfComponent",
                  [&] { return Library::GetFamilyTypeInfoOfComponent(L"p-1", L"7", 3, L"", text, error); });
    expectBefore();
}

TEST_F(ComponentReadWireTest, whatLacksTheNeededIsNotNormal)
{
    for (const ReadingOperation& operation : operations()) {
        if (!operation.isJson)
            continue;
        std::vector<std::string> bodies{"", "null", "[]", "7", "\"x\"", "{}", R"({"code":10000})", R"({"data":null})", R"({"data":7})"};
        bodies.insert(bodies.end(), operation.unusable.begin(), operation.unusable.end());
        for (const std::string& body : bodies) {
            log.clear();
            server.expect("GET", operation.target).reply(200, body);
            EXPECT_FALSE(operation.read(error)) << body;
            expectClear(error);
            EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::" + operation.name + L" - response is not normal: " +
                                         (body.empty() ? L"null" : std::wstring(body.begin(), body.end()))});
        }
    }
    expectBefore();
}

TEST_F(ComponentReadWireTest, readsFailAsEveryRetriedOperationDoes)
{
    for (const ReadingOperation& operation : operations()) {
        RequestingOperation request{"GET", operation.target, "", L"OrloWebService::" + operation.name + L" - code:", operation.read};
        request.goodAnswer = operation.goodAnswer;
        request.readsJson = operation.isJson;
        request.operationName = L"orlo::IProjectComponentLibrary::" + operation.name;
        expectFailuresOf(request, server, log);
    }
    expectBefore();
    for (const ReadingOperation& operation : operations()) {
        RequestingOperation request{"GET", operation.target, "", L"OrloWebService::" + operation.name + L" - code:", operation.read};
        request.goodAnswer = operation.goodAnswer;
        expectSuccessAtLast(request, server, log);
    }
}

TEST_F(ComponentReadWireTest, anEarlierErrorIsToldAndThenGone)
{
    error.Assign(badInputValue, makeGenericError(L"earlier"));
    server.expect("GET", existsTarget).reply(200, R"({"data":{"exist":true}})");
    EXPECT_TRUE(Library::IsComponentExist(L"p-1", L"7", exists, error));
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::IProjectComponentLibrary::IsComponentExist 传入的ErrorCode，已有错误存在:earlier"});
}

} // namespace
} // namespace orlo::test
