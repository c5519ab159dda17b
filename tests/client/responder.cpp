// SPDX-License-Identifier: Apache-2.0
#include "responder.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <unordered_map>

namespace responder
{

namespace
{

constexpr std::string_view headEnd = "\r\n\r\n";

[[noreturn]] void fail(const std::string &what)
{
    throw std::system_error{errno, std::system_category(), what};
}

/** One listening socket or one connection. */
struct Socket {
    std::string address;
    bool listens = false;
    std::string received;
};

/** The first complete request of what was received is taken out; none while it is not complete. */
bool takeRequest(Socket &socket, Request &request)
{
    const std::size_t end = socket.received.find(headEnd);
    if (end == std::string::npos) {
        return false;
    }
    request = {socket.address, socket.received.substr(0, end), {}};
    const std::string length = request.header("Content-Length");
    const std::size_t size = length.empty() ? 0 : std::stoul(length);
    if (socket.received.size() < end + headEnd.size() + size) {
        return false;
    }
    request.body = socket.received.substr(end + headEnd.size(), size);
    socket.received.erase(0, end + headEnd.size() + size);
    return true;
}

std::string message(std::string_view kind, std::string_view name, std::string_view content)
{
    std::string body =
        "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
        "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP><";
    ((((body += kind) += " NAME=\"") += name) += "\">") += content;
    ((body += "</") += kind) += "></SIMPLERSP></MESSAGE></CIM>";
    return body;
}

} // namespace

std::string Request::header(std::string_view name) const
{
    const std::string start = "\r\n" + std::string{name} + ": ";
    const std::size_t found = head.find(start);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t begin = found + start.size();
    return head.substr(begin, head.find("\r\n", begin) - begin);
}

Reply http(std::string_view body, std::string_view status, std::string_view headers)
{
    Reply reply;
    ((reply.bytes = "HTTP/1.1 ") += status) += "\r\nContent-Type: application/xml; charset=\"utf-8\"\r\n";
    ((reply.bytes += headers) += "Content-Length: ") += std::to_string(body.size());
    (reply.bytes += "\r\n\r\n") += body;
    return reply;
}

Reply intrinsic(std::string_view operation, std::string_view content)
{
    return http(message("IMETHODRESPONSE", operation, content));
}

Reply method(std::string_view name, std::string_view content)
{
    return http(message("METHODRESPONSE", name, content));
}

Reply silence()
{
    return {};
}

Reply hangUp()
{
    return {"", true};
}

std::string classOf(const Request &request)
{
    for (const std::string_view start : {"<CLASSNAME NAME=\"", "<INSTANCENAME CLASSNAME=\""}) {
        const std::size_t found = request.body.find(start);
        if (found != std::string::npos) {
            const std::size_t begin = found + start.size();
            return request.body.substr(begin, request.body.find('"', begin) - begin);
        }
    }
    return {};
}

unsigned Counts::total() const
{
    unsigned sum = 0;
    for (const auto &[what, count] : requests) {
        sum += count;
    }
    return sum;
}

std::vector<std::string> loopbackAddresses(unsigned count)
{
    std::vector<std::string> addresses;
    for (unsigned i = 0; i < count; ++i) {
        addresses.push_back("127.1." + std::to_string(i / 250) + '.' + std::to_string(i % 250 + 1));
    }
    return addresses;
}

class Responder::Loop
{
  public:
    Loop(const std::vector<std::string> &addresses, Handler handler, unsigned port)
        : handler_(std::move(handler)), port_(port), poll_(epoll_create1(EPOLL_CLOEXEC)),
          end_(eventfd(0, EFD_CLOEXEC))
    {
        watch(end_, {"", false, {}});
        for (const std::string &address : addresses) {
            listenOn(address);
        }
        thread_ = std::thread{[this] { run(); }};
    }

    ~Loop()
    {
        const std::uint64_t one = 1;
        static_cast<void>(write(end_, &one, sizeof one));
        thread_.join();
        for (const auto &[descriptor, socket] : sockets_) {
            close(descriptor);
        }
        close(poll_);
    }

    Loop(const Loop &) = delete;
    Loop &operator=(const Loop &) = delete;

    [[nodiscard]] unsigned port() const
    {
        return port_;
    }

    [[nodiscard]] Counts counts() const
    {
        const std::lock_guard lock{mutex_};
        return counts_;
    }

  private:
    void watch(int descriptor, Socket socket)
    {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = descriptor;
        if (epoll_ctl(poll_, EPOLL_CTL_ADD, descriptor, &event) != 0) {
            fail("epoll_ctl");
        }
        sockets_.emplace(descriptor, std::move(socket));
    }

    void listenOn(const std::string &address)
    {
        const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (descriptor < 0) {
            fail("socket");
        }
        const int yes = 1;
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(static_cast<std::uint16_t>(port_));
        socklen_t length = sizeof name;
        if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1 ||
            bind(descriptor, reinterpret_cast<sockaddr *>(&name), length) != 0 ||
            listen(descriptor, 64) != 0 ||
            getsockname(descriptor, reinterpret_cast<sockaddr *>(&name), &length) != 0) {
            fail("cannot listen on " + address);
        }
        port_ = ntohs(name.sin_port);
        watch(descriptor, {address, true, {}});
    }

    void run()
    {
        std::array<epoll_event, 64> events{};
        for (;;) {
            const int count = epoll_wait(poll_, events.data(), static_cast<int>(events.size()), -1);
            for (int i = 0; i < count; ++i) {
                const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
                if (descriptor == end_) {
                    return;
                }
                if (sockets_.at(descriptor).listens) {
                    accept(descriptor);
                } else {
                    receive(descriptor);
                }
            }
        }
    }

    void accept(int listening)
    {
        const int descriptor = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) {
            return; // gone again already
        }
        const int yes = 1;
        setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        watch(descriptor, {sockets_.at(listening).address, false, {}});
        const std::lock_guard lock{mutex_};
        ++counts_.connections;
    }

    void receive(int descriptor)
    {
        std::array<char, 65536> buffer{};
        const ssize_t size = recv(descriptor, buffer.data(), buffer.size(), 0);
        Socket &socket = sockets_.at(descriptor);
        bool closes = size <= 0;
        if (!closes) {
            socket.received.append(buffer.data(), static_cast<std::size_t>(size));
        }
        Request request;
        while (!closes && takeRequest(socket, request)) {
            closes = !answer(descriptor, request);
        }
        if (closes) {
            // Closing would not end the watch while a child that is being started still has the connection.
            epoll_ctl(poll_, EPOLL_CTL_DEL, descriptor, nullptr);
            close(descriptor);
            sockets_.erase(descriptor);
        }
    }

    /** False when the connection ends with the answer. */
    bool answer(int descriptor, const Request &request)
    {
        {
            const std::lock_guard lock{mutex_};
            ++counts_.requests[request.header("CIMMethod") + ' ' + classOf(request)];
        }
        const Reply reply = handler_(request);
        std::string_view rest = reply.bytes;
        while (!rest.empty()) {
            const ssize_t sent = send(descriptor, rest.data(), rest.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            rest.remove_prefix(static_cast<std::size_t>(sent));
        }
        return !reply.closes;
    }

    Handler handler_;
    unsigned port_;
    int poll_;
    int end_;
    std::unordered_map<int, Socket> sockets_;
    mutable std::mutex mutex_; // the counts
    Counts counts_;
    std::thread thread_;
};

Responder::Responder(std::vector<std::string> addresses, Handler handler, unsigned port)
    : loop_(std::make_unique<Loop>(addresses, std::move(handler), port))
{
}

Responder::Responder(Handler handler) : Responder({"127.0.0.1"}, std::move(handler)) {}

Responder::~Responder() = default;

unsigned Responder::port() const
{
    return loop_->port();
}

Counts Responder::counts() const
{
    return loop_->counts();
}

} // namespace responder
