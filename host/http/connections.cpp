// SPDX-License-Identifier: Apache-2.0
#include "http/connections.h"

#include <algorithm>
#include <sys/socket.h>

namespace host
{

ConnectionTable::Connection &ConnectionTable::add(int socket, std::string address)
{
    const std::lock_guard lock(mutex_);
    Connection &added = connections_.emplace_back();
    added.socket = socket;
    added.address = std::move(address);
    added.waitingSince = Clock::now();
    added.deadline = added.waitingSince + std::min(limits_.login, limits_.transfer);
    const bool hasRoom = makeRoom(Among::ofAddress, limits_.perAddress, added) &&
                         makeRoom(Among::anonymous, limits_.anonymous, added) &&
                         makeRoom(Among::all, limits_.total, added);
    if (!hasRoom) {
        added.isTurnedAway = true;
        makeRoom(Among::turnedAway, turnedAway, added);
    }
    return added;
}

void ConnectionTable::remove(Connection &connection)
{
    const std::lock_guard lock(mutex_);
    connections_.remove_if([&connection](const Connection &each) { return &each == &connection; });
}

void ConnectionTable::beginWork(Connection &connection)
{
    const std::lock_guard lock(mutex_);
    connection.isWaiting = false;
}

void ConnectionTable::awaitClient(Connection &connection)
{
    const std::lock_guard lock(mutex_);
    const Clock::time_point now = Clock::now();
    if (!connection.isWaiting) {
        connection.isWaiting = !connection.hasEnded;
        connection.waitingSince = now;
    }
    if (connection.hasLoggedIn) { // the others have the time that they had from the beginning
        connection.deadline = now + limits_.transfer;
    }
}

void ConnectionTable::logIn(Connection &connection)
{
    const std::lock_guard lock(mutex_);
    if (!connection.hasLoggedIn) {
        connection.hasLoggedIn = true;
        connection.deadline = Clock::now() + limits_.transfer;
    }
}

void ConnectionTable::endOverdue(Clock::time_point now)
{
    const std::lock_guard lock(mutex_);
    for (Connection &connection : connections_) {
        if (connection.isWaiting && connection.deadline < now) {
            end(connection);
        }
    }
}

unsigned ConnectionTable::count() const
{
    const std::lock_guard lock(mutex_);
    return static_cast<unsigned>(connections_.size());
}

bool ConnectionTable::isAmong(const Connection &connection, Among among, const std::string &address) const
{
    if (connection.hasEnded || connection.isTurnedAway != (among == Among::turnedAway)) {
        return false;
    }
    switch (among) {
    case Among::anonymous: // one whose password is being looked at needs no room any more
        return !connection.hasLoggedIn && connection.isWaiting;
    case Among::ofAddress:
        return connection.address == address;
    case Among::all:
    case Among::turnedAway:
        break;
    }
    return true;
}

/** Ends others until there are no more than so many; false when nobody can be asked to go. */
bool ConnectionTable::makeRoom(Among among, unsigned limit, const Connection &newcomer)
{
    auto count = std::count_if(connections_.begin(), connections_.end(), [&](const Connection &each) {
        return isAmong(each, among, newcomer.address);
    });
    for (; count > static_cast<std::ptrdiff_t>(limit); --count) {
        Connection *least = leastMissed(among, newcomer);
        if (least == nullptr) {
            return false;
        }
        end(*least);
    }
    return true;
}

ConnectionTable::Connection *ConnectionTable::leastMissed(Among among, const Connection &newcomer)
{
    Connection *least = nullptr;
    for (Connection &each : connections_) { // the oldest first
        if (&each == &newcomer || !each.isWaiting || !isAmong(each, among, newcomer.address)) {
            continue;
        }
        if (!each.hasLoggedIn) {
            return &each;
        }
        if (least == nullptr || each.waitingSince < least->waitingSince) {
            least = &each;
        }
    }
    return least;
}

/** The thread that serves the connection notices, and closes it. */
void ConnectionTable::end(Connection &connection)
{
    connection.hasEnded = true;
    connection.isWaiting = false;
    if (connection.socket >= 0) {
        shutdown(connection.socket, SHUT_RDWR);
    }
}

} // namespace host
