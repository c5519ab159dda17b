// SPDX-License-Identifier: Apache-2.0
// What a protocol over HTTP is to the server: it gets a request and fills a reply. A front end keeps nothing
// between requests that belongs to a connection; what it needs for one request it makes while it answers.
#ifndef HOST_CORE_FRONT_END_H
#define HOST_CORE_FRONT_END_H

#include "cmpi/memory_budget.h"
#include "core/role.h"
#include "core/text_buffer.h"

#include <string>
#include <string_view>
#include <vector>

namespace host
{

/** The header of a request. */
class HttpHeaders
{
  public:
    /** The value of the field of that name, any letter case; null when it is absent. */
    virtual const char *value(const char *name) const = 0;

  protected:
    ~HttpHeaders() = default;
};

/** A request whose user has been authenticated. */
struct HttpRequest {
    std::string_view principal;
    Role role;
    /** The numeric address of the client. */
    std::string_view peer;
    std::string_view path;
    const HttpHeaders &headers;
    /** A front end may write to it. */
    std::string &body;
    /** What the request may use; the body is paid for. */
    MemoryShare &memory;
};

struct HttpField {
    const char *name;
    const char *value;
};

/** Texts must outlive the reply: they are literals. */
struct HttpReply {
    unsigned status = 200;
    const char *contentType = nullptr; // null: the reply has no body
    std::vector<HttpField> fields;     // more header lines
};

class FrontEnd
{
  public:
    virtual ~FrontEnd() = default;

    /** True when requests to that path are for this front end. */
    virtual bool serves(std::string_view path) const = 0;

    /** True when a body of that media type, "application/xml" for instance, may be a message. */
    virtual bool takes(std::string_view mediaType) const = 0;

    /** Answers the POST request. The body of the reply is put into out, which is empty before. Called by many
     * threads at once. An exception ends the request, and the server answers for the front end. */
    virtual HttpReply handle(const HttpRequest &request, TextBuffer &out) = 0;
};

} // namespace host

#endif
