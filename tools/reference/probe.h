// SPDX-License-Identifier: Apache-2.0
// What the classes answer, found out by asking them. Nothing here is known beforehand: every request is made
// of the library itself, once as it should be and once for each thing that can be wrong with it.
//
// Words for people may hold code between backticks.
#ifndef REFERENCE_PROBE_H
#define REFERENCE_PROBE_H

#include <compare>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace reference
{

/** How an operation ended. */
struct Outcome {
    int code = 0;                       // CMPIrc
    std::string text = {};              // of the status
    std::optional<unsigned> value = {}; // of a method
    auto operator<=>(const Outcome &) const = default;
};

/** The text that the monitor's support library gives with a failure, in the place of whatever it says. */
extern const std::string supportLibraryText;

/** One thing that is checked, and the answer when it is not as it should be. */
struct Check {
    std::vector<std::string> causes; // each alone leads to the answer
    Outcome outcome;
    bool call = false; // not the request is wrong: the monitor, the engine or the object manager fails
};

struct ArgumentFacts {
    std::string name;
    std::string form;                // "a whole decimal number"
    std::vector<std::string> values; // that are accepted: "48 to 250", or one entry per state of the monitor
};

struct MethodFacts {
    std::string name;
    bool administrator = false;
    std::vector<ArgumentFacts> arguments;
    std::vector<Check> checks;         // in their order, after those of the class
    Outcome usual;                     // the answer when no check fails
    std::vector<std::string> messages; // to the engine then
};

struct ReadCheck {
    std::vector<std::string> operations;
    std::vector<std::string> causes;
    Outcome outcome;
    bool operator==(const ReadCheck &) const = default;
};

struct PropertyFacts {
    std::vector<std::string> constants; // what it always is: one text, or one per instance; else empty
};

/** Objects of an association: how many tie objects of these two classes. */
struct Tie {
    std::string left, right;
    size_t count = 0;
};

using Keys = std::vector<std::pair<std::string, std::string>>;

struct ClassFacts {
    std::string name;
    std::string kind; // "instance, method"
    std::vector<Keys> instances;
    Keys found;                                      // the first object as GetInstance finds it
    bool countVaries = false;                        // the number of instances depends on the controller
    std::map<std::string, PropertyFacts> properties; // those that the provider sets
    std::vector<std::string> refresh;                // messages to the engine before a read
    std::vector<ReadCheck> reads;
    std::map<std::string, Outcome> changes; // CreateInstance and the like, asked properly
    std::vector<Check> modifyChecks;        // where ModifyInstance is offered
    std::vector<std::string> modifyMessages;

    // Methods.
    std::vector<Check> targetChecks; // before the method is looked up
    Outcome unknownMethod;
    std::string unknownMethodName; // the method asked for; the text of the outcome repeats it
    bool ignoresCase = false;
    std::vector<MethodFacts> methods; // the declared ones that the class offers
    std::vector<std::string> notOffered;

    std::vector<std::string> roles; // of an association, that of Tie::left first
    std::vector<Tie> ties;
};

/** Asks every class of the library, in the order of the registration. */
std::vector<ClassFacts> probeClasses();

} // namespace reference

#endif
