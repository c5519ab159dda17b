#include "http/server.h"

#include "core/log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstring>
#include <microhttpd.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace host
{

struct HttpServer::Connection {
    int socket = -1;
    bool watched = false; // the client is to send or to receive something
    std::chrono::steady_clock::time_point deadline;
};

/** One request on a connection, from its header to its reply. */
struct HttpServer::Exchange {
    explicit Exchange(MemoryBudget &budget) : memory(budget), out(memory) {}

    Connection *connection = nullptr;
    FrontEnd *frontEnd = nullptr;
    std::string path;
    std::string principal;
    unsigned status = 200; // other than 200: what the request is refused with
    std::size_t received = 0;
    MemoryShare memory;
    std::string body;
    TextBuffer out;
};

namespace
{

constexpr const char *REALM = "Basic realm=\"cimom\"";

/** The header of a request as libmicrohttpd has it. */
class ReceivedHeaders final : public HttpHeaders
{
  public:
    explicit ReceivedHeaders(MHD_Connection *connection) : connection_(connection) {}

    const char *value(const char *name) const override
    {
        return MHD_lookup_connection_value(connection_, MHD_HEADER_KIND, name);
    }

  private:
    MHD_Connection *connection_;
};

/** The context that libmicrohttpd keeps for a connection. */
template <typename T>
T *contextOf(MHD_Connection *connection)
{
    const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return info != nullptr ? static_cast<T *>(info->socket_context) : nullptr;
}

} // namespace

/** The functions that libmicrohttpd calls. */
struct HttpCallbacks {
    static MHD_Result handle(void *self, MHD_Connection *connection, const char *url, const char *method,
                             const char *, const char *data, std::size_t *dataSize, void **exchange)
    {
        return static_cast<HttpServer *>(self)->handle(connection, url, method, data, *dataSize, exchange) !=
                       0
                   ? MHD_YES
                   : MHD_NO;
    }

    static void completed(void *self, MHD_Connection *, void **context, MHD_RequestTerminationCode)
    {
        const auto *exchange = static_cast<HttpServer::Exchange *>(*context);
        if (exchange != nullptr) {
            // The time for the next request begins.
            static_cast<HttpServer *>(self)->setDeadline(*exchange->connection, true);
            delete exchange;
            *context = nullptr;
        }
    }

    static void connectionChanged(void *self, MHD_Connection *connection, void **context,
                                  MHD_ConnectionNotificationCode what)
    {
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            static_cast<HttpServer *>(self)->addConnection(connection, context);
        } else if (*context != nullptr) {
            static_cast<HttpServer *>(self)->removeConnection(
                static_cast<HttpServer::Connection *>(*context));
            *context = nullptr;
        }
    }

    static void log(void *, const char *format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        if (char *end = std::strchr(text, '\n'); end != nullptr) {
            *end = '\0';
        }
        logLine("http: %s", text);
    }
};

HttpServer::HttpServer(Accounts &accounts, std::vector<FrontEnd *> frontEnds, const HttpLimits &limits)
    : accounts_(accounts), frontEnds_(std::move(frontEnds)), limits_(limits)
{
}

HttpServer::~HttpServer()
{
    stop();
}

// ------------------------------------------------------------------------------------------- start and stop

bool HttpServer::listen(const std::string &address, std::uint16_t port, std::string &problem)
{
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (const int code = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found);
        code != 0) {
        problem = "the address " + address + " is not a numeric IP address: " + gai_strerror(code);
        return false;
    }
    const auto fail = [&](const char *what) {
        problem = std::string(what) + " " + address + " port " + std::to_string(port) + ": " +
                  (errno == EADDRINUSE ? "another program is listening there" : std::strerror(errno));
        if (socket_ >= 0) {
            close(socket_);
            socket_ = -1;
        }
        freeaddrinfo(found);
        return false;
    };
    socket_ = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket_ < 0) {
        return fail("cannot make a socket for");
    }
    const int on = 1;
    setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(socket_, found->ai_addr, found->ai_addrlen) != 0 || ::listen(socket_, 128) != 0) {
        return fail("cannot listen on");
    }
    sockaddr_storage bound = {};
    socklen_t length = sizeof bound;
    if (getsockname(socket_, reinterpret_cast<sockaddr *>(&bound), &length) != 0) {
        return fail("cannot tell the port of");
    }
    // The port lies at the same place for both families.
    port_ = ntohs(reinterpret_cast<const sockaddr_in *>(&bound)->sin_port);
    freeaddrinfo(found);
    return true;
}

bool HttpServer::start(const std::string &address, std::uint16_t port, std::string &problem)
{
    if (!listen(address, port, problem)) {
        return false;
    }
    // A few connections more than served ones, so that whoever comes too many is told so.
    daemon_ = MHD_start_daemon(
        MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL | MHD_USE_ERROR_LOG, 0,
        nullptr, nullptr, &HttpCallbacks::handle, this, MHD_OPTION_EXTERNAL_LOGGER, &HttpCallbacks::log,
        nullptr, MHD_OPTION_LISTEN_SOCKET, socket_, MHD_OPTION_CONNECTION_LIMIT, limits_.connections + 8,
        MHD_OPTION_CONNECTION_TIMEOUT, static_cast<unsigned>(limits_.idle.count()),
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, limits_.headerBytes, MHD_OPTION_NOTIFY_COMPLETED,
        &HttpCallbacks::completed, this, MHD_OPTION_NOTIFY_CONNECTION, &HttpCallbacks::connectionChanged,
        this, MHD_OPTION_END);
    if (daemon_ == nullptr) {
        problem = "the HTTP server cannot be started";
        close(socket_);
        socket_ = -1;
        return false;
    }
    stopping_ = false;
    watchdog_ = std::thread([this] { watch(); });
    return true;
}

void HttpServer::stop()
{
    if (daemon_ == nullptr) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    watchdog_.join();
    MHD_stop_daemon(daemon_); // closes the listening socket too
    daemon_ = nullptr;
    socket_ = -1;
}

// --------------------------------------------------------------------------------------------- connections

void HttpServer::addConnection(MHD_Connection *connection, void **socketContext)
{
    const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    const std::lock_guard lock(mutex_);
    Connection &added = connections_.emplace_back();
    added.socket = info != nullptr ? info->connect_fd : -1;
    added.watched = true;
    added.deadline = std::chrono::steady_clock::now() + limits_.transfer;
    *socketContext = &added;
    ++connectionCount_;
}

void HttpServer::removeConnection(Connection *connection)
{
    const std::lock_guard lock(mutex_);
    connections_.remove_if([connection](const Connection &each) { return &each == connection; });
    --connectionCount_;
}

void HttpServer::setDeadline(Connection &connection, bool watched)
{
    const std::lock_guard lock(mutex_);
    connection.watched = watched;
    connection.deadline = std::chrono::steady_clock::now() + limits_.transfer;
}

/** Ends connections whose client takes too long. libmicrohttpd ends those on which nothing moves; a client
 * that sends a byte now and then is up to this. */
void HttpServer::watch()
{
    const auto interval = std::clamp<std::chrono::milliseconds>(
        limits_.transfer / 4, std::chrono::milliseconds(10), std::chrono::milliseconds(1000));
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, interval, [this] { return stopping_; })) {
        const auto now = std::chrono::steady_clock::now();
        for (Connection &connection : connections_) {
            if (connection.watched && connection.deadline < now && connection.socket >= 0) {
                connection.watched = false;
                shutdown(connection.socket, SHUT_RDWR); // its own thread notices and closes it
            }
        }
    }
}

// ------------------------------------------------------------------------------------------------ requests

FrontEnd *HttpServer::frontEndOf(const char *url) const
{
    for (FrontEnd *frontEnd : frontEnds_) {
        if (frontEnd->serves(url)) {
            return frontEnd;
        }
    }
    return nullptr;
}

bool HttpServer::authenticate(MHD_Connection *connection, std::string &principal)
{
    char *password = nullptr;
    char *user = MHD_basic_auth_get_username_password(connection, &password);
    const bool good = user != nullptr && password != nullptr && accounts_.verify(user, password);
    if (good) {
        principal = user;
    }
    if (password != nullptr) {
        explicit_bzero(password, std::strlen(password));
    }
    MHD_free(user);
    MHD_free(password);
    return good;
}

/** Looks at the header of a request: is there a reason to refuse it? */
void HttpServer::begin(MHD_Connection *connection, const char *url, const char *method, Exchange &exchange)
{
    if (connectionCount_ > limits_.connections) {
        exchange.status = MHD_HTTP_SERVICE_UNAVAILABLE;
        return;
    }
    exchange.path = url;
    exchange.frontEnd = frontEndOf(url);
    if (exchange.frontEnd == nullptr) {
        exchange.status = MHD_HTTP_NOT_FOUND;
        return;
    }
    if (std::strcmp(method, MHD_HTTP_METHOD_POST) != 0) {
        exchange.status = MHD_HTTP_METHOD_NOT_ALLOWED;
        return;
    }
    std::uint64_t bytes = 0;
    if (const char *length =
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH);
        length != nullptr) {
        const char *end = length + std::strlen(length);
        if (std::from_chars(length, end, bytes).ec != std::errc() || bytes > limits_.bodyBytes) {
            exchange.status = MHD_HTTP_CONTENT_TOO_LARGE;
            return;
        }
    }
    if (!authenticate(connection, exchange.principal)) {
        exchange.status = MHD_HTTP_UNAUTHORIZED;
        return;
    }
    if (!exchange.memory.take(bytes + 1)) {
        exchange.status = MHD_HTTP_SERVICE_UNAVAILABLE;
        return;
    }
    exchange.body.reserve(bytes + 1);
}

int HttpServer::handle(MHD_Connection *connection, const char *url, const char *method, const char *data,
                       std::size_t &dataSize, void **exchangeContext)
{
    auto *exchange = static_cast<Exchange *>(*exchangeContext);
    if (exchange == nullptr) {
        exchange = new Exchange(budget_);
        exchange->connection = contextOf<Connection>(connection);
        *exchangeContext = exchange;
        begin(connection, url, method, *exchange);
        // A client that has to authenticate may send its body first: read it, so that the connection can go
        // on. Whatever else is refused is refused at once.
        const bool readsOn = exchange->status == 200 || exchange->status == MHD_HTTP_UNAUTHORIZED;
        return readsOn ? MHD_YES : answer(connection, *exchange);
    }
    if (dataSize != 0) {
        exchange->received += dataSize;
        if (exchange->received > limits_.bodyBytes) { // only a body without a length gets here
            exchange->status = MHD_HTTP_CONTENT_TOO_LARGE;
            exchange->body.clear();
            if (exchange->received > 4 * limits_.bodyBytes) {
                return MHD_NO; // it does not end
            }
        }
        if (exchange->status == 200) {
            appendBody(*exchange, {data, dataSize});
        }
        dataSize = 0;
        return MHD_YES;
    }
    return answer(connection, *exchange);
}

/** A body without a length grows; what it takes is paid for. */
void HttpServer::appendBody(Exchange &exchange, std::string_view data)
{
    const std::size_t wanted = exchange.body.size() + data.size();
    if (const std::size_t capacity = exchange.body.capacity(); wanted > capacity) {
        const std::size_t grown = std::max(wanted, 2 * capacity);
        if (!exchange.memory.take(grown - capacity)) {
            exchange.status = MHD_HTTP_SERVICE_UNAVAILABLE;
            return;
        }
        exchange.body.reserve(grown);
    }
    exchange.body.append(data);
}

/** An exception ends the request, not the process. */
HttpReply HttpServer::callFrontEnd(MHD_Connection *connection, Exchange &exchange)
{
    HttpReply reply;
    try {
        const ReceivedHeaders headers(connection);
        const HttpRequest request{exchange.principal, {}, exchange.path, headers, exchange.body,
                                  exchange.memory};
        return exchange.frontEnd->handle(request, exchange.out);
    } catch (const std::bad_alloc &) {
        reply.status = MHD_HTTP_SERVICE_UNAVAILABLE;
    } catch (const std::exception &problem) {
        logLine("a request of %s ended with an exception: %s", exchange.principal.c_str(), problem.what());
        reply.status = MHD_HTTP_INTERNAL_SERVER_ERROR;
    }
    exchange.out.clear();
    reply.fields = {{MHD_HTTP_HEADER_CONNECTION, "close"}};
    return reply;
}

int HttpServer::answer(MHD_Connection *connection, Exchange &exchange)
{
    Connection &of = *exchange.connection;
    HttpReply what;
    what.status = exchange.status;
    switch (exchange.status) {
    case 200:
        setDeadline(of, false); // as long as a provider takes is not the client's fault
        what = callFrontEnd(connection, exchange);
        setDeadline(of, true);
        break;
    case MHD_HTTP_UNAUTHORIZED:
        what.fields = {{MHD_HTTP_HEADER_WWW_AUTHENTICATE, REALM}};
        break;
    case MHD_HTTP_METHOD_NOT_ALLOWED:
        what.fields = {{MHD_HTTP_HEADER_ALLOW, MHD_HTTP_METHOD_POST}};
        break;
    case MHD_HTTP_SERVICE_UNAVAILABLE:
        what.fields = {{MHD_HTTP_HEADER_CONNECTION, "close"}, {MHD_HTTP_HEADER_RETRY_AFTER, "1"}};
        break;
    case MHD_HTTP_CONTENT_TOO_LARGE:
        what.fields = {{MHD_HTTP_HEADER_CONNECTION, "close"}};
        break;
    default:
        break;
    }
    return reply(connection, exchange, what);
}

int HttpServer::reply(MHD_Connection *connection, const Exchange &exchange, const HttpReply &what)
{
    // The bytes stay where they are, in the exchange, until they are sent.
    MHD_Response *response = MHD_create_response_from_buffer(
        exchange.out.size(), const_cast<char *>(exchange.out.view().data()), MHD_RESPMEM_PERSISTENT);
    if (response == nullptr) {
        return MHD_NO;
    }
    bool good = what.contentType == nullptr ||
                MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, what.contentType) == MHD_YES;
    for (const HttpField &field : what.fields) {
        good = good && MHD_add_response_header(response, field.name, field.value) == MHD_YES;
    }
    good = good && MHD_queue_response(connection, what.status, response) == MHD_YES;
    MHD_destroy_response(response);
    return good ? MHD_YES : MHD_NO;
}

} // namespace host
