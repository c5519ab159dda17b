// SPDX-License-Identifier: Apache-2.0
// display-host as a service: sockets that are handed over, what the service manager hears of it, and the file
// with the output of providers.
#include "program.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace
{

using test::Outcome;
using test::Process;
using testing::HasSubstr;
using testing::StartsWith;

const std::string namesRequest =
    test::intrinsic("EnumerateInstanceNames",
                    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Thing\"/></IPARAMVALUE>");

/** A descriptor that is closed with the object. */
class Descriptor
{
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    ~Descriptor()
    {
        close(number_);
    }

    int operator*() const
    {
        return number_;
    }

  private:
    const int number_;
};

/** A socket that listens on a free port of loopback, as a service manager makes it. */
class Listener
{
  public:
    Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *bound = reinterpret_cast<sockaddr *>(&address);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(*socket_, bound, size), 0);
        EXPECT_EQ(listen(*socket_, 16), 0);
        EXPECT_EQ(getsockname(*socket_, bound, &size), 0);
        port_ = ntohs(address.sin_port);
    }

    int socket() const
    {
        return *socket_;
    }

    std::uint16_t port() const
    {
        return port_;
    }

  private:
    Descriptor socket_;
    std::uint16_t port_ = 0;
};

/** Where a service manager listens for what its services say. */
class NotifySocket
{
  public:
    /** At a path, or, when the name begins with @, in the abstract namespace. */
    explicit NotifySocket(const std::string &name) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path, sizeof address.sun_path - 1);
        if (name.front() == '@') {
            address.sun_path[0] = '\0';
        }
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(bind(*socket_, reinterpret_cast<const sockaddr *>(&address), size), 0);
        const timeval patience = {120, 0};
        EXPECT_EQ(setsockopt(*socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience), 0);
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }

    ~NotifySocket()
    {
        unsetenv("NOTIFY_SOCKET");
    }

    std::string receive() const
    {
        char text[256];
        const ssize_t size = recv(*socket_, text, sizeof text, 0);
        return size < 0 ? "nothing" : std::string(text, static_cast<std::size_t>(size));
    }

  private:
    Descriptor socket_;
};

class Supervision : public test::Program
{
  protected:
    /** Runs display-host with these sockets; the variables are those of sd_listen_fds(3). The process of the
     * variables is the right one, unless it is named. */
    std::unique_ptr<Process> startWith(const std::vector<int> &sockets, const std::string &socketNames,
                                       const std::vector<std::string> &more = {},
                                       const std::string &process = "$$")
    {
        std::vector<std::string> arguments = goodArguments();
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::vector<std::string> command = {"/bin/sh", "-c",
                                            "LISTEN_PID=" + process +
                                                " LISTEN_FDS=" + std::to_string(sockets.size()) +
                                                " LISTEN_FDNAMES=" + socketNames + " exec \"$0\" \"$@\""};
        for (const std::string &word : test::hostCommand(arguments)) {
            command.push_back(word);
        }
        return std::make_unique<Process>(command, directory_, "", sockets);
    }

    std::string ready() const
    {
        return test::readFile(directory_.file("ready"));
    }

    static std::string line(const std::string &scheme, const Listener &listener)
    {
        return "listening on " + scheme + "://127.0.0.1:" + std::to_string(listener.port()) + "/cimom\n";
    }
};

TEST_F(Supervision, ListensOnTheSocketsThatAreHandedOver)
{
    const std::string certificate = directory_.file("certificate");
    const std::string key = directory_.file("key");
    ASSERT_EQ(run({"certificate", "--certificate", certificate, "--key", key}).code, 0);
    const Listener http;
    const Listener other;
    const Listener https;
    // The names count, not the order.
    auto process = startWith({https.socket(), other.socket(), http.socket()}, "https:other:http",
                             {"--certificate", certificate, "--key", key});
    ASSERT_TRUE(process->waitFor(directory_.file("ready"))) << test::readFile(directory_.file("errors"));
    EXPECT_EQ(ready(), line("http", http) + line("https", https));
    test::Client client(http.port());
    EXPECT_EQ(client.exchange(test::postAsOperator(namesRequest)).status, 200);
    const std::vector<std::string> curl = {"curl",
                                           "-s",
                                           "-o",
                                           "/dev/null",
                                           "-w",
                                           "%{http_code}",
                                           "--cacert",
                                           certificate,
                                           "-u",
                                           "operator:secret",
                                           "-H",
                                           "CIMOperation: MethodCall",
                                           "-H",
                                           "Content-Type: application/xml",
                                           "--data-binary",
                                           namesRequest,
                                           "https://localhost:" + std::to_string(https.port()) + "/cimom"};
    EXPECT_EQ(Process(curl, clientDirectory_).wait().output, "200");
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait().code, 0);
}

TEST_F(Supervision, AnswersWhoCameBeforeTheStart)
{
    const Listener http;
    test::Client early(http.port());
    early.send(test::postAsOperator(namesRequest));
    auto process = startWith({http.socket()}, "http");
    EXPECT_EQ(early.receive().status, 200);
}

TEST_F(Supervision, LeavesTheSocketsOfOthersAlone)
{
    const Listener http;
    auto process = startWith({http.socket()}, "http", {}, "1");
    ASSERT_TRUE(process->waitFor(directory_.file("ready"))) << test::readFile(directory_.file("errors"));
    EXPECT_THAT(ready(), StartsWith("listening on http://127.0.0.1:"));
    EXPECT_NE(ready(), line("http", http)) << "the sockets were another process'";
}

TEST_F(Supervision, SaysThatWhatWasHandedOverIsNoSocket)
{
    const Descriptor file(open("/dev/null", 0));
    auto process = startWith({*file}, "http");
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the socket that was handed over is none: "));
}

/** A socket that was handed over is no way around the rule that HTTP is for this machine alone. */
TEST_F(Supervision, RefusesASocketBeyondThisMachine)
{
    const Descriptor wide(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    ASSERT_EQ(bind(*wide, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    const Outcome outcome = startWith({*wide}, "http")->wait();
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors,
                HasSubstr("HTTP beyond this machine lets everybody on the way read passwords"));
}

TEST_F(Supervision, TellsTheServiceManagerHowItIs)
{
    for (const std::string &name : {directory_.file("notify"), "@" + directory_.file("notify")}) {
        const NotifySocket manager(name);
        unlink(directory_.file("ready").c_str());
        auto process = start();
        EXPECT_EQ(manager.receive(), "READY=1") << name;
        // At least every other second; the service manager waits for 30.
        EXPECT_EQ(manager.receive(), "WATCHDOG=1");
        EXPECT_EQ(manager.receive(), "WATCHDOG=1");
        process->signal(SIGTERM);
        std::string told = manager.receive();
        while (told == "WATCHDOG=1") {
            told = manager.receive();
        }
        EXPECT_EQ(told, "STOPPING=1");
        const Outcome outcome = process->wait();
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST_F(Supervision, IsNotReadyWhenItCannotStart)
{
    const NotifySocket manager(directory_.file("notify"));
    EXPECT_EQ(run({"--mof", TEST_DATA_DIR "/test.mof", "--registration", TEST_DATA_DIR "/test.reg",
                   "--accounts", directory_.file("absent")})
                  .code,
              1);
    // The next that is told is this, so nothing was before.
    auto process = start();
    EXPECT_EQ(manager.receive(), "READY=1");
}

TEST_F(Supervision, GoesOnWithoutTheServiceManager)
{
    setenv("NOTIFY_SOCKET", directory_.file("nobody").c_str(), 1);
    auto process = start();
    unsetenv("NOTIFY_SOCKET");
    test::Client client(port_);
    EXPECT_EQ(client.exchange(test::postAsOperator(namesRequest)).status, 200);
    process->signal(SIGTERM);
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.errors,
                HasSubstr("the service manager cannot be told READY=1: No such file or directory"));
}

/** Each line is in one of the two files, once. */
TEST_F(Supervision, PutsTheOutputOfProvidersAside)
{
    const std::string trace = directory_.file("trace");
    setenv("TEST_PROVIDER_TRACE", "1", 1);
    auto process = start({"--provider-output", trace, "--provider-output-size", "4096"});
    unsetenv("TEST_PROVIDER_TRACE");
    std::string expected = "the things are set up\n";
    test::Client client(port_);
    const auto ask = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ASSERT_EQ(client.exchange(test::postAsOperator(namesRequest)).status, 200);
            expected += "the things are named\n";
        }
    };
    ask(150);
    EXPECT_LT(expected.size(), 4096u);
    ask(150);
    EXPECT_GT(expected.size(), 4096u);
    // It is looked at once a second.
    for (int i = 0; i < 12000 && access((trace + ".1").c_str(), F_OK) != 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::string aside = test::readFile(trace + ".1");
    EXPECT_GT(aside.size(), 4096u);
    ask(10);
    EXPECT_EQ(aside + test::readFile(trace), expected);
    EXPECT_EQ(test::readFile(trace + ".1"), aside) << "what is put aside stays";
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait().code, 0);
    EXPECT_EQ(aside + test::readFile(trace), expected);
}

} // namespace
