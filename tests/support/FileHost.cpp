// A process that works on files as its input says, a line at a time.
//
//   FileHost ROOT
//
// ROOT is its local root. The answers are "yes" or "no", but for the commands that don't come to an end.
//
//   live           tells the others that it lives
//   look-around    over and over looks for the others
//   write PATH     "half" to a file, with its folder
//   lock PATH      takes a lock and keeps it
//   rewrite PATH   over and over writes the file anew, of 200,000 times "o" and of 300,000 times "e" in turn; says so each time
//   tokens USER    writes a token for each of the datasets "0" to "39", named by user and dataset
//   pour-tokens N  over and over writes tokens of "user-1" for "ds-1", numbered from N on; says the number of each

#include "LineCommands.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

using namespace orlo;
using orlo::test::yesOrNo;

std::string lookAround()
{
    for (;;)
        utils::startOfOldestProcess();
}

std::string write(const std::string& path)
{
    const std::filesystem::path file = std::filesystem::u8path(path);
    std::filesystem::create_directories(file.parent_path());
    return yesOrNo(static_cast<bool>(std::ofstream(file, std::ios::binary) << "half" << std::flush));
}

std::string lock(const std::string& path)
{
    static utils::FileLock held;
    return yesOrNo(held.acquire(utils::toWstring(path), 0));
}

std::string rewrite(const std::string& path)
{
    const std::string odd(200000, 'o');
    const std::string even(300000, 'e');
    for (int i = 0; utils::writeFileAtomically(utils::toWstring(path), i % 2 == 0 ? odd : even); ++i)
        std::cout << "written" << std::endl;
    return "no";
}

std::string writeTokens(const std::string& user)
{
    bool isGood = true;
    for (int i = 0; i < 40; ++i)
        isGood = utils::PermissionFileHelper::GetInstance()->WriteTokenToFile(user, std::to_string(i), user + std::to_string(i)) && isGood;
    return yesOrNo(isGood);
}

std::string pourTokens(const std::string& first)
{
    for (int number = std::stoi(first);; ++number) {
        const std::string token = "token-" + std::to_string(number) + "-" + std::string(20000, 't');
        if (!utils::PermissionFileHelper::GetInstance()->WriteTokenToFile("user-1", "ds-1", token))
            return "no";
        std::cout << number << std::endl;
    }
}

const test::LineCommands commands = {
    {"live", [](const std::string&) { return yesOrNo(utils::tellThatProcessLives()); }},
    {"look-around", [](const std::string&) { return lookAround(); }},
    {"write", write},
    {"lock", lock},
    {"rewrite", rewrite},
    {"tokens", writeTokens},
    {"pour-tokens", pourTokens},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    utils::setLocalRoot(utils::toWstring(argv[1]));
    return test::obeyInput(commands);
}
