// SPDX-License-Identifier: Apache-2.0
#include "core/up_calls.h"

#include "cmpi/call.h"
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"
#include "core/dispatcher.h"

namespace host
{
namespace
{

/** The dispatcher of the broker behind the CMPI structure; null when there is none. */
Dispatcher *dispatcherOf(const Broker *broker)
{
    return static_cast<const DispatchingBroker *>(broker)->dispatcher();
}

std::string_view textEntry(const Context &context, const char *name)
{
    const NamedValue *entry = findValue(*context.entries, name);
    return entry != nullptr ? textOf(stringOf(entry->data)) : std::string_view();
}

/** An up-call: a request on behalf of the one that the provider is working on. */
class UpCall
{
  public:
    UpCall(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
           CMPIStatus *status)
        : broker_(Broker::behind(broker)), call_(currentCall()), status_(status)
    {
        const Context *from = behind<Context>(context);
        const Path *target = behind<Path>(path);
        if (broker_ == nullptr || from == nullptr || target == nullptr) {
            setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
            return;
        }
        if (call_ == nullptr || dispatcherOf(broker_) == nullptr) {
            // A thread that was not attached, or a provider that is still being set up.
            setStatus(status, CMPI_RC_ERR_FAILED);
            return;
        }
        request_.principal = textEntry(*from, CMPIPrincipal);
        request_.nameSpace =
            target->nameSpace != nullptr ? target->nameSpace->view() : textEntry(*from, CMPIInitNameSpace);
        request_.className = target->className->view();
        request_.path = copyObject(*call_->arena, *target);
        ready_ = true;
    }

    bool ready() const
    {
        return ready_;
    }

    Request &request()
    {
        return request_;
    }

    Arena &arena()
    {
        return *call_->arena;
    }

    /** Runs the request; fills the status. True when it succeeded. */
    bool run(Operation operation, Answer &answer)
    {
        request_.operation = operation;
        dispatcherOf(broker_)->execute(*call_, request_, answer);
        setStatus(status_, answer.code, call_->arena, answer.message);
        return answer.ok();
    }

  private:
    const Broker *broker_;
    Call *call_;
    CMPIStatus *status_;
    Request request_;
    bool ready_ = false;
};

/** What an enumerating up-call gives back: instances or paths, whichever the answer has. */
CMPIEnumeration *enumeration(UpCall &upCall, Operation operation, bool ofPaths)
{
    Answer answer(upCall.arena());
    if (!upCall.run(operation, answer)) {
        return nullptr;
    }
    Enumeration *made = makeEnumeration(upCall.arena(), ofPaths ? CMPI_ref : CMPI_instance);
    for (Path *path : answer.paths) {
        CMPIData data = {};
        data.type = CMPI_ref;
        data.value.ref = &path->cmpi;
        made->elements->append(data);
    }
    for (Instance *instance : answer.instances) {
        CMPIData data = {};
        data.type = CMPI_instance;
        data.value.inst = &instance->cmpi;
        made->elements->append(data);
    }
    return &made->cmpi;
}

CMPIEnumeration *enumerateInstanceNames(const CMPIBroker *broker, const CMPIContext *context,
                                        const CMPIObjectPath *path, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    return upCall.ready() ? enumeration(upCall, Operation::enumerateInstanceNames, true) : nullptr;
}

CMPIEnumeration *enumerateInstances(const CMPIBroker *broker, const CMPIContext *context,
                                    const CMPIObjectPath *path, const char **properties, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullptr;
    }
    upCall.request().propertyList = properties;
    return enumeration(upCall, Operation::enumerateInstances, false);
}

CMPIInstance *getInstance(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                          const char **properties, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullptr;
    }
    upCall.request().propertyList = properties;
    Answer answer(upCall.arena());
    return upCall.run(Operation::getInstance, answer) ? &answer.instances[0]->cmpi : nullptr;
}

/** Puts a copy of the given instance into the request. */
bool takeInstance(UpCall &upCall, const CMPIInstance *instance, CMPIStatus *status)
{
    const Instance *given = behind<Instance>(instance);
    if (given == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return false;
    }
    upCall.request().instance = copyObject(upCall.arena(), *given);
    return true;
}

CMPIObjectPath *createInstance(const CMPIBroker *broker, const CMPIContext *context,
                               const CMPIObjectPath *path, const CMPIInstance *instance, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready() || !takeInstance(upCall, instance, status)) {
        return nullptr;
    }
    Answer answer(upCall.arena());
    return upCall.run(Operation::createInstance, answer) ? &answer.paths[0]->cmpi : nullptr;
}

CMPIStatus modifyInstance(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                          const CMPIInstance *instance, const char **properties)
{
    CMPIStatus status = {};
    UpCall upCall(broker, context, path, &status);
    if (upCall.ready() && takeInstance(upCall, instance, &status)) {
        upCall.request().propertyList = properties;
        Answer answer(upCall.arena());
        upCall.run(Operation::modifyInstance, answer);
    }
    return status;
}

CMPIStatus deleteInstance(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path)
{
    CMPIStatus status = {};
    UpCall upCall(broker, context, path, &status);
    if (upCall.ready()) {
        Answer answer(upCall.arena());
        upCall.run(Operation::deleteInstance, answer);
    }
    return status;
}

CMPIEnumeration *execQuery(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                           const char *query, const char *language, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullptr;
    }
    if (query == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    upCall.request().query = query;
    upCall.request().queryLanguage = language;
    return enumeration(upCall, Operation::execQuery, false);
}

CMPIEnumeration *traverse(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                          Operation operation, const TraversalFilter &filter, const char **properties,
                          CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullptr;
    }
    upCall.request().filter = filter;
    upCall.request().propertyList = properties;
    return enumeration(upCall, operation,
                       operation == Operation::associatorNames || operation == Operation::referenceNames);
}

CMPIEnumeration *associators(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                             const char *associationClass, const char *resultClass, const char *role,
                             const char *resultRole, const char **properties, CMPIStatus *status)
{
    return traverse(broker, context, path, Operation::associators,
                    {associationClass, resultClass, role, resultRole}, properties, status);
}

CMPIEnumeration *associatorNames(const CMPIBroker *broker, const CMPIContext *context,
                                 const CMPIObjectPath *path, const char *associationClass,
                                 const char *resultClass, const char *role, const char *resultRole,
                                 CMPIStatus *status)
{
    return traverse(broker, context, path, Operation::associatorNames,
                    {associationClass, resultClass, role, resultRole}, nullptr, status);
}

CMPIEnumeration *references(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                            const char *resultClass, const char *role, const char **properties,
                            CMPIStatus *status)
{
    return traverse(broker, context, path, Operation::references, {resultClass, nullptr, role, nullptr},
                    properties, status);
}

CMPIEnumeration *referenceNames(const CMPIBroker *broker, const CMPIContext *context,
                                const CMPIObjectPath *path, const char *resultClass, const char *role,
                                CMPIStatus *status)
{
    return traverse(broker, context, path, Operation::referenceNames, {resultClass, nullptr, role, nullptr},
                    nullptr, status);
}

CMPIData invokeMethod(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                      const char *method, const CMPIArgs *in, CMPIArgs *out, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (method == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullData(CMPI_null, CMPI_badValue);
    }
    const Args *arguments = behind<Args>(in);
    upCall.request().methodName = method;
    upCall.request().arguments =
        arguments != nullptr ? copyObject(upCall.arena(), *arguments) : makeArgs(upCall.arena());
    Answer answer(upCall.arena());
    if (!upCall.run(Operation::invokeMethod, answer)) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (const Args *given = behind<Args>(out); given != nullptr) {
        for (const NamedValue &value : *answer.outArguments->values) {
            setValue(*given->values, value.name->view(), copyData(*given->arena, value.data));
        }
    }
    return answer.hasReturnValue ? answer.returnValue : nullData(CMPI_null);
}

CMPIStatus setPropertyOfBroker(const CMPIBroker *broker, const CMPIContext *context,
                               const CMPIObjectPath *path, const char *name, const CMPIValue *value,
                               CMPIType type)
{
    CMPIStatus status = {};
    UpCall upCall(broker, context, path, &status);
    if (!upCall.ready()) {
        return status;
    }
    if (name == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    upCall.request().propertyName = name;
    const CMPIrc code = takeValue(upCall.arena(), value, type, upCall.request().propertyValue);
    if (code != CMPI_RC_OK) {
        return makeStatus(code);
    }
    Answer answer(upCall.arena());
    upCall.run(Operation::setProperty, answer);
    return status;
}

CMPIData getPropertyOfBroker(const CMPIBroker *broker, const CMPIContext *context, const CMPIObjectPath *path,
                             const char *name, CMPIStatus *status)
{
    UpCall upCall(broker, context, path, status);
    if (!upCall.ready()) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (name == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullData(CMPI_null, CMPI_badValue);
    }
    upCall.request().propertyName = name;
    Answer answer(upCall.arena());
    if (!upCall.run(Operation::getProperty, answer)) {
        return nullData(CMPI_null, CMPI_notFound);
    }
    return answer.returnValue;
}

// --------------------------------------------------------------------------------------- attached threads

/** What a thread owns that a provider has attached: an arena for its objects, and its call. */
struct Attachment {
    Arena arena;
    Call call;
    Call *previous;
};

thread_local Attachment *attachment = nullptr;

CMPIContext *prepareAttachThread(const CMPIBroker *broker, const CMPIContext *context)
{
    return Broker::behind(broker) != nullptr ? cloneObject<Context>(context, nullptr) : nullptr;
}

CMPIStatus attachThread(const CMPIBroker *broker, const CMPIContext *context)
{
    const Context *from = behind<Context>(context);
    if (Broker::behind(broker) == nullptr || from == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (attachment != nullptr) {
        return makeStatus(CMPI_RC_ERR_ALREADY_EXISTS);
    }
    attachment = new Attachment;
    attachment->call = Call{&attachment->arena, from->request, from->depth};
    attachment->previous = exchangeCurrentCall(&attachment->call);
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus detachThread(const CMPIBroker *broker, const CMPIContext *context)
{
    if (Broker::behind(broker) == nullptr || behind<Context>(context) == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (attachment == nullptr) {
        return makeStatus(CMPI_RC_ERR_FAILED);
    }
    exchangeCurrentCall(attachment->previous);
    delete attachment;
    attachment = nullptr;
    return releaseObject<Context>(const_cast<CMPIContext *>(context)); // it was made for this thread
}

CMPIStatus deliverIndication(const CMPIBroker *, const CMPIContext *, const char *, const CMPIInstance *)
{
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}

} // namespace

const CMPIBrokerFT upCallTable = {
    CMPI_MB_InstanceManipulation | CMPI_MB_AssociationTraversal | CMPI_MB_QueryExecution |
        CMPI_MB_OSEncapsulationSupport | CMPI_MB_Supports_Extended_Error | CMPI_MB_Logging | CMPI_MB_Tracing |
        CMPI_MB_PropertyFiltering,
    tableVersion,
    "display-host",
    guarded<prepareAttachThread>,
    guarded<attachThread>,
    guarded<detachThread>,
    deliverIndication,
    guarded<enumerateInstanceNames>,
    guarded<getInstance>,
    guarded<createInstance>,
    guarded<modifyInstance>,
    guarded<deleteInstance>,
    guarded<execQuery>,
    guarded<enumerateInstances>,
    guarded<associators>,
    guarded<associatorNames>,
    guarded<references>,
    guarded<referenceNames>,
    guarded<invokeMethod>,
    guarded<setPropertyOfBroker>,
    guarded<getPropertyOfBroker>,
};

} // namespace host
