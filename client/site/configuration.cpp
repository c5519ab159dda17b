// SPDX-License-Identifier: Apache-2.0
// The readers of the file of monitors and of the names file. Whatever is not as it should be is told with
// file and line.
#include "site/directories.h"
#include "site/monitors.h"
#include "site/yaml_file.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace displayctl::site
{

namespace fs = std::filesystem;

namespace
{

constexpr std::string_view commonKeys = "user, password-file, ca-file, insecure";

/** What defaults and monitors have in common. False when the key is none of these. */
bool readCommon(const YamlFile &file, const std::string &key, const YAML::Node &value, Monitor &monitor)
{
    if (key == "user") {
        monitor.endpoint.user = file.text(value, key);
    } else if (key == "password-file") {
        monitor.passwordFile = file.path(value, key);
    } else if (key == "ca-file") {
        monitor.endpoint.caFile = file.path(value, key).string();
    } else if (key == "insecure") {
        monitor.endpoint.insecure = file.flag(value, key);
    } else {
        return false;
    }
    return true;
}

std::vector<std::string> readLabels(const YamlFile &file, const YAML::Node &value)
{
    if (!value.IsSequence()) {
        file.fail(value, "labels is a list, such as `labels: [suite4, hdr]`");
    }
    std::vector<std::string> labels;
    for (const YAML::Node &label : value) {
        labels.push_back(file.text(label, "a label"));
    }
    return labels;
}

void checkName(const YamlFile &file, const std::string &name, const YAML::Node &where)
{
    const bool isPlain = std::ranges::all_of(name, [](unsigned char c) {
        return c > ' ' && c != 0x7F && c != '=' && c != '/' && c != '@' && c != ',';
    });
    if (!isPlain || name == "all" || name.starts_with('-')) {
        file.fail(where,
                  "a monitor cannot be called \"" + name +
                      "\"; names are without blanks and without = / @ , and none is `all` or begins with -");
    }
}

void readUrl(const YamlFile &file, const YAML::Node &value, Monitor &monitor)
{
    wbem::Endpoint endpoint;
    try {
        endpoint = parseUrl(file.text(value, "url"));
    } catch (const Error &problem) {
        file.fail(value, problem.what());
    }
    monitor.endpoint.tls = endpoint.tls;
    monitor.endpoint.host = endpoint.host;
    monitor.endpoint.port = endpoint.port;
    monitor.endpoint.nameSpace = endpoint.nameSpace;
    if (!endpoint.user.empty()) {
        monitor.endpoint.user = endpoint.user;
    }
}

Monitor readMonitor(const YamlFile &file, const std::string &name, const YAML::Node &description,
                    Monitor monitor)
{
    monitor.name = name;
    YAML::Node url;
    file.each(description, "the monitor " + name,
              [&](const std::string &key, const YAML::Node &where, const YAML::Node &value) {
                  if (key == "url") {
                      url.reset(value);
                  } else if (key == "labels") {
                      monitor.labels = readLabels(file, value);
                  } else if (!readCommon(file, key, value, monitor)) {
                      file.fail(where, "a monitor has no \"" + key + "\"; there are: url, labels, " +
                                           std::string{commonKeys});
                  }
              });
    if (!url.IsDefined() || url.IsNull()) {
        file.fail(description, "the monitor " + name + " has no url");
    }
    readUrl(file, url, monitor);
    return monitor;
}

CodeNames readNames(const fs::path &path)
{
    const YamlFile file{path};
    CodeNames names;
    file.each(file.root(), "the names",
              [&](const std::string &setting, const YAML::Node &, const YAML::Node &codes) {
                  file.each(codes, setting,
                            [&](const std::string &code, const YAML::Node &where, const YAML::Node &name) {
                                std::int64_t number = 0;
                                const char *end = code.data() + code.size();
                                const auto [rest, problem] = std::from_chars(code.data(), end, number);
                                if (problem != std::errc{} || rest != end) {
                                    file.fail(where, "the code \"" + code + "\" is no whole number");
                                }
                                names[setting].emplace(number, file.text(name, "the name of a code"));
                            });
              });
    return names;
}

void readFile(Configuration &configuration)
{
    const YamlFile file{configuration.file};
    YAML::Node monitors;
    file.each(
        file.root(), "the file",
        [&](const std::string &key, const YAML::Node &where, const YAML::Node &value) {
            if (key == "defaults") {
                file.each(value, key,
                          [&](const std::string &name, const YAML::Node &at, const YAML::Node &content) {
                              if (!readCommon(file, name, content, configuration.defaults)) {
                                  file.fail(at, "defaults has no \"" + name +
                                                    "\"; there are: " + std::string{commonKeys});
                              }
                          });
            } else if (key == "names") {
                configuration.names = readNames(file.path(value, key));
            } else if (key == "monitors") {
                monitors.reset(value);
            } else {
                file.fail(where, "the file has no \"" + key + "\"; there are: defaults, names, monitors");
            }
        });
    if (!monitors.IsDefined()) {
        return;
    }
    file.each(monitors, "monitors",
              [&](const std::string &name, const YAML::Node &where, const YAML::Node &value) {
                  checkName(file, name, where);
                  configuration.monitors.push_back(readMonitor(file, name, value, configuration.defaults));
              });
}

} // namespace

Configuration readConfiguration(const Options &options)
{
    const char *named = std::getenv("DISPLAYCTL_CONFIG");
    const bool isNamed = !options.configFile.empty() || (named != nullptr && *named != '\0');
    Configuration configuration;
    configuration.file = options.configFile.empty() ? usualConfigFile() : fs::path{options.configFile};
    std::error_code unknown;
    configuration.exists = fs::exists(configuration.file, unknown);
    if (configuration.exists) {
        readFile(configuration);
    } else if (isNamed) {
        throw Error("there is no file of monitors " + configuration.file.string());
    }
    return configuration;
}

} // namespace displayctl::site
