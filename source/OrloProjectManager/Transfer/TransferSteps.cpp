#include "TransferSteps.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>
#include <OrloNetwork/Body/JsonText.h>

namespace orlo {

void startChain(std::shared_ptr<IOrloCallback> handler, FirstStep firstStep)
{
    const auto context = std::make_shared<ChainContext>(std::move(handler), true);
    ErrorCode& error = context->error;
    http::launchWithRetry(context, error, [firstStep = std::move(firstStep), context, &error] { firstStep(error, context); });
}

web::json::value jsonOrNull(const std::wstring& body)
{
    try {
        return http::parseJson(utils::toString(body));
    }
    catch (const std::exception&) { // half a surrogate pair is told by another type than the rest
        return web::json::value::null();
    }
}

} // namespace orlo
