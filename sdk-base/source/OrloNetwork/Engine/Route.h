#pragma once

#include "Trust.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace orlo::http {

struct RequestNote;

/// How the requests of one client go out.
struct Route
{
    std::chrono::microseconds timeout{};                ///< without any headway
    std::optional<std::chrono::microseconds> wholeTime; ///< for all of it; none: as long as there is headway
    bool keepsConnections = false;                      ///< for GET alone: what is sent on a kept one may be sent twice
    bool isOfFiles = false;                             ///< its bodies are large
    std::string proxy;                                  ///< empty: none
    std::string proxyUser;
    std::string proxyPassword;
    std::shared_ptr<const Trust> trust; ///< null: the system's, as soon as it is needed
    std::shared_ptr<RequestNote> note;  ///< null: nobody asks
};

} // namespace orlo::http
