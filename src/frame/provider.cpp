// SPDX-License-Identifier: Apache-2.0
#include "frame/provider.h"

#include <cstdio>

void trace(const char *format, const char *className)
{
    if (format)
        printf(format, className);
}

// ---- building paths and instances ----

CMPIObjectPath *newPath(const CMPIBroker *broker, const char *className, const CMPIObjectPath *reference,
                        CMPIStatus *status)
{
    const char *nameSpace = textOf(CMGetNameSpace(reference, nullptr));
    CMPIObjectPath *path = nameSpace ? CMNewObjectPath(broker, nameSpace, className, status) : nullptr;
    if (!isNullObject(path))
        return path;
    setStatus(broker, status, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
    return nullptr;
}

/** Characters where the interface has a value: of the type CMPI_chars the pointer itself is the value. */
static const CMPIValue *charsValue(const char *text)
{
    return static_cast<const CMPIValue *>(static_cast<const void *>(text));
}

void addKeys(const CMPIObjectPath *path, std::initializer_list<Key> keys)
{
    for (const Key &key : keys)
        CMAddKey(path, key.name, charsValue(key.value), CMPI_chars);
}

bool readSystemName(const CMPIBroker *broker, CMPIStatus *status, const char *failure, SystemName *name)
{
    MonitorInfo info = {};
    if (GetMoinitorInfo(&info) != 0) {
        setStatus(broker, status, CMPI_RC_ERR_FAILED, failure);
        return false;
    }
    *name = systemName(info);
    return true;
}

CMPIObjectPath *makePathByInstanceID(const CMPIBroker *broker, const char *className,
                                     const CMPIObjectPath *reference, const char *instanceID,
                                     CMPIStatus *status)
{
    trace("--- %s makePath called\n", className);
    CMPIObjectPath *path = newPath(broker, className, reference, status);
    if (path)
        addKeys(path, {{"InstanceID", instanceID}});
    return path;
}

InstanceID::InstanceID(const char *format, int index)
{
    snprintf(text, sizeof text, format, index + 1);
}

int matchInstanceID(const char *instanceID, const char *format, int count, char *errorText, int *index)
{
    for (int i = 0; i < count; ++i) {
        if (strcmp(instanceID, InstanceID(format, i).text) == 0) {
            *index = i;
            return 0;
        }
    }
    copyText(errorText, ERROR_TEXT_SIZE, "This class name does not exist (wrong InstanceID).");
    return -1;
}

InstanceBuilder::InstanceBuilder(const CMPIBroker *theBroker, const char *theClassName,
                                 const CMPIObjectPath *path, CMPIStatus *theStatus)
    : broker(theBroker), className(theClassName), status(theStatus), instance(nullptr)
{
    trace("--- %s makeInst) called\n", className);
    makeInstance(path);
}

InstanceBuilder::InstanceBuilder(const CMPIBroker *theBroker, const char *theClassName,
                                 const CMPIObjectPath *reference, const char *instanceID,
                                 CMPIStatus *theStatus)
    : broker(theBroker), className(theClassName), status(theStatus), instance(nullptr)
{
    trace("--- %s makeInst) called\n", className);
    const CMPIObjectPath *path = newPath(broker, className, reference, status);
    if (path)
        addKeys(path, {{"InstanceID", instanceID}});
    makeInstance(path);
}

void InstanceBuilder::makeInstance(const CMPIObjectPath *path)
{
    if (!path)
        return;
    instance = CMNewInstance(broker, path, status);
    if (isNullObject(instance))
        require(false, "Create CMPIInstance failed.");
}

bool InstanceBuilder::require(bool ok, const char *text)
{
    if (!ok) {
        setStatus(broker, status, CMPI_RC_ERR_FAILED, text);
        instance = nullptr;
    }
    return ok;
}

bool InstanceBuilder::readSystemName(const char *failure, SystemName *name)
{
    if (!::readSystemName(broker, status, failure, name))
        instance = nullptr;
    return instance != nullptr;
}

void InstanceBuilder::set(const char *name, const CMPIValue *value, CMPIType type)
{
    if (instance)
        CMSetProperty(instance, name, value, type);
}

void InstanceBuilder::boolean(const char *name, int value)
{
    CMPIValue data = {};
    data.boolean = static_cast<CMPIBoolean>(value);
    set(name, &data, CMPI_boolean);
}

void InstanceBuilder::uint16(const char *name, int value)
{
    CMPIValue data = {};
    data.uint16 = static_cast<CMPIUint16>(value);
    set(name, &data, CMPI_uint16);
}

void InstanceBuilder::real32(const char *name, float value)
{
    CMPIValue data = {};
    data.real32 = value;
    set(name, &data, CMPI_real32);
}

void InstanceBuilder::text(const char *name, const char *value)
{
    set(name, charsValue(value), CMPI_chars);
}

void InstanceBuilder::formatted(const char *name, const char *format, const char *value)
{
    char whole[100];
    snprintf(whole, sizeof whole, format, value);
    text(name, whole);
}

void InstanceBuilder::dateTime(const char *name, int64_t seconds)
{
    if (!instance)
        return;
    CMPIValue data = {};
    data.dateTime =
        CMNewDateTimeFromBinary(broker, static_cast<CMPIUint64>(seconds * 1000000), false, nullptr);
    // A date that the object manager cannot make stays null, the rest of the instance is right.
    if (data.dateTime)
        set(name, &data, CMPI_dateTime);
}

namespace
{

constexpr const char *arrayFailed = "Failed to initialize array.";

} // namespace

CMPIArray *InstanceBuilder::newArray(CMPICount size, CMPIType type)
{
    if (!instance)
        return nullptr;
    CMPIArray *array = CMNewArray(broker, size, type, status);
    return require(!isNullObject(array), arrayFailed) ? array : nullptr;
}

void InstanceBuilder::setElement(CMPIArray *array, CMPICount position, const CMPIValue &value, CMPIType type)
{
    require(CMSetArrayElementAt(array, position, &value, type).rc == CMPI_RC_OK, arrayFailed);
}

void InstanceBuilder::uint16Array(const char *name, std::initializer_list<int> values)
{
    CMPIValue data = {};
    data.array = newArray(static_cast<CMPICount>(values.size()), CMPI_uint16);
    if (!data.array)
        return;
    CMPICount position = 0;
    for (const int value : values) {
        CMPIValue element = {};
        element.uint16 = static_cast<CMPIUint16>(value);
        setElement(data.array, position++, element, CMPI_uint16);
    }
    set(name, &data, CMPI_uint16A);
}

void InstanceBuilder::textArray(const char *name, const char *value)
{
    CMPIValue data = {};
    data.array = newArray(1, CMPI_string);
    if (!data.array)
        return;
    CMPIValue element = {};
    element.string = CMNewString(broker, value, nullptr);
    if (require(element.string != nullptr, arrayFailed))
        setElement(data.array, 0, element, CMPI_string);
    set(name, &data, CMPI_stringA);
}

CMPIInstance *InstanceBuilder::finish()
{
    trace("--- %s makeInst) exited\n", className);
    return instance;
}

// ---- methods ----

bool fail(Call &call, CMPIrc code, const char *text)
{
    setStatus(call.broker, call.status, code, text);
    return false;
}

bool requireAdministrator(const CMPIBroker *broker, const CMPIContext *context, CMPIStatus *status,
                          char *errorText, bool announce)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = CMGetContextEntry(context, CMPIPrincipal, &read);
    const char *user = textOf(data, read);
    if (!user) {
        setStatus(broker, status, CMPI_RC_ERR_FAILED, "Could not get user credentials");
        return false;
    }
    if (announce)
        trace("AccountSetInstance: requesting user is %s\n", user);
    char isAdmin = 0;
    if (IsAdminUser(user, &isAdmin, errorText) != 0) {
        errorText[ERROR_TEXT_SIZE - 1] = '\0';
        setStatus(broker, status, CMPI_RC_ERR_FAILED, errorText);
        return false;
    }
    if (!isAdmin)
        setStatus(broker, status, CMPI_RC_ERR_ACCESS_DENIED,
                  "Operation not allowed for non-admin user credentials");
    return isAdmin;
}

namespace
{

/** Reads an argument; false when it was not given at all. */
bool getArgument(Call &call, const char *name, CMPIData *data)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    *data = CMGetArg(call.in, name, &read);
    return read.rc == CMPI_RC_OK && !(data->state & (CMPI_notFound | CMPI_badValue));
}

} // namespace

const char *requireText(Call &call, const char *name, const char *missing, const char *invalidType)
{
    CMPIData data = {};
    // Object managers hand an argument that has no value as absent, as null or as an empty pointer.
    const char *text = nullptr;
    if (!getArgument(call, name, &data) || (data.state & CMPI_nullValue))
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, missing);
    else if (data.type != CMPI_string)
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalidType);
    else if (!(text = textOf(data.value.string)))
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, missing);
    return text;
}

bool requireContent(Call &call, const char *text, const char *empty)
{
    return *text != '\0' || fail(call, CMPI_RC_ERR_INVALID_PARAMETER, empty);
}

bool convert(Call &call, const char *text, ArgumentKind kind, const char *invalid, int *value)
{
    *value = decimalValue(text);
    if (kind == ArgumentKind::toggle) {
        if (strcasecmp(text, "true") == 0)
            *value = 1;
        else if (strcasecmp(text, "false") == 0)
            *value = 0;
        else if (strcmp(text, "0") != 0 && strcmp(text, "1") != 0)
            return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalid);
    } else if (kind == ArgumentKind::integer && !isDecimal(text)) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalid);
    }
    return true;
}

bool readArgument(Call &call, const Argument &argument, int *value)
{
    const char *text = requireText(call, argument.name, argument.missing);
    return text && requireContent(call, text) && convert(call, text, argument.kind, argument.invalid, value);
}

const char *keyText(const CMPIObjectPath *path, const char *name)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = CMGetKey(path, name, &read);
    return textOf(data, read);
}

const CMPIObjectPath *requireReference(Call &call, const char *name, const ReferenceTexts &texts,
                                       const char **className)
{
    CMPIData data = {};
    if (!getArgument(call, name, &data) || ((data.state & CMPI_nullValue) && data.type != CMPI_ref)) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.missing);
    } else if (data.type != CMPI_ref) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.invalidType);
    } else if ((data.state & CMPI_nullValue) || !data.value.ref) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.null);
    } else {
        *className = textOf(CMGetClassName(data.value.ref, nullptr));
        if (*className)
            return data.value.ref;
        fail(call, CMPI_RC_ERR_FAILED, texts.className);
    }
    return nullptr;
}

bool requireRange(Call &call, int value, const Range &range)
{
    return !range.text || ValidateInputArgs(value, range.min, range.max) == 0 ||
           fail(call, CMPI_RC_ERR_INVALID_PARAMETER, range.text);
}

bool requirePosition(Call &call, int x, const Range &xRange, int y, const Range &yRange, const char *both)
{
    const bool xFits = ValidateInputArgs(x, xRange.min, xRange.max) == 0;
    const bool yFits = ValidateInputArgs(y, yRange.min, yRange.max) == 0;
    if (xFits && yFits)
        return true;
    return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, xFits ? yRange.text : yFits ? xRange.text : both);
}

bool settled(Call &call, int result)
{
    call.errorText[ERROR_TEXT_SIZE - 1] = '\0';
    return result == 0 || fail(call, CMPI_RC_ERR_FAILED, call.errorText);
}

namespace
{

bool runMethod(Call &call, const Method &method)
{
    int value = 0;
    if (method.administrator && !requireAdministrator(call.broker, call.context, call.status, call.errorText))
        return false;
    if (method.run)
        return method.run(call);
    if (method.argument.kind != ArgumentKind::none && !readArgument(call, method.argument, &value))
        return false;
    if (method.precondition && !method.precondition(call))
        return false;
    if (!requireRange(call, value, method.range))
        return false;
    // A sound row has one of the two.
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    return settled(call, method.set ? method.set(value, call.errorText) : method.act(call.errorText));
}

/** Compares an identifying key exactly. Returns 0 with the index, or -1 with `errorText` filled. */
int matchKey(const IdentifyingKey &key, const char *value, char *errorText, int *index)
{
    *index = 0;
    if (key.validate)
        return key.validate(value, errorText, index);
    if (strcmp(value, key.value) == 0)
        return 0;
    copyText(errorText, ERROR_TEXT_SIZE, key.wrong);
    return -1;
}

/** Checks the object that a method is called on. */
bool checkTarget(Call &call, const ProviderClass &provider)
{
    if (provider.systemKeys) {
        Check_System_key_value_pairs(call.broker, call.reference, provider.name, call.status);
        return call.status->rc == CMPI_RC_OK;
    }
    const char *key = keyText(call.reference, provider.key.name);
    if (!key) {
        call.returnValue = provider.missingKeyValue;
        return fail(call, CMPI_RC_ERR_NOT_FOUND, "Invalid selector(Could not get InstanceID of instance.)");
    }
    call.key = key;
    return !provider.methodsCheckValue || matchKey(provider.key, key, call.errorText, &call.index) == 0 ||
           fail(call, provider.wrongKeyCode, call.errorText);
}

bool isOfClass(const CMPIObjectPath *path, const char *className)
{
    const char *name = textOf(CMGetClassName(path, nullptr));
    return name && strcasecmp(name, className) == 0;
}

/** The row as its class wrote it. */
Method unpacked(const MethodTable &table, const PackedMethod &row)
{
    const auto textAt = [&](uint16_t place) { return place ? table.texts + place : nullptr; };
    const bool hasArgument = row.kind != ArgumentKind::none;
    return {
        .name = textAt(row.name),
        .administrator = row.administrator,
        .argument = {row.kind, textAt(row.argument), textAt(row.missing), textAt(row.invalid)},
        .precondition = row.precondition,
        .range = {row.min, row.max, textAt(row.rangeText)},
        .set = !row.runs && hasArgument ? row.set : nullptr,
        .act = !row.runs && !hasArgument ? row.act : nullptr,
        .run = row.runs ? row.run : nullptr,
    };
}

const PackedMethod *findMethod(const ProviderClass &provider, const char *name)
{
    for (const PackedMethod &method : provider.methods.rows)
        if (provider.compareMethodNames(provider.methods.texts + method.name, name) == 0)
            return &method;
    return nullptr;
}

bool dispatch(Call &call, const ProviderClass &provider)
{
    if (!isOfClass(call.reference, provider.name))
        return provider.wrongClass && fail(call, CMPI_RC_ERR_NOT_FOUND, provider.wrongClass);
    if (!checkTarget(call, provider))
        return false;
    if (const PackedMethod *method = findMethod(provider, call.methodName))
        return runMethod(call, unpacked(provider.methods, *method));
    call.returnValue = provider.unknownMethodValue;
    return fail(call, provider.unknownMethodCode, call.methodName);
}

// The results of handing an answer over are not looked at: an object manager that cannot take it has already
// given up the request, and no other answer could be given instead.

void returnMethodValue(const CMPIResult *result, uint8_t value, CMPIType type)
{
    CMPIValue data = {};
    if (type == CMPI_uint8)
        data.uint8 = value;
    else
        data.uint32 = value;
    CMReturnData(result, &data, type);
    CMReturnDone(result);
}

} // namespace

CMPIStatus invokeMethod(const ProviderClass &provider, const CMPIBroker *broker, const CMPIContext *context,
                        const CMPIResult *result, const CMPIObjectPath *reference, const char *methodName,
                        const CMPIArgs *in)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    Call call = {broker, context, reference, in, methodName, &status, " ", 0, provider.failureValue};
    const bool done = dispatch(call, provider);
    returnMethodValue(result, done ? 0 : call.returnValue, provider.returnType);
    return status;
}

CMPIStatus invokePlaceholder(const CMPIBroker *broker, const char *className, CMPIrc unknownCode,
                             const CMPIResult *result, const CMPIObjectPath *reference,
                             const char *methodName)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    if (!isOfClass(reference, className) || strcasecmp(methodName, "insert_method_name") != 0)
        setStatus(broker, &status, unknownCode, methodName);
    returnMethodValue(result, 1, CMPI_uint32);
    return status;
}

// ---- the intrinsic reads ----

namespace
{

/** Asks the engine to refresh the groups that the class shows. */
bool refreshed(const ProviderClass &provider, const CMPIBroker *broker, CMPIStatus *status)
{
    char errorText[ERROR_TEXT_SIZE] = " ";
    for (const int group : provider.refresh) {
        if (InvokeGetMethod_Spear(group, errorText) != 0) {
            setStatus(broker, status, CMPI_RC_ERR_FAILED, errorText);
            return false;
        }
    }
    return true;
}

CMPIObjectPath *pathAt(const ProviderClass &provider, const CMPIObjectPath *reference, int index,
                       CMPIStatus *status)
{
    return provider.makePathAt ? provider.makePathAt(reference, index, status)
                               : provider.makePath(reference, status);
}

CMPIInstance *instanceAt(const ProviderClass &provider, const CMPIObjectPath *reference, int index,
                         CMPIStatus *status)
{
    return provider.makeInstAt ? provider.makeInstAt(reference, index, status)
                               : provider.makeInst(reference, status);
}

/** Builds and returns all paths in order. A path that its builder returned is handed on even when the builder
 *  left a failure in the status, which then is the status of the operation. */
void returnPaths(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                 const CMPIObjectPath *reference, CMPIStatus *status)
{
    for (int index = 0; index < provider.instances; ++index) {
        const CMPIObjectPath *path = pathAt(provider, reference, index, status);
        if (!path) {
            setStatus(broker, status, CMPI_RC_ERR_FAILED, "Couldn't build objectpath");
            return;
        }
        CMReturnObjectPath(result, path);
    }
    CMReturnDone(result);
}

/** Builds and returns the instances of the given indices in order. */
void returnInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                     const CMPIObjectPath *reference, int first, int last, CMPIStatus *status)
{
    for (int index = first; index <= last; ++index) {
        const CMPIInstance *instance = instanceAt(provider, reference, index, status);
        if (!instance) {
            setStatus(broker, status, CMPI_RC_ERR_FAILED, "Couldn't build instance");
            return;
        }
        CMReturnInstance(result, instance);
    }
    CMReturnDone(result);
}

/** Checks the keys of the instance that is asked for. */
bool checkKeys(const ProviderClass &provider, const CMPIBroker *broker, const CMPIObjectPath *reference,
               int *index, CMPIStatus *status)
{
    if (provider.systemKeys) {
        Check_System_key_value_pairs(broker, reference, provider.name, status);
        if (status->rc != CMPI_RC_OK)
            return false;
    }
    if (!provider.key.name)
        return true;
    const char *key = keyText(reference, provider.key.name);
    char errorText[ERROR_TEXT_SIZE] = " ";
    if (key && matchKey(provider.key, key, errorText, index) == 0)
        return true;
    setStatus(broker, status, CMPI_RC_ERR_NOT_FOUND, key ? errorText : provider.key.missing);
    return false;
}

} // namespace

CMPIStatus enumInstanceNames(const ProviderClass &provider, const CMPIBroker *broker,
                             const CMPIResult *result, const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    trace(provider.traces->namesCalled, provider.name);
    if (refreshed(provider, broker, &status))
        returnPaths(provider, broker, result, reference, &status);
    trace(provider.traces->namesExited, provider.name);
    return status;
}

CMPIStatus enumInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                         const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    trace(provider.traces->instancesCalled, provider.name);
    if (refreshed(provider, broker, &status))
        returnInstances(provider, broker, result, reference, 0, provider.instances - 1, &status);
    trace(provider.traces->instancesLeft, provider.name);
    return status;
}

CMPIStatus getInstance(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                       const CMPIObjectPath *reference)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    int index = 0;
    trace("--- %s CMPI GetInstance() called\n", provider.name);
    if (!checkKeys(provider, broker, reference, &index, &status))
        return status;
    if (refreshed(provider, broker, &status))
        returnInstances(provider, broker, result, reference, index, index, &status);
    trace("--- %s CMPI GetInstance() exited\n", provider.name);
    return status;
}

CMPIStatus notSupported(const CMPIBroker *broker)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    setStatus(broker, &status, CMPI_RC_ERR_NOT_SUPPORTED, "NOT_SUPPORTED");
    return status;
}

CMPIStatus cleanedUp()
{
    return {CMPI_RC_OK, nullptr};
}
