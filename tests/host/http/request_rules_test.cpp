// SPDX-License-Identifier: Apache-2.0
// What the head of a request must be like.
#include "http/request_rules.h"

#include <gtest/gtest.h>

namespace
{

using Fields = decltype(host::RequestHead::fields);

/** The status that a request with those fields is refused with; 0: it is not. */
unsigned statusOf(const Fields &fields, std::string_view version = "HTTP/1.1", bool isSecure = false)
{
    host::RequestHead head;
    head.method = "POST";
    head.version = version;
    head.isSecure = isSecure;
    head.fields = fields;
    host::ServerNames names;
    names.add("Desk.Example");
    const std::optional<host::Refusal> refusal = host::checkHead(head, names);
    EXPECT_TRUE(!refusal || refusal->text != nullptr) << "who is refused is told why";
    return refusal ? refusal->status : 0;
}

unsigned withHost(std::string_view host)
{
    return statusOf({{"Host", host}});
}

unsigned with(std::string_view name, std::string_view value)
{
    return statusOf({{"Host", "localhost"}, {name, value}});
}

TEST(RequestRules, HostIsThereOnce)
{
    EXPECT_EQ(statusOf({}), 400u);
    EXPECT_EQ(statusOf({}, "HTTP/1.0"), 0u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Host", "localhost"}}), 400u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"HOST", "other"}}, "HTTP/1.0"), 400u);
    EXPECT_EQ(withHost(""), 400u);
    EXPECT_EQ(withHost("localhost:port"), 400u);
    EXPECT_EQ(withHost("localhost:123456"), 400u);
    EXPECT_EQ(withHost("[::1"), 400u);
    EXPECT_EQ(withHost(":5988"), 400u);
}

TEST(RequestRules, HostIsThisServer)
{
    for (const char *host : {"localhost", "LOCALHOST:5988", "127.0.0.1", "127.0.0.1:5988", "[::1]:5989",
                             "[fe80::1]", "192.0.2.7", "desk.example", "desk.example.", "DESK.EXAMPLE:80"}) {
        EXPECT_EQ(withHost(host), 0u) << host;
    }
    for (const char *host : {"example", "desk.example.org", "xdesk.example", "localhost.example",
                             "127.0.0.1.example", "desk.example..", "desk.example@evil", "1.2.3"}) {
        EXPECT_EQ(withHost(host), 421u) << host;
    }
}

TEST(RequestRules, AServerMayTakeEveryName)
{
    host::RequestHead head;
    head.version = "HTTP/1.1";
    head.fields = {{"Host", "whatever.example"}};
    host::ServerNames names;
    EXPECT_TRUE(host::checkHead(head, names));
    names.add("*");
    EXPECT_FALSE(host::checkHead(head, names));
}

TEST(RequestRules, OriginIsThisServer)
{
    EXPECT_EQ(with("Origin", "http://localhost"), 0u);
    EXPECT_EQ(with("Origin", "https://localhost"), 403u) << "not of the same scheme";
    EXPECT_EQ(with("Origin", "http://localhost:81"), 403u);
    EXPECT_EQ(with("Origin", "http://evil.example"), 403u);
    EXPECT_EQ(with("Origin", "null"), 403u);
    EXPECT_EQ(with("Origin", ""), 403u);
    EXPECT_EQ(statusOf({{"Host", "localhost:5989"}, {"Origin", "https://localhost:5989"}}, "HTTP/1.1", true),
              0u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Origin", "http://localhost"}, {"Origin", "http://evil"}}),
              403u);
}

TEST(RequestRules, TheEndOfTheBodyIsToldInOneWay)
{
    EXPECT_EQ(with("Content-Length", "5"), 0u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Content-Length", "5"}, {"Content-Length", "5"}}), 0u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Content-Length", "5"}, {"content-length", "6"}}), 400u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Content-Length", "5"}, {"Content-Length", "05"}}), 400u);
    for (const char *length : {"", "+5", "-1", "5, 6", "5,5", "0x5", "5 5", "five", "5\v"}) {
        EXPECT_EQ(with("Content-Length", length), 400u) << length;
    }
    EXPECT_EQ(with("Transfer-Encoding", "chunked"), 0u);
    EXPECT_EQ(with("Transfer-Encoding", "Chunked "), 0u);
    for (const char *encoding : {"gzip", "gzip, chunked", "identity", "chunked, chunked", "xchunked", ""}) {
        EXPECT_EQ(with("Transfer-Encoding", encoding), 501u) << encoding;
    }
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Transfer-Encoding", "chunked"}, {"Transfer-Encoding", "x"}}),
              501u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Transfer-Encoding", "chunked"}, {"Content-Length", "5"}}),
              400u);
    EXPECT_EQ(statusOf({{"Host", "localhost"}, {"Transfer-Encoding", "chunked"}}, "HTTP/1.0"), 400u);
}

TEST(RequestRules, NamesOfFieldsHaveNoBlanks)
{
    EXPECT_EQ(with("Content-Length ", "5"), 400u);
    EXPECT_EQ(with("Transfer\tEncoding", "chunked"), 400u);
    EXPECT_EQ(with("", "5"), 400u);
}

TEST(RequestRules, OneExpectationIsKnown)
{
    EXPECT_EQ(with("Expect", "100-continue"), 0u);
    EXPECT_EQ(with("Expect", "100-Continue"), 0u);
    EXPECT_EQ(with("Expect", "200-ok"), 417u);
}

TEST(RequestRules, LengthsAndMediaTypesAreRead)
{
    host::RequestHead head;
    EXPECT_EQ(host::bodyLength(head), 0u);
    head.fields = {{"content-length", " 1234 "}};
    EXPECT_EQ(host::bodyLength(head), 1234u);
    head.fields = {{"Content-Length", "18446744073709551615"}};
    EXPECT_EQ(host::bodyLength(head), UINT64_MAX);
    head.fields = {{"Content-Length", "18446744073709551616"}};
    EXPECT_EQ(host::bodyLength(head), std::nullopt);
    EXPECT_EQ(host::mediaType("application/xml; charset=\"utf-8\""), "application/xml");
    EXPECT_EQ(host::mediaType(" Text/XML ;x"), "text/xml");
    EXPECT_EQ(host::mediaType(""), "");
    EXPECT_EQ(host::mediaType(";"), "");
}

} // namespace
