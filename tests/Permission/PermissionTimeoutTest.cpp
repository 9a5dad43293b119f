#include "support/RawServer.h"
#include "support/WireTest.h"

#include <OrloProjectManager/NetworkProject/Call/WebCall.h>
#include <OrloProjectManager/NetworkProject/Permission/DatasetPermissionWeb.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>

namespace orlo::test {
namespace {

using namespace OrloWebService;

struct PermissionRequest
{
    std::string name;
    std::function<bool(ErrorCode&, DatasetPermissionFailure&)> send;
};

void PrintTo(const PermissionRequest& request, std::ostream* out)
{
    *out << request.name;
}

const PermissionRequest permissionRequests[] = {
    {"applyToWrite",
     [](ErrorCode& error, DatasetPermissionFailure& failure) {
         std::string token;
         int monitor = 0;
         return ApplyForWriteDataset(error, failure, token, monitor, "d-1");
     }},
    {"applyToRead",
     [](ErrorCode& error, DatasetPermissionFailure& failure) {
         std::string token;
         return ApplyForReadDataset(error, failure, token, "d-1");
     }},
    {"acknowledge",
     [](ErrorCode& error, DatasetPermissionFailure& failure) { return ObtainPermissionTokenAck(error, failure, "d-1", "t"); }},
    {"release", [](ErrorCode& error, DatasetPermissionFailure& failure) { return ReleaseDatasetPermissionMonitor(error, failure, "t"); }},
    {"force", [](ErrorCode& error, DatasetPermissionFailure&) { return ReleaseDatasetPermissionMonitorForce(error, L"t"); }},
    {"list",
     [](ErrorCode& error, DatasetPermissionFailure&) {
         DatasetEditToken holder;
         return GetDatasetEditToken(error, holder, L"d-1");
     }},
};

class PermissionTimeout : public testing::TestWithParam<PermissionRequest>
{
protected:
    RawServer server{RawAnswer::stall()};
    HostSetup host{server.url()};
    ErrorCode error;
    DatasetPermissionFailure failure;
};

TEST_P(PermissionTimeout, isThatOfTheFirstUse)
{
    host.change([](OrloConfig& config) { config.httpTimeoutSeconds = 1; });
    if (timeoutOfFirstUse() != 1)
        GTEST_SKIP() << "another test of this process was the first to use the time-out";
    host.change([](OrloConfig& config) { config.httpTimeoutSeconds = 30; });
    try {
        GetParam().send(error, failure);
        FAIL() << "the answer never came, and nothing was thrown";
    }
    catch (const web::http::http_exception& e) {
        EXPECT_EQ(e.error_code(), std::errc::timed_out);
    }
    EXPECT_EQ(failure.code, -1) << "a failure of the transport tells no reason";
}

INSTANTIATE_TEST_SUITE_P(OfEachRequest, PermissionTimeout, testing::ValuesIn(permissionRequests),
                         [](const auto& tested) { return tested.param.name; });

} // namespace
} // namespace orlo::test
