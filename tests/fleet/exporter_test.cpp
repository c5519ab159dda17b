// SPDX-License-Identifier: Apache-2.0
// The exporter's answers, without its HTTP server: what is told of a monitor, what that costs the monitor,
// and what is told where it cannot be read.
#include "exporter/exporter.h"
#include "exporter/metrics.h"
#include "model/values.h"
#include "monitors.h"
#include "scratch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <regex>
#include <thread>

namespace responder
{
namespace
{

using displayctl::exporter::Compare;
using displayctl::exporter::Exporter;
using displayctl::exporter::Reply;

displayctl::exporter::Site siteOf(unsigned port)
{
    displayctl::exporter::Site site;
    displayctl::site::Monitor monitor;
    monitor.name = "m0";
    monitor.endpoint.host = "127.0.0.1";
    monitor.endpoint.port = port;
    site.monitors.emplace("m0", monitor);
    site.findProfile = [](const std::string &name) -> std::optional<Compare> {
        if (name == "broken") {
            throw displayctl::model::BadValue("broken.yaml:1: this is not YAML");
        }
        if (name != "house") {
            return std::nullopt;
        }
        return [](const displayctl::model::State &) {
            return std::vector<std::string>{"osd.timeout", "preset.1.luminance"};
        };
    };
    return site;
}

Reply probe(Exporter &exporter, std::optional<std::string> profile = std::nullopt,
            std::optional<double> scrapeTimeout = std::nullopt)
{
    return exporter.answer({"/probe", "m0", std::move(profile), scrapeTimeout});
}

bool contains(const Reply &reply, const std::string &line)
{
    return reply.body.find('\n' + line + '\n') != std::string::npos;
}

double ownValue(Exporter &exporter, const std::string &name)
{
    for (const prometheus::MetricFamily &family : exporter.own().collect()) {
        if (family.name == name) {
            return family.metric.front().counter.value;
        }
    }
    return -1;
}

class ExporterTest : public testing::Test
{
  protected:
    Monitors monitors_{MONITOR_DATA_DIR};
    Exporter exporter_{8, std::chrono::seconds{60}};
};

TEST_F(ExporterTest, TellsEveryReadableSettingInTheTermsOfPrometheus)
{
    const Responder server{[&](const Request &request) { return monitors_.answer(request); }};
    exporter_.use(siteOf(server.port()));
    const Reply reply = probe(exporter_, "house");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.type, "text/plain; version=0.0.4; charset=utf-8");
    const std::regex duration{"displayctl_probe_duration_seconds [0-9][0-9.e-]*\n"};
    EXPECT_EQ(std::regex_replace(reply.body, duration, "displayctl_probe_duration_seconds ...\n"),
              Scratch::read(FLEET_DATA_DIR "/probe.txt"));
}

TEST_F(ExporterTest, EveryReadableSettingHasASeries)
{
    const std::string text = Scratch::read(FLEET_DATA_DIR "/probe.txt");
    unsigned count = 0;
    for (const displayctl::model::SettingRow &row : displayctl::model::settingRows()) {
        if ((row.traits & (displayctl::model::writeOnly | displayctl::model::neverAccepted)) != 0) {
            continue;
        }
        ++count;
        const std::string name(row.name);
        const bool isText = row.kind == displayctl::model::Kind::text ||
                            row.kind == displayctl::model::Kind::date ||
                            row.kind == displayctl::model::Kind::address;
        if (isText) {
            const std::string label = name.substr(name.rfind('.') + 1);
            EXPECT_NE(text.find(label + "=\""), std::string::npos) << name;
        } else if (!name.ends_with("-uv")) {
            EXPECT_NE(text.find(" Setting " + name + ".\n"), std::string::npos) << name;
        }
    }
    EXPECT_EQ(count, 79U);
}

TEST_F(ExporterTest, AProbeAsksForNoMoreThanShowDoes)
{
    const Responder server{[&](const Request &request) { return monitors_.answer(request); }};
    const std::string command = std::string{DISPLAYCTL} +
                                " -m http://127.0.0.1:" + std::to_string(server.port()) +
                                " show >/dev/null </dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Counts show = server.counts();
    ASSERT_GE(show.total(), 10U);
    exporter_.use(siteOf(server.port()));
    EXPECT_EQ(probe(exporter_, "house").status, 200);
    const Counts both = server.counts();
    EXPECT_EQ(both.connections, show.connections + 1);
    EXPECT_LE(both.total(), 2 * show.total());
    for (const auto &[what, count] : both.requests) {
        ASSERT_TRUE(show.requests.contains(what)) << what;
        EXPECT_LE(count, 2 * show.requests.at(what)) << what;
    }
}

TEST_F(ExporterTest, ConcurrentProbesOfOneMonitorReadItOnce)
{
    constexpr unsigned probes = 6;
    std::atomic<bool> isReleased = false;
    const Responder server{[&](const Request &request) {
        while (!isReleased) {
            std::this_thread::yield();
        }
        return monitors_.answer(request);
    }};
    exporter_.use(siteOf(server.port()));
    std::vector<Reply> replies(probes);
    {
        std::vector<std::jthread> threads;
        for (Reply &reply : replies) {
            threads.emplace_back([&] { reply = probe(exporter_); });
        }
        // All but the one that reads are waiting for it now.
        while (ownValue(exporter_, "displayctl_exporter_probes_merged_total") < probes - 1) {
            std::this_thread::yield();
        }
        isReleased = true;
    }
    for (const Reply &reply : replies) {
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body, replies.front().body);
    }
    EXPECT_EQ(server.counts().connections, 1U);
    for (const auto &[what, count] : server.counts().requests) {
        EXPECT_EQ(count, 1U) << what;
    }
    // The next one reads anew.
    EXPECT_EQ(probe(exporter_).status, 200);
    EXPECT_EQ(server.counts().connections, 2U);
}

TEST_F(ExporterTest, ADeadMonitorIsAnsweredAndDown)
{
    const Responder server{[](const Request &) { return silence(); }};
    exporter_.use(siteOf(server.port()));
    // The exporter's own limit is a minute: what Prometheus waits for counts.
    const Reply reply = probe(exporter_, "house", 0.6);
    EXPECT_EQ(reply.status, 200);
    EXPECT_TRUE(contains(reply, "displayctl_up 0")) << reply.body;
    EXPECT_TRUE(contains(reply, "displayctl_probe_outcome{outcome=\"unreachable\"} 1"));
    EXPECT_TRUE(contains(reply, "displayctl_probe_outcome{outcome=\"ok\"} 0"));
    EXPECT_EQ(reply.body.find("displayctl_monitor"), std::string::npos);
    EXPECT_EQ(reply.body.find("displayctl_profile"), std::string::npos);
    EXPECT_EQ(server.counts().total(), 1U);
}

TEST_F(ExporterTest, BusyAndLoginAreTold)
{
    for (const auto &[status, outcome] :
         {std::pair{"503 Service Unavailable", "busy"}, std::pair{"401 Unauthorized", "login"}}) {
        const Responder server{[answer = http("", status)](const Request &) { return answer; }};
        exporter_.use(siteOf(server.port()));
        const Reply reply = probe(exporter_);
        EXPECT_EQ(reply.status, 200);
        EXPECT_TRUE(contains(reply, "displayctl_up 0"));
        EXPECT_TRUE(contains(reply, "displayctl_probe_outcome{outcome=\"" + std::string{outcome} + "\"} 1"))
            << reply.body;
    }
}

TEST_F(ExporterTest, WhatWasReadIsToldWhereOneClassFails)
{
    const Responder server{[&](const Request &request) {
        return classOf(request) == "ZT_Marovelton_BezelButton"
                   ? intrinsic("EnumerateInstances", "<ERROR CODE=\"1\" DESCRIPTION=\"no buttons\"/>")
                   : monitors_.answer(request);
    }};
    exporter_.use(siteOf(server.port()));
    const Reply reply = probe(exporter_, "house");
    EXPECT_TRUE(contains(reply, "displayctl_up 0"));
    EXPECT_TRUE(contains(reply, "displayctl_probe_outcome{outcome=\"refused\"} 1"));
    EXPECT_TRUE(contains(reply, "displayctl_osd_timeout_seconds 15"));
    EXPECT_EQ(reply.body.find("displayctl_buttons"), std::string::npos);
    EXPECT_EQ(reply.body.find("displayctl_profile"), std::string::npos);
}

TEST_F(ExporterTest, TheTargetsAreThoseOfTheFile)
{
    displayctl::exporter::Site site = siteOf(1);
    site.monitors.at("m0").labels = {"suite4", "hdr"};
    site.monitors.emplace("m1", site.monitors.at("m0")).first->second.labels.clear();
    exporter_.use(std::move(site));
    const Reply reply = exporter_.answer({"/targets", {}, {}, {}});
    EXPECT_EQ(reply.type, "application/json");
    EXPECT_EQ(reply.body, R"([{"targets":["m0"],"labels":{"__meta_displayctl_labels":",suite4,hdr,"}},)"
                          R"({"targets":["m1"],"labels":{"__meta_displayctl_labels":","}}])"
                          "\n");
}

TEST_F(ExporterTest, WhatIsNotThereIsRefusedAndCostsNoMonitorAnything)
{
    const Responder server{[&](const Request &request) { return monitors_.answer(request); }};
    exporter_.use(siteOf(server.port()));
    EXPECT_EQ(exporter_.answer({"/probe", {}, {}, {}}).status, 400);
    EXPECT_EQ(exporter_.answer({"/probe", "", {}, {}}).status, 400);
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port());
    for (const std::string &target : {std::string{"m1"}, std::string{"all"}, url, std::string{"label=x"}}) {
        const Reply reply = exporter_.answer({"/probe", target, {}, {}});
        EXPECT_EQ(reply.status, 404) << target;
        EXPECT_EQ(reply.body, "the file of monitors has no monitor of this name\n");
    }
    EXPECT_EQ(probe(exporter_, "other").status, 404);
    const Reply broken = probe(exporter_, "broken");
    EXPECT_EQ(broken.status, 500);
    EXPECT_EQ(broken.body, "broken.yaml:1: this is not YAML\n");
    EXPECT_EQ(exporter_.answer({"/else", {}, {}, {}}).status, 404);
    EXPECT_EQ(server.counts().connections, 0U);
}

} // namespace
} // namespace responder
