// SPDX-License-Identifier: Apache-2.0
#include "exporter/probe.h"

#include "session/session.h"

namespace displayctl::exporter
{

bool isExported(const model::Setting &setting)
{
    return setting.isReadable() && !setting.has(model::neverAccepted);
}

Reading read(const site::Monitor &monitor, std::chrono::milliseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    session::Classes classes;
    for (const model::Setting &setting : model::allSettings()) {
        if (isExported(setting)) {
            model::addClasses(setting, classes);
        }
    }
    const Clock::time_point begin = Clock::now();
    session::Session session(monitor, timeout);
    Reading reading;
    if (const auto failure = session.read(classes)) {
        reading.outcome = session::outcomeOf(*failure);
        reading.message = session::messageOf(*failure);
    }
    reading.duration = Clock::now() - begin;
    reading.state = session.state();
    reading.certificateExpiry = session.connection().certificateExpiry();
    return reading;
}

Prober::Result Prober::probe(const site::Monitor &monitor, std::chrono::milliseconds timeout,
                             const std::function<void()> &onMerge)
{
    std::promise<std::shared_ptr<const Reading>> promise;
    {
        std::unique_lock lock{mutex_};
        if (const auto found = underWay_.find(monitor.name); found != underWay_.end()) {
            const Shared shared = found->second;
            lock.unlock();
            onMerge();
            return {shared.get(), true};
        }
        underWay_.emplace(monitor.name, promise.get_future().share());
    }
    std::shared_ptr<const Reading> reading;
    std::exception_ptr problem;
    free_.acquire();
    try {
        reading = std::make_shared<const Reading>(read(monitor, timeout));
    } catch (...) {
        problem = std::current_exception();
    }
    free_.release();
    {
        const std::lock_guard lock{mutex_};
        underWay_.erase(monitor.name);
    }
    if (problem != nullptr) {
        promise.set_exception(problem);
        std::rethrow_exception(problem);
    }
    promise.set_value(reading);
    return {reading, false};
}

} // namespace displayctl::exporter
