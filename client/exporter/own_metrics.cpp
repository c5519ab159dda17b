// SPDX-License-Identifier: Apache-2.0
#include "exporter/own_metrics.h"

#include "exporter/metrics.h"

#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace displayctl::exporter
{

namespace
{

using prometheus::Histogram;

// From a monitor on the same machine to one that answers each request just in time.
const Histogram::BucketBoundaries buckets{0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30};

/** Seconds since 1970 at which this object was made, at the start of the program. */
double startTime()
{
    static const double start = static_cast<double>(std::time(nullptr));
    return start;
}

double residentBytes()
{
    std::ifstream stream{"/proc/self/statm"};
    double size = 0;
    double resident = 0;
    stream >> size >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double openDescriptors()
{
    double count = 0;
    std::error_code unknown;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", unknown)) {
        ++count;
    }
    return count - 1; // that of the listing itself
}

} // namespace

OwnMetrics::OwnMetrics()
    : probes_(prometheus::BuildCounter()
                  .Name("displayctl_exporter_probes_total")
                  .Help("Monitors read, by how that ended.")
                  .Register(registry_)),
      merged_(prometheus::BuildCounter()
                  .Name("displayctl_exporter_probes_merged_total")
                  .Help("Probes that waited for another of the same monitor instead of reading it again.")
                  .Register(registry_)
                  .Add({})),
      durations_(prometheus::BuildHistogram()
                     .Name("displayctl_exporter_probe_duration_seconds")
                     .Help("Time that reading a monitor took.")
                     .Register(registry_)
                     .Add({}, buckets)),
      refused_(prometheus::BuildCounter()
                   .Name("displayctl_exporter_refused_requests_total")
                   .Help("HTTP requests that were refused, by status code.")
                   .Register(registry_)),
      monitors_(prometheus::BuildGauge()
                    .Name("displayctl_exporter_targets")
                    .Help("Monitors that may be probed.")
                    .Register(registry_)
                    .Add({})),
      reload_(prometheus::BuildGauge()
                  .Name("displayctl_exporter_config_last_reload_successful")
                  .Help("Whether the files were read without a mistake last time.")
                  .Register(registry_)
                  .Add({}))
{
    using session::Outcome;
    static_cast<void>(startTime());
    for (const Outcome outcome :
         {Outcome::ok, Outcome::refused, Outcome::busy, Outcome::unreachable, Outcome::login}) {
        probes_.Add({{"outcome", std::string(session::nameOf(outcome))}});
    }
    prometheus::BuildGauge()
        .Name("displayctl_build_info")
        .Help("The version of displayctl.")
        .Register(registry_)
        .Add({{"version", DISPLAYCTL_VERSION}})
        .Set(1);
}

void OwnMetrics::probed(session::Outcome outcome, double seconds)
{
    probes_.Add({{"outcome", std::string(session::nameOf(outcome))}}).Increment();
    durations_.Observe(seconds);
}

void OwnMetrics::merged()
{
    merged_.Increment();
}

void OwnMetrics::refused(int status)
{
    refused_.Add({{"code", std::to_string(status)}}).Increment();
}

void OwnMetrics::loaded(std::size_t monitors)
{
    monitors_.Set(static_cast<double>(monitors));
}

void OwnMetrics::tried(bool isGood)
{
    reload_.Set(isGood ? 1 : 0);
}

std::vector<prometheus::MetricFamily> OwnMetrics::collect() const
{
    Families process;
    process.add("process_cpu_seconds_total", "Processor time that the exporter has used.",
                static_cast<double>(std::clock()) / CLOCKS_PER_SEC, {}, prometheus::MetricType::Counter);
    process.add("process_resident_memory_bytes", "Memory that the exporter has in use.", residentBytes());
    process.add("process_open_fds", "Open file descriptors of the exporter.", openDescriptors());
    process.add("process_start_time_seconds", "When the exporter was started, in seconds since 1970.",
                startTime());
    std::vector<prometheus::MetricFamily> families = registry_.Collect();
    families.insert(families.end(), process.all().begin(), process.all().end());
    return families;
}

} // namespace displayctl::exporter
