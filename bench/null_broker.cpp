// SPDX-License-Identifier: Apache-2.0
#include "null_broker.h"

#include <cstring>

namespace bench
{
namespace
{

constexpr CMPIStatus done = {CMPI_RC_OK, nullptr};

/** The handle of an object as what it stands for. */
template <typename T, typename Object>
T *behind(const Object *object)
{
    return static_cast<T *>(const_cast<void *>(static_cast<const void *>(object->hdl)));
}

// ---- strings: the handle is the text ----

const char *charactersOf(const CMPIString *string, CMPIStatus *)
{
    return behind<const char>(string);
}

const CMPIStringFT stringTable = [] {
    CMPIStringFT table = {};
    table.getCharPtr = charactersOf;
    return table;
}();

CMPIString stringOf(const char *text)
{
    CMPIString string = {};
    string.hdl = const_cast<char *>(text);
    string.ft = &stringTable;
    return string;
}

CMPIString nameSpace = stringOf("root/cimv2");

// ---- paths ----

CMPIString *nameSpaceOf(const CMPIObjectPath *, CMPIStatus *)
{
    return &nameSpace;
}

CMPIString *classNameOf(const CMPIObjectPath *path, CMPIStatus *)
{
    return const_cast<CMPIString *>(&behind<Path>(path)->className);
}

CMPIStatus acceptText(const CMPIObjectPath *, const char *)
{
    return done;
}

CMPIStatus acceptKey(const CMPIObjectPath *, const char *, const CMPIValue *, CMPIType)
{
    return done;
}

CMPIData keyOf(const CMPIObjectPath *path, const char *name, CMPIStatus *status)
{
    CMPIData data = {};
    const Path &self = *behind<Path>(path);
    for (int i = 0; i < self.keyCount; ++i) {
        if (std::strcmp(self.keys[i].name, name) == 0) {
            data.type = CMPI_chars;
            data.state = CMPI_keyValue;
            data.value.chars = const_cast<char *>(self.keys[i].value);
            return data;
        }
    }
    data.state = CMPI_notFound;
    if (status != nullptr) {
        status->rc = CMPI_RC_ERR_NO_SUCH_PROPERTY;
    }
    return data;
}

const CMPIObjectPathFT pathTable = [] {
    CMPIObjectPathFT table = {};
    table.setNameSpace = acceptText;
    table.getNameSpace = nameSpaceOf;
    table.getClassName = classNameOf;
    table.addKey = acceptKey;
    table.getKey = keyOf;
    return table;
}();

/** Every path that a provider makes. */
const Path made("ZT_Marovelton_Made", {});

// ---- instances ----

CMPIStatus acceptProperty(const CMPIInstance *, const char *, const CMPIValue *, CMPIType)
{
    return done;
}

CMPIObjectPath *madePath(const CMPIInstance *, CMPIStatus *)
{
    return const_cast<CMPIObjectPath *>(static_cast<const CMPIObjectPath *>(made));
}

/** The keys of the path are properties, as with most object managers. */
CMPIData anyProperty(const CMPIInstance *, const char *, CMPIStatus *status)
{
    *status = done;
    CMPIData data = {};
    data.type = CMPI_string;
    return data;
}

const CMPIInstanceFT instanceTable = [] {
    CMPIInstanceFT table = {};
    table.setProperty = acceptProperty;
    table.getProperty = anyProperty;
    table.getObjectPath = madePath;
    return table;
}();

/** Every instance that a provider makes or asks for. */
CMPIInstance instance = [] {
    CMPIInstance fixed = {};
    fixed.hdl = &instance;
    fixed.ft = &instanceTable;
    return fixed;
}();

// ---- arguments ----

CMPIData argumentOf(const CMPIArgs *args, const char *, CMPIStatus *)
{
    CMPIData data = {};
    data.type = CMPI_string;
    data.value.string = behind<CMPIString>(args);
    return data;
}

const CMPIArgsFT argumentTable = [] {
    CMPIArgsFT table = {};
    table.getArg = argumentOf;
    return table;
}();

// ---- results ----

CMPIStatus takeData(const CMPIResult *result, const CMPIValue *value, CMPIType type)
{
    Result &self = *behind<Result>(result);
    self.data = *value;
    self.dataType = type;
    return done;
}

CMPIStatus takeInstance(const CMPIResult *result, const CMPIInstance *)
{
    ++behind<Result>(result)->instances;
    return done;
}

CMPIStatus takePath(const CMPIResult *result, const CMPIObjectPath *)
{
    ++behind<Result>(result)->paths;
    return done;
}

CMPIStatus takeEnd(const CMPIResult *result)
{
    ++behind<Result>(result)->done;
    return done;
}

const CMPIResultFT resultTable = [] {
    CMPIResultFT table = {};
    table.returnData = takeData;
    table.returnInstance = takeInstance;
    table.returnObjectPath = takePath;
    table.returnDone = takeEnd;
    return table;
}();

// ---- what a provider asks of other classes: each has one instance ----

bool taken = false;

CMPIBoolean hasNext(const CMPIEnumeration *, CMPIStatus *)
{
    return !taken;
}

CMPIData nextInstance(const CMPIEnumeration *, CMPIStatus *)
{
    taken = true;
    CMPIData data = {};
    data.type = CMPI_instance;
    data.value.inst = &instance;
    return data;
}

const CMPIEnumerationFT enumerationTable = [] {
    CMPIEnumerationFT table = {};
    table.hasNext = hasNext;
    table.getNext = nextInstance;
    return table;
}();

CMPIEnumeration enumeration = [] {
    CMPIEnumeration fixed = {};
    fixed.hdl = &enumeration;
    fixed.ft = &enumerationTable;
    return fixed;
}();

CMPIInstance *getInstance(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *, const char **,
                          CMPIStatus *)
{
    return &instance;
}

CMPIEnumeration *enumerateInstances(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                    const char **, CMPIStatus *)
{
    taken = false;
    return &enumeration;
}

// ---- the broker ----

CMPIInstance *newInstance(const CMPIBroker *, const CMPIObjectPath *, CMPIStatus *)
{
    return &instance;
}

CMPIObjectPath *newPath(const CMPIBroker *, const char *, const char *, CMPIStatus *)
{
    return madePath(nullptr, nullptr);
}

CMPIString *newString(const CMPIBroker *, const char *text, CMPIStatus *)
{
    thread_local CMPIString string;
    string = stringOf(text);
    return &string;
}

CMPIDateTime *newDateTime(const CMPIBroker *, CMPIUint64, CMPIBoolean, CMPIStatus *)
{
    thread_local CMPIDateTime fixed = {};
    return &fixed;
}

CMPIStatus acceptElement(const CMPIArray *, CMPICount, const CMPIValue *, CMPIType)
{
    return done;
}

CMPIArray *newArray(const CMPIBroker *, CMPICount, CMPIType, CMPIStatus *)
{
    static const CMPIArrayFT table = [] {
        CMPIArrayFT arrays = {};
        arrays.setElementAt = acceptElement;
        return arrays;
    }();
    static CMPIArray fixed = [] {
        CMPIArray array = {};
        array.hdl = &fixed;
        array.ft = &table;
        return array;
    }();
    return &fixed;
}

CMPIBoolean classPathIsA(const CMPIBroker *, const CMPIObjectPath *, const char *, CMPIStatus *)
{
    return 0;
}

const CMPIBrokerFT brokerTable = [] {
    CMPIBrokerFT table = {};
    table.brokerVersion = CMPIVersion200;
    table.getInstance = getInstance;
    table.enumerateInstances = enumerateInstances;
    return table;
}();

const CMPIBrokerEncFT factoryTable = [] {
    CMPIBrokerEncFT table = {};
    table.newInstance = newInstance;
    table.newObjectPath = newPath;
    table.newString = newString;
    table.newArray = newArray;
    table.newDateTimeFromBinary = newDateTime;
    table.classPathIsA = classPathIsA;
    return table;
}();

} // namespace

const CMPIBroker broker = [] {
    CMPIBroker fixed = {};
    fixed.bft = &brokerTable;
    fixed.eft = &factoryTable;
    return fixed;
}();

const CMPIContext context = {};

Path::Path(const char *name, std::initializer_list<Key> given) : className(stringOf(name)), path_{}
{
    for (const Key &key : given) {
        keys[keyCount++] = key;
    }
    path_.hdl = this;
    path_.ft = &pathTable;
}

Argument::Argument(const char *value) : value_(stringOf(value)), args_{}
{
    args_.hdl = &value_;
    args_.ft = &argumentTable;
}

Result::Result() : result{}
{
    result.hdl = this;
    result.ft = &resultTable;
}

std::string_view messageOf(const CMPIStatus &status)
{
    return status.msg != nullptr ? charactersOf(status.msg, nullptr) : "";
}

} // namespace bench
