#include "EngineStage.h"

#include "FileThreads.h"
#include "Here.h"
#include "Loop.h"

namespace orlo::http {

namespace {

thread_local unsigned wantedHere = 0;

} // namespace

pplx::task<web::http::http_response> EngineStage::propagate(web::http::http_request request)
try {
    const auto transfer = std::make_shared<Transfer>(m_route, request);
    if (CarriedHere::isWanted())
        carryHere(transfer);
    else if (!m_route->isOfFiles || request.method() != web::http::methods::GET || !FileThreads::instance().carry(transfer))
        Loop::instance().carry(transfer);
    return transfer->answer();
}
catch (...) {
    return pplx::task_from_exception<web::http::http_response>(std::current_exception());
}

CarriedHere::CarriedHere()
{
    ++wantedHere;
}

CarriedHere::~CarriedHere()
{
    --wantedHere;
}

bool CarriedHere::isWanted()
{
    return wantedHere > 0;
}

} // namespace orlo::http
