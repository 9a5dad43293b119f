#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
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

    enum class Action {
        Reset, ///< The other side sees a reset.
        Close, ///< The other side sees an orderly end.
        Stall  ///< Nothing moves for a while, then all goes on.
    };
    struct Trap
    {
        Action action = Action::Reset;
        std::size_t bytes = 0; ///< How many bytes pass before it springs.
        bool bodyOnly = false; ///< The head doesn't count.
        std::chrono::milliseconds pause{0};
    };
    /// What happens in the middle of the next answer.
    void setTrap(const Trap& trap);
    /// Does it here and now.
    void carryOut(const Trap& trap);

    /// What sends the body when the HTTP library has sent the head.
    void setBody(std::function<void(Connection&)> body) { m_body = std::move(body); }
    void sendBody();
    /// An answer that was too short to be broken breaks at its end.
    void endAnswer();

    /// The connection can carry no further answer.
    bool broken() const { return m_broken; }
    /// The next bytes are a request's.
    void beginRequest();

    /// The next answer is the last one.
    void leave() { m_leaving = true; }
    bool leaving() const { return m_leaving; }

    /// A further request has been read already.
    bool hasInput() const { return m_from < m_to; }
    /// Takes leave of the client in a way that lets it read all that was sent. Bounded; not called: the socket is just closed.
    void finish();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    /// False if not all of it could be sent.
    bool sendFile(int file, std::int64_t offset, std::size_t size);
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_socket; }

    /// The connection that the calling thread serves; set by the server around each request.
    static Connection*& current();

private:
    /// A byte of the request line, as the HTTP library takes it.
    ssize_t readOfRequestLine(char* data);
    ssize_t readBuffered(char* data, std::size_t size);
    ssize_t receive(char* data, std::size_t size);
    bool sendAll(const char* data, std::size_t size);
    bool sendFilePart(int file, std::int64_t offset, std::size_t size);
    /// Sends `size` bytes with `send(from, count)`, but for the trap. `data`: the bytes, if they may hold the end of the head.
    template <class Send>
    bool pushOut(const char* data, std::size_t size, const Send& send);
    /// How much of the data may still go out before the trap springs.
    std::size_t allowance(const char* data, std::size_t size);
    std::size_t headPart(const char* data, std::size_t size);
    bool waitFor(short events, std::chrono::milliseconds timeout) const;
    void waitUntilSent() const;

    int m_socket;
    bool m_broken = false;
    bool m_leaving = false;
    std::optional<Trap> m_trap;
    std::function<void(Connection&)> m_body;
    std::string m_headTail; ///< The last bytes of the answer's head, to find its end across writes.
    bool m_headDone = false;
    std::array<char, 8192> m_buffer{};
    std::size_t m_from = 0;
    std::size_t m_to = 0;
    bool m_inRequestLine = false;
    bool m_inQuery = false;
    std::string m_escaped; ///< What is still to be handed over of a byte of the request line.
};

} // namespace orlo::platform
