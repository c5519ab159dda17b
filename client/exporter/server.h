// SPDX-License-Identifier: Apache-2.0
// The HTTP server of the exporter: the socket, TLS, logging in. What a request means is Exporter's.
#ifndef DISPLAYCTL_EXPORTER_SERVER_H
#define DISPLAYCTL_EXPORTER_SERVER_H

#include "exporter/exporter.h"
#include "exporter/web_config.h"

#include <memory>
#include <string>
#include <string_view>

struct MHD_Daemon;

namespace displayctl::exporter
{

/** A socket that listens. */
class Listener
{
  public:
    /** ADDRESS:PORT, the address numeric, IPv6 in brackets; port 0 is any free one. Throws site::Error. */
    explicit Listener(const std::string &address);
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener();

    [[nodiscard]] int socket() const
    {
        return socket_;
    }
    /** Whether only this machine can get at it. */
    [[nodiscard]] bool isLoopback() const
    {
        return isLoopback_;
    }
    /** ADDRESS:PORT, with the port that it got. */
    [[nodiscard]] std::string authority() const;

  private:
    int socket_ = -1;
    bool isLoopback_ = false;
};

/** Serves until it is destroyed. */
class Server
{
  public:
    /** Throws site::Error when certificate and key are none. Requests that nobody has taken yet wait in the
     * listener, so that another server may follow this one. */
    Server(const Listener &listener, const WebConfig &config, Exporter &exporter);
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    /** Returns when all that was begun is answered. */
    ~Server();

  private:
    struct Handler;

    std::unique_ptr<Handler> handler_;
    MHD_Daemon *daemon_ = nullptr;
};

} // namespace displayctl::exporter

#endif
