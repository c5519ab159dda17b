// SPDX-License-Identifier: Apache-2.0
// A browser that is told what to do, by the WebDriver protocol over HTTP.
#ifndef TESTS_DESK_SCREEN_WEB_DRIVER_H
#define TESTS_DESK_SCREEN_WEB_DRIVER_H

#include <nlohmann/json.hpp>

#include <string>

class WebDriver
{
  public:
    using Json = nlohmann::json;

    /* A new session of the driver at the URL: a browser of its own, with its profile in the directory. Throws
     * std::runtime_error, as every function does when the driver refuses. */
    WebDriver(std::string driver, const std::string &browser, const std::string &profile);
    ~WebDriver();
    WebDriver(const WebDriver &) = delete;
    WebDriver &operator=(const WebDriver &) = delete;

    void open(const std::string &url);

    /* What the function body returns, with arguments[0]... */
    Json run(const std::string &script, const Json &arguments = Json::array());
    /* The same of one that ends later: it calls the last of its arguments. */
    Json runLater(const std::string &script, const Json &arguments = Json::array());

    /* Mouse and keyboard, as a person uses them, on what the CSS selector finds. */
    void click(const std::string &selector);
    void type(const std::string &selector, const std::string &keys);

    /* A command of the browser's own protocol. */
    Json command(const std::string &name, const Json &parameters);
    /* features: {"prefers-color-scheme": "dark"} and the like. */
    void show(int width, int height, const Json &features);
    /* PNG. */
    std::string screenshot();
    /* What the browser has logged as errors since the last call. */
    Json errors();

  private:
    Json ask(const char *method, const std::string &path, const Json &body = nullptr);
    std::string find(const std::string &selector);

    std::string driver_;
    std::string session_;
};

#endif
