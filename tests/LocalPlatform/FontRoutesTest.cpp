#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class FontRoutes : public PlatformTest
{
protected:
    FontRoutes()
    {
        project("p1");
        platform.change(addFont, {"p1", "仿宋", std::string("\0font\xff", 6), "ttf", "Project", "demo", "font1"});
    }

    /// The signed address without the platform's own.
    std::string target() const
    {
        const std::string body = demo().get("/style-family/font/project/download/uri?fontId=font1&projectId=p1").body;
        const std::string address = jsonText(body, "data.fileUrlWithSAS");
        EXPECT_EQ(address.compare(0, platform.url().size(), platform.url()), 0) << address;
        return address.substr(platform.url().size());
    }
};

TEST_F(FontRoutes, FontsOfAProjectAreListed)
{
    EXPECT_THAT(demo().get("/style-family/font/project/list/p1").body,
                IsJson(R"({"code":10000,"msg":"OK","data":[{"id":"font1","name":"仿宋","projectId":"p1","fileType":"ttf",
                    "fontFrom":"Project","createTime":"<time>","uploader":"demo","resourceBytes":"6"}]})"));
    EXPECT_EQ(demo().get("/style-family/font/project/list/none").status, 404);
}

TEST_F(FontRoutes, TheSignedAddressGivesTheBytesWithoutAToken)
{
    EXPECT_THAT(demo().get("/style-family/font/project/download/uri?fontId=font1&projectId=p1").body,
                IsJson(R"({"code":10000,"msg":"OK","data":{"fileUrlWithSAS":"<text>"}})"));
    const Reply reply = nobody().get(target());
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, std::string("\0font\xff", 6));
}

TEST_F(FontRoutes, AnExpiredAddressIsRefused)
{
    const std::string address = target();
    platform.clock().move(14 * 60);
    EXPECT_EQ(nobody().get(address).status, 200);
    platform.clock().move(61);
    const Reply reply = nobody().get(address);
    EXPECT_EQ(reply.status, 403);
    EXPECT_THAT(reply.body, IsJson(refusal(403)));
}

TEST_F(FontRoutes, AnAlteredAddressIsRefused)
{
    std::string later = target();
    const std::size_t digit = later.find("expires=") + 8;
    later[digit] = later[digit] == '9' ? '8' : '9';
    EXPECT_EQ(nobody().get(later).status, 403);

    std::string forged = target();
    forged.back() = forged.back() == '0' ? '1' : '0';
    EXPECT_EQ(nobody().get(forged).status, 403);

    std::string unsignedTarget = target();
    unsignedTarget.resize(unsignedTarget.find('?'));
    EXPECT_EQ(nobody().get(unsignedTarget).status, 403);
}

TEST_F(FontRoutes, AnAddressNeedsAFontOfTheProject)
{
    project("p2");
    EXPECT_EQ(demo().get("/style-family/font/project/download/uri?fontId=font1&projectId=p2").status, 404);
    EXPECT_EQ(demo().get("/style-family/font/project/download/uri?fontId=none&projectId=p1").status, 404);
    EXPECT_EQ(demo().get("/style-family/font/project/download/uri?fontId=font1").status, 400);
}

TEST_F(FontRoutes, FontsGoWithTheirProject)
{
    const std::string address = target();
    demo().del("/v2/projects/p1");
    EXPECT_EQ(nobody().get(address).status, 404);
}

} // namespace
} // namespace orlo::platform::test
