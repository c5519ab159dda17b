// SPDX-License-Identifier: Apache-2.0
#include "core/dispatcher.h"

#include "core/operations.h"

#include <cstdio>

namespace host
{
namespace
{

using Function = void (*)(const Work &);

Function functionOf(Operation operation)
{
    switch (operation) {
    case Operation::enumerateInstances:
    case Operation::enumerateInstanceNames:
        return enumerate;
    case Operation::getInstance:
        return getInstance;
    case Operation::createInstance:
        return createInstance;
    case Operation::modifyInstance:
        return modifyInstance;
    case Operation::deleteInstance:
        return deleteInstance;
    case Operation::getProperty:
        return getProperty;
    case Operation::setProperty:
        return setProperty;
    case Operation::execQuery:
        return execQuery;
    case Operation::associators:
    case Operation::associatorNames:
    case Operation::references:
    case Operation::referenceNames:
        return traverse;
    case Operation::invokeMethod:
        return invokeMethod;
    case Operation::getClass:
    case Operation::enumerateClasses:
    case Operation::enumerateClassNames:
        return readClasses;
    case Operation::getQualifier:
    case Operation::enumerateQualifiers:
        break;
    }
    return readQualifiers;
}

void run(const Work &work)
{
    const Request &request = work.request;
    if (request.query != nullptr && request.operation != Operation::execQuery) {
        runFiltered(work, functionOf(request.operation));
    } else {
        functionOf(request.operation)(work);
    }
}

} // namespace

Dispatcher::Dispatcher(const cim::NameSpaces &nameSpaces, const ProviderManager &providers,
                       std::string hostName)
    : nameSpaces_(nameSpaces), providers_(providers), hostName_(std::move(hostName))
{
}

/** False, with the error in the answer, for a change that must not be. */
bool Dispatcher::permits(Call &call, const Request &request, Answer &answer) const
{
    if (request.role == Role::reader) {
        fail(call, answer, CMPI_RC_ERR_ACCESS_DENIED,
             "The account %.*s is a reader: it changes nothing and calls no methods.",
             shown(request.principal), request.principal.data());
        return false;
    }
    if (audit_ != nullptr && !audit_->isReady()) {
        fail(call, answer, CMPI_RC_ERR_FAILED, "The audit log cannot be written, so nothing is changed.");
        return false;
    }
    return true;
}

void Dispatcher::execute(Call &call, const Request &request, Answer &answer)
{
    const CallScope scope(call);
    // What providers ask meanwhile belongs to the request of the client.
    const bool isClientsChange = call.depth == 0 && isChange(request.operation);
    bool wasLetIn = false;
    const cim::NameSpace *nameSpace = nameSpaces_.find(request.nameSpace);
    if (request.principal.empty()) {
        fail(call, answer, CMPI_RC_ERR_ACCESS_DENIED, "The request has no principal.");
    } else if (nameSpace == nullptr) {
        fail(call, answer, CMPI_RC_ERR_INVALID_NAMESPACE, "The namespace %.*s does not exist.",
             shown(request.nameSpace), request.nameSpace.data());
    } else if (!isClientsChange || permits(call, request, answer)) {
        wasLetIn = true;
        const Work work{call, request, answer, nameSpaces_, *nameSpace, providers_, access_};
        try {
            run(work);
        } catch (...) {
            if (isClientsChange && audit_ != nullptr) { // what was changed before it was thrown is not known
                answer.code = CMPI_RC_ERR_FAILED;
                answer.message = "The request ended with an exception.";
                audit_->record(request, answer);
            }
            throw;
        }
    }
    if (isClientsChange && audit_ != nullptr) {
        audit_->record(request, answer, wasLetIn);
    }
    if (call.depth == 0) {
        std::fflush(stdout); // a client that has its answer finds there what the providers have printed
    }
    if (!answer.ok()) {
        // An error is the whole answer, even when objects were returned before it.
        answer.instances.clear();
        answer.paths.clear();
        answer.classes.clear();
        answer.qualifiers.clear();
        answer.hasReturnValue = false;
        answer.outArguments = nullptr;
    }
}

} // namespace host
