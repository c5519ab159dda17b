// SPDX-License-Identifier: Apache-2.0
// The HTTP server: authentication, limits, connections.
#include "test_host.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace
{

using test::Client;
using test::HttpAnswer;
using testing::HasSubstr;

const std::string namesRequest =
    test::intrinsic("EnumerateInstanceNames",
                    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_SpecialThing\"/></IPARAMVALUE>");

/** A request with that value of Authorization, or none of it. */
std::string postAs(const std::string &authorization, std::string_view body = namesRequest)
{
    std::string request =
        "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nContent-Length: " +
        std::to_string(body.size()) + "\r\n";
    if (!authorization.empty()) {
        request += "Authorization: " + authorization + "\r\n";
    }
    request += "\r\n";
    request += body;
    return request;
}

std::string basic(const std::string &user, const std::string &password)
{
    std::string value = "Basic ";
    value += test::base64(user + ":" + password);
    return value;
}

// ---------------------------------------------------------------------------------------------
// authentication

TEST(Http, AnswersWithTheRightHeaders)
{
    test::TestServer server;
    const HttpAnswer answer = server.exchange(test::post(namesRequest));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("Content-Type"), "application/xml; charset=\"utf-8\"");
    EXPECT_EQ(answer.header("CIMOperation"), "MethodResponse");
    EXPECT_THAT(answer.body, testing::StartsWith("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM "));
}

TEST(Http, AsksForCredentials)
{
    test::TestServer server;
    for (const std::string &authorization :
         {std::string(), basic("operator", "wrong"), basic("nobody", "secret: word"), basic("operator", ""),
          basic("", ""), std::string("Basic"), std::string("Basic !!!!"), std::string("Basic b3BlcmF0b3I="),
          std::string("Bearer b3BlcmF0b3I6c2VjcmV0OiB3b3Jk"), "Basic " + std::string(5000, 'A')}) {
        const HttpAnswer answer = server.exchange(postAs(authorization));
        EXPECT_EQ(answer.status, 401) << authorization;
        EXPECT_EQ(answer.header("WWW-Authenticate"), "Basic realm=\"cimom\"");
        EXPECT_EQ(answer.body, "");
    }
    EXPECT_EQ(server.exchange(postAs(basic("operator", "secret: word"))).status, 200);
}

TEST(Http, GoesOnAfterAskingForCredentials)
{
    test::TestServer server;
    Client client(server.port());
    EXPECT_EQ(client.exchange(postAs("")).status, 401);
    EXPECT_EQ(client.exchange(postAs(basic("operator", "wrong"))).status, 401);
    EXPECT_EQ(client.exchange(test::post(namesRequest)).status, 200);
    EXPECT_EQ(client.exchange(postAs("")).status, 401) << "credentials count for their request alone";
}

TEST(Http, HashesCredentialsOnce)
{
    test::TestServer server;
    Client client(server.port());
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(client.exchange(test::post(namesRequest)).status, 200);
    }
    EXPECT_EQ(server.accounts().hashCount(), 1u);
}

// ---------------------------------------------------------------------------------------- methods and
// addresses

TEST(Http, KnowsItsAddresses)
{
    test::TestServer server;
    std::string request = test::post(namesRequest);
    EXPECT_EQ(server.exchange("POST / " + request.substr(std::string("POST /cimom ").size())).status, 200);
    EXPECT_EQ(server.exchange("POST /cimom?x=y " + request.substr(std::string("POST /cimom ").size())).status,
              200);
    EXPECT_EQ(server.exchange("POST /other " + request.substr(std::string("POST /cimom ").size())).status,
              404);
    EXPECT_EQ(server.exchange("POST /cimom/x " + request.substr(std::string("POST /cimom ").size())).status,
              404);
}

TEST(Http, TakesPostAlone)
{
    test::TestServer server;
    for (const char *method : {"GET", "HEAD", "PUT", "DELETE", "OPTIONS", "TRACE"}) {
        std::string request = test::post(namesRequest);
        request.replace(0, 4, method);
        Client client(server.port());
        client.send(request);
        client.shutdownSending();
        const HttpAnswer answer = client.receive();
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_EQ(answer.header("Allow"), "POST") << method;
    }
}

TEST(Http, TellsThatMPostIsNotImplemented)
{
    test::TestServer server;
    std::string request = test::post(namesRequest);
    request.replace(0, 4, "M-POST");
    const HttpAnswer answer = server.exchange(request);
    EXPECT_EQ(answer.status, 501);
    EXPECT_EQ(answer.body, "M-POST is not implemented; use POST.");
}

TEST(Http, ShowsABrowserWhatThisIs)
{
    test::TestServer server;
    const HttpAnswer page = server.exchange("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.header("Content-Type"), "text/html; charset=utf-8");
    EXPECT_THAT(page.body, HasSubstr("<h1>This is a monitor's object manager</h1>"));
    EXPECT_THAT(page.body, HasSubstr("wbemcli ei -nl"));
    EXPECT_EQ(server.exchange("GET /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n").status, 405);
    EXPECT_EQ(server.exchange("GET /etc/passwd HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n").status, 404);
    EXPECT_EQ(server.exchange("GET /../etc/passwd HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n").status, 404);
}

TEST(Http, RefusesWhatIsNotForIt)
{
    test::TestServer server;
    const auto with = [&](const std::string &field) {
        return server.exchange(test::post(namesRequest, field + "\r\n"));
    };
    EXPECT_EQ(with("Origin: http://evil.example").status, 403);
    EXPECT_EQ(with("Origin: http://localhost").status, 200);
    EXPECT_EQ(with("Content-Length: 7").status, 400);
    EXPECT_EQ(with("Transfer-Encoding: chunked").status, 400);
    EXPECT_EQ(with("Transfer-Encoding: gzip").status, 400) << "and a length";
    EXPECT_EQ(with("Host: localhost").status, 400);
    EXPECT_EQ(with("Expect: tea").status, 417);
    std::string foreign = test::post(namesRequest);
    foreign.replace(foreign.find("localhost"), 9, "evil.test");
    const HttpAnswer answer = server.exchange(foreign);
    EXPECT_EQ(answer.status, 421);
    EXPECT_THAT(answer.body, HasSubstr("--server-name NAME"));
    EXPECT_EQ(server.exchange("POST /cimom HTTP/1.1\r\nContent-Length: 0\r\n\r\n").status, 400);
    EXPECT_EQ(
        server
            .exchange(
                "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nTransfer-Encoding: gzip\r\n\r\n")
            .status,
        501);
    std::string type = test::post(namesRequest);
    type.replace(type.find("application/xml"), 15, "application/foo");
    EXPECT_EQ(server.exchange(type).status, 415);
    type.replace(type.find("application/foo"), 15, "text/xml");
    EXPECT_EQ(server.exchange(type).status, 200);
}

/** Whoever asks for leave to send gets it after the login alone, and else reads why not. */
TEST(Http, LetsOnlyUsersGoOn)
{
    test::TestServer server;
    Client stranger(server.port());
    stranger.send(
        "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nContent-Length: 500\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(stranger.receiveBytes().substr(0, 13), "HTTP/1.1 401 ");
    Client user(server.port());
    const std::string request = test::post(namesRequest, "Expect: 100-continue\r\n");
    const std::size_t bodyStart = request.find("\r\n\r\n") + 4;
    user.send(request.substr(0, bodyStart));
    EXPECT_EQ(user.receiveBytes().substr(0, 13), "HTTP/1.1 100 ");
    user.send(request.substr(bodyStart));
    EXPECT_EQ(user.receive().status, 200);
}

// --------------------------------------------------------------------------------------------------
// connections

TEST(Http, KeepsConnections)
{
    test::TestServer server;
    Client client(server.port());
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(client.exchange(test::post(namesRequest)).status, 200);
    }
    EXPECT_EQ(server.server().connectionCount(), 1u);
}

TEST(Http, TakesRequestsThatFollowAtOnce)
{
    test::TestServer server;
    Client client(server.port());
    client.send(test::post(namesRequest) + test::post(namesRequest) + postAs(""));
    EXPECT_EQ(client.receive().status, 200);
    EXPECT_EQ(client.receive().status, 200);
    EXPECT_EQ(client.receive().status, 401);
}

TEST(Http, ClosesConnectionsWhenAsked)
{
    test::TestServer server;
    Client client(server.port());
    EXPECT_EQ(client.exchange(test::post(namesRequest, "Connection: close\r\n")).status, 200);
    EXPECT_TRUE(client.closed());
    Client old(server.port());
    std::string request = test::post(namesRequest);
    request.replace(request.find("HTTP/1.1"), 8, "HTTP/1.0");
    EXPECT_EQ(old.exchange(request).status, 200);
    EXPECT_TRUE(old.closed());
}

TEST(Http, ContinuesOnExpectation)
{
    test::TestServer server;
    Client client(server.port());
    std::string request = test::post(namesRequest, "Expect: 100-continue\r\n");
    const std::size_t bodyStart = request.find("\r\n\r\n") + 4;
    client.send(request.substr(0, bodyStart));
    client.send(request.substr(bodyStart));
    EXPECT_EQ(client.receive().status, 200);
}

TEST(Http, TakesChunkedBodies)
{
    test::TestServer server;
    Client client(server.port());
    std::string request =
        "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nTransfer-Encoding: chunked\r\nTE: trailers\r\n"
        "Authorization: " +
        basic("operator", "secret: word") + "\r\n\r\n";
    for (std::size_t i = 0; i < namesRequest.size(); i += 100) {
        const std::string chunk = namesRequest.substr(i, 100);
        char size[16];
        std::snprintf(size, sizeof size, "%zx\r\n", chunk.size());
        request += size + chunk + "\r\n";
    }
    request += "0\r\n\r\n";
    EXPECT_EQ(client.exchange(request).status, 200);
    EXPECT_EQ(client.exchange(test::post(namesRequest)).status, 200);
}

TEST(Http, TakesBodiesByteByByte)
{
    test::TestServer server;
    Client client(server.port());
    for (const char byte : test::post(namesRequest)) {
        ASSERT_TRUE(client.send({&byte, 1}));
    }
    EXPECT_EQ(client.receive().status, 200);
}

// -------------------------------------------------------------------------------------------------------
// limits

TEST(Http, RefusesLargeBodies)
{
    host::HttpLimits limits;
    limits.bodyBytes = 2000;
    test::TestServer server(limits);
    Client atOnce(server.port());
    // The length alone is reason enough.
    atOnce.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nAuthorization: " +
                basic("operator", "secret: word") + "\r\nContent-Length: 2001\r\n\r\n");
    EXPECT_EQ(atOnce.receive().status, 413);
    EXPECT_TRUE(atOnce.closed());
    EXPECT_EQ(server.exchange(test::post(namesRequest + std::string(2000 - namesRequest.size(), ' '))).status,
              200);
    EXPECT_EQ(
        server.exchange(
                  "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nContent-Length: "
                  "99999999999999999999999\r\n\r\n")
                .status /
            100,
        4);
}

TEST(Http, RefusesLargeChunkedBodies)
{
    host::HttpLimits limits;
    limits.bodyBytes = 2000;
    test::TestServer server(limits);
    const std::string head =
        "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nTransfer-Encoding: chunked\r\n"
        "Authorization: " +
        basic("operator", "secret: word") + "\r\n\r\n";
    std::string chunk = "3e8\r\n" + std::string(1000, 'x') + "\r\n";
    Client client(server.port());
    client.send(head + chunk + chunk + chunk + "0\r\n\r\n");
    EXPECT_EQ(client.receive().status, 413);
    Client endless(server.port());
    endless.send(head);
    for (int i = 0; i < 100000 && endless.send(chunk); ++i) {
    }
    EXPECT_TRUE(endless.closed()) << "a body without end is cut off";
}

TEST(Http, RefusesLargeHeaders)
{
    host::HttpLimits limits;
    limits.headerBytes = 8 * 1024;
    test::TestServer server(limits);
    Client client(server.port());
    client.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nX: " +
                std::string(100000, 'x') + "\r\n\r\n");
    const HttpAnswer answer = client.receive();
    EXPECT_TRUE(answer.status == 431 || answer.status == 0) << answer.status;
    EXPECT_TRUE(client.closed());
    EXPECT_EQ(server.exchange(test::post(namesRequest)).status, 200);
}

/** What is made of a body counts as well: it is many times as large when it has many small elements. */
TEST(Http, WhatIsMadeOfABodyIsPaidFor)
{
    std::string values;
    for (int i = 0; i < 8000; ++i) {
        values += "<VALUE>1</VALUE>";
    }
    const std::string request = test::post(test::methodCall(
        1, "Echo", "<PARAMVALUE NAME=\"none\"><VALUE.ARRAY>" + values + "</VALUE.ARRAY></PARAMVALUE>"));
    {
        test::TestServer server;
        EXPECT_EQ(server.exchange(request).status, 200);
    }
    host::HttpLimits limits;
    limits.requestMemory = std::size_t{256} * 1024; // the body has 136 kB
    {
        test::TestServer server(limits);
        const HttpAnswer answer = server.exchange(request);
        EXPECT_EQ(answer.status, 413) << "later would not help";
        EXPECT_EQ(answer.header("Retry-After"), "");
        EXPECT_EQ(server.exchange(test::post(namesRequest)).status, 200);
    }
    limits.memory = limits.requestMemory;
    limits.requestMemory = std::size_t{8} * 1024 * 1024;
    test::TestServer server(limits);
    const HttpAnswer answer = server.exchange(request);
    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(answer.header("Retry-After"), "1");
    // What a request had is there for others soon after its answer was sent.
    while (server.exchange(test::post(namesRequest)).status == 503) {
        std::this_thread::yield();
    }
    EXPECT_EQ(server.exchange(test::post("nonsense")).status, 400);
    // One whose body alone is too much is read to its end, or the answer would be lost with the connection.
    for (int i = 0; i < 20; ++i) {
        const HttpAnswer refusal = server.exchange(test::post(std::string(900000, ' ')));
        EXPECT_EQ(refusal.status, 503);
        EXPECT_EQ(refusal.header("Retry-After"), "1");
    }
}

/** An array argument of so many elements, each of so many letters. */
std::string arrayCall(int elements, std::size_t letters)
{
    std::string values;
    for (int i = 0; i < elements; ++i) {
        values += "<VALUE>" + std::string(letters, 'x') + "</VALUE>";
    }
    return test::methodCall(
        1, "Echo", "<PARAMVALUE NAME=\"none\"><VALUE.ARRAY>" + values + "</VALUE.ARRAY></PARAMVALUE>");
}

/** What is to blame is told by the answer, though all is given back by then. */
TEST(Http, WhoWantsTooMuchIsToldSoAndNotToComeAgain)
{
    constexpr const char *tooMuch =
        "The request needs more memory than one request may use; ask for less at once.";
    const std::string request = arrayCall(200, 500); // 100 kB of text
    // Each limit is met at another step: the body, the parsed document, the values, the answer.
    std::vector<int> statuses;
    for (std::size_t kilobytes = 16; kilobytes <= 1024; kilobytes += 16) {
        host::HttpLimits limits;
        limits.requestMemory = kilobytes * 1024;
        test::TestServer server(limits);
        const HttpAnswer answer = server.exchange(test::post(request));
        statuses.push_back(answer.status);
        EXPECT_EQ(answer.header("Retry-After"), "") << kilobytes;
        if (answer.status == 413) {
            EXPECT_EQ(answer.body, tooMuch) << kilobytes;
        } else {
            EXPECT_EQ(answer.status, 200) << kilobytes;
        }
    }
    EXPECT_EQ(statuses.front(), 413);
    EXPECT_EQ(statuses.back(), 200);
    EXPECT_TRUE(std::is_sorted(statuses.rbegin(), statuses.rend())) << "what has once fitted fits with more";
}

/** Chunks tell nobody beforehand how many there will be. */
TEST(Http, ABodyWithoutALengthIsPaidForAsItGrows)
{
    host::HttpLimits limits;
    limits.requestMemory = 20000;
    test::TestServer server(limits);
    Client client(server.port());
    client.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\n"
                "Transfer-Encoding: chunked\r\nAuthorization: " +
                basic("operator", "secret: word") + "\r\n\r\n");
    const std::string chunk = "2710\r\n" + std::string(10000, ' ') + "\r\n";
    client.send(chunk + chunk + chunk + "0\r\n\r\n");
    EXPECT_EQ(client.receive().status, 413);
}

/** A front end that is at a loss, in one way or another. */
class ThrowingFrontEnd final : public host::FrontEnd
{
  public:
    bool serves(std::string_view path) const override
    {
        return path == "/throw";
    }

    bool takes(std::string_view) const override
    {
        return true;
    }

    host::HttpReply handle(const host::HttpRequest &request, host::TextBuffer &out) override
    {
        out.append("half an answer");
        if (request.body == "number") {
            throw 42;
        }
        if (request.body == "memory") {
            throw std::bad_alloc();
        }
        throw std::runtime_error("at a loss");
    }
};

TEST(Http, AnExceptionEndsTheRequestAndNotTheProcess)
{
    const test::TemporaryDirectory directory;
    test::writeFile(directory.file("accounts"), test::quickAccount(test::userName, test::userPassword));
    host::Accounts accounts(directory.file("accounts"));
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    ThrowingFrontEnd frontEnd;
    host::HttpServer server(accounts, {&frontEnd});
    ASSERT_TRUE(server.start({}, problem)) << problem;
    testing::internal::CaptureStderr();
    const auto send = [&server](const char *body) {
        std::string request = test::post(body);
        request.replace(request.find("/cimom"), 6, "/throw");
        Client client(server.endpoints().front().port);
        return client.exchange(request);
    };
    for (const char *body : {"exception", "number"}) {
        const HttpAnswer answer = send(body);
        EXPECT_EQ(answer.status, 500) << body;
        EXPECT_EQ(answer.header("Connection"), "close");
        EXPECT_EQ(answer.body, "");
    }
    const HttpAnswer later = send("memory"); // the machine has no more, for now
    EXPECT_EQ(later.status, 503);
    EXPECT_EQ(later.header("Retry-After"), "1");
    EXPECT_EQ(later.body, "");
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("a request of operator ended with an exception: at a loss\n"));
    EXPECT_THAT(log, HasSubstr("a request of operator ended with an exception\n"));
}

/** What a provider throws goes the same way; the next request finds the provider's turn free. */
TEST(Http, AProviderThatThrowsEndsItsRequestAlone)
{
    test::TestServer server;
    for (const char *what : {"throw an exception", "throw a number"}) {
        testing::internal::CaptureStderr();
        const HttpAnswer answer = server.exchange(test::post(test::methodCall(
            1, "Fail",
            std::string(
                "<PARAMVALUE NAME=\"code\"><VALUE>1</VALUE></PARAMVALUE><PARAMVALUE NAME=\"message\"><VALUE>") +
                what + "</VALUE></PARAMVALUE>")));
        EXPECT_EQ(answer.status, 500) << what;
        EXPECT_THAT(testing::internal::GetCapturedStderr(),
                    HasSubstr("a request of operator ended with an exception"));
        EXPECT_EQ(server.exchange(test::post(arrayCall(1, 1))).status, 200);
    }
}

TEST(Http, ClosesTheLongestIdleConnectionForANewcomer)
{
    host::HttpLimits limits;
    limits.total = 3;
    test::TestServer server(limits);
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 4; ++i) {
        clients.push_back(std::make_unique<Client>(server.port()));
        EXPECT_EQ(clients.back()->exchange(test::post(namesRequest)).status, 200) << i;
    }
    EXPECT_TRUE(clients[0]->closed());
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(clients[i]->exchange(test::post(namesRequest)).status, 200) << i;
    }
}

/** Sockets that are opened and left alone, or that send a byte now and then, are no reason to wait: a
 * newcomer gets the place of one of them at once. No limit of time helps here, the shortest is an hour. */
TEST(Http, IdleAndSlowSocketsKeepNobodyOut)
{
    host::HttpLimits limits;
    limits.login = limits.transfer = std::chrono::hours(1);
    limits.idle = std::chrono::hours(1);
    test::TestServer server(limits);
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 100; ++i) {
        idle.push_back(std::make_unique<Client>(server.port()));
        if (i % 2 == 1) {
            idle.back()->send("POST /cimom HTTP/1.1\r\nHost: loc");
        }
    }
    for (int i = 0; i < 20; ++i) {
        Client client(server.port());
        EXPECT_EQ(client.exchange(test::post(namesRequest)).status, 200) << i;
        for (auto &each : idle) {
            each->send("a");
        }
    }
}

TEST(Http, EndsConnectionsWithoutALogin)
{
    host::HttpLimits limits;
    limits.login = std::chrono::milliseconds(300);
    test::TestServer server(limits);
    Client wrong(server.port());
    EXPECT_EQ(wrong.exchange(postAs("")).status, 401);
    Client good(server.port());
    EXPECT_EQ(good.exchange(test::post(namesRequest)).status, 200);
    EXPECT_TRUE(wrong.closed());
    EXPECT_EQ(good.exchange(test::post(namesRequest)).status, 200) << "who has logged in stays";
}

TEST(Http, EndsSilentConnections)
{
    host::HttpLimits limits;
    limits.idle = std::chrono::seconds(1);
    test::TestServer server(limits);
    Client silent(server.port());
    EXPECT_TRUE(silent.closed());
    Client half(server.port());
    half.send("POST /cimom HTTP/1.1\r\nHost: loc");
    EXPECT_TRUE(half.closed());
}

TEST(Http, EndsSlowConnections)
{
    host::HttpLimits limits;
    limits.transfer = std::chrono::milliseconds(300);
    test::TestServer server(limits);
    const auto start = std::chrono::steady_clock::now();
    Client slow(server.port());
    // A byte now and then keeps the connection from being silent, and does not help. The last one never
    // comes.
    const std::string request = test::post(namesRequest);
    for (const char byte : request.substr(0, request.size() - 1)) {
        if (!slow.send({&byte, 1}) || slow.closed(0)) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(slow.closed(60));
    EXPECT_GE(std::chrono::steady_clock::now() - start, limits.transfer) << "but not before its time";
    EXPECT_EQ(server.exchange(test::post(namesRequest)).status, 200);
}

TEST(Http, WaitsForAProviderAsLongAsItTakes)
{
    host::HttpLimits limits;
    limits.transfer = std::chrono::milliseconds(200);
    test::TestServer server(limits);
    const HttpAnswer answer = server.exchange(
        test::post(test::methodCall(1, "Nap", "<PARAMVALUE NAME=\"ms\"><VALUE>900</VALUE></PARAMVALUE>")));
    EXPECT_EQ(answer.status, 200);
    EXPECT_THAT(answer.body, HasSubstr("<RETURNVALUE PARAMTYPE=\"uint32\">"));
}

// --------------------------------------------------------------------------------------------------
// concurrency

TEST(Http, ServesManyConnectionsAtOnceAndOneProviderCallAtATime)
{
    test::TestServer server;
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 20; ++i) {
        threads.emplace_back([&server, &good, i] {
            Client client(server.port());
            for (int j = 0; j < 10; ++j) {
                const std::string body =
                    j % 5 == 0
                        ? test::methodCall(i % 7, "Nap",
                                           "<PARAMVALUE NAME=\"ms\"><VALUE>3</VALUE></PARAMVALUE>")
                        : test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" +
                                                             test::thingName(i % 7) + "</IPARAMVALUE>");
                const HttpAnswer answer = client.exchange(test::post(body));
                const std::string expected =
                    j % 5 == 0 ? "<VALUE>0</VALUE>" : "<VALUE>label-" + std::to_string(i % 7) + "</VALUE>";
                good += answer.status == 200 && answer.body.find(expected) != std::string::npos ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 200);
    const HttpAnswer most = server.exchange(test::post(
        test::methodCall(1, "Relay", "<PARAMVALUE NAME=\"what\"><VALUE>most</VALUE></PARAMVALUE>")));
    EXPECT_THAT(most.body, HasSubstr("<PARAMVALUE NAME=\"info\" PARAMTYPE=\"string\">\n<VALUE>1</VALUE>"));
}

TEST(Http, ForgetsConnectionsThatHaveGone)
{
    test::TestServer server;
    for (int i = 0; i < 30; ++i) {
        Client client(server.port());
        client.send(test::post(namesRequest).substr(0, static_cast<std::size_t>(i) * 20));
    }
    for (int i = 0; i < 2000 && server.server().connectionCount() != 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(server.server().connectionCount(), 0u);
}

TEST(Http, SaysWhyItCannotListen)
{
    test::TestServer server;
    host::HttpServer second(server.accounts(), {});
    std::string problem;
    EXPECT_FALSE(second.start({"127.0.0.1", server.port()}, problem));
    EXPECT_EQ(problem, "cannot listen on 127.0.0.1 port " + std::to_string(server.port()) +
                           ": another program is listening there");
    EXPECT_FALSE(second.start({"localhost"}, problem));
    EXPECT_THAT(problem, HasSubstr("the address localhost is not a numeric IP address"));
    EXPECT_FALSE(second.start({"192.0.2.1"}, problem));
    EXPECT_THAT(problem, HasSubstr("cannot listen on 192.0.2.1 port 0: "));
}

TEST(Http, ListensOnIpv6)
{
    test::TestServer server;
    host::HttpServer second(server.accounts(), {});
    std::string problem;
    if (second.start({"::1"}, problem)) {
        EXPECT_NE(second.endpoints().front().port, 0);
    } else {
        EXPECT_THAT(problem, HasSubstr("::1 port 0: ")) << "this machine has no IPv6";
    }
}

} // namespace
