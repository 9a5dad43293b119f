#pragma once

#include "Route.h"

#include <cpprest/http_msg.h>

#include <memory>

namespace orlo::http {

/// Stands in the pipeline of a client and passes nothing on to cpprestsdk's own transport: libcurl carries the requests instead.
class EngineStage final : public web::http::http_pipeline_stage
{
public:
    explicit EngineStage(std::shared_ptr<const Route> route) : m_route(std::move(route)) {}

    pplx::task<web::http::http_response> propagate(web::http::http_request request) override;

private:
    const std::shared_ptr<const Route> m_route;
};

/// While one lives, the requests that its thread makes are carried on that thread, and have ended when they return.
class CarriedHere
{
public:
    CarriedHere();
    ~CarriedHere();
    CarriedHere(const CarriedHere&) = delete;
    CarriedHere& operator=(const CarriedHere&) = delete;

    static bool isWanted();
};

} // namespace orlo::http
