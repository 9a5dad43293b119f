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

    /// The texts in guard, the latest first.
    static std::vector<std::wstring> secrets();
};

} // namespace orlo
