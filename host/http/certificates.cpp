// SPDX-License-Identifier: Apache-2.0
#include "http/certificates.h"

#include "http/pem_file.h"
#include "log/log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <gnutls/crypto.h>
#include <gnutls/x509.h>
#include <unistd.h>

namespace host
{
namespace
{

/** More than a chain has that anybody checks. */
constexpr unsigned maxChain = 8;

bool failed(int code, const std::string &what, std::string &problem)
{
    if (code >= 0) {
        return false;
    }
    problem = what + ": " + gnutls_strerror(code);
    return true;
}

} // namespace

/** A certificate with its chain, and its key. */
struct Certificates::Pair {
    Pair() = default;
    Pair(const Pair &) = delete;
    Pair &operator=(const Pair &) = delete;

    ~Pair()
    {
        for (unsigned i = 0; i < count; ++i) {
            gnutls_pcert_deinit(&chain[i]);
        }
        if (key != nullptr) {
            gnutls_privkey_deinit(key);
        }
    }

    bool read(const std::string &certificateFile, const std::string &keyFile, std::string &problem);
    bool fits(const std::string &certificateFile, const std::string &keyFile, std::string &problem) const;
    bool readNames(std::string &text);

    gnutls_pcert_st chain[maxChain] = {};
    unsigned count = 0;
    gnutls_privkey_t key = nullptr;
    std::vector<std::string> names;
};

bool Certificates::Pair::read(const std::string &certificateFile, const std::string &keyFile,
                              std::string &problem)
{
    std::string text;
    if (!readText(certificateFile, text, problem)) {
        return false;
    }
    gnutls_datum_t data = datumOf(text);
    unsigned size = maxChain;
    if (failed(gnutls_pcert_list_import_x509_raw(chain, &size, &data, GNUTLS_X509_FMT_PEM, 0),
               certificateFile + " holds no certificate", problem)) {
        return false;
    }
    count = size;
    if (!readNames(text)) {
        problem = certificateFile + " holds no certificate";
        return false;
    }
    if (!readText(keyFile, text, problem)) {
        return false;
    }
    data = datumOf(text);
    const int code = gnutls_privkey_init(&key);
    const bool isKey = !failed(code, keyFile, problem) &&
                       !failed(gnutls_privkey_import_x509_raw(key, &data, GNUTLS_X509_FMT_PEM, nullptr, 0),
                               keyFile + " holds no private key", problem);
    explicit_bzero(text.data(), text.size());
    return isKey && fits(certificateFile, keyFile, problem);
}

/** Compares the identifiers of both keys. */
bool Certificates::Pair::fits(const std::string &certificateFile, const std::string &keyFile,
                              std::string &problem) const
{
    unsigned char ofCertificate[64];
    unsigned char ofKey[64];
    std::size_t certificateSize = sizeof ofCertificate;
    std::size_t keySize = sizeof ofKey;
    gnutls_pubkey_t publicKey = nullptr;
    bool same = gnutls_pubkey_init(&publicKey) == 0;
    same = same && gnutls_pubkey_import_privkey(publicKey, key, 0, 0) == 0 &&
           gnutls_pubkey_get_key_id(publicKey, GNUTLS_KEYID_USE_SHA256, ofKey, &keySize) == 0 &&
           gnutls_pubkey_get_key_id(chain[0].pubkey, GNUTLS_KEYID_USE_SHA256, ofCertificate,
                                    &certificateSize) == 0 &&
           keySize == certificateSize && std::memcmp(ofKey, ofCertificate, keySize) == 0;
    if (publicKey != nullptr) {
        gnutls_pubkey_deinit(publicKey);
    }
    if (!same) {
        problem = keyFile + " is not the key of " + certificateFile;
    }
    return same;
}

bool Certificates::Pair::readNames(std::string &text)
{
    gnutls_x509_crt_t certificate = nullptr;
    if (gnutls_x509_crt_init(&certificate) != 0) {
        return false;
    }
    const gnutls_datum_t data = datumOf(text);
    const bool good = gnutls_x509_crt_import(certificate, &data, GNUTLS_X509_FMT_PEM) == 0;
    for (unsigned i = 0; good; ++i) {
        char name[512];
        std::size_t size = sizeof name;
        const int kind = gnutls_x509_crt_get_subject_alt_name(certificate, i, name, &size, nullptr);
        if (kind == GNUTLS_E_REQUESTED_DATA_NOT_AVAILABLE) {
            break;
        }
        if (kind == GNUTLS_SAN_DNSNAME) {
            names.emplace_back(name, size);
        }
    }
    gnutls_x509_crt_deinit(certificate);
    return good;
}

Certificates::Certificates(std::string certificateFile, std::string keyFile)
    : certificateFile_(std::move(certificateFile)), keyFile_(std::move(keyFile))
{
}

Certificates::~Certificates() = default;

Certificates::Stamp Certificates::stamp() const
{
    return {stampOf(certificateFile_), stampOf(keyFile_)};
}

bool Certificates::load(std::string &problem)
{
    const Stamp now = stamp();
    auto pair = std::make_shared<Pair>();
    const bool good = pair->read(certificateFile_, keyFile_, problem);
    const std::lock_guard lock(mutex_);
    read_ = now;
    if (!good) {
        return false;
    }
    const auto time = std::chrono::steady_clock::now();
    while (!former_.empty() && former_.front().first + std::chrono::minutes(10) < time) {
        former_.pop_front();
    }
    if (current_ != nullptr) {
        former_.emplace_back(time, current_);
    }
    current_ = std::move(pair);
    return true;
}

bool Certificates::refresh()
{
    {
        const Stamp now = stamp();
        const std::lock_guard lock(mutex_);
        if (now == read_) {
            return false;
        }
    }
    std::string problem;
    if (!load(problem)) {
        logLine("the certificate stays the former one: %s", problem.c_str());
        return false;
    }
    logLine("there is a new certificate in %s", certificateFile_.c_str());
    return true;
}

std::vector<std::string> Certificates::names() const
{
    const std::lock_guard lock(mutex_);
    return current_ != nullptr ? current_->names : std::vector<std::string>();
}

int Certificates::give(gnutls_pcert_st **certificates, unsigned *count, gnutls_privkey_t *key)
{
    const std::lock_guard lock(mutex_);
    if (current_ == nullptr) {
        return -1;
    }
    *certificates = current_->chain;
    *count = current_->count;
    *key = current_->key;
    return 0;
}

// ------------------------------------------------------------------------------------ a self-signed one

namespace
{

/** A certificate and its key while they are made. */
class NewCertificate
{
  public:
    NewCertificate() = default;
    NewCertificate(const NewCertificate &) = delete;
    NewCertificate &operator=(const NewCertificate &) = delete;

    ~NewCertificate()
    {
        gnutls_x509_crt_deinit(certificate_);
        gnutls_x509_privkey_deinit(key_);
    }

    /** The GnuTLS error code; 0: made. */
    int make(const std::string &commonName, const std::vector<std::string> &names)
    {
        constexpr time_t oneDay = 24 * 60 * 60;
        const time_t now = time(nullptr);
        unsigned char serial[16];
        int code = gnutls_rnd(GNUTLS_RND_NONCE, serial, sizeof serial);
        serial[0] &= 0x7f; // a positive number
        const auto step = [&code](int result) { code = code < 0 ? code : result; };
        step(gnutls_x509_privkey_init(&key_));
        step(gnutls_x509_crt_init(&certificate_));
        step(code < 0 ? code
                      : gnutls_x509_privkey_generate(key_, GNUTLS_PK_ECDSA,
                                                     GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0));
        if (code < 0) {
            return code;
        }
        step(gnutls_x509_crt_set_version(certificate_, 3));
        step(gnutls_x509_crt_set_serial(certificate_, serial, sizeof serial));
        step(gnutls_x509_crt_set_activation_time(certificate_, now - oneDay)); // clocks differ
        step(gnutls_x509_crt_set_expiration_time(certificate_, now + 824 * oneDay));
        step(gnutls_x509_crt_set_dn_by_oid(certificate_, GNUTLS_OID_X520_COMMON_NAME, 0, commonName.data(),
                                           static_cast<unsigned>(commonName.size())));
        for (const std::string &name : names) {
            step(addName(name));
        }
        step(gnutls_x509_crt_set_key(certificate_, key_));
        step(gnutls_x509_crt_set_basic_constraints(certificate_, 0, -1));
        step(gnutls_x509_crt_set_key_usage(certificate_, GNUTLS_KEY_DIGITAL_SIGNATURE));
        step(gnutls_x509_crt_set_key_purpose_oid(certificate_, GNUTLS_KP_TLS_WWW_SERVER, 0));
        unsigned char identifier[32];
        std::size_t size = sizeof identifier;
        step(gnutls_x509_crt_get_key_id(certificate_, GNUTLS_KEYID_USE_SHA256, identifier, &size));
        step(gnutls_x509_crt_set_subject_key_id(certificate_, identifier, size));
        step(gnutls_x509_crt_sign2(certificate_, certificate_, key_, GNUTLS_DIG_SHA256, 0));
        return code;
    }

    /** Both in PEM; "" on failure. */
    std::string certificateText() const
    {
        gnutls_datum_t data = {};
        return textOf(gnutls_x509_crt_export2(certificate_, GNUTLS_X509_FMT_PEM, &data), data);
    }

    std::string keyText() const
    {
        gnutls_datum_t data = {};
        return textOf(
            gnutls_x509_privkey_export2_pkcs8(key_, GNUTLS_X509_FMT_PEM, nullptr, GNUTLS_PKCS_PLAIN, &data),
            data);
    }

  private:
    int addName(const std::string &name)
    {
        unsigned char address[sizeof(in6_addr)];
        if (inet_pton(AF_INET, name.c_str(), address) == 1) {
            return gnutls_x509_crt_set_subject_alt_name(certificate_, GNUTLS_SAN_IPADDRESS, address, 4,
                                                        GNUTLS_FSAN_APPEND);
        }
        if (inet_pton(AF_INET6, name.c_str(), address) == 1) {
            return gnutls_x509_crt_set_subject_alt_name(certificate_, GNUTLS_SAN_IPADDRESS, address, 16,
                                                        GNUTLS_FSAN_APPEND);
        }
        return gnutls_x509_crt_set_subject_alt_name(certificate_, GNUTLS_SAN_DNSNAME, name.data(),
                                                    static_cast<unsigned>(name.size()), GNUTLS_FSAN_APPEND);
    }

    static std::string textOf(int code, gnutls_datum_t &data)
    {
        std::string text;
        if (code >= 0) {
            text.assign(reinterpret_cast<const char *>(data.data), data.size);
            explicit_bzero(data.data, data.size);
            gnutls_free(data.data);
        }
        return text;
    }

    gnutls_x509_crt_t certificate_ = nullptr;
    gnutls_x509_privkey_t key_ = nullptr;
};

bool writeNew(const std::string &file, const std::string &text, mode_t mode, bool replaces,
              std::string &problem)
{
    if (replaces) {
        unlink(file.c_str());
    }
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0) {
        problem = file + ": " + std::strerror(errno);
        return false;
    }
    const bool written = !text.empty() &&
                         write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         fsync(descriptor) == 0;
    if (close(descriptor) != 0 || !written) {
        problem = file + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

} // namespace

bool makeCertificate(const std::string &certificateFile, const std::string &keyFile,
                     std::vector<std::string> names, bool replaces, std::string &problem)
{
    for (const std::string &file : {certificateFile, keyFile}) {
        if (!replaces && access(file.c_str(), F_OK) == 0) {
            problem = file + " exists; --replace makes another one in its place";
            return false;
        }
    }
    char machine[256] = "localhost";
    gethostname(machine, sizeof machine - 1);
    const std::string commonName = names.empty() ? machine : names.front();
    for (const char *name : {static_cast<const char *>(machine), "localhost", "127.0.0.1", "::1"}) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.emplace_back(name);
        }
    }
    NewCertificate made;
    if (failed(made.make(commonName, names), "the certificate cannot be made", problem)) {
        return false;
    }
    return writeNew(keyFile, made.keyText(), 0600, replaces, problem) &&
           writeNew(certificateFile, made.certificateText(), 0644, replaces, problem);
}

} // namespace host
