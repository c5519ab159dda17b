// SPDX-License-Identifier: Apache-2.0
// The connections that there are: who may stay, and who goes for a newcomer.
#ifndef HOST_HTTP_CONNECTIONS_H
#define HOST_HTTP_CONNECTIONS_H

#include <chrono>
#include <list>
#include <mutex>
#include <string>

namespace host
{

struct ConnectionLimits {
    /** In all. */
    unsigned total = 64;
    /** Of one address. */
    unsigned perAddress = 48;
    /** Whose client has not logged in yet. */
    unsigned anonymous = 32;
    /** From the beginning of a connection until its client has logged in. */
    std::chrono::milliseconds login{10000};
    /** For a whole request to come in, or a whole reply to go out, however many bytes move meanwhile. */
    std::chrono::milliseconds transfer{90000};
};

/** Where a newcomer would be one too many, the oldest of the connections whose client has not logged in is
 * closed, or else the one that has waited longest for its client; connections whose request is being answered
 * stay. Safe to use by many threads. */
class ConnectionTable
{
  public:
    using Clock = std::chrono::steady_clock;

    struct Connection {
        int socket = -1;
        std::string address;       // numeric
        bool isTurnedAway = false; // there was no room; fixed once it is added
        bool hasLoggedIn = false;
        bool isWaiting = true; // for the client: for its request, or to take an answer
        bool hasEnded = false;
        Clock::time_point waitingSince;
        Clock::time_point deadline;
    };

    explicit ConnectionTable(const ConnectionLimits &limits) : limits_(limits) {}

    /** A new connection. It stays where it is until remove(). */
    Connection &add(int socket, std::string address);

    /** Before its socket is closed. */
    void remove(Connection &connection);

    /** The request is there as a whole; until awaitClient() the client is not to blame for the time. */
    void beginWork(Connection &connection);

    /** The client is to take the answer, or to send its next request. */
    void awaitClient(Connection &connection);

    void logIn(Connection &connection);

    /** Ends connections whose client takes too long. */
    void endOverdue(Clock::time_point now = Clock::now());

    unsigned count() const;

  private:
    enum class Among { all, anonymous, ofAddress, turnedAway };

    bool isAmong(const Connection &connection, Among among, const std::string &address) const;
    bool makeRoom(Among among, unsigned limit, const Connection &newcomer);
    Connection *leastMissed(Among among, const Connection &newcomer);
    static void end(Connection &connection);

    /** Those that were turned away and have not been told so yet. */
    static constexpr unsigned turnedAway = 16;

    const ConnectionLimits limits_;
    mutable std::mutex mutex_;
    std::list<Connection> connections_;
};

} // namespace host

#endif
