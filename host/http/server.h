// The HTTP server: connections, authentication and limits. What a request means is up to the front ends.
#ifndef HOST_HTTP_SERVER_H
#define HOST_HTTP_SERVER_H

#include "core/accounts.h"
#include "core/front_end.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct MHD_Connection;
struct MHD_Daemon;

namespace host
{

/** What a client can send at most, and how long it can take. */
struct HttpLimits {
    std::size_t bodyBytes = std::size_t{1024} * 1024;
    std::size_t headerBytes = std::size_t{32} * 1024;
    unsigned connections = 64;
    /** What all requests together, and one alone, may use of memory: bodies, what is made of them, answers. */
    std::size_t memory = MemoryBudget::DEFAULT_TOTAL;
    std::size_t requestMemory = MemoryBudget::DEFAULT_PER_REQUEST;
    /** Without a byte in either direction. */
    std::chrono::seconds idle{60};
    /** For a whole request to come in, or a whole reply to go out, however many bytes move meanwhile. */
    std::chrono::milliseconds transfer{90000};
};

class HttpServer
{
  public:
    HttpServer(Accounts &accounts, std::vector<FrontEnd *> frontEnds, const HttpLimits &limits = {});
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;
    ~HttpServer();

    /** Listens. address: numeric IPv4 or IPv6; port 0: any free one. False, with the reason in problem, on
     * failure. */
    bool start(const std::string &address, std::uint16_t port, std::string &problem);

    /** The port that start() has got. */
    std::uint16_t port() const
    {
        return port_;
    }

    /** Takes no more connections and waits until the present requests are answered. */
    void stop();

    /** The connections that there are now. */
    unsigned connectionCount() const
    {
        return connectionCount_;
    }

  private:
    friend struct HttpCallbacks;
    struct Connection;
    struct Exchange;

    bool listen(const std::string &address, std::uint16_t port, std::string &problem);
    void addConnection(MHD_Connection *connection, void **socketContext);
    void removeConnection(Connection *connection);
    void watch();
    void setDeadline(Connection &connection, bool watched);
    int handle(MHD_Connection *connection, const char *url, const char *method, const char *data,
               std::size_t &dataSize, void **exchangeContext);
    void begin(MHD_Connection *connection, const char *url, const char *method, Exchange &exchange);
    int answer(MHD_Connection *connection, Exchange &exchange);
    static void appendBody(Exchange &exchange, std::string_view data);
    static HttpReply callFrontEnd(MHD_Connection *connection, Exchange &exchange);
    int reply(MHD_Connection *connection, const Exchange &exchange, const HttpReply &what);
    bool authenticate(MHD_Connection *connection, std::string &principal);
    FrontEnd *frontEndOf(const char *url) const;

    Accounts &accounts_;
    const std::vector<FrontEnd *> frontEnds_;
    const HttpLimits limits_;
    MemoryBudget budget_{limits_.memory, limits_.requestMemory};
    MHD_Daemon *daemon_ = nullptr;
    int socket_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<unsigned> connectionCount_ = 0;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::list<Connection> connections_;
    bool stopping_ = false;
    std::thread watchdog_;
};

} // namespace host

#endif
