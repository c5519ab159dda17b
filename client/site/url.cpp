// SPDX-License-Identifier: Apache-2.0
#include "site/monitors.h"

#include "wbem/value.h"

#include <algorithm>
#include <charconv>

namespace displayctl::site
{

namespace
{

constexpr std::string_view expected =
    "http://HOST:PORT or https://HOST:PORT, with USER@ before and /NAMESPACE behind it "
    "where needed";

[[noreturn]] void refuse(const std::string &problem)
{
    throw Error(problem + "; a URL is " + std::string{expected});
}

/** Takes what stands before the separator off the text, with the separator; the whole text where there is
 * none. */
std::string_view take(std::string_view &text, std::string_view separator)
{
    const std::size_t found = text.find(separator);
    const std::string_view before = text.substr(0, found);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + separator.size());
    return before;
}

/** %40 as @, and so on. */
std::string decoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        if (text[i] == '%') {
            const char *digits = text.data() + i + 1;
            if (i + 2 >= text.size() || std::from_chars(digits, digits + 2, code, 16).ptr != digits + 2) {
                refuse("a % in the user of a URL is followed by two hexadecimal digits");
            }
            result += static_cast<char>(code);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

unsigned parsePort(std::string_view text)
{
    unsigned port = 0;
    const auto [rest, problem] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (problem != std::errc{} || rest != text.data() + text.size() || port < 1 || port > 65535) {
        refuse("the port of a URL is a number from 1 to 65535, not \"" + std::string{text} + '"');
    }
    return port;
}

/** Host and port, or [IPv6] and port. */
void parseAuthority(std::string_view text, wbem::Endpoint &endpoint)
{
    std::string_view port;
    bool hasPort = false;
    if (text.starts_with('[')) {
        text.remove_prefix(1);
        if (text.find(']') == std::string_view::npos) {
            refuse("an IPv6 address in a URL ends with ]");
        }
        endpoint.host = take(text, "]");
        hasPort = text.starts_with(':');
        if (!hasPort && !text.empty()) {
            refuse("after the address of a URL comes :PORT");
        }
        port = hasPort ? text.substr(1) : text;
    } else {
        hasPort = text.find(':') != std::string_view::npos;
        endpoint.host = take(text, ":");
        port = text;
    }
    constexpr std::string_view impossible = " \t\r\n\"<>\\^`{|}?#%";
    if (endpoint.host.empty() || endpoint.host.find_first_of(impossible) != std::string::npos) {
        refuse("the URL names no host");
    }
    endpoint.port = hasPort ? parsePort(port) : endpoint.tls ? 5989 : 5988;
}

} // namespace

wbem::Endpoint parseUrl(std::string_view url)
{
    // What was given is repeated in no message that is sent before it is known to hold no password.
    wbem::Endpoint endpoint;
    const std::string_view scheme = take(url, "://");
    endpoint.tls = wbem::sameName(scheme, "https");
    if (!endpoint.tls && !wbem::sameName(scheme, "http")) {
        refuse("a URL begins with http:// or https://");
    }
    std::string_view nameSpace = url;
    std::string_view authority = take(nameSpace, "/");
    // A password may hold the character @ itself, or even a slash.
    const std::size_t at = url.rfind('@');
    if (at != std::string_view::npos) {
        const std::string_view user = url.substr(0, at);
        if (user.find(':') != std::string_view::npos) {
            throw Error(
                "a URL with a password is refused, because others could read it; the password comes from "
                "DISPLAYCTL_PASSWORD, from a password-file in the file of monitors, or is asked on a terminal");
        }
        endpoint.user = decoded(user);
        if (endpoint.user.empty()) {
            refuse("before the @ of a URL stands the user");
        }
        nameSpace = url.substr(at + 1);
        authority = take(nameSpace, "/");
    }
    parseAuthority(authority, endpoint);
    while (nameSpace.ends_with('/')) {
        nameSpace.remove_suffix(1);
    }
    if (nameSpace.find_first_of("?#%\" \t\r\n") != std::string_view::npos) {
        refuse("a namespace consists of names between slashes");
    }
    if (!nameSpace.empty()) {
        endpoint.nameSpace = nameSpace;
    }
    return endpoint;
}

} // namespace displayctl::site
