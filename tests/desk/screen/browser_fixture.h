// SPDX-License-Identifier: Apache-2.0
// The page in a real browser, on a desk with a standard client. One browser and one desk for all cases:
// browser.sh starts them, and tells of them in the environment.
#ifndef TESTS_DESK_SCREEN_BROWSER_FIXTURE_H
#define TESTS_DESK_SCREEN_BROWSER_FIXTURE_H

#include "web_driver.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

class BrowserTest : public testing::Test
{
  public:
    /* Ends the browser. */
    static void end();

  protected:
    using Json = WebDriver::Json;

    /* Factory settings, no faults, and the page as it is when it is opened with the token. */
    void SetUp() override;
    /* The page has brought no error to the browser's log. */
    void TearDown() override;

    static WebDriver &browser();
    /* What is in the environment. */
    static std::string told(const char *name);

    void openPage(const std::string &url);

    /* What the standard client answers, one line: "0" for a method that has worked. Objects are named without
     * the prefix of their class: Monitor, ColorSpace/3. */
    static std::string call(const std::string &object, const std::string &method,
                            const std::string &arguments);
    /* A property as the client shows it. */
    static std::string property(const std::string &object, const std::string &name);
    static void monitor(const std::string &arguments);
    /* What a command of the shell prints. */
    static std::string shell(const std::string &command);

    /* The value of an expression of JavaScript, in which $ finds an element by its CSS selector. */
    static Json look(const std::string &expression);
    /* Waits until the expression has the value, and fails when that takes more than a minute. */
    static void expectSeen(const std::string &expression, const Json &value);
    static void expectRead(const std::string &object, const std::string &name, const std::string &value);

    static std::string attribute(const std::string &selector, const std::string &name)
    {
        return "$('" + selector + "')?.getAttribute('" + name + "')";
    }
    static std::string text(const std::string &selector)
    {
        return "$('" + selector + "')?.textContent";
    }
};

#endif
