// SPDX-License-Identifier: Apache-2.0
#include "site/directories.h"

#include "site/error.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace displayctl::site
{

namespace fs = std::filesystem;

namespace
{

/** The entry of the user in the list of users; both empty where there is none. */
struct User {
    std::string name;
    fs::path home;
};

User currentUser()
{
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
        return {};
    }
    return {found->pw_name, found->pw_dir};
}

/** The directory that the variable names when it is an absolute one, as the XDG base directories have to be;
 * else the given one below the user's home. */
fs::path baseDirectory(const char *variable, const char *usual)
{
    const char *named = std::getenv(variable);
    return named != nullptr && *named == '/' ? fs::path{named} : homeDirectory() / usual;
}

} // namespace

fs::path homeDirectory()
{
    const char *home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') {
        return home;
    }
    const fs::path listed = currentUser().home;
    if (listed.empty()) {
        throw Error("HOME is not set, and this user has no home directory");
    }
    return listed;
}

fs::path stateDirectory()
{
    const fs::path directory = baseDirectory("XDG_STATE_HOME", ".local/state") / "displayctl";
    std::error_code problem;
    if (fs::create_directories(directory, problem)) {
        fs::permissions(directory, fs::perms::owner_all, problem);
    }
    if (problem || !fs::is_directory(directory, problem)) {
        throw Error("the directory " + directory.string() + " cannot be made: " + problem.message());
    }
    return directory;
}

fs::path usualConfigFile()
{
    const char *named = std::getenv("DISPLAYCTL_CONFIG");
    if (named != nullptr && *named != '\0') {
        return named;
    }
    return baseDirectory("XDG_CONFIG_HOME", ".config") / "displayctl" / "monitors.yaml";
}

std::string machineUser()
{
    const std::string name = currentUser().name;
    return name.empty() ? std::to_string(geteuid()) : name;
}

} // namespace displayctl::site
