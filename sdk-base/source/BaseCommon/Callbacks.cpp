#include "Callbacks.h"

#include <BaseCommon/Interruption.h>

#include <utility>

namespace orlo {

IOrloCallback::IOrloCallback() = default;
IOrloCallback::~IOrloCallback() = default;

IOrloFileCallback::IOrloFileCallback() = default;
IOrloFileCallback::~IOrloFileCallback() = default;

OrloCallbackContext::OrloCallbackContext(std::shared_ptr<IOrloCallback> chainHandler, bool furtherStepFollows)
    : handler(std::move(chainHandler)), propagate(furtherStepFollows), interruption(Interruption::current())
{}

OrloCallbackContext::~OrloCallbackContext() = default;

} // namespace orlo
