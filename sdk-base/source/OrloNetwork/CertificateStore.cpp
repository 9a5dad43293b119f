#include "CertificateStore.h"

#include <BaseCommon/Files.h>

#include <openssl/bio.h>
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

size_t addCertificates(X509_STORE* store, const std::string& pem)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    size_t added = 0;
    while (const auto certificate =
               std::unique_ptr<X509, decltype(&X509_free)>(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr), &X509_free)) {
        added += X509_STORE_add_cert(store, certificate.get()) == 1 ? 1U : 0U;
    }
    return added;
}

std::shared_ptr<X509_STORE> load(const std::wstring& caFile)
{
    std::string pem;
    std::shared_ptr<X509_STORE> store(X509_STORE_new(), &X509_STORE_free);
    if (!store || !utils::readWholeFile(caFile, pem) || addCertificates(store.get(), pem) == 0)
        throw std::runtime_error("the configured certificate file holds no certificate that can be read");
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
