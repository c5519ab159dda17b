// SPDX-License-Identifier: Apache-2.0
// The connection to one monitor's object manager: CIM-XML over HTTP or HTTPS.
#ifndef DISPLAYCTL_WBEM_CONNECTION_H
#define DISPLAYCTL_WBEM_CONNECTION_H

#include "wbem/operation.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace displayctl::wbem
{

/** Where an object manager listens, and as whom to call it. */
struct Endpoint {
    bool tls = false;
    std::string host; // an address or a name; IPv6 without brackets
    unsigned port = 5988;
    std::string nameSpace = "root/cimv2";
    std::string user; // empty: without credentials
    std::optional<std::string> password;
    std::string caFile; // empty: the system's authorities
    bool insecure = false;

    /** host:port, IPv6 in brackets. */
    [[nodiscard]] std::string authority() const;
};

/** What a connection has cost so far. */
struct Traffic {
    unsigned requests = 0;
    unsigned connections = 0;
};

/** One monitor. To be used from one thread at a time; two connections may be used from two threads. */
class Connection
{
  public:
    /** Connects when the first request is sent. */
    explicit Connection(Endpoint endpoint, std::chrono::milliseconds timeout = std::chrono::seconds{5});
    Connection(Connection &&other) noexcept;
    Connection &operator=(Connection &&other) noexcept;
    ~Connection();

    /** Sends the operations over one kept connection, the next one as soon as an answer has come, while the
     * answer before is read; the answers in the order of the operations. Each has the time limit. When one
     * finds no connection, no login or no answer in time, those behind it are not sent and get the same
     * status with maybeDone false: a dead monitor costs its time limit once. Nothing that changes the monitor
     * is ever sent twice. */
    [[nodiscard]] std::vector<Answer> exchange(std::span<const Operation> operations);
    [[nodiscard]] Answer exchange(const Operation &operation);

    [[nodiscard]] const Endpoint &endpoint() const;
    [[nodiscard]] Traffic traffic() const;
    /** When the certificate that the other side has shown expires, in seconds since 1970; none without TLS,
     * and where no handshake has succeeded. */
    [[nodiscard]] std::optional<std::int64_t> certificateExpiry() const;

  private:
    class Transfers;
    std::unique_ptr<Transfers> transfers_;
};

} // namespace displayctl::wbem

#endif
