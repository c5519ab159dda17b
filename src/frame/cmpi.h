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

// A function of a table under its own name: on its object, with its other parameters as the standard has
// them.
#define CMPI_FUNCTION(Object, table, name)                                                                   \
    template <typename... Arguments>                                                                         \
    auto name(const Object *object, Arguments... arguments)                                                  \
    {                                                                                                        \
        return call(object->table->name, object, arguments...);                                              \
    }

CMPI_FUNCTION(CMPIBroker, eft, newInstance)
CMPI_FUNCTION(CMPIBroker, eft, newObjectPath)
CMPI_FUNCTION(CMPIBroker, eft, newString)
CMPI_FUNCTION(CMPIBroker, eft, newArray)
CMPI_FUNCTION(CMPIBroker, eft, newDateTimeFromBinary)
CMPI_FUNCTION(CMPIBroker, eft, classPathIsA)
CMPI_FUNCTION(CMPIBroker, bft, enumerateInstanceNames)
CMPI_FUNCTION(CMPIBroker, bft, enumerateInstances)
CMPI_FUNCTION(CMPIBroker, bft, getInstance)
CMPI_FUNCTION(CMPIInstance, ft, getProperty)
CMPI_FUNCTION(CMPIInstance, ft, setProperty)
CMPI_FUNCTION(CMPIInstance, ft, getObjectPath)
CMPI_FUNCTION(CMPIObjectPath, ft, getNameSpace)
CMPI_FUNCTION(CMPIObjectPath, ft, setNameSpace)
CMPI_FUNCTION(CMPIObjectPath, ft, getClassName)
CMPI_FUNCTION(CMPIObjectPath, ft, addKey)
CMPI_FUNCTION(CMPIObjectPath, ft, getKey)
CMPI_FUNCTION(CMPIArray, ft, getSize)
CMPI_FUNCTION(CMPIArray, ft, getElementAt)
CMPI_FUNCTION(CMPIArray, ft, setElementAt)
CMPI_FUNCTION(CMPIString, ft, getCharPtr)
CMPI_FUNCTION(CMPIEnumeration, ft, hasNext)
CMPI_FUNCTION(CMPIEnumeration, ft, getNext)
CMPI_FUNCTION(CMPIArgs, ft, getArg)
CMPI_FUNCTION(CMPIArgs, ft, getArgCount)
CMPI_FUNCTION(CMPIContext, ft, getEntry)
CMPI_FUNCTION(CMPIResult, ft, returnData)
CMPI_FUNCTION(CMPIResult, ft, returnInstance)
CMPI_FUNCTION(CMPIResult, ft, returnObjectPath)
CMPI_FUNCTION(CMPIResult, ft, returnDone)

#undef CMPI_FUNCTION

} // namespace cmpi

#endif
