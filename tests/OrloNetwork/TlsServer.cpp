#include "TlsServer.h"

#include "support/Sockets.h"
#include "support/Waiting.h"

#include <httplib.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace orlo::test {

namespace {

template <auto Free>
struct Freed
{
    template <class T>
    void operator()(T* pointer) const
    {
        Free(pointer);
    }
};

using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;

void require(bool done)
{
    if (!done)
        throw std::runtime_error("can't make a certificate");
}

void addExtension(X509* certificate, int which, const char* value)
{
    const std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>> extension(X509V3_EXT_conf_nid(nullptr, nullptr, which, value));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

struct Issuer
{
    X509* certificate;
    EVP_PKEY* key;
};

/// issuer: null where it vouches for itself.
Certificate certificateOf(EVP_PKEY* key, const std::string& names, std::chrono::seconds end, const Issuer* issuer)
{
    Certificate certificate(X509_new());
    require(certificate && X509_set_version(certificate.get(), 2) == 1);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), end.count());
    X509_NAME* const name = X509_get_subject_name(certificate.get());
    // Issuers are looked up by their names, so each has its own.
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(names.c_str()), -1, -1, 0);
    require(X509_set_issuer_name(certificate.get(), issuer ? X509_get_subject_name(issuer->certificate) : name) == 1);
    require(X509_set_pubkey(certificate.get(), key) == 1);
    addExtension(certificate.get(), NID_basic_constraints, issuer ? "critical,CA:FALSE" : "critical,CA:TRUE");
    addExtension(certificate.get(), NID_subject_alt_name, names.c_str());
    require(X509_sign(certificate.get(), issuer ? issuer->key : key, EVP_sha256()) > 0);
    return certificate;
}

} // namespace

struct Identity::Parts
{
    Key key;
    Certificate certificate;
};

Identity::Identity(const std::string& names, std::chrono::seconds end) : m_parts(std::make_unique<Parts>())
{
    m_parts->key.reset(EVP_EC_gen("P-256"));
    m_parts->certificate = certificateOf(m_parts->key.get(), names, end, nullptr);
}

Identity::Identity(const std::string& names, const Identity& issuer) : m_parts(std::make_unique<Parts>())
{
    const Issuer by{issuer.m_parts->certificate.get(), issuer.m_parts->key.get()};
    m_parts->key.reset(EVP_EC_gen("P-256"));
    m_parts->certificate = certificateOf(m_parts->key.get(), names, std::chrono::hours(24), &by);
}

Identity::~Identity() = default;

std::string Identity::pem() const
{
    const std::unique_ptr<BIO, Freed<BIO_free>> memory(BIO_new(BIO_s_mem()));
    require(memory && PEM_write_bio_X509(memory.get(), m_parts->certificate.get()) == 1);
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

struct TlsPeer::Session
{
    std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>> context{SSL_CTX_new(TLS_server_method())};
    std::unique_ptr<SSL, Freed<SSL_free>> ssl;
    BIO* in = BIO_new(BIO_s_mem()); // the session's
    BIO* out = BIO_new(BIO_s_mem());
};

TlsPeer::TlsPeer(Connection& connection, const Identity& identity) : m_connection(connection), m_session(std::make_unique<Session>())
{
    SSL_CTX* const context = m_session->context.get();
    require(SSL_CTX_use_certificate(context, identity.m_parts->certificate.get()) == 1);
    require(SSL_CTX_use_PrivateKey(context, identity.m_parts->key.get()) == 1);
    m_session->ssl.reset(SSL_new(context));
    require(m_session->ssl != nullptr);
    SSL_set_bio(m_session->ssl.get(), m_session->in, m_session->out);
    SSL_set_accept_state(m_session->ssl.get());
}

TlsPeer::~TlsPeer() = default;

bool TlsPeer::sendAll()
{
    char* bytes = nullptr;
    const long count = BIO_get_mem_data(m_session->out, &bytes);
    const bool isSent = count <= 0 || m_connection.write({bytes, static_cast<std::size_t>(count)});
    static_cast<void>(BIO_reset(m_session->out));
    return isSent;
}

bool TlsPeer::goOn(int result)
{
    const bool wantsMore = SSL_get_error(m_session->ssl.get(), result) == SSL_ERROR_WANT_READ;
    std::string got;
    if (!sendAll() || !wantsMore || !m_connection.read(got))
        return false;
    return BIO_write(m_session->in, got.data(), static_cast<int>(got.size())) == static_cast<int>(got.size());
}

bool TlsPeer::shakeHands()
{
    int result = 0;
    do {
        result = SSL_do_handshake(m_session->ssl.get());
    } while (result != 1 && goOn(result));
    return result == 1 && sendAll();
}

bool TlsPeer::read(std::string& buffer)
{
    char piece[65536];
    int result = 0;
    do {
        result = SSL_read(m_session->ssl.get(), piece, sizeof piece);
    } while (result <= 0 && goOn(result));
    if (result > 0)
        buffer.append(piece, static_cast<std::size_t>(result));
    return result > 0;
}

bool TlsPeer::write(std::string_view bytes)
{
    // The memory takes all of it.
    return SSL_write(m_session->ssl.get(), bytes.data(), static_cast<int>(bytes.size())) > 0 && sendAll();
}

void TlsPeer::closeInWords()
{
    SSL_shutdown(m_session->ssl.get());
    sendAll();
}

struct TlsServer::Running
{
    explicit Running(const Identity::Parts& identity) : server(identity.certificate.get(), identity.key.get()) {}

    httplib::SSLServer server;
    std::atomic<int> requests{0};
    int port = 0;
    std::thread thread;
};

TlsServer::TlsServer(const Identity& identity) : m_running(std::make_unique<Running>(*identity.m_parts))
{
    m_running->server.Get(".*", [running = m_running.get()](const httplib::Request&, httplib::Response& response) {
        ++running->requests;
        response.set_content("{}", "application/json");
    });
    m_running->port = m_running->server.bind_to_any_port("127.0.0.1");
    require(m_running->port > 0);
    m_running->thread = std::thread([running = m_running.get()] { running->server.listen_after_bind(); });
    require(waitUntil([this] { return m_running->server.is_running(); })); // one that isn't can't be stopped
}

TlsServer::~TlsServer()
{
    m_running->server.stop();
    m_running->thread.join();
}

std::wstring TlsServer::url() const
{
    return L"https://127.0.0.1:" + std::to_wstring(m_running->port);
}

int TlsServer::requestCount() const
{
    return m_running->requests;
}

} // namespace orlo::test
