// SPDX-License-Identifier: Apache-2.0
// What can be asked of an object manager, and what it answers.
#ifndef DISPLAYCTL_WBEM_OPERATION_H
#define DISPLAYCTL_WBEM_OPERATION_H

#include "wbem/value.h"

#include <string>
#include <vector>

namespace displayctl::wbem
{

enum class OperationKind {
    getInstance,
    enumerateInstances,
    enumerateInstanceNames,
    associators,
    associatorNames,
    references,
    referenceNames,
    modifyInstance,
    invokeMethod,
};

/** What Associators, References and their Names forms are limited to; empty: not limited. */
struct AssociationFilter {
    std::string associationClass; // the class of the associations, which References calls ResultClass
    std::string resultClass;      // of Associators alone
    std::string role;
    std::string resultRole; // of Associators alone
};

/** One request. Made by the functions below. */
struct Operation {
    OperationKind kind;
    ObjectPath object;                   // of enumerations a class: no keys
    std::vector<std::string> properties; // the property list; empty: all
    AssociationFilter filter;
    std::string method;
    std::vector<Property> values; // arguments of a method, with their types, or the new values of an instance

    /** Whether it may change the monitor, and must therefore not be sent twice. */
    [[nodiscard]] bool changes() const
    {
        return kind == OperationKind::modifyInstance || kind == OperationKind::invokeMethod;
    }
};

[[nodiscard]] Operation getInstance(ObjectPath object, std::vector<std::string> properties = {});
[[nodiscard]] Operation enumerateInstances(std::string className, std::vector<std::string> properties = {});
[[nodiscard]] Operation enumerateInstanceNames(std::string className);
[[nodiscard]] Operation associators(ObjectPath object, AssociationFilter filter = {});
[[nodiscard]] Operation associatorNames(ObjectPath object, AssociationFilter filter = {});
[[nodiscard]] Operation references(ObjectPath object, AssociationFilter filter = {});
[[nodiscard]] Operation referenceNames(ObjectPath object, AssociationFilter filter = {});
/** Sets the given properties and, by a property list, no others. */
[[nodiscard]] Operation modifyInstance(ObjectPath object, std::vector<Property> newValues);
/** A method of an instance, or of a class when the path has no keys. An argument that is null is left out. */
[[nodiscard]] Operation invokeMethod(ObjectPath object, std::string method,
                                     std::vector<Property> arguments = {});

enum class Status {
    ok,
    cimError,     // the object manager says why: code and message are its own
    busy,         // HTTP 503 or 429: it has no room for the request and did nothing
    unauthorized, // HTTP 401, or no password for the user
    forbidden,    // HTTP 403
    untrusted,    // no TLS: the certificate is not trusted, has expired or is another host's; or there is no
                  // handshake
    unreachable,  // no connection
    noAnswer,     // none in time, or the connection was closed before one came
    broken,       // an answer that is none: not HTTP 200, not CIM-XML, cut off
};

struct Answer {
    Status status = Status::ok;
    int code = 0; // of a CIM error its code, of a bad HTTP status that one, else 0
    std::string
        message; // of a CIM error the text as it came, maybe empty; else what went wrong, for a person
    /** Whether the request may have arrived, so that only reading back tells what came of it. False of
     * requests that certainly did nothing, and of answered ones. */
    bool maybeDone = false;

    std::vector<Instance> instances; // GetInstance (one), EnumerateInstances, Associators, References
    std::vector<ObjectPath> paths;   // the Names forms
    Value returnValue;               // of a method
    std::vector<Property> outputs;   // of a method

    [[nodiscard]] bool ok() const
    {
        return status == Status::ok;
    }
};

} // namespace displayctl::wbem

#endif
