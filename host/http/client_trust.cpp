// SPDX-License-Identifier: Apache-2.0
#include "http/client_trust.h"

#include "http/pem_file.h"
#include "log/log.h"

#include <gnutls/x509.h>
#include <vector>

namespace host
{

struct ClientTrust::Issuers {
    Issuers() = default;
    Issuers(const Issuers &) = delete;
    Issuers &operator=(const Issuers &) = delete;

    ~Issuers()
    {
        if (list != nullptr) {
            gnutls_x509_trust_list_deinit(list, 1);
        }
    }

    bool read(const std::string &file, std::string &problem);

    std::string text;
    gnutls_x509_trust_list_t list = nullptr;
};

bool ClientTrust::Issuers::read(const std::string &file, std::string &problem)
{
    if (!readText(file, text, problem)) {
        return false;
    }
    const gnutls_datum_t data = datumOf(text);
    if (gnutls_x509_trust_list_init(&list, 0) != 0 ||
        gnutls_x509_trust_list_add_trust_mem(list, &data, nullptr, GNUTLS_X509_FMT_PEM, 0, 0) < 1) {
        problem = file + " holds no certificate";
        return false;
    }
    return true;
}

ClientTrust::ClientTrust(std::string file) : file_(std::move(file)) {}

ClientTrust::~ClientTrust() = default;

bool ClientTrust::load(std::string &problem)
{
    const long long now = stampOf(file_);
    auto issuers = std::make_shared<Issuers>();
    const bool good = issuers->read(file_, problem);
    const std::lock_guard lock(mutex_);
    read_ = now;
    if (good) {
        current_ = std::move(issuers);
        ++generation_;
    }
    return good;
}

void ClientTrust::refresh()
{
    {
        const long long now = stampOf(file_);
        const std::lock_guard lock(mutex_);
        if (now == read_) {
            return;
        }
    }
    std::string problem;
    if (load(problem)) {
        logLine("there are new issuers of clients' certificates in %s", file_.c_str());
    } else {
        logLine("the issuers of clients' certificates stay the former ones: %s", problem.c_str());
    }
}

std::shared_ptr<const ClientTrust::Issuers> ClientTrust::current() const
{
    const std::lock_guard lock(mutex_);
    return current_;
}

unsigned ClientTrust::generation() const
{
    const std::lock_guard lock(mutex_);
    return generation_;
}

std::string ClientTrust::text() const
{
    const std::shared_ptr<const Issuers> issuers = current();
    return issuers != nullptr ? issuers->text : "";
}

bool ClientTrust::trusts(gnutls_session_t session) const
{
    constexpr unsigned longestChain = 8; // a chain has no more that anybody checks
    const std::shared_ptr<const Issuers> issuers = current();
    unsigned count = 0;
    const gnutls_datum_t *shown = gnutls_certificate_get_peers(session, &count);
    if (issuers == nullptr || shown == nullptr || count == 0 || count > longestChain) {
        return false;
    }
    gnutls_x509_crt_t chain[longestChain] = {};
    unsigned read = 0;
    bool good = true;
    while (good && read < count) {
        good = gnutls_x509_crt_init(&chain[read]) == 0;
        if (good) {
            good = gnutls_x509_crt_import(chain[read], &shown[read], GNUTLS_X509_FMT_DER) == 0;
            ++read;
        }
    }
    unsigned status = 0;
    good = good &&
           gnutls_x509_trust_list_verify_crt2(issuers->list, chain, count, nullptr, 0, 0, &status, nullptr) ==
               0 &&
           status == 0;
    for (unsigned i = 0; i < read; ++i) {
        gnutls_x509_crt_deinit(chain[i]);
    }
    return good;
}

} // namespace host
