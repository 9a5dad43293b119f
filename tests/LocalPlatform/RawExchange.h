#pragma once

#include "support/Sockets.h"

#include <memory>
#include <string>

namespace orlo::platform::test {

/// What a plain socket saw until the connection ended.
struct RawReply
{
    std::string bytes;
    bool reset = false; ///< Ended by a reset, not by an orderly close.

    int status() const;
    /// What follows the empty line.
    std::string body() const;
};

std::unique_ptr<orlo::test::Connection> connectTo(const std::string& url);
/// Reads until the other side ends the connection.
RawReply readAll(orlo::test::Connection& connection);
/// Sends the bytes on a connection of their own.
RawReply exchange(const std::string& url, const std::string& request);

} // namespace orlo::platform::test
