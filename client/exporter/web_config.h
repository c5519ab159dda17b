// SPDX-License-Identifier: Apache-2.0
// Who may ask the exporter, and how it is secured: its own file, in the form that exporters of Prometheus
// share.
#ifndef DISPLAYCTL_EXPORTER_WEB_CONFIG_H
#define DISPLAYCTL_EXPORTER_WEB_CONFIG_H

#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace displayctl::exporter
{

struct WebConfig {
    std::string certificate;                  ///< PEM; empty: HTTP without TLS
    std::string key;                          ///< PEM
    std::map<std::string, std::string> users; ///< hash of the password; empty: nobody is asked to log in

    [[nodiscard]] bool isSecure() const
    {
        return !certificate.empty();
    }
};

/** Reads the file and those it names. Throws site::Error, with file and line. */
[[nodiscard]] WebConfig readWebConfig(const std::filesystem::path &file);

/** Looks at passwords. The hashes are slow on purpose, so a password that was right is remembered. Safe to
 * use by many threads. */
class Gate
{
  public:
    explicit Gate(std::map<std::string, std::string> users) : users_(std::move(users)) {}

    [[nodiscard]] bool isOpen() const
    {
        return users_.empty();
    }
    [[nodiscard]] bool admits(const std::string &user, const std::string &password);

  private:
    std::map<std::string, std::string> users_;
    std::mutex slow_; // held while a hash is computed
    std::mutex mutex_;
    std::map<std::string, std::string> known_; // by user a digest of what was right
};

} // namespace displayctl::exporter

#endif
