// SPDX-License-Identifier: Apache-2.0
// The server of the screen: which requests it answers, how it refuses the others, who may watch and change.
#include "desk_fixture.h"
#include "http_client.h"

#include "screen/page.h"
#include "screen/server.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <regex>
#include <sys/resource.h>
#include <thread>
#include <vector>

using desk::screen::Server;

namespace
{

constexpr const char *token = "00112233445566778899aabbccddeeff";

class ScreenServer : public DeskTest
{
  public:
    void SetUp() override
    {
        DeskTest::SetUp();
        start(32);
    }

    void TearDown() override
    {
        server.reset();
        DeskTest::TearDown();
    }

    void start(std::size_t watchers, std::chrono::milliseconds period = std::chrono::milliseconds(10))
    {
        server.reset();
        server =
            std::make_unique<Server>(Server::Options{0, token, "1.2.3", {store, queueKey, period}, watchers});
        here = "127.0.0.1:" + std::to_string(server->port());
    }

    /* The answer to a request that is sent as it is. */
    std::string ask(const std::string &request)
    {
        RawConnection connection(server->port());
        connection.send(request);
        return connection.readAll();
    }
    std::string get(const std::string &path, const std::string &fields = "")
    {
        return ask("GET " + path + " HTTP/1.1\r\nHost: " + here + "\r\nConnection: close\r\n" + fields +
                   "\r\n");
    }
    std::string post(const std::string &body, const std::string &fields)
    {
        return ask("POST /change HTTP/1.1\r\nHost: " + here + "\r\nConnection: close\r\nContent-Length: " +
                   std::to_string(body.size()) + "\r\n" + fields + "\r\n" + body);
    }
    std::string change(const std::string &body)
    {
        return post(body, std::string("Content-Type: application/json\r\nX-Desk-Token: ") + token + "\r\n");
    }
    std::string shown(const std::string &setting)
    {
        EXPECT_EQ(command("show " + setting), 0);
        return commandOutput.substr(0, commandOutput.find('\n'));
    }
    /* State and argument of a fault, as desk-monitor tells them. */
    std::string fault(const std::string &name)
    {
        EXPECT_EQ(command("show faults"), 0);
        std::smatch found;
        return std::regex_search(commandOutput, found, std::regex(name + " +(off|on [^ ]*)")) ? found[1].str()
                                                                                              : "";
    }
    std::string watchRequest() const
    {
        return "GET /events HTTP/1.1\r\nHost: " + here + "\r\n\r\n";
    }

    std::unique_ptr<Server> server;
    std::string here;
};

int statusOf(const std::string &answer)
{
    return answer.starts_with("HTTP/1.1 ") ? std::stoi(answer.substr(9, 3)) : 0;
}

std::string bodyOf(const std::string &answer)
{
    const std::size_t end = answer.find("\r\n\r\n");
    return end == answer.npos ? std::string() : answer.substr(end + 4);
}

bool hasField(const std::string &answer, const std::string &field)
{
    return answer.substr(0, answer.find("\r\n\r\n")).find("\r\n" + field) != std::string::npos;
}

} // namespace

// ---- the page ----

TEST_F(ScreenServer, GivesThePageUnderAStrictPolicy)
{
    const std::string answer = get("/");
    EXPECT_EQ(statusOf(answer), 200);
    EXPECT_TRUE(hasField(answer, "Content-Type: text/html; charset=utf-8"));
    EXPECT_TRUE(hasField(answer,
                         "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
                         "img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
                         "frame-ancestors 'none'; require-trusted-types-for 'script'; trusted-types 'none'"));
    EXPECT_TRUE(hasField(answer, "X-Content-Type-Options: nosniff"));
    EXPECT_TRUE(hasField(answer, "Cross-Origin-Resource-Policy: same-origin"));
    EXPECT_TRUE(bodyOf(answer).starts_with("<!DOCTYPE html>"));
    EXPECT_EQ(answer.find(token), answer.npos) << "the token is not for everybody who can read";
}

TEST_F(ScreenServer, HasAllThatThePageAsksFor)
{
    // In the page and in its modules: what is named is there, and none of it is on another server.
    std::size_t names = 0;
    for (const desk::screen::PageFile &file : desk::screen::pageFiles()) {
        const std::string text(file.bytes.begin(), file.bytes.end());
        EXPECT_EQ(statusOf(get(std::string(file.path))), 200) << file.path;
        const std::regex name(R"((?:src|href|from) ?=? ?['"]([^'"#]+)['"])");
        for (std::sregex_iterator at(text.begin(), text.end(), name), end; at != end; ++at) {
            const std::string target = (*at)[1];
            if (target.starts_with("http://www.w3.org/")) {
                continue; // a name, not a place
            }
            ++names;
            const std::string path = target.substr(target.find_last_of('/') + 1);
            EXPECT_EQ(target.find("//"), target.npos) << file.path << " names " << target;
            EXPECT_EQ(statusOf(get("/" + path)), 200) << file.path << " names " << target;
        }
        EXPECT_EQ(text.find("innerHTML"), text.npos) << file.path;
    }
    EXPECT_GE(names, 3u);
}

TEST_F(ScreenServer, TellsItsModel)
{
    const auto model = nlohmann::json::parse(bodyOf(get("/model.json")));
    EXPECT_EQ(model["version"], "1.2.3");
    EXPECT_EQ(model["registers"]["0"], "LUMINANCE");
    EXPECT_EQ(model["registers"]["171"], "TEST_PATTERN_DISABLE");
    EXPECT_EQ(model["groups"]["15"], "TEST_PATTERN_ID");
    EXPECT_EQ(model["commands"]["3"], "PROCESS_SET_REQUEST");
    EXPECT_EQ(model["sources"]["7"], "WSMAN");
    EXPECT_EQ(model["settings"]["bezel_button_brightness"], nlohmann::json({{"register", 121},
                                                                            {"group", 8},
                                                                            {"writable", true},
                                                                            {"minimum", 0},
                                                                            {"maximum", 20},
                                                                            {"step", 2}}));
    EXPECT_EQ(model["actions"].size(), 17u);
    EXPECT_EQ(model["faults"].size(), 10u);
}

TEST_F(ScreenServer, AnswersHeadWithoutABody)
{
    const std::string answer = ask("HEAD / HTTP/1.1\r\nHost: " + here + "\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(statusOf(answer), 200);
    EXPECT_EQ(bodyOf(answer), "");
}

// ---- requests that are refused ----

TEST_F(ScreenServer, RefusesAnotherHost)
{
    for (const char *host :
         {"evil.example", "127.0.0.1", "127.0.0.1:1", "localhost.evil.example:80", "[::1]:80", ""}) {
        const std::string answer =
            ask(std::string("GET / HTTP/1.1\r\nConnection: close\r\nHost: ") + host + "\r\n\r\n");
        EXPECT_EQ(statusOf(answer), 421) << host;
        EXPECT_EQ(bodyOf(answer), "This server is " + here + "; the header Host names another one.\n");
    }
    const std::string local = "LocalHost:" + std::to_string(server->port());
    EXPECT_EQ(statusOf(ask("GET / HTTP/1.1\r\nConnection: close\r\nHost: " + local + "\r\n\r\n")), 200);
}

TEST_F(ScreenServer, RefusesNoHostAndTwo)
{
    EXPECT_EQ(statusOf(ask("GET / HTTP/1.1\r\nConnection: close\r\n\r\n")), 400);
    EXPECT_EQ(statusOf(ask("GET / HTTP/1.0\r\n\r\n")), 400);
    EXPECT_EQ(statusOf(get("/", "Host: " + here + "\r\n")), 400);
}

TEST_F(ScreenServer, RefusesPagesOfOtherServers)
{
    for (const char *path : {"/", "/events", "/model.json"}) {
        EXPECT_EQ(statusOf(get(path, "Origin: http://evil.example\r\n")), 403) << path;
        EXPECT_EQ(statusOf(get(path, "Origin: null\r\n")), 403) << path;
        EXPECT_EQ(statusOf(get(path, "Origin: https://" + here + "\r\n")), 403) << path;
    }
    EXPECT_EQ(statusOf(get("/", "Origin: http://" + here + "\r\n")), 200);
    const std::string fields =
        std::string("Content-Type: application/json\r\nX-Desk-Token: ") + token + "\r\n";
    EXPECT_EQ(statusOf(post(R"({"power": false})", fields + "Origin: http://127.0.0.1:1\r\n")), 403);
    EXPECT_EQ(shown("soft_power_state"), "1");
}

TEST_F(ScreenServer, RefusesPathsAndMethodsThatItDoesNotHave)
{
    for (const char *path : {"/nothing", "/..", "/../etc/passwd", "/%2e%2e/etc/passwd", "/index.html/", "//",
                             "/change/", "/page/index.html"}) {
        EXPECT_EQ(statusOf(get(path)), 404) << path;
    }
    const auto with = [&](const std::string &method, const std::string &path) {
        return ask(method + " " + path + " HTTP/1.1\r\nHost: " + here +
                   "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
    };
    EXPECT_EQ(statusOf(with("GET", "/change")), 405);
    EXPECT_TRUE(hasField(with("GET", "/change"), "Allow: POST"));
    EXPECT_EQ(statusOf(with("POST", "/")), 405);
    EXPECT_TRUE(hasField(with("POST", "/"), "Allow: GET, HEAD"));
    EXPECT_EQ(statusOf(with("POST", "/events")), 405);
    EXPECT_EQ(statusOf(with("DELETE", "/index.html")), 405);
    EXPECT_EQ(statusOf(with("OPTIONS", "/change")), 405) << "no page of another server may ask for leave";
}

TEST_F(ScreenServer, SurvivesWhatIsNoRequest)
{
    const std::string longName(100'000, 'a');
    for (const std::string &bytes :
         {std::string("\r\n\r\n"), std::string(1000, '\0'), std::string("GET\r\n\r\n"),
          std::string("\x16\x03\x01\x02\x00\x01"),
          "GET /" + longName + " HTTP/1.1\r\nHost: " + here + "\r\n\r\n",
          "GET / HTTP/1.1\r\nHost: " + here + "\r\nX-Long: " + longName + "\r\n\r\n"}) {
        RawConnection connection(server->port());
        connection.send(bytes);
    }
    EXPECT_GE(statusOf(ask("GET /" + longName + " HTTP/1.1\r\nHost: " + here + "\r\n\r\n")), 400);
    EXPECT_EQ(statusOf(get("/")), 200);
}

// ---- changes ----

TEST_F(ScreenServer, ChangesWithTheTokenAlone)
{
    const std::string body = R"({"power": false})";
    const std::string type = "Content-Type: application/json\r\n";
    EXPECT_EQ(statusOf(post(body, type)), 403);
    EXPECT_EQ(statusOf(post(body, type + "X-Desk-Token: \r\n")), 403);
    EXPECT_EQ(statusOf(post(body, type + "X-Desk-Token: 00112233445566778899aabbccddeefe\r\n")), 403);
    EXPECT_EQ(statusOf(post(body, type + "X-Desk-Token: 00112233445566778899aabbccddeeff0\r\n")), 403);
    const std::string right = std::string("X-Desk-Token: ") + token + "\r\n";
    EXPECT_EQ(statusOf(post(body, type + right + right)), 403);
    EXPECT_EQ(shown("soft_power_state"), "1");
    EXPECT_EQ(statusOf(post(body, type + right)), 200);
    EXPECT_EQ(shown("soft_power_state"), "0");
}

TEST_F(ScreenServer, ChangesOfJsonAlone)
{
    const std::string right = std::string("X-Desk-Token: ") + token + "\r\n";
    EXPECT_EQ(statusOf(post("{}", right)), 415);
    EXPECT_EQ(statusOf(post("{}", right + "Content-Type: text/plain\r\n")), 415)
        << "a form of any page could send that";
    EXPECT_EQ(
        statusOf(post(R"({"power": true})", right + "Content-Type: Application/JSON; charset=utf-8\r\n")),
        200);
}

TEST_F(ScreenServer, RefusesLongBodiesAndThoseWithoutALength)
{
    const std::string fields =
        std::string("Content-Type: application/json\r\nX-Desk-Token: ") + token + "\r\n";
    const std::string head = "POST /change HTTP/1.1\r\nHost: " + here + "\r\nConnection: close\r\n" + fields;
    EXPECT_EQ(statusOf(change(R"({"power": false, "why": ")" + std::string(4096, ' ') + "\"}")), 413);
    EXPECT_EQ(statusOf(ask(head + "Content-Length: 18446744073709551616\r\n\r\n{}")) / 100, 4);
    EXPECT_EQ(statusOf(ask(head + "Transfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n")), 411);
    EXPECT_EQ(statusOf(ask(head + "\r\n")), 411);
    EXPECT_EQ(shown("soft_power_state"), "1");
    const std::string blank(4096 - std::string(R"({"power": false})").size(), ' ');
    EXPECT_EQ(statusOf(change(R"({"power": false})" + blank)), 200) << "as long as it may be";
    EXPECT_EQ(shown("soft_power_state"), "0");
}

TEST_F(ScreenServer, SaysWhatIsWrongWithAChange)
{
    struct Case {
        const char *body;
        int status;
        const char *text;
    };
    for (const Case &each : {
             Case{"", 400, "the body must be an object of JSON\n"},
             Case{"{", 400, "the body must be an object of JSON\n"},
             Case{"[1]", 400, "the body must be an object of JSON\n"},
             Case{"{}", 400,
                  "a change has one of \"set\", \"power\", \"press\", \"connect\" and \"fault\"\n"},
             Case{R"({"set": 1, "value": 1})", 400, "\"set\" must be the name of a setting\n"},
             Case{R"({"set": "overscan"})", 400, "\"value\" must be a whole number of 16 bits\n"},
             Case{R"({"set": "overscan", "value": 40000})", 400,
                  "\"value\" must be a whole number of 16 bits\n"},
             Case{R"({"set": "overscan", "value": 2})", 422, "2 is outside 0..1\n"},
             Case{R"({"set": "bezel_button_brightness", "value": 7})", 422, "7 is not a multiple of 2\n"},
             Case{R"({"set": "luminance", "value": 47})", 422, "47 is outside 48..250\n"},
             Case{R"({"set": "serial_number", "value": 1})", 400,
                  "there is no setting serial_number that can be written\n"},
             Case{R"({"set": "nonsense", "value": 1})", 400,
                  "there is no setting nonsense that can be written\n"},
             Case{R"({"set": "ipv4_address", "value": 1})", 422, "takes an address\n"},
             Case{R"({"power": 1})", 400, "\"power\" must be true or false\n"},
             Case{R"({"press": 5})", 400, "\"press\" must be a whole number from 1 to 4\n"},
             Case{R"({"press": 1.5})", 400, "\"press\" must be a whole number from 1 to 4\n"},
             Case{R"({"connect": 0, "on": true})", 400, "\"connect\" must be a whole number from 1 to 3\n"},
             Case{R"({"fault": "lazy", "on": true})", 422, "there is no fault lazy\n"},
             Case{R"({"fault": "slow", "on": true, "argument": "soon"})", 422,
                  "slow: soon is no number of seconds from 0 to 3600\n"},
             Case{R"({"fault": "busy", "on": true, "argument": 1})", 400, "\"argument\" must be a text\n"},
         }) {
        const std::string answer = change(each.body);
        EXPECT_EQ(statusOf(answer), each.status) << each.body;
        EXPECT_EQ(bodyOf(answer), each.text) << each.body;
    }
}

TEST_F(ScreenServer, ChangesAsAHandAtTheMonitorWould)
{
    const auto does = [&](const char *body, const char *setting, const char *value) {
        EXPECT_EQ(statusOf(change(body)), 200) << body;
        EXPECT_EQ(shown(setting), value) << body;
    };
    does(R"({"set": "bezel_button_color", "value": 2})", "bezel_button_color", "2");
    does(R"({"set": "luminance", "value": 120})", "preset1.luminance", "120");
    does(R"({"connect": 3, "on": true})", "input3.active", "1");
    EXPECT_EQ(statusOf(change(R"({"fault": "slow", "on": true})")), 200);
    EXPECT_EQ(fault("slow"), "on 1");
    EXPECT_EQ(statusOf(change(R"({"fault": "slow", "on": true, "argument": "0.5"})")), 200);
    EXPECT_EQ(fault("slow"), "on 0.5");
    EXPECT_EQ(statusOf(change(R"({"fault": "slow", "on": false})")), 200);
    EXPECT_EQ(fault("slow"), "off");
    // Where something follows from a setting, it follows here, too.
    does(R"({"set": "pip_position", "value": 0})", "pip_position_x", "160");
}

struct Press {
    int setting;
    const char *shows;
    const char *before;
    const char *after;
};

TEST_F(ScreenServer, FunctionButtonsDoTheirActions)
{
    command("set input3.active 1");
    for (const Press &each : {
             Press{1, "video_input", "0", "1"},
             Press{2, "active_color_space", "0", "1"},
             Press{3, "pip_mode", "0", "1"},
             Press{4, "pip_position", "2", "3"},
             Press{5, "pip_source", "1", "1"},
             Press{6, "show_blue_channel", "0", "1"},
             Press{7, "overscan", "0", "1"},
             Press{8, "use_video_levels", "0", "1"},
             Press{9, "displayed_4k_corner", "0", "1"},
             Press{10, "source_scaling_4k", "0", "1"},
             Press{11, "display_aspect_ratio", "0", "1"},
             Press{12, "show_cropped_region", "0", "1"},
             Press{13, "test_pattern_enabled", "0", "1"},
             Press{14, "test_pattern", "0", "1"},
             Press{15, "preset2.luminance", "160", "170"},
             Press{16, "preset2.luminance", "170", "160"},
             Press{17, "active_color_space", "1", "0"},
         }) {
        command("set function_button3.setting " + std::to_string(each.setting));
        EXPECT_EQ(shown(each.shows), each.before) << each.setting;
        EXPECT_EQ(statusOf(change(R"({"press": 3})")), 200) << each.setting;
        EXPECT_EQ(shown(each.shows), each.after) << each.setting;
    }
    command("set test_pattern 8");
    command("set function_button3.setting 14");
    change(R"({"press": 3})");
    EXPECT_EQ(shown("test_pattern"), "0") << "after the last the first";
    change(R"({"power": false})");
    EXPECT_EQ(statusOf(change(R"({"press": 3})")), 422) << "in standby";
    EXPECT_EQ(shown("test_pattern"), "0");
}

// ---- watchers ----

TEST_F(ScreenServer, TellsEachChangeToWhoeverWatches)
{
    RawConnection first(server->port());
    RawConnection second(server->port());
    for (RawConnection *each : {&first, &second}) {
        each->send(watchRequest());
        const std::string answer = each->readUntil("\"engine\":false");
        EXPECT_EQ(statusOf(answer), 200);
        EXPECT_TRUE(hasField(answer, "Content-Type: text/event-stream"));
        EXPECT_NE(answer.find("event: state\ndata: {\"settings\":{"), answer.npos);
        EXPECT_NE(answer.find("\"overscan\":0,"), answer.npos);
    }
    command("set overscan 1");
    for (RawConnection *each : {&first, &second}) {
        EXPECT_NE(each->readUntil("\"overscan\":1,").find("\"overscan\":1,"), std::string::npos);
    }
    command("fault slow on 2");
    EXPECT_NE(first.readUntil("\"faults\":{\"slow\":\"2\"}").find("\"slow\""), std::string::npos);
}

TEST_F(ScreenServer, TellsTheMessagesOfAnEngineThatIsStartedLater)
{
    RawConnection watcher(server->port());
    watcher.send(watchRequest());
    watcher.readUntil("\"engine\":false");
    startEngine();
    EXPECT_NE(watcher.readUntil("\"engine\":true").find("\"engine\":true"), std::string::npos);
    request("01000000 0300 0700 00 01 00  00 00 00 7800 0000");
    const std::string &received = watcher.readUntil("event: messages");
    EXPECT_NE(received.find("event: messages"), received.npos);
    const std::string &message = watcher.readUntil("]}\n\n");
    EXPECT_NE(message.find("\"number\":1,"), message.npos);
    EXPECT_NE(
        message.find("\"outcome\":\"answered\",\"request\":"
                     "\"01000000030007000001000000007800000000000000000000000000000000000000000000000000\""),
        message.npos);
}

TEST_F(ScreenServer, WatchersAreLimited)
{
    start(2);
    const auto opened = [&] {
        auto watcher = std::make_unique<RawConnection>(server->port());
        watcher->send(watchRequest());
        watcher->readUntil("\n\n");
        watcher->readUntil("\"faults\"");
        return watcher;
    };
    auto first = opened();
    auto second = opened();
    EXPECT_EQ(server->watcherCount(), 2u);
    const std::string answer = get("/events");
    EXPECT_EQ(statusOf(answer), 503);
    EXPECT_EQ(bodyOf(answer), "As many are watching as can: 2. Close a page.\n");
    EXPECT_EQ(statusOf(get("/")), 200) << "all else is served";
    first.reset(); // its place is free as soon as that is noticed
    EXPECT_TRUE(eventually([&] { return server->watcherCount() == 1; }));
    auto third = opened();
    EXPECT_EQ(server->watcherCount(), 2u);
}

TEST_F(ScreenServer, LooksOnceForAllWhoWatch)
{
    const auto period = desk::screen::Watch::Options{}.period;
    ASSERT_LE(period.count(), 250) << "a change is seen within a second";
    start(32, period);
    std::vector<std::unique_ptr<RawConnection>> watchers;
    for (int i = 0; i < 20; ++i) {
        watchers.push_back(std::make_unique<RawConnection>(server->port()));
        watchers.back()->send(watchRequest());
        watchers.back()->readUntil("\"engine\":false");
    }
    const auto switches = [] { // how often a thread of this process has waited for something
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_nvcsw;
    };
    const long before = switches();
    const auto since = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(10 * period);
    const long waited = switches() - before;
    const long periods = (std::chrono::steady_clock::now() - since) / period;
    EXPECT_LE(waited, 3 * periods + 20)
        << "with a look for each of them it were 20 times the periods: " << periods;
    EXPECT_GE(periods, 10);
}

TEST_F(ScreenServer, EndsWhileSomeAreWatching)
{
    RawConnection first(server->port());
    RawConnection second(server->port());
    for (RawConnection *each : {&first, &second}) {
        each->send(watchRequest());
        each->readUntil("\"engine\":false");
    }
    server.reset();
    first.readAll(); // to its end, which is there
    second.readAll();
    EXPECT_FALSE(HasFailure());
}

TEST_F(ScreenServer, GoesOnWithAStoreThatIsRemoved)
{
    RawConnection watcher(server->port());
    watcher.send(watchRequest());
    watcher.readUntil("\"engine\":false");
    command("set overscan 1");
    watcher.readUntil("\"overscan\":1,");
    for (const char *suffix : {"", "-wal", "-shm"}) {
        unlink((store + suffix).c_str());
    }
    command("set use_video_levels 1");
    const std::string &received = watcher.readUntil("\"use_video_levels\":1,\"overscan\":0,");
    EXPECT_NE(received.find("\"use_video_levels\":1,\"overscan\":0,"), received.npos);
}
