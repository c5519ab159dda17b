// SPDX-License-Identifier: Apache-2.0
// What the tests of the object manager share: an object manager with the test classes and providers, a server
// on a port of its own, and a client that sends bytes as they are.
#ifndef TESTS_HOST_TEST_HOST_H
#define TESTS_HOST_TEST_HOST_H

#include "cim/mof_reader.h"
#include "cimxml/cimxml.h"
#include "core/accounts.h"
#include "core/object_manager.h"
#include "http/server.h"
#include "wsman/wsman.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test
{

/** The text of a file under tests/host/data. */
std::string readData(const std::string &name);

std::string readFile(const std::string &path);
void writeFile(const std::string &path, std::string_view text);

/** A directory of its own, gone with the object. */
class TemporaryDirectory
{
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();

    std::string file(const std::string &name) const
    {
        return path_ + "/" + name;
    }

    const std::string &path() const
    {
        return path_;
    }

  private:
    std::string path_;
};

/** The classes of test.mof. */
cim::ClassRepository readTestClasses();

/** An object manager with the providers of test.reg and the profiles of test.profiles. */
std::unique_ptr<host::ObjectManager> makeManager(cim::ClassRepository classes = readTestClasses());

/** A call of one test: the arena that it owns is the current one. */
class TestCall
{
  public:
    TestCall() : call_{&arena, host::nextRequestNumber()}, scope_(call_) {}

    host::Arena arena;

    host::Call &call()
    {
        return call_;
    }

  private:
    host::Call call_;
    host::CallScope scope_;
};

/** An answer as it came over the wire. */
struct HttpAnswer {
    int status = 0; // 0: the connection ended before a whole answer
    std::string head;
    std::string body;

    /** The value of a header line, "" when there is none. */
    std::string header(const std::string &name) const;
};

/** A connection to the server of a test. */
class Client
{
  public:
    explicit Client(std::uint16_t port);
    ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    /** Sends the bytes; false when the server has closed the connection. */
    bool send(std::string_view bytes);

    /** The next answer; waits for at most that many seconds. */
    HttpAnswer receive(int seconds = 20);

    /** What has come in next, answer or not; waits for at most that many seconds. */
    std::string receiveBytes(int seconds = 20);

    /** send() and receive(). */
    HttpAnswer exchange(std::string_view bytes);

    /** True when the server closes the connection within that many seconds. */
    bool closed(int seconds = 20);

    void shutdownSending();

  private:
    bool wait(int seconds);
    bool takeAnswer(HttpAnswer &answer);

    int socket_;
    std::string buffer_;
};

/** Base64 for the header Authorization. */
std::string base64(std::string_view text);

inline constexpr const char *userName = "operator";
inline constexpr const char *userPassword = "secret: word";

/** A line of an accounts file, with a quick method of crypt(3). */
std::string quickAccount(const std::string &user, const std::string &password);

/** A whole request to /cimom with that body, with the right credentials. */
std::string post(std::string_view body, std::string_view moreHeaders = "");

/** A recorded request with the right credentials added. */
std::string recorded(const std::string &name);

/** The body of an intrinsic operation in root/cimv2. */
std::string intrinsic(std::string_view operation, std::string_view parameters,
                      std::string_view nameSpace = "root/cimv2");

/** INSTANCENAME of a thing. */
std::string thingName(int number, std::string_view className = "Test_Thing");

/** The body of a method call on a thing. */
std::string methodCall(int number, std::string_view method, std::string_view arguments);

/** The object manager behind a server, with one account. */
class TestServer
{
  public:
    explicit TestServer(const host::HttpLimits &limits = {}, const host::XmlLimits &xmlLimits = {},
                        std::unique_ptr<host::ObjectManager> manager = makeManager());

    std::uint16_t port() const
    {
        return server_->endpoints().front().port;
    }

    host::ObjectManager &manager()
    {
        return *manager_;
    }

    host::HttpServer &server()
    {
        return *server_;
    }

    host::Accounts &accounts()
    {
        return *accounts_;
    }

    std::string accountsFile() const
    {
        return directory_.file("accounts");
    }

    /** One exchange on a connection of its own. */
    HttpAnswer exchange(std::string_view bytes);

  private:
    TemporaryDirectory directory_;
    std::unique_ptr<host::ObjectManager> manager_;
    std::unique_ptr<host::Accounts> accounts_;
    std::unique_ptr<host::CimXmlFrontEnd> frontEnd_;
    std::unique_ptr<host::WsmanFrontEnd> wsman_;
    std::unique_ptr<host::HttpServer> server_;
};

/** The CODE of the answer's ERROR element, 0 when there is none. */
int errorCode(const std::string &body);

/** The DESCRIPTION of the answer's ERROR element. */
std::string errorText(const std::string &body);

/** How often the text is in the other. */
std::size_t count(const std::string &text, std::string_view part);

} // namespace test

#endif
