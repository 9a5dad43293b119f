#pragma once

#include "support/HttpExchange.h"
#include "support/Sockets.h"

#include <functional>
#include <mutex>
#include <string>

namespace orlo::test {

/// Stands between a client and the platform, signed addresses included, and lets a test step in at every request.
class Gateway
{
public:
    /// Of a request: it has come whole and nobody knows of it yet; the platform has done its work and answered; the client has the answer.
    enum class Moment { asked, carriedOut, answered };
    /// Returns: whether to go on; if not, the client gets no answer.
    using Watch = std::function<bool(int number, Moment moment)>;

    explicit Gateway(const std::string& platformUrl);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    std::string url() const { return m_server.url(); }
    /// Is asked at every moment of the requests from now on, the first of which has the number 1.
    void watch(Watch watch);
    /// How many there have been.
    int requests() const;

private:
    bool goesOn(int number, Moment moment) const;
    void serve(Connection& client);
    void exchange(Connection& client, const Request& request);
    int nextNumber();
    std::string askPlatform(const Request& request) const;
    std::string withOwnAddresses(const std::string& reply) const;

    const std::string m_platformUrl;
    mutable std::mutex m_mutex;
    Watch m_watch;
    int m_lastNumber = 0;
    SocketServer m_server; // last: its threads use all of the above
};

} // namespace orlo::test
