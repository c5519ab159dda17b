// SPDX-License-Identifier: Apache-2.0
// The CMPI interface, whichever standard headers of 2.0 or 2.1 the library is built with. Sets of headers
// differ in what pointers they declare const, in macros and in how many members their tables have; here, and
// nowhere else in the library, that is made equal. The convenience macros of a set are not used.
#ifndef FRAME_CMPI_H
#define FRAME_CMPI_H

#include <cmpidt.h>
#include <cmpift.h>
#include <cstddef>
#include <type_traits>

namespace cmpi
{

/** The version of the interface that the library implements; an object manager reads no member that came
 * later. */
inline constexpr int version = 200;

/** `value` as a function of the interface takes it, which may tell more or less of a pointer const. */
template <typename Parameter, typename Argument>
constexpr Parameter as(Argument value)
{
    if constexpr (std::is_same_v<Argument, std::nullptr_t> || std::is_same_v<Argument, Parameter>) {
        return value;
    } else if constexpr (std::is_pointer_v<Parameter>) {
        return const_cast<Parameter>(value);
    } else {
        return static_cast<Parameter>(value);
    }
}

/** Calls a function of the object manager or one of the library's operations. */
template <typename Result, typename... Parameters, typename... Arguments>
Result call(Result (*function)(Parameters...), Arguments... arguments)
{
    return function(as<Parameters>(arguments)...);
}

// ---- the library's tables ----

/** One of the library's operations, to stand in a table that declares its parameters. */
template <auto operation>
struct Operation {
    template <typename Result, typename... Parameters>
    using Function = Result (*)(Parameters...);

    template <typename Result, typename... Parameters>
    static Result adapted(Parameters... parameters)
    {
        return call(operation, parameters...);
    }

    template <typename Result, typename... Parameters>
    constexpr operator Function<Result, Parameters...>() const
    {
        if constexpr (std::is_same_v<Function<Result, Parameters...>,
                                     std::remove_const_t<decltype(operation)>>) {
            return operation;
        } else {
            return adapted<Result, Parameters...>;
        }
    }
};

// Members that came with 2.1 stay null.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
/** The function table of a provider: its name and its operations in the order of the interface. */
template <typename Table, auto... operations>
consteval Table operationTable(const char *name)
{
    return {version, version, as<decltype(Table::miName)>(name), Operation<operations>{}...};
}
#pragma GCC diagnostic pop

// ---- the object manager's functions ----

inline CMPIInstance *newInstance(const CMPIBroker *broker, const CMPIObjectPath *path, CMPIStatus *rc)
{
    return call(broker->eft->newInstance, broker, path, rc);
}

inline CMPIObjectPath *newObjectPath(const CMPIBroker *broker, const char *nameSpace, const char *className,
                                     CMPIStatus *rc)
{
    return call(broker->eft->newObjectPath, broker, nameSpace, className, rc);
}

inline CMPIString *newString(const CMPIBroker *broker, const char *text)
{
    return call(broker->eft->newString, broker, text, nullptr);
}

inline CMPIArray *newArray(const CMPIBroker *broker, CMPICount size, CMPIType type, CMPIStatus *rc)
{
    return call(broker->eft->newArray, broker, size, type, rc);
}

/** A point in time, in microseconds since 1970. */
inline CMPIDateTime *newDateTime(const CMPIBroker *broker, CMPIUint64 microseconds)
{
    return call(broker->eft->newDateTimeFromBinary, broker, microseconds, CMPIBoolean{0}, nullptr);
}

inline CMPIBoolean classPathIsA(const CMPIBroker *broker, const CMPIObjectPath *path, const char *className,
                                CMPIStatus *rc)
{
    return call(broker->eft->classPathIsA, broker, path, className, rc);
}

inline CMPIEnumeration *enumerateInstanceNames(const CMPIBroker *broker, const CMPIContext *context,
                                               const CMPIObjectPath *path, CMPIStatus *rc)
{
    return call(broker->bft->enumerateInstanceNames, broker, context, path, rc);
}

/** The instances with all their properties. */
inline CMPIEnumeration *enumerateInstances(const CMPIBroker *broker, const CMPIContext *context,
                                           const CMPIObjectPath *path, CMPIStatus *rc)
{
    return call(broker->bft->enumerateInstances, broker, context, path, nullptr, rc);
}

/** The instance with all its properties. */
inline CMPIInstance *getInstance(const CMPIBroker *broker, const CMPIContext *context,
                                 const CMPIObjectPath *path, CMPIStatus *rc)
{
    return call(broker->bft->getInstance, broker, context, path, nullptr, rc);
}

inline CMPIData getProperty(const CMPIInstance *instance, const char *name, CMPIStatus *rc)
{
    return call(instance->ft->getProperty, instance, name, rc);
}

inline CMPIStatus setProperty(const CMPIInstance *instance, const char *name, const CMPIValue *value,
                              CMPIType type)
{
    return call(instance->ft->setProperty, instance, name, value, type);
}

inline CMPIObjectPath *getObjectPath(const CMPIInstance *instance, CMPIStatus *rc)
{
    return call(instance->ft->getObjectPath, instance, rc);
}

inline CMPIString *getNameSpace(const CMPIObjectPath *path)
{
    return call(path->ft->getNameSpace, path, nullptr);
}

inline CMPIStatus setNameSpace(const CMPIObjectPath *path, const char *nameSpace)
{
    return call(path->ft->setNameSpace, path, nameSpace);
}

inline CMPIString *getClassName(const CMPIObjectPath *path)
{
    return call(path->ft->getClassName, path, nullptr);
}

inline CMPIStatus addKey(const CMPIObjectPath *path, const char *name, const CMPIValue *value, CMPIType type)
{
    return call(path->ft->addKey, path, name, value, type);
}

inline CMPIData getKey(const CMPIObjectPath *path, const char *name, CMPIStatus *rc)
{
    return call(path->ft->getKey, path, name, rc);
}

inline CMPICount getArrayCount(const CMPIArray *array)
{
    return call(array->ft->getSize, array, nullptr);
}

inline CMPIData getArrayElementAt(const CMPIArray *array, CMPICount position, CMPIStatus *rc)
{
    return call(array->ft->getElementAt, array, position, rc);
}

inline CMPIStatus setArrayElementAt(const CMPIArray *array, CMPICount position, const CMPIValue *value,
                                    CMPIType type)
{
    return call(array->ft->setElementAt, array, position, value, type);
}

inline const char *getCharPtr(const CMPIString *string)
{
    return call(string->ft->getCharPtr, string, nullptr);
}

inline CMPIBoolean hasNext(const CMPIEnumeration *enumeration, CMPIStatus *rc)
{
    return call(enumeration->ft->hasNext, enumeration, rc);
}

inline CMPIData getNext(const CMPIEnumeration *enumeration, CMPIStatus *rc)
{
    return call(enumeration->ft->getNext, enumeration, rc);
}

inline CMPIData getArg(const CMPIArgs *arguments, const char *name, CMPIStatus *rc)
{
    return call(arguments->ft->getArg, arguments, name, rc);
}

inline CMPICount getArgCount(const CMPIArgs *arguments, CMPIStatus *rc)
{
    return call(arguments->ft->getArgCount, arguments, rc);
}

inline CMPIData getContextEntry(const CMPIContext *context, const char *name, CMPIStatus *rc)
{
    return call(context->ft->getEntry, context, name, rc);
}

inline CMPIStatus returnData(const CMPIResult *result, const CMPIValue *value, CMPIType type)
{
    return call(result->ft->returnData, result, value, type);
}

inline CMPIStatus returnInstance(const CMPIResult *result, const CMPIInstance *instance)
{
    return call(result->ft->returnInstance, result, instance);
}

inline CMPIStatus returnObjectPath(const CMPIResult *result, const CMPIObjectPath *path)
{
    return call(result->ft->returnObjectPath, result, path);
}

inline CMPIStatus returnDone(const CMPIResult *result)
{
    return call(result->ft->returnDone, result);
}

} // namespace cmpi

#endif
