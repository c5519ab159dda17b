// SPDX-License-Identifier: Apache-2.0
// A request and its answer as the dispatcher knows them, whatever protocol they came by. A protocol is a
// front end: it turns what a client sent into a Request (see typing.h for values, which travel as text) and
// an Answer into what it sends back.
//
// Everything that a request and its answer point to lives in the arena of the request.
#ifndef HOST_CORE_MODEL_H
#define HOST_CORE_MODEL_H

#include "cmpi/objects.h"
#include "core/role.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace host
{

/** The operations of DSP0200 that this object manager knows. */
enum class Operation {
    enumerateInstances,
    enumerateInstanceNames,
    getInstance,
    createInstance,
    modifyInstance,
    deleteInstance,
    getProperty,
    setProperty,
    execQuery,
    associators,
    associatorNames,
    references,
    referenceNames,
    invokeMethod,
    getClass,
    enumerateClasses,
    enumerateClassNames,
    getQualifier,
    enumerateQualifiers,
};

/** The name of the operation as DSP0200 has it; "InvokeMethod" of an extrinsic method. */
const char *operationName(Operation operation);

/** What narrows the following of associations. A null pointer: no filter. */
struct TraversalFilter {
    const char *associationClass = nullptr; // Associators: of the association; References: the ResultClass
    const char *resultClass = nullptr;
    const char *role = nullptr;
    const char *resultRole = nullptr;
};

struct Request {
    Operation operation = Operation::getInstance;
    std::string_view nameSpace;
    /** Who asks; never empty: nothing is dispatched without a principal. */
    std::string_view principal;
    /** A front end sets it to that of the account. */
    Role role = Role::reader;

    /** How long the request may wait for its turn with the providers; none: as long as any. */
    std::optional<std::chrono::milliseconds> patience;

    /** The class of an enumeration or of a class operation. Empty: all classes (EnumerateClasses). */
    std::string_view className;
    /** The instance (or, without keys, the class) that the operation is about. */
    Path *path = nullptr;
    /** The new or changed instance. */
    Instance *instance = nullptr;

    /** Names of the wanted properties, ending with a null pointer; null: all. */
    const char **propertyList = nullptr;
    bool localOnly = false;
    bool deepInheritance = true;
    bool includeQualifiers = false;
    bool includeClassOrigin = false;

    TraversalFilter filter;
    /** The traversal is of a class: the path has no keys, and the answer is classes. */
    bool isOfClass = false;

    /** A query (ExecQuery), or a filter for what an enumeration or a traversal returns. */
    const char *query = nullptr;
    const char *queryLanguage = nullptr;

    std::string_view propertyName; // GetProperty, SetProperty
    CMPIData propertyValue = {};   // SetProperty

    const char *methodName = nullptr;
    Args *arguments = nullptr;

    std::string_view qualifierName;
};

struct Answer {
    explicit Answer(Arena &arena) : instances(arena), paths(arena), classes(arena), qualifiers(arena) {}

    /** CMPI_RC_OK, or the error; then the rest does not count. */
    CMPIrc code = CMPI_RC_OK;
    /** The text of the error; null: there is none. */
    const char *message = nullptr;
    /** The error is that the request has waited for its turn for too long. */
    bool timedOut = false;

    ArenaList<Instance *> instances;
    ArenaList<Path *> paths;
    ArenaList<const cim::Class *> classes;
    /** Of a query, the names of the properties that it selects, ending with a null pointer; null: all. */
    const char **selected = nullptr;
    ArenaList<const cim::QualifierDeclaration *> qualifiers;

    /** Of a method, or the value of GetProperty. */
    CMPIData returnValue = {};
    bool hasReturnValue = false;
    Args *outArguments = nullptr;

    bool ok() const
    {
        return code == CMPI_RC_OK;
    }
};

// Status codes of DSP0200 that CMPI has no name for.
inline constexpr auto statusInvalidEnumerationContext = static_cast<CMPIrc>(21);
inline constexpr auto statusInvalidOperationTimeout = static_cast<CMPIrc>(22);
inline constexpr auto statusFilteredEnumerationNotSupported = static_cast<CMPIrc>(25);
inline constexpr auto statusContinuationOnErrorNotSupported = static_cast<CMPIrc>(26);

/** What DSP0200 says about a status code; for errors that come without a text of their own. */
const char *statusDescription(CMPIrc code);

} // namespace host

#endif
