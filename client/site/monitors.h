// SPDX-License-Identifier: Apache-2.0
// The monitors of a site: the file that lists them, and which of them a call means.
#ifndef DISPLAYCTL_SITE_MONITORS_H
#define DISPLAYCTL_SITE_MONITORS_H

#include "site/error.h"
#include "wbem/connection.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::site
{

/** One monitor as the file, or a URL, describes it. */
struct Monitor {
    std::string name;        // in the file; of a URL its host:port
    wbem::Endpoint endpoint; // without password until Credentials has given it one
    std::vector<std::string> labels;
    std::filesystem::path passwordFile; // empty: none

    /** What stands for this monitor in file names: its host, port and namespace, whatever it is called. */
    [[nodiscard]] std::string fileKey() const;
};

/** What the site calls codes without a documented meaning: by setting as written there ("osd.language"), by
 * code. */
using CodeNames = std::map<std::string, std::map<std::int64_t, std::string>>;

struct Configuration {
    std::filesystem::path file; // also when it is not there
    bool exists = false;
    Monitor defaults;              // what holds for all monitors, those called by URL included
    std::vector<Monitor> monitors; // in the order of the file
    CodeNames names;
};

/** The options of a call that reach into this room. */
struct Options {
    std::string configFile{};            // --config; empty: the usual one, which need not be there
    std::vector<std::string> monitors{}; // --monitor
    std::string caFile{};                // --ca-file: instead of the file's
    bool insecure = false;               // --insecure
};

/** The file of monitors and the names file it refers to. Throws Error, with file and line, when they are not
 * as they should be, and when a file that was named is not there. */
[[nodiscard]] Configuration readConfiguration(const Options &options);

/** The monitors that are meant, each once, in the order of the file, URLs last: by name, label=LABEL, all, or
 * URL. Without a selector DISPLAYCTL_MONITOR, else the one monitor of the file. Throws Error when a selector
 * fits nothing. */
[[nodiscard]] std::vector<Monitor> chooseMonitors(const Configuration &configuration, const Options &options);

/** http[s]://[user@]host[:port][/namespace]. Throws Error when it is not one, and, without repeating it, when
 * a password stands in it. */
[[nodiscard]] wbem::Endpoint parseUrl(std::string_view url);

} // namespace displayctl::site

#endif
