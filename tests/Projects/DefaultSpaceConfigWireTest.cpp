#include "support/WireTest.h"

#include <OrloProjectManager/NetworkProject/Design/ConfigWeb.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace orlo::test {
namespace {

/// Takes the texts of all members "id" out of the body.
std::vector<std::string> takeIds(std::string& body)
{
    static const std::string head = R"("id":")";
    std::vector<std::string> ids;
    for (std::size_t at = body.find(head); at != std::string::npos; at = body.find(head, at + head.size())) {
        const std::size_t begin = at + head.size();
        const std::size_t end = body.find('"', begin);
        ids.push_back(body.substr(begin, end - begin));
        body.erase(begin, end - begin);
    }
    return ids;
}

bool isVersion4Uuid(const std::string& text)
{
    const std::string shape = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), [](char c, char wanted) {
        const std::string allowed = wanted == 'x' ? "0123456789abcdef" : wanted == 'v' ? "89ab" : std::string(1, wanted);
        return allowed.find(c) != std::string::npos;
    });
}

class DefaultSpaceConfigWireTest : public WireTest
{};

TEST_F(DefaultSpaceConfigWireTest, sendsTheDocumentInItsOwnKeyOrder)
{
    server.expect("POST", "/config/scope/Project/p-1/type/SpaceConfig").anyBody().reply(200);
    EXPECT_TRUE(OrloWebService::AddDefaultSpaceConfig(error, L"p-1"));
    expectQuiet();
    ASSERT_EQ(server.requestCount(), 1u);
    std::string body = server.requests().front().body;
    EXPECT_EQ(takeIds(body).size(), 4u);
    EXPECT_EQ(body, R"({"appKey":"BIM-MODEL","schemaVersion":1,"schemaKey":"SpaceConfig","data":[{"id":"",)"
                    R"("spaceName":"未命名场地","spaceType":"Site","spaceDescription":"","subSpaces":[{"id":"",)"
                    R"("spaceName":"未命名楼栋","spaceType":"Building","spaceDescription":"","subSpaces":[{"id":"",)"
                    R"("spaceName":"未命名区域","spaceType":"Region","spaceDescription":"","subSpaces":[{"id":"",)"
                    R"("spaceName":"建筑未命名楼层","spaceType":"Floor","spaceDescription":"",)"
                    R"("attachValues":{"ArchitectureLevel":"0.000","StructureLevel":"-0.050"}}]}]}]}]})");
}

TEST_F(DefaultSpaceConfigWireTest, isSentAsJson)
{
    server.expect("POST", "/config/scope/Project/p-1/type/SpaceConfig").anyBody().reply(200);
    OrloWebService::AddDefaultSpaceConfig(error, L"p-1");
    ASSERT_EQ(server.requestCount(), 1u);
    EXPECT_EQ(server.requests().front().header("Content-Type").substr(0, 16), "application/json");
}

TEST_F(DefaultSpaceConfigWireTest, givesEveryNodeANewVersion4Uuid)
{
    server.expect("POST", "/config/scope/Project/p-1/type/SpaceConfig").anyBody().times(2).reply(200);
    EXPECT_TRUE(OrloWebService::AddDefaultSpaceConfig(error, L"p-1"));
    EXPECT_TRUE(OrloWebService::AddDefaultSpaceConfig(error, L"p-1"));
    std::set<std::string> all;
    for (const Request& request : server.requests()) {
        std::string body = request.body;
        for (const std::string& id : takeIds(body)) {
            EXPECT_TRUE(isVersion4Uuid(id)) << id;
            all.insert(id);
        }
    }
    EXPECT_EQ(all.size(), 8u);
}

TEST_F(DefaultSpaceConfigWireTest, looksAtTheStatusAlone)
{
    server.expect("POST", "/config/scope/Project/p-1/type/SpaceConfig").anyBody().reply(200, "<html>", "text/html");
    EXPECT_TRUE(OrloWebService::AddDefaultSpaceConfig(error, L"p-1"));
    expectClear(error);
}

TEST_F(DefaultSpaceConfigWireTest, refusesAnEmptyProjectId)
{
    EXPECT_FALSE(OrloWebService::AddDefaultSpaceConfig(error, L""));
    expectGenericError(error, 3892314113, L"GenericError", L"projectId is empty");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]AddDefaultSpaceConfig()未正常执行：projectId为空"});
    EXPECT_EQ(server.connectionCount(), 0u);
}

} // namespace
} // namespace orlo::test
