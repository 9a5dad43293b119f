#include "Caught.h"

#include <BaseCommon/Text.h>

#include <exception>

namespace orlo::utils {

Caught caught()
{
    try {
        throw;
    }
    catch (const std::exception& thrown) {
        return {toWstringTrimTrailingCarriageReturn(thrown.what()), Caught::known};
    }
    catch (...) {
        return {};
    }
}

} // namespace orlo::utils
