// SPDX-License-Identifier: Apache-2.0
#include "http/request_rules.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <microhttpd.h>
#include <strings.h>

namespace host
{
namespace
{

bool sameText(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/** The host of "host:port"; "" when it is none of that form. */
std::string_view withoutPort(std::string_view host)
{
    std::string_view port;
    if (host.starts_with('[')) {
        const std::size_t end = host.find(']');
        if (end == std::string_view::npos) {
            return {};
        }
        port = host.substr(end + 1);
        host = host.substr(1, end - 1);
    } else if (const std::size_t colon = host.find(':'); colon != std::string_view::npos) {
        port = host.substr(colon);
        host = host.substr(0, colon);
    }
    const bool isGood = port.empty() || (port.front() == ':' && port.size() <= 6 &&
                                         std::all_of(port.begin() + 1, port.end(),
                                                     [](char c) { return c >= '0' && c <= '9'; }));
    return isGood ? host : std::string_view();
}

bool isNumericAddress(const std::string &host)
{
    in6_addr address = {};
    return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

bool isDigits(std::string_view text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/** How the end of the body is told must leave no choice: whoever stands between could choose differently. */
std::optional<Refusal> checkFraming(const RequestHead &head)
{
    const std::vector<std::string_view> encodings = head.all("Transfer-Encoding");
    const std::vector<std::string_view> lengths = head.all("Content-Length");
    if (!encodings.empty() && !lengths.empty()) {
        return Refusal{MHD_HTTP_BAD_REQUEST, "A request has Content-Length or Transfer-Encoding, not both."};
    }
    if (!encodings.empty()) {
        if (head.version != MHD_HTTP_VERSION_1_1) {
            return Refusal{MHD_HTTP_BAD_REQUEST, "Transfer-Encoding needs HTTP/1.1."};
        }
        if (encodings.size() != 1 || !sameText(encodings.front(), "chunked")) {
            return Refusal{MHD_HTTP_NOT_IMPLEMENTED, "The only Transfer-Encoding known here is chunked."};
        }
    }
    for (const std::string_view length : lengths) {
        if (!isDigits(length) || length != lengths.front()) {
            return Refusal{MHD_HTTP_BAD_REQUEST, "Content-Length must be one number."};
        }
    }
    return std::nullopt;
}

std::optional<Refusal> checkHost(const RequestHead &head, const ServerNames &names)
{
    const std::vector<std::string_view> hosts = head.all("Host");
    if (hosts.size() > 1 || (hosts.empty() && head.version == MHD_HTTP_VERSION_1_1)) {
        return Refusal{MHD_HTTP_BAD_REQUEST, "A request of HTTP/1.1 has the header Host once."};
    }
    if (!hosts.empty() && withoutPort(hosts.front()).empty()) {
        return Refusal{MHD_HTTP_BAD_REQUEST, "The header Host must be a name or an address, and a port."};
    }
    if (!hosts.empty() && !names.contains(hosts.front())) {
        return Refusal{
            MHD_HTTP_MISDIRECTED_REQUEST,
            "This server is not known by the name in the header Host. Use its address, or start it "
            "with --server-name NAME."};
    }
    return std::nullopt;
}

/** A page of another server must not use the browser of whoever looks at it. */
std::optional<Refusal> checkOrigin(const RequestHead &head)
{
    for (const std::string_view origin : head.all("Origin")) {
        const std::string own = (head.isSecure ? "https://" : "http://") + std::string(head.first("Host"));
        if (!sameText(origin, own)) {
            return Refusal{MHD_HTTP_FORBIDDEN, "Requests from the pages of other servers are not answered."};
        }
    }
    return std::nullopt;
}

} // namespace

std::vector<std::string_view> RequestHead::all(std::string_view name) const
{
    std::vector<std::string_view> values;
    for (const auto &[field, value] : fields) {
        if (sameText(field, name)) {
            values.push_back(trimmed(value));
        }
    }
    return values;
}

std::string_view RequestHead::first(std::string_view name) const
{
    for (const auto &[field, value] : fields) {
        if (sameText(field, name)) {
            return trimmed(value);
        }
    }
    return {};
}

void ServerNames::add(std::string_view name)
{
    takesAll_ = takesAll_ || name == "*";
    names_.insert(lowerCase(name));
}

bool ServerNames::contains(std::string_view host) const
{
    std::string name = lowerCase(withoutPort(host));
    if (name.ends_with('.')) { // the root of all names
        name.pop_back();
    }
    return takesAll_ || isNumericAddress(name) || names_.find(name) != names_.end();
}

std::optional<Refusal> checkHead(const RequestHead &head, const ServerNames &names)
{
    for (const auto &[name, value] : head.fields) {
        if (name.empty() || std::ranges::any_of(name, isBlank)) {
            return Refusal{MHD_HTTP_BAD_REQUEST, "The name of a header field has no blanks."};
        }
    }
    for (const std::string_view expectation : head.all("Expect")) {
        if (!sameText(expectation, "100-continue")) {
            return Refusal{MHD_HTTP_EXPECTATION_FAILED, "The only expectation known here is 100-continue."};
        }
    }
    std::optional<Refusal> refusal = checkFraming(head);
    if (!refusal) {
        refusal = checkHost(head, names);
    }
    return refusal ? refusal : checkOrigin(head);
}

std::optional<std::uint64_t> bodyLength(const RequestHead &head)
{
    const std::string_view text = head.first("Content-Length");
    std::uint64_t length = 0;
    if (!text.empty() && std::from_chars(text.data(), text.data() + text.size(), length).ec != std::errc()) {
        return std::nullopt;
    }
    return length;
}

std::string mediaType(std::string_view contentType)
{
    return lowerCase(trimmed(contentType.substr(0, contentType.find(';'))));
}

} // namespace host
