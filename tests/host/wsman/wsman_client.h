// SPDX-License-Identifier: Apache-2.0
// What the tests of WS-Management share: envelopes, and a look into answers.
#ifndef TESTS_HOST_WSMAN_WSMAN_CLIENT_H
#define TESTS_HOST_WSMAN_WSMAN_CLIENT_H

#include "test_host.h"

#include <string>
#include <string_view>
#include <vector>

namespace test
{

inline constexpr const char *thingUri = "http://schemas.example.org/wbem/wscim/1/cim-schema/2/Test_Thing";
inline constexpr const char *allUri = "http://schemas.dmtf.org/wbem/wscim/1/*";

inline constexpr const char *transfer = "http://schemas.xmlsoap.org/ws/2004/09/transfer/";
inline constexpr const char *enumeration = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/";

/** The URI of a class of the tests. */
std::string classUri(std::string_view className);

/** <wsman:SelectorSet> with the selectors, given as name, value, name, value. */
std::string selectors(const std::vector<std::string> &namesAndValues);

/** The selectors of a thing. */
std::string thingSelectors(int number);

/** An envelope. headers: what stands beside Action, To, ResourceURI, MessageID and ReplyTo. */
std::string envelope(const std::string &action, const std::string &resourceUri, const std::string &headers,
                     const std::string &body);

/** A whole request to /wsman with that body, with the right credentials. */
std::string postWsman(std::string_view body, std::string_view user = userName,
                      std::string_view password = userPassword);

/** A recorded request with the right credentials, with the context of an enumeration put in its place. */
std::string recordedWsman(const std::string &name, const std::string &context = "");

/** The text between the first two of the tags, "" when they are not there. */
std::string textOf(const std::string &body, const std::string &element);

/** The body with the parts that differ from run to run replaced by words. */
std::string withoutIds(std::string body);

/** The body with the prefixes of all classes replaced by one, "p". */
std::string withOnePrefix(const std::string &body);

/** What a fault says. */
struct FaultSeen {
    int status;
    std::string subcode;
    std::string detail; // the last part of its URI
    std::string text;
    std::string cimCode;

    bool operator==(const FaultSeen &) const = default;
};

void PrintTo(const FaultSeen &fault, std::ostream *stream);

FaultSeen faultOf(const HttpAnswer &answer);

} // namespace test

#endif
