// SPDX-License-Identifier: Apache-2.0
// A request as recordings have it: the request line, header lines, an empty line, the body.
#ifndef FUZZ_HTTP_MESSAGE_H
#define FUZZ_HTTP_MESSAGE_H

#include "core/front_end.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz
{

/** What stands between the requests of one input. */
inline constexpr std::string_view separator = "\n%%\n";

class HttpMessage final : public host::HttpHeaders
{
  public:
    explicit HttpMessage(std::string_view text);

    const char *value(const char *name) const override;

    std::string path;
    std::vector<std::pair<std::string, std::string>> fields;
    std::string body;
};

/** The requests of an input. */
std::vector<HttpMessage> messagesOf(std::string_view input);

} // namespace fuzz

#endif
