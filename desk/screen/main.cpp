// SPDX-License-Identifier: Apache-2.0
// desk-screen: the desk monitor in a browser.
#include "screen/server.h"
#include "screen/token.h"
#include "support/environment.h"

#include <CLI/CLI.hpp>

#include <malloc.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace
{

struct Options {
    std::string store;
    std::string queueKey;
    std::uint16_t port = 5980;
    std::string tokenFile;
    std::string readyFile;
};

void declare(CLI::App &app, Options &options)
{
    app.set_version_flag("--version", "desk-screen " DESK_VERSION);
    app.add_option("--store", options.store, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", options.queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");
    app.add_option("--port", options.port, "port on 127.0.0.1; 0 is any free one")->capture_default_str();
    app.add_option("--token-file", options.tokenFile,
                   "the token that changes need, kept from one start to the next; made when it is not there");
    app.add_option("--ready-file", options.readyFile, "written when the program serves, with its URL");
}

/** The file comes into being whole, for its owner alone: the URL has the token in it. */
void announce(const std::string &file, const std::string &url)
{
    printf("%s\n", url.c_str());
    fflush(stdout);
    if (file.empty()) {
        return;
    }
    const std::string temporary = file + ".new";
    const mode_t before = umask(077);
    std::ofstream stream(temporary);
    umask(before);
    stream << url << '\n';
    stream.close();
    if (!stream || rename(temporary.c_str(), file.c_str()) != 0) {
        throw std::runtime_error("the ready file " + file + " cannot be written: " + strerror(errno));
    }
}

int serve(const Options &options)
{
    const std::optional<key_t> key = desk::queueBaseKey();
    if (!key) {
        fprintf(stderr, "desk-screen: %s is not a usable queue key\n", getenv("DESK_MONITOR_QUEUE_KEY"));
        return 2;
    }
    mallopt(M_ARENA_MAX, 1); // two threads that allocate little
    sigset_t signals;        // blocked before there are threads, so that the wait below gets them
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);

    const std::string token =
        options.tokenFile.empty() ? desk::screen::newToken() : desk::screen::tokenOfFile(options.tokenFile);
    const desk::screen::Server server({options.port, token, DESK_VERSION, {desk::storePath(), *key}});
    announce(options.readyFile, server.url());
    int received = 0;
    sigwait(&signals, &received);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{
        "Shows the desk monitor in a browser: its picture, its front panel, its colours and its wire.\n"
        "Prints the URL, whose last part is the token that changes need. Serves this machine alone.\n"
        "SIGTERM and SIGINT end it."};
    Options options;
    declare(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (!options.store.empty()) {
        setenv("DESK_MONITOR_STORE", options.store.c_str(), 1);
    }
    if (!options.queueKey.empty()) {
        setenv("DESK_MONITOR_QUEUE_KEY", options.queueKey.c_str(), 1);
    }
    try {
        return serve(options);
    } catch (const std::exception &error) {
        fprintf(stderr, "desk-screen: %s\n", error.what());
        return 1;
    }
}
