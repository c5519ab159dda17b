// SPDX-License-Identifier: Apache-2.0
// exporter: serves metrics of the monitors of the file to Prometheus, until it is asked to end.
#include "command/profiles.h"
#include "exporter/server.h"
#include "model/values.h"
#include "site/credentials.h"

#include <CLI/CLI.hpp>

#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

struct ExporterOptions {
    std::string listen = "127.0.0.1:9878";
    std::string webConfig;
    std::string profiles;
};

// A name is one of a file in the directory of profiles, and of no other file.
bool isProfileName(const std::string &name)
{
    return !name.empty() && name.front() != '.' &&
           name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.") ==
               std::string::npos;
}

std::optional<exporter::Compare> findProfile(const std::filesystem::path &directory,
                                             const site::CodeNames &names, const std::string &name)
{
    const std::filesystem::path file = directory / (name + ".yaml");
    std::error_code unknown;
    if (directory.empty() || !isProfileName(name) || !std::filesystem::is_regular_file(file, unknown)) {
        return std::nullopt;
    }
    // What belongs to one monitor is compared with none.
    Selected selected = selectFor(profile::read(file, names), true, {});
    return [selected = std::move(selected)](const model::State &state) {
        std::vector<std::string> settings;
        for (const Difference &difference : differencesOf(selected, state)) {
            settings.push_back(difference.setting->name);
        }
        return settings;
    };
}

exporter::Site readSite(const Options &options, const std::string &profiles)
{
    site::Options meant = options.site;
    if (meant.monitors.empty()) {
        meant.monitors = {"all"};
    }
    for (const std::string &selector : meant.monitors) {
        if (selector.find("://") != std::string::npos) {
            throw UsageError("the exporter serves monitors of the file of monitors, none by URL");
        }
    }
    const site::Configuration configuration = site::readConfiguration(meant);
    std::vector<site::Monitor> monitors = site::chooseMonitors(configuration, meant);
    site::addPasswords(monitors);
    exporter::Site result;
    for (site::Monitor &monitor : monitors) {
        std::string name = monitor.name;
        result.monitors.emplace(std::move(name), std::move(monitor));
    }
    result.findProfile = [profiles = std::filesystem::path(profiles), names = configuration.names](
                             const std::string &name) { return findProfile(profiles, names, name); };
    return result;
}

exporter::WebConfig readWeb(const ExporterOptions &options, const exporter::Listener &listener)
{
    exporter::WebConfig web;
    if (!options.webConfig.empty()) {
        web = exporter::readWebConfig(options.webConfig);
    }
    if (!listener.isLoopback() && (!web.isSecure() || web.users.empty())) {
        throw UsageError(
            "beyond this machine the exporter serves with TLS and a login only: name a --web-config "
            "with tls_server_config and basic_auth_users");
    }
    return web;
}

/** Signals are waited for, not caught; threads that are begun after this inherit it. */
sigset_t blockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

/** A descriptor for each connection, and one for each monitor that is read. */
void allowManyFiles()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

int serve(Call &call, const ExporterOptions &options)
{
    const std::filesystem::path profiles = options.profiles;
    if (!profiles.empty() && !std::filesystem::is_directory(profiles)) {
        throw UsageError("--profiles " + options.profiles + " is no directory");
    }
    const exporter::Listener listener{options.listen};
    exporter::WebConfig web = readWeb(options, listener);
    exporter::Exporter exporter{call.options.jobs, call.options.timeout()};
    exporter.use(readSite(call.options, options.profiles));
    exporter.own().tried(true);

    const sigset_t signals = blockSignals();
    allowManyFiles();
    auto server = std::make_unique<exporter::Server>(listener, web, exporter);
    std::cout << "listening on " << (web.isSecure() ? "https://" : "http://") << listener.authority() << "/\n"
              << std::flush;
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal == SIGHUP) {
        try {
            exporter::Site site = readSite(call.options, options.profiles);
            web = readWeb(options, listener);
            auto next = std::make_unique<exporter::Server>(listener, web, exporter);
            exporter.use(std::move(site));
            server = std::move(next);
            exporter.own().tried(true);
            std::cerr << "displayctl: the files were read again\n";
        } catch (const std::runtime_error &problem) {
            exporter.own().tried(false);
            std::cerr << "displayctl: " << problem.what() << "; what was there before stays\n";
        }
    }
    return 0;
}

} // namespace

void addExporter(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("exporter", "Serves metrics of the monitors to Prometheus");
    auto options = std::make_shared<ExporterOptions>();
    command
        ->add_option("--listen", options->listen, "ADDRESS:PORT, the address numeric; port 0 is any free one")
        ->capture_default_str();
    command->add_option("--web-config", options->webConfig,
                        "a file with tls_server_config and basic_auth_users; needed beyond this machine");
    command->add_option("--profiles", options->profiles,
                        "the directory of the profiles that may be asked for, NAME.yaml each");
    command->footer(
        "/probe?target=NAME reads a monitor of the file of monitors, /probe?target=NAME&profile=PROFILE\n"
        "tells what differs from a profile as well, /metrics is about the exporter itself. On SIGHUP\n"
        "all files are read again.\n"
        "Examples:\n"
        "  displayctl exporter\n"
        "  displayctl -m label=suite4 exporter --profiles /etc/displayctl/profiles\n"
        "  displayctl exporter --listen 0.0.0.0:9878 --web-config web.yaml");
    command->callback(
        [options, &action] { action = [options](Call &call) { return serve(call, *options); }; });
}

} // namespace displayctl::command
