// SPDX-License-Identifier: Apache-2.0
// The model of displayctl: complete against the classes, names, values, rules, the order of changes,
// profiles.
#include "model/names.h"
#include "model/plan.h"
#include "model/rules.h"
#include "model/values.h"
#include "profile/profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace displayctl::model
{

namespace
{

/* ---- completeness ---- */

std::string withoutPrefix(std::string_view name)
{
    return std::string(name.substr(name.starts_with(classPrefix) ? classPrefix.size() : 0));
}

bool isException(const std::string &className, std::string_view property)
{
    return std::ranges::any_of(exceptions(), [&](const Exception &each) {
        return each.name == className + "." + std::string(property) ||
               each.name == "*." + std::string(property);
    });
}

TEST(Model, EveryMethodIsReachedOnce)
{
    std::map<std::string, int> reached;
    for (const Setting &setting : allSettings()) {
        std::set<std::string> methods; // two arguments of one method are one change
        for (const MethodArgument &argument : setting.arguments) {
            methods.insert(withoutPrefix(argument.owner->name) + "." + std::string(argument.method->name));
        }
        for (const std::string &method : methods) {
            reached[method] += setting.number <= 1 ? 1 : 0;
        }
    }
    for (const ActionRow &action : allActions()) {
        ++reached[std::string(action.method)];
    }
    int declared = 0;
    for (const ClassFacts &facts : allClasses()) {
        for (const MethodFacts &method : facts.methods) {
            ++declared;
            const std::string name = withoutPrefix(facts.name) + "." + std::string(method.name);
            EXPECT_EQ(reached[name], 1) << name;
        }
    }
    EXPECT_EQ(declared, 65);
    EXPECT_EQ(reached.size(), 65U);
}

TEST(Model, EveryPropertyIsReadOnceOrExcepted)
{
    int classesWithInstances = 0;
    std::set<std::string> used;
    for (const ClassFacts &facts : allClasses()) {
        const std::string className = withoutPrefix(facts.name);
        classesWithInstances += facts.isAssociation ? 0 : 1;
        for (const PropertyFacts &property : facts.properties) {
            const auto rows = std::ranges::count_if(settingRows(), [&](const SettingRow &row) {
                return row.className == className &&
                       std::ranges::find(row.properties, property.name) != row.properties.end();
            });
            // Which preset is in use is told by the property of each, and by monitor.preset.
            if (rows == 0 && !facts.isAssociation) {
                EXPECT_TRUE(isException(className, property.name)) << className << "." << property.name;
                used.insert("*." + std::string(property.name));
                used.insert(className + "." + std::string(property.name));
            }
            EXPECT_LE(rows, 1) << className << "." << property.name;
        }
    }
    EXPECT_EQ(classesWithInstances, 19);
    for (const Exception &each : exceptions()) {
        EXPECT_TRUE(used.contains(std::string(each.name))) << each.name << " is no exception any more";
        EXPECT_FALSE(each.reason.empty());
    }
}

TEST(Model, EveryCorrespondenceLeadsToAMethod)
{
    int correspondences = 0;
    for (const ClassFacts &facts : allClasses()) {
        for (const PropertyFacts &property : facts.properties) {
            if (property.correspondence.empty()) {
                continue;
            }
            ++correspondences;
            std::stringstream path{withoutPrefix(property.correspondence)};
            std::string className;
            std::string method;
            std::string argument;
            std::getline(path, className, '.');
            std::getline(path, method, '.');
            std::getline(path, argument, '.');
            ASSERT_NE(findClass(className), nullptr) << property.correspondence;
            const MethodFacts *found = findMethod(*findClass(className), method);
            ASSERT_NE(found, nullptr) << property.correspondence;
            EXPECT_TRUE(std::ranges::any_of(found->arguments, [&](const ArgumentFacts &each) {
                return each.name == argument;
            })) << property.correspondence;
        }
    }
    EXPECT_GT(correspondences, 50);
}

TEST(Model, EveryRefusalIsOneOfTheLibrary)
{
    std::ifstream file(REFERENCE);
    std::stringstream text;
    text << file.rdbuf();
    ASSERT_GT(text.str().size(), 10000U);
    for (const Rule &rule : allRules()) {
        EXPECT_NE(text.str().find("`" + std::string(rule.refusal)), std::string::npos)
            << rule.subject << ": " << rule.refusal;
    }
}

/* ---- names ---- */

std::string problemOf(const std::string &name)
{
    try {
        return "resolved to " + resolveName(name).name();
    } catch (const BadValue &error) {
        return error.what();
    }
}

TEST(Names, WholeAndShortened)
{
    EXPECT_EQ(resolveName("pip.size").name(), "pip.size");
    EXPECT_EQ(resolveName("size").name(), "pip.size");
    EXPECT_EQ(resolveName("luminance").name(), "preset.active.luminance");
    EXPECT_EQ(resolveName("active.luminance").name(), "preset.active.luminance");
    EXPECT_EQ(resolveName("3.luminance").name(), "preset.3.luminance");
    EXPECT_EQ(resolveName("preset.3.luminance").name(), "preset.3.luminance");
    EXPECT_EQ(resolveName("luminance").at(5).name, "preset.5.luminance");
    EXPECT_EQ(problemOf("input"), "'input' may be monitor.input, pip.input: say which");
    EXPECT_EQ(problemOf("uminance"), "there is no setting 'uminance'; do you mean preset.active.luminance?");
    EXPECT_EQ(problemOf("xyzzy"), "there is no setting 'xyzzy'; displayctl help settings lists them");
    EXPECT_EQ(problemOf(""), "there is no setting ''; displayctl help settings lists them");
}

TEST(Names, Patterns)
{
    EXPECT_EQ(matchPattern("pip").size(), 8U);
    EXPECT_EQ(matchPattern("preset.*.luminance").size(), 7U);
    EXPECT_EQ(matchPattern("luminance").size(), 1U);
    EXPECT_EQ(matchPattern("mode").size(), 4U);
    EXPECT_THROW(static_cast<void>(matchPattern("nothing*")), BadValue);
}

/* ---- values ---- */

std::string parsed(std::string_view name, std::string_view text)
{
    try {
        return parseValue(*findSetting(name), text, {}).dump();
    } catch (const BadValue &error) {
        return error.what();
    }
}

TEST(Values, AreReadAsPeopleWriteThem)
{
    EXPECT_EQ(parsed("preset.3.luminance", "110"), "110");
    EXPECT_EQ(parsed("preset.3.luminance", "110 cd/m2"), "110");
    EXPECT_EQ(parsed("preset.3.luminance", "47"), "preset.3.luminance cannot be '47'; it takes 48 to 250");
    EXPECT_EQ(parsed("preset.3.luminance", "+110"),
              "preset.3.luminance cannot be '+110'; it takes 48 to 250");
    EXPECT_EQ(parsed("osd.opacity", "37.5%"), "37.5");
    EXPECT_EQ(parsed("osd.opacity", "40"), "osd.opacity cannot be '40'; it takes 25 to 100 in steps of 6.25");
    EXPECT_EQ(parsed("services.web", "ON"), "true");
    EXPECT_EQ(parsed("services.web", "2"), "services.web cannot be '2'; it takes on off");
    EXPECT_EQ(parsed("pip.mode", "pbp"), "\"pbp\"");
    EXPECT_EQ(parsed("pip.input", "Display Port2"), "\"dp2\"");
    EXPECT_EQ(parsed("pip.mode", "maybe"), "pip.mode cannot be 'maybe'; it takes off pip pbp");
    EXPECT_EQ(parsed("pip.position", "160, 880"), "[160,880]");
    EXPECT_EQ(parsed("pip.position", "159,880"),
              "pip.position cannot be '159,880'; it takes x,y of 160 to 2116, 160 to 1120");
    EXPECT_EQ(parsed("pattern.color", "0,128,255"), "[0,128,255]");
    EXPECT_EQ(parsed("pattern.color", "0,128"),
              "pattern.color cannot be '0,128'; it takes r,g,b of 0 to 255 each");
    EXPECT_EQ(parsed("monitor.deployed", "2024-02-29"), "\"2024-02-29\"");
    EXPECT_EQ(parsed("monitor.deployed", "2023-02-29"),
              "monitor.deployed cannot be '2023-02-29'; it takes YYYY-MM-DD");
    EXPECT_EQ(parsed("network.address", "192.168.010.1"),
              "network.address cannot be '192.168.010.1'; it takes an IPv4 address");
    EXPECT_EQ(parsed("network.mask", "255.255.255.0"), R"("255.255.255.0")");
    EXPECT_EQ(parsed("network.mask", "255.0.255.0"),
              "network.mask cannot be '255.0.255.0'; it takes an IPv4 mask, as 255.255.255.0");
    EXPECT_EQ(parsed("buttons.brightness", "7"),
              "buttons.brightness cannot be '7'; it takes 0 2 4 6 8 10 12 14 16 18 20");
    EXPECT_EQ(parsed("monitor.power", "on"), "monitor.power cannot be changed");
    EXPECT_EQ(parsed("pattern.number", "abc"), "pattern.number cannot be 'abc'; it takes 0 to 8");
}

TEST(Values, TakeTheNamesOfTheSite)
{
    const site::CodeNames names = {{"osd.language", {{0, "English"}, {4, "German"}}},
                                   {"function.action", {{3, "blue only"}}}};
    const Setting &language = *findSetting("osd.language");
    EXPECT_EQ(parseValue(language, "german", names), 4);
    EXPECT_EQ(textOf(language, 4, names), "German");
    EXPECT_EQ(textOf(language, 5, names), "5");
    EXPECT_EQ(textOf(*findSetting("function.2.action"), 3, names), "blue only");
}

TEST(Values, AreSentAsTheMethodTakesThem)
{
    const auto sent = [](std::string_view name, const Value &value) {
        return sentTexts(*findSetting(name), value);
    };
    using Texts = std::vector<std::string>;
    EXPECT_EQ(sent("osd.language", 0), Texts{"3"});
    EXPECT_EQ(sent("osd.language", 4), Texts{"1"});
    EXPECT_EQ(sent("osd.language", 9), Texts{"9"});
    EXPECT_EQ(sent("services.web", true), Texts{"2"});
    EXPECT_EQ(sent("services.web", false), Texts{"3"});
    EXPECT_EQ(sent("picture.overscan", true), Texts{"true"});
    EXPECT_EQ(sent("buttons.fade", true), Texts{"1"});
    EXPECT_EQ(sent("monitor.deployed", "2026-01-31"), Texts{"31/01/2026"});
    EXPECT_EQ(sent("pip.mode", "pbp"), Texts{"2"});
    EXPECT_EQ(sent("osd.opacity", 37.5), Texts{"37.5"});
    EXPECT_EQ(sent("osd.opacity", 50.0), Texts{"50"});
    EXPECT_EQ(sent("pattern.color", Value::array({1, 2, 3})), (Texts{"1", "2", "3"}));
}

/* ---- the order of changes ---- */

wbem::Instance object(const std::string &className, const std::string &id,
                      const std::vector<std::pair<std::string, std::string>> &values)
{
    wbem::Instance instance;
    instance.path.className = std::string(classPrefix) + className;
    instance.path.keys.resize(1);
    instance.path.keys.front().name = "InstanceID";
    instance.path.keys.front().value = id;
    for (const auto &[name, text] : values) {
        instance.properties.push_back({name, "", wbem::Value(text)});
    }
    return instance;
}

// A monitor on input dp1 (3840x2160) with preset 1 in use and the second picture off.
State usualState()
{
    State state;
    state.put(
        "Monitor",
        {object("Monitor", "m",
                {{"InputSource", "0"}, {"HorizontalResolution", "3840"}, {"VerticalResolution", "2160"}})});
    std::vector<wbem::Instance> presets;
    for (int number = 1; number <= 7; ++number) {
        presets.push_back(object("ColorSpace", "ZT:Marovelton_ColorSpace:" + std::to_string(number),
                                 {{"Active", number == 1 ? "TRUE" : "FALSE"},
                                  {"DisplayLuminance", "100"},
                                  {"ColorSpaceName", "P"}}));
    }
    state.put("ColorSpace", presets);
    state.put("PictureInPicture", {object("PictureInPicture", "p",
                                          {{"PIPMode", "0"},
                                           {"PIPSize", "2"},
                                           {"PIPPositionX", "1688"},
                                           {"PIPPositionY", "880"},
                                           {"PIPOverscanEnabled", "FALSE"}})});
    state.put("ImageAdjustment", {object("ImageAdjustment", "i",
                                         {{"DisplayAspectRatio", "0"},
                                          {"DCIImageRegion", "0"},
                                          {"Region4KPositionX", "0"},
                                          {"Region4KPositionY", "0"}})});
    state.put("RemoteManagementService", {object("RemoteManagementService", "r", {{"EnabledState", "2"}})});
    return state;
}

std::string planned(const State &state, const std::vector<std::pair<std::string, Value>> &targets)
{
    std::vector<Target> wanted;
    for (const auto &[name, value] : targets) {
        wanted.push_back({findSetting(name), value});
    }
    std::string text;
    for (const Step &step : makePlan(state, wanted)) {
        text += text.empty() ? "" : " ";
        for (const Target &target : step.changes) {
            text += (&target == &step.changes.front() ? "" : "+") + target.setting->name + "=" +
                    textOf(*target.setting, target.value, {});
        }
        text += step.isTemporary ? "!" : "";
    }
    return text;
}

TEST(Plan, NothingToDo)
{
    EXPECT_EQ(planned(usualState(), {{"preset.1.luminance", 100}, {"pip.mode", "off"}}), "");
}

TEST(Plan, MakesAPresetActiveForItsLuminance)
{
    EXPECT_EQ(planned(usualState(), {{"preset.1.luminance", 90}}), "preset.1.luminance=90");
    EXPECT_EQ(planned(usualState(), {{"preset.3.luminance", 90}}),
              "monitor.preset=3! preset.3.luminance=90 monitor.preset=1!");
    EXPECT_EQ(
        planned(usualState(), {{"preset.3.luminance", 90}, {"preset.5.luminance", 80}}),
        "monitor.preset=3! preset.3.luminance=90 monitor.preset=5! preset.5.luminance=80 monitor.preset=1!");
    EXPECT_EQ(planned(usualState(), {{"preset.3.luminance", 90}, {"monitor.preset", 3}}),
              "monitor.preset=3 preset.3.luminance=90");
    EXPECT_EQ(planned(usualState(), {{"monitor.preset", 3}, {"preset.1.luminance", 90}}),
              "preset.1.luminance=90 monitor.preset=3");
    EXPECT_EQ(planned(usualState(), {{"monitor.preset", 3}, {"preset.5.luminance", 90}}),
              "monitor.preset=5! preset.5.luminance=90 monitor.preset=3");
}

TEST(Plan, SwitchesTheSecondPictureOn)
{
    EXPECT_EQ(planned(usualState(), {{"pip.size", "minimum"}}),
              "pip.mode=pip! pip.size=minimum pip.mode=off!");
    EXPECT_EQ(planned(usualState(), {{"pip.size", "minimum"}, {"pip.mode", "pip"}}),
              "pip.mode=pip pip.size=minimum");
    EXPECT_EQ(planned(usualState(), {{"pip.mode", "pbp"}, {"pip.size", "minimum"}, {"pip.overscan", true}}),
              "pip.mode=pip! pip.size=minimum pip.mode=pbp pip.overscan=on");
}

TEST(Plan, SetsThePositionAfterTheSizeThatMovesIt)
{
    EXPECT_EQ(planned(usualState(), {{"pip.position", Value::array({200, 300})}, {"pip.size", "minimum"}}),
              "pip.mode=pip! pip.size=minimum pip.position=200,300 pip.mode=off!");
    // The position is right now, and would not be after the size has changed.
    EXPECT_EQ(planned(usualState(), {{"pip.position", Value::array({1688, 880})}, {"pip.size", "minimum"}}),
              "pip.mode=pip! pip.size=minimum pip.position=1688,880 pip.mode=off!");
}

TEST(Plan, SendsAnAddressWholeAndTheModeAfterIt)
{
    EXPECT_EQ(
        planned(usualState(),
                {{"network.mode", "dhcp"}, {"network.mask", "255.255.0.0"}, {"network.address", "10.0.0.2"}}),
        "network.mask=255.255.0.0+network.address=10.0.0.2 network.mode=dhcp");
    EXPECT_EQ(planned(usualState(), {{"services.web", false}, {"network.mode", "dhcp"}}),
              "network.mode=dhcp services.web=off");
}

TEST(Plan, ChangesTheAspectForAMomentButNeverTheInput)
{
    EXPECT_EQ(planned(usualState(), {{"picture.region-4k", Value::array({10, 10})}}),
              "picture.aspect=4! picture.region-4k=10,10 picture.aspect=0!");
    EXPECT_EQ(
        planned(usualState(), {{"picture.region-4k", Value::array({10, 10})}, {"monitor.input", "dp2"}}),
        "monitor.input=dp2 picture.aspect=4! picture.region-4k=10,10 picture.aspect=0!");
}

/* ---- profiles ---- */

std::string problemIn(const std::string &text)
{
    try {
        return std::to_string(profile::readText(text, "p.yaml", {}).size()) + " settings";
    } catch (const BadValue &error) {
        return error.what();
    }
}

TEST(Profile, IsReadWithItsMistakesNamed)
{
    EXPECT_EQ(
        problemIn(
            "displayctl: 1\nsettings:\n  pip: { mode: pip, size: minimum }\n  preset: { 3: { luminance: 110 } }\n"),
        "3 settings");
    EXPECT_EQ(problemIn("displayctl: 1\nsettings: { osd: { position: [10, 20] } }"), "1 settings");
    EXPECT_EQ(problemIn("displayctl: 1\nsettings:\n  monitor:\n    name: \"\xa2Studio 8\"\n"),
              "p.yaml:4: monitor.name cannot be this text, which is no UTF-8");
    EXPECT_EQ(problemIn("displayctl: 2\n"),
              "p.yaml:1: profiles of this version of displayctl have 'displayctl: 1'");
    EXPECT_EQ(problemIn("settings: {}\n"),
              "p.yaml:1: this is no profile: it does not begin with 'displayctl: 1'");
    EXPECT_EQ(problemIn("displayctl: 1\npip: {}\n"),
              "p.yaml:2: 'pip' is nothing that a profile has; settings stand under 'settings'");
    EXPECT_EQ(problemIn("displayctl: 1\nsettings:\n  pip:\n    mode: maybe\n"),
              "p.yaml:4: pip.mode cannot be 'maybe'; it takes off pip pbp");
    EXPECT_EQ(problemIn("displayctl: 1\nsettings: {"), "p.yaml:2: end of map flow not found");
}

TEST(State, ADefaultOfTheClassIsNoSetting)
{
    // What an object manager fills in where the monitor says nothing: 5 is "not applicable", neither on nor
    // off.
    State state;
    state.put("RemoteManagementService",
              {object("RemoteManagementService", "r", {{"EnabledState", "5"}, {"RequestedState", "12"}})});
    EXPECT_EQ(state.value(*findSetting("services.web")), Value(5));
    state.put("RemoteManagementService", {object("RemoteManagementService", "r", {{"EnabledState", "3"}})});
    EXPECT_EQ(state.value(*findSetting("services.web")), Value(false));
}

TEST(Profile, WhatIsWrittenCanBeRead)
{
    const std::string text = profile::write(usualState(), "a", "2026-01-31", {});
    const auto entries = profile::readText(text, "written", {});
    const State state = usualState();
    ASSERT_GT(entries.size(), 10U);
    for (const profile::Entry &entry : entries) {
        EXPECT_EQ(entry.value, state.value(*entry.named.setting)) << entry.named.name();
    }
}

TEST(Profile, WhatIsNoUtf8InANameIsReplaced)
{
    State state;
    state.put("Monitor", {object("Monitor", "m", {{"Name", "Studio \xf8"}})});
    const std::string text = profile::write(state, "a\xff", "2026-01-31", {});
    EXPECT_NE(text.find("monitor-exported: \"a\xef\xbf\xbd\"\n"), std::string::npos) << text;
    const auto entries = profile::readText(text, "written", {});
    ASSERT_EQ(entries.size(), 1U) << text;
    EXPECT_EQ(entries[0].named.name(), "monitor.name");
    EXPECT_EQ(entries[0].value, Value("Studio \xef\xbf\xbd"));
}

} // namespace

} // namespace displayctl::model
