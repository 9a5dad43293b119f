#pragma once

#include <BaseCommon/Export.h>

#include <string>

namespace orlo {

/// Which part of the application an error text belongs to. The library reports `connection` only.
enum class ErrorType : int { connection = 6 };

/// The last error text of the process, for a host that shows one line to its user. Any thread.
class ORLO_BASE_API OrloErrorInfoManager
{
public:
    static OrloErrorInfoManager& getInstance();

    void SetLastError(const std::wstring& message, ErrorType type);
    /// Empty before the first error.
    std::wstring GetLastErrorMessage() const;
    ErrorType GetLastErrorType() const;

    OrloErrorInfoManager(const OrloErrorInfoManager&) = delete;
    OrloErrorInfoManager& operator=(const OrloErrorInfoManager&) = delete;

private:
    OrloErrorInfoManager() = default;
};

} // namespace orlo
