// SPDX-License-Identifier: Apache-2.0
// Requests to the desk object manager by CIM-XML on one connection that is kept, and to the yardstick, a
// server that answers whatever it is asked with the same 30 kB.
//
// Both must be there: BENCH_PORT is the object manager's port, BENCH_AUTHORIZATION the "Basic ..." of an
// account, BENCH_FIXED_PORT the port of fixed_server. See run.sh.

#include "cases.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace
{

const char *environment(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

// ---- the client ----

/** One connection to a server of this machine. */
class Connection
{
  public:
    explicit Connection(const char *port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
            std::perror("host_bench: connect");
            std::exit(2);
        }
    }

    /** Sends a request. Returns the body of the answer, which is there until the next one; nothing unless the
     * status is 200. */
    std::string_view exchange(std::string_view request)
    {
        if (send(socket_, request.data(), request.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(request.size())) {
            return {};
        }
        std::size_t received = 0;
        std::size_t bodyStart = 0; // 0: the header is not complete
        std::size_t bodySize = 0;
        while (bodyStart == 0 || received < bodyStart + bodySize) {
            const ssize_t size = recv(socket_, answer_.data() + received, answer_.size() - received, 0);
            if (size <= 0) {
                return {};
            }
            received += static_cast<std::size_t>(size);
            if (bodyStart == 0 && !readHeader({answer_.data(), received}, bodyStart, bodySize)) {
                return {};
            }
        }
        return {answer_.data() + bodyStart, bodySize};
    }

  private:
    /** False when the answer is none that can be used. */
    bool readHeader(std::string_view received, std::size_t &bodyStart, std::size_t &bodySize) const
    {
        constexpr std::string_view headerEnd = "\r\n\r\n";
        constexpr std::string_view lengthField = "\r\nContent-Length: ";
        const std::size_t end = received.find(headerEnd);
        if (end == std::string_view::npos) {
            return true;
        }
        const std::string_view header = received.substr(0, end);
        const std::size_t length = header.find(lengthField);
        if (!header.starts_with("HTTP/1.1 200 ") || length == std::string_view::npos) {
            return false;
        }
        bodySize = std::strtoul(header.data() + length + lengthField.size(), nullptr, 10);
        bodyStart = end + headerEnd.size();
        return bodyStart + bodySize <= answer_.size();
    }

    int socket_;
    std::vector<char> answer_ = std::vector<char>(1'000'000);
};

std::string httpRequest(std::string_view body)
{
    return "POST /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: " +
           std::string(environment("BENCH_AUTHORIZATION")) +
           "\r\nContent-Type: application/xml; charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

// ---- CIM-XML ----

std::string message(std::string_view call)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
           std::string(call) + "</SIMPLEREQ></MESSAGE></CIM>";
}

constexpr const char *nameSpace =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>";

std::string intrinsic(const std::string &name, const std::string &parameter, const std::string &value)
{
    return message("<IMETHODCALL NAME=\"" + name + "\">" + nameSpace + "<IPARAMVALUE NAME=\"" + parameter +
                   "\">" + value + "</IPARAMVALUE></IMETHODCALL>");
}

std::string key(const std::string &name, const std::string &value)
{
    return "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value +
           "</KEYVALUE></KEYBINDING>";
}

/** The path of a colour space, from 1. */
std::string colorSpace(int number)
{
    return "<INSTANCENAME CLASSNAME=\"ZT_Marovelton_ColorSpace\">" +
           key("InstanceID", "ZT:Marovelton_ColorSpace:" + std::to_string(number)) + "</INSTANCENAME>";
}

std::string monitor()
{
    return "<INSTANCENAME CLASSNAME=\"ZT_Marovelton_Monitor\">" +
           key("CreationClassName", "ZT_Marovelton_Monitor") + key("DeviceID", "ZT:Marovelton_Monitor") +
           key("SystemCreationClassName", "Linux_ComputerSystem") + key("SystemName", "192.168.10.20") +
           "</INSTANCENAME>";
}

/** Sets the luminance of the first colour space, which is the active one of a new monitor. */
std::string setLuminance(int value)
{
    return message("<METHODCALL NAME=\"SetDisplayLuminance\"><LOCALINSTANCEPATH>" + std::string(nameSpace) +
                   colorSpace(1) + "</LOCALINSTANCEPATH><PARAMVALUE NAME=\"Luminance\"><VALUE>" +
                   std::to_string(value) + "</VALUE></PARAMVALUE></METHODCALL>");
}

std::size_t count(std::string_view text, std::string_view what)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) {
        ++found;
    }
    return found;
}

bool has(std::string_view text, std::string_view what)
{
    return text.find(what) != std::string_view::npos;
}

Connection &host()
{
    static Connection connection(environment("BENCH_PORT"));
    return connection;
}

/** Sends a request whose answer is the same every time. The first answer is looked into, the others are
 * compared with it. */
class Read
{
  public:
    Read(const std::string &body, bool (*isRight)(std::string_view))
        : request_(httpRequest(body)), isRight_(isRight)
    {
    }

    bool operator()()
    {
        const std::string_view answer = host().exchange(request_);
        if (expected_.empty() && isRight_(answer)) {
            expected_ = answer;
        }
        return !answer.empty() && answer == expected_;
    }

  private:
    const std::string request_;
    bool (*const isRight_)(std::string_view);
    std::string expected_;
};

// ---- the calls ----

bool fixedAnswer()
{
    static Connection connection(environment("BENCH_FIXED_PORT"));
    static const std::string request = httpRequest(
        intrinsic("EnumerateInstances", "ClassName", "<CLASSNAME NAME=\"ZT_Marovelton_ColorSpace\"/>"));
    return connection.exchange(request).size() == 30'000;
}

bool enumerateColorSpaces()
{
    static Read read(
        intrinsic("EnumerateInstances", "ClassName", "<CLASSNAME NAME=\"ZT_Marovelton_ColorSpace\"/>"),
        [](std::string_view answer) {
            return count(answer, "<VALUE.NAMEDINSTANCE>") == 7 &&
                   count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_ColorSpace\">") == 7 &&
                   has(answer, "<VALUE>ZT:Marovelton_ColorSpace:7</VALUE>") && !has(answer, "<ERROR");
        });
    return read();
}

bool getMonitor()
{
    static Read read(intrinsic("GetInstance", "InstanceName", monitor()), [](std::string_view answer) {
        return count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_Monitor\">") == 1 &&
               has(answer, "<VALUE>ZT:Marovelton_Monitor</VALUE>") && !has(answer, "<ERROR");
    });
    return read();
}

bool getColorSpace()
{
    static Read read(intrinsic("GetInstance", "InstanceName", colorSpace(3)), [](std::string_view answer) {
        return count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_ColorSpace\">") == 1 &&
               has(answer, "<VALUE>ZT:Marovelton_ColorSpace:3</VALUE>") && !has(answer, "<ERROR");
    });
    return read();
}

/** Sets another luminance each time, so that there is something to do, and now and then reads it back. */
bool setDisplayLuminance()
{
    constexpr int lowest = 48;
    constexpr int values = 203; // to 250
    static const std::string get = httpRequest(intrinsic("GetInstance", "InstanceName", colorSpace(1)));
    static const std::vector<std::string> requests = [] {
        std::vector<std::string> all;
        all.reserve(values);
        for (int i = 0; i < values; ++i) {
            all.push_back(httpRequest(setLuminance(lowest + i)));
        }
        return all;
    }();
    static std::size_t calls = 0;
    const std::size_t value = calls++ % values;
    if (!has(host().exchange(requests[value]), "<RETURNVALUE PARAMTYPE=\"uint32\">\n<VALUE>0</VALUE>")) {
        return false;
    }
    if (value % 100 != 0) {
        return true;
    }
    return has(host().exchange(get), "<PROPERTY NAME=\"DisplayLuminance\" TYPE=\"uint16\">\n<VALUE>" +
                                         std::to_string(lowest + value) + "</VALUE>");
}

constexpr bench::Case cases[] = {
    {"http/fixed_30_kB", fixedAnswer},
    {"http/enumerate_color_spaces", enumerateColorSpaces},
    {"http/get_monitor", getMonitor},
    {"http/get_color_space", getColorSpace},
    {"http/set_display_luminance", setDisplayLuminance},
};

} // namespace

int main(int argc, char **argv)
{
    return bench::run(argc, argv, cases);
}
