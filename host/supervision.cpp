// SPDX-License-Identifier: Apache-2.0
#include "supervision.h"

#include "log/log.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace host
{
namespace
{

constexpr int firstInherited = 3;
constexpr const char *defaultUser = "display-host";

std::string variable(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

int inheritedSocket(const char *name)
{
    if (variable("LISTEN_PID") != std::to_string(getpid())) {
        return -1;
    }
    const int count = std::atoi(variable("LISTEN_FDS").c_str());
    std::string names = variable("LISTEN_FDNAMES");
    for (int i = 0; i < count; ++i) {
        const std::size_t colon = names.find(':');
        const int descriptor = firstInherited + i;
        if (names.substr(0, colon) == name) {
            return fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0 ? descriptor : -1;
        }
        names = colon == std::string::npos ? "" : names.substr(colon + 1);
    }
    return -1;
}

void notifySupervisor(const char *state)
{
    const std::string path = variable("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (address.sun_path[0] == '@') { // the abstract namespace
        address.sun_path[0] = '\0';
    }
    const int to = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    if (to < 0 || sendto(to, state, std::strlen(state), MSG_NOSIGNAL,
                         reinterpret_cast<const sockaddr *>(&address), length) < 0) {
        logLine("the service manager cannot be told %s: %s", state, std::strerror(errno));
    }
    if (to >= 0) {
        close(to);
    }
}

bool becomeUser(const std::string &user, std::string &problem)
{
    if (geteuid() != 0 && user.empty()) {
        return true; // without a look for the user, for which the system would load what it asks for users
    }
    const passwd *entry = getpwnam(user.empty() ? defaultUser : user.c_str());
    if (geteuid() != 0) {
        if (entry != nullptr && entry->pw_uid == geteuid()) {
            return true;
        }
        problem = "only root can become the user " + user;
        return false;
    }
    if (entry == nullptr && user.empty()) {
        logLine("this runs as root, and there is no user display-host; --user NAME makes it run as another");
        return true;
    }
    if (entry == nullptr) {
        problem = "there is no user " + user;
        return false;
    }
    if (initgroups(entry->pw_name, entry->pw_gid) != 0 || setgid(entry->pw_gid) != 0 ||
        setuid(entry->pw_uid) != 0) {
        problem = std::string("cannot become the user ") + entry->pw_name + ": " + std::strerror(errno);
        return false;
    }
    if (entry->pw_uid != 0 && setuid(0) == 0) {
        problem = "the rights of root are not given up";
        return false;
    }
    return true;
}

} // namespace host
