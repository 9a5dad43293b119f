#pragma once

#include "TransferChain.h"

#include <cpprest/json.h>

namespace orlo {

using FirstStep = std::function<void(ErrorCode&, const std::shared_ptr<OrloCallbackContext>&)>;

/// Starts a chain: makes a context for the handler and runs the first step under a retry handler.
void startChain(std::shared_ptr<IOrloCallback> handler, FirstStep firstStep);

/// The step's body as JSON; null for a text that is none.
web::json::value jsonOrNull(const std::wstring& body);

} // namespace orlo
