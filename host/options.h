// SPDX-License-Identifier: Apache-2.0
// The command line of display-host, and the configuration file, which has the same names.
#ifndef HOST_OPTIONS_H
#define HOST_OPTIONS_H

#include "core/audit.h"
#include "http/server.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host
{

/** What display-host is to do. */
enum class Command { serve, accountAdd, accountRemove, accountList, certificate, auditVerify };

struct Options {
    Command command = Command::serve;

    std::vector<std::string> libraryDirectories;
    std::string library;
    std::vector<std::string> registrations;
    std::vector<std::string> mofFiles;
    std::vector<std::string> profiles;
    std::string nameSpace = "root/cimv2";
    unsigned patienceSeconds = 60;
    unsigned providerCalls = 1; // a support library may rely on one request at a time
    std::string providerOutput;
    std::uint64_t providerOutputBytes = std::uint64_t{1} << 20;

    std::string accounts;
    Endpoint http{"127.0.0.1", 5988, -1};
    Endpoint https{"127.0.0.1", 5989, -1};
    bool noHttp = false;
    bool insecure = false;
    TlsOptions tls;
    std::vector<std::string> serverNames;
    HttpLimits limits;
    unsigned idleSeconds = 60;
    unsigned transferSeconds = 90;
    unsigned loginSeconds = 10;

    std::string user; // to run as
    std::string readyFile;
    std::string audit;
    AuditLimits auditLimits;

    std::string account; // of the account commands: the user
    std::string role;
    std::vector<std::string> certificateNames;
    bool replaces = false;
};

/** Fills the options. The exit code with which the program is to end at once, after --help or wrong usage. */
std::optional<int> readOptions(int argc, char **argv, Options &options);

} // namespace host

#endif
