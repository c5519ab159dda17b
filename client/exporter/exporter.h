// SPDX-License-Identifier: Apache-2.0
// What the exporter answers: /probe, /targets, /metrics and a page that names them. Knows nothing of sockets.
#ifndef DISPLAYCTL_EXPORTER_EXPORTER_H
#define DISPLAYCTL_EXPORTER_EXPORTER_H

#include "exporter/own_metrics.h"
#include "exporter/probe.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace displayctl::exporter
{

/** Names the settings of a monitor that differ from a profile. Throws model::BadValue where the profile does
 * not fit the monitor. */
using Compare = std::function<std::vector<std::string>(const model::State &)>;

/** The monitors and profiles that may be asked for. */
struct Site {
    std::map<std::string, site::Monitor> monitors; // by name
    /** Reads a profile, by its name; nothing when there is none of that name. Throws model::BadValue when it
     * is not as it should be. */
    std::function<std::optional<Compare>(const std::string &)> findProfile;
};

struct Request {
    std::string path;
    std::optional<std::string> target;
    std::optional<std::string> profile;
    std::optional<double> scrapeTimeout; ///< seconds that Prometheus waits, where it says so
};

struct Reply {
    int status = 200;
    std::string type = "text/plain; version=0.0.4; charset=utf-8";
    std::string body;
};

/** Safe to use by many threads. */
class Exporter
{
  public:
    Exporter(unsigned jobs, std::chrono::milliseconds timeout) : timeout_(timeout), prober_(jobs) {}

    /** From now on these are the monitors and profiles. */
    void use(Site site);

    [[nodiscard]] Reply answer(const Request &request);
    /** An answer that tells what was wrong, counted. */
    [[nodiscard]] Reply refuse(int status, const std::string &text);

    [[nodiscard]] OwnMetrics &own()
    {
        return own_;
    }

  private:
    [[nodiscard]] std::shared_ptr<const Site> site();
    [[nodiscard]] Reply probe(const Request &request);
    [[nodiscard]] std::chrono::milliseconds timeoutOf(const Request &request) const;

    std::chrono::milliseconds timeout_;
    Prober prober_;
    OwnMetrics own_;
    std::mutex mutex_;
    std::shared_ptr<const Site> site_;
};

} // namespace displayctl::exporter

#endif
