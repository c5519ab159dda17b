// SPDX-License-Identifier: Apache-2.0
// What the head of a request must be like before anything else of it counts (RFC 9110, RFC 9112).
#ifndef HOST_HTTP_REQUEST_RULES_H
#define HOST_HTTP_REQUEST_RULES_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host
{

struct RequestHead {
    using Field = std::pair<std::string_view, std::string_view>;

    std::string_view method;
    std::string_view version; // "HTTP/1.1"
    bool isSecure = false;    // came by TLS
    std::vector<Field> fields;

    /** The values of all fields of that name, any letter case, without the blanks around them. */
    std::vector<std::string_view> all(std::string_view name) const;

    /** The value of the first field of that name; "" when there is none. */
    std::string_view first(std::string_view name) const;
};

struct Refusal {
    unsigned status = 0;
    const char *text = nullptr; // what was wrong and what would be right
};

/** The names by which clients may address this server, besides numeric addresses and localhost. */
class ServerNames
{
  public:
    /** "*": every name is good. */
    void add(std::string_view name);

    /** host: the value of Host, with a port or without. */
    bool contains(std::string_view host) const;

  private:
    std::set<std::string, std::less<>> names_{"localhost"};
    bool takesAll_ = false;
};

/** Why the request is refused whatever it asks for; nothing when it is as it should be. */
std::optional<Refusal> checkHead(const RequestHead &head, const ServerNames &names);

/** The length that the request tells; 0 when it tells none. Nothing when it is larger than numbers are. Of a
 * head that checkHead() has found good. */
std::optional<std::uint64_t> bodyLength(const RequestHead &head);

/** "application/xml" of "Application/XML; charset=utf-8". */
std::string mediaType(std::string_view contentType);

} // namespace host

#endif
