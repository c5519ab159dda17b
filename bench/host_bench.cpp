// SPDX-License-Identifier: Apache-2.0
// Requests to the desk object manager by CIM-XML and WS-Management, with and without TLS, on one connection
// of each kind that is kept, and to the yardstick, a server that answers whatever it is asked with as many
// bytes as it is told.
//
// Both must be there: BENCH_PORT and BENCH_TLS_PORT are the object manager's ports, BENCH_AUTHORIZATION the
// "Basic ..." of an account, BENCH_FIXED_PORT and BENCH_FIXED_TLS_PORT the ports of fixed_server. See run.sh.
//
//   host_bench --readers CONNECTIONS COUNT    so many connections at once, each of which reads a colour space
//   so many
//                                             times; prints the requests per second

#include "cases.h"

#include <gnutls/gnutls.h>

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
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

[[noreturn]] void giveUp(const char *what, const char *why)
{
    std::fprintf(stderr, "host_bench: %s: %s\n", what, why);
    std::exit(2);
}

enum class Security { none, tls };

/** One connection to a server of this machine. */
class Connection
{
  public:
    explicit Connection(const char *port, Security security = Security::none)
        : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
            giveUp("connect", std::strerror(errno));
        }
        if (security == Security::tls) {
            shakeHands();
        }
    }

    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    ~Connection()
    {
        if (session_ != nullptr) {
            gnutls_deinit(session_);
            gnutls_certificate_free_credentials(credentials_);
        }
        close(socket_);
    }

    /** Sends a request. Returns the body of the answer, which is there until the next one; nothing unless the
     * status is 200. */
    std::string_view exchange(std::string_view request)
    {
        if (give(request) != static_cast<ssize_t>(request.size())) {
            return {};
        }
        std::size_t received = 0;
        std::size_t bodyStart = 0; // 0: the header is not complete
        std::size_t bodySize = 0;
        while (bodyStart == 0 || received < bodyStart + bodySize) {
            const ssize_t size = take(answer_.data() + received, answer_.size() - received);
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
    /** The certificate is not looked at: who the server is makes no difference to what it costs. */
    void shakeHands()
    {
        int code = gnutls_certificate_allocate_credentials(&credentials_);
        if (code == 0) {
            code = gnutls_init(&session_, GNUTLS_CLIENT);
        }
        if (code == 0) {
            gnutls_set_default_priority(session_);
            gnutls_credentials_set(session_, GNUTLS_CRD_CERTIFICATE, credentials_);
            gnutls_transport_set_int(session_, socket_);
            do {
                code = gnutls_handshake(session_);
            } while (code < 0 && gnutls_error_is_fatal(code) == 0);
        }
        if (code != 0) {
            giveUp("TLS", gnutls_strerror(code));
        }
    }

    ssize_t give(std::string_view request)
    {
        return session_ != nullptr ? gnutls_record_send(session_, request.data(), request.size())
                                   : send(socket_, request.data(), request.size(), MSG_NOSIGNAL);
    }

    ssize_t take(char *place, std::size_t size)
    {
        if (session_ == nullptr) {
            return recv(socket_, place, size, 0);
        }
        ssize_t taken = 0;
        do { // a session ticket may come in between
            taken = gnutls_record_recv(session_, place, size);
        } while (taken == GNUTLS_E_AGAIN || taken == GNUTLS_E_INTERRUPTED);
        return taken;
    }

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
    gnutls_session_t session_ = nullptr; // null: without TLS
    gnutls_certificate_credentials_t credentials_ = nullptr;
    std::vector<char> answer_ = std::vector<char>(1'000'000);
};

/** fields: more of the header, each with its end of line. */
std::string httpRequest(const std::string &path, const std::string &type, const std::string &body,
                        const std::string &fields = "")
{
    return "POST " + path +
           " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: " + environment("BENCH_AUTHORIZATION") +
           "\r\nContent-Type: " + type + "\r\n" + fields + "Content-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

std::string httpRequest(const std::string &cimXml, const std::string &path = "/cimom")
{
    return httpRequest(path, "application/xml; charset=\"utf-8\"", cimXml, "CIMOperation: MethodCall\r\n");
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

Connection &secureHost()
{
    static Connection connection(environment("BENCH_TLS_PORT"), Security::tls);
    return connection;
}

// ---- WS-Management ----

std::string wsmanGet(int colorSpace)
{
    const std::string body =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
        "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
        " xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\""
        " xmlns:w=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\"><s:Header>"
        "<a:Action s:mustUnderstand=\"true\">http://schemas.xmlsoap.org/ws/2004/09/transfer/Get</a:Action>"
        "<a:To s:mustUnderstand=\"true\">http://127.0.0.1/wsman</a:To>"
        "<w:ResourceURI s:mustUnderstand=\"true\">"
        "http://schemas.marovelton.example/wbem/wscim/1/cim-schema/2/ZT_Marovelton_ColorSpace</w:ResourceURI>"
        "<a:MessageID s:mustUnderstand=\"true\">uuid:a4613ec7-60b8-10b8-8002-01000000fc02</a:MessageID>"
        "<a:ReplyTo><a:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</a:Address>"
        "</a:ReplyTo><w:SelectorSet><w:Selector Name=\"InstanceID\">ZT:Marovelton_ColorSpace:" +
        std::to_string(colorSpace) + "</w:Selector></w:SelectorSet></s:Header><s:Body/></s:Envelope>";
    return httpRequest("/wsman", "application/soap+xml;charset=UTF-8", body);
}

// ---- the calls ----

/** Sends a request whose answer is the same until something is changed. The first answer is looked into, and
 * whichever is another than the one before; the others are compared with it. */
class Read
{
  public:
    Read(Connection &connection, const std::string &body, bool (*isRight)(std::string_view))
        : connection_(connection), request_(httpRequest(body)), isRight_(isRight)
    {
    }

    bool operator()()
    {
        const std::string_view answer = connection_.exchange(request_);
        if (answer != expected_ && isRight_(answer)) {
            expected_ = answer;
        }
        return !answer.empty() && answer == expected_;
    }

  private:
    Connection &connection_;
    const std::string request_;
    bool (*const isRight_)(std::string_view);
    std::string expected_;
};

std::string enumerationCall()
{
    return intrinsic("EnumerateInstances", "ClassName", "<CLASSNAME NAME=\"ZT_Marovelton_ColorSpace\"/>");
}

Read enumeration(Connection &connection)
{
    return {connection, enumerationCall(), [](std::string_view answer) {
                return count(answer, "<VALUE.NAMEDINSTANCE>") == 7 &&
                       count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_ColorSpace\">") == 7 &&
                       has(answer, "<VALUE>ZT:Marovelton_ColorSpace:7</VALUE>") && !has(answer, "<ERROR");
            }};
}

bool enumerateColorSpaces()
{
    static Read read = enumeration(host());
    return read();
}

bool enumerateColorSpacesSecurely()
{
    static Read read = enumeration(secureHost());
    return read();
}

bool getMonitor()
{
    static Read read(host(), intrinsic("GetInstance", "InstanceName", monitor()),
                     [](std::string_view answer) {
                         return count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_Monitor\">") == 1 &&
                                has(answer, "<VALUE>ZT:Marovelton_Monitor</VALUE>") && !has(answer, "<ERROR");
                     });
    return read();
}

std::string colorSpaceCall()
{
    return intrinsic("GetInstance", "InstanceName", colorSpace(3));
}

Read colorSpaceRead(Connection &connection)
{
    return {connection, colorSpaceCall(), [](std::string_view answer) {
                return count(answer, "<INSTANCE CLASSNAME=\"ZT_Marovelton_ColorSpace\">") == 1 &&
                       has(answer, "<VALUE>ZT:Marovelton_ColorSpace:3</VALUE>") && !has(answer, "<ERROR");
            }};
}

bool getColorSpace()
{
    static Read read = colorSpaceRead(host());
    return read();
}

bool getColorSpaceSecurely()
{
    static Read read = colorSpaceRead(secureHost());
    return read();
}

bool fixedAnswer()
{
    static Connection connection(environment("BENCH_FIXED_PORT"));
    static const std::string request = httpRequest(enumerationCall(), "/30000");
    return connection.exchange(request).size() == 30'000;
}

// As much as a colour space's answer.
constexpr std::size_t shortAnswer = 3'128;

bool shortFixedAnswer()
{
    static Connection connection(environment("BENCH_FIXED_PORT"));
    static const std::string request = httpRequest(colorSpaceCall(), "/" + std::to_string(shortAnswer));
    return connection.exchange(request).size() == shortAnswer;
}

bool shortFixedAnswerSecurely()
{
    static Connection connection(environment("BENCH_FIXED_TLS_PORT"), Security::tls);
    static const std::string request = httpRequest(colorSpaceCall(), "/" + std::to_string(shortAnswer));
    return connection.exchange(request).size() == shortAnswer;
}

/** Every answer has a message identifier of its own. */
bool getColorSpaceByWsman()
{
    static const std::string request = wsmanGet(3);
    const std::string_view answer = host().exchange(request);
    return has(answer, "/transfer/GetResponse<") && has(answer, ">ZT:Marovelton_ColorSpace:3</") &&
           !has(answer, ":Fault");
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
    {"http/fixed_3_kB", shortFixedAnswer},
    {"https/fixed_3_kB", shortFixedAnswerSecurely},
    {"http/enumerate_color_spaces", enumerateColorSpaces},
    {"http/get_monitor", getMonitor},
    {"http/get_color_space", getColorSpace},
    {"http/set_display_luminance", setDisplayLuminance},
    {"https/enumerate_color_spaces", enumerateColorSpacesSecurely},
    {"https/get_color_space", getColorSpaceSecurely},
    {"wsman/get_color_space", getColorSpaceByWsman},
};

/** Returns the exit code. */
int readAtOnce(int connections, int requests)
{
    std::atomic<bool> allRight = true;
    std::vector<std::thread> readers;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < connections; ++i) {
        readers.emplace_back([&] {
            Connection connection(environment("BENCH_PORT"));
            Read read = colorSpaceRead(connection);
            for (int k = 0; k < requests && allRight; ++k) {
                if (!read()) {
                    allRight = false;
                }
            }
        });
    }
    for (std::thread &reader : readers) {
        reader.join();
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    std::printf("%.0f\n", connections * requests / time.count());
    return allRight ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--readers") == 0) {
        return readAtOnce(std::atoi(argv[2]), std::atoi(argv[3]));
    }
    return bench::run(argc, argv, cases);
}
