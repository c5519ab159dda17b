// SPDX-License-Identifier: Apache-2.0
// Whose certificates clients may show: read from a file, again when it changes.
#ifndef HOST_HTTP_CLIENT_TRUST_H
#define HOST_HTTP_CLIENT_TRUST_H

#include <gnutls/gnutls.h>
#include <memory>
#include <mutex>
#include <string>

namespace host
{

/** Safe to use by many threads. */
class ClientTrust
{
  public:
    /** A file in PEM with the certificates of those who issue the clients'. */
    explicit ClientTrust(std::string file);
    ~ClientTrust();

    /** Reads the file. False, with the reason in problem, when it holds no certificate; then those that were
     * there stay. */
    [[nodiscard]] bool load(std::string &problem);

    /** Reads the file again when it has changed, and says so in the log. */
    void refresh();

    /** Another number for other certificates: what trusts() said before is to be asked again. Never 0. */
    unsigned generation() const;

    /** The client of the session has shown a certificate of these issuers. */
    bool trusts(gnutls_session_t session) const;

    /** The file as it was read. */
    std::string text() const;

  private:
    struct Issuers;

    std::shared_ptr<const Issuers> current() const;

    const std::string file_;
    mutable std::mutex mutex_;
    std::shared_ptr<const Issuers> current_;
    unsigned generation_ = 0;
    long long read_ = 0; // the stamp of the file
};

} // namespace host

#endif
