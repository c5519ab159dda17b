// SPDX-License-Identifier: Apache-2.0
#include "screen/request_rules.h"

#include "screen/token.h"

#include <strings.h>

#include <charconv>

namespace desk::screen
{

namespace
{

bool isHere(const std::string &host, std::uint16_t port)
{
    const std::string number = ":" + std::to_string(port);
    return host == "127.0.0.1" + number || strcasecmp(host.c_str(), ("localhost" + number).c_str()) == 0;
}

/** "application/json", with parameters perhaps. */
bool isJson(const std::string &type)
{
    const std::string media = type.substr(0, type.find_first_of("; \t"));
    return strcasecmp(media.c_str(), "application/json") == 0;
}

std::optional<Refusal> checkLength(const RequestHead &head)
{
    const std::vector<std::string> lengths = head.all("Content-Length");
    if (!head.all("Transfer-Encoding").empty()) {
        return Refusal{411, "A change says its length (Content-Length); it does not come in chunks.\n"};
    }
    std::size_t length = 0;
    const char *end = lengths.empty() ? nullptr : lengths[0].data() + lengths[0].size();
    if (lengths.size() != 1 || std::from_chars(lengths[0].data(), end, length).ptr != end) {
        return Refusal{411, "A change says its length once (Content-Length).\n"};
    }
    if (length > mostBodyBytes) {
        return Refusal{413, "A change has at most 4096 bytes.\n"};
    }
    return std::nullopt;
}

} // namespace

std::vector<std::string> RequestHead::all(const char *name) const
{
    std::vector<std::string> values;
    for (const auto &[field, value] : fields) {
        if (strcasecmp(field.c_str(), name) == 0) {
            values.push_back(value);
        }
    }
    return values;
}

std::optional<Refusal> checkOrigin(const RequestHead &head, std::uint16_t port)
{
    const std::vector<std::string> hosts = head.all("Host");
    if (hosts.size() != 1) {
        return Refusal{400, "A request has the header Host once.\n"};
    }
    if (!isHere(hosts[0], port)) {
        return Refusal{421, "This server is 127.0.0.1:" + std::to_string(port) +
                                "; the header Host names another one.\n"};
    }
    for (const std::string &origin : head.all("Origin")) {
        if (!origin.starts_with("http://") || !isHere(origin.substr(7), port)) {
            return Refusal{403, "Pages of other servers are not served.\n"};
        }
    }
    return std::nullopt;
}

std::optional<Refusal> checkChange(const RequestHead &head, const std::string &token)
{
    const std::vector<std::string> tokens = head.all(tokenField);
    if (tokens.size() != 1 || !sameToken(tokens[0], token)) {
        return Refusal{403, std::string("A change needs the token of this server in the header ") +
                                tokenField + ": open the URL that it has printed.\n"};
    }
    const std::vector<std::string> types = head.all("Content-Type");
    if (types.size() != 1 || !isJson(types[0])) {
        return Refusal{415, "A change is of the Content-Type application/json.\n"};
    }
    return checkLength(head);
}

} // namespace desk::screen
