// SPDX-License-Identifier: Apache-2.0
// The yardstick for the object manager: libmicrohttpd, set up as the object manager sets it up, which reads
// each request and answers with as many bytes as its path says, 30,000 at most: "/3128".
//
//   fixed_server [CERTIFICATE KEY]    serves until its standard input ends
//
// It prints its port, and with the two PEM files, on the next line, that for TLS.

#include <gnutls/gnutls.h>
#include <microhttpd.h>

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <string>

namespace
{

const std::string body(30'000, 'x');

/** The cipher that the object manager and its clients agree on. */
constexpr const char *priorities = "NORMAL:-CIPHER-ALL:+AES-128-GCM";

/** Null without TLS. */
gnutls_session_t sessionOf(MHD_Connection *connection)
{
    const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_GNUTLS_SESSION);
    return info != nullptr ? static_cast<gnutls_session_t>(info->tls_session) : nullptr;
}

MHD_Result answer(void *, MHD_Connection *connection, const char *path, const char *, const char *,
                  const char *, std::size_t *size, void **seen)
{
    static char begun;
    if (*seen == nullptr || *size != 0) {
        *seen = &begun;
        *size = 0;
        return MHD_YES;
    }
    if (gnutls_session_t session = sessionOf(connection); session != nullptr) {
        gnutls_record_cork(session); // head and body are one record, as those of the object manager
    }
    const std::size_t bytes = std::min<std::size_t>(std::strtoul(path + 1, nullptr, 10), body.size());
    MHD_Response *response =
        MHD_create_response_from_buffer(bytes, const_cast<char *>(body.data()), MHD_RESPMEM_PERSISTENT);
    const MHD_Result queued = MHD_queue_response(connection, MHD_HTTP_OK, response);
    MHD_destroy_response(response);
    return queued;
}

void answered(void *, MHD_Connection *connection, void **, MHD_RequestTerminationCode)
{
    if (gnutls_session_t session = sessionOf(connection); session != nullptr) {
        gnutls_record_uncork(session, GNUTLS_RECORD_WAIT);
    }
}

std::string content(const char *file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/** Null when it cannot be started. Its port is printed. */
MHD_Daemon *start(unsigned more, MHD_OptionItem *options)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    MHD_Daemon *daemon = MHD_start_daemon(MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD |
                                              MHD_USE_POLL | MHD_USE_ERROR_LOG | more,
                                          0, nullptr, nullptr, &answer, nullptr, MHD_OPTION_SOCK_ADDR,
                                          &address, MHD_OPTION_NOTIFY_COMPLETED, &answered, nullptr,
                                          MHD_OPTION_ARRAY, options, MHD_OPTION_END);
    if (daemon != nullptr) {
        std::printf("%u\n",
                    static_cast<unsigned>(MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port));
        std::fflush(stdout);
    }
    return daemon;
}

} // namespace

int main(int argc, char **argv)
{
    MHD_OptionItem none[] = {{MHD_OPTION_END, 0, nullptr}};
    MHD_Daemon *plain = start(MHD_NO_FLAG, none);
    if (plain == nullptr) {
        return 1;
    }
    MHD_Daemon *secure = nullptr;
    std::string certificate;
    std::string key;
    if (argc == 3) {
        certificate = content(argv[1]);
        key = content(argv[2]);
        MHD_OptionItem tls[] = {{MHD_OPTION_HTTPS_MEM_CERT, 0, certificate.data()},
                                {MHD_OPTION_HTTPS_MEM_KEY, 0, key.data()},
                                {MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char *>(priorities)},
                                {MHD_OPTION_END, 0, nullptr}};
        secure = start(MHD_USE_TLS, tls);
        if (secure == nullptr) {
            return 1;
        }
    }
    while (std::getchar() != EOF) {
    }
    MHD_stop_daemon(plain);
    if (secure != nullptr) {
        MHD_stop_daemon(secure);
    }
    return 0;
}
