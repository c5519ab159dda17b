// SPDX-License-Identifier: Apache-2.0
// What the exporter tells about itself.
#ifndef DISPLAYCTL_EXPORTER_OWN_METRICS_H
#define DISPLAYCTL_EXPORTER_OWN_METRICS_H

#include "session/outcome.h"

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>

#include <vector>

namespace displayctl::exporter
{

/** Safe to use by many threads. */
class OwnMetrics
{
  public:
    OwnMetrics();

    void probed(session::Outcome outcome, double seconds);
    void merged();
    void refused(int status);
    void loaded(std::size_t monitors);
    /** Whether the files were as they should be when they were read last. */
    void tried(bool isGood);

    /** Those above, and those of the process. */
    [[nodiscard]] std::vector<prometheus::MetricFamily> collect() const;

  private:
    prometheus::Registry registry_;
    prometheus::Family<prometheus::Counter> &probes_;
    prometheus::Counter &merged_;
    prometheus::Histogram &durations_;
    prometheus::Family<prometheus::Counter> &refused_;
    prometheus::Gauge &monitors_;
    prometheus::Gauge &reload_;
};

} // namespace displayctl::exporter

#endif
