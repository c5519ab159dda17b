// SPDX-License-Identifier: Apache-2.0
// The operations: each finds the providers that it concerns, or reads the class definitions, and fills the
// answer.
#ifndef HOST_CORE_OPERATIONS_H
#define HOST_CORE_OPERATIONS_H

#include "cim/name_spaces.h"
#include "core/provider_call.h"
#include "core/provider_manager.h"

namespace host
{

/** What an operation works with. */
struct Work {
    Call &call;
    const Request &request;
    Answer &answer;
    const cim::NameSpaces &nameSpaces;
    const cim::NameSpace &nameSpace; // of the request
    const ProviderManager &providers;
    ProviderAccess &access;

    /** The same for another request on behalf of this one. */
    Work with(const Request &other) const
    {
        return {call, other, answer, nameSpaces, nameSpace, providers, access};
    }

    Arena &arena() const
    {
        return *call.arena;
    }

    /** Calls a provider; true when it succeeded. function: see ProviderCall::run(). */
    template <typename Function>
    bool callProvider(Collector::Kind kind, Function function) const
    {
        return ProviderCall(access, call, request, kind, answer).run(function);
    }
};

/** The class of that name; null, with the error in the answer, when there is none. */
const cim::Class *classOf(const Work &work, std::string_view name);

/** The class that the path of the request names. */
const cim::Class *classOfPath(const Work &work);

/** True when a subclass has an instance provider. */
bool isServedBelow(const Work &work, const cim::Class &klass);

/** The class that a filter for the association names; false, with the error in the answer, when it does not
 * exist. */
bool findFilterClass(const Work &work, const char *name, const cim::Class *&klass);

/** Shows of all instances of the answer what the request wants to see. limit: only properties that this class
 * has too; null: all. */
void show(const Work &work, const cim::Class *limit);

/** The request with a path of the class that the instance was made of, where its path names a superclass.
 * Null, with the error in the answer, when there is no such instance. */
const Request *resolved(const Work &work);

/** Runs the operation, which returns instances, and leaves those that the filter of the request lets pass. */
void runFiltered(const Work &work, void (*operation)(const Work &));

void enumerate(const Work &work);
void getInstance(const Work &work);
void createInstance(const Work &work);
void modifyInstance(const Work &work);
void deleteInstance(const Work &work);
void getProperty(const Work &work);
void setProperty(const Work &work);
void execQuery(const Work &work);
void traverse(const Work &work);
void traverseClasses(const Work &work);
void invokeMethod(const Work &work);
void readClasses(const Work &work);
void readQualifiers(const Work &work);

} // namespace host

#endif
