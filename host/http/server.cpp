// SPDX-License-Identifier: Apache-2.0
#include "http/server.h"

#include "http/welcome.h"
#include "log/log.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <gnutls/gnutls.h>
#include <malloc.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace host
{

/** A connection as libmicrohttpd's callbacks find it again. */
struct HttpServer::Peer {
    HttpServer &server;
    ConnectionTable::Connection &entry;
    gnutls_session_t tls = nullptr; // null: none
    unsigned certifiedBy = 0;       // the generation of issuers that its certificate is of
    RememberedLogin login{};
    bool isCorked = false; // the reply is collected, to be encrypted and sent at once
    bool isOneRecord = true;
};

namespace
{

/** A body that is encrypted and sent together with its header. libmicrohttpd gives the two to TLS one after
 * the other, and a client would be woken twice. */
constexpr std::size_t corkedBytes = std::size_t{32} * 1024;

/** With its header it fits into one record of TLS. */
constexpr std::size_t recordBytes = std::size_t{15} * 1024;

/** Of a body or an answer: from here on what a message takes is more than what the allocator may keep. */
constexpr std::size_t largeMessage = std::size_t{128} * 1024;

constexpr const char *realm = "Basic realm=\"cimom\"";
constexpr const char *plainText = "text/plain; charset=utf-8";

/** Forward secrecy and authenticated encryption, nothing else; what processors do fastest first. */
constexpr const char *tlsPriorities =
    "NONE:+VERS-TLS1.3:+VERS-TLS1.2:+ECDHE-ECDSA:+ECDHE-RSA:+AES-128-GCM:+AES-256-GCM:+CHACHA20-POLY1305:"
    "+AEAD:+COMP-NULL:+GROUP-X25519:+GROUP-SECP256R1:+GROUP-SECP384R1:"
    "+SIGN-ECDSA-SHA256:+SIGN-ECDSA-SHA384:+SIGN-ECDSA-SECP256R1-SHA256:+SIGN-ECDSA-SECP384R1-SHA384:"
    "+SIGN-EDDSA-ED25519:+SIGN-RSA-PSS-RSAE-SHA256:+SIGN-RSA-PSS-RSAE-SHA384:+SIGN-RSA-SHA256:"
    "+SIGN-RSA-SHA384:+CTYPE-X509:%SERVER_PRECEDENCE";

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

RequestHead headOf(MHD_Connection *connection, const char *method, const char *version, bool isSecure)
{
    constexpr std::size_t usualFields = 16;
    RequestHead head;
    head.fields.reserve(usualFields);
    head.method = method;
    head.version = version;
    head.isSecure = isSecure;
    const auto add = [](void *fields, MHD_ValueKind, const char *name, const char *value) {
        static_cast<decltype(RequestHead::fields) *>(fields)->emplace_back(name,
                                                                           value != nullptr ? value : "");
        return MHD_YES;
    };
    MHD_get_connection_values(connection, MHD_HEADER_KIND, add, &head.fields);
    return head;
}

/** Whether what is written goes out only together, as far as packets are not full. */
void setTogether(int socket, int isOn)
{
    setsockopt(socket, IPPROTO_TCP, TCP_CORK, &isOn, sizeof isOn);
}

} // namespace

/** One request on a connection, from its header to its reply. */
struct HttpServer::Exchange {
    Exchange(MHD_Connection *on, MemoryBudget &budget)
        : connection(on), peer(*contextOf<Peer>(on)), memory(budget), out(memory)
    {
    }

    void refuse(unsigned with, const char *why = nullptr)
    {
        status = with;
        text = why;
    }

    /** There is no more memory for it: now, or for a request like this one ever. */
    void refuseMemory()
    {
        if (memory.isOwnFault()) {
            refuse(MHD_HTTP_CONTENT_TOO_LARGE,
                   "The request needs more memory than one request may use; ask for less at once.");
        } else {
            refuse(MHD_HTTP_SERVICE_UNAVAILABLE);
        }
    }

    MHD_Connection *connection;
    Peer &peer;
    FrontEnd *frontEnd = nullptr; // null: the request is refused, or for the page
    std::string path;
    std::string principal;
    Role role = Role::reader;
    unsigned status = 200;      // other than 200: what the request is refused with
    const char *text = nullptr; // that the client reads instead of what a front end has written
    bool expectsToContinue = false;
    std::size_t received = 0;
    MemoryShare memory;
    std::string body;
    TextBuffer out;
};

/** The functions that libmicrohttpd calls. */
struct HttpCallbacks {
    static MHD_Result handle(void *self, MHD_Connection *connection, const char *url, const char *method,
                             const char *version, const char *data, std::size_t *dataSize, void **context)
    {
        HttpServer &server = *static_cast<HttpServer *>(self);
        auto *exchange = static_cast<HttpServer::Exchange *>(*context);
        server.quiet_.end();
        try {
            if (contextOf<HttpServer::Peer>(connection) == nullptr) {
                return MHD_NO; // there was no memory for it
            }
            if (exchange == nullptr) {
                exchange = new HttpServer::Exchange(connection, server.budget_);
                *context = exchange;
                const LogClient client(exchange->peer.entry.address);
                exchange->path = url;
                return server.begin(*exchange, method, version) != 0 ? MHD_YES : MHD_NO;
            }
            const LogClient client(exchange->peer.entry.address);
            const std::size_t size = *dataSize;
            *dataSize = 0;
            return server.goOn(*exchange, {data, size}) != 0 ? MHD_YES : MHD_NO;
        } catch (const std::exception &problem) { // nothing may pass through the frames of C
            logLine("a connection is closed: %s", problem.what());
            return MHD_NO;
        }
    }

    static void completed(void *self, MHD_Connection *, void **context, MHD_RequestTerminationCode how)
    {
        auto *exchange = static_cast<HttpServer::Exchange *>(*context);
        if (exchange != nullptr) {
            if (exchange->peer.isCorked) {
                exchange->peer.isCorked = false;
                static_cast<HttpServer *>(self)->uncork(exchange->peer,
                                                        how == MHD_REQUEST_TERMINATED_COMPLETED_OK);
            }
            // The time for the next request begins.
            static_cast<HttpServer *>(self)->connections_.awaitClient(exchange->peer.entry);
            const bool isLarge = exchange->received > largeMessage || exchange->out.size() > largeMessage;
            delete exchange;
            if (isLarge) {
                static_cast<HttpServer *>(self)->hadLargeMessage_ = true;
            }
            *context = nullptr;
        }
    }

    static void connectionChanged(void *self, MHD_Connection *connection, void **context,
                                  MHD_ConnectionNotificationCode what)
    {
        HttpServer &server = *static_cast<HttpServer *>(self);
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            try {
                *context = server.open(connection);
            } catch (const std::exception &problem) { // the connection is closed when its request comes
                logLine("a connection is not served: %s", problem.what());
            }
        } else if (*context != nullptr) {
            setLogClient("-");
            server.close(static_cast<HttpServer::Peer *>(*context));
            *context = nullptr;
        }
    }

    static int giveCertificate(gnutls_session_t session, const gnutls_datum_t *, int,
                               const gnutls_pk_algorithm_t *, int, gnutls_pcert_st **certificates,
                               unsigned *count, gnutls_privkey_t *key)
    {
        // libmicrohttpd makes its connection the pointer of the session.
        auto *connection = static_cast<MHD_Connection *>(gnutls_session_get_ptr(session));
        const auto *peer = contextOf<HttpServer::Peer>(connection);
        return peer != nullptr ? peer->server.certificates_->give(certificates, count, key) : -1;
    }

    /** Called in the connection's thread when the first line of a request is there: from here on
     * libmicrohttpd's own messages tell whom they concern. */
    static void *knowClient(void *, const char *, MHD_Connection *connection)
    {
        if (const auto *peer = contextOf<HttpServer::Peer>(connection); peer != nullptr) {
            setLogClient(peer->entry.address);
        }
        return nullptr; // what handle() finds as its context
    }

    static void log(void *self, const char *format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        if (!static_cast<HttpServer *>(self)->log_.permits()) {
            return;
        }
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        if (char *end = std::strchr(text, '\n'); end != nullptr) {
            *end = '\0';
        }
        logLine("http: %s", text);
    }
};

HttpServer::HttpServer(Accounts &accounts, std::vector<FrontEnd *> frontEnds, const HttpLimits &limits)
    : frontEnds_(std::move(frontEnds)), limits_(limits), login_(accounts, limits.logins)
{
    char machine[256] = "";
    if (gethostname(machine, sizeof machine - 1) == 0) {
        const std::string_view name = machine;
        names_.add(name);
        names_.add(name.substr(0, name.find('.')));
    }
}

HttpServer::~HttpServer()
{
    stop();
}

// ------------------------------------------------------------------------------------------- start and stop

void HttpServer::addName(std::string_view name)
{
    names_.add(name);
}

void HttpServer::setTask(std::function<void()> task)
{
    task_ = std::move(task);
}

bool HttpServer::setTls(const TlsOptions &options, std::string &problem)
{
    certificates_ = std::make_unique<Certificates>(options.certificateFile, options.keyFile);
    if (!certificates_->load(problem)) {
        return false;
    }
    for (const std::string &name : certificates_->names()) {
        names_.add(name);
    }
    if (!options.clientCaFile.empty()) {
        clientTrust_ = std::make_unique<ClientTrust>(options.clientCaFile);
        if (!clientTrust_->load(problem)) {
            return false;
        }
        clientCa_ = clientTrust_->text();
    }
    return true;
}

bool HttpServer::start(const Endpoint &endpoint, std::string &problem)
{
    return start(endpoint, false, problem);
}

bool HttpServer::startTls(const Endpoint &endpoint, std::string &problem)
{
    return start(endpoint, true, problem);
}

bool HttpServer::start(const Endpoint &endpoint, bool isSecure, std::string &problem)
{
    Endpoint listening = endpoint;
    if (!listen(listening, problem)) {
        return false;
    }
    MHD_Daemon *daemon = startDaemon(listening.socket, isSecure);
    if (daemon == nullptr) {
        problem = isSecure ? "the HTTPS server cannot be started" : "the HTTP server cannot be started";
        ::close(listening.socket);
        return false;
    }
    daemons_.push_back(daemon);
    endpoints_.push_back(listening);
    if (!watchdog_.joinable()) {
        stopping_ = false;
        watchdog_ = std::thread([this] { watch(); });
    }
    return true;
}

MHD_Daemon *HttpServer::startDaemon(int socket, bool isSecure)
{
    // A few connections more than served ones: whoever comes too many is told so, and who has to go may still
    // be on his way.
    const unsigned connections = limits_.total + 64;
    std::vector<MHD_OptionItem> more;
    if (isSecure) {
        more.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char *>(tlsPriorities)});
        more.push_back(
            {MHD_OPTION_HTTPS_CERT_CALLBACK, 0, reinterpret_cast<void *>(&HttpCallbacks::giveCertificate)});
        if (!clientCa_.empty()) {
            more.push_back({MHD_OPTION_HTTPS_MEM_TRUST, 0, clientCa_.data()});
        }
    }
    more.push_back({MHD_OPTION_END, 0, nullptr});
    const unsigned flags = MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL |
                           MHD_USE_ERROR_LOG | (isSecure ? MHD_USE_TLS : MHD_NO_FLAG);
    return MHD_start_daemon(flags, 0, nullptr, nullptr, &HttpCallbacks::handle, this,
                            MHD_OPTION_EXTERNAL_LOGGER, &HttpCallbacks::log, this, MHD_OPTION_LISTEN_SOCKET,
                            socket, MHD_OPTION_CONNECTION_LIMIT, connections, MHD_OPTION_CONNECTION_TIMEOUT,
                            static_cast<unsigned>(limits_.idle.count()), MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                            limits_.headerBytes, MHD_OPTION_URI_LOG_CALLBACK, &HttpCallbacks::knowClient,
                            nullptr, MHD_OPTION_NOTIFY_COMPLETED, &HttpCallbacks::completed, this,
                            MHD_OPTION_NOTIFY_CONNECTION, &HttpCallbacks::connectionChanged, this,
                            MHD_OPTION_ARRAY, more.data(), MHD_OPTION_END);
}

void HttpServer::stop()
{
    if (watchdog_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_one();
        watchdog_.join();
    }
    for (MHD_Daemon *daemon : daemons_) {
        MHD_stop_daemon(daemon); // closes the listening socket too
    }
    daemons_.clear();
    endpoints_.clear();
}

/** libmicrohttpd ends connections on which nothing moves; a client that sends a byte now and then is up to
 * this. */
void HttpServer::watch()
{
    const auto interval =
        std::clamp<std::chrono::milliseconds>(std::min(limits_.transfer, limits_.login) / 4,
                                              std::chrono::milliseconds(10), std::chrono::milliseconds(1000));
    auto nextTick = std::chrono::steady_clock::now();
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, interval, [this] { return stopping_; })) {
        connections_.endOverdue();
        if (const auto now = std::chrono::steady_clock::now(); now >= nextTick) {
            nextTick = now + std::chrono::seconds(1);
            try {
                tick();
            } catch (const std::exception &problem) { // the next one makes up for it
                logLine("what is done every second was not done: %s", problem.what());
            }
        }
    }
}

void HttpServer::tick()
{
    login_.tick();
    log_.tellRest();
    quiet_.tick();
    if (hadLargeMessage_.exchange(false)) {
        malloc_trim(0); // what it has given back lies between what others still have
    }
    if (certificates_ != nullptr && certificates_->refresh()) {
        const std::unique_lock lock(namesMutex_);
        for (const std::string &name : certificates_->names()) {
            names_.add(name);
        }
    }
    if (clientTrust_ != nullptr) {
        clientTrust_->refresh();
    }
    if (task_) {
        task_();
    }
}

// --------------------------------------------------------------------------------------------- connections

HttpServer::Peer *HttpServer::open(MHD_Connection *connection)
{
    quiet_.end();
    const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    const int socket = info != nullptr ? info->connect_fd : -1;
    info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    ConnectionTable::Connection &entry =
        connections_.add(socket, info != nullptr ? numericAddress(info->client_addr) : "-");
    info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_GNUTLS_SESSION);
    auto *tls = info != nullptr ? static_cast<gnutls_session_t>(info->tls_session) : nullptr;
    if (tls != nullptr && clientTrust_ != nullptr) {
        // The names of the issuers would be those of the start; without any, a client sends what it has.
        gnutls_certificate_send_x509_rdn_sequence(tls, 1);
    }
    auto *peer = new (std::nothrow) Peer{*this, entry};
    if (peer == nullptr) {
        connections_.remove(entry);
    }
    return peer;
}

void HttpServer::close(Peer *peer)
{
    connections_.remove(peer->entry);
    delete peer;
}

// ------------------------------------------------------------------------------------------------ requests

/** Sends what was collected; waits for a client that is slow to take it, as long as it is not overdue. */
void HttpServer::uncork(Peer &peer, bool isComplete)
{
    if (!peer.isOneRecord) {
        setTogether(peer.entry.socket, 1);
    }
    int code = gnutls_record_uncork(peer.tls, 0);
    const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(limits_.idle);
    while (isComplete && (code == GNUTLS_E_AGAIN || code == GNUTLS_E_INTERRUPTED)) {
        pollfd socket{peer.entry.socket, POLLOUT, 0};
        if (poll(&socket, 1, static_cast<int>(patience.count())) == 0) {
            shutdown(peer.entry.socket, SHUT_RDWR);
        }
        code = gnutls_record_uncork(peer.tls, 0);
    }
    if (!peer.isOneRecord) { // the client, which was not woken for each of them, has all now
        setTogether(peer.entry.socket, 0);
    }
}

FrontEnd *HttpServer::frontEndOf(std::string_view path) const
{
    for (FrontEnd *frontEnd : frontEnds_) {
        if (frontEnd->serves(path)) {
            return frontEnd;
        }
    }
    return nullptr;
}

/** The header of a request is there. */
int HttpServer::begin(Exchange &exchange, const char *method, const char *version)
{
    check(exchange, method, version);
    // A client that has to authenticate may send its body first: read it, so that the connection can go on.
    // Who comes when memory is short reads why only once all is sent: a connection that is closed before
    // takes the answer with it. Whatever else is refused is refused at once, and so is who waits for leave to
    // send.
    const bool isShortOfMemory =
        exchange.status == MHD_HTTP_SERVICE_UNAVAILABLE && exchange.frontEnd != nullptr;
    const bool readsOn =
        exchange.status == MHD_HTTP_OK ||
        ((exchange.status == MHD_HTTP_UNAUTHORIZED || isShortOfMemory) && !exchange.expectsToContinue);
    return readsOn ? MHD_YES : answer(exchange);
}

/** Is there a reason to refuse the request? */
void HttpServer::check(Exchange &exchange, const char *method, const char *version)
{
    Peer &peer = exchange.peer;
    if (peer.entry.isTurnedAway) {
        return exchange.refuse(MHD_HTTP_SERVICE_UNAVAILABLE, "All connections are busy.");
    }
    const MHD_ConnectionInfo *info =
        MHD_get_connection_info(exchange.connection, MHD_CONNECTION_INFO_GNUTLS_SESSION);
    peer.tls = info != nullptr ? static_cast<gnutls_session_t>(info->tls_session) : nullptr;
    if (peer.tls != nullptr && clientTrust_ != nullptr) {
        const unsigned issuers = clientTrust_->generation();
        if (peer.certifiedBy != issuers && !clientTrust_->trusts(peer.tls)) {
            return exchange.refuse(MHD_HTTP_FORBIDDEN,
                                   "A client certificate is needed that this server trusts.");
        }
        peer.certifiedBy = issuers;
    }
    const RequestHead head = headOf(exchange.connection, method, version, peer.tls != nullptr);
    {
        const std::shared_lock lock(namesMutex_);
        if (const std::optional<Refusal> refusal = checkHead(head, names_)) {
            return exchange.refuse(refusal->status, refusal->text);
        }
    }
    exchange.expectsToContinue = !head.first(MHD_HTTP_HEADER_EXPECT).empty();
    choose(exchange, head);
    if (exchange.frontEnd == nullptr || exchange.status != MHD_HTTP_OK) {
        return;
    }
    connections_.beginWork(peer.entry); // as long as looking at a password takes is not the client's fault
    authenticate(exchange, head);
    connections_.awaitClient(peer.entry);
}

/** Finds who is to answer the request, if it is of a form that can be answered. */
void HttpServer::choose(Exchange &exchange, const RequestHead &head)
{
    if (exchange.path == "/" && (head.method == MHD_HTTP_METHOD_GET || head.method == MHD_HTTP_METHOD_HEAD)) {
        return; // the page
    }
    FrontEnd *frontEnd = frontEndOf(exchange.path);
    if (frontEnd == nullptr) {
        return exchange.refuse(MHD_HTTP_NOT_FOUND);
    }
    if (head.method == "M-POST") { // DSP0200 leaves it to the server; clients then use POST
        return exchange.refuse(MHD_HTTP_NOT_IMPLEMENTED, "M-POST is not implemented; use POST.");
    }
    if (head.method != MHD_HTTP_METHOD_POST) {
        return exchange.refuse(MHD_HTTP_METHOD_NOT_ALLOWED);
    }
    if (bodyLength(head).value_or(UINT64_MAX) > limits_.bodyBytes) {
        return exchange.refuse(MHD_HTTP_CONTENT_TOO_LARGE);
    }
    const std::string type = mediaType(head.first(MHD_HTTP_HEADER_CONTENT_TYPE));
    if (!type.empty() && !frontEnd->takes(type)) {
        return exchange.refuse(
            MHD_HTTP_UNSUPPORTED_MEDIA_TYPE,
            "The body must have the Content-Type of the protocol: application/xml or text/xml "
            "for CIM-XML, application/soap+xml for WS-Management.");
    }
    exchange.frontEnd = frontEnd;
}

void HttpServer::authenticate(Exchange &exchange, const RequestHead &head)
{
    ConnectionTable::Connection &entry = exchange.peer.entry;
    const char *authorization =
        MHD_lookup_connection_value(exchange.connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_AUTHORIZATION);
    const LoginAnswer login = login_.check(authorization, entry.address, exchange.peer.login);
    if (login.kind == LoginAnswer::Kind::tooManyFailures) {
        return exchange.refuse(MHD_HTTP_TOO_MANY_REQUESTS,
                               "Too many wrong passwords came from this address.");
    }
    if (login.kind == LoginAnswer::Kind::wrong) {
        return exchange.refuse(MHD_HTTP_UNAUTHORIZED);
    }
    connections_.logIn(entry);
    exchange.principal = login.user;
    exchange.role = login.role;
    const auto bytes = static_cast<std::size_t>(bodyLength(head).value_or(0)); // no more than a body may have
    if (!exchange.memory.take(bytes + 1)) {
        return exchange.refuseMemory();
    }
    exchange.body.reserve(bytes + 1);
}

int HttpServer::goOn(Exchange &exchange, std::string_view data)
{
    if (data.empty()) {
        return answer(exchange);
    }
    exchange.received += data.size();
    if (exchange.received > limits_.bodyBytes) { // only a body without a length gets here
        exchange.refuse(MHD_HTTP_CONTENT_TOO_LARGE);
        exchange.body.clear();
        if (exchange.received > 4 * limits_.bodyBytes) {
            return MHD_NO; // it does not end
        }
    }
    if (exchange.status == MHD_HTTP_OK && exchange.frontEnd != nullptr) {
        appendBody(exchange, data);
    }
    return MHD_YES;
}

/** A body without a length grows; what it takes is paid for. */
void HttpServer::appendBody(Exchange &exchange, std::string_view data)
{
    const std::size_t wanted = exchange.body.size() + data.size();
    if (const std::size_t capacity = exchange.body.capacity(); wanted > capacity) {
        const std::size_t grown = std::max(wanted, 2 * capacity);
        if (!exchange.memory.take(grown - capacity)) {
            return exchange.refuseMemory();
        }
        exchange.body.reserve(grown);
    }
    exchange.body.append(data);
}

/** An exception ends the request, not the process: then its status says so. */
HttpReply HttpServer::callFrontEnd(Exchange &exchange)
{
    try {
        const ReceivedHeaders headers(exchange.connection);
        const HttpRequest request{exchange.principal, exchange.role, exchange.peer.entry.address,
                                  exchange.path,      headers,       exchange.body,
                                  exchange.memory};
        return exchange.frontEnd->handle(request, exchange.out);
    } catch (const std::bad_alloc &) {
        exchange.refuseMemory();
    } catch (const std::exception &problem) {
        logLine("a request of %s ended with an exception: %s", exchange.principal.c_str(), problem.what());
        exchange.refuse(MHD_HTTP_INTERNAL_SERVER_ERROR);
    } catch (...) { // a provider may throw anything
        logLine("a request of %s ended with an exception", exchange.principal.c_str());
        exchange.refuse(MHD_HTTP_INTERNAL_SERVER_ERROR);
    }
    exchange.out.clear();
    return {};
}

int HttpServer::answer(Exchange &exchange)
{
    HttpReply what;
    if (exchange.status == MHD_HTTP_OK && exchange.frontEnd != nullptr) {
        connections_.beginWork(exchange.peer.entry); // nor is as long as a provider takes
        what = callFrontEnd(exchange);
        connections_.awaitClient(exchange.peer.entry);
        if (exchange.status == MHD_HTTP_OK) {
            return reply(exchange, what);
        }
    }
    what.status = exchange.status;
    switch (exchange.status) {
    case MHD_HTTP_OK:
        what.contentType = "text/html; charset=utf-8";
        what.fields = {{"Content-Security-Policy", "default-src 'none'; style-src 'unsafe-inline'"},
                       {"X-Content-Type-Options", "nosniff"}};
        exchange.text = welcomePage;
        break;
    case MHD_HTTP_UNAUTHORIZED:
        what.fields = {{MHD_HTTP_HEADER_WWW_AUTHENTICATE, realm}};
        break;
    case MHD_HTTP_METHOD_NOT_ALLOWED:
        what.fields = {{MHD_HTTP_HEADER_ALLOW, exchange.path == "/" ? "GET, HEAD, POST" : "POST"}};
        break;
    case MHD_HTTP_SERVICE_UNAVAILABLE:
    case MHD_HTTP_TOO_MANY_REQUESTS:
        what.fields = {{MHD_HTTP_HEADER_CONNECTION, "close"}, {MHD_HTTP_HEADER_RETRY_AFTER, "1"}};
        break;
    default:
        what.fields = {{MHD_HTTP_HEADER_CONNECTION, "close"}};
        break;
    }
    if (exchange.text != nullptr && what.contentType == nullptr) {
        what.contentType = plainText;
    }
    return reply(exchange, what);
}

int HttpServer::reply(const Exchange &exchange, const HttpReply &what)
{
    // The bytes stay where they are, in the exchange, until they are sent.
    const std::string_view body = exchange.text != nullptr ? exchange.text : exchange.out.view();
    MHD_Response *response =
        MHD_create_response_from_buffer(body.size(), const_cast<char *>(body.data()), MHD_RESPMEM_PERSISTENT);
    if (response == nullptr) {
        return MHD_NO;
    }
    bool good = what.contentType == nullptr ||
                MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, what.contentType) == MHD_YES;
    for (const HttpField &field : what.fields) {
        good = good && MHD_add_response_header(response, field.name, field.value) == MHD_YES;
    }
    Peer &peer = exchange.peer;
    if (peer.tls != nullptr && body.size() <= corkedBytes && !peer.isCorked) {
        gnutls_record_cork(peer.tls);
        peer.isCorked = true;
        peer.isOneRecord = body.size() <= recordBytes;
    }
    good = good && MHD_queue_response(exchange.connection, what.status, response) == MHD_YES;
    MHD_destroy_response(response);
    return good ? MHD_YES : MHD_NO;
}

} // namespace host
