// A user of the platform in a process of its own, who does what the input says, a line at a time.
//
//   PermissionHost URL ROOT USER
//
// ROOT is its local root; the user's access token is "token-of-USER".
//
//   ask DATASET      for the permission; answers its number and the result
//   release DATASET  answers "yes" or "no" and the result
//   force DATASET    answers "yes" or "no"
//   valid DATASET    answers "yes" or "no"
//   die-at N         is gone at the N-th call of the system from the next command on
//   calls            answers how many there were

#include "support/KillAtCall.h"
#include "support/LineCommands.h"
#include "support/SilentLog.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/Permission/IDatasetPermission.h>

namespace {

using namespace orlo;
using orlo::test::yesOrNo;

std::string ask(const std::string& dataset)
{
    ErrorCode error;
    std::string result;
    const EDatasetPermission permission = IDatasetPermission::GetDatasetPermission(dataset, result, error);
    return std::to_string(static_cast<int>(permission)) + " " + result;
}

std::string release(const std::string& dataset)
{
    ErrorCode error;
    std::string result;
    const bool isReleased = IDatasetPermission::ReleaseDatasetPermission(dataset, result, error, false);
    return yesOrNo(isReleased) + " " + result;
}

std::string force(const std::string& dataset)
{
    ErrorCode error;
    return yesOrNo(IDatasetPermission::ReleaseDatasetPermissionForce(utils::toWstring(dataset), error));
}

std::string valid(const std::string& dataset)
{
    ErrorCode error;
    return yesOrNo(IDatasetPermission::IsEditTokenValid(utils::toWstring(dataset), error));
}

std::string dieAt(const std::string& number)
{
    test::killAtCall(static_cast<unsigned>(std::stoul(number)) + 1); // one is the answer to this line
    return "yes";
}

const test::LineCommands commands = {
    {"ask", ask},     {"release", release}, {"force", force},
    {"valid", valid}, {"die-at", dieAt},    {"calls", [](const std::string&) { return std::to_string(test::callsSince()); }},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    OrloConfig config;
    config.serviceUrls[L"project"] = utils::toWstring(std::string(argv[1]));
    OrloConfigManager::Configure(config);
    utils::setLocalRoot(utils::toWstring(std::string(argv[2])));
    http::setRetryPolicy({1, 0});
    ILogManager::Install(std::make_shared<test::SilentLog>());
    const std::wstring user = utils::toWstring(std::string(argv[3]));
    UserSession::SignIn({user, L"account-1", L"token-of-" + user});
    return test::obeyInput(commands);
}
