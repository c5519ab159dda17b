// SPDX-License-Identifier: Apache-2.0
#include "web_driver.h"

#include <curl/curl.h>

#include <memory>
#include <stdexcept>

namespace
{

std::size_t append(char *data, std::size_t size, std::size_t count, void *text)
{
    static_cast<std::string *>(text)->append(data, size * count);
    return size * count;
}

std::string fromBase64(const std::string &text)
{
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char each : text) {
        static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::size_t value = digits.find(each);
        if (value == digits.npos) {
            continue;
        }
        bits = bits << 6 | static_cast<unsigned>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xff);
        }
    }
    return bytes;
}

} // namespace

WebDriver::WebDriver(std::string driver, const std::string &browser, const std::string &profile)
    : driver_(std::move(driver))
{
    const Json options = {{"binary", browser},
                          {"args",
                           {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                            "--disable-background-networking", "--disable-component-update", "--disable-sync",
                            "--hide-scrollbars", "--user-data-dir=" + profile}}};
    const Json capabilities = {{"goog:chromeOptions", options}, {"goog:loggingPrefs", {{"browser", "ALL"}}}};
    session_ = "/session/" + ask("POST", "/session", {{"capabilities", {{"alwaysMatch", capabilities}}}})
                                 .at("sessionId")
                                 .get<std::string>();
}

WebDriver::~WebDriver()
{
    try {
        ask("DELETE", session_);
    } catch (const std::exception &) { // the driver's end ends the browser, too
    }
}

WebDriver::Json WebDriver::ask(const char *method, const std::string &path, const Json &body)
{
    const std::unique_ptr<CURL, void (*)(CURL *)> request(curl_easy_init(), curl_easy_cleanup);
    const std::unique_ptr<curl_slist, void (*)(curl_slist *)> fields(
        curl_slist_append(nullptr, "Content-Type: application/json"), curl_slist_free_all);
    const std::string sent = body.is_null() ? std::string() : body.dump();
    std::string received;
    curl_easy_setopt(request.get(), CURLOPT_URL, (driver_ + path).c_str());
    curl_easy_setopt(request.get(), CURLOPT_NOPROXY, "*");
    curl_easy_setopt(request.get(), CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(request.get(), CURLOPT_TIMEOUT, 300L);
    if (!body.is_null()) {
        curl_easy_setopt(request.get(), CURLOPT_HTTPHEADER, fields.get());
        curl_easy_setopt(request.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(sent.size()));
        curl_easy_setopt(request.get(), CURLOPT_POSTFIELDS, sent.c_str());
    }
    curl_easy_setopt(request.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(request.get(), CURLOPT_WRITEDATA, &received);
    if (const CURLcode code = curl_easy_perform(request.get()); code != CURLE_OK) {
        throw std::runtime_error("the driver does not answer: " + std::string(curl_easy_strerror(code)));
    }
    const Json value = Json::parse(received).at("value");
    if (value.is_object() && value.contains("error")) {
        throw std::runtime_error(path + ": " + value.at("error").get<std::string>() + ": " +
                                 value.at("message").get<std::string>());
    }
    return value;
}

void WebDriver::open(const std::string &url)
{
    ask("POST", session_ + "/url", {{"url", url}});
}

WebDriver::Json WebDriver::run(const std::string &script, const Json &arguments)
{
    return ask("POST", session_ + "/execute/sync", {{"script", script}, {"args", arguments}});
}

WebDriver::Json WebDriver::runLater(const std::string &script, const Json &arguments)
{
    return ask("POST", session_ + "/execute/async", {{"script", script}, {"args", arguments}});
}

std::string WebDriver::find(const std::string &selector)
{
    const Json element = ask("POST", session_ + "/element", {{"using", "css selector"}, {"value", selector}});
    return session_ + "/element/" + element.begin()->get<std::string>();
}

void WebDriver::click(const std::string &selector)
{
    ask("POST", find(selector) + "/click", Json::object());
}

void WebDriver::type(const std::string &selector, const std::string &keys)
{
    ask("POST", find(selector) + "/value", {{"text", keys}});
}

WebDriver::Json WebDriver::command(const std::string &name, const Json &parameters)
{
    return ask("POST", session_ + "/goog/cdp/execute", {{"cmd", name}, {"params", parameters}});
}

void WebDriver::show(int width, int height, const Json &features)
{
    Json list = Json::array();
    for (const auto &[name, value] : features.items()) {
        list.push_back({{"name", name}, {"value", value}});
    }
    command("Emulation.setDeviceMetricsOverride",
            {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
    command("Emulation.setEmulatedMedia", {{"features", list}});
}

std::string WebDriver::screenshot()
{
    return fromBase64(command("Page.captureScreenshot", {{"format", "png"}}).at("data").get<std::string>());
}

WebDriver::Json WebDriver::errors()
{
    Json found = Json::array();
    for (const Json &entry : ask("POST", session_ + "/se/log", {{"type", "browser"}})) {
        if (entry.at("level") == "SEVERE") {
            found.push_back(entry.at("message"));
        }
    }
    return found;
}
