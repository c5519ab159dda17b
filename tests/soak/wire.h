// SPDX-License-Identifier: Apache-2.0
// The two protocols: what is sent, and what an answer says.
#ifndef TESTS_SOAK_WIRE_H
#define TESTS_SOAK_WIRE_H

#include "settings.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace soak
{

enum class Protocol { cimXml, wsMan };

/** A request, ready for HTTP. */
struct Message {
    const char *path;
    const char *contentType;
    std::string body;
};

Message readMessage(Protocol protocol, const Setting &setting);
Message readMonitorMessage();
Message changeMessage(Protocol protocol, const Setting &setting, const Value &value);
Message enumerateMessage(Protocol protocol, std::string_view className);
Message namesMessage(Protocol protocol, std::string_view className);
/** A method that the class does not have. */
Message unknownMethodMessage(Protocol protocol, const Setting &setting);

enum class Outcome {
    done,
    refused,   // the answer says so: nothing has been changed
    noAnswer,  // the library waited in vain for the engine: either
    notServed, // status 503, or 429: it was not looked at
    broken,    // the connection: either, and maybe later
};

struct Answer {
    Outcome outcome = Outcome::broken;
    std::string text; // of a refusal, or what else is to be said
    std::string body;
};

/** What an answer of the object manager says. */
Answer readAnswer(long status, std::string body);

/** The properties of the first object in an answer; those that are not there are missing. */
std::vector<std::string> propertiesOf(const std::string &body, const std::vector<const char *> &names);

/** How many objects, or names of objects, an answer has. */
int objectsIn(Protocol protocol, const std::string &body);

} // namespace soak

#endif
