#pragma once

#include "HttpExchange.h"
#include "Sockets.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace orlo::test {

/// What a RawServer does with one connection, once it has read a request.
struct RawAnswer
{
    enum class End { close, reset };

    /// Sends the bytes and closes.
    static RawAnswer bytes(std::string text);
    /// Resets the connection instead of answering.
    static RawAnswer resetBeforeAnswer();
    /// Resets the connection without reading a request.
    static RawAnswer resetOnConnect();
    /// Sends the first `count` bytes of `text`, then resets.
    static RawAnswer resetAfter(std::string text, std::size_t count);
    /// Sends the first `count` bytes of `text`, then closes.
    static RawAnswer closeAfter(std::string text, std::size_t count);
    /// Sends nothing until release(), then `text`.
    static RawAnswer stall(std::string text = {});

    /// Sends in pieces of so many bytes.
    RawAnswer& fragments(std::size_t size);

    std::string text;
    End end = End::close;
    std::size_t fragmentSize = 0;
    bool readsRequest = true;
    bool stalls = false;
};

/// "HTTP/1.1 200 OK" with a content length and a JSON content type, as raw bytes.
std::string rawOk(const std::string& body, const std::string& contentType = "application/json");

/// A server which plays bytes as they stand, one answer for each connection, in order; the last one repeats.
class RawServer
{
public:
    explicit RawServer(RawAnswer answer);
    explicit RawServer(std::vector<RawAnswer> answers);
    ~RawServer();

    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    /// "http://127.0.0.1:<port>"
    std::string url() const { return m_server.url(); }
    std::wstring wideUrl() const;
    int port() const { return m_server.port(); }
    std::size_t connectionCount() const { return m_server.connectionCount(); }
    /// The requests that were read whole.
    std::vector<Request> requests() const;
    /// Lets all stalled answers go on, now and later.
    void release();

private:
    RawAnswer nextAnswer();
    void serve(Connection& connection);
    void waitForRelease();

    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    std::deque<RawAnswer> m_answers;
    std::vector<Request> m_requests;
    bool m_go = false;
    SocketServer m_server; // last: its threads use all of the above
};

} // namespace orlo::test
