// SPDX-License-Identifier: Apache-2.0
// A small HTTP server on loopback for the tests of displayctl: one thread, any number of addresses, whatever
// answers a test thinks up, and counts of what was asked.
#ifndef TESTS_CLIENT_RESPONDER_H
#define TESTS_CLIENT_RESPONDER_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace responder
{

struct Request {
    std::string address; // the one it was sent to
    std::string head;    // request line and headers
    std::string body;

    /** The value of a header, empty where there is none. */
    [[nodiscard]] std::string header(std::string_view name) const;
};

/** What becomes of a request: bytes as they are sent, and whether the connection stays. Without bytes on a
 * connection that stays there is silence. */
struct Reply {
    std::string bytes;
    bool closes = false;
};

[[nodiscard]] Reply http(std::string_view body, std::string_view status = "200 OK",
                         std::string_view headers = "");
/** A whole CIM-XML answer around the given content of the operation's or method's response element. */
[[nodiscard]] Reply intrinsic(std::string_view operation, std::string_view content);
[[nodiscard]] Reply method(std::string_view name, std::string_view content);
[[nodiscard]] Reply silence();
[[nodiscard]] Reply hangUp();

/** The class that an intrinsic request is about, or the first key value's class of others; the attribute of
 * the first CLASSNAME in the body. */
[[nodiscard]] std::string classOf(const Request &request);

using Handler = std::function<Reply(const Request &)>;

struct Counts {
    unsigned connections = 0;
    std::map<std::string, unsigned> requests; // by "CIMMethod class"

    [[nodiscard]] unsigned total() const;
};

class Responder
{
  public:
    /** Listens on the addresses, all on one port: the given one, or a free one of the first address. The
     * handler is called on the responder's thread. */
    Responder(std::vector<std::string> addresses, Handler handler, unsigned port = 0);
    explicit Responder(Handler handler);
    ~Responder();
    Responder(const Responder &) = delete;
    Responder &operator=(const Responder &) = delete;

    [[nodiscard]] unsigned port() const;
    [[nodiscard]] Counts counts() const;

  private:
    class Loop;
    std::unique_ptr<Loop> loop_;
};

/** count addresses from 127.1.0.1 on. */
[[nodiscard]] std::vector<std::string> loopbackAddresses(unsigned count);

} // namespace responder

#endif
