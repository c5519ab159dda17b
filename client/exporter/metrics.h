// SPDX-License-Identifier: Apache-2.0
// A reading in the terms of Prometheus. Names, units and help texts are made from the model of settings.
#ifndef DISPLAYCTL_EXPORTER_METRICS_H
#define DISPLAYCTL_EXPORTER_METRICS_H

#include "exporter/probe.h"

#include <prometheus/metric_family.h>

#include <optional>
#include <string>
#include <vector>

namespace displayctl::exporter
{

/** How a monitor is from a profile. */
struct Drift {
    std::string profile;               ///< its name
    std::vector<std::string> settings; ///< that differ
};

/** Families that are told together; each once, in the order in which they are first named. */
class Families
{
  public:
    using Labels = std::vector<prometheus::ClientMetric::Label>;

    void add(const std::string &name, const std::string &help, double value, Labels labels = {},
             prometheus::MetricType type = prometheus::MetricType::Gauge);

    [[nodiscard]] const std::vector<prometheus::MetricFamily> &all() const
    {
        return families_;
    }

  private:
    std::vector<prometheus::MetricFamily> families_;
};

/** drift: none when no profile was asked for. */
[[nodiscard]] Families metricsOf(const Reading &reading, const std::optional<Drift> &drift);

} // namespace displayctl::exporter

#endif
