#include "Certificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>

namespace orlo::bench {

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
using Extensions = std::initializer_list<std::pair<int, const char*>>;

void require(bool done)
{
    if (!done)
        throw std::runtime_error("can't make a certificate");
}

Certificate makeCertificate(const char* name, EVP_PKEY* key, const X509* issuer, EVP_PKEY* issuerKey, const Extensions& extensions)
{
    static long serial = 0;
    Certificate made(X509_new());
    require(made && X509_set_version(made.get(), 2) == 1);
    ASN1_INTEGER_set(X509_get_serialNumber(made.get()), ++serial);
    X509_gmtime_adj(X509_getm_notBefore(made.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), 24L * 3600);
    X509_NAME* const subject = X509_get_subject_name(made.get());
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
    require(X509_set_issuer_name(made.get(), X509_get_subject_name(issuer ? issuer : made.get())) == 1);
    require(X509_set_pubkey(made.get(), key) == 1);
    for (const auto& [which, value] : extensions) {
        const std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>> extension(X509V3_EXT_conf_nid(nullptr, nullptr, which, value));
        require(extension && X509_add_ext(made.get(), extension.get(), -1) == 1);
    }
    require(X509_sign(made.get(), issuerKey, EVP_sha256()) > 0);
    return made;
}

void writePem(X509* certificate, const std::string& path)
{
    const std::unique_ptr<BIO, Freed<BIO_free>> file(BIO_new_file(path.c_str(), "w"));
    require(file && PEM_write_bio_X509(file.get(), certificate) == 1);
}

} // namespace

SSL_CTX* serverContext(const std::string& caFile)
{
    const Key caKey(EVP_EC_gen("P-256"));
    const Key key(EVP_EC_gen("P-256"));
    require(caKey && key);
    const Certificate ca = makeCertificate("bench authority", caKey.get(), nullptr, caKey.get(),
                                           {{NID_basic_constraints, "critical,CA:TRUE"}, {NID_key_usage, "critical,keyCertSign,cRLSign"}});
    const Certificate own = makeCertificate("bench origin", key.get(), ca.get(), caKey.get(),
                                            {{NID_basic_constraints, "critical,CA:FALSE"},
                                             {NID_key_usage, "critical,digitalSignature"},
                                             {NID_ext_key_usage, "serverAuth"},
                                             {NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost"}});
    writePem(ca.get(), caFile);
    SSL_CTX* const context = SSL_CTX_new(TLS_server_method());
    require(context && SSL_CTX_use_certificate(context, own.get()) == 1 && SSL_CTX_use_PrivateKey(context, key.get()) == 1);
    return context;
}

} // namespace orlo::bench
