// SPDX-License-Identifier: Apache-2.0
#include "browser_fixture.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace
{

std::unique_ptr<WebDriver> theBrowser;

constexpr auto patience = std::chrono::seconds(60);

/* What a program prints, errors too. */
std::string outputOf(const std::string &command)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    char bytes[4096];
    for (std::size_t size; (size = fread(bytes, 1, sizeof bytes, pipe)) > 0;) {
        output.append(bytes, size);
    }
    pclose(pipe);
    return output;
}

/* As the client takes it on its command line. */
std::string pathOf(const std::string &object)
{
    const std::size_t slash = object.find('/');
    const std::string name = object.substr(0, slash);
    const std::string prefix = "ZT_Marovelton_" + name;
    if (name == "Monitor") {
        return prefix + ".DeviceID=\"ZT:Marovelton_Monitor\",CreationClassName=\"" + prefix +
               "\",SystemName=\"192.168.10.20\",SystemCreationClassName=\"Linux_ComputerSystem\"";
    }
    const std::string number = slash == object.npos ? "" : ":" + object.substr(slash + 1);
    return prefix + ".InstanceID=\"ZT:Marovelton_" + name + number + "\"";
}

} // namespace

void BrowserTest::end()
{
    theBrowser.reset();
}

std::string BrowserTest::told(const char *name)
{
    const char *value = getenv(name);
    if (value == nullptr) {
        throw std::runtime_error(std::string(name) + " is not set; run browser.sh");
    }
    return value;
}

WebDriver &BrowserTest::browser()
{
    if (theBrowser == nullptr) {
        theBrowser = std::make_unique<WebDriver>(told("SCREEN_DRIVER"), told("SCREEN_BROWSER"),
                                                 told("SCREEN_PROFILE"));
    }
    return *theBrowser;
}

void BrowserTest::SetUp()
{
    monitor("reset");
    monitor("fault clear");
    browser().show(1600, 1000, {{"prefers-color-scheme", "light"}});
    openPage(told("SCREEN_URL"));
    browser().errors();
}

void BrowserTest::TearDown()
{
    EXPECT_EQ(browser().errors(), Json::array());
}

void BrowserTest::openPage(const std::string &url)
{
    browser().open("about:blank"); // another # alone would not load the page anew
    browser().open(url);
    expectSeen("document.documentElement.dataset.ready", "yes");
}

std::string BrowserTest::call(const std::string &object, const std::string &method,
                              const std::string &arguments)
{
    std::string answer = outputOf("wbemcli cm '" + told("SCREEN_CLIENT_URL") + pathOf(object) + "' '" +
                                  method + (arguments.empty() ? "" : "." + arguments) + "'");
    if (const std::size_t error = answer.find("CIM_ERR");
        error != answer.npos) { // "* wbemcli: Cim: (1) CIM_ERR_FAILED: TEXT"
        const std::size_t begin = answer.find(": ", error) + 2;
        return answer.substr(begin, answer.find('\n', begin) - begin);
    }
    const std::size_t result = answer.rfind(": ");
    return result == answer.npos ? answer : answer.substr(result + 2, answer.find('\n', result) - result - 2);
}

std::string BrowserTest::property(const std::string &object, const std::string &name)
{
    const std::string answer =
        "\n" + outputOf("wbemcli gi -nl '" + told("SCREEN_CLIENT_URL") + pathOf(object) + "'");
    const std::string start = "\n-" + name + "=";
    const std::size_t found = answer.find(start);
    if (found == answer.npos) {
        return answer;
    }
    const std::size_t begin = found + start.size();
    return answer.substr(begin, answer.find('\n', begin) - begin);
}

std::string BrowserTest::shell(const std::string &command)
{
    return outputOf(command);
}

void BrowserTest::monitor(const std::string &arguments)
{
    EXPECT_EQ(outputOf("\"$DESK_COMMAND\" " + arguments), "");
}

BrowserTest::Json BrowserTest::look(const std::string &expression)
{
    return browser().run("const $ = (selector) => document.querySelector(selector); return " + expression +
                         ";");
}

void BrowserTest::expectSeen(const std::string &expression, const Json &value)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    Json seen = look(expression);
    while (seen != value && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        seen = look(expression);
    }
    EXPECT_EQ(seen, value) << expression;
}

void BrowserTest::expectRead(const std::string &object, const std::string &name, const std::string &value)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    std::string read = property(object, name);
    while (read != value && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        read = property(object, name);
    }
    EXPECT_EQ(read, value) << object << " " << name;
}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    BrowserTest::end();
    return result;
}
