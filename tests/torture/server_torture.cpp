// SPDX-License-Identifier: Apache-2.0
// A server that runs with failing_calls.so: each request once for every call that it makes, with that call
// failing.
//
//   server_torture PAGE PORT KIND [--every N] READ REQUEST...
//
// A request is a file: header lines, a blank line, the content; Host and Content-Length are added. READ is
// asked after each failure and has to be answered as ever. In a request whose content has @VALUE@, that
// becomes another text each time; where the answer has <VALUE>0</VALUE> the change is acknowledged, and
// READ's answer has to have the text.

#include "page.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using namespace torture;

namespace
{

constexpr int patience = 60; // seconds: enough for a machine that has much else to do

struct Request {
    std::string name, head, content;
    bool isChange() const
    {
        return content.find("@VALUE@") != std::string::npos;
    }
};

struct Answer {
    std::string status; // "200"; "closed" without an answer, "silent" when none came in time
    std::string content;
    std::string head = "";
};

[[noreturn]] void end(const std::string &why)
{
    printf("  WRONG: %s\n", why.c_str());
    exit(1);
}

Request readRequest(const std::string &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    const std::string whole = text.str();
    const size_t blank = whole.find("\n\n");
    if (!stream || blank == std::string::npos) {
        end(file + " is no request");
    }
    Request request = {file.substr(file.rfind('/') + 1), whole.substr(0, blank + 1), whole.substr(blank + 2)};
    for (size_t at = 0; (at = request.head.find('\n', at)) != std::string::npos; at += 2) {
        request.head.replace(at, 1, "\r\n");
    }
    return request;
}

std::string with(std::string text, const std::string &value)
{
    if (const size_t at = text.find("@VALUE@"); at != std::string::npos) {
        text.replace(at, strlen("@VALUE@"), value);
    }
    return text;
}

class Server
{
  public:
    explicit Server(int thePort) : port_(thePort) {}

    Answer ask(const Request &request, const std::string &value = "") const
    {
        const int connection = connected();
        if (connection < 0) {
            return {"closed", "", ""};
        }
        const std::string content = with(request.content, value);
        const std::string whole = request.head + "Host: 127.0.0.1\r\nConnection: close\r\nContent-Length: " +
                                  std::to_string(content.size()) + "\r\n\r\n" + content;
        send(connection, whole.data(), whole.size(), MSG_NOSIGNAL);
        std::string got;
        char part[65536];
        ssize_t size = 0;
        while ((size = recv(connection, part, sizeof part, 0)) > 0) {
            got.append(part, static_cast<size_t>(size));
        }
        const bool silent = size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        close(connection);
        if (silent) {
            return {"silent", got, ""};
        }
        if (got.size() < 12 || got.compare(0, 5, "HTTP/") != 0) {
            return {"closed", got, ""};
        }
        const size_t blank = got.find("\r\n\r\n");
        return {got.substr(9, 3), blank == std::string::npos ? "" : got.substr(blank + 4),
                got.substr(0, blank)};
    }

  private:
    int connected() const
    {
        const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const timeval limit = {patience, 0};
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port_));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(connection, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0) {
            return connection;
        }
        close(connection);
        return -1;
    }
    int port_;
};

/** One request and all its calls of a kind. */
class Torture
{
  public:
    Torture(Page &thePage, const Server &theServer, const Fault &theFault, const Request &theRead)
        : page_(thePage), server_(theServer), fault_(theFault), read_(theRead)
    {
    }

    void run(const Request &request, long every)
    {
        std::map<std::string, long> outcomes;
        std::map<std::string, long> functions;
        stored_ = nextValue();
        const Answer asEver = server_.ask(request, stored_);
        const std::string usual = asEver.status;
        if (!isAcknowledged(asEver, request)) {
            end(request.name + " is refused as it stands: " + usual + " " + asEver.head + asEver.content);
        }
        long failed = 0;
        for (long nth = 1;; nth += every) {
            const std::string before = stored_;
            const std::string value = nextValue();
            page_.arm(fault_, nth);
            const Answer answer = server_.ask(request, value);
            page_.disarm();
            if (!page_.struck()) {
                break;
            }
            ++failed;
            ++functions[page_.function()];
            const std::string what = request.name + ", " + fault_.name + ": call " + std::to_string(nth) +
                                     ", " + page_.function() + ", was to fail";
            ++outcomes[answer.status != usual            ? answer.status
                       : isAcknowledged(answer, request) ? "as usual"
                                                         : usual + " refused"];
            if (answer.status == "silent") {
                end(what + ": no answer within " + std::to_string(patience) + " s");
            }
            const Answer after = server_.ask(read_);
            if (after.status != "200") {
                end(what + ": the next request was answered " + after.status);
            }
            if (!request.isChange()) {
                continue;
            }
            const bool hasNew = after.content.find(value) != std::string::npos;
            if (answer.status == usual && isAcknowledged(answer, request) && !hasNew) {
                end(what + ": an acknowledged change is lost: " + value);
            }
            if (!hasNew && after.content.find(before) == std::string::npos) {
                end(what + ": neither the former nor the new value: " + before + ", " + value);
            }
            stored_ = hasNew ? value : before;
        }
        print(request, failed, outcomes, functions);
    }

  private:
    static bool isAcknowledged(const Answer &answer, const Request &request)
    {
        return !request.isChange() || answer.content.find("<VALUE>0</VALUE>") != std::string::npos;
    }

    std::string nextValue()
    {
        return "Room " + std::to_string(++number_) + "x";
    }

    void print(const Request &request, long failed, const std::map<std::string, long> &outcomes,
               const std::map<std::string, long> &functions) const
    {
        std::string text;
        for (const auto &[outcome, count] : outcomes) {
            text += outcome + ": " + std::to_string(count) + "  ";
        }
        text += "(";
        for (const auto &[function, count] : functions) {
            text += function + " " + std::to_string(count) + " ";
        }
        text.back() = ')';
        printf("  %-18s %-12s %6ld failed  %s\n", request.name.c_str(), fault_.name, failed, text.c_str());
        fflush(stdout);
    }

    Page &page_;
    const Server &server_;
    const Fault fault_;
    const Request &read_;
    std::string stored_;
    int number_ = 0;
};

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    long every = 1;
    if (arguments.size() > 4 && arguments[3] == "--every") {
        every = atol(arguments[4].c_str());
        arguments.erase(arguments.begin() + 3, arguments.begin() + 5);
    }
    if (arguments.size() < 5 || every < 1) {
        fprintf(stderr, "usage: server_torture PAGE PORT KIND [--every N] READ REQUEST...\n");
        return 2;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    Page page(arguments[0]);
    const Server server(atoi(arguments[1].c_str()));
    const Request read = readRequest(arguments[3]);
    Torture torture(page, server, faultNamed(arguments[2]), read);
    for (size_t i = 4; i < arguments.size(); ++i) {
        const Request request = readRequest(arguments[i]);
        torture.run(request, every);
    }
    return 0;
}
