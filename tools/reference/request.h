// SPDX-License-Identifier: Apache-2.0
// Requests to the library in a scripted monitor, and what can be wrong with them.
#ifndef REFERENCE_REQUEST_H
#define REFERENCE_REQUEST_H

#include "contract.h"
#include "probe.h"
#include <functional>
#include <set>

namespace reference
{

enum class Operation {
    enumerateNames,
    enumerate,
    get,
    create,
    modify,
    remove,
    query,
    invoke,
    associators,
    associatorNames,
    references,
    referenceNames,
};
const char *nameOf(Operation operation);

struct Request {
    const TestedClass *tested = nullptr;
    Operation operation = Operation::get;
    Path target = {};
    std::string method = {};
    Entries values = {}; // the arguments, or the properties of a given instance
    User user = "admin";
    std::vector<std::function<void()>> state = {}; // what is different about the monitor
    std::set<std::string> unknown = {};            // classes whose objects the object manager does not find
};

/** Asks the library with the monitor of the contract tests. */
Answer ask(const Request &request);
Outcome outcomeOf(const Answer &answer);
Outcome ending(const Request &request);

/** Something that is wrong with a request or with the monitor that it reaches. */
struct Fault {
    std::map<std::string, std::string> aspects; // what it is about, and how that is
    std::string when;
    std::function<void(Request &)> apply;
    std::string state = {}; // of the monitor, where it matters beside `when`
    bool natural = true;    // of two faults in one aspect the one that is listed first is checked first
    bool call = false;      // a call that the library makes fails
    bool inner = false;     // a call in the course of a check that other faults tell better
};

/** The faults that change the answer, in the order in which the library looks for them: of two faults at the
 *  same time the one that is checked first answers. */
std::vector<Check> orderedChecks(const Request &base, const std::vector<Fault> &faults);

/** Each call of the support library that the request makes, failing; those before `first` left out. */
std::vector<Fault> failingCalls(const Request &base, size_t first = 0);
/** Each call of the broker or of the support library that could fail, failing. */
std::vector<Fault> everyFailingCall(const Request &base);
/** The keys of the target missing or wrong, and another class where a method is called. */
std::vector<Fault> wrongTargets(const Request &base);
/** Users that are not known or no administrators. */
std::vector<Fault> wrongUsers();

/** The messages to the engine, in words. */
std::vector<std::string> messagesOf(const Answer &answer);

} // namespace reference

#endif
