// SPDX-License-Identifier: Apache-2.0
#include "screen/server.h"

#include "screen/changes.h"
#include "screen/describe.h"
#include "screen/page.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace desk::screen
{

/** One stream of events. */
struct Server::Watcher {
    Server &server;
    MHD_Connection *connection;
    int socket;
    Seen seen{};
    Event event{}; // that is being sent
    std::size_t sent = 0;
    bool isSuspended = false;
    bool hasGone = false;
};

/** One request, from its head to its reply. */
struct Server::Request {
    RequestHead head{};
    std::optional<Refusal> refusal{};
    std::string body{};
};

namespace
{

constexpr const char *plainText = "text/plain; charset=utf-8";
constexpr const char *json = "application/json";
constexpr std::size_t blockSize = 4096;
constexpr unsigned idleSeconds = 30;

constexpr std::array<std::pair<const char *, const char *>, 7> safetyFields = {{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
     "form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'; trusted-types 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Permissions-Policy", "camera=(), microphone=(), geolocation=()"},
    {"Cache-Control", "no-cache"},
}};

int queue(MHD_Connection *connection, unsigned status, MHD_Response *response, const char *type)
{
    if (response == nullptr) {
        return MHD_NO;
    }
    bool good = MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, type) == MHD_YES;
    for (const auto &[name, value] : safetyFields) {
        good = good && MHD_add_response_header(response, name, value) == MHD_YES;
    }
    good = good && MHD_queue_response(connection, status, response) == MHD_YES;
    MHD_destroy_response(response);
    return good ? MHD_YES : MHD_NO;
}

int listenOn(std::uint16_t &port)
{
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *bound = reinterpret_cast<sockaddr *>(&address);
    if (made < 0 || setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(made, bound, length) != 0 || listen(made, 64) != 0 || getsockname(made, bound, &length) != 0) {
        const std::string why = errno == EADDRINUSE ? "another program is listening there" : strerror(errno);
        if (made >= 0) {
            close(made);
        }
        throw std::runtime_error("cannot listen on 127.0.0.1 port " + std::to_string(port) + ": " + why);
    }
    port = ntohs(address.sin_port);
    return made;
}

std::string pathOf(const char *url)
{
    return strcmp(url, "/") == 0 ? "/index.html" : url;
}

const PageFile *findFile(const std::string &path)
{
    for (const PageFile &file : pageFiles()) {
        if (file.path == path) {
            return &file;
        }
    }
    return nullptr;
}

/** The methods that a path can be asked with; null when there is nothing. */
const char *methodsOf(const std::string &path)
{
    if (path == "/change") {
        return "POST";
    }
    if (path == "/events") {
        return "GET";
    }
    return path == "/model.json" || findFile(path) != nullptr ? "GET, HEAD" : nullptr;
}

bool allows(std::string_view methods, std::string_view method)
{
    while (!methods.empty()) {
        const std::size_t comma = methods.find(", ");
        if (methods.substr(0, comma) == method) {
            return true;
        }
        methods = comma == methods.npos ? std::string_view() : methods.substr(comma + 2);
    }
    return false;
}

} // namespace

/** The functions that libmicrohttpd calls. Nothing may be thrown through its frames of C. */
struct Callbacks {
    static MHD_Result handle(void *self, MHD_Connection *connection, const char *url, const char *method,
                             const char *, const char *data, std::size_t *size, void **context) noexcept
    {
        Server &server = *static_cast<Server *>(self);
        try {
            auto *request = static_cast<Server::Request *>(*context);
            if (request == nullptr) {
                request = new Server::Request;
                *context = request;
                request->head.path = pathOf(url);
                return server.begin(*request, connection, method) != 0 ? MHD_YES : MHD_NO;
            }
            if (*size > 0) {
                if (!request->refusal && request->body.size() + *size <= mostBodyBytes) {
                    request->body.append(data, *size);
                }
                *size = 0;
                return MHD_YES;
            }
            return server.answer(*request, connection) != 0 ? MHD_YES : MHD_NO;
        } catch (const std::exception &problem) {
            fprintf(stderr, "desk-screen: a connection is closed: %s\n", problem.what());
            return MHD_NO;
        }
    }

    static void completed(void *, MHD_Connection *, void **context, MHD_RequestTerminationCode) noexcept
    {
        delete static_cast<Server::Request *>(*context);
        *context = nullptr;
    }

    static ssize_t read(void *watcher, std::uint64_t, char *buffer, std::size_t size) noexcept
    {
        auto &self = *static_cast<Server::Watcher *>(watcher);
        try {
            return self.server.readStream(self, buffer, size);
        } catch (const std::exception &problem) {
            fprintf(stderr, "desk-screen: a stream is closed: %s\n", problem.what());
            return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    }

    static void release(void *watcher) noexcept
    {
        auto *self = static_cast<Server::Watcher *>(watcher);
        self->server.endStream(self);
    }

    static void log(void *, const char *, va_list) noexcept {}
};

Server::Server(Options options) : options_(std::move(options)), port_(options_.port)
{
    watch_ = std::make_unique<Watch>(options_.watch, [this](bool news) { afterLook(news); });
    const int socket = listenOn(port_);
    // Some more than may watch, for the other requests.
    const auto connections = static_cast<unsigned>(options_.watchers + 32);
    daemon_ = MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG,
                               0, nullptr, nullptr, &Callbacks::handle, this, MHD_OPTION_EXTERNAL_LOGGER,
                               &Callbacks::log, nullptr, MHD_OPTION_LISTEN_SOCKET, socket,
                               MHD_OPTION_CONNECTION_LIMIT, connections, MHD_OPTION_CONNECTION_TIMEOUT,
                               idleSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT, std::size_t{8192},
                               MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::completed, nullptr, MHD_OPTION_END);
    if (daemon_ == nullptr) {
        close(socket);
        throw std::runtime_error("the HTTP server cannot be started");
    }
}

Server::~Server()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        for (Watcher *watcher : watchers_) { // libmicrohttpd does not stop while one is suspended
            if (std::exchange(watcher->isSuspended, false)) {
                MHD_resume_connection(watcher->connection);
            }
        }
    }
    MHD_stop_daemon(daemon_);
    watch_.reset();
}

std::string Server::url() const
{
    return "http://127.0.0.1:" + std::to_string(port_) + "/#" + options_.token;
}

std::size_t Server::watcherCount()
{
    const std::lock_guard lock(mutex_);
    return watchers_.size();
}

/** The head of a request is there. What is refused is refused at once, without its body. */
int Server::begin(Request &request, MHD_Connection *connection, const char *method)
{
    RequestHead &head = request.head;
    head.method = method;
    const auto add = [](void *fields, MHD_ValueKind, const char *name, const char *value) {
        static_cast<decltype(RequestHead::fields) *>(fields)->emplace_back(name,
                                                                           value != nullptr ? value : "");
        return MHD_YES;
    };
    MHD_get_connection_values(connection, MHD_HEADER_KIND, add, &head.fields);
    request.refusal = checkOrigin(head, port_);
    const char *methods = methodsOf(head.path);
    const char *allowed = nullptr;
    if (!request.refusal && methods == nullptr) {
        request.refusal = Refusal{MHD_HTTP_NOT_FOUND, "There is nothing at this path.\n"};
    } else if (!request.refusal && !allows(methods, head.method)) {
        request.refusal =
            Refusal{MHD_HTTP_METHOD_NOT_ALLOWED, std::string("This path takes ") + methods + ".\n"};
        allowed = methods;
    } else if (!request.refusal && head.path == "/change") {
        request.refusal = checkChange(head, options_.token);
    }
    if (!request.refusal) {
        return MHD_YES;
    }
    return sendText(connection, {request.refusal->status, request.refusal->text, allowed}, plainText);
}

int Server::answer(Request &request, MHD_Connection *connection)
{
    const std::string &path = request.head.path;
    if (path == "/change") {
        return sendText(connection, change(request.body), plainText);
    }
    if (path == "/events") {
        return sendStream(connection);
    }
    if (path == "/model.json") {
        return sendText(connection, {MHD_HTTP_OK, describeModel(options_.version)}, json);
    }
    return sendFile(connection, path);
}

Server::Reply Server::change(const std::string &body)
{
    try {
        watch_->change(body);
        return {MHD_HTTP_OK, "done\n"};
    } catch (const BadRequest &error) {
        return {MHD_HTTP_BAD_REQUEST, error.what() + std::string("\n")};
    } catch (const Refused &error) {
        return {MHD_HTTP_UNPROCESSABLE_CONTENT, error.what() + std::string("\n")};
    } catch (const std::exception &error) {
        return {MHD_HTTP_INTERNAL_SERVER_ERROR, error.what() + std::string("\n")};
    }
}

int Server::sendText(MHD_Connection *connection, const Reply &reply, const char *type)
{
    MHD_Response *response = MHD_create_response_from_buffer(
        reply.text.size(), const_cast<char *>(reply.text.data()), MHD_RESPMEM_MUST_COPY);
    if (response != nullptr && reply.allow != nullptr) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, reply.allow);
    }
    if (response != nullptr && reply.status >= MHD_HTTP_BAD_REQUEST &&
        reply.status != MHD_HTTP_UNPROCESSABLE_CONTENT) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
    }
    return queue(connection, reply.status, response, type);
}

int Server::sendFile(MHD_Connection *connection, const std::string &path)
{
    const PageFile &file = *findFile(path);
    MHD_Response *response = MHD_create_response_from_buffer(
        file.bytes.size(), const_cast<unsigned char *>(file.bytes.data()), MHD_RESPMEM_PERSISTENT);
    return queue(connection, MHD_HTTP_OK, response, file.type);
}

// ------------------------------------------------------------------------------------------------- streams

int Server::sendStream(MHD_Connection *connection)
{
    const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    auto watcher =
        std::make_unique<Watcher>(Watcher{*this, connection, info != nullptr ? info->connect_fd : -1});
    {
        const std::lock_guard lock(mutex_);
        if (watchers_.size() >= options_.watchers) {
            return sendText(
                connection,
                {MHD_HTTP_SERVICE_UNAVAILABLE,
                 "As many are watching as can: " + std::to_string(options_.watchers) + ". Close a page.\n"},
                plainText);
        }
        watchers_.insert(watcher.get());
        watch_->setWatchers(watchers_.size());
    }
    MHD_Response *response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, blockSize, &Callbacks::read,
                                                               watcher.get(), &Callbacks::release);
    if (response == nullptr) {
        endStream(watcher.release());
        return MHD_NO;
    }
    static_cast<void>(watcher.release()); // the response's now
    return queue(connection, MHD_HTTP_OK, response, "text/event-stream; charset=utf-8");
}

long Server::readStream(Watcher &watcher, char *buffer, std::size_t size)
{
    const std::lock_guard lock(mutex_);
    if (stopping_) {
        return MHD_CONTENT_READER_END_OF_STREAM;
    }
    if (watcher.hasGone) {
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }
    if (watcher.event == nullptr) {
        watcher.event = watch_->next(watcher.seen);
        watcher.sent = 0;
    }
    if (watcher.event == nullptr) {
        watcher.isSuspended = true;
        MHD_suspend_connection(watcher.connection);
        return 0;
    }
    const std::size_t count = std::min(size, watcher.event->size() - watcher.sent);
    std::copy_n(watcher.event->data() + watcher.sent, count, buffer);
    watcher.sent += count;
    if (watcher.sent == watcher.event->size()) {
        watcher.event.reset();
    }
    return static_cast<long>(count);
}

void Server::endStream(Watcher *watcher)
{
    const std::lock_guard lock(mutex_);
    watchers_.erase(watcher);
    watch_->setWatchers(watchers_.size());
    delete watcher;
}

/** Wakes the streams that have something to send. Who has gone is noticed here, once a second: nobody else
 * looks at the socket of a suspended stream. */
void Server::afterLook(bool news)
{
    const std::lock_guard lock(mutex_);
    const bool looksForGone = ++periods_ % 10 == 0;
    for (Watcher *watcher : watchers_) {
        char byte;
        if (watcher->isSuspended && looksForGone) {
            const ssize_t left = recv(watcher->socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
            watcher->hasGone = left == 0 || (left < 0 && errno != EAGAIN && errno != EINTR);
        }
        if (watcher->isSuspended && !stopping_ && (news || watcher->hasGone)) {
            watcher->isSuspended = false;
            MHD_resume_connection(watcher->connection);
        }
    }
}

} // namespace desk::screen
