// SPDX-License-Identifier: Apache-2.0
#include "crowd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

namespace soak
{

namespace
{

/** Between two bytes of those that are slow. */
constexpr std::chrono::seconds slow{1};

/** The beginning of a TLS handshake: a record of 512 bytes is announced, of which hardly any come. */
constexpr std::string_view helloBegin("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11);

constexpr std::string_view headBegin = "POST /cimom HTTP/1.1\r\nHost: localhost\r\nX-Slow: ";

sockaddr_in endpoint(std::uint32_t address, int port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(static_cast<std::uint16_t>(port));
    result.sin_addr.s_addr = htonl(address);
    return result;
}

} // namespace

const char *nameOf(Manner manner)
{
    constexpr std::array<const char *, mannerCount> names = {
        "silent", "slow head", "slow body", "slow reader", "half-closed", "TLS handshake without end"};
    return names[static_cast<std::size_t>(manner)];
}

struct Crowd::Guest {
    Manner manner = Manner::silent;
    std::uint32_t address = 0;
    int socket = -1;
    bool isConnected = false;
    bool wasAnswered = false;
    Clock::time_point next; // when it does something, or comes back
};

Crowd::Crowd(const CrowdPlan &plan) : plan_(plan), epoll_(epoll_create1(EPOLL_CLOEXEC))
{
    if (epoll_ < 0) {
        throw std::runtime_error("epoll cannot be used");
    }
    const auto now = Clock::now();
    for (long i = 0; i < plan.connections; ++i) {
        auto guest = std::make_unique<Guest>();
        const auto number = static_cast<std::uint32_t>(i);
        const std::uint32_t manner = number % mannerCount;
        guest->manner = static_cast<Manner>(manner);
        const bool isOneOfMany = number / mannerCount % 2 == 0;
        guest->address = isOneOfMany ? 0x7F010001 + (manner << 8U) : 0x7F020001 + number;
        guest->next = now + std::chrono::microseconds(i * 200); // not all in one moment
        guests_.push_back(std::move(guest));
    }
    thread_ = std::thread([this] { run(); });
}

Crowd::~Crowd()
{
    ends_ = true;
    thread_.join();
    for (const auto &guest : guests_) {
        close(*guest);
    }
    ::close(epoll_);
}

long Crowd::opened() const
{
    long sum = 0;
    for (const MannerCounts &counts : counts_) {
        sum += counts.opened;
    }
    return sum;
}

void Crowd::open(Guest &guest)
{
    MannerCounts &counts = counts_[static_cast<std::size_t>(guest.manner)];
    guest.socket = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (guest.socket < 0) {
        guest.next = Clock::now() + plan_.comesBack;
        return;
    }
    if (guest.manner == Manner::slowReader) {
        const int little = 2048;
        setsockopt(guest.socket, SOL_SOCKET, SO_RCVBUF, &little, sizeof little);
    }
    const sockaddr_in from = endpoint(guest.address, 0);
    const sockaddr_in to =
        endpoint(INADDR_LOOPBACK, guest.manner == Manner::handshake ? plan_.tlsPort : plan_.port);
    const bool isBound = bind(guest.socket, reinterpret_cast<const sockaddr *>(&from), sizeof from) == 0;
    if (!isBound || (connect(guest.socket, reinterpret_cast<const sockaddr *>(&to), sizeof to) != 0 &&
                     errno != EINPROGRESS)) {
        ++counts.refused;
        ::close(guest.socket);
        guest.socket = -1;
        guest.next = Clock::now() + plan_.comesBack;
        return;
    }
    ++counts.opened;
    most_ = std::max(most_.load(), ++current_);
    guest.isConnected = false;
    guest.wasAnswered = false;
    guest.next = Clock::time_point::max();
    epoll_event event{};
    event.events = EPOLLOUT;
    event.data.ptr = &guest;
    epoll_ctl(epoll_, EPOLL_CTL_ADD, guest.socket, &event);
}

void Crowd::close(Guest &guest)
{
    if (guest.socket >= 0) {
        ::close(guest.socket);
        guest.socket = -1;
        --current_;
        guest.next = Clock::now() + plan_.comesBack;
    }
}

/** What it does as soon as it is connected. False when that was all it had to say. */
bool Crowd::sendFirst(Guest &guest)
{
    const auto say = [&guest](std::string_view text) {
        return send(guest.socket, text.data(), text.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(text.size());
    };
    switch (guest.manner) {
    case Manner::silent:
        return false;
    case Manner::slowHead:
        return say(headBegin);
    case Manner::slowBody:
        return say(std::string_view(plan_.request).substr(0, plan_.request.find("\r\n\r\n") + 4));
    case Manner::slowReader:
        for (int i = 0; i < 20 && say(plan_.request); ++i) {
        }
        return false;
    case Manner::halfClosed:
        say(plan_.request);
        shutdown(guest.socket, SHUT_WR);
        return false;
    case Manner::handshake:
    case Manner::end:
        break;
    }
    return say(helloBegin);
}

/** Connected, or time for another byte. */
void Crowd::step(Guest &guest)
{
    if (!guest.isConnected) {
        guest.isConnected = true;
        const bool goesOn = sendFirst(guest);
        guest.next = goesOn ? Clock::now() + slow : Clock::time_point::max();
        epoll_event event{};
        // One that reads nothing does not even look.
        event.events = guest.manner == Manner::slowReader ? 0U : static_cast<std::uint32_t>(EPOLLIN);
        event.data.ptr = &guest;
        epoll_ctl(epoll_, EPOLL_CTL_MOD, guest.socket, &event);
        return;
    }
    guest.next = Clock::now() + slow;
    if (send(guest.socket, " ", 1, MSG_NOSIGNAL) < 0 && errno != EAGAIN) {
        ++counts_[static_cast<std::size_t>(guest.manner)].ended;
        close(guest);
    }
}

void Crowd::read(Guest &guest)
{
    std::array<char, 8192> bytes{};
    const ssize_t size = recv(guest.socket, bytes.data(), bytes.size(), 0);
    MannerCounts &counts = counts_[static_cast<std::size_t>(guest.manner)];
    if (size > 0) {
        counts.answered += !guest.wasAnswered;
        guest.wasAnswered = true;
    } else if (size == 0 || errno != EAGAIN) {
        ++counts.ended;
        close(guest);
    }
}

/** Those whose time has come. */
void Crowd::attend()
{
    const auto now = Clock::now();
    for (const auto &guest : guests_) {
        if (guest->next > now) {
            continue;
        }
        if (guest->socket < 0) {
            open(*guest);
        } else {
            step(*guest);
        }
    }
}

void Crowd::run()
{
    std::array<epoll_event, 256> events{};
    Clock::time_point attended{};
    while (!ends_) {
        const int count = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), 20);
        for (int i = 0; i < count; ++i) {
            const epoll_event &event = events[static_cast<std::size_t>(i)];
            Guest &guest = *static_cast<Guest *>(event.data.ptr);
            if (guest.socket < 0) {
                continue;
            }
            if ((event.events & EPOLLIN) != 0) {
                read(guest);
            } else if ((event.events & (EPOLLERR | EPOLLHUP)) != 0) {
                ++counts_[static_cast<std::size_t>(guest.manner)].ended;
                close(guest);
            } else if (!guest.isConnected) {
                step(guest);
            }
        }
        if (Clock::now() - attended > std::chrono::milliseconds(20)) {
            attended = Clock::now();
            attend();
        }
    }
}

} // namespace soak
