// SPDX-License-Identifier: Apache-2.0
#include "support/environment.h"

#include "support/values.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>

namespace desk
{

namespace
{

const char *variable(const char *name)
{
    const char *value = getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::filesystem::path defaultStoreDirectory()
{
    namespace fs = std::filesystem;
    if (const char *state = variable("XDG_STATE_HOME")) {
        return fs::path(state) / "desk-monitor";
    }
    if (const char *home = variable("HOME")) {
        return fs::path(home) / ".local" / "state" / "desk-monitor";
    }
    return "/var/tmp/desk-monitor-" + std::to_string(getuid());
}

} // namespace

std::string storePath()
{
    if (const char *path = variable("DESK_MONITOR_STORE")) {
        return path;
    }
    return defaultStoreDirectory() / "store.db";
}

bool isStorePath(std::string_view path)
{
    const char *named = variable("DESK_MONITOR_STORE");
    return named != nullptr ? path == named : path == storePath();
}

void makeStoreDirectory()
{
    namespace fs = std::filesystem;
    if (variable("DESK_MONITOR_STORE") != nullptr) {
        return;
    }
    const fs::path directory = defaultStoreDirectory();
    // A directory that cannot be made shows when the store is opened in it.
    std::error_code ignored;
    if (fs::create_directories(directory, ignored)) {
        fs::permissions(directory, fs::perms::owner_all, ignored);
    }
    // Somebody else may have been first, as below /var/tmp everybody can.
    struct stat status {
    };
    if (lstat(directory.c_str(), &status) != 0) {
        return;
    }
    const char *wrong = !S_ISDIR(status.st_mode)       ? " is no directory"
                        : status.st_uid != geteuid()   ? " belongs to another user"
                        : (status.st_mode & 0022) != 0 ? " can be written by other users"
                                                       : nullptr;
    if (wrong != nullptr) {
        throw StoreError("the directory " + directory.string() + wrong +
                         "; remove it, or name another store with DESK_MONITOR_STORE");
    }
}

std::optional<key_t> parseQueueKey(const std::string &text)
{
    char *end = nullptr;
    errno = 0;
    const long key = strtol(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || key <= 0 ||
        key > std::numeric_limits<key_t>::max() - queueCount) {
        return std::nullopt;
    }
    return static_cast<key_t>(key);
}

std::optional<key_t> queueBaseKey()
{
    const char *text = variable("DESK_MONITOR_QUEUE_KEY");
    return text == nullptr ? defaultQueueKey : parseQueueKey(text);
}

std::chrono::nanoseconds receiveTimeout()
{
    constexpr double longest = 24 * 3600;
    double seconds = 5;
    if (const char *text = variable("DESK_MONITOR_RECEIVE_TIMEOUT")) {
        parseSeconds(text, seconds);
    }
    return std::chrono::nanoseconds(static_cast<long long>(std::fmin(seconds, longest) * 1e9));
}

} // namespace desk
