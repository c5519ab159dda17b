// SPDX-License-Identifier: Apache-2.0
// The HTTP server: connections, TLS, authentication and limits. What a request means is up to the front ends.
#ifndef HOST_HTTP_SERVER_H
#define HOST_HTTP_SERVER_H

#include "cmpi/memory_budget.h"
#include "core/accounts.h"
#include "core/front_end.h"
#include "http/certificates.h"
#include "http/client_trust.h"
#include "http/connections.h"
#include "http/listening.h"
#include "http/login.h"
#include "http/request_rules.h"
#include "process/unused_memory.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

struct MHD_Connection;
struct MHD_Daemon;

namespace host
{

/** What a client can send at most, and how long it can take. */
struct HttpLimits : ConnectionLimits {
    std::size_t bodyBytes = std::size_t{1024} * 1024;
    std::size_t headerBytes = std::size_t{32} * 1024;
    /** What all requests together, and one alone, may use of memory: bodies, what is made of them, answers.
     */
    std::size_t memory = MemoryBudget::defaultTotal;
    std::size_t requestMemory = MemoryBudget::defaultPerRequest;
    /** Without a byte in either direction. */
    std::chrono::seconds idle{60};
    LoginLimits logins;
};

/** How an endpoint is secured. */
struct TlsOptions {
    std::string certificateFile;
    std::string keyFile;
    /** Only clients with a certificate of these issuers are answered; empty: all. */
    std::string clientCaFile;
};

class HttpServer
{
  public:
    HttpServer(Accounts &accounts, std::vector<FrontEnd *> frontEnds, const HttpLimits &limits = {});
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;
    ~HttpServer();

    /** A name by which clients may address this server; "*": any. Before start(). */
    void addName(std::string_view name);

    /** Reads the certificate for startTls(). False, with the reason in problem, on failure. */
    [[nodiscard]] bool setTls(const TlsOptions &options, std::string &problem);

    /** Listens, also at several endpoints one after the other. False, with the reason in problem, on
     * failure. */
    [[nodiscard]] bool start(const Endpoint &endpoint, std::string &problem);
    [[nodiscard]] bool startTls(const Endpoint &endpoint, std::string &problem);

    /** What is done every second or so. Before start(). */
    void setTask(std::function<void()> task);

    /** Where the server listens, in the order of the starts. */
    const std::vector<Endpoint> &endpoints() const
    {
        return endpoints_;
    }

    /** Takes no more connections and waits until the present requests are answered. */
    void stop();

    /** The connections that there are now. */
    unsigned connectionCount() const
    {
        return connections_.count();
    }

  private:
    friend struct HttpCallbacks;
    struct Peer;
    struct Exchange;

    [[nodiscard]] bool start(const Endpoint &endpoint, bool isSecure, std::string &problem);
    MHD_Daemon *startDaemon(int socket, bool isSecure);
    void watch();
    void tick();

    Peer *open(MHD_Connection *connection);
    void close(Peer *peer);
    void uncork(Peer &peer, bool isComplete);
    int begin(Exchange &exchange, const char *method, const char *version);
    int goOn(Exchange &exchange, std::string_view data);
    void check(Exchange &exchange, const char *method, const char *version);
    void choose(Exchange &exchange, const RequestHead &head);
    void authenticate(Exchange &exchange, const RequestHead &head);
    int answer(Exchange &exchange);
    static void appendBody(Exchange &exchange, std::string_view data);
    static HttpReply callFrontEnd(Exchange &exchange);
    static int reply(const Exchange &exchange, const HttpReply &what);
    FrontEnd *frontEndOf(std::string_view path) const;

    const std::vector<FrontEnd *> frontEnds_;
    const HttpLimits limits_;
    MemoryBudget budget_{limits_.memory, limits_.requestMemory};
    ConnectionTable connections_{limits_};
    Login login_;
    LogLimiter log_{"troubles with connections"};
    std::function<void()> task_;

    std::unique_ptr<Certificates> certificates_;
    std::unique_ptr<ClientTrust> clientTrust_; // null: a client needs no certificate
    std::string clientCa_;                     // its text at the start, which makes libmicrohttpd ask for one
    std::shared_mutex namesMutex_;
    ServerNames names_;

    std::vector<Endpoint> endpoints_;
    std::vector<MHD_Daemon *> daemons_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::atomic<bool> hadLargeMessage_ = false; // since the last tick
    process::QuietTime quiet_;
    std::thread watchdog_;
};

} // namespace host

#endif
