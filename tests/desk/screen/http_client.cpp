// SPDX-License-Identifier: Apache-2.0
#include "http_client.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

RawConnection::RawConnection(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
}

RawConnection::~RawConnection()
{
    close(socket_);
}

void RawConnection::send(const std::string &bytes)
{
    // The other end may have refused already, and closed.
    static_cast<void>(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

const std::string &RawConnection::readUntil(const std::function<bool(const std::string &)> &enough)
{
    while (!enough(received_)) {
        pollfd waiting{socket_, POLLIN, 0};
        if (poll(&waiting, 1, 60'000) != 1) {
            ADD_FAILURE() << "nothing more came within a minute; so far: " << received_;
            break;
        }
        char bytes[4096];
        const ssize_t size = recv(socket_, bytes, sizeof bytes, 0);
        if (size <= 0) {
            break;
        }
        received_.append(bytes, static_cast<std::size_t>(size));
    }
    return received_;
}

const std::string &RawConnection::readUntil(const std::string &text)
{
    return readUntil([&](const std::string &received) { return received.find(text) != received.npos; });
}

const std::string &RawConnection::readAll()
{
    return readUntil([](const std::string &) { return false; });
}
