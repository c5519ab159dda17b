// SPDX-License-Identifier: Apache-2.0
// Certificates made by the test that needs them.
#ifndef TESTS_CLIENT_CERTIFICATES_H
#define TESTS_CLIENT_CERTIFICATES_H

#include <memory>
#include <string>

struct x509_st;
struct evp_pkey_st;

/** What a certificate says. */
struct CertificateTerms {
    std::string name;          // common name
    std::string alternative{}; // subjectAltName, as in IP:127.0.0.1; empty: none
    bool isAuthority = false;
    long beginDays = -1; // from now
    long endDays = 1;
};

class Certificate
{
  public:
    /** Signed by the issuer, or by itself. */
    explicit Certificate(const CertificateTerms &terms, const Certificate *issuer = nullptr);

    /** PEM. */
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string key() const;

  private:
    std::shared_ptr<x509_st> certificate_;
    std::shared_ptr<evp_pkey_st> key_;
};

#endif
