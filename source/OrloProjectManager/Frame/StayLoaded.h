#pragma once

namespace orlo {

/// To be called before anything begins that goes on when its caller has returned: from then on nobody can unload the library, whose code a
/// thread may be in at any time.
void stayLoaded();

} // namespace orlo
