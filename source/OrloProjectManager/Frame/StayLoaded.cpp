#include "StayLoaded.h"

#include <BaseCommon/Platform.h>

namespace orlo {

void stayLoaded()
{
    static const char inThisLibrary = 0;
    static const bool isKept = utils::keepLoaded(&inThisLibrary);
    static_cast<void>(isKept);
}

} // namespace orlo
