// SPDX-License-Identifier: Apache-2.0
// The HTTP server of the screen: the page, a stream of events for each watcher, and changes.
//
// One thread of libmicrohttpd serves all; a stream that has nothing to send is suspended, and costs nothing
// then.
#ifndef DESK_SCREEN_SERVER_H
#define DESK_SCREEN_SERVER_H

#include "screen/request_rules.h"
#include "screen/watch.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>

struct MHD_Daemon;
struct MHD_Connection;

namespace desk::screen
{

class Server
{
  public:
    struct Options {
        std::uint16_t port; // 0: any free one
        std::string token;  // that a change needs
        std::string version;
        Watch::Options watch;
        std::size_t watchers = 32; // at once
    };

    /** Serves on 127.0.0.1 until it is destroyed. Throws std::runtime_error. */
    explicit Server(Options options);
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    std::uint16_t port() const
    {
        return port_;
    }
    /** With the token, after #: browsers do not send that part. */
    std::string url() const;

    std::size_t watcherCount();

  private:
    friend struct Callbacks;
    struct Watcher;
    struct Request;
    struct Reply {
        unsigned status;
        std::string text;
        const char *allow = nullptr; // the methods that are possible
    };

    int begin(Request &request, MHD_Connection *connection, const char *method);
    int answer(Request &request, MHD_Connection *connection);
    int sendFile(MHD_Connection *connection, const std::string &path);
    int sendStream(MHD_Connection *connection);
    int sendText(MHD_Connection *connection, const Reply &reply, const char *type);
    Reply change(const std::string &body);
    long readStream(Watcher &watcher, char *buffer, std::size_t size);
    void endStream(Watcher *watcher);
    void afterLook(bool news);

    Options options_;
    std::uint16_t port_ = 0;
    std::mutex mutex_; // of the watchers
    std::set<Watcher *> watchers_;
    bool stopping_ = false;
    unsigned periods_ = 0;
    std::unique_ptr<Watch> watch_;
    MHD_Daemon *daemon_ = nullptr;
};

} // namespace desk::screen

#endif
