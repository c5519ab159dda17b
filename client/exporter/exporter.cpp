// SPDX-License-Identifier: Apache-2.0
#include "exporter/exporter.h"

#include "exporter/metrics.h"
#include "model/values.h"

#include <nlohmann/json.hpp>
#include <prometheus/text_serializer.h>

#include <algorithm>
#include <sstream>

namespace displayctl::exporter
{

namespace
{

constexpr int badRequest = 400;
constexpr int notFound = 404;
constexpr int serverError = 500;

constexpr const char *page =
    "displayctl exporter\n\n"
    "/probe?target=NAME                  a monitor of the file of monitors\n"
    "/probe?target=NAME&profile=PROFILE  the same, and what differs from a profile\n"
    "/targets                            the monitors, for the HTTP service discovery of Prometheus\n"
    "/metrics                            the exporter itself\n";

Reply serialized(const std::vector<prometheus::MetricFamily> &families)
{
    std::ostringstream out;
    prometheus::TextSerializer().Serialize(out, families);
    return {.body = std::move(out).str()};
}

/** As an HTTP service discovery tells it; labels as ",suite4,hdr,", so that a pattern finds each of them. */
Reply targetsOf(const Site &site)
{
    auto targets = nlohmann::ordered_json::array();
    for (const auto &[name, monitor] : site.monitors) {
        std::string labels = ",";
        for (const std::string &label : monitor.labels) {
            labels += label + ",";
        }
        targets.push_back({{"targets", {name}}, {"labels", {{"__meta_displayctl_labels", labels}}}});
    }
    return {.type = "application/json",
            .body = targets.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n"};
}

} // namespace

void Exporter::use(Site site)
{
    own_.loaded(site.monitors.size());
    auto next = std::make_shared<const Site>(std::move(site));
    const std::lock_guard lock{mutex_};
    site_ = std::move(next);
}

std::shared_ptr<const Site> Exporter::site()
{
    const std::lock_guard lock{mutex_};
    return site_;
}

Reply Exporter::refuse(int status, const std::string &text)
{
    own_.refused(status);
    return {status, "text/plain; charset=utf-8", text + "\n"};
}

Reply Exporter::answer(const Request &request)
{
    if (request.path == "/probe") {
        return probe(request);
    }
    if (request.path == "/metrics") {
        return serialized(own_.collect());
    }
    if (request.path == "/targets") {
        return targetsOf(*site());
    }
    if (request.path == "/") {
        return {.type = "text/plain; charset=utf-8", .body = page};
    }
    return refuse(notFound,
                  "there is no " + request.path + "; there are /probe?target=NAME, /targets and /metrics");
}

std::chrono::milliseconds Exporter::timeoutOf(const Request &request) const
{
    // A monitor that is silent is told before Prometheus stops waiting, and so is how it ended.
    constexpr double reserve = 0.5;
    constexpr double least = 0.1;
    if (!request.scrapeTimeout) {
        return timeout_;
    }
    const double seconds = std::clamp(*request.scrapeTimeout - reserve, least, 86400.0);
    return std::min(timeout_, std::chrono::milliseconds(static_cast<long>(seconds * 1000)));
}

Reply Exporter::probe(const Request &request)
{
    if (!request.target || request.target->empty()) {
        return refuse(badRequest, "which monitor? /probe?target=NAME, with a name of the file of monitors");
    }
    const std::shared_ptr<const Site> site = this->site();
    const auto monitor = site->monitors.find(*request.target);
    if (monitor == site->monitors.end()) {
        return refuse(notFound, "the file of monitors has no monitor of this name");
    }
    try {
        std::optional<Compare> compare;
        if (request.profile) {
            compare = site->findProfile(*request.profile);
            if (!compare) {
                return refuse(notFound, "there is no profile of this name in the directory of profiles");
            }
        }
        const Prober::Result result =
            prober_.probe(monitor->second, timeoutOf(request), [this] { own_.merged(); });
        const Reading &reading = *result.reading;
        if (!result.isMerged) {
            own_.probed(reading.outcome, reading.duration.count());
        }
        std::optional<Drift> drift;
        if (compare && reading.outcome == session::Outcome::ok) {
            drift = Drift{*request.profile, (*compare)(reading.state)};
        }
        return serialized(metricsOf(reading, drift).all());
    } catch (const model::BadValue &problem) {
        return refuse(serverError, problem.what());
    }
}

} // namespace displayctl::exporter
