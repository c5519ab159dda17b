// SPDX-License-Identifier: Apache-2.0
// The yardstick for the object manager: libmicrohttpd, set up as the object manager sets it up, which reads
// each request and answers with the same 30 kB. Prints its port and serves until its standard input ends.

#include <microhttpd.h>

#include <arpa/inet.h>
#include <cstdio>
#include <netinet/in.h>
#include <string>

namespace
{

const std::string body(30'000, 'x');

MHD_Result answer(void *, MHD_Connection *connection, const char *, const char *, const char *, const char *,
                  std::size_t *size, void **seen)
{
    static char begun;
    if (*seen == nullptr || *size != 0) {
        *seen = &begun;
        *size = 0;
        return MHD_YES;
    }
    MHD_Response *response =
        MHD_create_response_from_buffer(body.size(), const_cast<char *>(body.data()), MHD_RESPMEM_PERSISTENT);
    const MHD_Result queued = MHD_queue_response(connection, MHD_HTTP_OK, response);
    MHD_destroy_response(response);
    return queued;
}

} // namespace

int main()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    MHD_Daemon *daemon = MHD_start_daemon(
        MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL | MHD_USE_ERROR_LOG, 0,
        nullptr, nullptr, &answer, nullptr, MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_END);
    if (daemon == nullptr) {
        return 1;
    }
    std::printf("%u\n", static_cast<unsigned>(MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port));
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    MHD_stop_daemon(daemon);
    return 0;
}
