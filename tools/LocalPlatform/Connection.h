#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace orlo::platform {

/// One accepted socket. It can be told to break in the middle of an answer, which the HTTP library has no means for.
class Connection : public httplib::Stream
{
public:
    explicit Connection(int socket);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Reset the connection after that many bytes of the next answer.
    void resetAfter(std::size_t answerBytes);
    /// Close the connection after that many bytes of the next answer's body.
    void cutBodyAfter(std::size_t bodyBytes);
    /// An answer that was too short to be broken breaks at its end.
    void endAnswer();
    /// The connection can carry no further answer.
    bool broken() const { return m_broken; }

    /// A further request has been read already.
    bool hasInput() const { return m_from < m_to; }
    /// Takes leave of the client in a way that lets it read all that was sent. Bounded; not called: the socket is just closed.
    void finish();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_socket; }

    /// The connection that the calling thread serves; set by the server around each request.
    static Connection*& current();

private:
    ssize_t receive(char* data, std::size_t size);
    bool sendAll(const char* data, std::size_t size);
    /// How much of the data may still go out.
    std::size_t allowance(const char* data, std::size_t size);
    void breakOff();
    bool waitFor(short events, std::chrono::milliseconds timeout) const;
    void waitUntilSent() const;

    int m_socket;
    bool m_broken = false;
    std::optional<std::size_t> m_answerBytesLeft;
    std::optional<std::size_t> m_bodyBytesLeft;
    std::string m_headTail; ///< The last bytes of the answer's head, to find its end across writes.
    bool m_headDone = false;
    std::array<char, 8192> m_buffer{};
    std::size_t m_from = 0;
    std::size_t m_to = 0;
};

} // namespace orlo::platform
