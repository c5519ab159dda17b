// SPDX-License-Identifier: Apache-2.0
#include "exporter/server.h"

#include "site/error.h"

#include <microhttpd.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace displayctl::exporter
{

namespace
{

constexpr unsigned mostConnections = 1000;
constexpr unsigned idleSeconds = 120;
// As the object manager has them: forward secrecy and authenticated encryption, nothing else.
constexpr const char *tlsPriorities =
    "NONE:+VERS-TLS1.3:+VERS-TLS1.2:+ECDHE-ECDSA:+ECDHE-RSA:+AES-256-GCM:+AES-128-GCM:+CHACHA20-POLY1305:"
    "+AEAD:+COMP-NULL:+GROUP-X25519:+GROUP-SECP256R1:+GROUP-SECP384R1:"
    "+SIGN-ECDSA-SHA256:+SIGN-ECDSA-SHA384:+SIGN-ECDSA-SECP256R1-SHA256:+SIGN-ECDSA-SECP384R1-SHA384:"
    "+SIGN-EDDSA-ED25519:+SIGN-RSA-PSS-RSAE-SHA256:+SIGN-RSA-PSS-RSAE-SHA384:+SIGN-RSA-SHA256:"
    "+SIGN-RSA-SHA384:+CTYPE-X509:%SERVER_PRECEDENCE";
constexpr int unauthorized = 401;
constexpr int methodNotAllowed = 405;

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList parseAddress(const std::string &text)
{
    const std::size_t colon = text.rfind(':');
    std::string host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    addrinfo *found = nullptr;
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size() ||
        getaddrinfo(host.c_str(), text.c_str() + colon + 1, &hints, &found) != 0) {
        throw site::Error("--listen " + text + " is no ADDRESS:PORT; 127.0.0.1:9878 and [::1]:9878 are");
    }
    return {found, freeaddrinfo};
}

bool isOfThisMachine(const sockaddr *address)
{
    if (address->sa_family == AF_INET) {
        const auto *four = reinterpret_cast<const sockaddr_in *>(address);
        return (ntohl(four->sin_addr.s_addr) >> 24U) == 127;
    }
    return IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr);
}

std::optional<std::string> argument(MHD_Connection *connection, const char *name)
{
    const char *value = MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::optional<double> scrapeTimeout(MHD_Connection *connection)
{
    const char *text =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "X-Prometheus-Scrape-Timeout-Seconds");
    double seconds = 0;
    if (text == nullptr || std::from_chars(text, text + std::strlen(text), seconds).ec != std::errc{} ||
        !(seconds > 0)) {
        return std::nullopt;
    }
    return seconds;
}

MHD_Result send(MHD_Connection *connection, const Reply &reply)
{
    // The reply is copied: it goes before the last byte has left.
    MHD_Response *response = MHD_create_response_from_buffer(
        reply.body.size(), const_cast<char *>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.type.c_str());
    if (reply.status == methodNotAllowed) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    }
    const MHD_Result result =
        reply.status == unauthorized
            ? MHD_queue_basic_auth_fail_response(connection, "displayctl exporter", response)
            : MHD_queue_response(connection, static_cast<unsigned>(reply.status), response);
    MHD_destroy_response(response);
    return result;
}

} // namespace

Listener::Listener(const std::string &address)
{
    const AddressList found = parseAddress(address);
    isLoopback_ = isOfThisMachine(found->ai_addr);
    socket_ = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int yes = 1; // an address that was served a moment ago may be served again
    if (socket_ >= 0) {
        setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    }
    if (socket_ < 0 || bind(socket_, found->ai_addr, found->ai_addrlen) != 0 ||
        listen(socket_, SOMAXCONN) != 0) {
        const std::string reason = std::strerror(errno);
        if (socket_ >= 0) {
            close(socket_);
        }
        throw site::Error("cannot listen on " + address + ": " + reason);
    }
}

Listener::~Listener()
{
    close(socket_);
}

std::string Listener::authority() const
{
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> port{};
    auto *any = reinterpret_cast<sockaddr *>(&address);
    if (getsockname(socket_, any, &size) != 0 ||
        getnameinfo(any, size, host.data(), host.size(), port.data(), port.size(),
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {};
    }
    const std::string name = host.data();
    return (name.find(':') == std::string::npos ? name : "[" + name + "]") + ":" + port.data();
}

struct Server::Handler {
    Exporter &exporter;
    Gate gate;

    bool isAdmitted(MHD_Connection *connection)
    {
        if (gate.isOpen()) {
            return true;
        }
        char *password = nullptr;
        char *user = MHD_basic_auth_get_username_password(connection, &password);
        const bool isGood = user != nullptr && password != nullptr && gate.admits(user, password);
        MHD_free(user);
        MHD_free(password);
        return isGood;
    }

    Reply answer(MHD_Connection *connection, const char *url, std::string_view method)
    {
        if (!isAdmitted(connection)) {
            return exporter.refuse(unauthorized, "user or password is wrong, or none was given");
        }
        if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD) {
            return exporter.refuse(methodNotAllowed, "there is GET and HEAD; nothing can be changed here");
        }
        return exporter.answer({url, argument(connection, "target"), argument(connection, "profile"),
                                scrapeTimeout(connection)});
    }

    static MHD_Result handle(void *self, MHD_Connection *connection, const char *url, const char *method,
                             const char * /*version*/, const char * /*upload*/, std::size_t *uploadSize,
                             void **state)
    {
        static char begun;
        if (*state == nullptr) { // the head alone is there
            *state = &begun;
            return MHD_YES;
        }
        if (*uploadSize != 0) { // a body means nothing here
            *uploadSize = 0;
            return MHD_YES;
        }
        try {
            return send(connection, static_cast<Handler *>(self)->answer(connection, url, method));
        } catch (const std::exception &) {
            return MHD_NO; // no memory: the connection is closed, and Prometheus sees that
        }
    }
};

Server::Server(const Listener &listener, const WebConfig &config, Exporter &exporter)
    : handler_(new Handler{exporter, Gate{config.users}})
{
    std::vector<MHD_OptionItem> options{
        {MHD_OPTION_CONNECTION_LIMIT, mostConnections, nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, idleSeconds, nullptr},
        // A socket of its own, because the server closes it.
        {MHD_OPTION_LISTEN_SOCKET, dup(listener.socket()), nullptr},
    };
    const auto addText = [&](MHD_OPTION option, const std::string &text) {
        if (!text.empty()) {
            options.push_back({option, 0, const_cast<char *>(text.c_str())});
        }
    };
    addText(MHD_OPTION_HTTPS_MEM_CERT, config.certificate);
    addText(MHD_OPTION_HTTPS_MEM_KEY, config.key);
    if (config.isSecure()) {
        options.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char *>(tlsPriorities)});
    }
    options.push_back({MHD_OPTION_END, 0, nullptr});
    unsigned flags =
        MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL | MHD_USE_ITC;
    if (config.isSecure()) {
        flags |= MHD_USE_TLS;
    }
    daemon_ = MHD_start_daemon(flags, 0, nullptr, nullptr, &Handler::handle, handler_.get(), MHD_OPTION_ARRAY,
                               options.data(), MHD_OPTION_END);
    if (daemon_ == nullptr) {
        throw site::Error(config.isSecure() ? "the server cannot start: certificate and key are not a pair"
                                            : "the server cannot start");
    }
}

Server::~Server()
{
    MHD_stop_daemon(daemon_);
}

} // namespace displayctl::exporter
