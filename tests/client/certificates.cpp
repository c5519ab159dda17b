// SPDX-License-Identifier: Apache-2.0
#include "certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>

namespace
{

void check(bool isDone, const char *what)
{
    if (!isDone) {
        throw std::runtime_error(what);
    }
}

void addExtension(X509 *certificate, X509 *issuer, int kind, const std::string &value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    check(extension != nullptr && X509_add_ext(certificate, extension, -1) == 1, "extension");
    X509_EXTENSION_free(extension);
}

/** What write puts into memory. */
template <typename Write>
std::string pem(const Write &write)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory{BIO_new(BIO_s_mem()), BIO_free};
    check(write(memory.get()) == 1, "PEM");
    char *text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

Certificate::Certificate(const CertificateTerms &terms, const Certificate *issuer)
    : certificate_(X509_new(), X509_free), key_(EVP_EC_gen("P-256"), EVP_PKEY_free)
{
    constexpr long day = 86400;
    static std::atomic<long> serial = 1;
    X509 *certificate = certificate_.get();
    X509 *signer = issuer == nullptr ? certificate : issuer->certificate_.get();
    check(X509_set_version(certificate, X509_VERSION_3) == 1, "version");
    check(ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial++) == 1, "serial number");
    check(X509_gmtime_adj(X509_getm_notBefore(certificate), terms.beginDays * day) != nullptr, "begin");
    check(X509_gmtime_adj(X509_getm_notAfter(certificate), terms.endDays * day) != nullptr, "end");
    X509_NAME *subject = X509_get_subject_name(certificate);
    check(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char *>(terms.name.c_str()), -1, -1,
                                     0) == 1,
          "subject");
    check(X509_set_issuer_name(certificate, X509_get_subject_name(signer)) == 1, "issuer");
    check(X509_set_pubkey(certificate, key_.get()) == 1, "public key");
    addExtension(certificate, signer, NID_basic_constraints,
                 terms.isAuthority ? "critical,CA:TRUE" : "CA:FALSE");
    if (!terms.alternative.empty()) {
        addExtension(certificate, signer, NID_subject_alt_name, terms.alternative);
    }
    EVP_PKEY *signing = issuer == nullptr ? key_.get() : issuer->key_.get();
    check(X509_sign(certificate, signing, EVP_sha256()) > 0, "signature");
}

std::string Certificate::text() const
{
    return pem([&](BIO *out) { return PEM_write_bio_X509(out, certificate_.get()); });
}

std::string Certificate::key() const
{
    return pem([&](BIO *out) {
        return PEM_write_bio_PrivateKey(out, key_.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
}
