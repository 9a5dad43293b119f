#pragma once

#include "support/ChildProcess.h"
#include "support/TempFolder.h"

#include <LocalPlatform/LocalPlatform.h>
#include <string>

namespace orlo::test {

/// A platform with the dataset "d-1", which the users "wang" and "zhang" of one account share.
class PermissionPlatform
{
public:
    PermissionPlatform();

    std::string addDataset(const std::string& id);
    /// What the account may do with the dataset: "Read", "Write", "SoftWrite".
    void allow(const std::vector<std::string>& types);

    platform::LocalPlatform platform;
};

/// A user in a process of its own, as PermissionHost.cpp says.
class PermissionProcess : public ChildProcess
{
public:
    PermissionProcess(const PermissionPlatform& platform, const TempFolder& root, const std::string& user);
};

inline constexpr const char* mayWrite = R"(2 {"code":10000,"msg":"success"})";

} // namespace orlo::test
