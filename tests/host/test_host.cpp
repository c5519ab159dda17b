// SPDX-License-Identifier: Apache-2.0
#include "test_host.h"

#include <arpa/inet.h>
#include <cerrno>
#include <crypt.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test
{

std::string readFile(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return text.str();
}

std::string readData(const std::string &name)
{
    return readFile(TEST_DATA_DIR "/" + name);
}

void writeFile(const std::string &path, std::string_view text)
{
    std::ofstream stream(path, std::ios::binary);
    stream << text;
}

TemporaryDirectory::TemporaryDirectory()
{
    std::string name = std::filesystem::temp_directory_path().string() + "/display-host-test.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = name;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

cim::ClassRepository readTestClasses()
{
    cim::ClassRepository repository;
    const cim::MofResult result = cim::readMofFiles(repository, {TEST_DATA_DIR "/test.mof"});
    for (const cim::MofMessage &message : result.messages) {
        ADD_FAILURE() << message.format();
    }
    return repository;
}

std::unique_ptr<host::ObjectManager> makeManager(cim::ClassRepository classes)
{
    host::ObjectManagerOptions options;
    options.libraryFile = TEST_PROVIDER_FILE;
    options.version = "1.2.3";
    std::vector<std::string> problems;
    options.profiles = host::readProfileFile(TEST_DATA_DIR "/test.profiles", problems);
    auto manager = std::make_unique<host::ObjectManager>(std::move(classes), options);
    const auto registrations = host::readRegistrationFile(TEST_DATA_DIR "/test.reg", problems);
    for (const std::string &problem : problems) {
        ADD_FAILURE() << problem;
    }
    for (const std::string &problem : manager->load(registrations)) {
        ADD_FAILURE() << problem;
    }
    return manager;
}

// ---------------------------------------------------------------------------------------------------- client

std::string HttpAnswer::header(const std::string &name) const
{
    std::istringstream lines(head);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(':');
        if (colon == name.size() && strncasecmp(line.c_str(), name.c_str(), colon) == 0) {
            std::string value = line.substr(colon + 1);
            value.erase(0, value.find_first_not_of(' '));
            value.erase(value.find_last_not_of("\r ") + 1);
            return value;
        }
    }
    return "";
}

Client::Client(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        close(socket_);
        throw std::runtime_error(std::string("connect: ") + std::strerror(errno));
    }
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Client::~Client()
{
    close(socket_);
}

bool Client::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void Client::shutdownSending()
{
    shutdown(socket_, SHUT_WR);
}

bool Client::wait(int seconds)
{
    pollfd events = {socket_, POLLIN, 0};
    return poll(&events, 1, seconds * 1000) == 1;
}

/** Takes the next answer out of the buffer when it is there as a whole. */
bool Client::takeAnswer(HttpAnswer &answer)
{
    for (std::size_t headEnd = buffer_.find("\r\n\r\n"); headEnd != std::string::npos;
         headEnd = buffer_.find("\r\n\r\n")) {
        answer.head = buffer_.substr(0, headEnd + 2);
        if (answer.head.starts_with("HTTP/1.1 100")) {
            buffer_.erase(0, headEnd + 4);
            continue;
        }
        const std::size_t length = std::strtoul(answer.header("Content-Length").c_str(), nullptr, 10);
        if (buffer_.size() < headEnd + 4 + length) {
            return false;
        }
        answer.body = buffer_.substr(headEnd + 4, length);
        buffer_.erase(0, headEnd + 4 + length);
        answer.status = std::atoi(answer.head.c_str() + std::strlen("HTTP/1.1 "));
        return true;
    }
    return false;
}

HttpAnswer Client::receive(int seconds)
{
    HttpAnswer answer;
    while (!takeAnswer(answer) && wait(seconds)) {
        char bytes[65536];
        const ssize_t received = recv(socket_, bytes, sizeof bytes, MSG_DONTWAIT);
        if (received > 0) {
            buffer_.append(bytes, static_cast<std::size_t>(received));
        } else if (received == 0 || errno != EAGAIN) {
            break;
        }
    }
    return answer;
}

std::string Client::receiveBytes(int seconds)
{
    char bytes[4096];
    const ssize_t received = wait(seconds) ? recv(socket_, bytes, sizeof bytes, MSG_DONTWAIT) : 0;
    return received > 0 ? std::string(bytes, static_cast<std::size_t>(received)) : std::string();
}

HttpAnswer Client::exchange(std::string_view bytes)
{
    send(bytes);
    return receive();
}

bool Client::closed(int seconds)
{
    while (wait(seconds)) {
        char bytes[65536];
        const ssize_t received = recv(socket_, bytes, sizeof bytes, MSG_DONTWAIT);
        if (received == 0 || (received < 0 && errno != EAGAIN)) {
            return true;
        }
    }
    return false;
}

std::string base64(std::string_view text)
{
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    for (std::size_t i = 0; i < text.size(); i += 3) {
        unsigned group = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            group = group << 8 | (i + j < text.size() ? static_cast<unsigned char>(text[i + j]) : 0u);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            result += i + j > text.size() ? '=' : digits[group >> (18 - 6 * j) & 63];
        }
    }
    return result;
}

std::string post(std::string_view body, std::string_view moreHeaders)
{
    std::string request = "POST /cimom HTTP/1.1\r\nHost: localhost\r\n";
    request += "Content-Type: application/xml; charset=\"utf-8\"\r\nAuthorization: Basic ";
    request += base64(std::string(userName) + ":" + userPassword);
    request += "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    if (moreHeaders.find("CIMOperation:") == std::string_view::npos) {
        request += "CIMOperation: MethodCall\r\n";
    }
    request += moreHeaders;
    request += "\r\n";
    request += body;
    return request;
}

std::string recorded(const std::string &name)
{
    std::string request = readData("recorded/" + name + ".http");
    request.insert(request.find("\r\n") + 2,
                   "Authorization: Basic " + base64(std::string(userName) + ":" + userPassword) + "\r\n");
    return request;
}

std::string intrinsic(std::string_view operation, std::string_view parameters, std::string_view nameSpace)
{
    std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                       "<MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"";
    body += operation;
    body += "\"><LOCALNAMESPACEPATH>";
    std::istringstream parts{std::string(nameSpace)};
    for (std::string part; std::getline(parts, part, '/');) {
        body += "<NAMESPACE NAME=\"" + part + "\"/>";
    }
    body += "</LOCALNAMESPACEPATH>";
    body += parameters;
    body += "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
    return body;
}

std::string thingName(int number, std::string_view className)
{
    std::string name = "<INSTANCENAME CLASSNAME=\"";
    name += className;
    name +=
        "\"><KEYBINDING NAME=\"SystemCreationClassName\"><KEYVALUE VALUETYPE=\"string\">"
        "Linux_ComputerSystem</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"SystemName\">"
        "<KEYVALUE VALUETYPE=\"string\">desk</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"CreationClassName\">"
        "<KEYVALUE VALUETYPE=\"string\">";
    name += className;
    name += "</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"DeviceID\"><KEYVALUE VALUETYPE=\"string\">thing";
    name += std::to_string(number);
    name += "</KEYVALUE></KEYBINDING></INSTANCENAME>";
    return name;
}

std::string methodCall(int number, std::string_view method, std::string_view arguments)
{
    std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                       "<MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><METHODCALL NAME=\"";
    body += method;
    body += "\"><LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>"
            "</LOCALNAMESPACEPATH>";
    body += thingName(number);
    body += "</LOCALINSTANCEPATH>";
    body += arguments;
    body += "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
    return body;
}

// ---------------------------------------------------------------------------------------------------- server

std::string quickAccount(const std::string &user, const std::string &password)
{
    crypt_data memory = {};
    const char *hash = crypt_r(password.c_str(), "$5$rounds=1000$0123456789abcdef$", &memory);
    return user + ":" + (hash != nullptr ? hash : "*") + "\n";
}

TestServer::TestServer(const host::HttpLimits &limits, const host::XmlLimits &xmlLimits,
                       std::unique_ptr<host::ObjectManager> manager)
    : manager_(std::move(manager))
{
    std::string problem;
    writeFile(directory_.file("accounts"), quickAccount(userName, userPassword));
    accounts_ = std::make_unique<host::Accounts>(directory_.file("accounts"));
    EXPECT_TRUE(accounts_->load(problem)) << problem;
    frontEnd_ = std::make_unique<host::CimXmlFrontEnd>(manager_->dispatcher(), xmlLimits);
    host::WsmanOptions wsmanOptions;
    wsmanOptions.xml = xmlLimits;
    wsman_ = std::make_unique<host::WsmanFrontEnd>(manager_->dispatcher(), wsmanOptions);
    server_ = std::make_unique<host::HttpServer>(
        *accounts_, std::vector<host::FrontEnd *>{frontEnd_.get(), wsman_.get()}, limits);
    EXPECT_TRUE(server_->start({}, problem)) << problem;
}

HttpAnswer TestServer::exchange(std::string_view bytes)
{
    Client client(port());
    return client.exchange(bytes);
}

namespace
{

std::string attributeOfError(const std::string &body, const std::string &name)
{
    const std::size_t error = body.find("<ERROR ");
    if (error == std::string::npos) {
        return "";
    }
    const std::size_t value = body.find(name + "=\"", error) + name.size() + 2;
    return body.substr(value, body.find('"', value) - value);
}

} // namespace

int errorCode(const std::string &body)
{
    return std::atoi(attributeOfError(body, "CODE").c_str());
}

std::string errorText(const std::string &body)
{
    return attributeOfError(body, "DESCRIPTION");
}

std::size_t count(const std::string &text, std::string_view part)
{
    std::size_t found = 0;
    for (std::size_t place = text.find(part); place != std::string::npos;
         place = text.find(part, place + part.size())) {
        ++found;
    }
    return found;
}

} // namespace test
