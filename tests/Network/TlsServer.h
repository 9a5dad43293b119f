#pragma once

#include <memory>
#include <string>

namespace orlo::test {

/// A certificate which vouches for itself, made for the test, with its key.
class Identity
{
public:
    /// names: what it is good for, as "IP:127.0.0.1" or "DNS:platform.example".
    explicit Identity(const std::string& names);
    ~Identity();
    Identity(const Identity&) = delete;
    Identity& operator=(const Identity&) = delete;

    /// The certificate as a PEM file holds it.
    std::string pem() const;

private:
    friend class TlsServer;
    struct Parts;
    std::unique_ptr<Parts> m_parts;
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
