// SPDX-License-Identifier: Apache-2.0
#include "recording_broker.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <sstream>
#include <strings.h>

namespace test_support
{

RecordingBroker broker;

namespace
{

void report(CMPIStatus *status, CMPIrc rc)
{
    if (status && !(rc == CMPI_RC_OK && broker.manners.reportsFailuresAlone)) {
        *status = {rc, nullptr};
    }
}

void report(CMPIStatus *status, CMPIrc rc, const std::string &message)
{
    if (status) {
        *status = {rc, message.empty() ? nullptr : static_cast<CMPIString *>(broker.newString(message))};
    }
}

CMPIData nothing()
{
    CMPIData data = {};
    data.state = CMPI_notFound | CMPI_nullValue;
    return data;
}

/** The object made, with the flaw that was asked for. */
template <typename Made>
Made *flawed(Made *made, Fault fault)
{
    if (fault == Fault::noHandle) {
        made->hdl = nullptr;
    }
    if (fault == Fault::noTable) {
        made->ft = nullptr;
    }
    return made;
}

/** A function of the broker on its way: counted, and perhaps struck. */
struct Visit {
    Visit(const char *theFunction, CMPIStatus *theStatus)
        : function(theFunction), status(theStatus), fault(faults.strike(theFunction))
    {
        report(status, fault == Fault::fails ? CMPI_RC_ERR_FAILED : CMPI_RC_OK);
    }

    /** The object behind an argument; null when the call is struck or the object cannot be used. */
    template <typename Wanted>
    Wanted *use(const typename Wanted::Interface *argument)
    {
        if (!argument) {
            ADD_FAILURE() << function << " called without an object";
            report(status, CMPI_RC_ERR_INVALID_HANDLE);
            return nullptr;
        }
        auto *object = const_cast<Wanted *>(static_cast<const Wanted *>(argument));
        if (object->released) {
            ADD_FAILURE() << function << " called with an object that was released";
        }
        if (!argument->hdl) {
            report(status, CMPI_RC_ERR_INVALID_HANDLE);
            return nullptr;
        }
        return struck() ? nullptr : object;
    }

    bool struck() const
    {
        return fault == Fault::fails || fault == Fault::silent;
    }

    template <typename Made>
    Made *deliver(Made *made) const
    {
        return flawed(made, fault);
    }

    const char *function;
    CMPIStatus *status;
    Fault fault;
};

/** A function of the broker that delivers nothing but its status. */
struct Action {
    explicit Action(const char *function) : result{CMPI_RC_OK, nullptr}, visit(function, &result)
    {
        if (visit.fault == Fault::silent) { // there is nothing that could stay away
            visit.fault = Fault::none;
        }
    }
    template <typename Wanted>
    Wanted *use(const typename Wanted::Interface *argument)
    {
        return visit.use<Wanted>(argument);
    }
    CMPIStatus result;
    Visit visit;
};

// ---- functions that no provider of this library calls ----

template <size_t size>
struct Name {
    constexpr Name(const char (&literal)[size])
    {
        std::copy_n(literal, size, text);
    }
    char text[size];
};

template <Name name, typename Result, typename... Arguments>
Result unexpectedCall(Arguments...)
{
    ADD_FAILURE() << "unexpected call of the broker's " << name.text;
    if constexpr (!std::is_void_v<Result>) {
        return Result{};
    }
}

template <Name name, typename Result, typename... Arguments>
Result unexpectedVariadicCall(Arguments..., ...)
{
    ADD_FAILURE() << "unexpected call of the broker's " << name.text;
    return Result{};
}

/** Fits every function pointer of the tables. */
template <Name name>
struct Unexpected {
    template <typename Result, typename... Arguments>
    using Function = Result (*)(Arguments...);
    template <typename Result, typename... Arguments>
    using VariadicFunction = Result (*)(Arguments..., ...);
    template <typename Result, typename... Arguments>
    constexpr operator Function<Result, Arguments...>() const
    {
        return &unexpectedCall<name, Result, Arguments...>;
    }
    template <typename Result, typename... Arguments>
    constexpr operator VariadicFunction<Result, Arguments...>() const
    {
        return &unexpectedVariadicCall<name, Result, Arguments...>;
    }
};

// ---- what all objects have ----

template <Name name, typename Wanted>
CMPIStatus releaseObject(typename Wanted::Interface *argument)
{
    Action action(name.text);
    if (auto *object = action.use<Wanted>(argument)) {
        EXPECT_TRUE(object->cloned) << name.text << ": the object belongs to the broker";
        object->released = true;
    }
    return action.result;
}

template <Name name, typename Wanted>
typename Wanted::Interface *cloneObject(const typename Wanted::Interface *argument, CMPIStatus *status)
{
    Visit visit(name.text, status);
    auto *object = visit.use<Wanted>(argument);
    if (!object) {
        return nullptr;
    }
    auto *copy = broker.make<Wanted>();
    const auto *handle = copy->hdl;
    *copy = *object;
    copy->hdl = handle;
    copy->cloned = true;
    return visit.deliver(copy);
}

// ---- lists of named values: keys, properties, arguments, context entries ----

CMPIData handOut(const Entry *entry, CMPIrc otherwise, const Visit &visit)
{
    if (!entry) {
        report(visit.status, otherwise);
        return nothing();
    }
    report(visit.status, entry->value.rc);
    return broker.dataOf(entry->value, visit.fault);
}

void takeIn(Entries &entries, const char *name, const CMPIValue *value, CMPIType type)
{
    // Text that came as characters is handed out as a string, as every broker does.
    Value taken = RecordingBroker::valueOf(value, type);
    taken.handedOutAsString = true;
    if (Entry *entry = findEntry(entries, name)) {
        entry->value = taken;
    } else {
        entries.push_back({name, taken});
    }
}

// Absent entries of a test's list are not there at all.
Entries present(const Entries &entries)
{
    Entries kept;
    for (const Entry &entry : entries) {
        if (!(entry.value == absent())) {
            kept.push_back(entry);
        }
    }
    return kept;
}

Entries &listOf(PathObject *path)
{
    return path->path.keys;
}

Entries &listOf(InstanceObject *instance)
{
    return instance->instance.properties;
}

Entries &listOf(ArgsObject *arguments)
{
    return arguments->entries;
}

Entries &listOf(ContextObject *context)
{
    return context->entries;
}

template <Name name, typename Wanted>
CMPIStatus addToList(const typename Wanted::Interface *argument, const char *entry, const CMPIValue *value,
                     const CMPIType type)
{
    Action action(name.text);
    if (auto *object = action.use<Wanted>(argument)) {
        takeIn(listOf(object), entry, value, type);
    }
    return action.result;
}

template <Name name, typename Wanted, CMPIrc otherwise>
CMPIData getFromList(const typename Wanted::Interface *argument, const char *entry, CMPIStatus *status)
{
    Visit visit(name.text, status);
    auto *object = visit.use<Wanted>(argument);
    return object ? handOut(findEntry(listOf(object), entry), otherwise, visit) : nothing();
}

template <Name name, typename Wanted>
CMPIData getFromListAt(const typename Wanted::Interface *argument, CMPICount index, CMPIString **entryName,
                       CMPIStatus *status)
{
    Visit visit(name.text, status);
    auto *object = visit.use<Wanted>(argument);
    if (!object) {
        return nothing();
    }
    const Entries &entries = listOf(object);
    if (index >= entries.size()) {
        return handOut(nullptr, CMPI_RC_ERR_NO_SUCH_PROPERTY, visit);
    }
    if (entryName) {
        *entryName = broker.newString(entries[index].name);
    }
    return handOut(&entries[index], CMPI_RC_OK, visit);
}

template <Name name, typename Wanted>
CMPICount countOfList(const typename Wanted::Interface *argument, CMPIStatus *status)
{
    Visit visit(name.text, status);
    auto *object = visit.use<Wanted>(argument);
    return object ? static_cast<CMPICount>(listOf(object).size()) : 0;
}

// ---- strings ----

const char *stringGetCharPtr(const CMPIString *argument, CMPIStatus *status)
{
    Visit visit("getCharPtr", status);
    const auto *object = visit.use<StringObject>(argument);
    return object && object->hasCharacters ? object->text.c_str() : nullptr;
}

constexpr CMPIStringFT stringTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of a string", StringObject>,
    .clone = cloneObject<"clone of a string", StringObject>,
    .getCharPtr = stringGetCharPtr,
};

CMPIString *stringFrom(const Visit &visit, const std::string &text)
{
    return visit.deliver(broker.newString(text));
}

// ---- object paths ----

CMPIStatus pathSetNameSpace(const CMPIObjectPath *argument, const char *nameSpace)
{
    Action action("setNameSpace");
    if (auto *object = action.use<PathObject>(argument)) {
        object->path.nameSpace = nameSpace ? nameSpace : "";
    }
    return action.result;
}

CMPIString *pathGetNameSpace(const CMPIObjectPath *argument, CMPIStatus *status)
{
    Visit visit("getNameSpace", status);
    const auto *object = visit.use<PathObject>(argument);
    return object ? stringFrom(visit, object->path.nameSpace) : nullptr;
}

CMPIString *pathGetHostname(const CMPIObjectPath *argument, CMPIStatus *status)
{
    Visit visit("getHostname", status);
    return visit.use<PathObject>(argument) ? stringFrom(visit, "localhost") : nullptr;
}

CMPIStatus pathSetHostname(const CMPIObjectPath *argument, const char *)
{
    Action action("setHostname");
    action.use<PathObject>(argument);
    return action.result;
}

CMPIStatus pathSetClassName(const CMPIObjectPath *argument, const char *className)
{
    Action action("setClassName");
    if (auto *object = action.use<PathObject>(argument)) {
        object->path.className = className;
    }
    return action.result;
}

CMPIString *pathGetClassName(const CMPIObjectPath *argument, CMPIStatus *status)
{
    Visit visit("getClassName", status);
    const auto *object = visit.use<PathObject>(argument);
    if (!object) {
        return nullptr;
    }
    switch (object->path.classNameForm) {
    case TextForm::characters:
        return stringFrom(visit, object->path.className);
    case TextForm::noString:
        report(status, CMPI_RC_ERR_FAILED);
        return nullptr;
    case TextForm::noCharacters:
    case TextForm::noHandle:
        break;
    }
    return broker.dataOf(stringOf(object->path.classNameForm)).value.string;
}

CMPIStatus pathSetNameSpaceFrom(const CMPIObjectPath *argument, const CMPIObjectPath *source)
{
    Action action("setNameSpaceFromObjectPath");
    auto *object = action.use<PathObject>(argument);
    const auto *from = action.use<PathObject>(source);
    if (object && from) {
        object->path.nameSpace = from->path.nameSpace;
    }
    return action.result;
}

CMPIString *pathToString(const CMPIObjectPath *argument, CMPIStatus *status)
{
    Visit visit("toString of a path", status);
    const auto *object = visit.use<PathObject>(argument);
    return object ? stringFrom(visit, describe(object->path)) : nullptr;
}

constexpr CMPIObjectPathFT pathTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of a path", PathObject>,
    .clone = cloneObject<"clone of a path", PathObject>,
    .setNameSpace = pathSetNameSpace,
    .getNameSpace = pathGetNameSpace,
    .setHostname = pathSetHostname,
    .getHostname = pathGetHostname,
    .setClassName = pathSetClassName,
    .getClassName = pathGetClassName,
    .addKey = addToList<"addKey", PathObject>,
    .getKey = getFromList<"getKey", PathObject, CMPI_RC_ERR_NOT_FOUND>,
    .getKeyAt = getFromListAt<"getKeyAt", PathObject>,
    .getKeyCount = countOfList<"getKeyCount", PathObject>,
    .setNameSpaceFromObjectPath = pathSetNameSpaceFrom,
    .setHostAndNameSpaceFromObjectPath = pathSetNameSpaceFrom,
    .getClassQualifier = Unexpected<"getClassQualifier">(),
    .getPropertyQualifier = Unexpected<"getPropertyQualifier">(),
    .getMethodQualifier = Unexpected<"getMethodQualifier">(),
    .getParameterQualifier = Unexpected<"getParameterQualifier">(),
    .toString = pathToString,
};

// ---- instances ----

CMPIData instanceGetProperty(const CMPIInstance *argument, const char *name, CMPIStatus *status)
{
    Visit visit("getProperty", status);
    const auto *object = visit.use<InstanceObject>(argument);
    if (!object) {
        return nothing();
    }
    const Entry *property = findEntry(object->instance.properties, name);
    if (!property && !broker.manners.keepsKeysInPaths) {
        property = findEntry(object->instance.path.keys, name);
    }
    return handOut(property, CMPI_RC_ERR_NO_SUCH_PROPERTY, visit);
}

CMPIStatus instanceSetProperty(const CMPIInstance *argument, const char *name, const CMPIValue *value,
                               CMPIType type)
{
    Action action("setProperty");
    if (auto *object = action.use<InstanceObject>(argument)) {
        EXPECT_EQ(findEntry(object->instance.properties, name), nullptr) << name << " is set twice";
        takeIn(object->instance.properties, name, value, type);
    }
    return action.result;
}

CMPIStatus instanceSetPropertyWithOrigin(const CMPIInstance *argument, const char *name,
                                         const CMPIValue *value, const CMPIType type, const char *)
{
    return instanceSetProperty(argument, name, value, type);
}

CMPIObjectPath *instanceGetObjectPath(const CMPIInstance *argument, CMPIStatus *status)
{
    Visit visit("getObjectPath", status);
    const auto *object = visit.use<InstanceObject>(argument);
    if (!object) {
        return nullptr;
    }
    // References are keys of an association class.
    Path made = object->instance.path;
    for (const Entry &property : object->instance.properties) {
        if (property.value.type == CMPI_ref) {
            made = made.with(property.name, property.value);
        }
    }
    return visit.deliver(broker.newPath(made));
}

CMPIStatus instanceSetObjectPath(const CMPIInstance *argument, const CMPIObjectPath *source)
{
    Action action("setObjectPath");
    auto *object = action.use<InstanceObject>(argument);
    const auto *from = action.use<PathObject>(source);
    if (object && from) {
        object->instance.path = from->path;
    }
    return action.result;
}

CMPIStatus instanceSetPropertyFilter(const CMPIInstance *argument, const char **, const char **)
{
    Action action("setPropertyFilter");
    action.use<InstanceObject>(argument);
    return action.result;
}

constexpr CMPIInstanceFT instanceTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of an instance", InstanceObject>,
    .clone = cloneObject<"clone of an instance", InstanceObject>,
    .getProperty = instanceGetProperty,
    .getPropertyAt = getFromListAt<"getPropertyAt", InstanceObject>,
    .getPropertyCount = countOfList<"getPropertyCount", InstanceObject>,
    .setProperty = instanceSetProperty,
    .getObjectPath = instanceGetObjectPath,
    .setPropertyFilter = instanceSetPropertyFilter,
    .setObjectPath = instanceSetObjectPath,
    .setPropertyWithOrigin = instanceSetPropertyWithOrigin,
};

// ---- arguments and context ----

constexpr CMPIArgsFT argsTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of arguments", ArgsObject>,
    .clone = cloneObject<"clone of arguments", ArgsObject>,
    .addArg = addToList<"addArg", ArgsObject>,
    .getArg = getFromList<"getArg", ArgsObject, CMPI_RC_ERR_NO_SUCH_PROPERTY>,
    .getArgAt = getFromListAt<"getArgAt", ArgsObject>,
    .getArgCount = countOfList<"getArgCount", ArgsObject>,
};

constexpr CMPIContextFT contextTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of a context", ContextObject>,
    .clone = cloneObject<"clone of a context", ContextObject>,
    .getEntry = getFromList<"getEntry", ContextObject, CMPI_RC_ERR_NO_SUCH_PROPERTY>,
    .getEntryAt = getFromListAt<"getEntryAt", ContextObject>,
    .getEntryCount = countOfList<"getEntryCount", ContextObject>,
    .addEntry = addToList<"addEntry", ContextObject>,
};

// ---- arrays ----

CMPICount arrayGetSize(const CMPIArray *argument, CMPIStatus *status)
{
    Visit visit("getSize", status);
    const auto *object = visit.use<ArrayObject>(argument);
    return object ? static_cast<CMPICount>(object->elements.size()) : 0;
}

CMPIType arrayGetSimpleType(const CMPIArray *argument, CMPIStatus *status)
{
    Visit visit("getSimpleType", status);
    const auto *object = visit.use<ArrayObject>(argument);
    return object ? object->type : CMPIType(CMPI_null);
}

CMPIData arrayGetElementAt(const CMPIArray *argument, CMPICount index, CMPIStatus *status)
{
    Visit visit("getElementAt", status);
    const auto *object = visit.use<ArrayObject>(argument);
    if (!object) {
        return nothing();
    }
    if (index >= object->elements.size()) {
        report(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return nothing();
    }
    report(status, object->elements[index].rc);
    return broker.dataOf(object->elements[index], visit.fault);
}

CMPIStatus arraySetElementAt(const CMPIArray *argument, CMPICount index, const CMPIValue *value,
                             CMPIType type)
{
    Action action("setElementAt");
    auto *object = action.use<ArrayObject>(argument);
    if (!object) {
        return action.result;
    }
    Value element = RecordingBroker::valueOf(value, type);
    if (object->type == CMPI_string && type == CMPI_chars) {
        element.type = CMPI_string;
    }
    if (index >= object->elements.size()) {
        return {CMPI_RC_ERR_NO_SUCH_PROPERTY, nullptr};
    }
    if (element.type != object->type) {
        return {CMPI_RC_ERR_TYPE_MISMATCH, nullptr};
    }
    object->elements[index] = element;
    return action.result;
}

constexpr CMPIArrayFT arrayTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of an array", ArrayObject>,
    .clone = cloneObject<"clone of an array", ArrayObject>,
    .getSize = arrayGetSize,
    .getSimpleType = arrayGetSimpleType,
    .getElementAt = arrayGetElementAt,
    .setElementAt = arraySetElementAt,
};

// ---- dates ----

CMPIUint64 dateTimeGetBinary(const CMPIDateTime *argument, CMPIStatus *status)
{
    Visit visit("getBinaryFormat", status);
    const auto *object = visit.use<DateTimeObject>(argument);
    return object ? object->microseconds : 0;
}

CMPIBoolean dateTimeIsInterval(const CMPIDateTime *argument, CMPIStatus *status)
{
    Visit visit("isInterval", status);
    const auto *object = visit.use<DateTimeObject>(argument);
    return object && object->interval;
}

CMPIString *dateTimeGetString(const CMPIDateTime *argument, CMPIStatus *status)
{
    Visit visit("getStringFormat", status);
    const auto *object = visit.use<DateTimeObject>(argument);
    return object ? stringFrom(visit, std::to_string(static_cast<int64_t>(object->microseconds))) : nullptr;
}

constexpr CMPIDateTimeFT dateTimeTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of a date", DateTimeObject>,
    .clone = cloneObject<"clone of a date", DateTimeObject>,
    .getBinaryFormat = dateTimeGetBinary,
    .getStringFormat = dateTimeGetString,
    .isInterval = dateTimeIsInterval,
};

// ---- enumerations ----

CMPIData enumerationGetNext(const CMPIEnumeration *argument, CMPIStatus *status)
{
    Visit visit("getNext", status);
    auto *object = visit.use<EnumerationObject>(argument);
    if (!object) {
        return nothing();
    }
    if (object->next >= object->elements.size()) {
        ADD_FAILURE() << "getNext called beyond the end of an enumeration";
        report(status, CMPI_RC_NO_MORE_ELEMENTS);
        return nothing();
    }
    CMPIData data = broker.dataOf(object->elements[object->next++], visit.fault);
    if (broker.manners.marksElementsNull) {
        data.state |= CMPI_nullValue;
    }
    return data;
}

CMPIBoolean enumerationHasNext(const CMPIEnumeration *argument, CMPIStatus *status)
{
    Visit visit("hasNext", status);
    const auto *object = visit.use<EnumerationObject>(argument);
    return object && object->next < object->elements.size();
}

CMPIArray *enumerationToArray(const CMPIEnumeration *argument, CMPIStatus *status)
{
    Visit visit("toArray", status);
    const auto *object = visit.use<EnumerationObject>(argument);
    if (!object) {
        return nullptr;
    }
    auto *array = broker.make<ArrayObject>();
    array->type = object->elements.empty() ? CMPIType(CMPI_ref) : object->elements[0].type;
    array->elements = object->elements;
    return visit.deliver(array);
}

constexpr CMPIEnumerationFT enumerationTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of an enumeration", EnumerationObject>,
    .clone = cloneObject<"clone of an enumeration", EnumerationObject>,
    .getNext = enumerationGetNext,
    .hasNext = enumerationHasNext,
    .toArray = enumerationToArray,
};

// ---- results ----

CMPIStatus takeResult(const char *function, const CMPIResult *argument, const Value &value)
{
    Action action(function);
    if (auto *object = action.use<ResultObject>(argument)) {
        EXPECT_EQ(object->done, 0) << function << " called after the result was done";
        object->returned.push_back(value);
    }
    return action.result;
}

CMPIStatus resultReturnData(const CMPIResult *argument, const CMPIValue *value, const CMPIType type)
{
    return takeResult("returnData", argument, RecordingBroker::valueOf(value, type));
}

CMPIStatus resultReturnInstance(const CMPIResult *argument, const CMPIInstance *instance)
{
    CMPIValue value = {};
    value.inst = const_cast<CMPIInstance *>(instance);
    return takeResult("returnInstance", argument, RecordingBroker::valueOf(&value, CMPI_instance));
}

CMPIStatus resultReturnObjectPath(const CMPIResult *argument, const CMPIObjectPath *path)
{
    CMPIValue value = {};
    value.ref = const_cast<CMPIObjectPath *>(path);
    return takeResult("returnObjectPath", argument, RecordingBroker::valueOf(&value, CMPI_ref));
}

CMPIStatus resultReturnDone(const CMPIResult *argument)
{
    Action action("returnDone");
    if (auto *object = action.use<ResultObject>(argument)) {
        ++object->done;
    }
    return action.result;
}

constexpr CMPIResultFT resultTable = {
    .ftVersion = 200,
    .release = releaseObject<"release of a result", ResultObject>,
    .clone = Unexpected<"clone of a result">(),
    .returnData = resultReturnData,
    .returnInstance = resultReturnInstance,
    .returnObjectPath = resultReturnObjectPath,
    .returnDone = resultReturnDone,
    .returnError = Unexpected<"returnError">(),
};

// ---- the factory of objects ----

CMPIInstance *newInstance(const CMPIBroker *, const CMPIObjectPath *path, CMPIStatus *status)
{
    Visit visit("newInstance", status);
    const auto *object = visit.use<PathObject>(path);
    return object ? visit.deliver(broker.newInstance({object->path, {}})) : nullptr;
}

CMPIObjectPath *newObjectPath(const CMPIBroker *, const char *nameSpace, const char *className,
                              CMPIStatus *status)
{
    Visit visit("newObjectPath", status);
    if (visit.struck()) {
        return nullptr;
    }
    Path made;
    made.nameSpace = nameSpace ? nameSpace : "";
    made.className = className ? className : "";
    return visit.deliver(broker.newPath(made));
}

CMPIArgs *newArgs(const CMPIBroker *, CMPIStatus *status)
{
    Visit visit("newArgs", status);
    return visit.struck() ? nullptr : visit.deliver(broker.newArgs({}));
}

CMPIString *newString(const CMPIBroker *, const char *text, CMPIStatus *status)
{
    Visit visit("newString", status);
    EXPECT_NE(text, nullptr) << "newString called without a text";
    return visit.struck() ? nullptr : stringFrom(visit, text ? text : "");
}

CMPIArray *newArray(const CMPIBroker *, CMPICount size, CMPIType type, CMPIStatus *status)
{
    Visit visit("newArray", status);
    if (visit.struck()) {
        return nullptr;
    }
    auto *array = broker.make<ArrayObject>();
    array->type = type == CMPI_chars ? CMPIType(CMPI_string) : type;
    array->elements.assign(size, nullOf(array->type));
    return visit.deliver(array);
}

CMPIDateTime *newDateTime(const CMPIBroker *, CMPIStatus *status)
{
    Visit visit("newDateTime", status);
    return visit.struck() ? nullptr : visit.deliver(broker.make<DateTimeObject>());
}

CMPIDateTime *newDateTimeFromBinary(const CMPIBroker *, CMPIUint64 microseconds, CMPIBoolean interval,
                                    CMPIStatus *status)
{
    Visit visit("newDateTimeFromBinary", status);
    if (visit.struck()) {
        return nullptr;
    }
    auto *made = broker.make<DateTimeObject>();
    made->microseconds = microseconds;
    made->interval = interval != 0;
    return visit.deliver(made);
}

CMPIBoolean classPathIsA(const CMPIBroker *, const CMPIObjectPath *path, const char *className,
                         CMPIStatus *status)
{
    Visit visit("classPathIsA", status);
    const auto *object = visit.use<PathObject>(path);
    if (!object) {
        return 0;
    }
    std::string name = object->path.className;
    for (int depth = 0; depth < 20; ++depth) {
        if (strcasecmp(name.c_str(), className) == 0) {
            return broker.classPathIsAYes.value_or(1);
        }
        const auto above =
            std::find_if(broker.superclasses.begin(), broker.superclasses.end(), [&](const auto &known) {
                return strcasecmp(known.first.c_str(), name.c_str()) == 0;
            });
        if (above == broker.superclasses.end()) {
            return 0;
        }
        name = above->second;
    }
    return 0;
}

CMPIStatus logMessage(const CMPIBroker *, CMPISeverity, const char *, const char *, const CMPIString *)
{
    return Action("logMessage").result;
}

CMPIStatus traceMessage(const CMPIBroker *, CMPILevel, const char *, const char *, const CMPIString *)
{
    return Action("trace").result;
}

constexpr CMPIBrokerEncFT encapsulationTable = {
    .ftVersion = 200,
    .newInstance = newInstance,
    .newObjectPath = newObjectPath,
    .newArgs = newArgs,
    .newString = newString,
    .newArray = newArray,
    .newDateTime = newDateTime,
    .newDateTimeFromBinary = newDateTimeFromBinary,
    .newDateTimeFromChars = Unexpected<"newDateTimeFromChars">(),
    .newSelectExp = Unexpected<"newSelectExp">(),
    .classPathIsA = classPathIsA,
    .toString = Unexpected<"toString">(),
    .isOfType = Unexpected<"isOfType">(),
    .getType = Unexpected<"getType">(),
    .getMessage = Unexpected<"getMessage">(),
    .logMessage = logMessage,
    .trace = traceMessage,
    .newCMPIError = Unexpected<"newCMPIError">(),
    .openMessageFile = Unexpected<"openMessageFile">(),
    .closeMessageFile = Unexpected<"closeMessageFile">(),
    .getMessage2 = Unexpected<"getMessage2">(),
};

// ---- what other classes answer ----

void recordUpCall(const char *function, const Path &path, const char **properties)
{
    broker.upCalls.push_back(std::string(function) + "(" + describe(path) +
                             (properties ? ", property list" : "") + ")");
}

ClassScript *scriptOf(const Path &path)
{
    for (auto &[name, script] : broker.classes) {
        if (strcasecmp(name.c_str(), path.className.c_str()) == 0) {
            return &script;
        }
    }
    return nullptr;
}

CMPIEnumeration *enumerateClass(Visit &visit, const CMPIObjectPath *argument, bool names,
                                const char **properties)
{
    const auto *object = visit.use<PathObject>(argument);
    if (!object) {
        return nullptr;
    }
    recordUpCall(visit.function, object->path, properties);
    const ClassScript *script = scriptOf(object->path);
    if (!script) {
        report(visit.status, CMPI_RC_ERR_INVALID_CLASS);
        return nullptr;
    }
    report(visit.status, script->enumerateRc, script->enumerateMessage);
    if (script->enumerateRc != CMPI_RC_OK || script->noEnumeration) {
        return nullptr;
    }
    auto *enumeration = broker.make<EnumerationObject>();
    for (const Instance &known : script->instances) {
        // The other end's paths are in the namespace that was asked.
        Instance answer = known;
        answer.path.nameSpace = object->path.nameSpace;
        enumeration->elements.push_back(names ? reference(answer.path) : embedded(answer));
    }
    if (script->emptyElement && *script->emptyElement < enumeration->elements.size()) {
        enumeration->elements[*script->emptyElement] = nullOf(names ? CMPI_ref : CMPI_instance);
    }
    return visit.deliver(enumeration);
}

CMPIEnumeration *enumerateInstanceNames(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *path,
                                        CMPIStatus *status)
{
    Visit visit("enumerateInstanceNames", status);
    return enumerateClass(visit, path, true, nullptr);
}

CMPIEnumeration *enumerateInstances(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *path,
                                    const char **properties, CMPIStatus *status)
{
    Visit visit("enumerateInstances", status);
    return enumerateClass(visit, path, false, properties);
}

bool sameKeys(const Path &a, const Path &b)
{
    const auto covers = [](const Path &wide, const Path &narrow) {
        return std::all_of(narrow.keys.begin(), narrow.keys.end(), [&](const Entry &key) {
            const Entry *other = findEntry(wide.keys, key.name);
            return other && other->value.text == key.value.text && other->value.integer == key.value.integer;
        });
    };
    return covers(a, b) && covers(b, a);
}

CMPIInstance *getInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *path,
                          const char **properties, CMPIStatus *status)
{
    Visit visit("getInstance", status);
    const auto *object = visit.use<PathObject>(path);
    if (!object) {
        return nullptr;
    }
    recordUpCall("getInstance", object->path, properties);
    const ClassScript *script = scriptOf(object->path);
    if (!script) {
        report(status, CMPI_RC_ERR_INVALID_CLASS);
        return nullptr;
    }
    report(status, script->getInstanceRc, script->getInstanceMessage);
    if (script->getInstanceRc != CMPI_RC_OK || script->noInstance) {
        return nullptr;
    }
    for (const Instance &known : script->instances) {
        if (sameKeys(known.path, object->path)) {
            Instance answer = known;
            answer.path.nameSpace = object->path.nameSpace;
            return visit.deliver(broker.newInstance(answer));
        }
    }
    report(status, CMPI_RC_ERR_NOT_FOUND);
    return nullptr;
}

constexpr CMPIBrokerFT brokerTable = {
    .brokerCapabilities =
        CMPI_MB_BasicRead | CMPI_MB_BasicWrite | CMPI_MB_InstanceManipulation | CMPI_MB_AssociationTraversal,
    .brokerVersion = 200,
    .brokerName = "RecordingBroker",
    .prepareAttachThread = Unexpected<"prepareAttachThread">(),
    .attachThread = Unexpected<"attachThread">(),
    .detachThread = Unexpected<"detachThread">(),
    .deliverIndication = Unexpected<"deliverIndication">(),
    .enumerateInstanceNames = enumerateInstanceNames,
    .getInstance = getInstance,
    .createInstance = Unexpected<"createInstance">(),
    .modifyInstance = Unexpected<"modifyInstance">(),
    .deleteInstance = Unexpected<"deleteInstance">(),
    .execQuery = Unexpected<"execQuery">(),
    .enumerateInstances = enumerateInstances,
    .associators = Unexpected<"associators">(),
    .associatorNames = Unexpected<"associatorNames">(),
    .references = Unexpected<"references">(),
    .referenceNames = Unexpected<"referenceNames">(),
    .invokeMethod = Unexpected<"invokeMethod">(),
    .setProperty = Unexpected<"setProperty of the broker">(),
    .getProperty = Unexpected<"getProperty of the broker">(),
};

constexpr CMPIBrokerExtFT extensionTable = {
    .ftVersion = 200,
    .resolveFileName = Unexpected<"resolveFileName">(),
    .newThread = Unexpected<"newThread">(),
    .joinThread = Unexpected<"joinThread">(),
    .exitThread = Unexpected<"exitThread">(),
    .cancelThread = Unexpected<"cancelThread">(),
    .threadSleep = Unexpected<"threadSleep">(),
    .threadOnce = Unexpected<"threadOnce">(),
    .createThreadKey = Unexpected<"createThreadKey">(),
    .destroyThreadKey = Unexpected<"destroyThreadKey">(),
    .getThreadSpecific = Unexpected<"getThreadSpecific">(),
    .setThreadSpecific = Unexpected<"setThreadSpecific">(),
    .newMutex = Unexpected<"newMutex">(),
    .destroyMutex = Unexpected<"destroyMutex">(),
    .lockMutex = Unexpected<"lockMutex">(),
    .unlockMutex = Unexpected<"unlockMutex">(),
    .newCondition = Unexpected<"newCondition">(),
    .destroyCondition = Unexpected<"destroyCondition">(),
    .condWait = Unexpected<"condWait">(),
    .timedCondWait = Unexpected<"timedCondWait">(),
    .signalCondition = Unexpected<"signalCondition">(),
};

constexpr CMPIBrokerMemFT memoryTable = {
    .ftVersion = 200,
    .mark = Unexpected<"mark">(),
    .release = Unexpected<"release of the broker">(),
    .cmpiMalloc = Unexpected<"cmpiMalloc">(),
    .cmpiCalloc = Unexpected<"cmpiCalloc">(),
    .cmpiRealloc = Unexpected<"cmpiRealloc">(),
    .cmpiStrDup = Unexpected<"cmpiStrDup">(),
    .cmpiFree = Unexpected<"cmpiFree">(),
    .freeInstance = Unexpected<"freeInstance">(),
    .freeObjectPath = Unexpected<"freeObjectPath">(),
    .freeArgs = Unexpected<"freeArgs">(),
    .freeString = Unexpected<"freeString">(),
    .freeArray = Unexpected<"freeArray">(),
    .freeDateTime = Unexpected<"freeDateTime">(),
    .freeSelectExp = Unexpected<"freeSelectExp">(),
};

} // namespace

// ---- RecordingBroker ----

const CMPIStringFT *RecordingBroker::tableOf(const CMPIString *)
{
    return &stringTable;
}

const CMPIObjectPathFT *RecordingBroker::tableOf(const CMPIObjectPath *)
{
    return &pathTable;
}

const CMPIInstanceFT *RecordingBroker::tableOf(const CMPIInstance *)
{
    return &instanceTable;
}

const CMPIArgsFT *RecordingBroker::tableOf(const CMPIArgs *)
{
    return &argsTable;
}

const CMPIContextFT *RecordingBroker::tableOf(const CMPIContext *)
{
    return &contextTable;
}

const CMPIArrayFT *RecordingBroker::tableOf(const CMPIArray *)
{
    return &arrayTable;
}

const CMPIDateTimeFT *RecordingBroker::tableOf(const CMPIDateTime *)
{
    return &dateTimeTable;
}

const CMPIEnumerationFT *RecordingBroker::tableOf(const CMPIEnumeration *)
{
    return &enumerationTable;
}

const CMPIResultFT *RecordingBroker::tableOf(const CMPIResult *)
{
    return &resultTable;
}

RecordingBroker::RecordingBroker() : CMPIBroker{}
{
    hdl = this;
    bft = &brokerTable;
    eft = &encapsulationTable;
    xft = &extensionTable;
    mft = &memoryTable;
}

namespace
{

/** Those that the environment names; a name that is none ends the program. */
Manners usualManners()
{
    Manners usual;
    const char *names = getenv("BROKER_MANNERS");
    std::istringstream words(names ? names : "");
    for (std::string word; words >> word;) {
        if (word == "marks-elements-null") {
            usual.marksElementsNull = true;
        } else if (word == "keeps-keys-in-paths") {
            usual.keepsKeysInPaths = true;
        } else if (word == "reports-failures-alone") {
            usual.reportsFailuresAlone = true;
        } else {
            fprintf(stderr, "BROKER_MANNERS: there is no manner %s\n", word.c_str());
            exit(2);
        }
    }
    return usual;
}

} // namespace

void RecordingBroker::reset()
{
    freeObjects();
    classes.clear();
    superclasses.clear();
    classPathIsAYes.reset();
    manners = usualManners();
}

void RecordingBroker::freeObjects()
{
    upCalls.clear();
    objects_.clear();
}

int RecordingBroker::unreleasedClones() const
{
    return static_cast<int>(std::count_if(objects_.begin(), objects_.end(), [](const auto &object) {
        return object->cloned && !object->released;
    }));
}

PathObject *RecordingBroker::newPath(const Path &path)
{
    auto *made = make<PathObject>();
    made->path = path;
    made->path.keys = present(path.keys);
    return made;
}

InstanceObject *RecordingBroker::newInstance(const Instance &instance)
{
    auto *made = make<InstanceObject>();
    made->instance = instance;
    made->instance.properties = present(instance.properties);
    return made;
}

ArgsObject *RecordingBroker::newArgs(const Entries &entries)
{
    auto *made = make<ArgsObject>();
    made->entries = present(entries);
    return made;
}

ContextObject *RecordingBroker::newContext(const Entries &entries)
{
    auto *made = make<ContextObject>();
    made->entries = present(entries);
    return made;
}

ResultObject *RecordingBroker::newResult()
{
    return make<ResultObject>();
}

StringObject *RecordingBroker::newString(const std::string &text)
{
    auto *made = make<StringObject>();
    made->text = text;
    return made;
}

CMPIData RecordingBroker::dataOf(const Value &value, Fault fault)
{
    CMPIData data = {};
    data.type = value.type;
    data.state = value.state;
    // A text that is there all the same is handed out, so that whoever does not look at the status shows.
    const bool there = value.rc == CMPI_RC_OK && !(value.state & (CMPI_nullValue | CMPI_notFound));
    if (!there && value.text.empty()) {
        if (value.rc != CMPI_RC_OK) {
            data.state = static_cast<CMPIValueState>(data.state | CMPI_notFound | CMPI_nullValue);
        }
        return data;
    }
    if (value.type & CMPI_ARRAY) {
        auto *array = make<ArrayObject>();
        array->type = static_cast<CMPIType>(value.type & ~CMPI_ARRAY);
        array->elements = value.elements;
        data.value.array = flawed(array, fault);
        return data;
    }
    if (value.type == CMPI_chars && value.handedOutAsString) {
        data.type = CMPI_string;
    }
    switch (data.type) {
    case CMPI_string: {
        if (value.form == TextForm::noString) {
            return data;
        }
        StringObject *made = flawed(newString(value.text), fault);
        made->hasCharacters = value.form != TextForm::noCharacters;
        if (value.form == TextForm::noHandle) {
            made->hdl = nullptr;
        }
        data.value.string = made;
        return data;
    }
    case CMPI_chars:
        if (value.form == TextForm::characters) {
            data.value.chars = newString(value.text)->text.data();
        }
        return data;
    case CMPI_ref:
        if (value.path) {
            data.value.ref = flawed(newPath(*value.path), fault);
        }
        return data;
    case CMPI_instance:
        if (value.instance) {
            data.value.inst = flawed(newInstance(*value.instance), fault);
        }
        return data;
    case CMPI_dateTime: {
        DateTimeObject *made = flawed(make<DateTimeObject>(), fault);
        made->microseconds = value.integer;
        made->interval = value.interval;
        data.value.dateTime = made;
        return data;
    }
    case CMPI_real32:
        data.value.real32 = static_cast<float>(value.real);
        return data;
    case CMPI_real64:
        data.value.real64 = value.real;
        return data;
    case CMPI_boolean:
    case CMPI_uint8:
        data.value.uint8 = static_cast<CMPIUint8>(value.integer);
        return data;
    case CMPI_uint16:
        data.value.uint16 = static_cast<CMPIUint16>(value.integer);
        return data;
    case CMPI_uint32:
    case CMPI_sint32:
        data.value.uint32 = static_cast<CMPIUint32>(value.integer);
        return data;
    default:
        data.value.uint64 = value.integer;
        return data;
    }
}

Value RecordingBroker::valueOf(const CMPIValue *given, CMPIType type)
{
    if (!given) {
        return nullOf(type);
    }
    if (type == CMPI_chars) {
        return chars(reinterpret_cast<const char *>(given));
    }
    Value value;
    value.type = type;
    if (type & CMPI_ARRAY) {
        if (!given->array) {
            return nullOf(type);
        }
        const auto *array = static_cast<const ArrayObject *>(given->array);
        EXPECT_EQ(typeName(static_cast<CMPIType>(type & ~CMPI_ARRAY)), typeName(array->type))
            << "an array is handed over as one of another type";
        value.elements = array->elements;
        return value;
    }
    switch (type) {
    case CMPI_boolean:
    case CMPI_uint8:
        value.integer = given->uint8;
        return value;
    case CMPI_uint16:
        value.integer = given->uint16;
        return value;
    case CMPI_uint32:
        value.integer = given->uint32;
        return value;
    case CMPI_sint32:
        value.integer = static_cast<uint64_t>(static_cast<int64_t>(given->sint32));
        return value;
    case CMPI_uint64:
    case CMPI_sint64:
        value.integer = given->uint64;
        return value;
    case CMPI_real32:
        value.real = static_cast<double>(given->real32);
        return value;
    case CMPI_real64:
        value.real = given->real64;
        return value;
    case CMPI_string:
        if (!given->string) {
            return nullOf(type);
        }
        value.text = static_cast<const StringObject *>(given->string)->text;
        return value;
    case CMPI_ref:
        if (!given->ref) {
            return nullOf(type);
        }
        value.path = std::make_shared<Path>(static_cast<const PathObject *>(given->ref)->path);
        return value;
    case CMPI_instance:
        if (!given->inst) {
            return nullOf(type);
        }
        value.instance =
            std::make_shared<Instance>(static_cast<const InstanceObject *>(given->inst)->instance);
        return value;
    case CMPI_dateTime:
        if (!given->dateTime) {
            return nullOf(type);
        }
        value.integer = static_cast<const DateTimeObject *>(given->dateTime)->microseconds;
        value.interval = static_cast<const DateTimeObject *>(given->dateTime)->interval;
        return value;
    default:
        ADD_FAILURE() << "data of an unexpected type: " << typeName(type);
        return value;
    }
}

std::string textOf(const CMPIString *string, const char *otherwise)
{
    if (!string || !string->hdl || !string->ft) {
        return otherwise;
    }
    const auto *object = static_cast<const StringObject *>(string);
    EXPECT_FALSE(object->released) << "a string is handed back that was released";
    return object->text;
}

} // namespace test_support
