// SPDX-License-Identifier: Apache-2.0
// Which requests are answered at all. The program listens on loopback, but every page that a browser shows
// can send requests there: one is served only when it names this server as its host and comes from the
// server's own page.
#ifndef DESK_SCREEN_REQUEST_RULES_H
#define DESK_SCREEN_REQUEST_RULES_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace desk::screen
{

struct RequestHead {
    std::string method;
    std::string path;
    std::vector<std::pair<std::string, std::string>> fields;

    /** The values of a field, whatever the case of its name. */
    std::vector<std::string> all(const char *name) const;
};

struct Refusal {
    unsigned status;
    std::string text;
};

inline constexpr std::size_t mostBodyBytes = 4096;
inline constexpr const char *tokenField = "X-Desk-Token";

/** Why a request is refused, whatever it is for; nothing when it may be served. */
std::optional<Refusal> checkOrigin(const RequestHead &head, std::uint16_t port);

/** The same for a change. */
std::optional<Refusal> checkChange(const RequestHead &head, const std::string &token);

} // namespace desk::screen

#endif
