// SPDX-License-Identifier: Apache-2.0
// WS-Management: recorded requests of two clients, replayed, and the answers they need.
#include "wsman/wsman_client.h"

#include <gmock/gmock.h>

namespace
{

using test::Client;
using test::FaultSeen;
using test::HttpAnswer;
using testing::HasSubstr;

/** A recorded request, and the pull that the client goes on with; null: none. */
struct Recording {
    const char *request;
    const char *pull = nullptr;
};

void PrintTo(const Recording &recording, std::ostream *stream)
{
    *stream << recording.request;
}

class WsmanReplay : public testing::TestWithParam<Recording>
{
};

/** The text with the name of this host replaced, so that answers are the same everywhere. */
std::string withoutHostName(std::string text, host::ObjectManager &manager)
{
    const std::string name = ">" + manager.dispatcher().hostName() + "<";
    const std::string standIn = ">this-host<";
    for (std::size_t place = text.find(name); place != std::string::npos;
         place = text.find(name, place + 1)) {
        text.replace(place, name.size(), standIn);
    }
    return text;
}

/** All answers, one after the other. */
std::string exchangeAll(test::TestServer &server, const Recording &recording)
{
    Client client(server.port());
    HttpAnswer answer = client.exchange(test::recordedWsman(recording.request));
    std::string all = test::withoutIds(answer.body);
    // As the clients do: for as long as an answer names a context.
    for (std::string context = test::textOf(answer.body, "wsen:EnumerationContext");
         recording.pull != nullptr && !context.empty();
         context = test::textOf(answer.body, "wsen:EnumerationContext")) {
        answer = client.exchange(test::recordedWsman(recording.pull, context));
        EXPECT_EQ(answer.status, 200) << answer.body;
        all += test::withoutIds(answer.body);
    }
    return withoutHostName(all, server.manager());
}

TEST_P(WsmanReplay, IsAnsweredToTheByte)
{
    test::TestServer server;
    const std::string answers = exchangeAll(server, GetParam());
    std::string name = GetParam().request;
    name.replace(name.find('/'), 1, "-");
    EXPECT_EQ(answers, test::readData("answers/" + name + ".xml"));
}

std::string nameOf(const testing::TestParamInfo<Recording> &info)
{
    std::string name = info.param.request;
    for (char &c : name) {
        if (c == '-' || c == '/' || c == '.') {
            c = '_';
        }
    }
    return name;
}

constexpr const char *pullRequest = "ws-command-line/enumerate-instances.4";
constexpr const char *pull20Request = "ws-command-line/associators.4";
constexpr const char *scriptPullRequest = "ws-scripts/enumerate-instances.3";

constexpr Recording recordings[] = {
    {"ws-command-line/associators", pull20Request},
    {"ws-command-line/associators-epr", pull20Request},
    {"ws-command-line/associators-filtered", pull20Request},
    {"ws-command-line/create"},
    {"ws-command-line/delete"},
    {"ws-command-line/enumerate-class-names"},
    {"ws-command-line/enumerate-count", pullRequest},
    {"ws-command-line/enumerate-instances", pullRequest},
    {"ws-command-line/enumerate-instances-optimized"},
    {"ws-command-line/enumerate-instances-max3", pull20Request},
    {"ws-command-line/enumerate-names-epr", pullRequest},
    {"ws-command-line/enumerate-names-superclass-epr", pullRequest},
    {"ws-command-line/enumerate-namespace", pullRequest},
    {"ws-command-line/enumerate-objepr", pullRequest},
    {"ws-command-line/enumerate-selector-filter", pullRequest},
    {"ws-command-line/enumerate-superclass-exclude", pull20Request},
    {"ws-command-line/enumerate-superclass-include", pull20Request},
    {"ws-command-line/enumerate-wql", pull20Request},
    {"ws-command-line/error-bad-context"},
    {"ws-command-line/error-invalid-class"},
    {"ws-command-line/error-missing-selectors"},
    {"ws-command-line/error-not-found"},
    {"ws-command-line/get"},
    {"ws-command-line/get-class"},
    {"ws-command-line/get-fragment"},
    {"ws-command-line/get-namespace"},
    {"ws-command-line/get-unmapped-uri"},
    {"ws-command-line/get-via-superclass"},
    {"ws-command-line/identify"},
    {"ws-command-line/invoke-error"},
    {"ws-command-line/invoke-noargs"},
    {"ws-command-line/invoke-reference"},
    {"ws-command-line/invoke-static-class"},
    {"ws-command-line/invoke-string"},
    {"ws-command-line/invoke-string-special"},
    {"ws-command-line/invoke-types-file"},
    {"ws-command-line/invoke-types-k"},
    {"ws-command-line/invoke-unknown-method"},
    {"ws-command-line/put"},
    {"ws-command-line/put.4"},
    {"ws-command-line/put-file"},
    {"ws-command-line/put-fragment"},
    {"ws-command-line/references", pull20Request},
    {"ws-command-line/references-epr", pull20Request},
    {"ws-scripts/enumerate-class-names"},
    {"ws-scripts/enumerate-cql", scriptPullRequest},
    {"ws-scripts/enumerate-instances", scriptPullRequest},
    {"ws-scripts/enumerate-instances-optimized", scriptPullRequest},
    {"ws-scripts/enumerate-names-epr", scriptPullRequest},
    {"ws-scripts/enumerate-namespace", scriptPullRequest},
    {"ws-scripts/enumerate-objepr", scriptPullRequest},
    {"ws-scripts/enumerate-superclass", scriptPullRequest},
    {"ws-scripts/error-invalid-class"},
    {"ws-scripts/get"},
    {"ws-scripts/identify"},
    {"ws-scripts/invoke-reference"},
    {"ws-scripts/invoke-string"},
    {"ws-scripts/invoke-string-inst"},
    {"ws-scripts/invoke-string-spaces"},
    {"ws-scripts/invoke-types"},
    {"ws-scripts/invoke-string-optimized"},
    {"ws-scripts/put"},
    {"ws-scripts/put.1"},
    {"ws-scripts/put.2"},
};

INSTANTIATE_TEST_SUITE_P(Recorded, WsmanReplay, testing::ValuesIn(recordings), nameOf);

TEST(WsmanReplayed, CredentialsAreAskedForOnAConnectionThatStaysOpen)
{
    test::TestServer server;
    Client client(server.port());
    const HttpAnswer refused = client.exchange(test::readData("recorded/ws-command-line/get.http"));
    EXPECT_EQ(refused.status, 401);
    EXPECT_THAT(refused.header("WWW-Authenticate"), HasSubstr("Basic realm=\""));
    EXPECT_NE(refused.header("Connection"), "close");
    const HttpAnswer answer = client.exchange(test::recordedWsman("ws-command-line/get"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(test::textOf(test::withOnePrefix(answer.body), "p:DeviceID"), "thing3");
    EXPECT_EQ(answer.header("Content-Type"), "application/soap+xml;charset=UTF-8");
}

TEST(WsmanReplayed, WhatWasGotIsPutWithOneChange)
{
    // The command-line client changes a property of what it got and puts the whole back.
    test::TestServer server;
    Client client(server.port());
    const std::string got = client.exchange(test::recordedWsman("ws-command-line/get")).body;
    std::string object = test::textOf(test::withOnePrefix(got), "s:Body");
    const std::size_t label = object.find("label-3");
    ASSERT_NE(label, std::string::npos);
    object.replace(label, 7, "from put");
    object.insert(object.find('>'), std::string(" xmlns:p=\"") + test::thingUri +
                                        "\" xmlns:cim=\"http://schemas.dmtf.org/wbem/wscim/1/common\"");
    const HttpAnswer put = client.exchange(test::postWsman(test::envelope(
        std::string(test::transfer) + "Put", test::thingUri, test::thingSelectors(3), object)));
    EXPECT_EQ(put.status, 200) << put.body;
    EXPECT_EQ(test::textOf(test::withOnePrefix(put.body), "p:Label"), "from put");
    const std::string after = client.exchange(test::recordedWsman("ws-command-line/get")).body;
    EXPECT_EQ(test::textOf(test::withOnePrefix(after), "p:Label"), "from put");
}

} // namespace
