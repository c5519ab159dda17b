// SPDX-License-Identifier: Apache-2.0
// A connection to the object manager on this machine, with TLS or without.
#ifndef TESTS_TORTURE_CONNECTION_H
#define TESTS_TORTURE_CONNECTION_H

#include <string>

namespace torture
{

inline constexpr int patience = 60; // seconds: enough for a machine that has much else to do

/** Where a server listens. */
struct Listener {
    int port = 0;
    std::string certificate; // the file with the one that it shows (PEM); "": HTTP
};

/** What has come back. */
struct Received {
    enum class End { closed, noHandshake, silent };

    End end = End::closed; // silent: not within patience
    std::string bytes;
};

/** Sends the bytes on a connection of its own, and receives until the server closes it. */
Received exchange(const Listener &listener, const std::string &bytes);

} // namespace torture

#endif
