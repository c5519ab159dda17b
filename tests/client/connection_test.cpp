// SPDX-License-Identifier: Apache-2.0
// The connection to a monitor: order, counts, and everything that can go wrong on the way.
#include "responder.h"
#include "wbem/connection.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

namespace displayctl::wbem
{
namespace
{

using responder::Reply;
using responder::Request;
using responder::Responder;
using std::chrono::milliseconds;

constexpr milliseconds patience{60'000}; // never waited for
constexpr milliseconds shortly{150};     // waited for in full

Endpoint endpointOf(const Responder &server)
{
    Endpoint endpoint;
    endpoint.host = "127.0.0.1";
    endpoint.port = server.port();
    return endpoint;
}

/** One instance that tells the class it was asked for. */
Reply instanceOf(const std::string &className)
{
    return responder::intrinsic("EnumerateInstances",
                                "<IRETURNVALUE><VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"" + className +
                                    "\"/><INSTANCE CLASSNAME=\"" + className +
                                    "\"/></VALUE.NAMEDINSTANCE></IRETURNVALUE>");
}

Reply echoClass(const Request &request)
{
    return instanceOf(responder::classOf(request));
}

std::vector<Operation> enumerations(int count)
{
    std::vector<Operation> operations;
    for (int i = 0; i < count; ++i) {
        operations.push_back(enumerateInstances("Class" + std::to_string(i)));
    }
    return operations;
}

Operation change()
{
    return invokeMethod({"A", {{"Id", "1", {}, {}}}}, "Go", {{"Value", "string", Value{"1"}}});
}

TEST(Connection, AnswersComeInTheOrderOfTheOperationsOverOneConnection)
{
    const Responder server{echoClass};
    Connection connection{endpointOf(server), patience};
    const std::vector<Answer> answers = connection.exchange(enumerations(20));
    ASSERT_EQ(answers.size(), 20U);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        ASSERT_TRUE(answers[i].ok()) << answers[i].message;
        EXPECT_EQ(answers[i].instances.front().path.className, "Class" + std::to_string(i));
    }
    EXPECT_TRUE(connection.exchange(enumerateInstances("Last")).ok());
    EXPECT_EQ(server.counts().connections, 1U);
    EXPECT_EQ(server.counts().total(), 21U);
    EXPECT_EQ(server.counts().requests.at("EnumerateInstances Class7"), 1U);
    EXPECT_EQ(connection.traffic().requests, 21U);
    EXPECT_EQ(connection.traffic().connections, 1U);
}

TEST(Connection, NothingToAskIsNothingSent)
{
    const Responder server{echoClass};
    Connection connection{endpointOf(server), patience};
    EXPECT_TRUE(connection.exchange(std::span<const Operation>{}).empty());
    EXPECT_EQ(server.counts().connections, 0U);
}

TEST(Connection, TheRequestHasTheHeadersThatObjectManagersRead)
{
    std::string head;
    const Responder server{[&](const Request &request) {
        head = request.head;
        return echoClass(request);
    }};
    Endpoint endpoint = endpointOf(server);
    endpoint.user = "admin";
    endpoint.password = "s:cret";
    EXPECT_TRUE(Connection(endpoint, patience).exchange(enumerateInstances("A")).ok());
    EXPECT_TRUE(head.starts_with("POST /cimom HTTP/1.1\r\n")) << head;
    const Request request{"", head, ""};
    EXPECT_EQ(request.header("CIMOperation"), "MethodCall");
    EXPECT_EQ(request.header("CIMMethod"), "EnumerateInstances");
    EXPECT_EQ(request.header("CIMObject"), "root/cimv2");
    EXPECT_EQ(request.header("Content-Type"), "application/xml; charset=\"utf-8\"");
    EXPECT_EQ(request.header("Authorization"), "Basic YWRtaW46czpjcmV0");
    EXPECT_EQ(request.header("Expect"), "");
}

TEST(Connection, WithoutAUserThereAreNoCredentials)
{
    std::string head;
    const Responder server{[&](const Request &request) {
        head = request.head;
        return echoClass(request);
    }};
    EXPECT_TRUE(Connection(endpointOf(server), patience).exchange(enumerateInstances("A")).ok());
    EXPECT_EQ(head.find("Authorization"), std::string::npos);
}

TEST(Connection, AMissingPasswordIsSaidWithoutAsking)
{
    const Responder server{echoClass};
    Endpoint endpoint = endpointOf(server);
    endpoint.user = "admin";
    const std::vector<Answer> answers = Connection(endpoint, patience).exchange(enumerations(2));
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[1].status, Status::unauthorized);
    EXPECT_EQ(answers[1].message,
              "there is no password for admin at 127.0.0.1:" + std::to_string(server.port()) +
                  "; set DISPLAYCTL_PASSWORD, or name a password-file in the file of monitors");
    EXPECT_EQ(server.counts().connections, 0U);
}

TEST(Connection, HttpErrorsAreToldApart)
{
    std::mutex mutex; // the network orders the threads, but nobody sees that
    std::string status;
    const Responder server{[&](const Request &) {
        const std::lock_guard lock{mutex};
        return responder::http("", status, "CIMError: request-not-valid\r\n");
    }};
    Endpoint endpoint = endpointOf(server);
    endpoint.user = "viewer";
    endpoint.password = "wrong";
    const std::string name = "127.0.0.1:" + std::to_string(server.port());
    const auto answerTo = [&](const std::string &line) {
        {
            const std::lock_guard lock{mutex};
            status = line;
        }
        return Connection(endpoint, patience).exchange(change());
    };

    Answer answer = answerTo("401 Unauthorized");
    EXPECT_EQ(answer.status, Status::unauthorized);
    EXPECT_EQ(answer.code, 401);
    EXPECT_EQ(answer.message, name + " does not accept the login of viewer; is the password right?");
    EXPECT_FALSE(answer.maybeDone);

    answer = answerTo("403 Forbidden");
    EXPECT_EQ(answer.status, Status::forbidden);
    EXPECT_EQ(answer.message, name + " forbids this to viewer");
    EXPECT_FALSE(answer.maybeDone);

    answer = answerTo("503 Service Unavailable");
    EXPECT_EQ(answer.status, Status::busy);
    EXPECT_EQ(answer.message, name + " has too much to do; try again later");
    EXPECT_FALSE(answer.maybeDone);

    answer = answerTo("400 Bad Request");
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message, name + " answers with HTTP status 400: request-not-valid");
    EXPECT_FALSE(answer.maybeDone);

    answer = answerTo("500 Internal Server Error");
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_TRUE(answer.maybeDone);

    endpoint.user.clear();
    EXPECT_EQ(answerTo("401 Unauthorized").message,
              name + " wants a login; name the user in the URL or in the file of monitors");
}

TEST(Connection, AWrongPasswordIsSentOnce)
{
    const Responder server{[](const Request &) {
        return responder::http("", "401 Unauthorized", "WWW-Authenticate: Basic realm=\"cimom\"\r\n");
    }};
    Endpoint endpoint = endpointOf(server);
    endpoint.user = "admin";
    endpoint.password = "wrong";
    const std::vector<Answer> answers = Connection(endpoint, patience).exchange(enumerations(5));
    for (const Answer &answer : answers) {
        EXPECT_EQ(answer.status, Status::unauthorized);
    }
    // The second request may have left with the first one's answer.
    EXPECT_LE(server.counts().total(), 2U);
}

TEST(Connection, APortWithoutServerIsUnreachable)
{
    Endpoint endpoint;
    {
        const Responder gone{echoClass};
        endpoint = endpointOf(gone);
    }
    const std::vector<Answer> answers =
        Connection(endpoint, patience).exchange(std::vector{change(), change()});
    EXPECT_EQ(answers[0].status, Status::unreachable);
    EXPECT_EQ(answers[0].message,
              "no connection to 127.0.0.1:" + std::to_string(endpoint.port) + ": Connection refused");
    EXPECT_FALSE(answers[0].maybeDone);
    EXPECT_EQ(answers[1].status, Status::unreachable);
    EXPECT_FALSE(answers[1].maybeDone);
}

TEST(Connection, ASilentServerCostsItsTimeLimitOnce)
{
    const Responder server{[](const Request &) { return responder::silence(); }};
    const auto begin = std::chrono::steady_clock::now();
    std::vector<Operation> operations{change()};
    for (Operation &operation : enumerations(19)) {
        operations.push_back(std::move(operation));
    }
    const std::vector<Answer> answers = Connection(endpointOf(server), shortly).exchange(operations);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, shortly);
    EXPECT_EQ(answers[0].status, Status::noAnswer);
    EXPECT_EQ(answers[0].message,
              "no answer from 127.0.0.1:" + std::to_string(server.port()) + " within 0.15 s");
    EXPECT_TRUE(answers[0].maybeDone);
    for (std::size_t i = 1; i < answers.size(); ++i) {
        EXPECT_EQ(answers[i].status, Status::noAnswer);
        EXPECT_FALSE(answers[i].maybeDone);
    }
    EXPECT_EQ(server.counts().total(), 1U);
}

TEST(Connection, EachRequestHasTheWholeTimeLimit)
{
    // The third of three is silent: the first two are answered, and it gets a time limit of its own.
    const Responder server{[](const Request &request) {
        return responder::classOf(request) == "Class2" ? responder::silence() : echoClass(request);
    }};
    const std::vector<Answer> answers =
        Connection(endpointOf(server), milliseconds{3'000}).exchange(enumerations(4));
    EXPECT_TRUE(answers[0].ok());
    EXPECT_TRUE(answers[1].ok());
    EXPECT_EQ(answers[2].status, Status::noAnswer);
    EXPECT_EQ(answers[3].status, Status::noAnswer);
    EXPECT_EQ(server.counts().total(), 3U);
}

TEST(Connection, AfterASilenceTheNextExchangeConnectsAgain)
{
    std::atomic<bool> isSilent = true;
    const Responder server{[&](const Request &request) {
        return isSilent.exchange(false) ? responder::silence() : echoClass(request);
    }};
    Connection connection{endpointOf(server), milliseconds{2'000}};
    EXPECT_EQ(connection.exchange(enumerateInstances("A")).status, Status::noAnswer);
    EXPECT_TRUE(connection.exchange(enumerateInstances("A")).ok());
    EXPECT_EQ(server.counts().connections, 2U);
}

TEST(Connection, AChangeIsNeverSentTwice)
{
    // The kept connection is closed when the change has arrived: whoever sends again would change twice.
    const Responder server{[](const Request &request) {
        return request.header("CIMMethod") == "Go" ? responder::hangUp() : echoClass(request);
    }};
    Connection connection{endpointOf(server), patience};
    EXPECT_TRUE(connection.exchange(enumerateInstances("A")).ok());
    const Answer answer = connection.exchange(change());
    EXPECT_EQ(answer.status, Status::noAnswer);
    EXPECT_TRUE(answer.maybeDone);
    EXPECT_EQ(server.counts().requests.at("Go A"), 1U);
}

TEST(Connection, AReadIsSentAgainWhenTheKeptConnectionHasEnded)
{
    std::atomic<unsigned> count = 0;
    const Responder server{
        [&](const Request &request) { return ++count == 2 ? responder::hangUp() : echoClass(request); }};
    Connection connection{endpointOf(server), patience};
    EXPECT_TRUE(connection.exchange(enumerateInstances("A")).ok());
    EXPECT_TRUE(connection.exchange(enumerateInstances("A")).ok());
    EXPECT_EQ(server.counts().connections, 2U);
}

TEST(Connection, BrokenAnswersAreNamed)
{
    std::mutex mutex; // the network orders the threads, but nobody sees that
    Reply reply;
    const Responder server{[&](const Request &) {
        const std::lock_guard lock{mutex};
        return reply;
    }};
    const std::string name = "127.0.0.1:" + std::to_string(server.port());
    const auto answerTo = [&](std::string bytes, bool closes) {
        {
            const std::lock_guard lock{mutex};
            reply = {std::move(bytes), closes};
        }
        return Connection(endpointOf(server), patience).exchange(change());
    };

    Answer answer = answerTo("SSH-2.0-OpenSSH_9.2\r\n", true);
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message,
              name + " does not answer in HTTP (Received HTTP/0.9 when not allowed); is it an https: URL?");
    EXPECT_TRUE(answer.maybeDone);

    answer = answerTo("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf", true);
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message, "the answer of " + name + " is cut off");
    EXPECT_TRUE(answer.maybeDone);

    answer = answerTo(responder::http("<html/>").bytes, false);
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message, "the answer to Go cannot be understood: it has no METHODRESPONSE");

    answer = answerTo("", true);
    EXPECT_EQ(answer.status, Status::noAnswer);
    EXPECT_EQ(answer.message,
              name +
                  " closed the connection without an answer (Empty reply from server); is it an https: URL?");
    EXPECT_TRUE(answer.maybeDone);

    answer = answerTo(responder::http(std::string((16U << 20U) + 1, ' ')).bytes, false);
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message, name + " answers with more than 16 MiB");
}

TEST(Connection, ABrokenAnswerLeavesTheOthersAlone)
{
    const Responder server{[](const Request &request) {
        return responder::classOf(request) == "Class1" ? responder::http("nonsense") : echoClass(request);
    }};
    const std::vector<Answer> answers = Connection(endpointOf(server), patience).exchange(enumerations(3));
    EXPECT_TRUE(answers[0].ok());
    EXPECT_EQ(answers[1].status, Status::broken);
    EXPECT_TRUE(answers[2].ok());
}

TEST(Connection, RedirectionIsNotFollowed)
{
    const Responder other{echoClass};
    const Responder server{[&](const Request &) {
        return responder::http("", "307 Temporary Redirect",
                               "Location: http://127.0.0.1:" + std::to_string(other.port()) + "/cimom\r\n");
    }};
    const Answer answer = Connection(endpointOf(server), patience).exchange(enumerateInstances("A"));
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.code, 307);
    EXPECT_EQ(other.counts().connections, 0U);
}

TEST(Connection, AProxyOfTheEnvironmentGetsNothing)
{
    const Responder proxy{echoClass};
    const Responder server{echoClass};
    setenv("http_proxy", ("http://127.0.0.1:" + std::to_string(proxy.port())).c_str(), 1);
    EXPECT_TRUE(Connection(endpointOf(server), patience).exchange(enumerateInstances("A")).ok());
    unsetenv("http_proxy");
    EXPECT_EQ(proxy.counts().connections, 0U);
}

TEST(Connection, AServerWithoutTlsIsNamedAsSuch)
{
    const Responder server{echoClass};
    Endpoint endpoint = endpointOf(server);
    endpoint.tls = true;
    endpoint.insecure = true;
    // What arrives is no HTTP request, and the responder waits for the rest of it.
    const Answer answer = Connection(endpoint, shortly).exchange(change());
    EXPECT_EQ(answer.status, Status::unreachable);
    EXPECT_FALSE(answer.maybeDone);
}

} // namespace
} // namespace displayctl::wbem
