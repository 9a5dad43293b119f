#pragma once

namespace orlo::test {

/// Whether the build is slow and takes more memory by a sanitizer.
constexpr bool isSanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;
#else
    false;
#endif

} // namespace orlo::test
