#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace orlo::test {

class Connection;

/// A certificate, made for the test, with its key.
class Identity
{
public:
    /// names: what it is good for, as "IP:127.0.0.1" or "DNS:platform.example".
    /// It vouches for itself, until so long from now.
    explicit Identity(const std::string& names, std::chrono::seconds end = std::chrono::hours(24));
    /// Another one vouches for it.
    Identity(const std::string& names, const Identity& issuer);
    ~Identity();
    Identity(const Identity&) = delete;
    Identity& operator=(const Identity&) = delete;

    /// The certificate as a PEM file holds it.
    std::string pem() const;

private:
    friend class TlsServer;
    friend class TlsPeer;
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

/// The server's end of TLS on a connection of a test server.
class TlsPeer
{
public:
    TlsPeer(Connection& connection, const Identity& identity);
    ~TlsPeer();
    TlsPeer(const TlsPeer&) = delete;
    TlsPeer& operator=(const TlsPeer&) = delete;

    bool shakeHands();
    /// Appends what came to `buffer`; waits for it.   Returns: false at the end or on a broken connection.
    bool read(std::string& buffer);
    bool write(std::string_view bytes);
    /// Tells the peer that nothing more comes; a plain end of the connection doesn't.
    void closeInWords();

private:
    bool sendAll();
    /// What TLS asks for after a call that gave `result`.   Returns: whether the call is to be repeated.
    bool goOn(int result);

    struct Session;
    Connection& m_connection;
    std::unique_ptr<Session> m_session;
};

/// An HTTPS server which answers every request with "{}".
class TlsServer
{
public:
    explicit TlsServer(const Identity& identity);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    /// "https://127.0.0.1:<port>"
    std::wstring url() const;
    /// How many requests came through.
    int requestCount() const;

private:
    struct Running;
    std::unique_ptr<Running> m_running;
};

} // namespace orlo::test
