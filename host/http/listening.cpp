// SPDX-License-Identifier: Apache-2.0
#include "http/listening.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace host
{
namespace
{

constexpr int backlog = 128;

/** The name of the socket into the endpoint; false, with errno, on failure. */
bool readName(Endpoint &endpoint)
{
    sockaddr_storage bound = {};
    socklen_t length = sizeof bound;
    if (getsockname(endpoint.socket, reinterpret_cast<sockaddr *>(&bound), &length) != 0) {
        return false;
    }
    endpoint.address = numericAddress(reinterpret_cast<const sockaddr *>(&bound));
    // The port lies at the same place for both families.
    endpoint.port = ntohs(reinterpret_cast<const sockaddr_in *>(&bound)->sin_port);
    return true;
}

} // namespace

bool isLoopback(const Endpoint &endpoint)
{
    Endpoint named = endpoint;
    if (named.socket >= 0 && !readName(named)) {
        return false;
    }
    in_addr ipv4 = {};
    in6_addr ipv6 = {};
    if (inet_pton(AF_INET, named.address.c_str(), &ipv4) == 1) {
        return ntohl(ipv4.s_addr) >> 24 == 127;
    }
    return inet_pton(AF_INET6, named.address.c_str(), &ipv6) == 1 && IN6_IS_ADDR_LOOPBACK(&ipv6);
}

bool listen(Endpoint &endpoint, std::string &problem)
{
    if (endpoint.socket >= 0) {
        if (readName(endpoint)) {
            return true;
        }
        problem = "the socket that was handed over is none: " + std::string(std::strerror(errno));
        return false;
    }
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const std::string port = std::to_string(endpoint.port);
    if (const int code = getaddrinfo(endpoint.address.c_str(), port.c_str(), &hints, &found); code != 0) {
        problem = "the address " + endpoint.address + " is not a numeric IP address: " + gai_strerror(code);
        return false;
    }
    const int made = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    const char *failed = nullptr;
    if (made < 0) {
        failed = "cannot make a socket for";
    } else if (setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
               bind(made, found->ai_addr, found->ai_addrlen) != 0 || ::listen(made, backlog) != 0) {
        failed = "cannot listen on";
    }
    freeaddrinfo(found);
    endpoint.socket = made;
    if (failed == nullptr && readName(endpoint)) {
        return true;
    }
    problem = std::string(failed != nullptr ? failed : "cannot tell the port of") + " " + endpoint.address +
              " port " + port + ": " +
              (errno == EADDRINUSE ? "another program is listening there" : std::strerror(errno));
    if (made >= 0) {
        close(made);
    }
    endpoint.socket = -1;
    return false;
}

std::string numericAddress(const sockaddr *address)
{
    char text[INET6_ADDRSTRLEN] = "-";
    if (address->sa_family == AF_INET) {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in *>(address)->sin_addr, text, sizeof text);
    } else if (address->sa_family == AF_INET6) {
        const in6_addr &ipv6 = reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr;
        if (IN6_IS_ADDR_V4MAPPED(&ipv6)) {
            inet_ntop(AF_INET, ipv6.s6_addr + 12, text, sizeof text);
        } else {
            inet_ntop(AF_INET6, &ipv6, text, sizeof text);
        }
    }
    return text;
}

} // namespace host
