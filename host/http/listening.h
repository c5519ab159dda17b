// SPDX-License-Identifier: Apache-2.0
// Sockets that listen, and numeric addresses.
#ifndef HOST_HTTP_LISTENING_H
#define HOST_HTTP_LISTENING_H

#include <cstdint>
#include <string>

struct sockaddr;

namespace host
{

/** Where to listen. */
struct Endpoint {
    /** A numeric IPv4 or IPv6 address. */
    std::string address = "127.0.0.1";
    /** 0: any free one. */
    std::uint16_t port = 0;
    /** A socket that listens already, whatever the address; -1: none. */
    int socket = -1;
};

/** True when only this machine can get at the endpoint. */
bool isLoopback(const Endpoint &endpoint);

/** Fills in what is open about the endpoint: the socket, which from then on listens, and the port. False,
 * with the reason in problem, on failure. */
[[nodiscard]] bool listen(Endpoint &endpoint, std::string &problem);

/** The numeric address; an IPv4 address mapped into IPv6 as what it is. "-" for other families. */
std::string numericAddress(const sockaddr *address);

} // namespace host

#endif
