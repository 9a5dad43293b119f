#pragma once

#include <OrloLogging/Export.h>

#include <string>
#include <vector>

namespace orlo {

/// Texts that no log line may show.
class ORLO_LOGGING_API SecretGuard
{
public:
    /// Masks `secret` in every later log line, as redact() tells; an empty text is ignored. The guard remembers the latest 16.
    /// Threads: any.
    static void protect(const std::wstring& secret);

    /// The same for a permission token, of which one host may hold many: the guard remembers the latest 64 beside the others. One of
    /// fewer than 8 characters is left to the rules about where tokens stand, as it may be an ordinary word.   Threads: any.
    static void protectPermission(const std::wstring& token);

    /// The texts in guard, the latest first, permission tokens last.
    static std::vector<std::wstring> secrets();
};

} // namespace orlo
