// SPDX-License-Identifier: Apache-2.0
// Which monitors a call means.
#include "site/monitors.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace displayctl::site
{

namespace
{

constexpr std::string_view labelPrefix = "label=";

/** At most so many are named in a message. */
constexpr std::size_t mostNamed = 10;

std::string listed(const std::vector<std::string> &names)
{
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), mostNamed); ++i) {
        (text += i == 0 ? "" : ", ") += names[i];
    }
    if (names.size() > mostNamed) {
        text += " and " + std::to_string(names.size() - mostNamed) + " more";
    }
    return text;
}

std::vector<std::string> namesOf(const Configuration &configuration)
{
    std::vector<std::string> names;
    for (const Monitor &monitor : configuration.monitors) {
        names.push_back(monitor.name);
    }
    return names;
}

std::vector<std::string> labelsOf(const Configuration &configuration)
{
    std::vector<std::string> labels;
    for (const Monitor &monitor : configuration.monitors) {
        for (const std::string &label : monitor.labels) {
            if (std::ranges::find(labels, label) == labels.end()) {
                labels.push_back(label);
            }
        }
    }
    return labels;
}

bool isUrl(std::string_view selector)
{
    return selector.find("://") != std::string_view::npos;
}

Monitor monitorOfUrl(const Configuration &configuration, std::string_view url)
{
    wbem::Endpoint endpoint = parseUrl(url);
    Monitor monitor = configuration.defaults;
    if (endpoint.user.empty()) {
        endpoint.user = monitor.endpoint.user;
    }
    endpoint.caFile = monitor.endpoint.caFile;
    endpoint.insecure = monitor.endpoint.insecure;
    monitor.endpoint = std::move(endpoint);
    monitor.name = monitor.endpoint.authority();
    return monitor;
}

[[noreturn]] void failForNone(const Configuration &configuration, std::string_view problem)
{
    const std::string file = configuration.file.string();
    throw Error(std::string{problem} + (configuration.exists ? "; " + file + " lists none"
                                                             : "; there is no file of monitors " + file));
}

[[noreturn]] void failForUnknown(const Configuration &configuration, const std::string &what,
                                 const std::vector<std::string> &known)
{
    if (configuration.monitors.empty()) {
        failForNone(configuration, what);
    }
    throw Error(what + " in " + configuration.file.string() +
                (known.empty() ? std::string{"; there is none at all"} : "; there are: " + listed(known)));
}

bool hasLabel(const Monitor &monitor, std::string_view label)
{
    return std::ranges::find(monitor.labels, label) != monitor.labels.end();
}

/** Whether the monitor of the file is meant by the selector, which is no URL. */
bool isMeant(const Monitor &monitor, std::string_view selector)
{
    return selector == "all" || selector == monitor.name ||
           (selector.starts_with(labelPrefix) && hasLabel(monitor, selector.substr(labelPrefix.size())));
}

void checkSelector(const Configuration &configuration, std::string_view selector)
{
    if (std::ranges::any_of(configuration.monitors,
                            [&](const Monitor &monitor) { return isMeant(monitor, selector); })) {
        return;
    }
    if (selector == "all") {
        failForNone(configuration, "there are no monitors");
    }
    if (selector.starts_with(labelPrefix)) {
        failForUnknown(configuration,
                       "no monitor has the label " + std::string{selector.substr(labelPrefix.size())},
                       labelsOf(configuration));
    }
    // It may be a URL without its beginning, with a password in it.
    const std::string name = selector.find('@') == std::string_view::npos
                                 ? " is called " + std::string{selector}
                                 : std::string{" is called so"};
    failForUnknown(configuration, "no monitor" + name, namesOf(configuration));
}

std::vector<std::string> selectorsOf(const Configuration &configuration, const Options &options)
{
    if (!options.monitors.empty()) {
        return options.monitors;
    }
    const char *usual = std::getenv("DISPLAYCTL_MONITOR");
    if (usual != nullptr && *usual != '\0') {
        return {usual};
    }
    if (configuration.monitors.empty()) {
        failForNone(configuration, "which monitor? -m http://USER@HOST:PORT names one");
    }
    if (configuration.monitors.size() > 1) {
        throw Error("which monitor? -m NAME, -m label=LABEL or -m all; there are: " +
                    listed(namesOf(configuration)));
    }
    return {configuration.monitors.front().name};
}

void checkAuthorities(const Monitor &monitor)
{
    const wbem::Endpoint &endpoint = monitor.endpoint;
    if (endpoint.tls && !endpoint.insecure && !endpoint.caFile.empty() &&
        access(endpoint.caFile.c_str(), R_OK) != 0) {
        throw Error("the ca-file " + endpoint.caFile + " of " + monitor.name + " cannot be read");
    }
}

} // namespace

std::string Monitor::fileKey() const
{
    std::string key = endpoint.authority() + '_' + endpoint.nameSpace;
    std::ranges::replace_if(
        key, [](char c) { return c == '/' || c == ':' || c == '[' || c == ']'; }, '_');
    return key;
}

std::vector<Monitor> chooseMonitors(const Configuration &configuration, const Options &options)
{
    const std::vector<std::string> selectors = selectorsOf(configuration, options);
    std::vector<Monitor> called;
    for (const std::string &selector : selectors) {
        if (isUrl(selector)) {
            Monitor monitor = monitorOfUrl(configuration, selector);
            if (std::ranges::find(called, monitor.fileKey(), &Monitor::fileKey) == called.end()) {
                called.push_back(std::move(monitor));
            }
        } else {
            checkSelector(configuration, selector);
        }
    }
    std::vector<Monitor> chosen;
    for (const Monitor &monitor : configuration.monitors) {
        if (std::ranges::any_of(selectors,
                                [&](const std::string &selector) { return isMeant(monitor, selector); })) {
            chosen.push_back(monitor);
        }
    }
    chosen.insert(chosen.end(), called.begin(), called.end());
    for (Monitor &monitor : chosen) {
        if (!options.caFile.empty()) {
            monitor.endpoint.caFile = options.caFile;
            monitor.endpoint.insecure = false;
        }
        monitor.endpoint.insecure = monitor.endpoint.insecure || options.insecure;
        checkAuthorities(monitor);
    }
    return chosen;
}

} // namespace displayctl::site
