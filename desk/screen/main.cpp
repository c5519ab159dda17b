// SPDX-License-Identifier: Apache-2.0
// desk-screen: the desk monitor in a browser.
#include "screen/server.h"
#include "screen/token.h"
#include "support/environment.h"
#include "support/program.h"

#include <malloc.h>

#include <csignal>
#include <cstdio>

namespace
{

constexpr const char *program = "desk-screen";

struct Options : desk::ProgramOptions {
    std::uint16_t port = 5980;
    std::string tokenFile;
};

void declare(CLI::App &app, Options &options)
{
    desk::declareOptions(app, program, "its URL", options);
    app.add_option("--port", options.port, "port on 127.0.0.1; 0 is any free one")->capture_default_str();
    app.add_option("--token-file", options.tokenFile,
                   "the token that changes need, kept from one start to the next; made when it is not there");
}

void serve(const Options &options, key_t key)
{
    mallopt(M_ARENA_MAX, 1); // two threads that allocate little
    sigset_t signals;        // blocked before there are threads, so that the wait below gets them
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);

    const std::string token =
        options.tokenFile.empty() ? desk::screen::newToken() : desk::screen::tokenOfFile(options.tokenFile);
    const desk::screen::Server server({options.port, token, DESK_VERSION, {desk::storePath(), key}});
    printf("%s\n", server.url().c_str());
    fflush(stdout);
    desk::announce(options.readyFile, server.url(), true); // the URL has the token in it
    int received = 0;
    sigwait(&signals, &received);
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
    return desk::runProgram(app, argc, argv, program, options, [&](key_t key) { serve(options, key); });
}
