// What a protocol over HTTP is to the server: it gets the body of a request and fills a reply.
#ifndef HOST_CORE_FRONT_END_H
#define HOST_CORE_FRONT_END_H

#include "cimxml/text_buffer.h"
#include "cmpi/arena.h"

#include <pugixml.hpp>

#include <string>
#include <string_view>

namespace host
{

/** The memory of one connection, used again for every request on it. */
struct Session {
    Session() : arena(std::size_t{64} * 1024) {}

    Arena arena;
    std::string body; // of the request; a front end may write to it
    TextBuffer out;   // of the reply
    pugi::xml_document document;
};

struct HttpReply {
    unsigned status = 200;
    const char *contentType = nullptr; // null: the reply has no body
    /** One more header; null: none. */
    const char *headerName = nullptr;
    const char *headerValue = nullptr;
};

class FrontEnd
{
  public:
    virtual ~FrontEnd() = default;

    /** True when requests to that path are for this front end. */
    virtual bool serves(std::string_view path) const = 0;

    /** Answers the request in session.body, which the principal has sent. The body of the reply is put into
     * session.out, which is empty before. Called by many threads at once, with a session each. */
    virtual HttpReply handle(Session &session, std::string_view principal) = 0;
};

} // namespace host

#endif
