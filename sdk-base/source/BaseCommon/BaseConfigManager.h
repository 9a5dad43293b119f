#pragma once

#include <BaseCommon/Export.h>

#include <string>

namespace orlo {

/// The part of the host's configuration that the base library and its siblings share.
class ORLO_BASE_API BaseConfigManager
{
public:
    BaseConfigManager(const BaseConfigManager&) = delete;
    BaseConfigManager& operator=(const BaseConfigManager&) = delete;
    virtual ~BaseConfigManager();

    /// Never null; valid until the process is gone.   Threads: any, for all operations.
    static BaseConfigManager* Get() noexcept;

    /// Called by the common library when the host configures it.
    virtual void SetDefaultRemoteFolder(const std::string& folder);

    /// The folder of the platform's store below which uploads without a folder of their own go; UTF-8, empty unless configured.
    virtual std::string GetDefaultRemoteFolder() const;

private:
    BaseConfigManager();
};

} // namespace orlo
