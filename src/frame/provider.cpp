// SPDX-License-Identifier: Apache-2.0
#include "frame/provider.h"

namespace frame
{

// ---- methods ----

/** Compares an identifying key exactly. Returns 0 with the index, or -1 with `errorText` filled. */
static int matchKey(const IdentifyingKey &key, const char *value, char *errorText, int *index)
{
    *index = 0;
    if (key.validate) {
        return key.validate(value, errorText, index);
    }
    if (strcmp(value, key.value) == 0) {
        return 0;
    }
    copyText(errorText, ERROR_TEXT_SIZE, key.wrong);
    return -1;
}

/** Checks the object that a method is called on. */
static bool checkTarget(Call &call, const ProviderClass &provider)
{
    if (provider.systemKeys) {
        return checkSystemKeys(call.broker, call.reference, *provider.systemKeys, call.status);
    }
    const char *key = keyText(call.reference, provider.key.name);
    if (!key) {
        call.returnValue = provider.refusals.missingKeyValue;
        return fail(call, CMPI_RC_ERR_NOT_FOUND, "Invalid selector(Could not get InstanceID of instance.)");
    }
    call.key = key;
    return !provider.refusals.checkKeyValue ||
           matchKey(provider.key, key, call.errorText, &call.index) == 0 ||
           fail(call, provider.refusals.wrongKey, call.errorText);
}

static const Method *findMethod(const ProviderClass &provider, const char *name)
{
    for (const Method &method : provider.methods) {
        if (provider.compareMethodNames(method.name, name) == 0) {
            return &method;
        }
    }
    return nullptr;
}

static bool dispatch(Call &call, const ProviderClass &provider)
{
    if (!isOfClass(call.reference, provider.name)) {
        return provider.refusals.wrongClass &&
               fail(call, CMPI_RC_ERR_NOT_FOUND, provider.refusals.wrongClass);
    }
    if (!checkTarget(call, provider)) {
        return false;
    }
    if (const Method *method = findMethod(provider, call.methodName)) {
        return runMethod(call, *method);
    }
    call.returnValue = provider.refusals.unknownMethodValue;
    return fail(call, provider.refusals.unknownMethod, call.methodName);
}

// The results of handing an answer over are not looked at: an object manager that cannot take it has already
// given up the request, and no other answer could be given instead.

static void returnMethodValue(const CMPIResult *result, uint8_t value, CMPIType type)
{
    CMPIValue data = {};
    if (type == CMPI_uint8) {
        data.uint8 = value;
    } else {
        data.uint32 = value;
    }
    cmpi::returnData(result, &data, type);
    cmpi::returnDone(result);
}

CMPIStatus invokeMethod(const ProviderClass &provider, const CMPIBroker *broker, const CMPIContext *context,
                        const CMPIResult *result, const CMPIObjectPath *reference, const char *methodName,
                        const CMPIArgs *in)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    Call call = {broker, context, reference, in, methodName, &status, " ", 0, provider.refusals.failureValue};
    const bool done = dispatch(call, provider);
    returnMethodValue(result, done ? 0 : call.returnValue, provider.returnType);
    return status;
}

CMPIStatus invokePlaceholder(const CMPIBroker *broker, const char *className, CMPIrc unknownCode,
                             const CMPIResult *result, const CMPIObjectPath *reference,
                             const char *methodName)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    if (!isOfClass(reference, className) || strcasecmp(methodName, "insert_method_name") != 0) {
        fail(broker, &status, unknownCode, methodName);
    }
    returnMethodValue(result, 1, CMPI_uint32);
    return status;
}

// ---- the intrinsic reads ----

/** Asks the engine to refresh the groups that the class shows. */
static bool refreshed(const ProviderClass &provider, const CMPIBroker *broker, CMPIStatus *status)
{
    char errorText[ERROR_TEXT_SIZE] = " ";
    for (const int group : provider.reads.refresh) {
        if (InvokeGetMethod_Spear(group, errorText) != 0) {
            return fail(broker, status, CMPI_RC_ERR_FAILED, errorText);
        }
    }
    return true;
}

template <typename Made>
static Made *make(Builder<Made> one, BuilderAt<Made> at, const CMPIObjectPath *reference, int index,
                  CMPIStatus *status)
{
    return at ? at(reference, index, status) : one(reference, status);
}

/** Builds and returns all paths in order. A path that its builder returned is handed on even when the builder
 *  left a failure in the status, which then is the status of the operation. */
static void returnPaths(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                        const CMPIObjectPath *reference, CMPIStatus *status)
{
    for (int index = 0; index < provider.reads.count; ++index) {
        const CMPIObjectPath *path =
            make(provider.builders.path, provider.builders.pathAt, reference, index, status);
        if (!path) {
            fail(broker, status, CMPI_RC_ERR_FAILED, "Couldn't build objectpath");
            return;
        }
        cmpi::returnObjectPath(result, path);
    }
    cmpi::returnDone(result);
}

/** Builds and returns the instances of the given indices in order. */
static void returnInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                            const CMPIObjectPath *reference, int first, int last, CMPIStatus *status)
{
    for (int index = first; index <= last; ++index) {
        const CMPIInstance *instance =
            make(provider.builders.instance, provider.builders.instanceAt, reference, index, status);
        if (!instance) {
            fail(broker, status, CMPI_RC_ERR_FAILED, "Couldn't build instance");
            return;
        }
        cmpi::returnInstance(result, instance);
    }
    cmpi::returnDone(result);
}

/** Checks the keys of the instance that is asked for. */
static bool checkKeys(const ProviderClass &provider, const CMPIBroker *broker,
                      const CMPIObjectPath *reference, int *index, CMPIStatus *status)
{
    if (provider.systemKeys && !checkSystemKeys(broker, reference, *provider.systemKeys, status)) {
        return false;
    }
    if (!provider.key.name) {
        return true;
    }
    const char *key = keyText(reference, provider.key.name);
    char errorText[ERROR_TEXT_SIZE] = " ";
    if (key && matchKey(provider.key, key, errorText, index) == 0) {
        return true;
    }
    return fail(broker, status, CMPI_RC_ERR_NOT_FOUND, key ? errorText : provider.key.missing);
}

CMPIStatus enumInstanceNames(const ProviderClass &provider, const CMPIBroker *broker,
                             const CMPIResult *result, const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    trace(provider.reads.traces->namesCalled, provider.name);
    if (refreshed(provider, broker, &status)) {
        returnPaths(provider, broker, result, reference, &status);
    }
    trace(provider.reads.traces->namesExited, provider.name);
    return status;
}

CMPIStatus enumInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                         const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    trace(provider.reads.traces->instancesCalled, provider.name);
    if (refreshed(provider, broker, &status)) {
        returnInstances(provider, broker, result, reference, 0, provider.reads.count - 1, &status);
    }
    trace(provider.reads.traces->instancesLeft, provider.name);
    return status;
}

CMPIStatus getInstance(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                       const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    int index = 0;
    trace("--- %s CMPI GetInstance() called\n", provider.name);
    if (!checkKeys(provider, broker, reference, &index, &status)) {
        return status;
    }
    if (refreshed(provider, broker, &status)) {
        returnInstances(provider, broker, result, reference, index, index, &status);
    }
    trace("--- %s CMPI GetInstance() exited\n", provider.name);
    return status;
}

CMPIStatus notSupported(const CMPIBroker *broker)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    fail(broker, &status, CMPI_RC_ERR_NOT_SUPPORTED, "NOT_SUPPORTED");
    return status;
}

} // namespace frame
