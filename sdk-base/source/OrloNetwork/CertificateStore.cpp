#include "CertificateStore.h"

#include <BaseCommon/Files.h>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <mutex>
#include <stdexcept>

namespace orlo::http {

namespace {

struct Cache
{
    std::mutex mutex;
    std::wstring file;
    std::shared_ptr<X509_STORE> store;
};

// Never destroyed: a request may still run while the process ends.
Cache& cache()
{
    static Cache& instance = *new Cache;
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

std::shared_ptr<X509_STORE> load(const std::wstring& caFile)
{
    std::string pem;
    std::shared_ptr<X509_STORE> store(X509_STORE_new(), &X509_STORE_free);
    if (!store || !utils::readWholeFile(caFile, pem))
        throw std::runtime_error("the configured certificate file can't be read");
    if (!addCertificates(store.get(), pem))
        throw std::runtime_error("the configured certificate file holds no certificate, or a broken one");
    return store;
}

} // namespace

std::shared_ptr<X509_STORE> certificatesOf(const std::wstring& caFile)
{
    Cache& known = cache();
    const std::lock_guard lock(known.mutex);
    if (!known.store || known.file != caFile) {
        known.store = load(caFile);
        known.file = caFile;
    }
    return known.store;
}

} // namespace orlo::http
