#include "support/ChildProcess.h"
#include "support/HttpExchange.h"
#include "support/Sockets.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

// A host leaves main while its threads read long answers, look things up, bring files and hand them over. No thread may find the ground
// gone from under it.
namespace orlo::test {
namespace {

/// How often a host leaves in each way: as often as ORLO_EXITS says, or 8 times.
int wantedExits()
{
    const char* const wanted = std::getenv("ORLO_EXITS");
    return wanted ? std::atoi(wanted) : 8;
}

/// An array of 5,000 records that have something for every reader.
std::string longList()
{
    std::string list;
    for (int i = 0; i < 5000; ++i) {
        const std::string number = std::to_string(i);
        list += (i == 0 ? "[" : ",") +
                (R"({"id":"id-)" + number + R"(","name":"图纸 )" + number +
                 R"(","type":"Structure","status":"Ongoing","folderType":"Process","parentId":"f-1","ownerId":"u-1","gridType":"TYPE_ONE",)"
                 R"("datasetFilePath":"x/)" +
                 number + R"("})");
    }
    return list + "]";
}

/// Answers whatever is asked with a long list, or with what a transfer needs.
class Lists
{
public:
    std::string url() const { return m_server.url(); }

private:
    void serve(Connection& connection) const
    {
        Request request;
        while (readRequest(connection, request) == ReadResult::request) {
            Reply reply;
            reply.body = bodyFor(request);
            if (!connection.write(reply.wire(request.method)))
                return;
            request = {};
        }
    }

    std::string bodyFor(const Request& request) const
    {
        const auto isFor = [&](const char* part) { return request.target.find(part) != std::string::npos; };
        if (isFor("/file/doc/upload"))
            return R"({"code":10000,"data":{"fileUrlWithSAS":")" + url() + R"(/blob","fileOSSPath":"r/plan.dwg"}})";
        if (isFor("/blockFiles/"))
            return R"({"code":10000,"data":[{"datasetFilePath":"x/a","datasetFilePathWithSAS":")" + url() + R"(/blob"}]})";
        if (isFor("/sample/file/list"))
            return sampleOf(request.target);
        if (isFor("/template/resources/url"))
            return R"({"data":")" + url() + R"(/blob"})";
        if (isFor("/template/resources"))
            return R"({"data":[{"id":7}]})";
        if (isFor("/download/url"))
            return R"({"data":{"fileUrlWithSAS":")" + url() + R"(/blob","fileOSSPath":"r"}})";
        if (isFor("/blob"))
            return R"({"data":{"fileId":"f-9","versionIndex":1,"length":5}})";
        return isFor("/projects?") || isFor("/dataSets") || isFor("/folder") ? m_list : R"({"code":10000,"data":)" + m_list + "}";
    }

    /// The template of a dataset, which has a name of its own and comes from the one library or the other.
    static std::string sampleOf(const std::string& target)
    {
        const std::size_t head = target.find("d-");
        const std::string dataset = target.substr(head, target.find('/', head) - head);
        const bool isPublic = (dataset.back() - '0') % 2 == 0;
        return R"({"data":[{"id":"s","type":"dwt","templateId":")" + dataset + R"(","uri":")" + dataset + R"(","samplePlateFrom":")" +
               (isPublic ? "From_Common" : "From_Customize") + R"("}]})";
    }

    const std::string m_list = longList();
    SocketServer m_server{[this](Connection& connection) { serve(connection); }};
};

class BusyExit : public testing::TestWithParam<const char*>
{};

TEST_P(BusyExit, isCleanEveryTime)
{
    const Lists lists;
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random{seed};
    std::uniform_int_distribution<int> soon{0, 3000}; // some libraries are used for the first time when the end has begun
    std::uniform_int_distribution<int> later{0, 200000};
    for (int i = 0; i < wantedExits(); ++i) {
        const TempFolder root;
        const int microseconds = i % 2 == 0 ? soon(random) : later(random);
        const RunResult host = runProgram({BUSY_HOST, root.path().string(), lists.url(), std::to_string(microseconds), GetParam()},
                                          ChildProcess::Errors::joined);
        ASSERT_EQ(host.exitCode, 0) << host.output;
        ASSERT_EQ(host.output, "");
    }
}

INSTANTIATE_TEST_SUITE_P(OfMain, BusyExit, testing::Values("return"));
INSTANTIATE_TEST_SUITE_P(ByAnotherThread, BusyExit, testing::Values("exit"));

} // namespace
} // namespace orlo::test
