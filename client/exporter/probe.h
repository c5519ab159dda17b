// SPDX-License-Identifier: Apache-2.0
// One probe: everything that `show` reads of a monitor, once, however many ask for it at the same time.
#ifndef DISPLAYCTL_EXPORTER_PROBE_H
#define DISPLAYCTL_EXPORTER_PROBE_H

#include "model/state.h"
#include "session/outcome.h"
#include "site/monitors.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <string>

namespace displayctl::exporter
{

/** What a probe has read. */
struct Reading {
    model::State state;
    session::Outcome outcome = session::Outcome::ok; ///< ok: everything was read
    std::string message;                             ///< what went wrong
    std::chrono::duration<double> duration{};
    std::optional<std::int64_t> certificateExpiry; ///< seconds since 1970; none without TLS
};

/** Whether a probe reads the setting and tells it. */
[[nodiscard]] bool isExported(const model::Setting &setting);

/** Reads a monitor, whatever else is under way. */
[[nodiscard]] Reading read(const site::Monitor &monitor, std::chrono::milliseconds timeout);

/** Safe to use by many threads. */
class Prober
{
  public:
    /** jobs: monitors that are read at once; who comes beyond that waits. */
    explicit Prober(unsigned jobs) : free_(static_cast<std::ptrdiff_t>(jobs)) {}

    struct Result {
        std::shared_ptr<const Reading> reading;
        bool isMerged = false; ///< another one had begun it
    };

    /** Reads the monitor, or waits for the one who is reading it. onMerge: called before that wait. */
    [[nodiscard]] Result probe(const site::Monitor &monitor, std::chrono::milliseconds timeout,
                               const std::function<void()> &onMerge);

  private:
    using Shared = std::shared_future<std::shared_ptr<const Reading>>;

    std::counting_semaphore<> free_;
    std::mutex mutex_;
    std::map<std::string, Shared> underWay_; // by the monitor's name
};

} // namespace displayctl::exporter

#endif
