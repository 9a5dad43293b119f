#pragma once

#include "TempFolder.h"

#include <OrloCommon/OrloConfigManager.h>

#include <functional>
#include <string>

namespace orlo::test {

/// Sets the libraries up as a host does: every service at one address, user "user-1" of "account-1" with the access token
/// "token-secret-1" signed in, all local files below a folder that goes at the end.
class HostSetup
{
public:
    explicit HostSetup(const std::string& url);
    ~HostSetup();

    HostSetup(const HostSetup&) = delete;
    HostSetup& operator=(const HostSetup&) = delete;

    const TempFolder& folder() const { return m_folder; }
    /// What was configured, to be changed and configured again.
    OrloConfig config() const { return m_config; }
    /// Configures what the set-up configured, with a change.
    void change(const std::function<void(OrloConfig&)>& change) const;

private:
    TempFolder m_folder;
    LocalRoot m_localRoot;
    OrloConfig m_config;
};

} // namespace orlo::test
