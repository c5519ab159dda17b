// SPDX-License-Identifier: Apache-2.0
// The server's certificate and its key: read from files, again when these change, and made.
#ifndef HOST_HTTP_CERTIFICATES_H
#define HOST_HTTP_CERTIFICATES_H

#include <chrono>
#include <deque>
#include <gnutls/abstract.h>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace host
{

/** Safe to use by many threads. */
class Certificates
{
  public:
    /** Files in PEM: the certificate with those of its issuers behind it, and its key. */
    Certificates(std::string certificateFile, std::string keyFile);
    ~Certificates();

    /** Reads the files. False, with the reason in problem, when they are not a certificate and its key; then
     * those that were there stay. */
    [[nodiscard]] bool load(std::string &problem);

    /** Reads the files again when one of them has changed, and says so in the log. True when there is a new
     * certificate. */
    bool refresh();

    /** The DNS names that the certificate is for. */
    std::vector<std::string> names() const;

    /** Gives a handshake the certificate and its key, as gnutls_certificate_retrieve_function2 does. */
    int give(gnutls_pcert_st **certificates, unsigned *count, gnutls_privkey_t *key);

  private:
    struct Pair;
    using Stamp = std::pair<long long, long long>; // of both files: when they changed

    Stamp stamp() const;

    const std::string certificateFile_;
    const std::string keyFile_;
    mutable std::mutex mutex_;
    std::shared_ptr<Pair> current_;
    Stamp read_;
    /** A handshake may still use them; all handshakes are over long before they go. */
    std::deque<std::pair<std::chrono::steady_clock::time_point, std::shared_ptr<Pair>>> former_;
};

/** Makes a key and a certificate for it, signed by itself, for those names and addresses, this machine's name
 * and localhost; valid for 825 days. The key file is readable for its owner alone. Files that are there
 * already stay unless replaces is set. False, with the reason in problem, on failure. */
[[nodiscard]] bool makeCertificate(const std::string &certificateFile, const std::string &keyFile,
                                   std::vector<std::string> names, bool replaces, std::string &problem);

} // namespace host

#endif
