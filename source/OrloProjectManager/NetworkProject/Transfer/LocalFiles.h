#pragma once

namespace orlo {

/// To be called before a transfer makes a file that only this process knows of. The first time at a local root it removes what transfers
/// of processes that are gone left there.   Threads: any; nothing throws.
void prepareLocalFiles() noexcept;

} // namespace orlo
