// SPDX-License-Identifier: Apache-2.0
// Bytes as they come over a connection, to the whole object manager: every answer is one of HTTP, and nobody
// learns anything of the monitor who has not named an account and its password.
#include "http/server.h"

#include "cimxml/cimxml.h"
#include "wsman/wsman.h"

#include "fuzz.h"
#include "quick_accounts.h"
#include "test_classes.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/** "operator:secret: word", as the only account that there is names itself. */
constexpr std::string_view credentials = "b3BlcmF0b3I6c2VjcmV0OiB3b3Jk";

class Server
{
  public:
    Server()
    {
        std::string problem;
        fuzz::require(server_.start({}, problem), "the server listens", problem);
    }

    /** All that comes back for the bytes, after which nothing else is sent. Who is forgotten waits without
     * end. */
    std::string answersTo(std::string_view bytes)
    {
        const int connection = connected();
        while (!bytes.empty()) {
            const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                break; // it has heard enough
            }
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        shutdown(connection, SHUT_WR);
        std::string answers;
        char part[16384];
        for (ssize_t size = 1; size > 0;) {
            size = recv(connection, part, sizeof part, 0);
            answers.append(part, size > 0 ? static_cast<std::size_t>(size) : 0);
        }
        close(connection);
        return answers;
    }

  private:
    static host::HttpLimits limits()
    {
        host::HttpLimits wide;
        wide.total = wide.perAddress = wide.anonymous =
            1000; // the server notices in its own time that they have ended
        wide.logins.freeFailures = ~0U;
        return wide;
    }

    int connected() const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(server_.endpoints().front().port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        fuzz::require(connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0,
                      "the server takes a connection");
        return connection;
    }

    std::unique_ptr<host::Accounts> accounts_ = fuzz::quickAccounts();
    host::CimXmlFrontEnd cimXml_{fuzz::testManager().dispatcher()};
    host::WsmanFrontEnd wsman_{fuzz::testManager().dispatcher()};
    host::HttpServer server_{*accounts_, {&cimXml_, &wsman_}, limits()};
};

void check(std::string_view input, std::string_view answers)
{
    const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
    fuzz::require(answers.empty() || (answers.starts_with("HTTP/1.") && answers.size() > 12 &&
                                      std::ranges::all_of(answers.substr(9, 3), isDigit)),
                  "an answer is one of HTTP", answers);
    const bool tells =
        answers.find("<CIM ") != std::string_view::npos || answers.find("Envelope") != std::string_view::npos;
    fuzz::require(!tells || input.find(credentials) != std::string_view::npos,
                  "nobody learns anything who has not named an account and its password", answers);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Server server;
    const std::string_view input = fuzz::textOf(data, size);
    if (input.find("Nap") == std::string_view::npos) { // the test provider has a method that sleeps
        check(input, server.answersTo(input));
    }
    return 0;
}
