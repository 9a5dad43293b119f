#include "Trust.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/NeverDestroyed.h>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <array>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

namespace orlo::http {

namespace {

struct Known
{
    std::mutex mutex;
    std::wstring file;
    std::shared_ptr<const Trust> ofFile;
    std::shared_ptr<const Trust> ofSystem;
    unsigned long long made = 0;
};

Known& known()
{
    static Known& instance = utils::neverDestroyed(new Known);
    return instance;
}

/// Leaves the thread's error queue of OpenSSL as it was: what stays there would be taken for the failure of a later call.
class OwnErrors
{
public:
    OwnErrors() { ERR_set_mark(); }
    ~OwnErrors() { ERR_pop_to_mark(); }
    OwnErrors(const OwnErrors&) = delete;
    OwnErrors& operator=(const OwnErrors&) = delete;
};

/// Whether there was a certificate, and every one could be read.
bool addCertificates(X509_STORE* store, const std::string& pem)
{
    const OwnErrors errors;
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    bool added = false;
    while (const auto certificate =
               std::unique_ptr<X509, decltype(&X509_free)>(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr), &X509_free)) {
        if (X509_STORE_add_cert(store, certificate.get()) != 1)
            return false;
        added = true;
    }
    // The reader ends a sound file by finding no further certificate.
    return added && ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
}

using Store = std::shared_ptr<X509_STORE>;

Store makeStore()
{
    Store store(X509_STORE_new(), &X509_STORE_free);
    if (!store)
        throw std::bad_alloc();
    return store;
}

Store ofFile(const std::wstring& caFile)
{
    std::string pem;
    Store store = makeStore();
    if (!utils::readWholeFile(caFile, pem))
        throw std::runtime_error("the configured certificate file can't be read");
    if (!addCertificates(store.get(), pem))
        throw std::runtime_error("the configured certificate file holds no certificate, or a broken one");
    return store;
}

/// SSL_CERT_FILE and SSL_CERT_DIR name others.
Store ofSystem()
{
    const OwnErrors errors;
    Store store = makeStore();
    X509_STORE_set_default_paths(store.get());
    return store;
}

std::shared_ptr<const Trust> trustIn(Store store)
{
    return std::make_shared<const Trust>(Trust{std::move(store), "/certificates/" + std::to_string(++known().made)});
}

// The sessions of all calls: who resumes one needs no second look at the certificate.
class Sessions
{
public:
    Sessions() : m_share(curl_share_init())
    {
        if (!m_share)
            throw std::bad_alloc();
        curl_share_setopt(m_share, CURLSHOPT_USERDATA, this);
        curl_share_setopt(m_share, CURLSHOPT_LOCKFUNC, &lock);
        curl_share_setopt(m_share, CURLSHOPT_UNLOCKFUNC, &unlock);
        curl_share_setopt(m_share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    }

    CURLSH* share() const { return m_share; }

private:
    static void lock(CURL*, curl_lock_data data, curl_lock_access, void* sessions)
    {
        static_cast<Sessions*>(sessions)->m_mutexes[data].lock();
    }
    static void unlock(CURL*, curl_lock_data data, void* sessions) { static_cast<Sessions*>(sessions)->m_mutexes[data].unlock(); }

    CURLSH* m_share;
    std::array<std::mutex, CURL_LOCK_DATA_LAST> m_mutexes;
};

CURLSH* sessions()
{
    curl::makeReady();
    static const Sessions& instance = utils::neverDestroyed(new Sessions);
    return instance.share();
}

CURLcode takeStore(CURL*, void* context, void* trust)
{
    // Not as the context's own store: libcurl adds to that one when the server answers, while other threads use ours, and would make an
    // anchor of every certificate in it.
    SSL_CTX_set1_verify_cert_store(static_cast<SSL_CTX*>(context), static_cast<const Trust*>(trust)->store.get());
    return CURLE_OK;
}

} // namespace

std::shared_ptr<const Trust> trustInFile(const std::wstring& caFile)
{
    Known& all = known();
    const std::lock_guard lock(all.mutex);
    if (!all.ofFile || all.file != caFile) {
        all.ofFile = trustIn(ofFile(caFile));
        all.file = caFile;
    }
    return all.ofFile;
}

std::shared_ptr<const Trust> trustInSystem()
{
    Known& all = known();
    const std::lock_guard lock(all.mutex);
    if (!all.ofSystem)
        all.ofSystem = trustIn(ofSystem());
    return all.ofSystem;
}

void applyTo(CURL* easy, const Trust& trust)
{
    curl::set(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl::set(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    // The file that was compiled in would be parsed for each connection, to be replaced.
    curl::setPointer(easy, CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    // There is no such folder, and nobody looks for it: libcurl takes up no session and no kept connection that another trust made.
    curl::set(easy, CURLOPT_CAPATH, trust.name);
    curl::setPointer(easy, CURLOPT_SSL_CTX_FUNCTION, &takeStore);
    curl::setPointer(easy, CURLOPT_SSL_CTX_DATA, &trust);
}

void shareSessions(CURL* easy)
{
    curl::setPointer(easy, CURLOPT_SHARE, sessions());
}

} // namespace orlo::http
