// SPDX-License-Identifier: Apache-2.0
// Requests byte by byte, as no well-behaved client sends them.
#ifndef TESTS_DESK_SCREEN_HTTP_CLIENT_H
#define TESTS_DESK_SCREEN_HTTP_CLIENT_H

#include <cstdint>
#include <functional>
#include <string>

/** A connection to 127.0.0.1. */
class RawConnection
{
  public:
    explicit RawConnection(std::uint16_t port);
    ~RawConnection();
    RawConnection(const RawConnection &) = delete;
    RawConnection &operator=(const RawConnection &) = delete;

    void send(const std::string &bytes);
    /** Reads until what was received in all satisfies the condition, or the other end closes; returns all
     * that was received. Fails the test after a minute. */
    const std::string &readUntil(const std::function<bool(const std::string &)> &enough);
    /** Reads until the text has come. */
    const std::string &readUntil(const std::string &text);
    /** Reads to the end of the connection. */
    const std::string &readAll();

  private:
    int socket_;
    std::string received_;
};

#endif
