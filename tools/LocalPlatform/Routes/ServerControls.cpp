#include "../Server/Faults.h"
#include "../Server/RequestLog.h"
#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Transfers.h"
#include "Routes.h"

#include <algorithm>

namespace orlo::platform {

namespace {

int smallNumber(const json::Body& body, const std::string& key, int fallback)
{
    return readNumber(std::to_string(body.integerOr(key, fallback)), key);
}

Fault readFault(const json::Body& body)
{
    Fault fault;
    fault.kind = faultKindOf(body.filledText("kind"));
    fault.path = body.filledText("path");
    fault.method = body.textOr("method", {});
    fault.prefix = body.flagOr("prefix", false);
    fault.calls = smallNumber(body, "calls", fault.calls);
    fault.status = smallNumber(body, "status", fault.status);
    fault.body = body.textOr("body", {});
    fault.bytes = static_cast<std::size_t>(std::max(0, smallNumber(body, "bytes", 0)));
    fault.delayMilliseconds = smallNumber(body, "delayMilliseconds", 0);
    fault.carryOut = body.flagOr("carryOut", false);
    fault.ofRequest = body.flagOr("ofRequest", false);
    return fault;
}

Answer addFaultCall(const Call& call, World& world)
{
    try {
        return enveloped(json::Object().number("id", world.faults.add(readFault(json::Body(call.body)))).str());
    }
    catch (const std::invalid_argument& error) {
        throw Refusal(400, error.what());
    }
}

Answer listFaults(const Call&, World& world)
{
    return enveloped(world.faults.list());
}

Answer clearFaultsCall(const Call&, World& world)
{
    world.faults.clear();
    return done();
}

Answer clockAnswer(World& world)
{
    return enveloped(json::Object().text("now", world.clock.text()).str());
}

Answer readClock(const Call&, World& world)
{
    return clockAnswer(world);
}

Answer moveClockCall(const Call& call, World& world)
{
    world.clock.move(json::Body(call.body).integer("seconds"));
    return clockAnswer(world);
}

Answer countRequests(const Call& call, World& world)
{
    const auto count = static_cast<std::int64_t>(world.requests.count(call.query("method"), call.query("path")));
    return enveloped(json::Object().number("count", count).str());
}

Answer clearRequests(const Call&, World& world)
{
    world.requests.clear();
    return done();
}

Answer transferState(const Call&, World& world)
{
    const Transfers& transfers = world.transfers;
    return enveloped(json::Object()
                         .number("signedLifetime", transfers.signedLifetime())
                         .flag("gzipAnswers", transfers.gzipAnswers())
                         .text("plainPutAnswer", transfers.plainPutAnswer())
                         .number("openDownloads", static_cast<std::int64_t>(world.requests.openDownloads()))
                         .number("peakDownloads", static_cast<std::int64_t>(world.requests.peakDownloads()))
                         .str());
}

Answer changeTransfers(const Call& call, World& world)
{
    const json::Body body(call.body);
    Transfers& transfers = world.transfers;
    transfers.setSignedLifetime(body.integerOr("signedLifetime", transfers.signedLifetime()));
    transfers.setGzipAnswers(body.flagOr("gzipAnswers", transfers.gzipAnswers()));
    transfers.setPlainPutAnswer(body.textOr("plainPutAnswer", transfers.plainPutAnswer()));
    return transferState(call, world);
}

} // namespace

void addServerControls(Router& router)
{
    router.addControl("POST", "faults", addFaultCall);
    router.addControl("GET", "faults", listFaults);
    router.addControl("DELETE", "faults", clearFaultsCall);
    router.addControl("GET", "clock", readClock);
    router.addControl("POST", "clock", moveClockCall);
    router.addControl("GET", "requests", countRequests);
    router.addControl("DELETE", "requests", clearRequests);
    router.addControl("GET", "transfers", transferState);
    router.addControl("PATCH", "transfers", changeTransfers);
}

} // namespace orlo::platform
